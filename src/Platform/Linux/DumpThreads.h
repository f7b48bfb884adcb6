// The threads of a process that is being dumped: who they are, made to stand still, what they have in their registers.
#ifndef OXACORE_PLATFORM_LINUX_DUMPTHREADS_H
#define OXACORE_PLATFORM_LINUX_DUMPTHREADS_H

#include <cstddef>
#include <cstdint>

#include "Platform/Linux/DumpFormat.h"
#include "Platform/Linux/FaultContext.h"

namespace Oxa::Core::Platform {

struct DumpThread {
  enum EState : std::uint8_t {
    eRUNNING,  ///< nothing is known of its registers
    eWAITING,  ///< told to stop, hasn't yet
    eSTOPPED,  ///< stands still under our hand
    ePLACE,    ///< only its place and stack are known
    eCALLER    ///< waits for the dump itself; its registers came with the call
  };

  int m_iId;
  EState m_eState;
  int m_iSignal;           ///< on its way when the thread stopped; it gets it afterwards
  std::uint64_t m_uPlace;  ///< 0 if unknown
  std::uint64_t m_uStack;  ///< 0 if unknown
  std::uint64_t m_uStackStart;
  std::uint64_t m_uStackSize;
  std::uint64_t m_uEntry;    ///< where its entry stands in the file
  std::uint64_t m_uStorage;  ///< of its own, as the processor finds it
};

/// In static storage; cut where there are more than it holds. Allocates nothing.
class DumpThreads {
 public:
  void Clear() noexcept { m_uCount = 0; }

  /// Puts the calling thread in, the first of all, with the registers that a dump is to show for it.
  void AddCaller(int id, const CONTEXT& context) noexcept;

  /// Adds those of a folder of tasks that aren't known yet, without `spared` (0 for none), and gives their number.
  std::size_t AddFrom(int tasks, int spared) noexcept;

  /// Where the system tells the places of threads that run on (which wait in a call), takes them from there.
  void ReadPlaces(int tasks) noexcept;

  /// Makes all others stand still, also those that start meanwhile; `deadline` ends the trying. To be called by
  /// another process only. False if none could be stopped.
  bool Stop(int tasks, int spared, std::int64_t deadline) noexcept;

  /// Lets them go on.
  void Resume() noexcept;

  /// Fills in what is known of the registers of `thread`, and its place and stack there.
  void ReadRegisters(DumpThread& thread, Minidump::Registers& registers) noexcept;

  DumpThread* begin() noexcept { return m_threads; }
  DumpThread* end() noexcept { return m_threads + m_uCount; }
  std::size_t Count() const noexcept { return m_uCount; }
  void Remove(DumpThread* thread) noexcept;

 private:
  static constexpr std::size_t uTHREADS = 4096;

  bool Knows(int id) noexcept;
  void Add(int id, DumpThread::EState state) noexcept;
  void Seize() noexcept;
  void AwaitStops(std::int64_t deadline) noexcept;

  const CONTEXT* m_pCaller;
  std::size_t m_uCount;
  DumpThread m_threads[uTHREADS];
};

}  // namespace Oxa::Core::Platform

#endif
