// The first operations of the log's interfaces, so that their type information exists once.
#include <Infrastructure/OxaCore/Log.h>
#include <Infrastructure/OxaCore/LogManager.h>

namespace Oxa::Core {

IOxaLogger::~IOxaLogger() = default;

IOxaLogHandler::~IOxaLogHandler() = default;

IOxaLogService::~IOxaLogService() = default;

LogManager::IDefaultLogService::~IDefaultLogService() = default;

InvalidLogPath::InvalidLogPath(const std::string& path)
    : ErrorClass(AlertMessage("Invalid log path: %1%", path)) {}
InvalidLogPath::~InvalidLogPath() = default;

}  // namespace Oxa::Core
