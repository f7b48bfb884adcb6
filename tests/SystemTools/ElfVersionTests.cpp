#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "SystemTools/ElfFile.h"
#include "SystemTools/VersionSupport.h"

using namespace SystemToolsTest;
using TestSupport::TemporaryFolder;

namespace {

ElfFile WithNote(const std::string& note) {
  ElfFile file;
  file.m_sNote = note;
  return file;
}

Values ContentOfNote(const std::string& note) { return ContentOf(WithNote(note).Make()); }

}  // namespace

TEST(ElfVersion, BothWidthsAndBothOrdersOfBytes) {
  for (const bool wide : {false, true})
    for (const bool big : {false, true})
      for (const bool section : {false, true})
        for (const bool behind : {false, true}) {
          ElfFile file = WithNote(R"({"name":"probe","version":"2.5"})");
          file.m_b64 = wide;
          file.m_bBigEndian = big;
          file.m_bNoteInSection = section;
          file.m_bNoteBehindAnother = behind;
          file.m_sOwnName = "libprobe.so.2";
          EXPECT_EQ(
              (Values{
                  {"InternalName", "libprobe.so.2"}, {"ProductName", "probe"}, {"ProductVersion", "2.5"}}),
              ContentOf(file.Make()))
              << wide << big << section << behind;
        }
}

TEST(ElfVersion, NotesOfTheWiderAlignment) {
  ElfFile file = WithNote(R"({"name":"probe"})");
  file.m_bNoteBehindAnother = true;
  file.m_uNoteAlignment = 8;
  EXPECT_EQ((Values{{"ProductName", "probe"}}), ContentOf(file.Make()));
}

TEST(ElfVersion, EveryKeyComesFromTheMemberOfItsName) {
  const Values all{{"Comments", "1"},        {"CompanyName", "2"},      {"FileDescription", "3"},
                   {"FileVersion", "4"},     {"InternalName", "5"},     {"LegalCopyright", "6"},
                   {"LegalTrademarks", "7"}, {"OriginalFilename", "8"}, {"ProductName", "9"},
                   {"ProductVersion", "10"}, {"SpecialBuild", "11"}};
  std::string note = R"({"name":"n","version":"v","type":"deb","other":{"name":["x"]})";
  for (const auto& [key, value] : all)
    note.append(",\"").append(key).append("\":\"").append(value).append("\"");
  ElfFile file = WithNote(note + '}');
  file.m_sOwnName = "libprobe.so.2";
  EXPECT_EQ(all, ContentOf(file.Make(), "libprobe.so.2.5"));
}

TEST(ElfVersion, ANoteWithoutAnythingOfUseIsARecord) {
  EXPECT_TRUE(HasVersion(WithNote("{}").Make()));
  EXPECT_EQ(Values{}, ContentOfNote(R"({"type":"deb","name":5,"version":null})"));
  EXPECT_TRUE(HasVersion(WithNote(R"({"type":"deb","name":5,"version":null})").Make()));
}

TEST(ElfVersion, OtherNotesAreNone) {
  ElfFile file = WithNote(R"({"name":"probe"})");
  file.m_uNoteType = 1;
  EXPECT_FALSE(HasVersion(file.Make()));
  file = WithNote(R"({"name":"probe"})");
  file.m_sNoteOwner = "FDOX";
  EXPECT_FALSE(HasVersion(file.Make()));
}

TEST(ElfVersion, TextsOfTheNote) {
  EXPECT_EQ((Values{{"ProductName", "a\"\\/\b\f\n\r\tz"}}),
            ContentOfNote(R"({"name":"a\"\\\/\b\f\n\r\tz"})"));
  EXPECT_EQ((Values{{"ProductName", "A\xC2\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"}}),
            ContentOfNote(R"({"name":"\u0041\u00a9\u20AC\uD83D\uDe00"})"));
  EXPECT_EQ((Values{{"ProductName", "\xEF\xBF\xBDx\xEF\xBF\xBD"}}),
            ContentOfNote(R"({"name":"\uDE00x\uD83D"})"));
  EXPECT_EQ((Values{{"ProductName", "\xC2\xA9"}}), ContentOfNote("{\"name\":\"\xC2\xA9\"}"));
  EXPECT_EQ((Values{{"ProductName", "first"}}), ContentOfNote(R"({"name":"first","name":"second"})"));
  EXPECT_EQ((Values{{"ProductName", ""}}), ContentOfNote(R"({"name":""})"));
}

TEST(ElfVersion, WhatTheRulesOfJsonAllow) {
  for (const char* note :
       {" \t\r\n{ \"a\" : 1 , \"name\" : \"x\" } \n", R"({"a":[],"b":{},"c":[1,[2,{"d":"e"}]],"name":"x"})",
        R"({"a":true,"b":false,"c":null,"name":"x"})",
        R"({"a":-0,"b":0.5,"c":10e5,"d":-1.25E-7,"e":3e+2,"name":"x"})"})
    EXPECT_EQ((Values{{"ProductName", "x"}}), ContentOfNote(note)) << note;
}

TEST(ElfVersion, ANoteThatBreaksTheRulesOfJsonIsNone) {
  for (const char* note : {"x",
                           "[]",
                           "\"name\"",
                           R"({"name":"x")",
                           R"({"name":"x"}})",
                           R"({"name":"x",})",
                           R"({,"name":"x"})",
                           R"({"name" "x"})",
                           R"({name:"x"})",
                           R"({'name':'x'})",
                           R"({"name":"x)",
                           R"({"name":"\x"})",
                           R"({"name":"\u12G4"})",
                           R"({"name":"\u123"})",
                           R"({"name":"\)",
                           "{\"name\":\"a\nb\"}",
                           R"({"name":"x","a":01})",
                           R"({"name":"x","a":.5})",
                           R"({"name":"x","a":1.})",
                           R"({"name":"x","a":1e})",
                           R"({"name":"x","a":+1})",
                           R"({"name":"x","a":-})",
                           R"({"name":"x","a":tru})",
                           R"({"name":"x","a":})",
                           R"({"name":"x","a":[1,]})",
                           R"({"name":"x","a":[1})",
                           R"({"name":"x","a":NaN})",
                           R"({"name":"x"} y)",
                           R"({"name":"x"/*y*/})"})
    EXPECT_FALSE(HasVersion(WithNote(note).Make())) << note;
}

TEST(ElfVersion, ZerosCountAtTheEndOnly) {
  const std::string zero(1, '\0');
  EXPECT_EQ((Values{{"ProductName", "x"}}), ContentOfNote("{\"name\":\"x\"}" + zero + zero));
  EXPECT_FALSE(HasVersion(WithNote("{\"name\":\"x\"}" + zero + "y").Make()));
  EXPECT_FALSE(HasVersion(WithNote("{\"name\":\"" + zero + "\"}").Make()));
}

TEST(ElfVersion, NestingHasALimit) {
  const auto nested = [](int depth) {  // the object itself is one of them
    const std::size_t inner = static_cast<std::size_t>(depth) - 1;
    return R"({"name":"x","a":)" + std::string(inner, '[') + std::string(inner, ']') + "}";
  };
  EXPECT_EQ((Values{{"ProductName", "x"}}), ContentOfNote(nested(32)));
  EXPECT_FALSE(HasVersion(WithNote(nested(33)).Make()));
  EXPECT_FALSE(HasVersion(WithNote(R"({"a":)" + std::string(500000, '[')).Make()));
}

TEST(ElfVersion, TheNumbersThatEndTheNameAreTheFilesVersion) {
  const std::string bytes = ElfFile().Make();
  for (const auto& [name, version] : {std::pair<std::string, std::string>{"lib.so.1.2", "1.2"},
                                      {"lib.so.2.1.6", "2.1.6"},
                                      {"lib.so.10.020.3.4.5", "10.020.3.4.5"},
                                      {"probe-1.2.3", "2.3"},
                                      {".1.2", "1.2"}})
    EXPECT_EQ((Values{{"FileVersion", version}}), ContentOf(bytes, name)) << name;
  for (const char* name : {"lib.so", "lib.so.1", "lib.so.1.", "lib.so.1.2.", "lib.so.1..2", "lib.so.1.2a",
                           "1.2", "lib-1.2", "lib.so.1.2.x", "12", ".12"})
    EXPECT_FALSE(HasVersion(bytes, name)) << name;
}

TEST(ElfVersion, ALinkHasTheNumbersOfTheFileThatItLeadsTo) {
  const TemporaryFolder folder;
  folder.Write("lib.so.1.2.3", ElfFile().Make());
  std::filesystem::create_symlink("lib.so.1.2.3", folder.File("lib.so.1"));
  std::filesystem::create_symlink("lib.so.1", folder.File("lib.so"));
  std::filesystem::create_symlink("lib.so.1", folder.File("lib.so.7.8"));
  EXPECT_EQ("1.2.3", VersionOf(folder.File("lib.so.1"))["FileVersion"]);
  EXPECT_EQ("1.2.3", VersionOf(folder.File("lib.so"))["FileVersion"]);
  EXPECT_EQ("7.8", VersionOf(folder.File("lib.so.7.8"))["FileVersion"]) << "its own name comes first";
}

TEST(ElfVersion, TheNameOfTheLinkerAloneIsNoVersion) {
  ElfFile file;
  file.m_sOwnName = "libprobe.so.2";
  EXPECT_FALSE(HasVersion(file.Make()));
  EXPECT_EQ((Values{{"InternalName", "libprobe.so.2"}, {"FileVersion", "2.5"}}),
            ContentOf(file.Make(), "x.2.5"));
}

TEST(ElfVersion, TablesMayHaveLongerEntries) {
  for (const bool wide : {false, true})
    for (const bool section : {false, true}) {
      ElfFile file = WithNote(R"({"name":"probe"})");
      file.m_b64 = wide;
      file.m_bNoteInSection = section;
      file.m_uGap = 8;
      file.m_sOwnName = "libprobe.so.2";
      EXPECT_EQ((Values{{"InternalName", "libprobe.so.2"}, {"ProductName", "probe"}}), ContentOf(file.Make()))
          << wide << section;
    }
}

TEST(ElfVersion, NotesHaveNoMoreThanAMebibyte) {
  const auto filled = [](std::size_t size) {
    const std::string start = R"({"name":"x","y":")";
    return WithNote(start + std::string(size - start.size() - 2, 'z') + "\"}").Make();
  };
  const std::size_t header = 12 + 4;
  EXPECT_TRUE(HasVersion(filled(1024 * 1024 - header - 8)));
  EXPECT_FALSE(HasVersion(filled(1024 * 1024 - header + 8)));
}

// What the linker called it, where the file's layout is known byte by byte.
class ElfOwnName : public testing::Test {
 protected:
  static constexpr std::size_t uLOADED = 64;          // the first segment
  static constexpr std::size_t uNAMES = 64 + 3 * 56;  // a 0, the name and another 0
  static constexpr std::size_t uDYNAMIC =
      uNAMES + 16;                          // the place of the name, that of all names and their size
  static constexpr std::size_t uSIZE = 15;  // of the names

  ElfOwnName() { m_file.m_sOwnName = "libprobe.so.2"; }

  static std::string NameIn(const std::string& bytes) {
    Values values = ContentOf(bytes, "x.1.2");
    EXPECT_EQ("1.2", values["FileVersion"]);
    return values["InternalName"];
  }

  std::string NameIfPatched(std::size_t at, std::uint64_t number, std::size_t size) const {
    return NameIn(Patched(m_file.Make(), at, number, size));
  }

  ElfFile m_file;
};

TEST_F(ElfOwnName, LiesInASegmentThatIsLoaded) {
  EXPECT_EQ("libprobe.so.2", NameIfPatched(uLOADED, 1, 4));
  EXPECT_EQ("", NameIfPatched(uLOADED, 6, 4));
  EXPECT_EQ("libprobe.so.2", NameIfPatched(uLOADED + 32, uNAMES + 1, 8));
  EXPECT_EQ("", NameIfPatched(uLOADED + 32, uNAMES, 8)) << "the segment ends in front of it";
}

TEST_F(ElfOwnName, LiesAmongTheNamesAndEndsThere) {
  EXPECT_EQ("robe.so.2", NameIfPatched(uDYNAMIC + 8, 5, 8));
  EXPECT_EQ("", NameIfPatched(uDYNAMIC + 8, uSIZE + 1, 8)) << "behind them";
  EXPECT_EQ("libprobe.so.2", NameIfPatched(uDYNAMIC + 40, uSIZE, 8));
  EXPECT_EQ("", NameIfPatched(uDYNAMIC + 40, uSIZE - 1, 8)) << "without its end";
}

TEST_F(ElfOwnName, BehindTheEndOfTheListIsNone) {
  m_file.m_bNameBehindTheEnd = true;
  EXPECT_EQ("", NameIn(m_file.Make()));
}

TEST(ElfVersion, AFileThatIsCutOffAnywhereIsNull) {
  for (const bool wide : {false, true}) {
    ElfFile file = WithNote(R"({"name":"probe","version":"2.5"})");
    file.m_b64 = wide;
    file.m_sOwnName = "libprobe.so.2";
    ExpectNullWhereverItIsCutOff("x.1.2", file.Make());
  }
}

// Whatever byte is changed, to whatever: reading ends, and the file's number is told or nothing is.
TEST(ElfVersion, AnyByteMayBeDamaged) {
  ElfFile file = WithNote(R"({"name":"probe"})");
  file.m_sOwnName = "libprobe.so.2";
  WithEveryByteDamaged("x.1.2", file.Make(), [](const Values& values, std::size_t at) {
    EXPECT_TRUE(values.empty() || values.at("FileVersion") == "1.2") << at;
  });
}
