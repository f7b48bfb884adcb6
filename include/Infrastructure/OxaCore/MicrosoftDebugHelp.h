// What a process can tell of itself from inside: its call stacks with their variables, and dumps of its memory.
//
// All of it rests on a library for symbols that is loaded at the first use and never taken for granted. Where it is
// missing, or can't do something, that is told once or at each use as a warning, and errors are raised without a call
// stack. docs/callstacks.md tells which library that is and what each of its functions is needed for.
//
// Thread safety: any thread may call anything. One mutex serialises all use, so that threads that raise at the same
// time wait here for each other. No foreign code runs under it, and whoever holds it takes nothing else: a raise is
// possible whatever a thread holds. Failures: warnings only, under "Microsoft.DebugHelp"; besides them nothing but
// std::bad_alloc leaves, and machine faults within end the operation, not the process.
//
//   if (boost::shared_ptr<MSWindows::DebugHelp> help = MSWindows::DebugHelp::Instance()) {
//     boost::shared_ptr<std::vector<CodeContext>> frames = help->CreateCallStack(100);
//   }
#ifndef INFRASTRUCTURE_OXACORE_MICROSOFTDEBUGHELP_H
#define INFRASTRUCTURE_OXACORE_MICROSOFTDEBUGHELP_H

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <boost/shared_ptr.hpp>
#include <set>
#include <string>
#include <vector>

namespace Oxa::Core {

class Mutex;
class PathName;
enum EDumpPolicy : int;

namespace Platform {
class SymbolReader;
}

}  // namespace Oxa::Core

namespace MSWindows {

struct DebugHelpTrouble;

/// See the top of this file. The library makes the one object, when it is first asked for.
class OXACORE_API DebugHelp {
 public:
  /// Once per process: no place has a library for symbols that can be loaded.
  /// "Failed to load dbghelp.dll, call stack and minidumps unavailable"
  class OXACORE_API LoadFailed : public Oxa::Core::Warning {
   public:
    LoadFailed();
    ~LoadFailed() override;
  };

  /// "Failed to find %1% in the loaded dbghelp.dll". One for each function that is missing: at the first use those that
  /// nothing goes without (and Instance is null), at each walk those that no stack can be walked without. A library
  /// that lacks several has it raised as often, in the order in which they are needed.
  class OXACORE_API FunctionNotFound : public Oxa::Core::Warning {
   public:
    explicit FunctionNotFound(const std::string& function);
    ~FunctionNotFound() override;
  };

  /// The library is there and can't be begun with, for want of memory.
  /// "Failed to initialize symbols with SymInitialize, symbols unavailable"
  class OXACORE_API SymInitFailed : public Oxa::Core::Warning {
   public:
    SymInitFailed();
    ~SymInitFailed() override;
  };

  /// A dump couldn't be begun with.
  /// "Failed to create minidump file named:\n\n%1%\n\nwith the following error:\n\n%2%"
  class OXACORE_API CreateMiniDumpFileFailed : public Oxa::Core::Warning {
   public:
    /// `reason` is the system's text for what went wrong.
    CreateMiniDumpFileFailed(const std::string& path, const std::string& reason);
    ~CreateMiniDumpFileFailed() override;
  };

  /// Told by whoever wanted `what`, a call stack or a dump.
  /// "No dbghelp.dll available to generate %1%"
  class OXACORE_API Unavailable : public Oxa::Core::Warning {
   public:
    explicit Unavailable(const std::string& what);
    ~Unavailable() override;
  };

  /// The one object. Null if the library for symbols can't be loaded or initialised, which is tried once per process;
  /// null also to a listener that is told of that failure, in a child that was forked off while another thread was in
  /// here, and while the library loads and unloads.
  static boost::shared_ptr<DebugHelp> Instance();

  /// Whether the one attempt was made and has failed. Takes no lock and allocates nothing.
  static bool IsUnavailable() noexcept;

  DebugHelp(const DebugHelp&) = delete;
  DebugHelp& operator=(const DebugHelp&) = delete;
  virtual ~DebugHelp();

  /// The stack of the calling thread, innermost frame first, without the frames of the error system itself: as below.
  /// With a `maxFrames` of 0 or less the result is an empty list, and nothing is read.
  boost::shared_ptr<std::vector<Oxa::Core::CodeContext>> CreateCallStack(int maxFrames);

  /// The stack that `context` is the innermost frame of; it has to stand as yet. At most `maxFrames` frames (0 or less:
  /// none, an empty list), and only those that a source line is known of; a function that the compiler put into another
  /// one has a frame of its own. Each has its file, line and function, the module under the key "Module", and its
  /// variables as far as they can be read. Null, and a warning FunctionNotFound for each, where functions are missing
  /// that no stack can be walked without. Afterwards the thread has the translator of faults and the floating-point
  /// environment that it had.
  boost::shared_ptr<std::vector<Oxa::Core::CodeContext>> CreateCallStack(const CONTEXT& context,
                                                                         int maxFrames);

  /// Writes a dump of the process to `path`, over an old one, with the fault of `pointers` for its cause and as much
  /// memory as `policy` says. All threads stand still meanwhile, for 5 seconds at most: what hasn't been written by
  /// then, can't be read or has no room is left out. Warns of FunctionNotFound where dumps can't be had, and of
  /// CreateMiniDumpFileFailed where the file can't be made, or with the text of EBUSY where another dump is being
  /// written at that moment, as by a thread that dies. In all these cases nothing is written.
  void CreateMiniDump(Oxa::Core::PathName& path, _EXCEPTION_POINTERS& pointers,
                      Oxa::Core::EDumpPolicy policy);

  /// Makes symbols available, from the places of the search path and those that the system keeps them in. Instance
  /// has done so; once more means to begin anew, with the variables of the environment as they are then. False, and a
  /// warning, if that can't be had.
  bool Initialize();

 private:
  friend class DebugHelpLife;
  friend class DebugHelpWalk;
  using Function = const void*;
  using Frames = boost::shared_ptr<std::vector<Oxa::Core::CodeContext>>;

  explicit DebugHelp(HINSTANCE module);

  struct FunctionField;
  static const FunctionField s_functions[];  // the field of each function, and its name

  void ResolveFunctions();
  void TellIfMissing(Function DebugHelp::*field, DebugHelpTrouble& trouble) const;
  void FillIgnored();
  DebugHelpTrouble Begin();
  bool OpenSymbols();
  bool CanReadVariables() const;
  DebugHelpTrouble GetMissingForWalk() const;
  Frames CreateCallStack(const CONTEXT* context, int maxFrames);

  static Oxa::Core::Mutex& s_mutex;                   // serialises all use, and guards the next one
  static boost::shared_ptr<DebugHelp>& s_spInstance;  // null: not made yet, or never

  // What each of them stands on is told in docs/callstacks.md; null: it isn't there.
  Function m_pSymCleanup;
  Function m_pSymFunctionTableAccess64;
  Function m_pSymGetLineFromAddr64;
  Function m_pSymGetModuleBase64;
  Function m_pSymGetModuleInfo64;
  Function m_pSymGetOptions;
  Function m_pSymGetSymFromAddr64;
  Function m_pSymInitialize;
  Function m_pSymSetOptions;
  Function m_pStackWalk64;
  Function m_pUnDecorateSymbolName;
  Function m_pSymGetSearchPath;
  Function m_pSymSetContext;
  Function m_pSymEnumSymbols;
  Function m_pSymGetTypeInfo;
  Function m_pMiniDumpWriteDump;
  HINSTANCE m_hModule;  ///< the library for symbols; owned
  Oxa::Core::Platform::SymbolReader*
      m_pProcess;  ///< what reads the process; owned; null until Initialize, and if it failed
  std::set<std::string> m_ignoredSources;  ///< leaf names in lower case
  std::set<std::string> m_ignoredModules;  ///< names in lower case
  bool m_bInitialized;
  bool m_bFilterModules;
  bool m_bRequireModuleInfo;
};

}  // namespace MSWindows

#endif
