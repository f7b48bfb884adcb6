#include <Infrastructure/OxaCore/System.h>

#include <Infrastructure/OxaCore/Assert.h>

#include <atomic>

#include "Core/LibraryGlobals.h"
#include "Platform/Machine.h"
#include "Platform/Threads.h"
#include "System/Circumstances.h"
#include "System/Executable.h"
#include "System/ProcessPath.h"

namespace Oxa::Core {

namespace {

const char* const sPRODUCT_NAME = "OxaCore";
const char* const sPRODUCT_VERSION = "2.1.6";
constexpr std::size_t uBUCKETS = 8;

// Known here besides in the globals: each place of an alert asks for it, and a look-up there makes a key and takes a
// lock.
std::atomic<System*> s_system{nullptr};

std::string ToText(unsigned long id) { return std::to_string(static_cast<unsigned int>(id)); }

}  // namespace

System::System()
    : m_sProductName(sPRODUCT_NAME), m_sProductVersion(sPRODUCT_VERSION), m_threadNames(uBUCKETS) {
  FindExecutable();
  Platform::OperatingSystemName(m_sOsName);
  Platform::HostName(m_sHostName);
  System* none = nullptr;
  s_system.compare_exchange_strong(none, this);
}

System::~System() {
  System* self = this;
  s_system.compare_exchange_strong(self, nullptr);
}

void System::FindExecutable() {
  std::string path;
  Platform::ExecutablePath(path);
  const Executable executable = SplitExecutable(path);
  m_sProcessPath = executable.folder;
  PublishProcessPath(m_sProcessPath);
  m_sProcessName = executable.leaf;
}

System* System::Instance() {
  return LibraryGlobals() != nullptr ? s_system.load(std::memory_order_acquire) : nullptr;
}

// --- What doesn't change

void System::GetProductName(std::string& name) const { name = m_sProductName; }

void System::GetProductVersion(std::string& version) const { version = m_sProductVersion; }

void System::GetHostName(std::string& name) const { name = m_sHostName; }

void System::GetOsName(std::string& name) const { name = m_sOsName; }

unsigned long System::GetProcessId() const { return Platform::ProcessId(); }

void System::GetProcessId(std::string& id) const { id = ToText(GetProcessId()); }

unsigned long System::GetCurrentThreadId() const { return Platform::CurrentThreadId(); }

void System::GetCurrentThreadId(std::string& id) const { id = ToText(GetCurrentThreadId()); }

unsigned long System::GetNumProcessors() const { return Platform::NumberOfProcessors(); }

// --- The process

void System::GetProcessName(std::string& name) const {
  const ReaderLock lock(m_mutex);
  name = m_sProcessName;
}

void System::SetProcessName(const std::string& name) {
  const WriterLock lock(m_mutex);
  m_sProcessName = name;
  ChangeCircumstances();
}

void System::GetProcessPath(std::string& path) const {
  const ReaderLock lock(m_mutex);
  path = m_sProcessPath;
}

void System::SetProcessPath(const std::string& path) {
  const WriterLock lock(m_mutex);
  m_sProcessPath = path;
  PublishProcessPath(path);
}

// --- Threads

void System::GetCurrentThreadName(std::string& name) const {
  const unsigned long id = GetCurrentThreadId();
  const ReaderLock lock(m_mutex);
  const auto entry = m_threadNames.find(id);
  if (entry == m_threadNames.end())
    name.clear();
  else
    name = entry->second;
}

void System::SetCurrentThreadName(const std::string& name) {
  Platform::TellThreadName(name.c_str());
  const unsigned long id = GetCurrentThreadId();
  const WriterLock lock(m_mutex);
  const auto entry = m_threadNames.find(id);
  if (entry != m_threadNames.end()) {
    entry->second = name;
    ChangeCircumstances();
    return;
  }
  const auto result = m_threadNames.emplace(id, name);
  ChangeCircumstances();
  OXA_ASSERT(result.second == true);
}

}  // namespace Oxa::Core
