// Lets a host that isn't linked with the library raise through it.
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <cstdio>

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
