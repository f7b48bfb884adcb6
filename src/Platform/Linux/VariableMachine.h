// The stack machine that the expressions of debug data are written for.
#ifndef OXACORE_PLATFORM_LINUX_VARIABLEMACHINE_H
#define OXACORE_PLATFORM_LINUX_VARIABLEMACHINE_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/VariableExpression.h"
#include "Platform/Linux/VariableWord.h"

namespace Oxa::Core::Platform {

/// Runs one expression. Bounded in everything: damaged expressions end without a result.
class ExpressionMachine {
 public:
  /// `attribute` is what the expression was read from.
  ExpressionMachine(ExpressionScene& scene, Dwarf_Attribute& attribute) noexcept;
  ExpressionMachine(const ExpressionMachine&) = delete;
  ExpressionMachine& operator=(const ExpressionMachine&) = delete;
  ~ExpressionMachine();

  bool Push(const Word& word) noexcept;

  /// False if the expression has no result here: registers that are unknown, memory that can't be read, operations
  /// that nobody can do, damage.
  bool Run(const Dwarf_Op* operations, std::size_t count);

  /// What was found, for a value of `size` bytes.
  Location Result(std::uint64_t size);

  /// The number on top of the stack, or the content of the register that was named.
  bool Number(std::uint64_t& number) const noexcept;

 private:
  enum EFound { eFOUND_ON_STACK, eFOUND_REGISTER, eFOUND_VALUE, eFOUND_BLOCK };
  static constexpr int iWORDS = 32;
  static constexpr int iSTEPS = 2000;
  static constexpr std::size_t uOPERATIONS = 4096;
  static constexpr int iDEPTH = 8;

  bool Step(const Dwarf_Op& operation);
  bool Literal(const Dwarf_Op& operation);
  bool PushAddress(const Dwarf_Op& operation);
  bool PushIndexed(const Dwarf_Op& operation);
  bool PushRegister(unsigned number, std::uint64_t offset) noexcept;
  bool PushFrameBase(std::uint64_t offset);
  bool PushPicked(std::uint64_t depth) noexcept;
  bool PushThreadLocal() noexcept;
  bool PushEntryValue(const Dwarf_Op& operation);
  bool StackOperation(const Dwarf_Op& operation);
  bool Rotate() noexcept;
  bool Unary(const Dwarf_Op& operation);
  bool Binary(unsigned atom);
  bool Load(std::uint64_t size, const WordType& type);
  bool Jump(const Dwarf_Op& operation);
  bool NameRegister(std::uint64_t number) noexcept;
  bool Typed(const Dwarf_Op& operation);
  bool Constant(const Dwarf_Op& operation, const WordType& type);
  bool Convert(const Dwarf_Op& operation, const WordType& type);
  bool TypeOfOperation(const Dwarf_Op& operation, WordType& type);
  bool Piece(std::uint64_t size);
  bool Pop(Word& word) noexcept;
  bool ReadRegister(std::uint64_t number, std::uint64_t& value) const noexcept;
  void AppendFound(Location& location, std::uint64_t size);
  void AppendMemory(Location& location, std::uint64_t size);

  ExpressionScene& m_scene;
  Dwarf_Attribute& m_attribute;
  const Dwarf_Op* m_pOperations = nullptr;
  std::size_t m_uOperations = 0;
  std::size_t m_uNext = 0;
  Word m_words[iWORDS];
  int m_iWords = 0;
  EFound m_eFound = eFOUND_ON_STACK;
  std::uint64_t m_uRegister = 0;
  Dwarf_Block m_block{};
  bool m_bPieces = false;
  bool m_bEmpty = true;  // nothing was found since the last piece
  Location m_pieces;
};

}  // namespace Oxa::Core::Platform

#endif
