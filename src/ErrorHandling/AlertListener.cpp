#include <Infrastructure/OxaCore/AlertListener.h>

namespace Oxa::Core {

namespace {

constexpr std::uint32_t uEVERY_SEVERITY = AlertInfo::eWARNING | AlertInfo::eERROR | AlertInfo::eCRITICAL;

}  // namespace

AlertListener::AlertListener() : m_severityMask(uEVERY_SEVERITY) {}

AlertListener::~AlertListener() = default;

bool AlertListener::IsInterestedIn(AlertInfo& alert) const {
  // An alert that was rebuilt from a record has severity -1: every bit.
  if ((static_cast<std::uint32_t>(alert.GetSeverity()) & m_severityMask) == 0) return false;
  for (const auto& [key, accepted] : m_dataFilter) {
    if (!accepted.empty() && accepted.count(alert.GetData(key)) == 0) return false;
  }
  return true;
}

void AlertListener::ErrorRaised(Error&) {}

void AlertListener::ErrorHandled(Error&) {}

void AlertListener::UncaughtFatalError(Error&, const std::string&) {}

void AlertListener::WarningRaised(Warning&) {}

}  // namespace Oxa::Core
