// The life of the one DebugHelp: what it is loaded from, when it may be used, and how it goes.
#ifndef OXACORE_ERRORHANDLING_MICROSOFTDEBUGHELPLIFE_H
#define OXACORE_ERRORHANDLING_MICROSOFTDEBUGHELPLIFE_H

#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

namespace Oxa::Core {

struct Hooks;

}  // namespace Oxa::Core

namespace MSWindows {

/// The library for symbols, from the first place that has it, and that place; null if none has.
HINSTANCE LoadDebugHelpDll(std::string& path);

/// The places that symbols are looked for in, separated by ";".
std::string ComposeSymbolPath();

/// What stood in the way of something. It is told when no lock is held any more: listeners may do as they like.
struct DebugHelpTrouble {
  bool m_bLoadFailed = false;
  std::vector<const char*> m_missing;  ///< names of functions
  bool m_bInitFailed = false;

  void Tell() const;
};

/// The attempt to make the object, which is made once, and its end.
class DebugHelpLife {
 public:
  /// Fills in the hook that walks stacks.
  static void Connect(Oxa::Core::Hooks& hooks);

  /// The library is loaded as a whole: call stacks may be asked for.
  static void Begin();

  /// For the unload routine: there are none any more. Where the process goes on without this library, what was loaded
  /// for them goes too.
  static void End();

  static boost::shared_ptr<DebugHelp> GetInstance();
  static bool HasFailed() noexcept;

 private:
  struct Attempt;
  static Attempt Try();
  static bool Settle(Attempt& attempt);
};

}  // namespace MSWindows

#endif
