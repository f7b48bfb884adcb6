#include "System/Circumstances.h"

#include <Infrastructure/OxaCore/System.h>

#include <string>

namespace Oxa::Core {

namespace {

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

}  // namespace Oxa::Core
