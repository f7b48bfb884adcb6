#include <Infrastructure/OxaCore/ObjectPool.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace Oxa::Core {

namespace {

class Pool : public ObjectPoolBase {
 public:
  Pool(unsigned long long objectSize, unsigned long objectsPerBlock)
      : ObjectPoolBase(objectSize, objectsPerBlock) {}

  void Free(void* object) { Deallocate(object); }

  std::function<void(void*)> m_onDestroy;
  std::vector<void*> m_destroyed;

 protected:
  void DestroyObject(void* object) override {
    if (m_onDestroy) m_onDestroy(object);
    m_destroyed.push_back(object);
  }
};

std::uintptr_t Address(const void* slot) { return reinterpret_cast<std::uintptr_t>(slot); }

std::vector<void*> Take(Pool& pool, std::size_t count) {
  std::vector<void*> slots;
  while (slots.size() < count) slots.push_back(pool.AllocateObjectMemory());
  return slots;
}

/// Whether the slots lie one behind the other, as in one block.
bool AreContiguous(const std::vector<void*>& slots, std::uintptr_t size) {
  for (std::size_t i = 1; i < slots.size(); ++i) {
    if (Address(slots[i]) != Address(slots[i - 1]) + size) return false;
  }
  return true;
}

TEST(ObjectPoolTest, AtLeastFiftySlotsStandInABlock) {
  Pool pool(40, 10);
  const std::vector<void*> slots = Take(pool, 50);
  EXPECT_TRUE(AreContiguous(slots, 40)) << "fifty slots at once";
  const void* const next = pool.AllocateObjectMemory();
  EXPECT_TRUE(Address(next) < Address(slots.front()) || Address(next) >= Address(slots.back()) + 40)
      << "the 51st lies in a block of its own";
}

TEST(ObjectPoolTest, MoreThanFiftyAreAsAsked) {
  Pool pool(8, 120);
  EXPECT_TRUE(AreContiguous(Take(pool, 120), 8));
}

TEST(ObjectPoolTest, TheFirstBlockIsThereBeforeItIsAskedFor) {
  EXPECT_THROW(Pool(1ULL << 50, 1), AllocationFailed);
}

TEST(ObjectPoolTest, ObjectSizeZeroIsRefused) {
  try {
    Pool pool(0, 100);
    FAIL();
  } catch (InvalidParameter& error) {
    EXPECT_EQ("p_ObjectSize", error.GetData(InvalidParameter::sPARAM_NAME));
    EXPECT_EQ("Oxa.Core.ObjectPool", error.GetData(AlertInfo::sLOG_NAME));
  }
}

TEST(ObjectPoolTest, ABlockTooLargeToCountIsAnAllocationFailure) {
  // The product has more than 64 bits; its lower 64 alone would be 50, a size that can be had.
  EXPECT_THROW(Pool((1ULL << 63) + 1, 50), AllocationFailed);
  EXPECT_THROW(Pool(std::numeric_limits<unsigned long long>::max(), 50), AllocationFailed);
}

TEST(ObjectPoolTest, SlotsAreReusedOldestFirst) {
  Pool pool(16, 50);
  const std::vector<void*> slots = Take(pool, 50);
  pool.Free(slots[7]);
  pool.Free(slots[3]);
  pool.Free(slots[30]);
  EXPECT_EQ(slots[7], pool.AllocateObjectMemory());
  EXPECT_EQ(slots[3], pool.AllocateObjectMemory());
  EXPECT_EQ(slots[30], pool.AllocateObjectMemory());
}

TEST(ObjectPoolTest, AFreedSlotGoesBehindThoseThatNeverServed) {
  Pool pool(16, 50);
  void* const first = pool.AllocateObjectMemory();
  pool.Free(first);
  for (int i = 0; i < 49; ++i) EXPECT_NE(first, pool.AllocateObjectMemory());
  EXPECT_EQ(first, pool.AllocateObjectMemory());
}

TEST(ObjectPoolTest, DestroyObjectIsCalledBeforeTheSlotIsFreeAndWithNoLockHeld) {
  Pool pool(16, 50);
  const std::vector<void*> slots = Take(pool, 50);
  void* inside = nullptr;
  pool.m_onDestroy = [&](void* object) {
    EXPECT_EQ(slots[4], object);
    // Another thread gets through meanwhile, and the dying object's slot is not what it gets.
    std::thread other([&] { inside = pool.AllocateObjectMemory(); });
    other.join();
  };
  pool.Free(slots[4]);
  EXPECT_EQ(std::vector<void*>{slots[4]}, pool.m_destroyed);
  ASSERT_NE(nullptr, inside);
  EXPECT_EQ(slots.end(), std::find(slots.begin(), slots.end(), inside));
}

TEST(ObjectPoolTest, ObjectsStillInUseAreNotVisited) {
  int visits = 0;
  {
    Pool pool(16, 50);
    pool.m_onDestroy = [&](void*) { ++visits; };
    Take(pool, 60);
  }
  EXPECT_EQ(0, visits);
}

TEST(ObjectPoolTest, GrowsAsOftenAsNeededAndNeverGivesASlotTwice) {
  Pool pool(24, 50);
  const std::vector<void*> slots = Take(pool, 1000);
  EXPECT_EQ(1000u, std::set<void*>(slots.begin(), slots.end()).size());
  for (void* slot : slots) std::memset(slot, 0x33, 24);  // the address sanitizer watches
  for (void* slot : slots) pool.Free(slot);
  EXPECT_EQ(slots, Take(pool, 1000));
}

/// As the header's example has it: what needs no more than 4 bytes' alignment lives in the slot as it is.
TEST(ObjectPoolTest, HoldsObjects) {
  struct Sample {
    std::int32_t m_iValue;
    float m_fWeight;
  };
  static_assert(alignof(Sample) == 4, "what slots are aligned for");
  Pool pool(sizeof(Sample), 50);
  std::vector<Sample*> samples;
  for (int i = 0; i < 200; ++i) samples.push_back(new (pool.AllocateObjectMemory()) Sample{i, 0.5F});
  for (int i = 0; i < 200; ++i) EXPECT_EQ(i, samples[static_cast<std::size_t>(i)]->m_iValue);
  for (Sample* sample : samples) pool.Free(sample);
}

/// Wider types get a slot with room to move up to the next fitting address.
TEST(ObjectPoolTest, HoldsWiderObjectsAtARoundedUpAddress) {
  Pool pool(sizeof(double) + alignof(double), 50);
  for (int i = 0; i < 100; ++i) {
    void* slot = pool.AllocateObjectMemory();
    std::size_t room = sizeof(double) + alignof(double);
    void* const place = std::align(alignof(double), sizeof(double), slot, room);
    ASSERT_NE(nullptr, place);
    EXPECT_EQ(0.25, *new (place) double(0.25));
  }
}

TEST(ObjectPoolTest, ServesManyThreads) {
  class Counting : public ObjectPoolBase {
   public:
    Counting() : ObjectPoolBase(sizeof(int), 50) {}
    void Free(void* object) { Deallocate(object); }

   protected:
    void DestroyObject(void*) override {}
  };
  Counting pool;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&pool, t] {
      for (int i = 0; i < 3000; ++i) {
        std::vector<int*> mine;
        for (int n = 0; n < 5; ++n) mine.push_back(new (pool.AllocateObjectMemory()) int(t));
        for (int* object : mine) {
          EXPECT_EQ(t, *object) << "a slot was given to two threads";
          pool.Free(object);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

}  // namespace Oxa::Core
