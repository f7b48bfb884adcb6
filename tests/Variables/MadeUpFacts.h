// Facts of symbols as the tests want them, without any debug data.
#ifndef OXACORE_TESTS_VARIABLES_MADEUPFACTS_H
#define OXACORE_TESTS_VARIABLES_MADEUPFACTS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ErrorHandling/MicrosoftDebugSymbol.h"

namespace OxaTest {

using namespace Oxa::Core::Platform;

inline TypeFacts Basic(int basic, std::uint64_t size, bool isSigned = false) {
  TypeFacts type;
  type.m_eBasic = static_cast<EBasicType>(basic);
  type.m_uSize = size;
  type.m_bSigned = isSigned;
  return type;
}

inline TypeFacts Over(ETypeTag tag, const TypeFacts& of, std::uint64_t size = sizeof(void*)) {
  TypeFacts type;
  type.m_eTag = tag;
  type.m_pOf = &of;
  type.m_uSize = size;
  return type;
}

inline TypeFacts ArrayOf(const TypeFacts& element, std::int64_t count) {
  TypeFacts type = Over(eTYPE_ARRAY, element, element.m_uSize * static_cast<std::uint64_t>(count));
  type.m_iCount = count;
  return type;
}

inline TypeFacts Class(const std::string& name, std::uint64_t size) {
  TypeFacts type;
  type.m_eTag = eTYPE_CLASS;
  type.m_sName = name;
  type.m_uSize = size;
  return type;
}

inline void AddMember(TypeFacts& type, const std::string& name, const TypeFacts& of, std::uint64_t offset) {
  MemberFacts member;
  member.m_sName = name;
  member.m_pType = &of;
  member.m_uOffset = offset;
  type.m_members.push_back(member);
}

inline void AddBase(TypeFacts& type, const TypeFacts& base, std::uint64_t offset) {
  AddMember(type, std::string(), base, offset);
  type.m_members.back().m_bBase = true;
}

/// A variable and what it takes to read it.
class Variable {
 public:
  explicit Variable(const TypeFacts& type, const char* name = "variable") {
    m_facts.m_pName = name;
    m_facts.m_pType = &type;
    m_facts.m_pMemory = &m_memory;
  }

  Variable& At(const void* address) { return At(reinterpret_cast<std::uintptr_t>(address)); }

  Variable& At(std::uint64_t address) {
    m_facts.m_value.m_ePlace = eVALUE_IN_MEMORY;
    m_facts.m_value.m_uAddress = address;
    return *this;
  }

  Variable& In(std::vector<unsigned char> bytes, std::vector<unsigned char> known) {
    m_bytes = std::move(bytes);
    m_known = std::move(known);
    m_facts.m_value.m_ePlace = eVALUE_IN_BYTES;
    m_facts.m_value.m_pBytes = m_bytes.data();
    m_facts.m_value.m_pKnown = m_known.data();
    m_facts.m_value.m_uBytes = m_bytes.size();
    return *this;
  }

  const VariableFacts& Facts() const { return m_facts; }

 private:
  VariableFacts m_facts;
  MemoryReader m_memory;
  std::vector<unsigned char> m_bytes;
  std::vector<unsigned char> m_known;
};

inline std::string TypeOf(const TypeFacts& type) {
  const std::uint64_t nothing = 0;
  Variable variable(type);
  MSWindows::DebugSymbol symbol(nullptr, variable.At(&nothing).Facts());
  return symbol.Read() ? symbol.GetTypeName() : "(left out)";
}

inline std::string ValueOf(Variable& variable) {
  MSWindows::DebugSymbol symbol(nullptr, variable.Facts());
  return symbol.Read() ? symbol.GetValue() : "(left out)";
}

template <class Value>
std::string ValueOf(const TypeFacts& type, const Value& value) {
  Variable variable(type);
  return ValueOf(variable.At(&value));
}

inline std::string ValueAt(const TypeFacts& type, std::uint64_t address) {
  Variable variable(type);
  return ValueOf(variable.At(address));
}

inline std::string ValueWithoutPlace(const TypeFacts& type) {
  Variable variable(type);
  return ValueOf(variable);
}

}  // namespace OxaTest

#endif
