// A folder that stands in the place of /proc, for tests of the inside.
#ifndef OXACORE_TESTS_SUPPORT_PROCFOLDER_H
#define OXACORE_TESTS_SUPPORT_PROCFOLDER_H

#include <filesystem>
#include <string>

#include "Platform/Linux/ProcFile.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

/// With nothing in it: no process, and no sign that there could be any.
class FakeProc {
 public:
  FakeProc() { Oxa::Core::Platform::SetProcFolder(m_folder.Path().c_str()); }
  FakeProc(const FakeProc&) = delete;
  FakeProc& operator=(const FakeProc&) = delete;
  ~FakeProc() { Oxa::Core::Platform::SetProcFolder(nullptr); }

  const TemporaryFolder& Folder() const { return m_folder; }

  /// From now on it can be seen that processes are told.
  void AddSelf() const { std::filesystem::create_directory(m_folder.File("self")); }

  void AddProcess(const std::string& id, const std::string& program, const std::string& mappings) const {
    std::filesystem::create_directory(m_folder.File(id));
    std::filesystem::create_symlink(program, m_folder.File(id + "/exe"));
    m_folder.Write(id + "/maps", mappings);
  }

 private:
  TemporaryFolder m_folder;
};

}  // namespace TestSupport

#endif
