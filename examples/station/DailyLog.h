// A log of the station's own, for years if need be: what it measured and what went wrong, in files by the day.
//
// It has nothing to do with the default log: a handler of that one's entries would receive them in place of the file.
#ifndef STATION_DAILYLOG_H
#define STATION_DAILYLOG_H

#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <string>

#include "Measurement.h"
#include "Sample.h"

namespace Station {

/// What the names of the files begin with. A prefix also keeps old files from being deleted.
extern const char* const sDAILY_PREFIX;

/// A line per event: its moment, a tabulator, and a text. One thread.
///
/// A failure of the files is told by their own error, and raised by the constructor only. After it nothing more is
/// written.
class DailyLog {
 public:
  /// Goes on in `folder`, which is made if need be. Raises WrappingFileStream's errors.
  explicit DailyLog(const std::string& folder);
  DailyLog(const DailyLog&) = delete;
  DailyLog& operator=(const DailyLog&) = delete;

  void Tell(const std::string& text);

  /// Every sample that its series doesn't tolerate; the default log tells only the first of them.
  void TellLate(const Sample& sample, const Series& series);

  /// What became of a series. For one that has samples, its statistics.
  void TellResult(const Measurement& measurement);

  /// To be called more than once a day, also when there is nothing to tell: a file that has missed a midnight would
  /// be emptied once too often.
  void CheckMidnight();

  /// Why the log isn't whole; empty if it is.
  const std::string& GetFailure() const { return m_sFailure; }

 private:
  Oxa::Core::WrappingFileStream m_files;
  std::string m_sFailure;
};

}  // namespace Station

#endif
