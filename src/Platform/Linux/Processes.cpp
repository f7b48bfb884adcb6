#include "Platform/Processes.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/capability.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <unordered_set>

#include "Platform/Faults.h"
#include "Platform/Linux/Mappings.h"
#include "Platform/Linux/OpenFile.h"
#include "Platform/Linux/ProcFile.h"
#include "Platform/Linux/WithoutThrowing.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sSELF[] = "/self";
constexpr char sPROGRAM[] = "exe";
constexpr char sMAPPINGS[] = "maps";
constexpr char sDIGITS[] = "0123456789";

// 0 for a name that is no process.
unsigned int IdOf(const char* name) {
  if (*name == 0 || name[strspn(name, sDIGITS)] != 0) return 0;
  const unsigned long id = strtoul(name, nullptr, 10);
  return id <= INT_MAX ? static_cast<unsigned int>(id) : 0;
}

int ReadIds(std::vector<unsigned int>& ids) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(ProcFolder()), &closedir);
  if (!folder) return errno;
  while (true) {
    errno = 0;
    const dirent* const entry = readdir(folder.get());
    if (entry == nullptr) return errno;
    if (const unsigned int id = IdOf(entry->d_name)) ids.push_back(id);
  }
}

// All files that code is mapped from but `program`, in the order of their addresses.
std::vector<std::string> ModulesIn(const std::string& text, const std::string& program) {
  std::vector<std::string> modules;
  std::unordered_set<std::string> known{program, std::string()};
  Mapping mapping;
  for (Mappings mappings(text); mappings.Next(mapping);) {
    if (!mapping.m_bExecutable) continue;
    const std::string file = FileOf(mapping);
    if (known.insert(file).second) modules.push_back(file);
  }
  return modules;
}

}  // namespace

int FindProcessList() noexcept {
  const HoldCancellation hold;
  return WithoutThrowing([] {
    struct stat status;
    return stat((std::string(ProcFolder()) + sSELF).c_str(), &status) == 0 ? 0 : errno;
  });
}

void AllowLookingIntoProcesses() noexcept {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct rights[_LINUX_CAPABILITY_U32S_3] = {};
  if (syscall(SYS_capget, &header, rights) != 0) return;
  __user_cap_data_struct& group = rights[CAP_TO_INDEX(CAP_SYS_PTRACE)];
  const unsigned int right = CAP_TO_MASK(CAP_SYS_PTRACE);
  if ((group.permitted & right) == 0 || (group.effective & right) != 0) return;
  group.effective |= right;
  syscall(SYS_capset, &header, rights);
}

int ListProcesses(std::size_t most, std::vector<unsigned int>& ids) noexcept {
  const HoldCancellation hold;
  return WithoutThrowing([&] {
    std::vector<unsigned int> found;
    const int code = ReadIds(found);
    if (code != 0) return code;
    std::sort(found.begin(), found.end());
    found.resize(std::min(most, found.size()));
    ids.swap(found);
    return 0;
  });
}

int LookIntoProcess(unsigned int id, std::string& program, std::vector<std::string>& modules) noexcept {
  const HoldCancellation hold;
  return WithoutThrowing([&] {
    // Open all the time, so that everything is about one process even if the id goes to another one meanwhile.
    const OpenFile process(open((std::string(ProcFolder()) + '/' + std::to_string(id)).c_str(),
                                O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!process.IsOpen()) return errno;
    std::string path;
    if (const int code = ReadLink(process.Get(), sPROGRAM, path)) return code;
    DropDeletedMark(path);
    std::string text;
    ReadUnsizedFile(process.Get(), sMAPPINGS, text);
    std::vector<std::string> found = ModulesIn(text, path);
    program.swap(path);
    modules.swap(found);
    return 0;
  });
}

}  // namespace Oxa::Core::Platform
