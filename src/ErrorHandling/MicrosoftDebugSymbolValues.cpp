// How the values of symbols are read.
#include <algorithm>
#include <cstring>

#include "ErrorHandling/MicrosoftDebugSymbol.h"
#include "ErrorHandling/MicrosoftDebugSymbolNames.h"
#include "ErrorHandling/MicrosoftDebugSymbolTexts.h"

namespace MSWindows {

using namespace Oxa::Core::Platform;

namespace {

constexpr std::size_t uWIDEST = 32;  // of the basic types: a complex number of two of the longest
constexpr std::size_t uWIDEST_CHARACTER = 4;
constexpr std::size_t uPOINTER = sizeof(void*);

// As the number of uWIDEST bytes that it is.
void PutBits(std::uint64_t bits, bool isSigned, unsigned char* pBytes) {
  std::memset(pBytes, isSigned && static_cast<std::int64_t>(bits) < 0 ? 0xff : 0, uWIDEST);
  std::memcpy(pBytes, &bits, sizeof bits);
}

bool IsWidthOfCharacter(std::uint64_t width) {
  return width == 1 || width == 2 || width == uWIDEST_CHARACTER;
}

std::int64_t Continued(std::uint64_t bits, std::size_t size, bool isSigned) {
  if (!isSigned || size == 0 || size >= sizeof bits) return static_cast<std::int64_t>(bits);
  const unsigned unused = static_cast<unsigned>(sizeof bits - size) * 8;
  return static_cast<std::int64_t>(bits << unused) >> unused;
}

}  // namespace

/// Whether there are `size` bytes to read, readable or not.
bool DebugSymbol::HasPlace(std::size_t size) const {
  if (m_value.m_ePlace != eVALUE_IN_BYTES) return m_value.m_ePlace == eVALUE_IN_MEMORY;
  return size <= m_value.m_uBytes &&
         std::find(m_value.m_pKnown, m_value.m_pKnown + size, 0) == m_value.m_pKnown + size;
}

bool DebugSymbol::GetBytes(void* to, std::size_t size) const { return GetMost(to, size) == size; }

/// How many of the value's first bytes there are.
std::size_t DebugSymbol::GetMost(void* to, std::size_t size) const {
  if (m_value.m_ePlace == eVALUE_IN_MEMORY) return GetMemory(m_value.m_uAddress, to, size);
  if (!HasPlace(size)) return 0;
  std::memcpy(to, m_value.m_pBytes, size);
  return size;
}

/// What can't be read as a whole is read by half, so that there is something to show at the edge of what is there.
std::size_t DebugSymbol::GetMemory(std::uint64_t address, void* to, std::size_t size) const {
  while (size > 0 && !(m_pMemory && m_pMemory->Read(address, to, size))) size /= 2;
  return size;
}

/// A bit field out of the bytes that it lies in, of which there are uWIDEST.
std::uint64_t DebugSymbol::GetBits(const unsigned char* pBytes) const {
  std::uint64_t halves[2];
  std::memcpy(halves, pBytes, sizeof halves);
  std::uint64_t bits = halves[0];
  if (m_uBitOffset > 0) bits = bits >> m_uBitOffset | halves[1] << (64 - m_uBitOffset);
  if (m_uBitSize >= 64) return bits;
  bits &= (std::uint64_t(1) << m_uBitSize) - 1;
  const bool negative = m_pType->m_bSigned && (bits >> (m_uBitSize - 1) & 1) != 0;
  return negative ? bits | ~std::uint64_t(0) << m_uBitSize : bits;
}

/// How many bytes the value is held in.
std::size_t DebugSymbol::GetStoredSize() const {
  if (m_uBitSize == 0) return static_cast<std::size_t>(std::min<std::uint64_t>(m_pType->m_uSize, uWIDEST));
  return std::min<std::size_t>((m_uBitOffset + m_uBitSize + 7) / 8, uWIDEST);
}

void DebugSymbol::ReadBasic(const Type& type) {
  unsigned char bytes[uWIDEST] = {};
  const std::size_t stored = GetStoredSize();
  if (type.m_eBasic == eBASIC_BSTR) return ReadPointer(type);
  if (!HasPlace(stored) || type.m_uSize > uWIDEST) {
    m_sValue = sNO_ADDRESS;
  } else if (!GetBytes(bytes, stored)) {
    m_sValue = sUNREADABLE;
  } else {
    if (m_uBitSize > 0) PutBits(GetBits(bytes), type.m_bSigned, bytes);
    m_sValue = BasicText(type, bytes, static_cast<std::size_t>(type.m_uSize));
  }
}

void DebugSymbol::ReadPointer(const Type& type) {
  std::uint64_t address = 0;
  if (!HasPlace(uPOINTER)) {
    m_sValue = sNO_ADDRESS;
    return;
  }
  if (!GetBytes(&address, uPOINTER)) {
    m_sValue = sUNREADABLE_POINTER;
    return;
  }
  m_sValue = AddressText(address);
  const bool wideText = type.m_eTag == eTYPE_BASIC;
  const std::uint64_t width = wideText ? sizeof(wchar_t) : type.m_pOf ? type.m_pOf->m_uSize : 0;
  if ((wideText || IsCharacter(type.m_pOf)) && IsWidthOfCharacter(width))
    m_sValue += " " + GetTextAt(address, width);
}

void DebugSymbol::ReadMemberPointer() {
  std::uint64_t offset = 0;
  if (!HasPlace(uPOINTER))
    m_sValue = sNO_ADDRESS;
  else
    m_sValue = GetBytes(&offset, uPOINTER) ? AddressText(offset) : sUNREADABLE_POINTER;
}

void DebugSymbol::ReadReference(const Type& type, Progress& progress) {
  Value value;
  if (!HasPlace(uPOINTER) || !type.m_pOf) {
    m_sValue = sNO_ADDRESS;
    return;
  }
  if (!GetBytes(&value.m_uAddress, uPOINTER)) {
    m_sValue = sUNREADABLE_POINTER;
    return;
  }
  value.m_ePlace = eVALUE_IN_MEMORY;
  DebugSymbol referred(*this, m_sName, type.m_pOf, value, m_iDepth);
  if (!referred.ReadPart(progress)) referred.PutAddress();
  m_sValue = referred.m_sValue;
  m_children.swap(referred.m_children);
}

void DebugSymbol::PutAddress() { m_sValue = AddressText(m_value.m_uAddress); }

void DebugSymbol::ReadEnum(const Type& type) {
  if (type.m_complete) type.m_complete(const_cast<Type&>(type));
  unsigned char bytes[uWIDEST] = {};
  const std::size_t stored = GetStoredSize();
  if (!HasPlace(stored)) {
    m_sValue = sNO_ADDRESS;
    return;
  }
  if (!GetBytes(bytes, stored)) {
    m_sValue = sUNREADABLE;
    return;
  }
  std::uint64_t bits = 0;
  std::memcpy(&bits, bytes, sizeof bits);
  const std::int64_t value =
      m_uBitSize > 0 ? static_cast<std::int64_t>(GetBits(bytes)) : Continued(bits, stored, type.m_bSigned);
  const auto named =
      std::find_if(type.m_enumerators.begin(), type.m_enumerators.end(),
                   [=](const EnumeratorFacts& enumerator) { return enumerator.m_iValue == value; });
  m_sValue = named != type.m_enumerators.end() ? named->m_sName : std::to_string(value);
}

/// The text that ends with a zero at `address`.
std::string DebugSymbol::GetTextAt(std::uint64_t address, std::size_t width) const {
  unsigned char characters[uMOST_CHARACTERS * uWIDEST_CHARACTER];
  const std::size_t read = GetMemory(address, characters, uMOST_CHARACTERS * width) / width;
  if (read == 0) return std::string("\"") + sUNREADABLE_STRING + "\"";
  const std::size_t count = LengthToZero(characters, read, width);
  std::string text = QuotedText(characters, count, width);
  std::uint32_t next = 0;
  if (count == uMOST_CHARACTERS && GetMemory(address + count * width, &next, width) == width && next != 0)
    text += sMORE;
  return text;
}

std::string DebugSymbol::GetCountedText(std::uint64_t address, std::uint64_t count, std::size_t width) const {
  unsigned char characters[uMOST_CHARACTERS * uWIDEST_CHARACTER];
  const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, uMOST_CHARACTERS));
  const std::size_t read = GetMemory(address, characters, wanted * width) / width;
  if (wanted > 0 && read == 0) return std::string("\"") + sUNREADABLE_STRING + "\"";
  return QuotedText(characters, read, width) + (count > wanted && read == wanted ? sMORE : "");
}

/// The text that the symbol itself consists of.
std::string DebugSymbol::GetOwnText(std::uint64_t count, std::size_t width) const {
  unsigned char characters[uMOST_CHARACTERS * uWIDEST_CHARACTER];
  const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, uMOST_CHARACTERS));
  if (!HasPlace(wanted * width)) return sNO_ADDRESS;
  const std::size_t read = GetMost(characters, wanted * width) / width;
  if (wanted > 0 && read == 0) return sUNREADABLE_OBJECT;
  const std::size_t length = LengthToZero(characters, read, width);
  return QuotedText(characters, length, width) + (count > wanted && length == wanted ? sMORE : "");
}

}  // namespace MSWindows
