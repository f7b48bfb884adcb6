#include <Infrastructure/OxaCore/CodeContext.h>

#include <boost/make_shared.hpp>
#include <utility>

#include "Core/Immortal.h"
#include "ErrorHandling/PlaceTables.h"

namespace Oxa::Core {

namespace {

boost::shared_ptr<const AlertData> Keep(AlertData&& table) {
  return table.empty() ? boost::shared_ptr<const AlertData>()
                       : boost::make_shared<const AlertData>(std::move(table));
}

}  // namespace

CodeContext::CodeContext(const std::string& file, int line, const std::string& buildTime,
                         const std::string& function, const std::string& signature) {
  bool whole = false;
  m_contextInfo = DescribePlace(file, line, buildTime, function, signature, whole);
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
