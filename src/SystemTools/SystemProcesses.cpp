#include <Infrastructure/OxaCore/SystemProcesses.h>

#include <cstddef>

#include "SystemTools/FileNameOf.h"

#include "Platform/Processes.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uMOST_PROCESSES = 1024;

int Assign(const std::set<unsigned int>& found, std::vector<unsigned int>& pids) {
  pids.assign(found.begin(), found.end());
  return static_cast<int>(found.size());
}

}  // namespace

// --- A module

int SystemProcesses::ModuleInfo::GetLoadingPIDs(std::vector<unsigned int>& pids) const {
  std::set<unsigned int> all;
  for (const auto& entry : m_loadingPIDs) all.insert(entry.second.begin(), entry.second.end());
  return Assign(all, pids);
}

int SystemProcesses::ModuleInfo::GetLoadingPIDs(const std::string& path,
                                                std::vector<unsigned int>& pids) const {
  const auto entry = m_loadingPIDs.find(path);
  return Assign(entry != m_loadingPIDs.end() ? entry->second : std::set<unsigned int>(), pids);
}

// --- The picture as a whole

SystemProcesses::SystemProcesses() { Update(); }

SystemProcesses::SystemProcesses(const SystemProcesses& other)
    : m_bLoaded(other.m_bLoaded), m_processes(other.m_processes), m_modules(other.m_modules) {
  IndexProcesses();
}

SystemProcesses& SystemProcesses::operator=(const SystemProcesses& other) {
  if (this == &other) return *this;
  SystemProcesses copy(
      other);  // the list's elements stay where they are when it is moved, and so do the tables
  m_bLoaded = copy.m_bLoaded;
  m_processes.swap(copy.m_processes);
  m_byPID.swap(copy.m_byPID);
  m_byName.swap(copy.m_byName);
  m_modules.swap(copy.m_modules);
  return *this;
}

SystemProcesses::~SystemProcesses() = default;

void SystemProcesses::IndexProcesses() {
  for (const ProcessInfo& process : m_processes) {
    m_byPID.emplace(process.GetPID(), &process);
    m_byName.emplace(process.GetName(), &process);
  }
}

// --- Taking it

bool SystemProcesses::LoadProcessLibrary() {
  m_bLoaded = Platform::FindProcessList() == 0;
  if (m_bLoaded) Platform::AllowLookingIntoProcesses();
  return m_bLoaded;
}

bool SystemProcesses::Update() {
  Clear();
  if (!m_bLoaded && !LoadProcessLibrary()) return false;
  std::vector<unsigned int> pids;
  Platform::ListProcesses(uMOST_PROCESSES, pids);
  for (const unsigned int pid : pids) AddProcess(pid);
  IndexProcesses();
  return true;
}

void SystemProcesses::Clear() {
  m_byPID.clear();
  m_byName.clear();
  m_processes.clear();
  m_modules.clear();
}

void SystemProcesses::AddProcess(unsigned int pid) {
  std::string program;
  std::vector<std::string> modules;
  if (Platform::LookIntoProcess(pid, program, modules) != 0) return;
  m_processes.emplace_back(pid, FileNameOf(program));
  for (const std::string& module : modules) AddModule(module, pid);
}

void SystemProcesses::AddModule(const std::string& path, unsigned int pid) {
  const std::string name = FileNameOf(path);
  m_modules.emplace(name, ModuleInfo(name, path)).first->second.AddPID(path, pid);
}

// --- Asking it

const SystemProcesses::ProcessInfo* SystemProcesses::GetProcessInfo(unsigned int pid) const {
  const auto entry = m_byPID.find(pid);
  return entry != m_byPID.end() ? entry->second : nullptr;
}

int SystemProcesses::GetProcessInfo(const std::string& name,
                                    std::vector<const ProcessInfo*>& processes) const {
  processes.clear();
  const auto found = m_byName.equal_range(name);
  for (auto entry = found.first; entry != found.second; ++entry) processes.push_back(entry->second);
  return static_cast<int>(processes.size());
}

const SystemProcesses::ModuleInfo* SystemProcesses::GetModuleInfo(const std::string& name) const {
  const auto entry = m_modules.find(name);
  return entry != m_modules.end() ? &entry->second : nullptr;
}

}  // namespace Oxa::Core
