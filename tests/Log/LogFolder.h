// A folder of its own for the default log of a test, and what the tests read in it.
#ifndef OXACORE_TESTS_LOG_LOGFOLDER_H
#define OXACORE_TESTS_LOG_LOGFOLDER_H

#include <Infrastructure/OxaCore/System.h>

#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "Log/LogEntryText.h"
#include "Platform/NamedLockSupport.h"
#include "Support/ChildProcess.h"
#include "Support/TemporaryFolder.h"

namespace LogTests {

/// The default log of this process lies there as long as the object lives.
class LogFolder {
 public:
  LogFolder() {
    Oxa::Core::System::Instance()->GetProcessPath(m_sBefore);
    Oxa::Core::System::Instance()->SetProcessPath(Path());
  }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;
  ~LogFolder() {
    RemoveLocks();
    Oxa::Core::System::Instance()->SetProcessPath(m_sBefore);
    std::error_code ignored;
    std::filesystem::permissions(Path(), std::filesystem::perms::owner_all, ignored);
  }

  /// With a closing "/".
  std::string Path() const { return File(""); }
  std::string File(const std::string& name) const { return m_folder.File(name); }

  std::string Read(const std::string& name) const { return m_folder.Read(name); }
  void Put(const std::string& name, const std::string& text) const { m_folder.Write(name, text); }
  bool Has(const std::string& name) const { return m_folder.Has(name); }
  std::uintmax_t Size(const std::string& name) const { return std::filesystem::file_size(File(name)); }
  void Allow(const std::string& name, unsigned mode) const {
    std::filesystem::permissions(File(name), static_cast<std::filesystem::perms>(mode));
  }

  std::string Entries() const { return Read("DefaultLog.entries"); }
  std::string Archive() const { return Read("DefaultLog.archive"); }

  std::set<std::string> Names() const { return m_folder.Names(); }

  /// What xmllint has to say against the document with its entries; empty if nothing.
  std::string Faults() const {
    const TestSupport::ChildResult result =
        TestSupport::RunChild({"/usr/bin/xmllint", "--noent", "--noout", File("DefaultLog.xml")});
    return result.m_iStatus == 0 ? result.m_sError
                                 : "status " + std::to_string(result.m_iStatus) + ": " + result.m_sError;
  }

 private:
  // They would stay until the machine is started anew. One is where the log was last, be it a folder or not.
  void RemoveLocks() const {
    std::string last;
    Oxa::Core::System::Instance()->GetProcessPath(last);
    NamedLockTests::RemoveLock(last + "DefaultLog.entries");
    NamedLockTests::RemoveLock(File("DefaultLog.entries"));
    for (const auto& entry : std::filesystem::directory_iterator(Path()))
      if (entry.is_directory()) NamedLockTests::RemoveLock(entry.path().string() + "/DefaultLog.entries");
  }

  const TestSupport::TemporaryFolder m_folder;
  std::string m_sBefore;
};

/// The lock between processes, as another process would hold it.
inline Oxa::Core::Platform::NamedLock& LockOf(const LogFolder& folder) {
  int code = 0;
  return *Oxa::Core::Platform::NamedLock::Open(folder.File("DefaultLog.entries").c_str(), code);
}

inline Oxa::Core::OxaLogEntry Entry(const std::string& message) {
  Oxa::Core::OxaLogEntry entry;
  entry.m_eSeverity = Oxa::Core::eLOG_WARNING;
  entry.m_sMessage = message;
  entry.m_sLoggerPath = "Oxa.Test";
  entry.m_sForm = "plain";
  return entry;
}

inline std::string EntryText(const std::string& message) { return Oxa::Core::LogEntryText(Entry(message)); }

/// An entry of exactly `size` bytes, which has to be some hundred.
inline std::string EntryOfSize(std::size_t size) {
  const std::string shortest = EntryText(std::string(100, 'x'));
  return EntryText(std::string(100 + size - shortest.size(), 'x'));
}

}  // namespace LogTests

#endif
