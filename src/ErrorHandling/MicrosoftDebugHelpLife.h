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

/// The library for symbols, from the first place that has it; null if none has.
HINSTANCE LoadDebugHelpDll();

/// Writes into the log which file was loaded, and its version, if that says so.
void TellLoaded(HINSTANCE module);

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

  /// Stands, with the mutex held, while something is half done that a forked child couldn't go on with.
  class Busy {
   public:
    Busy() noexcept;
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
    ~Busy();
  };

  static boost::shared_ptr<DebugHelp> GetInstance();
  static bool HasFailed() noexcept;

 private:
  static void OnFork();

  struct Attempt;
  static Attempt Try();
  static bool Settle(Attempt& attempt);
  static void Tell(const Attempt& attempt);
};

}  // namespace MSWindows

#endif
