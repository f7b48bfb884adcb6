// What is kept of a run besides the default log: a recording and a daily log, as far as they are asked for.
#ifndef STATION_KEEPING_H
#define STATION_KEEPING_H

#include <memory>
#include <vector>

#include "CommandLine.h"
#include "DailyLog.h"
#include "Measurement.h"
#include "Plan.h"
#include "Recorder.h"

namespace Station {

/// One thread.
class Keeping {
 public:
  /// Starts both. A plan without series leaves nothing to record. Raises RecordingImpossible and the errors of
  /// WrappingFileStream.
  Keeping(const CommandLine& commandLine, const Plan& plan);

  /// Null if not asked for.
  Recorder* GetRecorder() { return m_recorder.get(); }
  DailyLog* GetDailyLog() { return m_daily.get(); }

  /// Ends the recording, and tells the daily log what came out. Complains of what could not be kept; false then.
  bool Finish(const std::vector<Measurement>& measurements);

 private:
  bool FinishRecording();
  bool FinishDailyLog(const std::vector<Measurement>& measurements);

  std::unique_ptr<DailyLog> m_daily;
  std::unique_ptr<Recorder> m_recorder;
};

}  // namespace Station

#endif
