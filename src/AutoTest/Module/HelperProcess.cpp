#include "AutoTest/Module/HelperProcess.h"

#include <Infrastructure/OxaCore/AutoTest.h>

#include "AutoTest/Module/Patience.h"
#include "ErrorHandling/SystemErrorMessage.h"
#include "Platform/Files.h"
#include "Platform/Libraries.h"
#include "Platform/Machine.h"

namespace Oxa::Core {

namespace {

constexpr char sPROGRAM[] = "/UnitTestProcess.exe";
constexpr char sBELOW_THE_LIBRARY[] = "/OxaCore";
constexpr char sCANT_START[] = "UnitTestProcess.exe can't be started: ";
constexpr char sNOT_FOUND[] = "UnitTestProcess.exe was looked for, and not found, in:";
constexpr char sDOESNT_END[] = "UnitTestProcess.exe doesn't end, or nobody can tell how it did: ";
constexpr int iNO_STATUS = -1000;

std::string TextOf(int code) { return SystemErrorMessage(static_cast<unsigned long>(code)); }

std::string FolderOf(const std::string& file) { return file.substr(0, file.rfind('/')); }

std::vector<std::string> Folders() {
  std::vector<std::string> folders;
  std::string file;
  if (Platform::ExecutablePath(file) == 0) folders.push_back(FolderOf(file));
  if (Platform::OwnPath(file) == 0) {
    folders.push_back(FolderOf(file));
    folders.push_back(FolderOf(file) + sBELOW_THE_LIBRARY);
  }
  std::vector<std::string> programs;
  Platform::ProgramFolders(programs);
  folders.insert(folders.end(), programs.begin(), programs.end());
  return folders;
}

bool IsFile(const std::string& name) {
  Platform::FileStatus status;
  return Platform::Status(name.c_str(), status) == 0 && status.m_bRegular;
}

// Its path; empty, with a failure raised, if there is none.
std::string FindProgram() {
  std::string lookedFor = sNOT_FOUND;
  for (const std::string& folder : Folders()) {
    if (IsFile(folder + sPROGRAM)) return folder + sPROGRAM;
    lookedFor += '\n' + folder;
  }
  OXA_TEST_ASSERT_MSG(false, lookedFor);
  return std::string();
}

}  // namespace

HelperProcess::HelperProcess(const std::vector<std::string>& arguments) {
  std::vector<std::string> command(1, FindProgram());
  command.insert(command.end(), arguments.begin(), arguments.end());
  const int code = m_process.Start(command);
  OXA_TEST_ASSERT_MSG(code == 0, sCANT_START + TextOf(code) + " (" + command.front() + ")");
}

int HelperProcess::Await() {
  int status = iNO_STATUS;
  const int code = m_process.Wait(static_cast<long>(Patience().GetElapsed(Elapse::MilliSeconds)), status);
  OXA_TEST_ASSERT_MSG(code == 0, sDOESNT_END + TextOf(code));
  return status;
}

}  // namespace Oxa::Core
