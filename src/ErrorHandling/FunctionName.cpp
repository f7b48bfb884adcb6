#include "ErrorHandling/FunctionName.h"

namespace Oxa::Core {

namespace {

constexpr auto uNOT_FOUND = std::string_view::npos;

bool IsIdentifier(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool Opens(char c) { return c == '(' || c == '<' || c == '{' || c == '['; }
bool Closes(char c) { return c == ')' || c == '>' || c == '}' || c == ']'; }

// " [with T = int]" and the like, behind the signature of a template.
std::string_view WithoutTemplateList(std::string_view signature) {
  if (signature.empty() || signature.back() != ']') return signature;
  const auto list = signature.rfind(" [");
  return list == uNOT_FOUND ? signature : signature.substr(0, list);
}

// Position of the parenthesis that opens the parameters.
std::size_t FindParameters(std::string_view signature) {
  auto position = signature.rfind(')');
  if (position == uNOT_FOUND) return uNOT_FOUND;
  for (int depth = 0;; --position) {
    if (signature[position] == ')') ++depth;
    if (signature[position] == '(' && --depth == 0) return position;
    if (position == 0) return uNOT_FOUND;
  }
}

// Where "operator…" begins if the name ends in one: its symbols must not be taken for brackets.
std::size_t FindOperator(std::string_view name) {
  constexpr std::string_view sKEYWORD = "operator";
  const auto found = name.rfind(sKEYWORD);
  if (found == uNOT_FOUND || (found > 0 && IsIdentifier(name[found - 1]))) return name.size();
  const auto behind = found + sKEYWORD.size();
  return behind < name.size() && IsIdentifier(name[behind]) ? name.size() : found;
}

std::size_t FindStart(std::string_view name, std::size_t from) {
  int depth = 0;
  for (auto position = from; position > 0; --position) {
    const char c = name[position - 1];
    if (Closes(c)) ++depth;
    if (Opens(c)) --depth;
    if (depth == 0 && (c == ' ' || c == '*' || c == '&')) return position;
  }
  return 0;
}

}  // namespace

std::string FunctionName(std::string_view signature) {
  constexpr std::string_view sLAMBDA = "::<lambda";
  signature = WithoutTemplateList(signature);
  const auto lambda = signature.rfind(sLAMBDA);
  if (lambda != uNOT_FOUND) return FunctionName(signature.substr(0, lambda)) + "::<lambda>";
  const auto parameters = FindParameters(signature);
  if (parameters == uNOT_FOUND) return std::string(signature);
  const auto name = signature.substr(0, parameters);
  return std::string(name.substr(FindStart(name, FindOperator(name))));
}

}  // namespace Oxa::Core
