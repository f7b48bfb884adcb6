#include <Infrastructure/OxaCore/Log.h>

namespace Oxa::Core {

namespace {

std::string LastComponent(const std::string& path) { return path.substr(path.rfind('.') + 1); }

}  // namespace

Logger::Logger(const std::string& path)
    : m_sPath(path), m_sName(LastComponent(path)), m_uFilters(uDEFAULT_LOG_FILTERS) {}

Logger::~Logger() = default;

std::string Logger::GetPath() const { return m_sPath; }

std::string Logger::GetName() const { return m_sName; }

unsigned int Logger::GetSeverityFilters() const { return m_uFilters.load(std::memory_order_relaxed); }

void Logger::SetSeverityFilters(unsigned int filters) {
  m_uFilters.store(filters, std::memory_order_relaxed);
}

Logger& Logger::operator=(const IOxaLogger& other) {
  std::string path = other.GetPath();
  std::string name = other.GetName();
  const unsigned int filters = other.GetSeverityFilters();
  m_sPath.swap(path);
  m_sName.swap(name);
  SetSeverityFilters(filters);
  return *this;
}

Logger& Logger::operator=(const Logger& other) { return *this = static_cast<const IOxaLogger&>(other); }

}  // namespace Oxa::Core
