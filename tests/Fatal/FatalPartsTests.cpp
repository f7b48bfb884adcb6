#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/System.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Core/LibraryState.h"
#include "ErrorHandling/FatalDump.h"
#include "ErrorHandling/FatalErrorPath.h"
#include "ErrorHandling/FatalErrorReadable.h"
#include "ErrorHandling/FatalErrorReport.h"
#include "Platform/Clock.h"
#include "Platform/Linux/FaultContext.h"
#include "Platform/Uncaught.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Oxa::Core;
using TestSupport::CurrentFolder;
using TestSupport::TemporaryFolder;

// From now on it is 14 January 2014, 08:28:11.
void SetClock() {
  ::setenv("TZ", "UTC", 1);
  const Platform::DateTime moment = {2014, 1, 14, 8, 28, 11, 0};
  long long ticks = 0;
  ASSERT_EQ(0, Platform::UtcToTicks(moment, ticks));
  Platform::SetClockOffset(0, 0);
  Platform::SetClockOffset(ticks - Platform::NowTicks(), 0);
}

// --- The folder. Its name is settled once in a process.

TEST(FatalFolder, IsNamedAfterTheMomentWithoutLeadingZeros) {
  const TemporaryFolder base;
  SetClock();
  AlertManager::Instance()->SetFatalErrorBasePath(base.File("new"));
  std::string path;
  EXPECT_TRUE(CreateFatalErrorPath(path));
  EXPECT_EQ(base.File("new/FatalError_2014114_82811/"), path);
  EXPECT_TRUE(PathName(path).IsDir());
}

TEST(FatalFolder, StaysTheSameToTheEnd) {
  const TemporaryFolder base;
  const TemporaryFolder other;
  SetClock();
  AlertManager::Instance()->SetFatalErrorBasePath(base.Path());
  std::string first;
  std::string second;
  EXPECT_TRUE(CreateFatalErrorPath(first));
  Platform::SetClockOffset(0, 0);
  AlertManager::Instance()->SetFatalErrorBasePath(other.Path());
  EXPECT_TRUE(CreateFatalErrorPath(second));
  EXPECT_EQ(first, second);
}

TEST(FatalFolder, FallbackHasTheSecondForm) {
  const TemporaryFolder process;
  SetClock();
  System::Instance()->SetProcessPath(process.File(""));
  AlertManager::Instance()->SetFatalErrorBasePath("Q:\\nowhere");
  std::string path;
  EXPECT_TRUE(CreateFatalErrorPath(path));
  EXPECT_EQ(process.File("FatalError_14-Jan-2014_8-28-11/"), path);
  Platform::SetClockOffset(0, 0);
  EXPECT_TRUE(CreateFatalErrorPath(path));
  EXPECT_EQ(process.File("FatalError_14-Jan-2014_8-28-11/"), path) << "the dump's, and the report's";
}

TEST(FatalFolder, FailsWhereNoneCanBeMade) {
  SetClock();
  System::Instance()->SetProcessPath("/proc/");
  AlertManager::Instance()->SetFatalErrorBasePath("/proc");
  std::string path;
  EXPECT_FALSE(CreateFatalErrorPath(path));
  EXPECT_EQ("/proc/FatalError_14-Jan-2014_8-28-11/", path);
}

[[noreturn]] void CreateWhileTheLibraryUnloads(const std::string& workingFolder) {
  const CurrentFolder current(workingFolder);
  SetClock();
  SetLibraryUnloading();
  std::string path;
  const bool made = CreateFatalErrorPath(path);
  std::fprintf(stderr, "made: %d %s", made, path.c_str());
  ::_exit(0);
}

TEST(FatalFolder, LiesInTheWorkingFolderWhileTheLibraryUnloads) {
  const TemporaryFolder folder;
  EXPECT_EXIT(CreateWhileTheLibraryUnloads(folder.Path()), testing::ExitedWithCode(0),
              "made: 1 ./FatalError_2014114_82811/");
  EXPECT_TRUE(folder.Has("FatalError_2014114_82811"));
}

TEST(FatalFolder, HasNoFallbackWhileTheLibraryUnloads) {
  const TemporaryFolder process;
  System::Instance()->SetProcessPath(process.File(""));
  EXPECT_EXIT(CreateWhileTheLibraryUnloads("/proc"), testing::ExitedWithCode(0),
              "made: 0 ./FatalError_2014114_82811/");
  EXPECT_TRUE(process.Names().empty());
}

TEST(FatalFolder, AbsurdlyLongPathFails) {
  System::Instance()->SetProcessPath("/proc/");
  std::string longest = "/tmp";
  for (int i = 0; i < 50; ++i) longest += '/' + std::string(100, 'a');
  SetFatalErrorBase(longest + '/');
  FatalErrorFolder folder;
  MakeFatalErrorFolder(folder);
  EXPECT_EQ(FatalErrorFolder::eNONE, folder.m_eOutcome);
}

// Folders are made as PathName makes them.
TEST(FatalFolder, MakesWhatPathNameMakes) {
  for (const char* name :
       {"a/", "a/b/c/", "./d/", "e//f/", "g\\h\\", "C:\\i\\", "C:/j/", "../k/", "file/l/"}) {
    const TemporaryFolder one;
    const TemporaryFolder two;
    one.Write("file", "");
    two.Write("file", "");
    for (const TemporaryFolder* folder : {&one, &two})
      std::filesystem::create_directories(folder->File("C:/x"));
    FatalErrorFolder folder;
    bool made = false;
    {
      const CurrentFolder current(one.File("C:/x"));
      made = MakeFoldersOf(name);
    }
    const CurrentFolder current(two.File("C:/x"));
    EXPECT_EQ(PathName(name).CreateDirectoryA(), made) << name;
    EXPECT_EQ(two.Names(), one.Names()) << name;
  }
}

TEST(FatalFolder, WorkingFolderIsAbsoluteAndEndsInASeparator) {
  const TemporaryFolder folder;
  FatalErrorName name;
  {
    const CurrentFolder current(folder.Path());
    WorkingFolder(name);
  }
  EXPECT_EQ(folder.File(""), name.Get());
}

// --- Texts

TEST(FatalText, IsCutWhereItsRoomEnds) {
  FixedText<8> text;
  text.Add("12345").Add("6789");
  EXPECT_STREQ("1234567", text.Get());
  EXPECT_EQ(7U, text.Size());
  text.Add("x").AddNumber(5);
  EXPECT_STREQ("1234567", text.Get());
  text.Clear();
  EXPECT_STREQ("", text.Get());
}

TEST(FatalText, Numbers) {
  FixedText<64> text;
  text.AddNumber(0)
      .Add(" ")
      .AddNumber(18446744073709551615ULL)
      .Add(" ")
      .AddHex(0)
      .Add(" ")
      .AddHex(0xC0000005U);
  EXPECT_STREQ("0 18446744073709551615 0x0 0xc0000005", text.Get());
}

TEST(FatalText, WhatXmlCanHoldStaysAsItIs) {
  const std::string text = "a <b> &\t\n\r \xC2\xB5 \xE2\x82\xAC \xF0\x9F\x98\x80 \xED\x9F\xBF \xEF\xBF\xBD";
  EXPECT_EQ(text, AsReadableXml(text));
  EXPECT_EQ("", AsReadableXml(""));
  for (const char* edge : {"\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEE\x80\x80", "\xF0\x90\x80\x80",
                           "\xF4\x8F\xBF\xBF"})
    EXPECT_EQ(edge, AsReadableXml(edge));
}

TEST(FatalText, OtherBytesBecomeTheCharactersOfTheirNumbers) {
  EXPECT_EQ("5 \xC2\xB5m", AsReadableXml("5 \xB5m"));
  EXPECT_EQ("\xC3\xA4", AsReadableXml("\xE4"));                          // cut off
  EXPECT_EQ("\xC3\x80\xC2\x80", AsReadableXml("\xC0\x80"));              // longer than need be
  EXPECT_EQ("\xC3\xA0\xC2\x80\xC2\x80", AsReadableXml("\xE0\x80\x80"));  // the same with three
  EXPECT_EQ("\xC3\xB5", AsReadableXml("\xF5"));
  EXPECT_EQ("\xC3\xA2\x28", AsReadableXml("\xE2\x28"));
}

TEST(FatalText, WhatNoDocumentMayHoldBecomesAQuestionMark) {
  EXPECT_EQ("a?b?", AsReadableXml(std::string("a\0b\x1F", 4)));
  EXPECT_EQ("?", AsReadableXml("\xED\xA0\x80"));      // half of a pair
  EXPECT_EQ("?", AsReadableXml("\xEF\xBF\xBE"));      // no character
  EXPECT_EQ("?", AsReadableXml("\xF4\x90\x80\x80"));  // behind the last
}

// --- The report

class Speechless : public LogicError {
 public:
  Speechless() : LogicError("said") {}
  std::string XMLElementName() override { throw LogicError("speechless"); }
};

TEST(FatalReport, FirstWordsReplaceNothing) {
  const TemporaryFolder folder;
  FatalErrorCause cause;
  cause.Add("first");
  WriteFirstWords(folder.File("").c_str(), nullptr, cause);
  const std::string words = folder.Read("ErrorInfo.xml");
  EXPECT_THAT(words, testing::HasSubstr("<Cause>first</Cause>"));
  FatalErrorCause other;
  other.Add("second");
  WriteFirstWords(folder.File("").c_str(), nullptr, other);
  EXPECT_EQ(words, folder.Read("ErrorInfo.xml"));
}

TEST(FatalReport, LongEntriesAreInTheFirstWordsWhole) {
  const TemporaryFolder folder;
  const std::string value(5000, 'v');
  const AlertData info = {{"Long", value}};
  WriteFirstWords(folder.File("").c_str(), &info, {});
  EXPECT_THAT(folder.Read("ErrorInfo.xml"), testing::HasSubstr("<Long>" + value + "</Long>"));
}

// A text part of which can't be read while this stands.
class Ruin {
 public:
  explicit Ruin(const std::string& text) {
    const auto place = reinterpret_cast<std::uintptr_t>(text.data());
    m_pPage = reinterpret_cast<void*>((place / m_uPage + 1) * m_uPage);
    ::mprotect(m_pPage, m_uPage, PROT_NONE);
  }
  Ruin(const Ruin&) = delete;
  Ruin& operator=(const Ruin&) = delete;
  ~Ruin() { ::mprotect(m_pPage, m_uPage, PROT_READ | PROT_WRITE); }

 private:
  const std::size_t m_uPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  void* m_pPage;
};

TEST(FatalReport, FirstWordsDoWithoutEntriesThatCannotBeRead) {
  const TemporaryFolder whole;
  const TemporaryFolder folder;
  FatalErrorCause cause;
  cause.Add("first");
  WriteFirstWords(whole.File("").c_str(), nullptr, cause);
  const AlertData info = {{"Serial", "18"}, {"Long", std::string(1U << 20U, 'v')}};
  {
    const Ruin ruin(info.at("Long"));
    WriteFirstWords(folder.File("").c_str(), &info, cause);
  }
  EXPECT_EQ(whole.Read("ErrorInfo.xml"), folder.Read("ErrorInfo.xml"));
  EXPECT_THAT(folder.Read("ErrorInfo.xml"), testing::HasSubstr("<Cause>first</Cause>"));
}

TEST(FatalReport, ReplacesLongerFirstWordsWhole) {
  const TemporaryFolder folder;
  const AlertData info = {{"Long", std::string(5000, 'v')}};
  WriteFirstWords(folder.File("").c_str(), &info, {});
  LogicError error("short");
  WriteFatalErrorReport(folder.File(""), {}, error);
  const std::string report = folder.Read("ErrorInfo.xml");
  EXPECT_THAT(report, testing::HasSubstr("<Message>short</Message>"));
  EXPECT_THAT(report, testing::Not(testing::HasSubstr("vvv")));
}

// For the rest of the process: every test case is one of its own.
void LimitFiles(std::size_t size) {
  const rlimit limit = {size, RLIM_INFINITY};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
}

TEST(FatalReport, LeavesTheFirstWordsWhereThereIsNoRoomForMore) {
  const TemporaryFolder folder;
  FatalErrorCause cause;
  cause.Add("first");
  WriteFirstWords(folder.File("").c_str(), nullptr, cause);
  const std::string words = folder.Read("ErrorInfo.xml");
  LogicError error(std::string(1000, 'm'));
  LimitFiles(1000);
  WriteFatalErrorReport(folder.File(""), {}, error);
  EXPECT_EQ(words, folder.Read("ErrorInfo.xml"));
}

TEST(FatalReport, IsCutWhereThereIsNoRoomAndWereNoFirstWords) {
  const TemporaryFolder folder;
  LogicError error(std::string(1000, 'm'));
  LimitFiles(1000);
  WriteFatalErrorReport(folder.File(""), {}, error);
  const std::string report = folder.Read("ErrorInfo.xml");
  EXPECT_EQ(1000U, report.size());
  EXPECT_THAT(report, testing::HasSubstr("<Circumstance>Fatal unhandled error</Circumstance>"));
}

TEST(FatalReport, HoldsWhatWasComposedBeforeAFailure) {
  const TemporaryFolder folder;
  Speechless error;
  EXPECT_THROW(WriteFatalErrorReport(folder.File(""), {{"Serial", "18"}}, error), LogicError);
  EXPECT_THAT(folder.Read("ErrorInfo.xml"), testing::HasSubstr("<Serial>18</Serial>"));
}

// --- The dump

// The folder is settled once in a process; here it is there before the dump is.
class FatalDumpFolder {
 public:
  FatalDumpFolder() {
    AlertManager::SetMaxFatalErrorReports(100);
    AlertManager::Instance()->SetFatalErrorBasePath(m_base.Path());
    CreateFatalErrorPath(m_path);
  }

  // The cause in the first words that a fault leaves.
  std::string CauseOf(unsigned code, bool write = false) {
    std::filesystem::remove(m_path + "ErrorInfo.xml");
    _EXCEPTION_RECORD record = {};
    record.m_uCode = code;
    record.m_uPlace = 0x1234;
    record.m_uTouched = 0x56789abcdef0;
    record.m_bWrite = write;
    CONTEXT context = {};
    FatalDump().Write({&record, &context});
    const std::string words = TestSupport::ReadFile(m_path + "ErrorInfo.xml");
    const auto from = words.find("<Cause>");
    return words.substr(from + 7, words.find("</Cause>") - from - 7);
  }

  const std::string& Path() const { return m_path; }

 private:
  TemporaryFolder m_base;
  std::string m_path;
};

TEST(FatalDump, FirstWordsTellTheCause) {
  FatalDumpFolder folder;
  EXPECT_EQ("Fault 0xc0000005 at 0x1234, read from 0x56789abcdef0", folder.CauseOf(0xC0000005));
  EXPECT_EQ("Fault 0xc0000005 at 0x1234, write to 0x56789abcdef0", folder.CauseOf(0xC0000005, true));
  EXPECT_EQ("Fault 0xc0000094 at 0x1234", folder.CauseOf(0xC0000094));
  EXPECT_EQ("Nothing caught what was raised at 0x1234", folder.CauseOf(0));
}

// Whatever becomes of the dump, they are there.
TEST(FatalDump, FirstWordsComeFirst) {
  FatalDumpFolder folder;
  const int watch = ::inotify_init1(IN_NONBLOCK);
  ASSERT_LE(0, ::inotify_add_watch(watch, folder.Path().c_str(), IN_CREATE));
  folder.CauseOf(0);
  alignas(inotify_event) char events[1024] = {};
  EXPECT_LT(0, ::read(watch, events, sizeof(events)));
  EXPECT_STREQ("ErrorInfo.xml", reinterpret_cast<const inotify_event*>(events)->name);
  ::close(watch);
}

// --- The place of what nobody caught

}  // namespace

extern "C" {
/// Calls `function` with marks in the registers that calls leave alone: 0x1003 in rbx, and so on by their numbers.
void CallWithMarks(void (*function)());
extern const char CallWithMarksAt[];  // behind the call
}

#if defined(__x86_64__)
#define OXA_MARK(name, place, mark) \
  "pushq %" name "\n.cfi_adjust_cfa_offset 8\n.cfi_offset " name ", " place "\nmovq $" mark ", %" name "\n"
#define OXA_UNMARK(name) "popq %" name "\n.cfi_adjust_cfa_offset -8\n.cfi_restore " name "\n"

asm(".text\n"
    ".type CallWithMarks, @function\n"
    "CallWithMarks:\n"
    ".cfi_startproc\n" OXA_MARK("rbx", "-16", "0x1003") OXA_MARK("rbp", "-24", "0x1006")
        OXA_MARK("r12", "-32", "0x100c") OXA_MARK("r13", "-40", "0x100d") OXA_MARK("r14", "-48", "0x100e")
            OXA_MARK("r15", "-56", "0x100f") "subq $8, %rsp\n"
                                             ".cfi_adjust_cfa_offset 8\n"
                                             "call *%rdi\n"
                                             ".globl CallWithMarksAt\n"
                                             "CallWithMarksAt:\n"
                                             "addq $8, %rsp\n"
                                             ".cfi_adjust_cfa_offset -8\n" OXA_UNMARK("r15") OXA_UNMARK("r14")
                                                 OXA_UNMARK("r13") OXA_UNMARK("r12") OXA_UNMARK("rbp")
                                                     OXA_UNMARK("rbx") "ret\n"
                                                                       ".cfi_endproc\n"
                                                                       ".size CallWithMarks, .-CallWithMarks\n");
#endif

namespace {

#if defined(__x86_64__)
CONTEXT s_found;

__attribute__((noinline)) void AskForThePlace() {
  static const void* const s_carriers[] = {reinterpret_cast<const void*>(&AskForThePlace)};
  Platform::WithUncaughtPlace(
      s_carriers, 1,
      [](_EXCEPTION_POINTERS& pointers, void* found) {
        *static_cast<CONTEXT*>(found) = *pointers.ContextRecord;
        EXPECT_EQ(pointers.ContextRecord->m_registers[CONTEXT::iPLACE], pointers.ExceptionRecord->m_uPlace);
        EXPECT_EQ(SIGABRT, Platform::SignalOf(pointers));
      },
      &s_found);
  asm volatile("" ::: "memory");  // no jump: this is to be a frame
}

TEST(Uncaught, ThePlaceHasTheRegistersOfItsFrame) {
  CallWithMarks(&AskForThePlace);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(CallWithMarksAt) - 1, s_found.m_registers[CONTEXT::iPLACE]);
  for (const unsigned number : {3U, 6U, 12U, 13U, 14U, 15U})
    EXPECT_EQ(0x1000 + number, s_found.m_registers[number]) << number;
  EXPECT_EQ(nullptr, s_found.m_pFull);
}
#endif

TEST(Uncaught, ARecordWithoutASignalIsThatOfAnAbort) {
  _EXCEPTION_RECORD record = {};
  const _EXCEPTION_POINTERS pointers = {&record, nullptr};
  EXPECT_EQ(SIGABRT, Platform::SignalOf(pointers));
  record.m_signal.si_signo = SIGFPE;
  EXPECT_EQ(SIGFPE, Platform::SignalOf(pointers));
}

TEST(Uncaught, FaultStandsUntilItIsCaught) {
  const auto fault = [] {
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
  };
  static bool s_bStood = false;
  static bool s_bStoodChanged = true;
  class Looker : public AlertListener {
   public:
    Looker() { AlertManager::Instance()->AddAlertListener(*this); }
    void ErrorRaised(Error& error) override {
      auto* const fault = dynamic_cast<MSWindows::SEHError*>(&error);
      if (fault == nullptr) return;
      const _EXCEPTION_POINTERS& pointers = fault->GetExceptionPointers();
      s_bStood = Platform::StillStands(pointers);
      ++pointers.ContextRecord->m_registers[0];
      s_bStoodChanged = Platform::StillStands(pointers);
      --pointers.ContextRecord->m_registers[0];
    }
  } looker;
  try {
    fault();
    FAIL() << "that was no fault";
  } catch (MSWindows::SEHError& error) {
    EXPECT_TRUE(s_bStood);
    EXPECT_FALSE(s_bStoodChanged) << "something else lies there by now";
    EXPECT_FALSE(Platform::StillStands(error.GetExceptionPointers()));
  }
}

TEST(Uncaught, ForeignPlacesDoNotStand) {
  unsigned char here[4096] = {};
  const _EXCEPTION_POINTERS near = {reinterpret_cast<_EXCEPTION_RECORD*>(here + 2048),
                                    reinterpret_cast<CONTEXT*>(here + 2048)};
  EXPECT_FALSE(Platform::StillStands(near));
  static unsigned char s_elsewhere[64];
  const _EXCEPTION_POINTERS far = {reinterpret_cast<_EXCEPTION_RECORD*>(s_elsewhere),
                                   reinterpret_cast<CONTEXT*>(s_elsewhere)};
  EXPECT_FALSE(Platform::StillStands(far));
  const _EXCEPTION_POINTERS none = {nullptr, nullptr};
  EXPECT_FALSE(Platform::StillStands(none));
  EXPECT_EQ(SIGABRT, Platform::SignalOf(none));
}

}  // namespace
