#include "SampleSender.h"

#include <Infrastructure/OxaCore/RaiseSite.h>

#include "Loggers.h"
#include "Plan.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::BinaryPipe;
using Oxa::Core::IOError;

namespace {

// Every sender finds room behind this even if all of them look first and write then. So no write fails for want of
// room: an error for each lost sample would cost the measuring threads far more than the sample.
constexpr unsigned long long ullFULL = ullRECORDER_RING - uMOST_SERIES * uRECORD_SIZE;

}  // namespace

SampleSender::SampleSender(BinaryPipe& pipe, const std::string& series)
    : m_sSeries(series), m_pipe(pipe), m_block(pipe, uRECORD_SIZE + 1), m_values(m_block) {}

bool SampleSender::Send(const Sample& sample) {
  if (TrySend(sample)) return true;
  OXA_RAISE_WARNING(SeriesLogger(m_sSeries), SampleNotRecorded(sample.m_ulNumber, m_sSeries));
  return false;
}

bool SampleSender::TrySend(const Sample& sample) {
  if (m_pipe.IsClosed() || m_pipe.AvailableBytes() > ullFULL) return false;
  try {
    WriteSample(m_values, sample);
    m_values.Flush();
    return true;
  } catch (const IOError&) {  // closed in this very moment
    return false;
  }
}

}  // namespace Station
