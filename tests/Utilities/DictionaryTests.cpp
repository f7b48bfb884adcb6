#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Dictionary.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

using namespace Oxa::Core;
using testing::ElementsAre;
using testing::IsEmpty;

using Atoms = std::vector<const char*>;

constexpr std::size_t uPAGE = 131072;

Atoms Converted(const char* path, char sep) {
  Atoms atoms{"what", "was", "there", "before"};
  Dictionary::Instance()->Convert(atoms, path, sep);
  return atoms;
}

std::string Converted(const Atoms& atoms, char sep) {
  std::string path = "what was there before";
  Dictionary::Instance()->Convert(path, atoms, sep);
  return path;
}

std::vector<std::string> Texts(const Atoms& atoms) {
  return std::vector<std::string>(atoms.begin(), atoms.end());
}

// The conditions of the assertions that failed in the conversion of a path, and the words that came of it.
std::vector<std::string> FailuresOf(const char* path, std::vector<std::string>& words) {
  testing::internal::CaptureStderr();
  words = Texts(Converted(path, '.'));
  const std::string told = testing::internal::GetCapturedStderr();
  const std::string opening = "Failed Assertion(";
  std::vector<std::string> failures;
  for (std::size_t at = told.find(opening); at != std::string::npos; at = told.find(opening, at + 1)) {
    const std::size_t begin = at + opening.size();
    failures.push_back(told.substr(begin, told.find(")\n", begin) - begin));
  }
  return failures;
}

TEST(Dictionary, EqualTextsAreOneAtom) {
  EXPECT_EQ(Dictionary::Instance()->Lookup("Same string"), Dictionary::Instance()->Lookup("Same string"));
  EXPECT_NE(Dictionary::Instance()->Lookup("String1"), Dictionary::Instance()->Lookup("String2"));
  EXPECT_EQ(Dictionary::Instance()->Lookup(""), Dictionary::Instance()->Lookup(""));
  EXPECT_STREQ("", Dictionary::Instance()->Lookup(""));
}

TEST(Dictionary, AllWaysOfAskingGiveTheSameAtom) {
  const char* const atom = Dictionary::Instance()->Lookup("three ways");
  EXPECT_STREQ("three ways", atom);
  EXPECT_EQ(atom, Dictionary::Instance()->Lookup(std::string("three ways")));
  EXPECT_EQ(atom, GetOxaAtom("three ways"));
  EXPECT_EQ(atom, GetOxaAtom(std::string("three ways")));
  EXPECT_EQ(atom, GetOxaAtom(atom));
}

TEST(Dictionary, AnAtomIsACopy) {
  std::string word = "volatile";
  const char* const atom = GetOxaAtom(word.c_str());
  EXPECT_NE(word.c_str(), atom);
  word[0] = 'V';
  EXPECT_STREQ("volatile", atom);
  EXPECT_NE(atom, GetOxaAtom(word));
}

TEST(Dictionary, AWordEndsAtItsFirstNullByte) {
  EXPECT_EQ(GetOxaAtom("cut"), GetOxaAtom(std::string("cut\0off", 7)));
  EXPECT_EQ(GetOxaAtom(""), GetOxaAtom(std::string(1, '\0')));
}

TEST(Dictionary, TellsWordsOfEachLengthApartByEachByte) {
  for (std::size_t length = 1; length < 40; ++length) {
    const std::string word(length, 'x');
    const char* const atom = GetOxaAtom(word);
    EXPECT_EQ(word, atom);
    for (std::size_t at = 0; at < length; ++at) {
      std::string other = word;
      other[at] = '\xff';
      EXPECT_NE(atom, GetOxaAtom(other));
      EXPECT_EQ(other, GetOxaAtom(other));
    }
  }
}

TEST(Dictionary, RefusesAWordAsLongAsAPage) {
  const std::string longest(uPAGE - 1, 'a');
  EXPECT_EQ(longest, GetOxaAtom(longest));
  EXPECT_EQ(GetOxaAtom(longest), GetOxaAtom(longest));
  try {
    GetOxaAtom(longest + 'a');
    FAIL() << "nothing was raised";
  } catch (InvalidParameter& error) {
    EXPECT_EQ("Invalid Parameter: word = 131072 bytes; the longest word has 131071",
              error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("Oxa.Core.Dictionary", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ("Oxa::Core::Dictionary::Lookup", error.GetUnwindStack()->front().Get(CodeContext::sFUNCTION));
  }
  EXPECT_EQ(longest, GetOxaAtom(longest));
}

// Whoever makes it: the library that destroys it and the host that asks for it mean the same object.
TEST(Dictionary, LivesUntilShutdownAndAnew) {
  GetOxaAtom("first life");
  EXPECT_TRUE(Dictionary::IsInstantiated());
  Shutdown();
  EXPECT_FALSE(Dictionary::IsInstantiated());
  EXPECT_STREQ("second life", GetOxaAtom("second life"));
  EXPECT_TRUE(Dictionary::IsInstantiated());
}

TEST(DictionaryPaths, BecomeAtomsAndPathsAgain) {
  const Atoms atoms = Converted(".a.b.c.d.e.f.g", '.');
  EXPECT_THAT(atoms, ElementsAre(GetOxaAtom("a"), GetOxaAtom("b"), GetOxaAtom("c"), GetOxaAtom("d"),
                                 GetOxaAtom("e"), GetOxaAtom("f"), GetOxaAtom("g")));
  EXPECT_EQ(".a.b.c.d.e.f.g", Converted(atoms, '.'));
  EXPECT_EQ("/a/b/c/d/e/f/g", Converted(atoms, '/'));
}

TEST(DictionaryPaths, AsStrings) {
  Atoms atoms;
  Dictionary::Instance()->Convert(atoms, std::string("/one/two"), '/');
  EXPECT_THAT(atoms, ElementsAre(GetOxaAtom("one"), GetOxaAtom("two")));
  Dictionary::Instance()->Convert(atoms, std::string("/one\0/two", 9), '/');
  EXPECT_THAT(atoms, ElementsAre(GetOxaAtom("one")));
}

TEST(DictionaryPaths, OfNoAtomsAndOfNone) {
  EXPECT_EQ("", Converted(Atoms(), '.'));
  EXPECT_EQ(".a..b", Converted(Atoms{"a", nullptr, "b"}, '.'));
}

TEST(DictionaryPaths, GoodOnesFailNoAssertion) {
  std::vector<std::string> words;
  EXPECT_THAT(FailuresOf(".one.two", words), IsEmpty());
  EXPECT_THAT(words, ElementsAre("one", "two"));
}

TEST(DictionaryPaths, OthersFailAnAssertionAndGiveWhatStandsBehindEachSeparator) {
  const std::string begin = "str2[0] == sep";
  const std::string end = "str2[size - 1] != sep";
  const std::string row = "(i == 0) || (str2[i - 1] != sep)";
  std::vector<std::string> words;
  EXPECT_THAT(FailuresOf("", words), ElementsAre(begin));
  EXPECT_THAT(words, IsEmpty());
  EXPECT_THAT(FailuresOf("one", words), ElementsAre(begin));
  EXPECT_THAT(words, IsEmpty());
  EXPECT_THAT(FailuresOf("one.two", words), ElementsAre(begin));
  EXPECT_THAT(words, ElementsAre("two"));
  EXPECT_THAT(FailuresOf(".one.", words), ElementsAre(end));
  EXPECT_THAT(words, ElementsAre("one", ""));
  EXPECT_THAT(FailuresOf(".", words), ElementsAre(end));
  EXPECT_THAT(words, ElementsAre(""));
  EXPECT_THAT(FailuresOf(".one..two", words), ElementsAre(row));
  EXPECT_THAT(words, ElementsAre("one", "", "two"));
  EXPECT_THAT(FailuresOf("one..", words), ElementsAre(begin, end, row));
  EXPECT_THAT(words, ElementsAre("", ""));
}

TEST(DictionaryPaths, AWordThatIsTooLongLeavesTheAtomsAsTheyWere) {
  Atoms atoms{"before"};
  const std::string path = ".one." + std::string(uPAGE, 'x');
  EXPECT_THROW(Dictionary::Instance()->Convert(atoms, path, '.'), InvalidParameter);
  EXPECT_THAT(atoms, ElementsAre(testing::StrEq("before")));
}

}  // namespace
