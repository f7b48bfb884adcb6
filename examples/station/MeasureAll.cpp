#include "MeasureAll.h"

#include <utility>

#include "Collector.h"
#include "DailyLog.h"
#include "Evaluation.h"
#include "SeriesThreads.h"

namespace Station {

using Oxa::Core::Elapse;

namespace {

const char* const sQUEUE_NAME = "Samples of the station";
// Many samples can wait while the collector is held up; a queue that grows tells so on standard error.
constexpr unsigned int uFIRST_REPORT = 10000;
constexpr unsigned int uREPORT_STEP = 10000;
constexpr unsigned int uMOST_SAMPLES = 100000;

void CollectUntilTheEnd(Collector& collector, SeriesThreads& threads, const std::function<bool()>& wantsToEnd,
                        DailyLog* daily) {
  const Elapse pause(20, Elapse::MilliSeconds);
  while (threads.AreAtWork()) {
    if (wantsToEnd()) threads.Stop();
    collector.Collect(pause);
    if (daily != nullptr) daily->CheckMidnight();
  }
  while (collector.Collect(Elapse(0))) continue;  // what came between the last look and the end
}

}  // namespace

std::vector<Measurement> MeasureAll(const Plan& plan, Clock& clock, Progress& progress,
                                    const std::function<bool()>& wantsToEnd, Recorder* recorder,
                                    DailyLog* daily) {
  SampleQueue queue(sQUEUE_NAME, nullptr, uFIRST_REPORT, uREPORT_STEP, uMOST_SAMPLES);
  Collector collector(plan, queue, progress, daily);
  SeriesThreads threads(plan, clock, queue, recorder);
  CollectUntilTheEnd(collector, threads, wantsToEnd, daily);
  threads.TellOutcome(collector.GetMeasurements());
  Evaluate(collector.GetMeasurements());  // only now, so that it disturbs no sample
  return std::move(collector.GetMeasurements());
}

}  // namespace Station
