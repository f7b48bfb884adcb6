#include <Infrastructure/OxaCore/CodeContext.h>

#include <boost/make_shared.hpp>
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

boost::shared_ptr<const AlertData> Keep(AlertData&& table) {
  return table.empty() ? boost::shared_ptr<const AlertData>()
                       : boost::make_shared<const AlertData>(std::move(table));
}

}  // namespace

CodeContext::CodeContext(const std::string& file, int line, const std::string& buildTime,
                         const std::string& function, const std::string& signature) {
  try {
    const boost::shared_ptr<AlertData> table = boost::make_shared<AlertData>(uBUCKETS);
    m_contextInfo = table;
    (*table)[sFILE] = file;
    (*table)[sLINE] = line < 0 ? sUNKNOWN_LINE : std::to_string(line);
    StoreUnlessEmpty(*table, sBUILD_TIME, buildTime);
    StoreUnlessEmpty(*table, sFUNCTION, function);
    StoreUnlessEmpty(*table, sSIGNATURE, signature);
    // System may be gone by then, and nothing here may touch it.
    const AlertInFlight flight;
    if (flight.MayProceed()) TheHooks().addCircumstances(*table);
  } catch (...) {
    Platform::LetCancellationPass();
    // A place is told as far as memory allows; the failure that it is told for matters more.
  }
}

CodeContext::CodeContext(const AlertData& context, const AlertData& variables)
    : CodeContext(AlertData(context), AlertData(variables)) {}

CodeContext::CodeContext(AlertData&& context, AlertData&& variables)
    : m_contextInfo(Keep(std::move(context))), m_variables(Keep(std::move(variables))) {}

CodeContext CodeContext::Sharing(Table context, AlertData&& variables) {
  CodeContext place;
  place.m_contextInfo = std::move(context);
  place.m_variables = Keep(std::move(variables));
  return place;
}

CodeContext::CodeContext(const CodeContext& other) = default;

CodeContext::CodeContext(CodeContext&& other) noexcept = default;

CodeContext& CodeContext::operator=(const CodeContext& other) = default;

CodeContext& CodeContext::operator=(CodeContext&& other) noexcept = default;

CodeContext::~CodeContext() = default;

const std::string& CodeContext::Get(const std::string& key) const {
  const AlertData& table = GetContextInfo();
  const auto entry = table.find(key);
  return entry == table.end() ? g_sNO_TEXT : entry->second;
}

const AlertData& CodeContext::GetContextInfo() const { return m_contextInfo ? *m_contextInfo : sEMPTY_TABLE; }

const AlertData& CodeContext::GetVariables() const { return m_variables ? *m_variables : sEMPTY_TABLE; }

bool CodeContext::HasVariableInfo() const { return !GetVariables().empty(); }

}  // namespace Oxa::Core
