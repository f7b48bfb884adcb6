#include <Infrastructure/OxaCore/CodeContext.h>

#include <utility>

#include "Core/Immortal.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/Hooks.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sUNKNOWN_LINE = "Unknown";
constexpr std::size_t uBUCKETS = 8;

void StoreUnlessEmpty(AlertData& table, const std::string& key, const std::string& value) {
  if (!value.empty()) table[key] = value;
}

}  // namespace

CodeContext::CodeContext(const std::string& file, int line, const std::string& buildTime,
                         const std::string& function, const std::string& signature) {
  try {
    m_contextInfo.rehash(uBUCKETS);
    m_contextInfo[sFILE] = file;
    m_contextInfo[sLINE] = line < 0 ? sUNKNOWN_LINE : std::to_string(line);
    StoreUnlessEmpty(m_contextInfo, sBUILD_TIME, buildTime);
    StoreUnlessEmpty(m_contextInfo, sFUNCTION, function);
    StoreUnlessEmpty(m_contextInfo, sSIGNATURE, signature);
    // System may be gone by then, and nothing here may touch it.
    const AlertInFlight flight;
    if (flight.MayProceed()) TheHooks().addCircumstances(m_contextInfo);
  } catch (...) {
    Platform::LetCancellationPass();
    // A place is told as far as memory allows; the failure that it is told for matters more.
  }
}

CodeContext::CodeContext(const AlertData& context, const AlertData& variables)
    : m_contextInfo(context), m_variables(variables) {}

CodeContext::CodeContext(AlertData&& context, AlertData&& variables) noexcept
    : m_contextInfo(std::move(context)), m_variables(std::move(variables)) {}

CodeContext::CodeContext(const CodeContext& other) = default;

CodeContext::CodeContext(CodeContext&& other) noexcept = default;

CodeContext& CodeContext::operator=(const CodeContext& other) = default;

CodeContext& CodeContext::operator=(CodeContext&& other) noexcept = default;

CodeContext::~CodeContext() = default;

const std::string& CodeContext::Get(const std::string& key) const {
  const auto entry = m_contextInfo.find(key);
  return entry == m_contextInfo.end() ? g_sNO_TEXT : entry->second;
}

const AlertData& CodeContext::GetContextInfo() const { return m_contextInfo; }

const AlertData& CodeContext::GetVariables() const { return m_variables; }

bool CodeContext::HasVariableInfo() const { return !m_variables.empty(); }

}  // namespace Oxa::Core
