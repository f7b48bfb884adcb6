// The processes that run on this machine, each with its program, and the modules that they have loaded.
//
// A process is known by the file of its program. The modules are the libraries that it has loaded besides; its program
// is not among them. Names are those of the files themselves: where "libprobe.so.2" is a link to "libprobe.so.2.4.1",
// the module's name is the latter.
//
// An object is a picture of one moment: what begins or ends later shows after the next Update. Processes that this one
// may not look into are missing, and so are those that have no file, such as the kernel's own.
//
// Thread safety: one object belongs to one thread at a time. There are no locks.
// Failures: nothing raises; what the system doesn't tell leaves the tables without it. Running out of memory throws
// std::bad_alloc.
//
//   SystemProcesses processes;
//   if (const SystemProcesses::ModuleInfo* library = processes.GetModuleInfo("libprobe.so.2.4.1")) {
//     std::vector<unsigned int> pids;
//     library->GetLoadingPIDs(pids);  // who has it loaded, from whatever folder
//   }
#ifndef INFRASTRUCTURE_OXACORE_SYSTEMPROCESSES_H
#define INFRASTRUCTURE_OXACORE_SYSTEMPROCESSES_H

#include <Infrastructure/OxaCore/Export.h>

#include <list>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace Oxa::Core {

/// What it hands out (infos and the list of them) is owned by the object, and good until it is updated, assigned to or
/// destroyed.
class OXACORE_API SystemProcesses {
 public:
  /// One process, as it was when the picture was taken.
  class ProcessInfo {
   public:
    /// With its id and the name of its program.
    ProcessInfo(unsigned int pid, const std::string& name) : m_uPID(pid), m_sName(name) {}

    /// The id that the system gave it.
    unsigned int GetPID() const { return m_uPID; }

    /// The name of the program's file, without its folder.
    const std::string& GetName() const { return m_sName; }

   private:
    unsigned int m_uPID;
    std::string m_sName;
  };

  /// All libraries of one file name: they may lie in several folders.
  class OXACORE_API ModuleInfo {
   public:
    /// The name of the file, without its folder.
    const std::string& GetName() const { return m_sName; }

    /// Where the first one that was met lies: its whole path.
    const std::string& GetPath() const { return m_sPath; }

    /// Replaces `pids` with the ids of the processes that have loaded one of that name, in ascending order and each
    /// once, and gives their count.
    int GetLoadingPIDs(std::vector<unsigned int>& pids) const;

    /// The same for the one of that whole path: 0 if nobody has loaded it.
    int GetLoadingPIDs(const std::string& path, std::vector<unsigned int>& pids) const;

   private:
    friend class SystemProcesses;
    ModuleInfo(const std::string& name, const std::string& path) : m_sName(name), m_sPath(path) {}
    void AddPID(const std::string& path, unsigned int pid) { m_loadingPIDs[path].insert(pid); }

    std::string m_sName;
    std::string m_sPath;
    std::map<std::string, std::set<unsigned int>> m_loadingPIDs;  // by the whole path of the module
  };

  /// Takes the first picture.
  SystemProcesses();
  SystemProcesses(const SystemProcesses& other);
  SystemProcesses& operator=(const SystemProcesses& other);
  virtual ~SystemProcesses();

  /// Takes a new picture in place of the old one. At most 1024 processes are looked at, those with the lowest ids.
  /// False, with all tables empty, if the system has no list of processes to tell from; a list that can't be read
  /// this time leaves the tables empty, too, but is no failure. The calling thread keeps the privilege to look into
  /// processes of other users from then on, if its process was granted that.
  bool Update();

  /// The process of that id; null if it is not in the picture.
  const ProcessInfo* GetProcessInfo(unsigned int pid) const;

  /// Replaces `processes` with those whose program has that file name (case counts), and gives their count.
  int GetProcessInfo(const std::string& name, std::vector<const ProcessInfo*>& processes) const;

  /// All processes, by ascending ids.
  const std::list<ProcessInfo>& GetProcessInfos() const { return m_processes; }

  /// The libraries of that file name (case counts); null if no process has loaded one. Programs are not among them.
  const ModuleInfo* GetModuleInfo(const std::string& name) const;

 private:
  bool LoadProcessLibrary();
  void Clear();
  void AddProcess(unsigned int pid);
  void AddModule(const std::string& path, unsigned int pid);
  void IndexProcesses();

  bool m_bLoaded = false;  // whether LoadProcessLibrary was successful
  std::list<ProcessInfo> m_processes;
  std::unordered_map<unsigned int, const ProcessInfo*> m_byPID;
  std::multimap<std::string, const ProcessInfo*> m_byName;
  std::map<std::string, ModuleInfo> m_modules;  // by name
};

}  // namespace Oxa::Core

#endif
