// Symbols that consist of others: arrays, objects and strings.
#include <algorithm>

#include "ErrorHandling/MicrosoftDebugSymbol.h"
#include "ErrorHandling/MicrosoftDebugSymbolNames.h"
#include "ErrorHandling/MicrosoftDebugSymbolTexts.h"

namespace MSWindows {

using namespace Oxa::Core::Platform;

namespace {

const char* const sTABLE = "__vfptr";
constexpr std::int64_t iMOST_ELEMENTS = 16;
constexpr int iMOST_MEMBERS = 200;  // of one variable, in all its objects
constexpr std::uint64_t uPOINTER = sizeof(void*);

// Whether anything of an object is there is told by its first bytes.
constexpr std::size_t uPROBE = 64;

}  // namespace

DebugSymbol::Value DebugSymbol::PartOfValue(std::uint64_t offset, std::uint64_t size) const {
  Value part = m_value;
  if (part.m_ePlace == eVALUE_IN_MEMORY) {
    part.m_uAddress += offset;
  } else if (part.m_ePlace == eVALUE_IN_BYTES && offset <= part.m_uBytes && size <= part.m_uBytes - offset) {
    part.m_pBytes += offset;
    part.m_pKnown += offset;
    part.m_uBytes = size;
  } else {
    part = Value();
  }
  return part;
}

DebugSymbol::Value DebugSymbol::PlaceOf(const Member& member) const {
  const std::uint64_t bits = (member.m_uBitOffset + member.m_uBitSize + 7) / 8;
  if (!member.m_locate)
    return PartOfValue(member.m_uOffset, member.m_uBitSize > 0 ? bits : member.m_pType->m_uSize);
  Value place;
  if (m_value.m_ePlace == eVALUE_IN_MEMORY && m_pMemory &&
      member.m_locate(member.m_pHow, *m_pMemory, m_value.m_uAddress, place.m_uAddress))
    place.m_ePlace = eVALUE_IN_MEMORY;
  return place;
}

void DebugSymbol::ReadArray(const Type& type, Progress& progress) {
  const Type* const pElement = type.m_pOf;
  if (type.m_iCount < 0 || !pElement || pElement->m_uSize == 0) return PutAddress();
  const std::uint64_t width = pElement->m_uSize;
  if (IsCharacter(pElement) && (width == 1 || width == 2 || width == 4))
    m_sValue = GetOwnText(static_cast<std::uint64_t>(type.m_iCount), static_cast<std::size_t>(width));
  else
    ReadElements(type, progress);
}

void DebugSymbol::ReadElements(const Type& type, Progress& progress) {
  unsigned char probe[uPROBE];
  const std::size_t probed = static_cast<std::size_t>(std::min<std::uint64_t>(type.m_uSize, uPROBE));
  if (probed > 0 && m_value.m_ePlace == eVALUE_IN_MEMORY && GetMost(probe, probed) == 0) {
    m_sValue = sUNREADABLE_OBJECT;
    return;
  }
  const std::uint64_t width = type.m_pOf->m_uSize;
  m_sValue = "{";
  for (std::int64_t at = 0; at < std::min(type.m_iCount, iMOST_ELEMENTS); ++at) {
    if (at > 0) m_sValue += ", ";
    if (++progress.m_iMembers > iMOST_MEMBERS) break;
    DebugSymbol element(*this, std::string(), type.m_pOf,
                        PartOfValue(static_cast<std::uint64_t>(at) * width, width), m_iDepth);
    if (element.ReadPart(progress)) m_sValue += element.m_sValue;
  }
  if (progress.m_iMembers > iMOST_MEMBERS)
    m_sValue += sMORE;
  else if (type.m_iCount > iMOST_ELEMENTS)
    m_sValue += std::string(", ") + sMORE;
  m_sValue += "}";
}

void DebugSymbol::ReadObject(const Type& type, Progress& progress) {
  unsigned char probe[uPROBE];
  const std::size_t probed = static_cast<std::size_t>(std::clamp<std::uint64_t>(type.m_uSize, 1, uPROBE));
  if (m_value.m_ePlace == eVALUE_IN_MEMORY && GetMost(probe, probed) == 0)
    m_sValue = sUNREADABLE_OBJECT;
  else if (type.m_eString != eSTRING_NONE)
    ReadString(type);
  else if (m_iDepth >= iDEPTH)
    m_sValue = sDEEPER;
  else
    ReadMembers(type, progress);
}

void DebugSymbol::ReadString(const Type& type) {
  const bool counted = type.m_eString == eSTRING_COUNTED;
  std::uint64_t parts[2] = {};
  const std::size_t size = counted ? uPOINTER : sizeof parts;
  if (!HasPlace(size)) {
    m_sValue = sNO_ADDRESS;
    return;
  }
  if (!GetBytes(parts, size) || (counted && !m_pMemory->Read(parts[0] - 3 * uPOINTER, &parts[1], uPOINTER))) {
    m_sValue = sUNREADABLE_OBJECT;
    return;
  }
  m_sValue = GetCountedText(parts[0], parts[1], type.m_uCharacter);
}

void DebugSymbol::ReadMembers(const Type& type, Progress& progress) {
  if (type.m_complete) type.m_complete(const_cast<Type&>(type));
  m_sValue = "{";
  for (const Member& member : type.m_members) {
    if (member.m_bTable || member.m_sName == sTABLE || !member.m_pType) continue;
    if (++progress.m_iMembers > iMOST_MEMBERS) {
      m_sValue += m_sValue.size() > 1 ? std::string(", ") + sMORE : sMORE;
      break;
    }
    ReadMember(member, progress);
  }
  m_sValue += "}";
}

void DebugSymbol::ReadMember(const Member& member, Progress& progress) {
  const int depth = member.m_bBase ? m_iDepth : m_iDepth + 1;
  const boost::shared_ptr<DebugSymbol> spChild(
      new DebugSymbol(*this, member.m_sName, member.m_pType, PlaceOf(member), depth));
  spChild->m_uBitOffset = member.m_uBitOffset;
  spChild->m_uBitSize = member.m_uBitSize;
  if (!spChild->ReadPart(progress)) return;
  m_children.push_back(spChild);
  if (m_sValue.size() > 1) m_sValue += ", ";
  if (member.m_bBase || !member.m_sName.empty()) m_sValue.append(*spChild->m_pTypeName).append(" ");
  if (!member.m_sName.empty()) m_sValue.append(member.m_sName).append(" = ");
  m_sValue += spChild->m_sValue;
}

}  // namespace MSWindows
