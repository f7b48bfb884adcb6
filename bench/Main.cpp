#include "BenchSupport.h"

int main(int argc, char** argv) {
  const OxaBench::SleepingThread second;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
