#include <Infrastructure/OxaCore/MemoryBlock.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace Oxa::Core {

namespace {

constexpr unsigned long long g_MOST = std::numeric_limits<unsigned long long>::max();

void ExpectFailure(unsigned long long size, const std::string& total) {
  try {
    MemoryBlock block(size);
    FAIL() << "got " << size << " bytes";
  } catch (AllocationFailed& error) {
    EXPECT_EQ("Attempt to allocate " + total + " byte memory block failed", std::string(error.what()));
    EXPECT_EQ("Oxa.Core.MemoryBlock", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("OperatingSystem", error.GetData(AlertInfo::sCATEGORY));
    EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
  }
}

TEST(MemoryBlockTest, SizeZeroIsANullBlock) {
  MemoryBlock block(0);
  EXPECT_TRUE(block.IsNULL());
  EXPECT_EQ(0u, block.Size());
  EXPECT_EQ(nullptr, block.GetBlock());
  MemoryBlock copy(block);
  EXPECT_TRUE(copy.IsNULL());
  copy.Release();
  block.Release();
  EXPECT_TRUE(block.IsNULL());
}

TEST(MemoryBlockTest, GivesAllOfItsBytes) {
  for (const unsigned long long size : {1ULL, 4ULL, 5ULL, 1000ULL, 1000000ULL}) {
    MemoryBlock block(size);
    EXPECT_FALSE(block.IsNULL());
    EXPECT_EQ(size, block.Size());
    ASSERT_NE(nullptr, block.GetBlock());
    std::memset(block.GetBlock(), 0x5A, static_cast<std::size_t>(size));  // the address sanitizer watches
    MemoryBlock copy(block);
    EXPECT_EQ(0x5A, static_cast<unsigned char*>(copy.GetBlock())[size - 1]);
  }
}

TEST(MemoryBlockTest, TheBytesBeginFourBehindTheAllocation) {
  MemoryBlock block(64);
  EXPECT_EQ(4u, reinterpret_cast<std::uintptr_t>(block.GetBlock()) % alignof(std::max_align_t));
  std::int32_t count = 0;
  std::memcpy(&count, static_cast<unsigned char*>(block.GetBlock()) - 4, 4);
  EXPECT_EQ(1, count);
  {
    MemoryBlock copy(block);
    std::memcpy(&count, static_cast<unsigned char*>(block.GetBlock()) - 4, 4);
    EXPECT_EQ(2, count);
  }
  std::memcpy(&count, static_cast<unsigned char*>(block.GetBlock()) - 4, 4);
  EXPECT_EQ(1, count);
}

TEST(MemoryBlockTest, CopiesShareTheMemoryUntilTheLastIsReleased) {
  MemoryBlock first(16);
  std::memcpy(first.GetBlock(), "fifteen letters", 16);
  MemoryBlock second(first);
  MemoryBlock third(0);
  third = second;
  EXPECT_EQ(first.GetBlock(), second.GetBlock());
  EXPECT_EQ(first.GetBlock(), third.GetBlock());
  EXPECT_EQ(16u, third.Size());
  first.Release();
  second.Release();
  EXPECT_STREQ("fifteen letters", static_cast<char*>(third.GetBlock()));
  third.Release();
  EXPECT_TRUE(third.IsNULL());
}

TEST(MemoryBlockTest, ReleaseIsSafeToRepeat) {
  MemoryBlock block(8);
  MemoryBlock copy(block);
  block.Release();
  block.Release();
  EXPECT_TRUE(block.IsNULL());
  EXPECT_EQ(nullptr, block.GetBlock());
  EXPECT_EQ(8u, block.Size());
  std::memset(copy.GetBlock(), 0, 8);
  MemoryBlock ofReleased(block);
  EXPECT_TRUE(ofReleased.IsNULL());
}

TEST(MemoryBlockTest, AssignmentReleasesWhatWasHeld) {
  MemoryBlock first(8);
  MemoryBlock second(24);
  MemoryBlock holder(first);
  holder = second;
  EXPECT_EQ(second.GetBlock(), holder.GetBlock());
  EXPECT_EQ(24u, holder.Size());
  std::int32_t count = 0;
  std::memcpy(&count, static_cast<unsigned char*>(first.GetBlock()) - 4, 4);
  EXPECT_EQ(1, count);
}

TEST(MemoryBlockTest, SelfAssignmentDoesNothing) {
  MemoryBlock block(8);
  void* const memory = block.GetBlock();
  const MemoryBlock& same = block;
  block = same;
  EXPECT_EQ(memory, block.GetBlock());
  std::memset(block.GetBlock(), 1, 8);
}

TEST(MemoryBlockTest, AnImpossibleSizeIsAnAllocationFailure) {
  ExpectFailure(1ULL << 60, "1152921504606846980");
  ExpectFailure(g_MOST / 2, "9223372036854775811");
}

TEST(MemoryBlockTest, ASizeThatOverflowsWithTheCountIsAnAllocationFailureToo) {
  ExpectFailure(g_MOST - 4, "18446744073709551615");
  ExpectFailure(g_MOST - 3, "18446744073709551616");
  ExpectFailure(g_MOST, "18446744073709551619");
}

TEST(MemoryBlockTest, CopiesComeAndGoOnManyThreads) {
  MemoryBlock block(256);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([block] {
      for (int i = 0; i < 20000; ++i) {
        MemoryBlock copy(block);
        MemoryBlock other(0);
        other = copy;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  threads.clear();
  std::int32_t count = 0;
  std::memcpy(&count, static_cast<unsigned char*>(block.GetBlock()) - 4, 4);
  EXPECT_EQ(1, count);
}

TEST(MemoryBlockTest, HasAVirtualDestructor) { EXPECT_TRUE(std::has_virtual_destructor<MemoryBlock>::value); }

}  // namespace

}  // namespace Oxa::Core
