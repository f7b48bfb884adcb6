// A variable of a frame becomes text.
//
// Thread safety: one symbol belongs to one thread; the walk that makes them is serialised.
// Failures: what can't be read has a text of its own. Running out of memory is the only exception there is.
#ifndef OXACORE_ERRORHANDLING_MICROSOFTDEBUGSYMBOL_H
#define OXACORE_ERRORHANDLING_MICROSOFTDEBUGSYMBOL_H

#include <Infrastructure/OxaCore/CodeContext.h>

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Variables.h"

namespace MSWindows {

class DebugHelp;

/// One variable of one frame, or a member of one, while it is being printed.
class DebugSymbol {
 public:
  using Children = std::vector<boost::shared_ptr<DebugSymbol>>;

  /// Objects in objects are followed that far; an object that lies deeper is shown as "{...}". Base classes don't
  /// count.
  static constexpr int iDEPTH = 3;

  /// A variable. What `facts` leads to has to stand as long as the symbol is being read. `pContext` isn't owned; it may
  /// be null.
  DebugSymbol(const DebugHelp* pContext, const Oxa::Core::Platform::VariableFacts& facts);
  DebugSymbol(const DebugSymbol&) = delete;
  DebugSymbol& operator=(const DebugSymbol&) = delete;
  virtual ~DebugSymbol();

  /// Builds the name of the type and prints the value. False if the symbol is to be left out: functions, types that
  /// the debug data doesn't tell, string streams, and the error system's own objects.
  virtual bool Read();

  const std::string& GetName() const { return m_sName; }
  /// Empty before the symbol is read.
  std::string GetTypeName() const { return m_pTypeName ? *m_pTypeName : std::string(); }
  const std::string& GetValue() const { return m_sValue; }
  std::uint64_t GetSize() const { return m_uSize; }
  std::uint64_t GetTypeIndex() const { return m_uTypeIndex; }
  int GetTag() const { return m_iTag; }
  unsigned GetFlags() const { return m_uFlags; }
  /// 0 for a value that has none.
  std::uint64_t GetAddress() const { return m_value.m_uAddress; }
  /// Base classes and members, in their order; of objects that were read.
  const Children& GetChildren() const { return m_children; }

 private:
  using Type = Oxa::Core::Platform::TypeFacts;
  using Member = Oxa::Core::Platform::MemberFacts;
  using Value = Oxa::Core::Platform::ValueFacts;

  // How far the reading of one variable has come: an object of objects may have no end.
  struct Progress {
    int m_iMembers = 0;
    int m_iNesting = 0;
  };

  DebugSymbol(const DebugSymbol& parent, const std::string& name, const Type* pType, const Value& value,
              int depth);

  bool ReadPart(Progress& progress);
  void ReadValue(const Type& type, Progress& progress);
  void ReadBasic(const Type& type);
  void ReadPointer(const Type& type);
  void ReadMemberPointer();
  void ReadReference(const Type& type, Progress& progress);
  void ReadEnum(const Type& type);
  void ReadArray(const Type& type, Progress& progress);
  void ReadElements(const Type& type, Progress& progress);
  void ReadObject(const Type& type, Progress& progress);
  void ReadString(const Type& type);
  void ReadMembers(const Type& type, Progress& progress);
  void ReadMember(const Member& member, Progress& progress);
  void PutAddress();

  bool HasPlace(std::size_t size) const;
  bool GetBytes(void* to, std::size_t size) const;
  std::size_t GetMost(void* to, std::size_t size) const;
  std::size_t GetMemory(std::uint64_t address, void* to, std::size_t size) const;
  std::uint64_t GetBits(const unsigned char* pBytes) const;
  std::size_t GetStoredSize() const;
  std::string GetTextAt(std::uint64_t address, std::size_t width) const;
  std::string GetCountedText(std::uint64_t address, std::uint64_t count, std::size_t width) const;
  std::string GetOwnText(std::uint64_t count, std::size_t width) const;
  Value PartOfValue(std::uint64_t offset, std::uint64_t size) const;
  Value PlaceOf(const Member& member) const;

  const DebugHelp* m_pContext;
  std::string m_sName;
  const std::string* m_pTypeName = nullptr;  // kept with the type
  std::string m_sValue;
  std::uint64_t m_uSize = 0;
  std::uint64_t m_uTypeIndex = 0;
  int m_iTag = -1;
  unsigned m_uFlags = 0;
  Value m_value;
  Children m_children;
  const Type* m_pType = nullptr;
  Oxa::Core::Platform::MemoryReader* m_pMemory = nullptr;
  int m_iDepth = 0;
  unsigned m_uBitOffset = 0;
  unsigned m_uBitSize = 0;
};

/// The variables of a frame while they come in.
struct FrameVariables {
  const DebugHelp* m_pContext = nullptr;
  Oxa::Core::AlertData m_variables;  ///< name and printed value
  std::string m_sTypes;              ///< "name: type", with "; " between two
};

/// Puts `variable` into the FrameVariables at `frameVariables`, unless it's to be left out: what a VariableSink takes.
void TakeVariable(void* frameVariables, const Oxa::Core::Platform::VariableFacts& variable);

}  // namespace MSWindows

#endif
