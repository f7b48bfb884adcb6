#include <Infrastructure/OxaCore/WrappingFileStreamIterator.h>

#include <algorithm>
#include <fstream>
#include <locale>
#include <vector>

#include "Log/DailyFiles.h"

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

constexpr char cSEPARATOR = '/';

Time FirstDay() { return MidnightOf({1970, 1, 1}); }
Time LastDay() { return MidnightOf({2037, 12, 31}); }

std::string NameIn(const std::string& folder, const std::string& name) { return folder + cSEPARATOR + name; }

bool IsReadable(const PathName& file) {
  int code = 0;
  return Platform::FileHandle::OpenForReading(file, code).IsOpen();
}

// Leaves `number` alone if there is none in the file.
void ReadNumber(const PathName& file, int& number) {
  std::ifstream stream(Platform::NameForSystem(file));
  stream.imbue(std::locale::classic());
  int found = 0;
  if (stream >> found) number = found;
}

// Those whose names begin with `begin`, whatever a pattern would make of that.
long long CountLogFiles(const std::string& folder, const std::string& begin) {
  std::vector<std::string> names;
  PathName(folder).ReadDirectory(names, begin + "*.log");
  return std::count_if(names.begin(), names.end(),
                       [&](const std::string& name) { return name.compare(0, begin.size(), begin) == 0; });
}

}  // namespace

WrappingFileStreamIterator::WrappingFileStreamIterator() : m_requestedEnd(m_requestedStart) {}
WrappingFileStreamIterator::WrappingFileStreamIterator(const WrappingFileStreamIterator& other) = default;
WrappingFileStreamIterator& WrappingFileStreamIterator::operator=(const WrappingFileStreamIterator& other) =
    default;
WrappingFileStreamIterator::~WrappingFileStreamIterator() = default;

void WrappingFileStreamIterator::Initialize(const std::string& folder, const std::string& prefix) {
  m_days.clear();
  m_requestedStart = FirstDay();
  m_requestedEnd = LastDay();
  m_prefix = prefix;
  std::vector<std::string> names;
  PathName(folder).ReadDirectory(names, prefix + "*_*_*.seq");
  for (const std::string& name : names) {
    DailyDate date;
    if (ReadSequenceFileName(name, prefix, date)) m_days[{MidnightOf(date), name}] = NameIn(folder, name);
  }
}

// A day is a step of the calendar and no span of 24 hours: where clocks are changed, none is met twice or missed.
void WrappingFileStreamIterator::Initialize(const std::string& folder, const Time& start, const Time& end,
                                            const std::string& prefix) {
  m_days.clear();
  m_requestedStart = start;
  m_requestedEnd = end;
  m_prefix = prefix;
  int days = 0;
  Time t = start;
  while (t <= end) {
    const std::string name = DailySequenceFileName("", DailyName(prefix, DailyDateOf(t)));
    const PathName path(NameIn(folder, name));
    if (IsReadable(path)) m_days[{t, name}] = path;
    if (!DaysLater(start, ++days, t)) return;
  }
}

bool WrappingFileStreamIterator::FilesExist() const { return !m_days.empty(); }

Time WrappingFileStreamIterator::GetRequestedStartTime() const { return m_requestedStart; }
Time WrappingFileStreamIterator::GetRequestedEndTime() const { return m_requestedEnd; }

Time WrappingFileStreamIterator::GetActualStartTime() const {
  return m_days.empty() ? FirstDay() : m_days.begin()->first.first;
}

Time WrappingFileStreamIterator::GetActualEndTime() const {
  return m_days.empty() ? FirstDay() : m_days.rbegin()->first.first;
}

void WrappingFileStreamIterator::IterateFiles() {
  int number = 0;
  for (const auto& entry : m_days) IterateDay(entry.second, entry.first.first, number);
}

// A day that never wrapped has the numbers 0 to `number`, and one that has is oldest behind `number`: the same step,
// around as many numbers as there are files, begins both at the right place.
void WrappingFileStreamIterator::IterateDay(const PathName& sequenceFile, const Time& day, int& number) {
  ReadNumber(sequenceFile, number);
  const std::string folder = sequenceFile.GetBaseAndBranch();
  const std::string name = DailyName(m_prefix, DailyDateOf(day));
  const long long count = CountLogFiles(folder, name + '-');
  for (long long i = 0; i < count; ++i) {
    number = static_cast<int>((number + 1LL) % count);
    NextFile(DailyLogFileName(folder, name, number));
  }
}

void WrappingFileStreamIterator::NextFile(std::string) {}

}  // namespace Oxa::Core
