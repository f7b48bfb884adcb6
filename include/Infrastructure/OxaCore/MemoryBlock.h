// A piece of raw memory with shared ownership.
//
// Thread safety: copies of a block may be made, assigned and released on different threads at once; one
// MemoryBlock object belongs to one thread at a time. The bytes themselves have no protection.
// Alignment: count and bytes are one allocation, and the bytes begin 4 behind its start. They are aligned for
// types of at most 4 bytes; wider ones are copied in and out (std::memcpy), or placed at an address that was
// rounded up.
// Locks: none. Failures: AllocationFailed of the constructor that allocates; nothing else raises.
//
//   MemoryBlock block(4096);
//   if (!block.IsNULL()) std::memcpy(block.GetBlock(), samples, block.Size());
#ifndef INFRASTRUCTURE_OXACORE_MEMORYBLOCK_H
#define INFRASTRUCTURE_OXACORE_MEMORYBLOCK_H

#include <Infrastructure/OxaCore/Export.h>

#include <atomic>
#include <cstdint>

namespace Oxa::Core {

/// A reference-counted byte buffer of fixed size. The bytes are not initialised.
class OXACORE_API MemoryBlock {
 public:
  /// Allocates `size` bytes. A size of 0 makes a null block, which owns nothing.
  /// Raises AllocationFailed ("Oxa.Core.MemoryBlock") when there is no memory; where that raise returns, the
  /// block is a null block of size 0.
  explicit MemoryBlock(unsigned long long size);

  /// Shares the memory of `other`.
  MemoryBlock(const MemoryBlock& other);

  /// Releases what this block holds and shares the memory of `other`.
  MemoryBlock& operator=(const MemoryBlock& other);

  /// Releases.
  virtual ~MemoryBlock();

  /// The first byte, or null for a null or released block.
  void* GetBlock();

  /// How many bytes the block was made with; a release doesn't change it.
  unsigned long long Size();

  /// Whether this block holds no memory: made with size 0, or released.
  bool IsNULL();

  /// Gives this block's share up; the last share frees the memory. Safe to repeat. Afterwards GetBlock gives
  /// null and IsNULL true, also while other blocks still share the memory: an address that may be freed at any
  /// moment is no service.
  void Release();

 private:
  void Allocate(unsigned long long size);
  void Share(const MemoryBlock& other) noexcept;

  void* m_pAllocation;                  ///< as malloc gave it
  void* m_pBlock;                       ///< the user's bytes
  std::atomic<std::int32_t>* m_pCount;  ///< the blocks that share the allocation, at its start
  unsigned long long m_ullSize;         ///< the user's bytes
};

}  // namespace Oxa::Core

#endif
