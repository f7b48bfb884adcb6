// What a dictionary keeps inside: the order of its atoms, the use of its pages, and what many threads leave there.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Dictionary.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "Core/LibraryState.h"
#include "Support/Allocations.h"
#include "Support/Together.h"
#include "Utilities/DictionaryIndex.h"

namespace {

using namespace Oxa::Core;
using testing::ElementsAre;

using Atoms = std::vector<const char*>;

constexpr std::size_t uPAGE = 131072;

#ifdef OXACORE_SOAK
constexpr std::size_t uWORDS = 1000000;
#else
constexpr std::size_t uWORDS = 5000;
#endif

template <class Blocks>
Atoms Joined(const Blocks& blocks) {
  Atoms all;
  for (const auto& block : blocks) all.insert(all.end(), block.m_atoms.begin(), block.m_atoms.end());
  return all;
}

template <class Pages>
std::vector<int> FreeBytes(const Pages& pages) {
  std::vector<int> free;
  free.reserve(pages.size());
  for (const auto& page : pages) free.push_back(page.m_iFree);
  return free;
}

// An explicit instantiation is the one way past access control.
Atoms AtomsOf(const Dictionary& dictionary);
std::vector<int> FreeBytesOf(const Dictionary& dictionary);

template <auto Blocks, auto Pages>
struct Look {
  friend Atoms AtomsOf(const Dictionary& dictionary) { return Joined(dictionary.*Blocks); }
  friend std::vector<int> FreeBytesOf(const Dictionary& dictionary) { return FreeBytes(dictionary.*Pages); }
};
template struct Look<&Dictionary::m_blocks, &Dictionary::m_pages>;

Dictionary& NewDictionary() {
  SingletonRegistry::DestroyAllSingletons();
  return *Dictionary::Instance();
}

std::string Word(std::size_t number) { return "word " + std::to_string(number); }

std::vector<std::string> ShuffledWords(unsigned seed) {
  std::vector<std::string> words(uWORDS);
  for (std::size_t number = 0; number < uWORDS; ++number) words[number] = Word(number);
  std::shuffle(words.begin(), words.end(), std::mt19937(seed));
  return words;
}

// Sorted, and each word once.
bool IsInOrder(const Atoms& atoms) {
  const auto notBefore = [](const char* left, const char* right) { return std::strcmp(left, right) >= 0; };
  return std::adjacent_find(atoms.begin(), atoms.end(), notBefore) == atoms.end();
}

TEST(DictionaryOrder, IsThatOfUnsignedBytes) {
  Dictionary& dictionary = NewDictionary();
  for (const char* word : {"b", "\xff", "\x80", "a", "", "\x7f", "ab", "B"}) dictionary.Lookup(word);
  const Atoms atoms = AtomsOf(dictionary);
  EXPECT_EQ((std::vector<std::string>{"", "B", "a", "ab", "b", "\x7f", "\x80", "\xff"}),
            std::vector<std::string>(atoms.begin(), atoms.end()));
}

TEST(DictionaryOrder, HoldsHoweverTheWordsCome) {
  std::vector<std::string> rising = ShuffledWords(1);
  std::sort(rising.begin(), rising.end());
  const std::vector<std::string> falling(rising.rbegin(), rising.rend());
  for (const std::vector<std::string>& words : {rising, falling, ShuffledWords(2)}) {
    Dictionary& dictionary = NewDictionary();
    Atoms found;
    for (const std::string& word : words) found.push_back(dictionary.Lookup(word));
    for (std::size_t at = 0; at < words.size(); ++at) {
      ASSERT_EQ(words[at], found[at]);
      ASSERT_EQ(found[at], dictionary.Lookup(words[at]));
    }
    const Atoms atoms = AtomsOf(dictionary);
    EXPECT_EQ(uWORDS, atoms.size());
    EXPECT_TRUE(IsInOrder(atoms));
    std::sort(found.begin(), found.end());
    Atoms same = atoms;
    std::sort(same.begin(), same.end());
    EXPECT_EQ(found, same);
  }
}

std::uint64_t EightBytes(const std::string& word, std::size_t at) {
  std::uint64_t bytes;
  std::memcpy(&bytes, word.data() + at, sizeof bytes);
  return bytes;
}

// What the hash makes of the first eight bytes of a word of sixteen, before the last eight are taken in as they are.
std::uint64_t HashedHalf(const std::string& word) {
  constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15;
  const auto turned = [](std::uint64_t bits) { return bits << 32 | bits >> 32; };
  return turned((turned(16 * FACTOR) ^ EightBytes(word, 0)) * FACTOR);
}

// Words of the hash that `word` has.
std::vector<std::string> WordsOfOneHash(const std::string& word, std::size_t count) {
  std::vector<std::string> words{word};
  for (unsigned number = 1; words.size() < count; ++number) {
    std::string other = word;
    std::memcpy(other.data(), &number, 3);
    const std::uint64_t rest = EightBytes(word, 8) ^ HashedHalf(word) ^ HashedHalf(other);
    std::memcpy(other.data() + 8, &rest, sizeof rest);
    if (other.find('\0') == std::string::npos) words.push_back(other);
  }
  return words;
}

TEST(DictionaryOrder, WordsOfOneHashAreToldApart) {
  Dictionary& dictionary = NewDictionary();
  const std::vector<std::string> words = WordsOfOneHash("sixteen letters.", 300);
  Atoms found;
  for (const std::string& word : words) {
    ASSERT_EQ(WordHash(words[0]).Get(), WordHash(word).Get());
    found.push_back(dictionary.Lookup(word));
  }
  for (std::size_t at = 0; at < words.size(); ++at) {
    EXPECT_EQ(words[at], found[at]);
    EXPECT_EQ(found[at], dictionary.Lookup(words[at]));
  }
  EXPECT_EQ(words.size(), AtomsOf(dictionary).size());
  EXPECT_TRUE(IsInOrder(AtomsOf(dictionary)));
}

TEST(DictionaryPages, AreFilledToTheLastByte) {
  Dictionary& dictionary = NewDictionary();
  const char* const first = dictionary.Lookup(std::string(100000, 'a'));
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(31071));
  const char* const second = dictionary.Lookup(std::string(31070, 'b'));
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(0));
  EXPECT_EQ(first + 100001, second);
  dictionary.Lookup("");
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(0, 131071));
  EXPECT_EQ(std::string(100000, 'a'), first);
  EXPECT_EQ(std::string(31070, 'b'), second);
}

TEST(DictionaryPages, OnlyTheLastTakesWords) {
  Dictionary& dictionary = NewDictionary();
  dictionary.Lookup(std::string(100000, 'a'));
  dictionary.Lookup(std::string(31071, 'b'));
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(31071, 100000));
  dictionary.Lookup("c");
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(31071, 99998));
  dictionary.Lookup("c");
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(31071, 99998));
}

TEST(DictionaryPages, OneWordCanFillOne) {
  Dictionary& dictionary = NewDictionary();
  const std::string longest(uPAGE - 1, 'a');
  EXPECT_EQ(longest, dictionary.Lookup(longest));
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(0));
  EXPECT_THROW(dictionary.Lookup(longest + 'a'), InvalidParameter);
  EXPECT_THAT(FreeBytesOf(dictionary), ElementsAre(0));
  EXPECT_EQ(1u, AtomsOf(dictionary).size());
}

// There is no way back from unloading, where raises return: a child goes it.
TEST(DictionaryPages, AWordThatIsTooLongIsNullWhereTheRaiseReturns) {
  EXPECT_EXIT(
      {
        SetLibraryUnloading();
        const std::string tooLong(uPAGE, 'a');
        EXPECT_EQ(nullptr, GetOxaAtom(tooLong));
        Atoms atoms;
        Dictionary::Instance()->Convert(atoms, ".b." + tooLong, '.');
        EXPECT_THAT(atoms, ElementsAre(GetOxaAtom("b"), nullptr));
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "131072 bytes; the longest word has 131071");
}

// Every allocation of every look-up fails once.
TEST(DictionaryWithoutMemory, StaysAsItWas) {
  Dictionary& dictionary = NewDictionary();
  std::size_t failures = 0;
  for (std::size_t number = 0; number < 1200; ++number) {
    const std::string word = Word(number * 7919 % 1200);
    const std::size_t before = AtomsOf(dictionary).size();
    for (unsigned long failing = 1; true; ++failing) {
      bool failed = false;
      {
        const TestSupport::FailAllocation fail(failing);
        try {
          dictionary.Lookup(word);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
      }
      if (!failed) break;
      ++failures;
      ASSERT_EQ(before, AtomsOf(dictionary).size());
    }
    ASSERT_EQ(word, dictionary.Lookup(word));
    ASSERT_EQ(before + 1, AtomsOf(dictionary).size());
  }
  EXPECT_GE(failures, 10u);  // pages, blocks, growing blocks, growing tables
  EXPECT_TRUE(IsInOrder(AtomsOf(dictionary)));
}

// However many ask for the first one at once.
TEST(DictionaryThreads, MakeOneDictionary) {
  for (int round = 0; round < 50; ++round) {
    SingletonRegistry::DestroyAllSingletons();
    ASSERT_FALSE(Dictionary::IsInstantiated());
    constexpr int THREADS = 4;
    std::vector<const char*> found(THREADS);
    TestSupport::Together(
        THREADS, [&found](int thread) { found[static_cast<std::size_t>(thread)] = GetOxaAtom("first"); });
    EXPECT_EQ(Atoms(THREADS, found[0]), found);
    ASSERT_TRUE(Dictionary::IsInstantiated());
  }
}

// One adds so many words that blocks, pages and tables grow several times under the others.
TEST(DictionaryThreads, FindWhileOthersAdd) {
  Dictionary& dictionary = NewDictionary();
  const char* const known = dictionary.Lookup("known");
  std::atomic<bool> bEnded{false};
  std::atomic<const char*> pLast{known};
  TestSupport::Together(3, [&](int thread) {
    if (thread == 0) {
      for (std::size_t number = 0; number < uWORDS; ++number) pLast = dictionary.Lookup(Word(number));
      bEnded = true;
    } else {
      do {
        ASSERT_EQ(known, GetOxaAtom("known"));
        const char* const last = pLast;
        ASSERT_EQ(last, dictionary.Lookup(std::string(last)));
      } while (!bEnded);
    }
  });
}

TEST(DictionaryThreads, GetTheSameAtoms) {
  constexpr int THREADS = 8;
  Dictionary& dictionary = NewDictionary();
  std::vector<Atoms> found(THREADS, Atoms(uWORDS));
  TestSupport::Together(THREADS, [&found](int thread) {
    std::vector<std::size_t> order(uWORDS);
    for (std::size_t number = 0; number < uWORDS; ++number) order[number] = number;
    // Half of them come in the same order, so that they meet at each new word.
    if (thread % 2 == 1)
      std::shuffle(order.begin(), order.end(), std::mt19937(static_cast<unsigned>(thread)));
    for (const std::size_t number : order)
      found[static_cast<std::size_t>(thread)][number] = GetOxaAtom(Word(number));
  });
  for (std::size_t number = 0; number < uWORDS; ++number) ASSERT_EQ(Word(number), found[0][number]);
  for (const Atoms& atoms : found) EXPECT_TRUE(atoms == found[0]);
  const Atoms atoms = AtomsOf(dictionary);
  EXPECT_EQ(uWORDS, atoms.size());
  EXPECT_TRUE(IsInOrder(atoms));
}

}  // namespace
