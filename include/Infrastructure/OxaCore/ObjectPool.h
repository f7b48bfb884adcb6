// A pool of memory slots of one size, for objects that come and go often. It grows and never shrinks.
//
// Thread safety: the operations may be called from any thread. The destructor needs that nobody uses the pool
// or anything that lives in it. Locks: the pool's own, held around the bookkeeping only.
// Failures: AllocationFailed where the pool can't grow, InvalidParameter for slots of no size.
// Alignment: slots lie one behind the other in blocks whose first byte is 4 bytes behind what malloc gives.
// They are aligned for types of at most 4 bytes, and only if the slot size is a multiple of the type's
// alignment. For others make the slots larger by the alignment and place the object at a rounded-up address,
// or copy values in and out (std::memcpy).
//
//   class SamplePool : public ObjectPoolBase {
//    public:
//     SamplePool() : ObjectPoolBase(sizeof(Sample), 200) {}
//     Sample* Make(int value) { return new (AllocateObjectMemory()) Sample(value); }
//     void Free(Sample* sample) { Deallocate(sample); }
//
//    protected:
//     void DestroyObject(void* object) override { static_cast<Sample*>(object)->~Sample(); }
//   };
#ifndef INFRASTRUCTURE_OXACORE_OBJECTPOOL_H
#define INFRASTRUCTURE_OXACORE_OBJECTPOOL_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/MemoryBlock.h>

#include <vector>

namespace Oxa::Core {

namespace Platform {
class LockBias;
}

/// Base of pools: hands out and takes back slots, and knows nothing of what lives in them.
class OXACORE_API ObjectPoolBase {
 protected:
  /// Ends the life of the object at `object`, whose slot then goes back to the pool. Called by Deallocate
  /// with no lock held.
  virtual void DestroyObject(void* object) = 0;

 public:
  /// A pool of slots of `objectSize` bytes, that grows by `objectsPerBlock` slots at a time, but by at least
  /// 50. The first ones are there at once.
  /// Raises InvalidParameter ("p_ObjectSize", log name "Oxa.Core.ObjectPool") for a size of 0, and
  /// AllocationFailed when there is no memory; where such a raise returns, the pool is empty.
  ObjectPoolBase(unsigned long long objectSize, unsigned long objectsPerBlock);

  ObjectPoolBase(const ObjectPoolBase&) = delete;
  ObjectPoolBase& operator=(const ObjectPoolBase&) = delete;

  /// Frees all slots. Objects that still live in some are not destroyed.
  virtual ~ObjectPoolBase();

  /// A slot of uninitialised memory: the one that has been free for longest. Grows the pool if none is free.
  /// Raises AllocationFailed when there is no memory for that; gives null where that raise returns.
  void* AllocateObjectMemory();

 protected:
  /// Calls DestroyObject, then takes the slot at `object` back. It must come from this pool and be in use.
  void Deallocate(void* object);

 private:
  class Guard;

  Platform::LockBias& Bias();
  void AddMemoryBlock();
  void* TakeFree();
  void PutFree(void* slot);

  std::vector<MemoryBlock> m_blocks;
  Mutex m_mutex;                            ///< guards blocks and free slots
  alignas(void*) unsigned char m_room[88];  ///< lets a thread that comes over and over by without the mutex
  std::vector<void*> m_freeSlots;           ///< a ring with room for all slots, in the order of their return
  unsigned long long m_ullTaken;            ///< how many were ever taken from the ring,
  unsigned long long m_ullPut;              ///< and put into it
  unsigned long long m_ullSlotSize;
  unsigned long m_ulSlotsPerBlock;
};

}  // namespace Oxa::Core

#endif
