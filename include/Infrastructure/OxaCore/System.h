// Who am I, where do I run, what is this thread called: the facts that every alert and log entry carries.
//
// What can't change is gathered once, while the library loads, so that asking costs a copy. The one object is
// the first of the library's globals to be built and the last to die.
//
// Thread safety: any thread may call anything. The names of process and threads are guarded by a
// ReadersWriterMutex, so that many readers don't wait for each other.
// Failures: the errors of that lock and std::bad_alloc pass through. What the system doesn't tell is a default.
//
//   if (System* system = System::Instance()) {
//     std::string host;
//     system->GetHostName(host);
//   }
#ifndef INFRASTRUCTURE_OXACORE_SYSTEM_H
#define INFRASTRUCTURE_OXACORE_SYSTEM_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/ReadersWriterMutex.h>

#include <string>
#include <unordered_map>

namespace Oxa::Core {

template <class T>
class Global;

/// Facts about process, threads and machine. Made by the library only.
class OXACORE_API System {
 public:
  System(const System&) = delete;
  System& operator=(const System&) = delete;
  ~System();

  /// The one object; null before the library is built and once it is gone. Owned by the library.
  static System* Instance();

  /// "OxaCore" and its version.
  void GetProductName(std::string& name) const;
  void GetProductVersion(std::string& version) const;

  /// The machine's name in the network; empty if the system doesn't tell.
  void GetHostName(std::string& name) const;

  /// A text that identifies the operating system, with its version.
  void GetOsName(std::string& name) const;

  /// The file name of the executable, until SetProcessName; "Unknown" if the system doesn't tell.
  void GetProcessName(std::string& name) const;
  /// Gives the process a name of its own. A host that wants one in its logs calls this first of all.
  void SetProcessName(const std::string& name);

  /// The folder of the executable, with a closing "/", until SetProcessPath; "./" if the system doesn't tell.
  void GetProcessPath(std::string& path) const;
  /// Replaces the folder, without any check: the text is used as it stands.
  void SetProcessPath(const std::string& path);

  /// The id of the process, as a number and in decimal.
  unsigned long GetProcessId() const;
  void GetProcessId(std::string& id) const;

  /// The id of the calling thread, as a number and in decimal.
  unsigned long GetCurrentThreadId() const;
  void GetCurrentThreadId(std::string& id) const;

  /// The name of the calling thread; empty for one that was never named. A thread whose id the system has used
  /// before has inherited the name that went with it.
  void GetCurrentThreadName(std::string& name) const;
  /// Names the calling thread, or renames it, for alerts and logs; an empty text takes the name back. The name
  /// outlives the thread, until the system gives its id to another one and that is named. The system is told
  /// too, so that debuggers and lists of threads show as much of the name as they have room for (15 bytes on
  /// Linux); whether it takes it is not looked at.
  void SetCurrentThreadName(const std::string& name);

  /// Processors of the machine, asked of the system each time.
  unsigned long GetNumProcessors() const;

 private:
  friend class Global<System>;
  System();

  void FindExecutable();

  const std::string m_sProductName;
  const std::string m_sProductVersion;
  std::string m_sHostName;
  std::string m_sOsName;
  std::string m_sProcessName;
  std::string m_sProcessPath;
  std::unordered_map<unsigned long, std::string> m_threadNames;  // by thread id
  ReadersWriterMutex m_mutex;  // guards process name, process path and thread names
};

}  // namespace Oxa::Core

#endif
