#include <Infrastructure/OxaCore/AlertManager.h>

#include <algorithm>
#include <tuple>
#include <typeinfo>

#include "Platform/Symbols.h"

namespace Oxa::Core {

namespace {

const char* const sUNKNOWN_CLASS = "[Unknown]";
const char* const sUNKNOWN_CATEGORY = "Unknown";

bool IsBefore(const AlertRecord& left, const AlertRecord& right) {
  return left.GetRaisedCount() != right.GetRaisedCount() ? left.GetRaisedCount() > right.GetRaisedCount()
                                                         : left.GetClass() < right.GetClass();
}

}  // namespace

unsigned long AlertRecord::GetInfiniteWarnings() { return SaturatingCount::uTOP; }

AlertRecord::AlertRecord() : AlertRecord(sUNKNOWN_CLASS, sUNKNOWN_CATEGORY) {}

AlertRecord::AlertRecord(const std::string& className, const std::string& category)
    : m_sClass(className), m_sCategory(category) {}

AlertRecord::AlertRecord(const AlertInfo& alert) { Describe(alert); }

void AlertRecord::Describe(const AlertInfo& alert) {
  m_sClass = Platform::UndecoratedName(typeid(alert));
  m_sCategory = alert.GetData(AlertInfo::sCATEGORY);
}

WarningRecord::WarningRecord() : m_uMaxWarnings(SaturatingCount::uTOP) {}

WarningRecord::WarningRecord(const std::string& className, const std::string& category)
    : AlertRecord(className, category), m_uMaxWarnings(SaturatingCount::uTOP) {}

WarningRecord::WarningRecord(const AlertInfo& warning)
    : AlertRecord(warning), m_uMaxWarnings(SaturatingCount::uTOP) {}

void WarningRecord::SetMaxWarnings(unsigned long max) {
  m_uMaxWarnings = static_cast<std::uint32_t>(std::min(max, GetInfiniteWarnings()));
}

bool WarningRecord::ShouldWarningBeRaised() {
  const bool speaks = m_uMaxWarnings == SaturatingCount::uTOP || m_uMaxWarnings > m_warnings.Get();
  (speaks ? m_warnings : m_silenced).Add();
  return speaks;
}

ErrorRecord::ErrorRecord() = default;

ErrorRecord::ErrorRecord(const AlertInfo& error) { Describe(error); }

void ErrorRecord::Describe(const AlertInfo& error) {
  AlertRecord::Describe(error);
  m_sSeverity = error.GetData(AlertInfo::sSEVERITY);
}

bool SSortErrors::operator()(const ErrorRecord& left, const ErrorRecord& right) const {
  return IsBefore(left, right);
}

bool SSortWarnings::operator()(const WarningRecord& left, const WarningRecord& right) const {
  return IsBefore(left, right);
}

ErrorHandler::ErrorHandler() = default;

ErrorHandler::~ErrorHandler() = default;

void ErrorHandler::HandledByPrior(Error&) {}

void ErrorHandler::HandledByLatter(Error&) {}

}  // namespace Oxa::Core
