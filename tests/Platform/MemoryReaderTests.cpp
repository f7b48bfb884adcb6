// Memory that may not be there: what is kept of it, and what is read where it is.
#include "Platform/MemoryReader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

using namespace Oxa::Core::Platform;

std::uint64_t AddressOf(const volatile void* place) { return reinterpret_cast<std::uintptr_t>(place); }

class MemoryReaderTests : public testing::Test {
 protected:
  // 0 for what can't be read.
  std::uint64_t Read(int word) {
    std::uint64_t value = 0;
    return m_reader.Read(AddressOf(&m_words[word]), &value, sizeof value) ? value : 0;
  }

  alignas(64) volatile std::uint64_t m_words[4] = {11, 12, 13, 14};
  MemoryReader m_reader;
};

TEST_F(MemoryReaderTests, WhatWasReadIsKept) {
  EXPECT_EQ(12u, Read(1));
  m_words[1] = 22;
  EXPECT_EQ(12u, Read(1));
}

TEST_F(MemoryReaderTests, WhatWasReadElsewhereIsKeptBesideIt) {
  static volatile std::uint64_t s_elsewhere = 5;
  std::uint64_t other = 0;
  EXPECT_EQ(12u, Read(1));
  EXPECT_TRUE(m_reader.Read(AddressOf(&s_elsewhere), &other, sizeof other));
  m_words[1] = 22;
  EXPECT_EQ(12u, Read(1));
  EXPECT_EQ(5u, other);
}

TEST_F(MemoryReaderTests, TrustedWordsAreReadWhereTheyAre) {
  m_reader.Trust(AddressOf(&m_words[1]), AddressOf(&m_words[3]));
  for (const int word : {0, 1, 2, 3}) EXPECT_EQ(11u + static_cast<unsigned>(word), Read(word));
  for (volatile std::uint64_t& word : m_words) word = word + 10;
  EXPECT_EQ(11u, Read(0));
  EXPECT_EQ(22u, Read(1));
  EXPECT_EQ(23u, Read(2));
  EXPECT_EQ(14u, Read(3));
}

TEST_F(MemoryReaderTests, WhatIsNoWordIsReadAsElsewhere) {
  m_reader.Trust(AddressOf(m_words), AddressOf(m_words) + sizeof m_words);
  const volatile char* const bytes = reinterpret_cast<const volatile char*>(m_words);
  std::uint64_t odd = 0;
  std::uint32_t half = 0;
  EXPECT_TRUE(m_reader.Read(AddressOf(bytes + 8), &half, sizeof half));
  EXPECT_TRUE(m_reader.Read(AddressOf(bytes + 4), &odd, sizeof odd));
  EXPECT_EQ(12u, half);
  EXPECT_EQ(std::uint64_t{12} << 32, odd);
}

TEST_F(MemoryReaderTests, WhatLiesInTwoPagesIsReadAsOne) {
  alignas(4096) static unsigned char s_pages[2 * 4096];
  for (std::size_t at = 0; at < sizeof s_pages; ++at)
    s_pages[at] = static_cast<unsigned char>(at + at / 4096);
  for (std::size_t at = 4096 - 9; at <= 4096; ++at) {
    unsigned char bytes[8] = {};
    ASSERT_TRUE(m_reader.Read(AddressOf(s_pages + at), bytes, sizeof bytes));
    EXPECT_EQ(0, std::memcmp(s_pages + at, bytes, sizeof bytes)) << at;
  }
}

TEST_F(MemoryReaderTests, WhatIsNotThereIsRefused) {
  std::uint64_t word = 0;
  EXPECT_FALSE(m_reader.Read(8, &word, sizeof word));
  m_reader.Trust(AddressOf(m_words), AddressOf(m_words) + sizeof m_words);
  EXPECT_FALSE(m_reader.Read(8, &word, sizeof word));
}

}  // namespace
