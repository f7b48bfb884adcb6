// How the registers of a caller are found: the rules for one instruction, and their application.
#ifndef OXACORE_PLATFORM_LINUX_STACKWALKRULES_H
#define OXACORE_PLATFORM_LINUX_STACKWALKRULES_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/FaultContext.h"
#include "Platform/MemoryReader.h"

namespace Oxa::Core::Platform {

/// The registers of one frame, as far as they are known.
struct FrameRegisters {
  CONTEXT m_context{};
  bool m_bKnown[CONTEXT::iREGISTERS] = {};

  std::uint64_t Place() const { return m_context.m_registers[CONTEXT::iPLACE]; }
  std::uint64_t Stack() const { return m_context.m_registers[CONTEXT::iSTACK]; }
  void Set(int number, std::uint64_t value) {
    m_context.m_registers[number] = value;
    m_bKnown[number] = true;
  }
};

/// What holds at one instruction. The expressions in it belong to the frame data that it was read from. Trivial.
class StackWalkRules {
 public:
  /// Reads the rules for `place`, an address of the module's file. False if there are none.
  bool Read(const Dw& dw, Dwarf_CFI* frames, Dwarf_Addr place);

  /// Whether it's code that the system calls in the middle of other code: the caller stands at an instruction, not
  /// behind a call.
  bool IsSignal() const { return m_bSignal; }

  /// The registers of the caller, of which none is known before, and the canonical address of the frame `from`. False
  /// if they can't be found, and where the rules say that there is no caller; `cfa` is 0 then if not even that is
  /// known.
  bool Apply(const FrameRegisters& from, MemoryReader& memory, FrameRegisters& caller,
             std::uint64_t& cfa) const;

 private:
  enum EKind : unsigned char { eUNDEFINED, eSAME, eAT_OFFSET, eIS_OFFSET, eREGISTER, eEXPRESSION };

  struct Rule {
    EKind m_eKind = eUNDEFINED;
    unsigned char m_uRegister = 0;
    std::int64_t m_iOffset = 0;
    const Dwarf_Op* m_pOperations = nullptr;
    std::size_t m_uOperations = 0;
  };

  void ReadCfa(const Dwarf_Op* operations, std::size_t count);
  static Rule ReadRule(const Dwarf_Op* operations, std::size_t count, const Dwarf_Op* scratch);
  bool FindCfa(const FrameRegisters& from, MemoryReader& memory, std::uint64_t& cfa) const;
  static bool FindValue(const Rule& rule, const FrameRegisters& from, std::uint64_t cfa, MemoryReader& memory,
                        std::uint64_t& value);
  static bool FindByExpression(const Rule& rule, const FrameRegisters& from, std::uint64_t cfa,
                               MemoryReader& memory, std::uint64_t& value);

  bool m_bSignal = false;
  Rule m_cfa;
  Rule m_rules[CONTEXT::iREGISTERS];
  unsigned char m_defined[CONTEXT::iREGISTERS] = {};  // registers with a rule that isn't eUNDEFINED
  int m_iDefined = 0;
};

/// Carries out what a rule is told by. With `cfa` on the stack where the operations ask for it. `isValue`: the result
/// is the value itself, not where it lies.
bool Evaluate(const Dwarf_Op* operations, std::size_t count, const FrameRegisters& from, std::uint64_t cfa,
              MemoryReader& memory, std::uint64_t& result, bool& isValue);

}  // namespace Oxa::Core::Platform

#endif
