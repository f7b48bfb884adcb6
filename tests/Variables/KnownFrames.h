// Runs a module of KnownVariables.cpp and looks at the frames of its functions from inside.
#ifndef OXACORE_TESTS_VARIABLES_KNOWNFRAMES_H
#define OXACORE_TESTS_VARIABLES_KNOWNFRAMES_H

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <dlfcn.h>

#include <algorithm>
#include <string>
#include <vector>

namespace OxaTest {

/// What was seen of one function.
struct KnownFrame {
  std::string m_sFunction;
  Oxa::Core::AlertData m_values;
  Oxa::Core::AlertData m_types;
};

inline bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// "name: type; name: type" as a table.
inline Oxa::Core::AlertData TypesOf(const std::string& text) {
  Oxa::Core::AlertData types;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find("; ", at), text.size());
    const std::size_t colon = text.find(": ", at);
    types[text.substr(at, colon - at)] = text.substr(colon + 2, end - colon - 2);
    at = end + 2;
  }
  return types;
}

/// The innermost frame of a function whose name ends in `function`; without a name if there is none.
inline KnownFrame LookAt(const std::string& function) {
  KnownFrame known;
  const boost::shared_ptr<MSWindows::DebugHelp> spHelp = MSWindows::DebugHelp::Instance();
  if (!spHelp) return known;
  const boost::shared_ptr<std::vector<Oxa::Core::CodeContext>> spFrames = spHelp->CreateCallStack(100);
  if (!spFrames) return known;
  for (const Oxa::Core::CodeContext& frame : *spFrames) {
    if (!EndsWith(frame.Get(Oxa::Core::CodeContext::sFUNCTION), function)) continue;
    known.m_sFunction = function;
    known.m_values = frame.GetVariables();
    known.m_types = TypesOf(frame.Get("VariableTypes"));
    break;
  }
  return known;
}

/// Calls `look` out of each of the module's functions, with the function's name. False if the module can't be run.
inline bool RunKnown(const char* module, void (*look)(const char* function)) {
  void* const handle = ::dlopen(module, RTLD_NOW | RTLD_LOCAL);
  if (!handle) return false;
  using Run = int (*)(void (*)(const char*));
  const Run run = reinterpret_cast<Run>(::dlsym(handle, "RunKnownVariables"));
  if (run) run(look);
  return run != nullptr;
}

}  // namespace OxaTest

#endif
