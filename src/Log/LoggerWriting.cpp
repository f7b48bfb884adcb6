// The road of a message from the logger to the manager.
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>

#include <iostream>
#include <new>

#include "Core/LibraryState.h"
#include "Log/FormatText.h"
#include "Log/LogForms.h"
#include "Log/LogTraffic.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sLATE_MESSAGE = "Log message during OxaCore.dll shutdown:";
const char* const sLATE_BAD_FORMAT =
    "A formatting error occurred while writing a log message from logger <%s> during OxaCore.dll shutdown\n"
    "The formatting string is:\n\t%s";

void PrintLate(OxaLogSeverityEnum severity, FormatOnce& message, const Logger& logger,
               const std::string& path) {
  const std::ios_base::Init streams;
  if (const char* const text = message.GetText()) {
    std::cout << sLATE_MESSAGE << "\nLogger: " << path << "\nSeverity: " << static_cast<int>(severity)
              << "\nMessage: " << text << std::endl;
  } else {
    std::cout << FormatText(sLATE_BAD_FORMAT, logger.GetName().c_str(), ShownFormat(message.GetFormat()))
              << std::endl;
  }
}

}  // namespace

void Logger::WriteLog(OxaLogSeverityEnum severity, std::string format, ...) {
  if (!IsEnabledFor(severity)) return;
  std::va_list args;
  va_start(args, format);
  WriteExpanded(severity, format.c_str(), args);
  va_end(args);
}

void Logger::WriteLogVarArgs(OxaLogSeverityEnum severity, std::string format, std::va_list args) {
  if (!IsEnabledFor(severity)) return;
  FormatOnce message(format.c_str(), args);
  message.GetText();
  DoWriteLog(severity, message, m_sPath);
}

// Where the compiler can pass arguments on, the test of the filter stands in the caller and this is all that it
// calls.
void Logger::WriteEnabled(OxaLogSeverityEnum severity, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  WriteExpanded(severity, format, args);
  va_end(args);
}

void Logger::WriteExpanded(OxaLogSeverityEnum severity, const char* format, std::va_list args) {
  FormatOnce message(format, args);
  DoWriteLog(severity, message, m_sPath);
}

void Logger::DoWriteLog(OxaLogSeverityEnum severity, FormatOnce& message, const std::string& path) {
  try {
    if (IsLibraryUnloading()) {
      PrintLate(severity, message, *this, path);
    } else if (const LogManagerInUse manager; manager) {
      manager->WriteLog(severity, message, path, sPLAIN_LOG_FORM);
    }
  } catch (const std::bad_alloc&) {
    // An entry that there is no memory for is dropped like one that there is no room for.
  }
}

}  // namespace Oxa::Core
