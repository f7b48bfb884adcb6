#include <Infrastructure/OxaCore/RaiseSite.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Plan.h"
#include "StationAlerts.h"

namespace Station {

namespace {

const char* const sLOG_NAME = "Station.Plan.File";
const char* const sIS_FOLDER = "it is a folder";
const char* const sTOO_LONG = "it is longer than 64 KiB";
const char* const sREAD_FAILED = "reading failed";
constexpr std::size_t uLONGEST_PLAN = 64 * 1024;

// Reads at most one byte more than is allowed, so that a file without end comes to one.
std::string ReadAll(std::istream& stream) {
  std::string text(uLONGEST_PLAN + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

std::string Refuse(const std::string& file, const std::string& reason) {
  OXA_RAISE_ERROR(sLOG_NAME, PlanUnreadable(file, reason));
  return std::string();
}

}  // namespace

std::string ReadPlanFile(const std::string& file) {
  std::error_code ignored;
  if (std::filesystem::is_directory(file, ignored)) return Refuse(file, sIS_FOLDER);
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return Refuse(file, std::generic_category().message(errno));
  std::string text = ReadAll(stream);
  if (stream.bad()) return Refuse(file, sREAD_FAILED);
  if (text.size() > uLONGEST_PLAN) return Refuse(file, sTOO_LONG);
  return text;
}

}  // namespace Station
