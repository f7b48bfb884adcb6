// What the debug data tells of a variable and its type: facts without any text of ours.
//
// Everything that a pointer leads to belongs to the reader of debug data and stands while the variable is handed over;
// types stand longer, until the reader forgets them.
#ifndef OXACORE_PLATFORM_VARIABLES_H
#define OXACORE_PLATFORM_VARIABLES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Platform/MemoryReader.h"

namespace Oxa::Core::Platform {

enum ETypeTag {
  eTYPE_BASIC,
  eTYPE_POINTER,
  eTYPE_REFERENCE,
  eTYPE_RVALUE_REFERENCE,
  eTYPE_MEMBER_POINTER,  ///< to data or a function of a class
  eTYPE_ARRAY,
  eTYPE_ENUM,
  eTYPE_CLASS,  ///< and structures and unions
  eTYPE_FUNCTION
};

/// The kinds of basic types, by the numbers that they are known by.
enum EBasicType {
  eBASIC_NONE = 0,
  eBASIC_VOID = 1,
  eBASIC_CHAR = 2,
  eBASIC_WCHAR = 3,
  eBASIC_INT = 6,
  eBASIC_UINT = 7,
  eBASIC_FLOAT = 8,
  eBASIC_BCD = 9,
  eBASIC_BOOL = 10,
  eBASIC_LONG = 13,
  eBASIC_ULONG = 14,
  eBASIC_CURRENCY = 25,
  eBASIC_DATE = 26,
  eBASIC_VARIANT = 27,
  eBASIC_COMPLEX = 28,
  eBASIC_BIT = 29,
  eBASIC_BSTR = 30,
  eBASIC_HRESULT = 31,
  eBASIC_OTHER = 255
};

/// How an object of the language's own string class holds its characters.
enum EStringForm {
  eSTRING_NONE,         ///< it isn't one
  eSTRING_WITH_LENGTH,  ///< a pointer to them, then their number
  eSTRING_COUNTED       ///< a pointer to them, and three words before them their number
};

struct TypeFacts;

/// A base class or a data member that every object has.
struct MemberFacts {
  std::string m_sName;                 ///< empty for a base class, and where the source has none
  const TypeFacts* m_pType = nullptr;  ///< null if the debug data doesn't tell
  std::uint64_t m_uOffset = 0;         ///< bytes from the start of the object
  unsigned m_uBitOffset = 0;  ///< of a bit field: the bits before it, from the lowest bit at the offset
  unsigned m_uBitSize = 0;    ///< of a bit field: its width, otherwise 0
  bool m_bBase = false;
  bool m_bTable = false;  ///< the pointer to the table of virtual functions
  /// Where the place differs from object to object (virtual bases): gives the address in the object at `object`, false
  /// if it can't be found. Takes `m_pHow`. Otherwise null.
  bool (*m_locate)(const void* how, MemoryReader& memory, std::uint64_t object,
                   std::uint64_t& address) = nullptr;
  const void* m_pHow = nullptr;
};

struct EnumeratorFacts {
  std::string m_sName;
  std::int64_t m_iValue = 0;
};

/// A type without `const` and `volatile`, and with the names that stand for others replaced by these.
struct TypeFacts {
  ETypeTag m_eTag = eTYPE_BASIC;
  EBasicType m_eBasic = eBASIC_NONE;
  std::uint64_t m_uSize = 0;   ///< bytes
  std::uint64_t m_uIndex = 0;  ///< tells the types of a module apart
  bool m_bSigned = false;      ///< of an enumeration
  bool m_bComplete = true;     ///< false: no more than the name is known
  /// Of classes and enumerations, with its namespaces and classes; empty where the source has none.
  std::string m_sName;
  /// What is pointed or referred to, the element of an array, the result of a function; null if the debug data doesn't
  /// tell.
  const TypeFacts* m_pOf = nullptr;
  std::int64_t m_iCount = -1;  ///< elements of an array, -1 if unknown
  EStringForm m_eString = eSTRING_NONE;
  unsigned m_uCharacter = 1;  ///< of a string: the bytes of a character

  /// Fills in what follows when it's needed for the first time; null where it is there.
  void (*m_complete)(TypeFacts& type) = nullptr;
  /// Base classes first, then in the order of the source; of functions the parameters.
  std::vector<MemberFacts> m_members;
  std::vector<EnumeratorFacts> m_enumerators;

  /// The reader's text for the type, kept here since it's always the same; empty at first.
  mutable std::string m_sText;
};

enum EValuePlace {
  eVALUE_NOWHERE,  ///< can't be found
  eVALUE_IN_MEMORY,
  eVALUE_IN_BYTES  ///< put together from registers, constants and pieces of memory
};

struct ValueFacts {
  EValuePlace m_ePlace = eVALUE_NOWHERE;
  std::uint64_t m_uAddress = 0;             ///< in memory
  const unsigned char* m_pBytes = nullptr;  ///< in bytes: the value
  const unsigned char* m_pKnown = nullptr;  ///< for each of these bytes 0 if it can't be found
  std::size_t m_uBytes = 0;
};

struct VariableFacts {
  const char* m_pName = "";
  const TypeFacts* m_pType = nullptr;  ///< null if the debug data doesn't tell
  ValueFacts m_value;
  bool m_bParameter = false;
  MemoryReader* m_pMemory = nullptr;  ///< what the memory of the frame is best read by
};

/// Takes the variables of one frame, one after the other.
struct VariableSink {
  void (*m_take)(void* receiver, const VariableFacts& variable) = nullptr;
  void* m_pReceiver = nullptr;
};

}  // namespace Oxa::Core::Platform

#endif
