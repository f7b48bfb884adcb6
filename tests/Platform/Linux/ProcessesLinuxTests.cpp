#include <Infrastructure/OxaCore/SystemProcesses.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Libraries.h"
#include "Platform/Linux/Mappings.h"
#include "Platform/Linux/ProcFile.h"
#include "Platform/Machine.h"
#include "Platform/Processes.h"
#include "Support/ProcFolder.h"

namespace Platform = Oxa::Core::Platform;
using testing::ElementsAre;
using TestSupport::FakeProc;

namespace {

std::vector<unsigned int> Ids(std::size_t most) {
  std::vector<unsigned int> ids;
  EXPECT_EQ(0, Platform::ListProcesses(most, ids));
  return ids;
}

struct Process {
  int m_iCode;
  std::string m_sProgram;
  std::vector<std::string> m_modules;
};

Process Look(unsigned int id) {
  Process process;
  process.m_iCode = Platform::LookIntoProcess(id, process.m_sProgram, process.m_modules);
  return process;
}

struct Rights {
  __user_cap_header_struct m_header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct m_sets[_LINUX_CAPABILITY_U32S_3] = {};

  bool Read() { return syscall(SYS_capget, &m_header, m_sets) == 0; }
  bool Write() { return syscall(SYS_capset, &m_header, m_sets) == 0; }
  __u32& Effective() { return m_sets[CAP_TO_INDEX(CAP_SYS_PTRACE)].effective; }
  __u32& Permitted() { return m_sets[CAP_TO_INDEX(CAP_SYS_PTRACE)].permitted; }
};

// In a process of its own: 0 if the right that was put aside was taken up again, 2 if this user has no such right.
template <class TakeUp>
int TakeUpRight(bool permitted, const TakeUp& takeUp) {
  const __u32 right = CAP_TO_MASK(CAP_SYS_PTRACE);
  Rights rights;
  if (!rights.Read() || (rights.Permitted() & right) == 0) return 2;
  rights.Effective() &= ~right;
  if (!permitted) rights.Permitted() &= ~right;
  if (!rights.Write()) return 3;
  takeUp();
  return rights.Read() && (rights.Effective() & right) != 0 ? 0 : 1;
}

template <class TakeUp>
int TakeUpInAChild(bool permitted, const TakeUp& takeUp) {
  const pid_t child = fork();
  if (child == 0) _exit(TakeUpRight(permitted, takeUp));
  int status = -1;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<Platform::Mapping> All(const std::string& text) {
  std::vector<Platform::Mapping> all;
  Platform::Mapping mapping;
  for (Platform::Mappings mappings(text); mappings.Next(mapping);) all.push_back(mapping);
  return all;
}

std::string FileOfLine(const std::string& name) {
  const auto all = All("1000-2000 r-xp 00000000 fe:01 12                         " + name + "\n");
  return all.size() == 1 ? Platform::FileOf(all[0]) : "no mapping";
}

}  // namespace

TEST(ProcessesLinux, WithoutProcThereIsNoList) {
  Platform::SetProcFolder("/no/such/folder");
  EXPECT_EQ(ENOENT, Platform::FindProcessList());
  std::vector<unsigned int> ids{7};
  EXPECT_EQ(ENOENT, Platform::ListProcesses(10, ids));
  EXPECT_THAT(ids, ElementsAre(7u));
  EXPECT_EQ(ENOENT, Look(1).m_iCode);
  Platform::SetProcFolder(nullptr);
  EXPECT_EQ(0, Platform::FindProcessList());
  EXPECT_STREQ("/proc", Platform::ProcFolder());
}

TEST(ProcessesLinux, AnEmptyFolderIsNoProc) {
  const FakeProc proc;
  EXPECT_EQ(ENOENT, Platform::FindProcessList());
  proc.AddSelf();
  EXPECT_EQ(0, Platform::FindProcessList());
  EXPECT_TRUE(Ids(10).empty());
}

TEST(ProcessesLinux, OnlyNumbersAreProcessesAndTheLowestComeFirst) {
  const FakeProc proc;
  for (const char* name :
       {"self", "12x", "x12", "100", "9", "2147483648", "2147483647", "0", "sys", "99999999999999"})
    std::filesystem::create_directory(proc.Folder().File(name));
  EXPECT_THAT(Ids(10), ElementsAre(9u, 100u, 2147483647u));
  EXPECT_THAT(Ids(2), ElementsAre(9u, 100u));
}

TEST(ProcessesLinux, ModulesAreTheFilesThatCodeIsMappedFrom) {
  const FakeProc proc;
  proc.AddProcess("5", "/opt/probe",
                  "5000-6000 r--p 00000000 fe:01 11   /opt/probe\n"
                  "6000-7000 r-xp 00001000 fe:01 11   /opt/probe\n"
                  "7000-8000 r--p 00000000 fe:01 12   /lib/data.so\n"
                  "8000-9000 r-xp 00000000 fe:01 13   /lib/b.so\n"
                  "9000-a000 r-xp 00001000 fe:01 14   /lib/a.so\n"
                  "a000-b000 rwxp 00002000 fe:01 13   /lib/b.so\n"
                  "b000-c000 r-xp 00000000 00:00 0 \n"
                  "c000-d000 r-xp 00000000 00:00 0    [vdso]\n"
                  "d000-e000 r-xs 00000000 00:01 1025 /memfd:code (deleted)\n"
                  "e000-f000 rwxs 00000000 00:05 4    /dev/zero (deleted)\n"
                  "f000-10000 rwxs 00000000 00:01 3   /SYSV00000000 (deleted)\n"
                  "10000-11000 r-xp 00000000 fe:01 15 /lib/replaced.so (deleted)\n");
  const Process process = Look(5);
  EXPECT_EQ(0, process.m_iCode);
  EXPECT_EQ("/opt/probe", process.m_sProgram);
  EXPECT_THAT(process.m_modules, ElementsAre("/lib/b.so", "/lib/a.so", "/lib/replaced.so"));
}

TEST(ProcessesLinux, AReplacedProgramKeepsItsName) {
  const FakeProc proc;
  proc.AddProcess("5", "/opt/replaced (deleted)",
                  "6000-7000 r-xp 00001000 fe:01 11   /opt/replaced (deleted)\n");
  EXPECT_EQ("/opt/replaced", Look(5).m_sProgram);
  EXPECT_TRUE(Look(5).m_modules.empty());
  const std::string real = proc.Folder().Write("real (deleted)", "");
  proc.AddProcess("6", real, "");
  EXPECT_EQ(real, Look(6).m_sProgram);
}

TEST(ProcessesLinux, AProcessWithoutAProgramIsNotShownAndOneWithoutMappingsIs) {
  const FakeProc proc;
  std::filesystem::create_directory(proc.Folder().File("5"));
  EXPECT_EQ(ENOENT, Look(5).m_iCode);
  std::filesystem::create_symlink("/opt/probe", proc.Folder().File("5/exe"));
  EXPECT_EQ(0, Look(5).m_iCode);
  EXPECT_EQ("/opt/probe", Look(5).m_sProgram);
  EXPECT_TRUE(Look(5).m_modules.empty());
}

TEST(ProcessesLinux, ARightThatIsPermittedIsTakenUp) {
  const int result = TakeUpInAChild(true, &Platform::AllowLookingIntoProcesses);
  if (result == 2) GTEST_SKIP() << "this user may not look into others";
  EXPECT_EQ(0, result);
  EXPECT_EQ(1, TakeUpInAChild(false, &Platform::AllowLookingIntoProcesses))
      << "one that isn't permitted is not";
  EXPECT_EQ(0, TakeUpInAChild(true, [] { Oxa::Core::SystemProcesses(); }));
}

TEST(MappingsLinux, LinesAreReadAndOthersPassedOver) {
  const auto all =
      All("7f0c4a200000-7f0c4a228000 r-xp 00028000 fe:01 1312                       /usr/lib/lib c.so\n"
          "\nnonsense\n1000 r-xp 0 0 0 /a\n1000-2000\n1000-2000 r\n1000-2000 r-x\n1000-20g0 r-xp 0 0 0 /b\n"
          "ffffffffff600000-ffffffffff601000 --xp 00000000 00:00 0                  [vsyscall]\n"
          "1000-2000 rw-p 00000000 00:00 0\n"
          "2000-3000 r--p 00000000 fe:01 12 /b");
  ASSERT_EQ(4u, all.size());
  EXPECT_EQ(0x7f0c4a200000u, all[0].m_uStart);
  EXPECT_EQ(0x7f0c4a228000u, all[0].m_uEnd);
  EXPECT_TRUE(all[0].m_bExecutable);
  EXPECT_EQ("/usr/lib/lib c.so", all[0].m_sName);
  EXPECT_EQ("[vsyscall]", all[1].m_sName);
  EXPECT_TRUE(all[1].m_bExecutable);
  EXPECT_FALSE(all[2].m_bExecutable);
  EXPECT_EQ("", all[2].m_sName);
  EXPECT_EQ("/b", all[3].m_sName);
}

TEST(MappingsLinux, FilesAreToldFromOtherNames) {
  EXPECT_EQ("/lib/a.so", FileOfLine("/lib/a.so"));
  EXPECT_EQ("/lib/two\nlines.so", FileOfLine("/lib/two\\012lines.so"));
  EXPECT_EQ("/lib/back\\slash.so", FileOfLine("/lib/back\\slash.so"));
  EXPECT_EQ("/lib/gone.so", FileOfLine("/lib/gone.so (deleted)"));
  for (const char* name :
       {"", "[heap]", "anon_inode:[perf]", "/memfd:x (deleted)", "/dev/shm/x", "/SYSV0000"})
    EXPECT_EQ("", FileOfLine(name)) << name;
}

TEST(MachineLinux, WithoutProcTheProgramIsNotToldAndTheRestIs) {
  Platform::SetProcFolder("/no/such/folder");
  std::string path = "untouched";
  EXPECT_EQ(ENOENT, Platform::ExecutablePath(path));
  EXPECT_EQ(ENOENT, Platform::LibraryPath(nullptr, path));
  EXPECT_EQ("untouched", path);
  EXPECT_EQ(0, Platform::HostName(path));
  EXPECT_EQ(0, Platform::OperatingSystemName(path));
  EXPECT_GE(Platform::NumberOfProcessors(), 1u);
  EXPECT_EQ(static_cast<unsigned long>(getpid()), Platform::ProcessId());
  Platform::SetProcFolder(nullptr);
}

TEST(LibrariesLinux, WithoutProcAPathIsToldAsFarAsTheLoaderKnowsIt) {
  HINSTANCE library = Platform::OpenLibrary("libc.so.6");
  ASSERT_NE(nullptr, library);
  std::string path;
  Platform::SetProcFolder("/no/such/folder");
  EXPECT_EQ(0, Platform::LibraryPath(library, path));
  EXPECT_EQ("libc.so.6", std::filesystem::path(path).filename());
  Platform::SetProcFolder(nullptr);
  Platform::CloseLibrary(library);
}
