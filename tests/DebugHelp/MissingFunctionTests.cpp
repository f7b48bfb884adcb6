// The library for symbols: where it is looked for, and what is left when it, or one of its functions, is missing.

#include <dlfcn.h>
#include <link.h>

#include "DebugHelp/StackHostRuns.h"
#include "Support/TemporaryFolder.h"

namespace StackTests {
namespace {

namespace fs = std::filesystem;

const char* const sNAME = "libdw.so.1";

std::string RealLibrary() {
  static const std::string path = [] {
    void* const library = ::dlopen(sNAME, RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) return std::string();
    link_map* map = nullptr;
    ::dlinfo(library, RTLD_DI_LINKMAP, &map);
    return std::string(map->l_name);
  }();
  return path;
}

class Library : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(RealLibrary().empty()) << "the library for symbols isn't installed"; }

  // A library that has every function but one (or several, with "; " between them), each of which goes on to the real
  // one.
  void MakeWithout(const std::string& functions, const std::string& flag = "") {
    m_folder.Write("names", "{ global: *; local: " + functions + "; };");
    const std::string command = std::string(CXX_COMPILER) + " -shared -nostartfiles -o " +
                                m_folder.File(sNAME) + " " + FORWARDING +
                                " -Wl,--version-script=" + m_folder.File("names") + " -Wl,-soname=" + sNAME +
                                (flag.empty() ? "" : " -Xlinker '" + flag + "'");
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
  }

  Printed Run(const std::string& what = "templated", const std::vector<std::string>& steps = {},
              const std::string& variable = "UNUSED=") {
    std::vector<std::string> all = {"folder=" + m_folder.Path() + "/"};
    all.insert(all.end(), steps.begin(), steps.end());
    return RunHost(Victim("VictimO0"), what, 5, all, {"REAL_LIBRARY=" + RealLibrary(), variable});
  }

  static std::string Text(const std::string& function) {
    return "warning Microsoft.DebugHelp: Failed to find " + function + " in the loaded dbghelp.dll";
  }

  const TestSupport::TemporaryFolder m_folder;
};

TEST_F(Library, ThatCantBeLoadedIsToldOnceAndErrorsHaveNoCallStack) {
  m_folder.Write(sNAME, "this is no library");
  const Printed printed = RunHost(Victim("VictimO0"), "templated", 5, {"twice", "unavailable", "xml"},
                                  {"LD_LIBRARY_PATH=" + m_folder.Path()});
  EXPECT_EQ(
      printed.Count(
          "warning Microsoft.DebugHelp: Failed to load dbghelp.dll, call stack and minidumps unavailable"),
      1)
      << printed.All();
  EXPECT_EQ(printed.Count("warning "), 1);
  EXPECT_EQ(printed.Count("no stack"), 2);
  EXPECT_TRUE(printed.Has("unavailable 1"));
  EXPECT_NE(printed.m_child.m_sOutput.find("<Error>"), std::string::npos);
  EXPECT_EQ(printed.m_child.m_sOutput.find("CallStack"), std::string::npos);
}

TEST_F(Library, IsLookedForInTheProcesssFolderFirst) {
  MakeWithout("dwarf_lineno");
  EXPECT_TRUE(Run().Has("0 frames"));
}

TEST_F(Library, IsLookedForBeneathTheFolderOfPrograms) {
  for (const char* const tools : {"Debugging Tools for Windows", "Debugging Tools for Windows 64-Bit"}) {
    MakeWithout("dwarf_lineno");
    fs::create_directories(m_folder.File(tools));
    fs::rename(m_folder.File(sNAME), m_folder.File(tools) + "/" + sNAME);
    const Printed printed = RunHost(Victim("VictimO0"), "templated", 5, {},
                                    {"ProgramFiles=" + m_folder.Path(), "REAL_LIBRARY=" + RealLibrary()});
    EXPECT_TRUE(printed.Has("0 frames")) << tools << printed.All();
    fs::remove_all(m_folder.File(tools));
  }
}

// One in each place: the log tells which was taken, with what version it says that it has.
TEST_F(Library, IsTakenFromTheFirstPlaceThatHasItAndTheLogTellsWhich) {
  if (!HAS_PACKAGE_METADATA) GTEST_SKIP() << "the linker can't write a version";
  MakeWithout("dwarf_lineno", "--package-metadata={\"name\":\"forwarding\",\"version\":\"7.8.9\"}");
  std::vector<std::string> places = {m_folder.Path() + "/"};
  for (const char* const place :
       {"programs/Debugging Tools for Windows/", "programs/Debugging Tools for Windows 64-Bit/", "system/"}) {
    places.push_back(m_folder.File(place));
    fs::create_directories(places.back());
    fs::copy_file(m_folder.File(sNAME), places.back() + sNAME);
  }
  for (const std::string& place : places) {
    const Printed printed =
        RunHost(Victim("VictimO0"), "templated", 5, {"folder=" + m_folder.Path() + "/", "log"},
                {"REAL_LIBRARY=" + RealLibrary(), "ProgramFiles=" + m_folder.File("programs"),
                 "LD_LIBRARY_PATH=" + m_folder.File("system")});
    EXPECT_EQ(printed.Count("log "), 1) << printed.All();
    EXPECT_TRUE(printed.Has("log 5: Loaded " + place + sNAME + " version 7.8.9")) << printed.All();
    fs::remove(place + sNAME);
  }
}

TEST_F(Library, ThatTellsNoVersionIsNotToldOf) {
  MakeWithout("dwarf_lineno");
  const Printed printed = Run("templated", {"log"});
  EXPECT_EQ(printed.Count("log "), 0) << printed.All();
}

TEST_F(Library, ThatCanNotBeBegunWithIsToldOnceAndThereIsNoObject) {
  const Printed printed = RunHost(Victim("VictimO0"), "-", 0, {"first-use-short"});
  EXPECT_TRUE(printed.Has(
      "warning Microsoft.DebugHelp: Failed to initialize symbols with SymInitialize, symbols unavailable"))
      << printed.All();
  EXPECT_GE(printed.Count("told "), 1);
  EXPECT_EQ(printed.Count("told "), printed.Count("told 1, unavailable 1, there 0"));
  EXPECT_FALSE(printed.Has("a child died"));
}

TEST_F(Library, ThatCanNotBeBegunWithAnewIsToldEachTime) {
  const Printed printed = RunHost(Victim("VictimO0"), "templated", 0, {"twice", "anew-short"});
  const int at = printed.Find("refused ");
  ASSERT_GE(at, 0) << printed.All();
  EXPECT_FALSE(printed.Has("refused 0"));
  EXPECT_EQ(printed.Count("warning "),
            printed.Count("warning Microsoft.DebugHelp: Failed to initialize symbols with SymInitialize, "
                          "symbols unavailable"));
  EXPECT_TRUE(printed.Has("refused " + std::to_string(printed.Count("warning ")) + ", told " +
                          std::to_string(printed.Count("warning "))));
  EXPECT_EQ(printed.Count("victim::Templated<long>"), 2) << printed.All();
}

TEST_F(Library, ThatIsDamagedInOnePlaceIsLookedForInTheNext) {
  m_folder.Write(sNAME, "this is no library");
  EXPECT_TRUE(Run().Has("victim::Templated<long>"));
}

TEST_F(Library, WithoutWhatInitializeNeedsThereIsNoObject) {
  for (const auto& [part, function] : {std::pair("dwfl_begin", "SymInitialize"),
                                       {"dwfl_report_elf", "SymInitialize"},
                                       {"elf_version", "SymSetOptions"}}) {
    MakeWithout(part);
    const Printed printed = Run("templated", {"twice", "unavailable"});
    EXPECT_EQ(printed.Count(Text(function)), 1) << printed.All();
    EXPECT_EQ(printed.Count("warning "), 1);
    EXPECT_EQ(printed.Count("no stack"), 2);
    EXPECT_TRUE(printed.Has("unavailable 1"));
  }
}

TEST_F(Library, WithoutSeveralOfThemEachIsToldInItsOrder) {
  MakeWithout("dwfl_begin; elf_version");
  const Printed printed = Run();
  EXPECT_EQ(printed.Count("warning "), 2) << printed.All();
  EXPECT_EQ(printed.Find(Text("SymSetOptions")) + 1, printed.Find(Text("SymInitialize")));
}

TEST_F(Library, WithoutSeveralThatTheWalkNeedsEachIsToldInItsOrder) {
  MakeWithout("dwfl_module_info; dwarf_cfi_addrframe; dwarf_frame_cfa");
  const Printed printed = Run();
  const int first = printed.Find(Text("StackWalk64"));
  EXPECT_EQ(printed.Count("warning "), 3) << printed.All();
  EXPECT_EQ(first + 1, printed.Find(Text("SymFunctionTableAccess64")));
  EXPECT_EQ(first + 2, printed.Find(Text("SymGetModuleBase64")));
}

TEST_F(Library, WithoutWhatTheWalkNeedsEachRaiseWarns) {
  const std::pair<const char*, const char*> cases[] = {{"dwarf_frame_cfa", "StackWalk64"},
                                                       {"dwarf_frame_register", "StackWalk64"},
                                                       {"dwarf_cfi_addrframe", "SymFunctionTableAccess64"},
                                                       {"dwfl_module_info", "SymGetModuleBase64"}};
  for (const auto& [part, function] : cases) {
    MakeWithout(part);
    const Printed printed = Run("templated", {"twice", "unavailable"});
    EXPECT_EQ(printed.Count(Text(function)), 2) << printed.All();
    EXPECT_EQ(printed.Count("warning "), 2);
    EXPECT_EQ(printed.Count("no stack"), 2);
    EXPECT_TRUE(printed.Has("unavailable 0"));
  }
}

TEST_F(Library, WithoutLinesOrModulesNoFrameIsLeft) {
  for (const char* const part :
       {"dwarf_getsrclines", "dwarf_linesrc", "dwfl_module_getdwarf", "dwfl_module_build_id"}) {
    MakeWithout(part);
    const Printed printed = Run();
    EXPECT_TRUE(printed.Has("0 frames")) << part << printed.All();
    EXPECT_EQ(printed.Count("warning "), 0);
  }
}

// Left to itself, the library would end the process.
TEST_F(Library, ThatRunsOutOfMemoryCostsTheStackAlone) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "what faults have cut short is given up on purpose, and told as a leak";
#endif
  MakeWithout("dwarf_getalt");
  const Printed printed = Run("templated", {"twice"}, "OUT_OF_MEMORY=1");
  EXPECT_EQ(printed.Count("0 frames"), 2) << printed.All();
}

TEST_F(Library, WithoutSymbolsAFunctionIsItsModuleAndTheOffset) {
  MakeWithout("dwarf_formstring");
  const Printed printed = Run();
  ASSERT_GE(printed.m_lines.size(), 3U) << printed.All();
  for (const auto& [number, mark, module] : {std::tuple(0U, AtHost("raise"), std::string("StackHost")),
                                             {1U, At("templated"), std::string("VictimO0")}}) {
    const std::string& line = printed.m_lines[number];
    ASSERT_TRUE(BeginsWith(line, mark + module + "+"));
    const std::string offset = line.substr((mark + module + "+").size());
    const auto end = offset.find_first_not_of("0123456789");
    EXPECT_GT(end, 0U) << line;
    EXPECT_EQ(offset.substr(end, 3 + module.size()), " [" + module + "]");
    EXPECT_GT(std::stoul(offset), 0U);
  }
}

TEST_F(Library, WithoutTypesOrScopesThereAreNoVariables) {
  for (const char* const part : {"dwarf_formref_die", "dwarf_getlocation_addr", "dwarf_formudata"}) {
    MakeWithout(part);
    const Printed printed = Run("descend");
    EXPECT_TRUE(printed.Has("victim::Counter::Descend [VictimO0]")) << part << printed.All();
    EXPECT_FALSE(printed.Has(" depth=")) << part << printed.All();
  }
}

}  // namespace
}  // namespace StackTests
