#include "ErrorHandling/MicrosoftDebugSymbolNames.h"

#include <algorithm>
#include <iterator>

namespace MSWindows {

using namespace Oxa::Core::Platform;

namespace {

const char* const sUNNAMED = "<unnamed>";
const char* const sWIDE_POINTER = "wchar_t *";
const char* const sUNKNOWN = "[UNKNOWN BasicType]";
constexpr int iDEEPEST = 16;  // types of types; made-up ones may go in circles

const char* const sLEFT_OUT[] = {"Oxa::Core::CodeContext", "Oxa::Core::Error", "Oxa::Core::Error *"};

const char* const sSTREAMS[] = {
    "std::basic_stringstream<char,std::char_traits<char>,std::allocator<char> >",
    "std::basic_istringstream<char,std::char_traits<char>,std::allocator<char> >",
    "std::basic_ostringstream<char,std::char_traits<char>,std::allocator<char> >",
    "std::basic_stringstream<wchar_t,std::char_traits<wchar_t>,std::allocator<wchar_t> >",
    "std::basic_istringstream<wchar_t,std::char_traits<wchar_t>,std::allocator<wchar_t> >",
    "std::basic_ostringstream<wchar_t,std::char_traits<wchar_t>,std::allocator<wchar_t> >",
};

std::string Built(const TypeFacts* pType, int depth);

const char* IntegerName(std::uint64_t size) {
  switch (size) {
    case 1:
      return "char";
    case 2:
      return "short";
    case 4:
      return "long";
    case 8:
      return "_int64";
    case 16:
      return "_int128";
    default:
      return nullptr;
  }
}

std::string IntegerName(std::uint64_t size, const std::string& before) {
  const char* const name = IntegerName(size);
  return name ? before + name : sUNKNOWN;
}

std::string BasicName(const TypeFacts& type) {
  switch (type.m_eBasic) {
    case eBASIC_NONE:
      return "[NO TYPE]";
    case eBASIC_VOID:
      return "void";
    case eBASIC_CHAR:
      return "char";
    case eBASIC_WCHAR:
      return "UNICODE_CHAR";
    case eBASIC_INT:
      return IntegerName(type.m_uSize, "");
    case eBASIC_UINT:
      return IntegerName(type.m_uSize, "unsigned ");
    case eBASIC_FLOAT:
      return "float";
    case eBASIC_BCD:
      return "BCD";
    case eBASIC_BOOL:
      return "bool";
    case eBASIC_LONG:
      return "long";
    case eBASIC_ULONG:
      return "unsigned long";
    case eBASIC_CURRENCY:
      return "CURRENCY";
    case eBASIC_DATE:
      return "DATE";
    case eBASIC_VARIANT:
      return "VARIANT";
    case eBASIC_COMPLEX:
      return "COMPLEX";
    case eBASIC_BIT:
      return "BIT";
    case eBASIC_BSTR:
      return "BSTR";
    case eBASIC_HRESULT:
      return "HRESULT";
    default:
      return sUNKNOWN;
  }
}

// Of a function: `inside` stands between its result and its parameters.
std::string FunctionName(const TypeFacts& type, const char* inside, int depth) {
  if (type.m_complete) type.m_complete(const_cast<TypeFacts&>(type));
  std::string name = Built(type.m_pOf, depth) + " " + inside + "(";
  for (const MemberFacts& parameter : type.m_members) {
    if (name.back() != '(') name += ',';
    name += Built(parameter.m_pType, depth);
  }
  return name + ")";
}

std::string Pointing(const TypeFacts* pTo, const char* sign, int depth) {
  if (pTo && pTo->m_eTag == eTYPE_FUNCTION)
    return FunctionName(*pTo, (std::string("(") + sign + ")").c_str(), depth);
  std::string name = Built(pTo, depth);
  if (!name.empty()) name.append(name.back() == '*' ? "" : " ").append(sign);
  return name;
}

std::string PointerName(const TypeFacts& type, int depth) {
  const TypeFacts* const pTo = type.m_pOf;
  const bool wide = pTo && pTo->m_eTag == eTYPE_BASIC && pTo->m_eBasic == eBASIC_WCHAR;
  return wide ? sWIDE_POINTER : Pointing(pTo, "*", depth);
}

std::string ArrayName(const TypeFacts& type, int depth) {
  const TypeFacts* pElement = &type;
  std::string dimensions;
  for (int left = iDEEPEST; left > 0 && pElement && pElement->m_eTag == eTYPE_ARRAY; --left) {
    dimensions += "[" + (pElement->m_iCount < 0 ? std::string() : std::to_string(pElement->m_iCount)) + "]";
    pElement = pElement->m_pOf;
  }
  std::string name = Built(pElement, depth);
  if (!name.empty()) name.append(" ").append(dimensions);
  return name;
}

std::string Built(const TypeFacts& type, int depth) {
  switch (type.m_eTag) {
    case eTYPE_POINTER:
      return PointerName(type, depth);
    case eTYPE_REFERENCE:
      return Pointing(type.m_pOf, "&", depth);
    case eTYPE_RVALUE_REFERENCE:
      return Pointing(type.m_pOf, "&&", depth);
    case eTYPE_MEMBER_POINTER:
      return Pointing(type.m_pOf, (type.m_sName + "::*").c_str(), depth);
    case eTYPE_ARRAY:
      return ArrayName(type, depth);
    case eTYPE_FUNCTION:
      return FunctionName(type, "", depth);
    case eTYPE_ENUM:
    case eTYPE_CLASS:
      return type.m_sName.empty() ? sUNNAMED : type.m_sName;
    default:
      return BasicName(type);
  }
}

std::string Built(const TypeFacts* pType, int depth) {
  if (!pType || depth == 0) return std::string();
  return pType->m_sText.empty() ? Built(*pType, depth - 1) : pType->m_sText;
}

bool IsReference(const TypeFacts& type) {
  return type.m_eTag == eTYPE_REFERENCE || type.m_eTag == eTYPE_RVALUE_REFERENCE;
}

template <class Names>
bool Contains(const Names& names, const std::string& name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool IsSpared(const TypeFacts& type) {
  if (type.m_eTag != eTYPE_CLASS && type.m_eTag != eTYPE_POINTER) return false;
  if (Contains(sLEFT_OUT, TypeName(type))) return true;
  return type.m_eTag == eTYPE_CLASS && Contains(sSTREAMS, TypeName(type));
}

bool IsObjectOfTheErrorSystem(const std::string& name, const TypeFacts& type) {
  return name == "this" && type.m_eTag == eTYPE_POINTER && type.m_pOf &&
         Contains(sLEFT_OUT, TypeName(*type.m_pOf));
}

// Of a class that is told of elsewhere, or nowhere.
bool IsOpaque(const TypeFacts& type) {
  return type.m_eTag == eTYPE_CLASS && !type.m_bComplete && type.m_eString == eSTRING_NONE;
}

}  // namespace

const std::string& TypeName(const TypeFacts& type) {
  if (type.m_sText.empty()) type.m_sText = Built(type, iDEEPEST);
  return type.m_sText;
}

bool IsLeftOut(const std::string& name, const TypeFacts& type) {
  if (type.m_eTag == eTYPE_FUNCTION || IsOpaque(type) || IsSpared(type)) return true;
  if (IsReference(type) && type.m_pOf && IsSpared(*type.m_pOf)) return true;
  return IsObjectOfTheErrorSystem(name, type);
}

bool IsCharacter(const TypeFacts* pType) {
  return pType && pType->m_eTag == eTYPE_BASIC &&
         (pType->m_eBasic == eBASIC_CHAR || pType->m_eBasic == eBASIC_WCHAR);
}

}  // namespace MSWindows
