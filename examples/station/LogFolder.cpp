#include "LogFolder.h"

#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/System.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "ShownText.h"

namespace Station {

using Oxa::Core::LogManager;
using Oxa::Core::System;

namespace {

const char* const sDOCUMENT = "DefaultLog.xml";
const char* const sENTRIES = "DefaultLog.entries";

// The folder, with a "/" at its end.
std::string GetLogFolder() {
  std::string folder;
  System::Instance()->GetProcessPath(folder);
  return folder;
}

void SetLogFolder(std::string folder) {
  std::replace(folder.begin(), folder.end(), '\\', '/');  // the library takes both for separators
  if (folder.back() != '/') folder += '/';
  System::Instance()->SetProcessPath(folder);
}

// Tries what the library will do when it logs.
std::error_code TryToWrite(const std::string& folder) {
  std::error_code failure;
  std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), failure);  // less the "/"
  if (failure) return failure;
  if (std::ofstream(folder + sENTRIES, std::ios::app)) return {};
  return {errno, std::generic_category()};
}

}  // namespace

std::string SendLogTo(const std::string& folder) {
  if (!folder.empty()) SetLogFolder(folder);
  const std::error_code failure = TryToWrite(GetLogFolder());
  if (!failure) return std::string();
  return "The log folder \"" + Shown(GetLogFolder()) + "\" can't be used: " + failure.message();
}

std::string LogDocument() { return GetLogFolder() + sDOCUMENT; }

void FinishLog() { LogManager::Instance()->SetBufferingMode(false); }

}  // namespace Station
