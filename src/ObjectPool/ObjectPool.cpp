#include <Infrastructure/OxaCore/ObjectPool.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <algorithm>
#include <limits>
#include <utility>

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

}  // namespace

ObjectPoolBase::ObjectPoolBase(unsigned long long objectSize, unsigned long objectsPerBlock)
    : m_ullSlotSize(objectSize), m_ulSlotsPerBlock(std::max(objectsPerBlock, g_FEWEST_SLOTS)) {
  if (objectSize == 0) {
    OXA_RAISE_ERROR(g_LOG_NAME, InvalidParameter(g_OBJECT_SIZE));
    return;
  }
  AddMemoryBlock();
}

ObjectPoolBase::~ObjectPoolBase() = default;

void* ObjectPoolBase::AllocateObjectMemory() {
  Lock lock(m_mutex);
  if (m_freeSlots.empty()) AddMemoryBlock();
  if (m_freeSlots.empty()) return nullptr;
  void* const slot = m_freeSlots.front();
  m_spareNodes.splice(m_spareNodes.begin(), m_freeSlots, m_freeSlots.begin());
  return slot;
}

void ObjectPoolBase::Deallocate(void* object) {
  DestroyObject(object);
  Lock lock(m_mutex);
  m_spareNodes.front() = object;
  m_freeSlots.splice(m_freeSlots.end(), m_spareNodes, m_spareNodes.begin());
}

/// Grows the pool, or leaves it as it is when there is no memory.
void ObjectPoolBase::AddMemoryBlock() {
  if (m_ullSlotSize == 0) return;
  MemoryBlock block(BlockSize(m_ulSlotsPerBlock, m_ullSlotSize));
  if (block.IsNULL()) return;
  unsigned char* slot = static_cast<unsigned char*>(block.GetBlock());
  std::list<void*> slots;
  for (unsigned long i = 0; i < m_ulSlotsPerBlock; ++i, slot += m_ullSlotSize) slots.push_back(slot);
  m_blocks.push_back(block);
  m_freeSlots.splice(m_freeSlots.end(), slots);
}

}  // namespace Oxa::Core
