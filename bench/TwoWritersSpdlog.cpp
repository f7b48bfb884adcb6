#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "TwoWriters.h"

int main(int argc, char** argv) {
  OxaBench::WriterTask task;
  if (!OxaBench::ReadTask(argc, argv, task)) return 2;
  const auto logger = spdlog::basic_logger_mt("Bench.Channel", task.m_sFolder + "DefaultLog.entries");
  logger->flush_on(spdlog::level::trace);
  if (!OxaBench::AwaitStart()) return 3;
  for (int line = 0; line < task.m_iLines; ++line)
    logger->info("Writer {} reads {:8.3f} K at step {:06d}", TWO_WRITERS_ARGUMENTS(task.m_sName, line));
  OxaBench::AwaitEnd();
  spdlog::shutdown();
  return 0;
}
