#include <Infrastructure/OxaCore/ObjectPool.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

#include "Platform/LockBias.h"

namespace Oxa::Core {

namespace {

constexpr char g_LOG_NAME[] = "Oxa.Core.ObjectPool";
constexpr char g_OBJECT_SIZE[] = "p_ObjectSize";

constexpr unsigned long g_FEWEST_SLOTS = 50;

/// The bytes of a block; more than there can be where that many can't be counted.
unsigned long long BlockSize(unsigned long long slots, unsigned long long slotSize) {
  constexpr unsigned long long most = std::numeric_limits<unsigned long long>::max();
  return slotSize <= most / slots ? slots * slotSize : most;
}

/// A power of 2, so that places in the ring are found without a division.
std::size_t RingSize(std::size_t slots) {
  std::size_t size = 1;
  while (size < slots) size *= 2;
  return size;
}

}  // namespace

/// Holds the mutex, with no thread on the way past it.
class ObjectPoolBase::Guard {
 public:
  explicit Guard(ObjectPoolBase& pool) : m_lock(pool.m_mutex) { pool.Bias().Taken(); }

 private:
  Lock m_lock;
};

inline Platform::LockBias& ObjectPoolBase::Bias() {
  return *std::launder(reinterpret_cast<Platform::LockBias*>(m_room));
}

/// Both are right at each of their steps for whoever comes next, should the thread be killed in between: the count
/// follows the slot.
inline void* ObjectPoolBase::TakeFree() {
  if (m_ullTaken == m_ullPut) return nullptr;
  void* const slot = m_freeSlots[m_ullTaken & (m_freeSlots.size() - 1)];
  std::atomic_signal_fence(std::memory_order_seq_cst);
  ++m_ullTaken;
  return slot;
}

inline void ObjectPoolBase::PutFree(void* slot) {
  m_freeSlots[m_ullPut & (m_freeSlots.size() - 1)] = slot;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  ++m_ullPut;
}

ObjectPoolBase::ObjectPoolBase(unsigned long long objectSize, unsigned long objectsPerBlock)
    : m_ullTaken(0),
      m_ullPut(0),
      m_ullSlotSize(objectSize),
      m_ulSlotsPerBlock(std::max(objectsPerBlock, g_FEWEST_SLOTS)) {
  static_assert(sizeof(Platform::LockBias) <= sizeof m_room, "the room in the header is too small");
  static_assert(alignof(Platform::LockBias) <= alignof(void*), "the room in the header is not aligned");
  ::new (static_cast<void*>(m_room)) Platform::LockBias;
  if (objectSize == 0) {
    OXA_RAISE_ERROR(g_LOG_NAME, InvalidParameter(g_OBJECT_SIZE));
    return;
  }
  AddMemoryBlock();
}

ObjectPoolBase::~ObjectPoolBase() = default;

void* ObjectPoolBase::AllocateObjectMemory() {
  if (const Platform::LockBias::Passage passage(Bias()); passage) {
    if (void* const slot = TakeFree()) return slot;
  }
  const Guard guard(*this);
  if (m_ullTaken == m_ullPut) AddMemoryBlock();
  return TakeFree();
}

void ObjectPoolBase::Deallocate(void* object) {
  DestroyObject(object);
  if (const Platform::LockBias::Passage passage(Bias()); passage) return PutFree(object);
  const Guard guard(*this);
  PutFree(object);
}

/// Grows the pool, or leaves it as it is when there is no memory. What a lack of memory raises may use the pool.
void ObjectPoolBase::AddMemoryBlock() {
  if (m_ullSlotSize == 0) return;
  MemoryBlock block(BlockSize(m_ulSlotsPerBlock, m_ullSlotSize));
  if (block.IsNULL()) return;
  std::vector<void*> ring(RingSize((m_blocks.size() + 1) * m_ulSlotsPerBlock));
  m_blocks.push_back(block);
  unsigned long long count = 0;
  while (void* const free = TakeFree()) ring[count++] = free;
  unsigned char* slot = static_cast<unsigned char*>(block.GetBlock());
  for (unsigned long i = 0; i < m_ulSlotsPerBlock; ++i, slot += m_ullSlotSize) ring[count++] = slot;
  m_freeSlots.swap(ring);
  m_ullTaken = 0;
  m_ullPut = count;
}

}  // namespace Oxa::Core
