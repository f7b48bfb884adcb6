#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <string>

#include "OneLine.h"

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const auto logger = spdlog::basic_logger_mt("Bench.Channel", std::string(argv[1]) + "/one.log");
  logger->info("{}", OxaBench::sONE_LINE);
  logger->flush();
  OxaBench::TellPeak(argc, argv);
  spdlog::shutdown();
  return 0;
}
