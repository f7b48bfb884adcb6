// What a host doesn't see of call stacks: the search path, what a walk leaves of a thread, and readers that come to
// grief.

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/XMLWriter.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "ErrorHandling/AlertXml.h"
#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "Platform/CallStacks.h"
#include "Platform/Faults.h"
#include "Platform/Libraries.h"
#include "Platform/Storage.h"
#include "Support/Allocations.h"
#include "Support/ChildProcess.h"
#include "Support/LeakDetector.h"
#if __has_include(<elfutils/libdw.h>)
#include "Platform/Linux/FrameView.h"
#include "Platform/Linux/SymbolizedModule.h"
#endif

namespace {

namespace Platform = Oxa::Core::Platform;
using MSWindows::ComposeSymbolPath;
using MSWindows::DebugHelp;

class SymbolPath : public testing::Test {
 protected:
  void SetUp() override {
    Oxa::Core::System::Instance()->SetProcessPath("/product/");
    for (const char* const name : {"_NT_SYMBOL_PATH", "_NT_ALTERNATE_SYMBOL_PATH", "SYSTEMROOT"})
      ::unsetenv(name);
  }

  static constexpr char sOWN[] = "/product/Symbols;/product/;/product/Packages;.";
};

TEST_F(SymbolPath, IsThatOfTheProcessAlone) { EXPECT_EQ(sOWN, ComposeSymbolPath()); }

TEST_F(SymbolPath, HasEachVariableThatIsSet) {
  ::setenv("_NT_SYMBOL_PATH", "/one;/more", 1);
  EXPECT_EQ(std::string(sOWN) + ";/one;/more", ComposeSymbolPath());
  ::setenv("_NT_ALTERNATE_SYMBOL_PATH", "/two", 1);
  EXPECT_EQ(std::string(sOWN) + ";/one;/more;/two", ComposeSymbolPath());
  ::setenv("SYSTEMROOT", "/system", 1);
  EXPECT_EQ(std::string(sOWN) + ";/one;/more;/two;/system;/system/system32", ComposeSymbolPath());
  ::unsetenv("_NT_SYMBOL_PATH");
  ::setenv("_NT_ALTERNATE_SYMBOL_PATH", "", 1);
  EXPECT_EQ(std::string(sOWN) + ";;/system;/system/system32", ComposeSymbolPath());
}

TEST_F(SymbolPath, LeavesOutWhatIsTooLongForItsBuffer) {
  const std::string most(259, 'x');
  ::setenv("_NT_SYMBOL_PATH", most.c_str(), 1);
  ::setenv("SYSTEMROOT", (most + "x").c_str(), 1);
  EXPECT_EQ(sOWN + (";" + most), ComposeSymbolPath());
}

void Translator(unsigned int /*code*/, _EXCEPTION_POINTERS* /*pointers*/) {}

std::string Content(const char* file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Names(const std::string& text, const std::string& quote) {
  const std::regex name(quote + "([A-Za-z0-9_]+)" + quote);
  std::vector<std::string> names;
  for (std::sregex_iterator found(text.begin(), text.end(), name); found != std::sregex_iterator(); ++found)
    names.push_back((*found)[1]);
  return names;
}

using Table = std::vector<std::vector<std::string>>;  // of each function its name, then what it rests on

Table TableOfPage() {
  Table table;
  std::istringstream page(Content(PAGE));
  const std::regex row("\\| (`[A-Za-z0-9]+`) \\|([^|]*)\\|.*");
  std::smatch found;
  for (std::string line; std::getline(page, line);)
    if (std::regex_match(line, found, row)) table.push_back(Names(found[1].str() + found[2].str(), "`"));
  return table;
}

Table TableOfSource() {
  Table table;
  const std::string source = Content(FACILITIES);
  const std::regex row("\\{(\"[A-Za-z0-9]+\",\\s*\\{[^}]*\\})\\}");
  for (std::sregex_iterator found(source.begin(), source.end(), row); found != std::sregex_iterator();
       ++found)
    table.push_back(Names((*found)[1].str(), "\""));
  return table;
}

TEST(CallStackPage, ShowsTheTableOfFunctionsAsItIs) {
  const Table table = TableOfPage();
  EXPECT_EQ(16U, table.size());
  EXPECT_EQ(TableOfSource(), table);
}

pid_t s_iChild = 0;

// In the middle of a walk, since that takes memory; the child tells whether what it raises has a call stack.
void ForkWithinAWalk() {
  using Platform::EThreadFlag;
  if (s_iChild != 0 || !Platform::HasThreadFlag(EThreadFlag::eREADS_STACK)) return;
  s_iChild = -1;
  s_iChild = ::fork();
  if (s_iChild != 0) return;
  TestSupport::ThreadAllocations().m_pOnUse = nullptr;
  Platform::SetThreadFlag(EThreadFlag::eREADS_STACK, false);
  try {
    OXA_RAISE_ERROR("Test", Oxa::Core::LogicError("in the child"));
  } catch (Oxa::Core::Error& error) {
    ::_exit(error.GetCallStack() ? 1 : 0);
  }
  ::_exit(2);
}

// What the walk was changing is half done there.
TEST(CallStackWalk, LeavesAChildThatIsForkedOffMeanwhileWithoutStacks) {
  const boost::shared_ptr<DebugHelp> help = DebugHelp::Instance();
  if (!help) GTEST_SKIP() << "the library for symbols isn't installed";
  TestSupport::ThreadAllocations().m_pOnUse = &ForkWithinAWalk;
  const auto frames = help->CreateCallStack(100);
  TestSupport::ThreadAllocations().m_pOnUse = nullptr;
  EXPECT_TRUE(frames);
  ASSERT_LT(0, s_iChild) << "there was no child";
  EXPECT_EQ(0, TestSupport::AwaitChild(s_iChild, std::chrono::seconds(60)));
  EXPECT_TRUE(help->CreateCallStack(100)) << "the parent goes on as before";
}

TEST(CallStackWalk, LeavesTheThreadAsItWas) {
  const boost::shared_ptr<DebugHelp> help = DebugHelp::Instance();
  if (!help) GTEST_SKIP() << "the library for symbols isn't installed";
  for (const Platform::FaultTranslator translator : {&Translator, Platform::FaultTranslator()}) {
    const Platform::FaultTranslator before = Platform::SetFaultTranslator(translator);
    for (const int frames : {-1, 0, 5, 100}) {
      EXPECT_TRUE(help->CreateCallStack(frames));
      EXPECT_EQ(translator, Platform::CurrentFaultTranslator()) << frames;
      EXPECT_FALSE(Platform::HasThreadFlag(Platform::EThreadFlag::eREADS_STACK));
    }
    Platform::SetFaultTranslator(before);
  }
}

/// A reader, and a module that comes and goes.
class Reader : public testing::Test {
 public:
  // The modules of the frames from here on.
  std::vector<std::string> Walk() {
    std::vector<std::string> modules;
    const auto take = [](const Platform::StackFrame& frame, void* taken) {
      static_cast<std::vector<std::string>*>(taken)->push_back(frame.m_pModule != nullptr ? frame.m_pModule
                                                                                          : "");
      return true;
    };
    EXPECT_TRUE(Platform::WalkStack(*m_pReader, nullptr, take, &modules));
    return modules;
  }

 protected:
  void SetUp() override {
    m_library = Platform::OpenLibrary(Platform::SymbolLibraryName());
    if (m_library == nullptr) GTEST_SKIP() << "the library for symbols isn't installed";
    m_pReader =
        Platform::OpenSymbolReader(m_library, ".", [](const char* name) { return std::string(name); });
    ASSERT_NE(nullptr, m_pReader);
  }
  void TearDown() override {
    Platform::CloseSymbolReader(m_pReader);
    if (m_library != nullptr) Platform::CloseLibrary(m_library);
  }

  // The same without keeping anything.
  bool WalkShortOfMemory(unsigned long failing) {
    const TestSupport::FailAllocation fail(failing);
    Platform::WalkStack(
        *m_pReader, nullptr, [](const Platform::StackFrame&, void*) { return true; }, nullptr);
    return fail.Happened();
  }

  HINSTANCE m_library = nullptr;
  Platform::SymbolReader* m_pReader = nullptr;
};

using Run = void (*)(const char*, int, void (*)());

Run FunctionOf(HINSTANCE module) {
  return reinterpret_cast<Run>(reinterpret_cast<std::uintptr_t>(Platform::FindFunction(module, "RunVictim")));
}

using Stack = std::vector<Oxa::Core::CodeContext>;

// Whether a frame stands in both, told once for both, with variables that differ.
bool ShareAFrameWithOtherVariables(const Stack& one, const Stack& other) {
  return std::any_of(one.begin(), one.end(), [&](const Oxa::Core::CodeContext& frame) {
    return std::any_of(other.begin(), other.end(), [&](const Oxa::Core::CodeContext& again) {
      return &frame.GetContextInfo() == &again.GetContextInfo() &&
             frame.GetVariables() != again.GetVariables();
    });
  });
}

std::string ByWriter(Oxa::Core::AlertInfo& alert) {
  std::ostringstream text;
  Oxa::Core::XMLWriter writer;
  alert.ToXML(writer, text, "");
  return text.str();
}

TEST(CallStackXml, ShowsTheVariablesOfEachStackThoughTheirFramesAreTheSame) {
  static std::vector<boost::shared_ptr<Stack>> s_stacks;
  if (!DebugHelp::Instance()) GTEST_SKIP() << "the library for symbols isn't installed";
  auto* const victim = Platform::OpenLibrary(VICTIM);
  ASSERT_NE(nullptr, victim);
  for (const int number : {11, 12})
    FunctionOf(victim)("templated", number,
                       [] { s_stacks.push_back(DebugHelp::Instance()->CreateCallStack(100)); });
  Platform::CloseLibrary(victim);
  ASSERT_TRUE(ShareAFrameWithOtherVariables(*s_stacks[0], *s_stacks[1]));
  for (const auto& stack : s_stacks) {
    Oxa::Core::AlertInfo alert({}, *stack, {});
    EXPECT_EQ(ByWriter(alert), Oxa::Core::AlertXml::AsText(alert, ""));
  }
}

#if __has_include(<elfutils/libdw.h>)
// Values on entry are found there.
TEST_F(Reader, ShowsFramesWithTheirCallers) {
  auto* const victim = Platform::OpenLibrary(VICTIM);
  ASSERT_NE(nullptr, victim);
  static Platform::SymbolReader* s_pReader;
  static int s_iCallers;
  s_pReader = m_pReader;
  s_iCallers = 0;
  const auto count = [](const Platform::StackFrame& frame, void*) {
    if (frame.m_pModule == nullptr || std::string(frame.m_pModule) != "VictimO0") return true;
    const Platform::FrameView* const caller = frame.m_pView != nullptr ? frame.m_pView->m_pCaller : nullptr;
    if (caller != nullptr && caller->m_cfa > frame.m_pView->m_cfa) ++s_iCallers;
    return true;
  };
  static Platform::FrameSink s_count;
  s_count = count;
  FunctionOf(victim)("descend", 3, [] { Platform::WalkStack(*s_pReader, nullptr, s_count, nullptr); });
  Platform::CloseLibrary(victim);
  EXPECT_LE(4, s_iCallers) << "each of the depths";
}
#endif

TEST_F(Reader, ReadsModulesAgainAfterAShortageOfMemory) {
  ASSERT_GE(Walk().size(), 3U);
  bool happened = true;
  for (unsigned long failing = 1; happened; ++failing) {
    auto* const victim = Platform::OpenLibrary(VICTIM);
    ASSERT_NE(nullptr, victim);
    happened = WalkShortOfMemory(failing);
    static Reader* s_pReader;
    static std::vector<std::string> s_modules;
    s_pReader = this;
    FunctionOf(victim)("templated", 0, [] { s_modules = s_pReader->Walk(); });
    Platform::CloseLibrary(victim);
    ASSERT_EQ(2, std::count(s_modules.begin(), s_modules.end(), "VictimO0")) << failing;
  }
}

class FaultedReader : public Reader {};

// Where nothing may be thrown any more.
TEST_F(FaultedReader, BeginsAnewThoughMemoryIsShort) {
  TestSupport::ForgiveLeaks();
  const std::size_t frames = Walk().size();
  EXPECT_FALSE(Platform::WalkStack(
      *m_pReader, nullptr,
      [](const Platform::StackFrame&, void* null) {
        TestSupport::ThreadAllocations().m_ulFailing = TestSupport::ThreadAllocations().m_ulCount + 1;
        *static_cast<volatile int*>(null) = 1;
        return true;
      },
      nullptr));
  TestSupport::ThreadAllocations().m_ulFailing = 0;
  EXPECT_EQ(frames, Walk().size());
}

// What had been read before a fault is lost: there must be an end of that.
TEST_F(FaultedReader, IsGivenUpBehindEightFaults) {
  TestSupport::ForgiveLeaks();
  static int s_iWalks;
  s_iWalks = 0;
  for (int walk = 0; walk < 100; ++walk)
    EXPECT_FALSE(Platform::WalkStack(
        *m_pReader, nullptr,
        [](const Platform::StackFrame&, void* null) {
          ++s_iWalks;
          *static_cast<volatile int*>(null) = 1;
          return true;
        },
        nullptr));
  EXPECT_EQ(8, s_iWalks);
}

struct VictimsFrame {
  Platform::SymbolReader* m_pReader;
  int m_iFaults;
  int m_iLines;  // of the module's frames
  int m_iFrames;
};

// Each of the module's variables is a fault.
bool FaultInVariables(const Platform::StackFrame& frame, void* argument) {
  VictimsFrame& victim = *static_cast<VictimsFrame*>(argument);
  if (frame.m_pModule == nullptr || std::string(frame.m_pModule) != "VictimO0") return true;
  ++victim.m_iFrames;
  if (frame.m_pFile != nullptr) ++victim.m_iLines;
  const auto fault = [](void* null, const Platform::VariableFacts&) {
    *static_cast<volatile int*>(null) = 1;
  };
  Platform::ReadFrameVariables(*victim.m_pReader, frame, Platform::VariableSink{fault, nullptr});
  return true;
}

TEST_F(FaultedReader, NeverAsksTheModuleForDebugDataAgain) {
  TestSupport::ForgiveLeaks();
  auto* const library = Platform::OpenLibrary(VICTIM);
  ASSERT_NE(nullptr, library);
  static VictimsFrame s_victim;
  s_victim = {m_pReader, 0, 0, 0};
  for (int walk = 0; walk < 100; ++walk)
    FunctionOf(library)("templated", 0, [] {
      if (!Platform::WalkStack(*s_victim.m_pReader, nullptr, &FaultInVariables, &s_victim))
        ++s_victim.m_iFaults;
    });
  EXPECT_EQ(1, s_victim.m_iFaults);
  EXPECT_EQ(1, s_victim.m_iLines);
  EXPECT_EQ(1 + 99 * 2, s_victim.m_iFrames);
  Platform::CloseLibrary(library);
}

#if __has_include(<elfutils/libdw.h>)
// A fault there would leave the loader locked.
TEST(LoadedModule, WhoseNotesAreGoneHasNoId) {
  ElfW(Phdr) parts[2] = {};
  parts[0].p_type = PT_NOTE;
  parts[0].p_vaddr = 16;
  parts[0].p_filesz = std::size_t{1} << 40;
  parts[1].p_type = PT_LOAD;
  parts[1].p_memsz = 4096;
  dl_phdr_info info = {};
  info.dlpi_name = "gone.so";
  info.dlpi_phdr = parts;
  info.dlpi_phnum = 2;
  const Platform::LoadedModule module = Platform::Describe(info);
  EXPECT_TRUE(module.m_id.empty());
  EXPECT_EQ(4096U, module.m_uEnd);
}
#endif

}  // namespace
