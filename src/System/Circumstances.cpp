#include "System/Circumstances.h"

#include <Infrastructure/OxaCore/System.h>

#include <atomic>
#include <string>

#include "Platform/Machine.h"
#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

std::atomic<unsigned long> s_ulChanges{0};

using Fact = void (System::*)(std::string&) const;

void Add(AlertData& context, const std::string& key, const System& system, Fact fact) {
  std::string value;
  (system.*fact)(value);
  if (!value.empty()) context[key] = value;
}

}  // namespace

void AddCircumstances(AlertData& context) {
  const System* const system = System::Instance();
  if (system == nullptr) return;
  Add(context, CodeContext::sPROCESS, *system, &System::GetProcessName);
  Add(context, CodeContext::sPROCESS_ID, *system, &System::GetProcessId);
  Add(context, CodeContext::sTHREAD, *system, &System::GetCurrentThreadName);
  Add(context, CodeContext::sTHREAD_ID, *system, &System::GetCurrentThreadId);
  Add(context, CodeContext::sOPERATING_SYSTEM, *system, &System::GetOsName);
  Add(context, CodeContext::sHOST, *system, &System::GetHostName);
}

CircumstancesMark MarkCircumstances() {
  // Read ahead of the names: a table that is made meanwhile is taken for older than it is, at worst.
  const unsigned long changes = s_ulChanges.load();
  if (System::Instance() == nullptr) return CircumstancesMark();
  return CircumstancesMark{Platform::CurrentThreadId(), Platform::ProcessId(), changes};
}

void ChangeCircumstances() noexcept { s_ulChanges.fetch_add(1); }

}  // namespace Oxa::Core
