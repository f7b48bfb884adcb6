#include "Orphans.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace OxaTest {

namespace {

std::vector<pid_t> s_before;

// 0 if it is gone. Its name, which stands before, may hold anything.
pid_t ParentOf(const std::string& process) {
  std::string line;
  std::getline(std::ifstream("/proc/" + process + "/stat"), line, '\0');
  const std::string::size_type end = line.rfind(')');
  return end == std::string::npos || end + 4 > line.size() ? 0 : std::atoi(line.c_str() + end + 4);
}

std::vector<pid_t> Children() {
  std::vector<pid_t> children;
  std::error_code error;
  for (std::filesystem::directory_iterator at("/proc", error), end; !error && at != end;
       at.increment(error)) {
    const std::string name = at->path().filename().string();
    if (name.find_first_not_of("0123456789") == std::string::npos && ParentOf(name) == ::getpid())
      children.push_back(std::atoi(name.c_str()));
  }
  return children;
}

std::vector<pid_t> Orphans() {
  std::vector<pid_t> orphans = Children();
  const auto known = [](pid_t child) { return std::count(s_before.begin(), s_before.end(), child) > 0; };
  orphans.erase(std::remove_if(orphans.begin(), orphans.end(), known), orphans.end());
  return orphans;
}

}  // namespace

bool AdoptOrphans() {
  s_before = Children();
  return ::prctl(PR_SET_CHILD_SUBREAPER, 1) == 0;
}

// With each that ends its own children come here.
void EndOrphans() {
  for (std::vector<pid_t> orphans = Orphans(); !orphans.empty(); orphans = Orphans())
    for (const pid_t orphan : orphans) {
      ::kill(orphan, SIGKILL);
      while (::waitpid(orphan, nullptr, 0) < 0 && errno == EINTR) continue;
    }
}

}  // namespace OxaTest
