#include "RecordingReader.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BoundedStreams.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>

#include <algorithm>

#include "Loggers.h"
#include "PlanField.h"
#include "Quantity.h"
#include "Recording.h"
#include "ShownText.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::BinaryFileStream;
using Oxa::Core::BinaryInputStream;
using Oxa::Core::BoundedBinaryInputStream;
using Oxa::Core::BufferedBinaryInputStream;
using Oxa::Core::DataInputStream;
using Oxa::Core::Elapse;
using Oxa::Core::InvalidParameter;
using Oxa::Core::IOError;

namespace {

const char* const sPLACE = "Recording";
const char* const sNOT_OPENED = "it can't be opened";
const char* const sFOREIGN = "it isn't a recording of a station";
const char* const sVERSION = "it was made by another version of the station";
const char* const sSHORT_HEAD = "it ends before its first sample";
const char* const sBAD_SERIES = "it tells of a series that can't be";
const char* const sENDS_IN_SAMPLE = "it ends in the middle of a sample";
const char* const sNO_END_MARK =
    "it ends without its end mark, so what recorded it was ended early, or is still at work";
const char* const sBEHIND_END = "something follows its end mark";
const char* const sWRONG_NUMBER = "its end mark tells another number of samples";
const char* const sUNKNOWN_SERIES = "a sample is of a series that the recording doesn't have";
const char* const sNO_LATENESS = "a sample can't be as late as it is";
const char* const sOUT_OF_ORDER = "a sample has a number that can't come here";

constexpr unsigned long long ullBUFFER = 65536;

Elapse Ticks(long long ticks) { return Elapse(ticks, Elapse::TimerTicks); }

// Whether it can be shown: what measures gives no other.
bool CanBe(const Elapse& time) {
  return time <= Elapse(llMOST_SECONDS, Elapse::Seconds) && time >= Elapse(-llMOST_SECONDS, Elapse::Seconds);
}

// The head of the file `m_sFile`. Values are read only once it is clear that they are there: the stream itself
// doesn't tell where it ends. Raises can return; from then on nothing more is read, and IsGood tells.
class HeadReader {
 public:
  HeadReader(const std::string& file, DataInputStream& in) : m_sFile(file), m_in(in) {}

  std::vector<Measurement> Read() {
    std::vector<Measurement> measurements;
    if (Text(sFOREIGN) != sRECORDING_MARK) Refuse(sFOREIGN);
    m_uVersion = Value<unsigned int>();
    if (m_uVersion != uRECORDING_VERSION && m_uVersion != uVERSION_WITHOUT_UNITS) Refuse(sVERSION);
    const auto count = Value<unsigned int>();
    if (count < 1 || count > uMOST_SERIES) Refuse(sBAD_SERIES);
    while (m_bGood && measurements.size() < count) measurements.push_back(NextSeries(measurements));
    return measurements;
  }

  bool IsGood() const { return m_bGood; }

 private:
  void Refuse(const char* reason) {
    if (!m_bGood) return;
    m_bGood = false;
    OXA_RAISE_ERROR(sRECORDER_LOGGER, RecordingUnreadable(m_sFile, reason));
  }

  template <class T>
  T Value() {
    T value = 0;
    if (m_in.AvailableBytes() < sizeof value) Refuse(sSHORT_HEAD);
    if (m_bGood) m_in >> value;
    return value;
  }

  // All texts in a head are short.
  std::string Text(const char* tooLong) {
    const auto length = Value<unsigned int>();
    if (length > uLONGEST_NAME) Refuse(tooLong);
    if (m_in.AvailableBytes() < length) Refuse(sSHORT_HEAD);
    std::string text(m_bGood ? length : 0, '\0');
    m_in.ReadFully(text.data(), text.size());
    return text;
  }

  Measurement NextSeries(const std::vector<Measurement>& before) {
    Measurement measurement;
    Series& series = measurement.m_series;
    series.m_sName = Text(sBAD_SERIES);
    const auto interval = Value<long long>();
    const auto tolerance = Value<long long>();
    series.m_ulCount = Value<unsigned int>();
    if (m_uVersion != uVERSION_WITHOUT_UNITS) series.m_sUnit = Text(sBAD_SERIES);
    series.m_interval = Ticks(interval);
    series.m_tolerance = Ticks(tolerance);
    if (!IsPossible(series)) Refuse(sBAD_SERIES);
    CheckName(series.m_sName, before);
    return measurement;
  }

  static bool IsPossible(const Series& series) {
    return series.m_interval > 0 && series.m_interval <= Elapse(llLONGEST_INTERVAL, Elapse::Seconds) &&
           series.m_tolerance >= 0 && CanBe(series.m_tolerance) && series.m_ulCount >= 1 &&
           series.m_ulCount <= llLARGEST_COUNT && IsTimeUnit(series.m_sUnit);
  }

  static bool IsTimeUnit(const std::string& name) {
    const auto spUnit = FindTimeUnit(name);
    return spUnit && spUnit->GetName() == name;
  }

  // By the rules of plans, whose error is a step of this one's way.
  void CheckName(const std::string& name, const std::vector<Measurement>& before) {
    try {
      if (m_bGood) ReadName(name);
    } catch (const InvalidParameter&) {
      Refuse(sBAD_SERIES);
    }
    for (const Measurement& other : before) {
      if (other.m_series.m_sName == name) Refuse(sBAD_SERIES);
    }
  }

  const std::string& m_sFile;
  DataInputStream& m_in;
  unsigned int m_uVersion = 0;
  bool m_bGood = true;
};

// The samples behind the head.
class SampleReader {
 public:
  SampleReader(const std::string& file, Recorded& recorded)
      : m_sFile(file), m_recorded(recorded), m_last(recorded.m_measurements.size(), 0) {}

  // A source that fails is damage, too: what came before it counts.
  void Read(BinaryInputStream& source) {
    try {
      ReadAll(source);
    } catch (const RecordingDamaged&) {
      throw;
    } catch (const IOError& error) {
      Damage(error.what());
    }
  }

 private:
  void ReadAll(BinaryInputStream& source) {
    const unsigned long long bytes = source.AvailableBytes();
    BoundedBinaryInputStream whole(source, bytes - bytes % uRECORD_SIZE);
    DataInputStream in(whole);
    for (unsigned long long left = bytes / uRECORD_SIZE; left > 0; --left) {
      const char* const damage = ReadOne(in);
      if (damage != nullptr) return Damage(damage);
      if (m_bEnded) return left > 1 || bytes % uRECORD_SIZE != 0 ? Damage(sBEHIND_END) : void();
    }
    Damage(bytes % uRECORD_SIZE != 0 ? sENDS_IN_SAMPLE : sNO_END_MARK);
  }

  const char* ReadOne(DataInputStream& in) {
    unsigned int series = 0;
    unsigned int number = 0;
    long long lateness = 0;
    in >> series >> number >> lateness;
    if (series == uEND_MARK) return TakeEnd(number, lateness);
    if (series >= m_last.size()) return sUNKNOWN_SERIES;
    Measurement& measurement = m_recorded.m_measurements[series];
    if (number <= m_last[series] || number > measurement.m_series.m_ulCount) return sOUT_OF_ORDER;
    if (!CanBe(Ticks(lateness))) return sNO_LATENESS;
    m_last[series] = number;
    measurement.m_latenesses.push_back(Ticks(lateness));
    if (Ticks(lateness) > measurement.m_series.m_tolerance) ++measurement.m_ulLate;
    ++m_ullRead;
    return nullptr;
  }

  const char* TakeEnd(unsigned int number, long long samples) {
    m_bEnded = number == 0 && samples == static_cast<long long>(m_ullRead);
    return m_bEnded ? nullptr : sWRONG_NUMBER;
  }

  void Damage(const std::string& reason) const {
    OXA_RAISE_ERROR(sRECORDER_LOGGER, RecordingDamaged(m_sFile, m_ullRead, reason));
  }

  const std::string& m_sFile;
  Recorded& m_recorded;
  std::vector<unsigned int> m_last;  // the number of the sample read last, per series
  unsigned long long m_ullRead = 0;
  bool m_bEnded = false;
};

}  // namespace

Recorded ReadRecording(const std::string& file) {
  try {
    BinaryFileStream stream(file, BinaryFileStream::READ_MODE, BinaryFileStream::eOPEN_IF_EXISTS);
    if (stream.IsOpen()) {
      BufferedBinaryInputStream buffer(stream, ullBUFFER);
      return ReadRecording(file, buffer);
    }
    OXA_RAISE_ERROR(sRECORDER_LOGGER, RecordingUnreadable(file, sNOT_OPENED));
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, Shown(file)))
  return Recorded();
}

Recorded ReadRecording(const std::string& name, BinaryInputStream& source) {
  Recorded recorded;
  DataInputStream in(source);
  HeadReader head(name, in);
  recorded.m_measurements = head.Read();
  if (!head.IsGood()) return Recorded();
  try {
    SampleReader(name, recorded).Read(source);
  } catch (const RecordingDamaged& error) {
    recorded.m_sDamage = error.what();
  }
  return recorded;
}

}  // namespace Station
