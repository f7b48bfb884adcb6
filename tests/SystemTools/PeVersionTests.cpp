#include <gtest/gtest.h>

#include <string>

#include "SystemTools/PeFile.h"
#include "SystemTools/VersionSupport.h"

using namespace SystemToolsTest;
using TestSupport::TemporaryFolder;

namespace {

const char16_t* const sENGLISH = u"040904B0";

// Where things stand in such a file of the wider format.
constexpr std::size_t uDIRECTORIES = 64 + 24 + 108;  // their number
constexpr std::size_t uRESOURCES = 64 + 24 + 240 + 40;
constexpr std::size_t uCONTENT = uRESOURCES + 88;

PeFile Probe() {
  PeFile file;
  file.m_translations = {{0x409, 0x4B0}};
  file.m_tables = {{sENGLISH, {{u"ProductName", u"Probe"}, {u"ProductVersion", u"2.5"}}}};
  return file;
}

const Values& ProbeValues() {
  static const Values s_values{{"ProductName", "Probe"}, {"ProductVersion", "2.5"}};
  return s_values;
}

}  // namespace

TEST(PeVersion, BothWidthsAndBothOrdersOfBlocks) {
  for (const bool wide : {false, true})
    for (const bool textsFirst : {false, true}) {
      PeFile file = Probe();
      file.m_b64 = wide;
      file.m_bTextsFirst = textsFirst;
      EXPECT_EQ(ProbeValues(), ContentOf(file.Make())) << wide << textsFirst;
    }
}

TEST(PeVersion, EveryKeyIsAskedFor) {
  PeFile file = Probe();
  file.m_tables[0].m_texts = {
      {u"Comments", u"1"},        {u"CompanyName", u"2"},      {u"FileDescription", u"3"},
      {u"FileVersion", u"4"},     {u"InternalName", u"5"},     {u"LegalCopyright", u"6"},
      {u"LegalTrademarks", u"7"}, {u"OriginalFilename", u"8"}, {u"ProductName", u"9"},
      {u"ProductVersion", u"10"}, {u"SpecialBuild", u"11"},    {u"PrivateBuild", u"12"},
      {u"PathName", u"13"},       {u"FileName", u"14"}};
  EXPECT_EQ((Values{{"Comments", "1"},
                    {"CompanyName", "2"},
                    {"FileDescription", "3"},
                    {"FileVersion", "4"},
                    {"InternalName", "5"},
                    {"LegalCopyright", "6"},
                    {"LegalTrademarks", "7"},
                    {"OriginalFilename", "8"},
                    {"ProductName", "9"},
                    {"ProductVersion", "10"},
                    {"SpecialBuild", "11"}}),
            ContentOf(file.Make()));
}

TEST(PeVersion, PathAndNameAreTheCallers) {
  PeFile file = Probe();
  file.m_tables[0].m_texts.emplace_back(u"PathName", u"elsewhere");
  const TemporaryFolder folder;
  Values values = VersionOf(folder.Write("probe.dll", file.Make()));
  EXPECT_EQ(folder.File("probe.dll"), values["PathName"]);
  EXPECT_EQ("probe.dll", values["FileName"]);
}

TEST(PeVersion, WithoutAVersionResourceThereIsNothing) {
  PeFile file = Probe();
  file.m_bResource = false;
  EXPECT_FALSE(HasVersion(file.Make()));
  file = Probe();
  file.m_uType = 6;
  EXPECT_FALSE(HasVersion(file.Make()));
  EXPECT_FALSE(HasVersion(file.Make(), "probe.1.2")) << "numbers in the name count for the other format only";
  file = Probe();
  file.m_sRoot = u"VS_VERSION_INFX";
  EXPECT_FALSE(HasVersion(file.Make()));
}

TEST(PeVersion, AValueThatIsPresentIsKept) {
  PeFile file = Probe();
  file.m_translations = {{0x407, 0x4E4}, {0x409, 0x4B0}};
  file.m_tables.push_back({u"040704E4", {{u"ProductName", u"Sonde"}, {u"Comments", u"deutsch"}}});
  EXPECT_EQ((Values{{"ProductName", "Sonde"}, {"Comments", "deutsch"}, {"ProductVersion", "2.5"}}),
            ContentOf(file.Make()));
  std::swap(file.m_translations[0], file.m_translations[1]);
  EXPECT_EQ((Values{{"ProductName", "Probe"}, {"Comments", "deutsch"}, {"ProductVersion", "2.5"}}),
            ContentOf(file.Make()));
}

TEST(PeVersion, AnEmptyValueIsPresent) {
  PeFile file = Probe();
  file.m_translations = {{0x407, 0x4E4}, {0x409, 0x4B0}};
  file.m_tables.push_back({u"040704E4", {{u"ProductName", u""}}});
  EXPECT_EQ((Values{{"ProductName", ""}, {"ProductVersion", "2.5"}}), ContentOf(file.Make()));
}

TEST(PeVersion, TablesThatNoTranslationNamesAreNotRead) {
  PeFile file = Probe();
  file.m_translations = {{0x409, 0x4B1}, {0x408, 0x4B0}};
  EXPECT_EQ(Values{}, ContentOf(file.Make()));
  EXPECT_TRUE(HasVersion(file.Make()));
  file.m_translations.clear();
  EXPECT_EQ(Values{}, ContentOf(file.Make()));
  EXPECT_TRUE(HasVersion(file.Make()));
}

TEST(PeVersion, TablesAreNamedByFourDigitsEach) {
  PeFile file = Probe();
  for (const auto& [name, language, codePage] :
       {std::tuple<std::u16string, unsigned, unsigned>{u"000004E4", 0, 0x4E4},
        {u"ABCDEF01", 0xABCD, 0xEF01},
        {u"abcdef01", 0xABCD, 0xEF01},
        {u"FFFF0000", 0xFFFF, 0},
        {u"00010002", 1, 2}}) {
    file.m_tables[0].m_sTable = name;
    file.m_translations = {{language, codePage}};
    EXPECT_EQ(ProbeValues(), ContentOf(file.Make())) << language;
  }
  file.m_tables[0].m_sTable = u"12";
  file.m_translations = {{1, 2}};
  EXPECT_EQ(Values{}, ContentOf(file.Make()));
}

TEST(PeVersion, NamesAreComparedWithoutRegardToCase) {
  PeFile file = Probe();
  file.m_tables[0].m_texts[0].first = u"PRODUCTNAME";
  file.m_tables[0].m_texts[1].first = u"productversion";
  EXPECT_EQ(ProbeValues(), ContentOf(file.Make()));
}

TEST(PeVersion, TextsComeOutInUtf8) {
  PeFile file = Probe();
  file.m_tables[0].m_texts = {
      {u"LegalCopyright", u"\u00A9 \u20AC \U0001F600"},
      {u"Comments", std::u16string(u"x") + char16_t(0xD83D) + u"y" + char16_t(0xDE00)}};
  EXPECT_EQ((Values{{"LegalCopyright", "\xC2\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
                    {"Comments", "x\xEF\xBF\xBDy\xEF\xBF\xBD"}}),
            ContentOf(file.Make()));
}

TEST(PeVersion, SectionsThatEndInFrontOfItHaveNothingOfIt) {
  PeFile file = Probe();
  file.m_uSections = 3;
  EXPECT_EQ(ProbeValues(), ContentOf(file.Make()));
}

TEST(PeVersion, ResourcesThatHaveNamesStandInFront) {
  PeFile file = Probe();
  file.m_bNamedResource = true;
  EXPECT_EQ(ProbeValues(), ContentOf(file.Make()));
}

// Three folders in each other lead to where the content is: never fewer, and never more.
TEST(PeVersion, FoldersAreThreeDeep) {
  for (const std::size_t entry : {uRESOURCES + 20, uRESOURCES + 44})
    EXPECT_FALSE(HasVersion(Patched(Probe().Make(), entry + 3, 0, 1))) << "a folder that is called content";
  EXPECT_FALSE(HasVersion(Patched(Probe().Make(), uRESOURCES + 68 + 3, 0x80, 1))) << "and content a folder";
}

TEST(PeVersion, DirectoriesThatAreNotCountedAreNotThere) {
  EXPECT_EQ(ProbeValues(), ContentOf(Patched(Probe().Make(), uDIRECTORIES, 3, 4)));
  EXPECT_FALSE(HasVersion(Patched(Probe().Make(), uDIRECTORIES, 2, 4)));
}

TEST(PeVersion, TheContentHasNoMoreThanAMebibyte) {
  const std::string bytes = Probe().Make() + std::string(1024 * 1024, '\0');
  EXPECT_EQ(ProbeValues(), ContentOf(Patched(bytes, uRESOURCES + 76, 1024 * 1024, 4)));
  EXPECT_FALSE(HasVersion(Patched(bytes, uRESOURCES + 76, 1024 * 1024 + 1, 4)));
}

TEST(PeVersion, TheContentIsThereAsAWhole) {
  const std::string bytes = Probe().Make();
  const std::size_t size = bytes.size() - uCONTENT;
  EXPECT_EQ(ProbeValues(), ContentOf(Patched(bytes, uCONTENT, size, 2)));
  EXPECT_FALSE(HasVersion(Patched(bytes, uCONTENT, size + 1, 2)));
}

TEST(PeVersion, ATextEndsWithItsBlock) {
  PeFile file = Probe();
  file.m_bTextsFirst = false;  // so that it is the last one
  const std::string bytes = file.Make();
  const std::size_t block = bytes.size() - 44;  // header and name, then "2.5" and its end
  EXPECT_EQ(ProbeValues(), ContentOf(Patched(bytes, block, 42, 2)));
  EXPECT_EQ((Values{{"ProductName", "Probe"}, {"ProductVersion", "2."}}),
            ContentOf(Patched(bytes, block, 40, 2)));
}

TEST(PeVersion, AFileThatIsCutOffAnywhereIsNull) {
  ASSERT_EQ(ProbeValues(), ContentOf(Probe().Make()));
  ExpectNullWhereverItIsCutOff("probe.dll", Probe().Make());
}

// Whatever byte is changed, to whatever: reading ends, and no text comes from where none is.
TEST(PeVersion, AnyByteMayBeDamaged) {
  WithEveryByteDamaged("probe.dll", Probe().Make(), [](const Values& values, std::size_t at) {
    for (const auto& value : values) EXPECT_LT(value.second.size(), 1000u) << at;
  });
}
