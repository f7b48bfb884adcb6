// The table of mappings, read from texts that the system could have written, and from some that it couldn't.
#include "Platform/Linux/DumpMaps.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "Dump/OpenFile.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core::Platform;
using TestSupport::OpenFile;
using TestSupport::TemporaryFolder;

constexpr std::uint64_t uPAGE = 4096;

class DumpMapsTests : public testing::Test {
 protected:
  static void Read(const std::string& text) {
    const TemporaryFolder folder;
    s_maps.Read(OpenFile(folder.Write("maps", text)).Get());
  }

  // The one mapping of a line that ends in this name.
  static const DumpMapping& ReadNamed(const std::string& name) {
    Read("1000-2000 rw-p 00000000 00:00 0   " + name + "\n");
    EXPECT_EQ(s_maps.Count(), 1U) << name;
    return *s_maps.begin();
  }
  static unsigned KindOf(const std::string& name) { return ReadNamed(name).m_uFlags & ~3U; }
  static std::string NameOf(const std::string& name) { return s_maps.Name(ReadNamed(name)); }

  // The line of the page with this number.
  static std::string Line(unsigned page, const std::string& name = "") {
    char line[64];
    std::snprintf(line, sizeof line, "%x000-%x000 r--p 00000000 00:00 0   ", page, page + 1);
    return line + name + '\n';
  }

  static DumpMaps s_maps;
};
DumpMaps DumpMapsTests::s_maps;

TEST_F(DumpMapsTests, ALineTellsRangeRightsOffsetAndName) {
  Read("7f0c4a200000-7f0c4a228000 r-xs 0002b000 fe:01 1312      /usr/lib/some library.so\n");
  ASSERT_EQ(s_maps.Count(), 1U);
  const DumpMapping& mapping = *s_maps.begin();
  EXPECT_EQ(mapping.m_uStart, 0x7f0c4a200000U);
  EXPECT_EQ(mapping.m_uEnd, 0x7f0c4a228000U);
  EXPECT_EQ(mapping.Size(), 0x28000U);
  EXPECT_EQ(mapping.m_uOffset, 0x2b000U);
  EXPECT_EQ(mapping.m_uFlags,
            DumpMapping::eREADABLE | DumpMapping::eEXECUTABLE | DumpMapping::eSHARED | DumpMapping::eFILE);
  EXPECT_STREQ(s_maps.Name(mapping), "/usr/lib/some library.so");
}

TEST_F(DumpMapsTests, LinesWithoutARangeArePassedOver) {
  Read("\nnonsense\n1000 2000 r--p 00000000 00:00 0 /a\n1000-2000\n1000-2000 r-\n" + Line(5));
  ASSERT_EQ(s_maps.Count(), 1U);
  EXPECT_EQ(s_maps.begin()->m_uStart, 5 * uPAGE);
}

TEST_F(DumpMapsTests, WhatBelongsToADeviceIsNotToBeRead) {
  for (const char* const name : {"/dev/dri/card0", "/dev/mem", "/sys/kernel/x", "/proc/kcore"}) {
    EXPECT_EQ(KindOf(name), DumpMapping::eFILE | DumpMapping::eDEVICE) << name;
    EXPECT_FALSE(s_maps.begin()->MayBeRead()) << name;
  }
  for (const char* const name :
       {"anon_inode:i915.gem", "socket:[1312]", "[vvar]", "[vvar_vclock]", "[vsyscall]"})
    EXPECT_EQ(KindOf(name), DumpMapping::eDEVICE) << name;
}

TEST_F(DumpMapsTests, MemoryThatOnlyLooksLikeADeviceIs) {
  for (const char* const name : {"/dev/shm/channel", "/dev/zero (deleted)", "/development/x", "/system"}) {
    EXPECT_EQ(KindOf(name), DumpMapping::eFILE) << name;
    EXPECT_TRUE(s_maps.begin()->MayBeRead()) << name;
  }
  for (const char* const name : {"", "[heap]", "[stack]", "[anon: a name]"})
    EXPECT_EQ(KindOf(name), 0U) << name;
  EXPECT_EQ(KindOf("[vdso]"), DumpMapping::eVDSO);
}

TEST_F(DumpMapsTests, NamesAreThoseOfTheFiles) {
  EXPECT_EQ(NameOf("/gone (deleted)"), "/gone");
  EXPECT_EQ(NameOf("/gone (deleted) (deleted)"), "/gone (deleted)");
  EXPECT_EQ(NameOf("/a (deleted) file"), "/a (deleted) file");
  EXPECT_EQ(NameOf("/two\\012lines\\012 (deleted)"), "/two\nlines\n");
  EXPECT_EQ(NameOf("/no\\011line\\"), "/no\\011line\\");
}

TEST_F(DumpMapsTests, LinesAreReadWhole) {
  constexpr unsigned uLINES = 3000;  // several buffers of them, each cut somewhere else
  std::string text;
  for (unsigned i = 0; i < uLINES; ++i) text += Line(i + 1, "/file " + std::to_string(i * 12345));
  Read(text);
  ASSERT_EQ(s_maps.Count(), uLINES);
  for (unsigned i = 0; i < uLINES; ++i) {
    const DumpMapping& mapping = s_maps.begin()[i];
    ASSERT_EQ(mapping.m_uStart, (i + 1) * uPAGE);
    ASSERT_EQ(mapping.m_uEnd, (i + 2) * uPAGE);
    ASSERT_EQ(s_maps.Name(mapping), "/file " + std::to_string(i * 12345));
  }
}

TEST_F(DumpMapsTests, ALineWithoutAnEndEndsIt) {
  Read(Line(1) + Line(2) + std::string(20000, 'x') + '\n' + Line(3));
  EXPECT_EQ(s_maps.Count(), 2U);
  Read(Line(1) + Line(2).substr(0, 20));
  EXPECT_EQ(s_maps.Count(), 1U);
}

TEST_F(DumpMapsTests, WhatCannotBeReadIsAnEmptyTable) {
  Read(Line(1));
  const TemporaryFolder folder;
  s_maps.Read(OpenFile(folder.Path()).Get());
  EXPECT_EQ(s_maps.Count(), 0U);
  EXPECT_EQ(s_maps.Find(uPAGE), nullptr);
}

TEST_F(DumpMapsTests, MoreThanItHoldsIsCut) {
  constexpr unsigned uMOST = 16384;
  std::string text;
  for (unsigned i = 1; i <= uMOST + 10; ++i) text += Line(i);
  Read(text);
  ASSERT_EQ(s_maps.Count(), uMOST);
  EXPECT_EQ(s_maps.begin()[uMOST - 1].m_uStart, uMOST * uPAGE);
}

// One byte is the end of the empty name, and each name has one of its own.
TEST_F(DumpMapsTests, NamesThatDontFitAreLeftOutAndTheirMappingsStay) {
  constexpr unsigned uNAMES = 262144;
  constexpr unsigned uSIZE = 189;
  constexpr unsigned uFITTING = (uNAMES - 1) / uSIZE;
  static_assert(uFITTING * uSIZE == uNAMES - 1, "the last one fits to the byte");
  const auto name = [](unsigned number, std::size_t size) {
    std::string text = "/" + std::to_string(number);
    return text + std::string(size - 1 - text.size(), 'x');
  };
  std::string text;
  for (unsigned i = 1; i < uFITTING; ++i) text += Line(i, name(i, uSIZE));
  text += Line(uFITTING, name(uFITTING, uSIZE + 1)) + Line(uFITTING + 1, name(uFITTING + 1, uSIZE)) +
          Line(uFITTING + 2, "/");
  Read(text);
  ASSERT_EQ(s_maps.Count(), uFITTING + 2);
  const DumpMapping* const last = s_maps.end() - 1;
  EXPECT_EQ(s_maps.Name(last[-3]), name(uFITTING - 1, uSIZE));
  EXPECT_STREQ(s_maps.Name(last[-2]), "") << "by one byte";
  EXPECT_EQ(s_maps.Name(last[-1]), name(uFITTING + 1, uSIZE));
  EXPECT_STREQ(s_maps.Name(last[0]), "");
  EXPECT_TRUE(last->Has(DumpMapping::eFILE));
}

TEST_F(DumpMapsTests, AddressesAreFoundFromTheFirstByteToTheLast) {
  Read("1000-3000 r--p 00000000 00:00 0\n5000-6000 r--p 00000000 00:00 0\n");
  const DumpMapping* const first = s_maps.begin();
  EXPECT_EQ(s_maps.Find(0xfff), nullptr);
  EXPECT_EQ(s_maps.Find(0x1000), first);
  EXPECT_EQ(s_maps.Find(0x2fff), first);
  EXPECT_EQ(s_maps.Find(0x3000), nullptr);
  EXPECT_EQ(s_maps.Find(0x5fff), first + 1);
  EXPECT_EQ(s_maps.Find(0x6000), nullptr);
  EXPECT_EQ(s_maps.FindNext(0), first);
  EXPECT_EQ(s_maps.FindNext(0x2fff), first);
  EXPECT_EQ(s_maps.FindNext(0x3000), first + 1);
  EXPECT_EQ(s_maps.FindNext(0x6000), nullptr);
}

}  // namespace
