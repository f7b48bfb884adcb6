// Lets a host that isn't linked with the library raise through it, and use what its headers define.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Dictionary.h>
#include <Infrastructure/OxaCore/EnumeratedSet.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <string>

namespace {

class PluginWarning : public Oxa::Core::Warning {
 public:
  explicit PluginWarning(const char* text) : Warning(std::string(text)) {}
};

}  // namespace

/// Raises an error; 1 if the raise threw it, 0 if it returned.
extern "C" __attribute__((visibility("default"))) int RaiseFromPlugin(const char* message) {
  try {
    OXA_RAISE_ERROR("Test.Plugin", Oxa::Core::LogicError(message));
    return 0;
  } catch (Oxa::Core::LogicError&) {
    return 1;
  }
}

extern "C" __attribute__((visibility("default"))) void WarnFromPlugin(const char* message) {
  OXA_RAISE_WARNING("Test.Plugin", PluginWarning(message));
}

extern "C" __attribute__((visibility("default"))) const char* AtomFromPlugin(const char* word) {
  return Oxa::Core::GetOxaAtom(word);
}

/// Fills some pages with atoms; true if they could be numbered, and an unknown number was refused.
extern "C" __attribute__((visibility("default"))) bool UseTools() {
  Oxa::Core::GraphAlgo::EnumeratedSet<std::string> words;
  for (int number = 0; number < 1000; ++number) words[std::string(300, 'x') + std::to_string(number)];
  for (unsigned index = 0; index < words.GetItemCount(); ++index)
    Oxa::Core::GetOxaAtom(words.LookupByInt(index));
  try {
    words.LookupByInt(1000);
    return false;
  } catch (Oxa::Core::IndexOutOfBounds&) {
    return true;
  }
}
