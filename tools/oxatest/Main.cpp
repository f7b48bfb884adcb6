#include <cstdio>
#include <cstring>

namespace {

const char* const sUSAGE = "usage: oxatest MODULE...\n";
const char* const sVERSION = "oxatest " OXATEST_VERSION "\n";

const int iBAD_ARGUMENTS = 2;

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
    std::fputs(sVERSION, stdout);
    return 0;
  }
  std::fputs(sUSAGE, stderr);
  return iBAD_ARGUMENTS;
}
