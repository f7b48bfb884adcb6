#include "Platform/CallStacks.h"

#include <dlfcn.h>

#include <algorithm>
#include <memory>
#include <new>

#include "Platform/Faults.h"
#include "Platform/Kill.h"
#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/FrameView.h"
#include "Platform/Linux/StackWalkSteps.h"
#include "Platform/Linux/SymbolizedProcess.h"
#include "Platform/Linux/Variables.h"

namespace Oxa::Core::Platform {

/// The library's functions, and the process as they show it.
class SymbolReader {
 public:
  SymbolReader(HINSTANCE library, const char* searchPath, FunctionForm form)
      : m_sSearchPath(searchPath), m_form(form) {
    FindFunctions(m_dw, library);
    if (m_dw.elf_version != nullptr) m_dw.elf_version(EV_CURRENT);
  }

  const Dw& GetFunctions() const { return m_dw; }

  /// Made by the first walk, and by the one behind a fault. May throw std::bad_alloc.
  SymbolizedProcess& GetProcess() {
    if (!m_pProcess)
      m_pProcess = std::make_unique<SymbolizedProcess>(m_dw, m_sSearchPath.c_str(), m_form, m_faulted);
    return *m_pProcess;
  }

  // Too many faults: each has cost memory.
  bool IsGivenUp() const noexcept { return m_faulted.m_iCount == FaultedModules::iMOST; }

  // Behind a fault nothing of what was being read can be trusted, nor be given back.
  void BeginAnew() noexcept {
    m_faulted.m_pModules[m_faulted.m_iCount++] = m_pProcess ? m_pProcess->GetRead() : nullptr;
    static_cast<void>(m_pProcess.release());
    AbandonVariables();
  }

  // Behind a shortage of memory: what was begun with then is only half there.
  void Forget() noexcept { m_pProcess.reset(); }

 private:
  Dw m_dw;
  const std::string m_sSearchPath;
  const FunctionForm m_form;
  FaultedModules m_faulted;
  std::unique_ptr<SymbolizedProcess> m_pProcess;
};

namespace {

// More frames than any stack has that is whole.
constexpr int iMAX_FRAMES = 1000000;

// Names and types of variables are read in depth. Small stacks of threads don't have this.
constexpr std::size_t uROOM = 512 * 1024;

class Walk {
 public:
  Walk(SymbolReader& reader, const CONTEXT& context, FrameSink sink, void* argument)
      : m_reader(reader), m_context(context), m_sink(sink), m_pArgument(argument) {}

  // False if a fault has cut it short.
  bool RunGuarded() {
    CallWithRoom(
        uROOM, [](void* walk) { static_cast<Walk*>(walk)->CallRun(); }, this);
    return m_bWhole;
  }

 private:
  void CallRun() { m_bWhole = CallGuarded(&Walk::Run, this); }

  static void Run(void* walk) {
    try {
      static_cast<Walk*>(walk)->Run();
    } catch (...) {
      // Out of memory: the frames that were handed over have to do.
      static_cast<Walk*>(walk)->m_reader.Forget();
    }
  }

  void Run() {
    SymbolizedProcess& process = m_reader.GetProcess();
    process.Refresh();
    StackWalkSteps steps(process, m_context);
    // One frame ahead, since values on entry are found in the caller.
    NativeFrame frames[2];
    bool there = steps.Next(frames[0]);
    for (int count = 0; there && count < iMAX_FRAMES; ++count) {
      NativeFrame& caller = frames[(count + 1) % 2];
      there = steps.Next(caller);
      if (!Give(frames[count % 2], there ? &caller : nullptr)) return;
    }
  }

  static void Fill(FrameView& view, const NativeFrame& frame, const PlacedFunction& function) {
    const SymbolizedPlace& place = frame.m_pFacts->m_place;
    view.m_pOwner = place.m_pModule;
    view.m_pModule = place.m_pModule->GetModule();
    view.m_bias = place.m_pModule->GetDebugBias();
    view.m_unit = place.m_unit;
    view.m_function = function.m_entry;
    view.m_subprogram = place.m_functions.back().m_entry;
    view.m_pScopes = function.m_scopes.data();
    view.m_iScopes = static_cast<int>(function.m_scopes.size());
    view.m_place = place.m_address;
    view.m_registers = frame.m_registers.m_context;
    for (int number = 0; number < CONTEXT::iREGISTERS; ++number)
      view.m_bKnown[number] = frame.m_registers.m_bKnown[number];
    view.m_cfa = frame.m_uCfa;
    view.m_bCfaKnown = frame.m_uCfa != 0;
  }

  static bool HasEntries(const NativeFrame& frame) {
    const SymbolizedPlace& place = frame.m_pFacts->m_place;
    return place.m_pModule != nullptr && place.m_functions.front().m_bEntry;
  }

  bool Give(const NativeFrame& frame, const NativeFrame* caller) {
    const SymbolizedPlace& place = frame.m_pFacts->m_place;
    if (place.m_pModule == nullptr) return Give(frame, PlacedFunction(), nullptr);
    if (place.m_bVariables) return GiveWithViews(frame, caller);
    return std::all_of(place.m_functions.begin(), place.m_functions.end(),
                       [&](const PlacedFunction& function) { return Give(frame, function, nullptr); });
  }

  bool GiveWithViews(const NativeFrame& frame, const NativeFrame* caller) {
    FrameView callersView;
    const bool callerKnown = caller != nullptr && HasEntries(*caller);
    if (callerKnown) Fill(callersView, *caller, caller->m_pFacts->m_place.m_functions.front());
    FrameView view;
    view.m_pCaller = callerKnown ? &callersView : nullptr;
    for (const PlacedFunction& function : frame.m_pFacts->m_place.m_functions) {
      if (function.m_bEntry) Fill(view, frame, function);
      if (!Give(frame, function, function.m_bEntry ? &view : nullptr)) return false;
    }
    return true;
  }

  bool Give(const NativeFrame& frame, const PlacedFunction& function, const FrameView* view) {
    const SymbolizedModule* const module = frame.m_pFacts->m_place.m_pModule;
    StackFrame given{};
    given.m_uPlace = frame.m_registers.Place();
    // Where nothing is known of the frame it has its return address at least, and isn't taken for its callee's.
    given.m_uFrame = frame.m_uCfa != 0 ? frame.m_uCfa : frame.m_registers.Stack() + sizeof(std::uint64_t);
    given.m_bInlined = function.m_bInlined;
    given.m_pFile = function.m_pFile;
    given.m_iLine = function.m_iLine;
    given.m_pModule = module != nullptr ? module->GetName().c_str() : nullptr;
    given.m_uBase = module != nullptr ? module->GetLoaded().m_uBegin : 0;
    given.m_pFunction = function.m_sName.empty() ? nullptr : function.m_sName.c_str();
    given.m_pView = view;
    given.m_pNote = &function.m_spNote;
    return m_sink(given, m_pArgument);
  }

  SymbolReader& m_reader;
  const CONTEXT& m_context;
  const FrameSink m_sink;
  void* const m_pArgument;
  bool m_bWhole = false;
};

}  // namespace

SymbolReader* OpenSymbolReader(HINSTANCE library, const char* searchPath, FunctionForm form) noexcept {
  const HoldKill alive;
  const HoldCancellation hold;
  try {
    return new SymbolReader(library, searchPath, form);
  } catch (...) {
    return nullptr;
  }
}

void CloseSymbolReader(SymbolReader* reader) noexcept {
  const HoldKill alive;
  const HoldCancellation hold;
  delete reader;
}

bool WalkStack(SymbolReader& reader, const CONTEXT* context, FrameSink sink, void* argument) noexcept {
  const HoldKill alive;
  const HoldCancellation hold;
  if (reader.IsGivenUp()) return false;
  CONTEXT here;
  if (context == nullptr) CaptureContext(here);
  Walk walk(reader, context != nullptr ? *context : here, sink, argument);
  if (walk.RunGuarded()) return true;
  reader.BeginAnew();
  return false;
}

void ReadFrameVariables(SymbolReader& reader, const StackFrame& frame, const VariableSink& sink) {
  if (frame.m_pView == nullptr) return;
  try {
    const SymbolizedProcess::Reading reading(reader.GetProcess(), frame.m_pView->m_pOwner);
    ReadVariables(reader.GetFunctions(), *frame.m_pView, sink);
  } catch (...) {
    ForgetVariables();  // the same of scopes and types
    throw;
  }
}

}  // namespace Oxa::Core::Platform
