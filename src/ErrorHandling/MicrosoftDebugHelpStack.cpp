#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "ErrorHandling/MicrosoftDebugSymbol.h"
#include "ErrorHandling/PlaceTables.h"
#include "Platform/CallStacks.h"
#include "Platform/Faults.h"
#include "Platform/FloatTraps.h"
#include "Platform/Kill.h"
#include "Platform/Storage.h"

namespace MSWindows {

namespace Platform = Oxa::Core::Platform;
using Oxa::Core::AlertData;
using Oxa::Core::CodeContext;
using Oxa::Core::CodePlace;
using Oxa::Core::Lock;
using Oxa::Core::PlaceTable;
using Oxa::Core::TableOf;

namespace {

const char* const sUNKNOWN = "Unknown";
const char* const sMODULE = "Module";
constexpr std::size_t uUSUAL_FRAMES = 32;
const char* const sVARIABLE_TYPES = "VariableTypes";

std::string LowerCase(const char* text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::string LowerCaseLeaf(const char* file) {
  const char* leaf = file;
  for (const char* at = file; *at != 0; ++at)
    if (*at == '/' || *at == '\\') leaf = at + 1;
  return LowerCase(leaf);
}

std::string Hexadecimal(std::uint64_t value) {
  const char* const digits = "0123456789abcdef";
  std::string text;
  do text.insert(text.begin(), digits[value % 16]);
  while ((value /= 16) != 0);
  return text;
}

// A fault while the stack is walked must not become an error, nor may anything that is raised on the way walk the
// stack once more.
class QuietThread {
 public:
  QuietThread() noexcept : m_before(Platform::SetFaultTranslator(nullptr)) {
    Platform::SetThreadFlag(Platform::EThreadFlag::eREADS_STACK, true);
  }
  QuietThread(const QuietThread&) = delete;
  QuietThread& operator=(const QuietThread&) = delete;
  ~QuietThread() {
    Platform::SetThreadFlag(Platform::EThreadFlag::eREADS_STACK, false);
    Platform::SetFaultTranslator(m_before);
  }

 private:
  Platform::FaultTranslator m_before;
};

// What is found out once for all frames of a function at a place: whether they are wanted, and the table of the last
// one as long as the next would get the same. Whether they are wanted is what the first walk at the place found.
struct FrameNote : Platform::PlaceNote {
  explicit FrameNote(bool wanted) : m_bWanted(wanted) {}

  const bool m_bWanted;
  std::uint64_t m_uPlace = 0;
  boost::shared_ptr<const AlertData> m_spCircumstances;
  std::string m_sTypes;
  boost::shared_ptr<const AlertData> m_spTable;
};

}  // namespace

/// One walk: what has been seen of the stack, and what has come out of it.
class DebugHelpWalk {
 public:
  DebugHelpWalk(const DebugHelp& help, int maxFrames)
      : m_help(help),
        m_spFrames(boost::make_shared<std::vector<CodeContext>>()),
        m_uMaxFrames(maxFrames > 0 ? static_cast<std::size_t>(maxFrames) : 0),
        m_bVariables(help.CanReadVariables()),
        m_spCircumstances(Circumstances()) {
    m_spFrames->reserve(std::min(m_uMaxFrames, uUSUAL_FRAMES));
    m_seen.reserve(uUSUAL_FRAMES);
  }

  static bool TakeFrame(const Platform::StackFrame& frame, void* walk) {
    try {
      return static_cast<DebugHelpWalk*>(walk)->Take(frame);
    } catch (...) {
      return false;  // out of memory: the frames that there are have to do
    }
  }

  bool IsFull() const { return m_spFrames->size() >= m_uMaxFrames; }
  DebugHelp::Frames Result() const { return m_spFrames; }

 private:
  static PlaceTable Circumstances() {
    PlaceTable table = TableOf(CodePlace{sUNKNOWN, -1, "", ""});
    if (!table) throw std::bad_alloc();
    return table;
  }

  static void SetOrErase(AlertData& context, const std::string& key, std::string value) {
    if (value.empty()) {
      context.erase(key);
    } else {
      context[key].swap(value);
    }
  }

  bool Take(const Platform::StackFrame& frame) {
    if (frame.m_uFrame == 0 || IsFull()) return false;
    // A stack that loops ends here. What was put into a function has the frame of that.
    const auto place = m_seen.empty() || m_seen.back() < frame.m_uFrame
                           ? m_seen.end()
                           : std::lower_bound(m_seen.begin(), m_seen.end(), frame.m_uFrame);
    if (place != m_seen.end() && *place == frame.m_uFrame) return false;
    if (!frame.m_bInlined)
      m_seen.insert(place, frame.m_uFrame);  // the function itself comes behind what was put into it
    FrameNote& note = NoteOf(frame);
    if (note.m_bWanted) Append(frame, note);
    return !IsFull();
  }

  FrameNote& NoteOf(const Platform::StackFrame& frame) const {
    if (!*frame.m_pNote) *frame.m_pNote = std::make_shared<FrameNote>(IsWanted(frame));
    return static_cast<FrameNote&>(**frame.m_pNote);
  }

  bool IsWanted(const Platform::StackFrame& frame) const {
    if (m_help.m_pSymGetLineFromAddr64 == nullptr || frame.m_pFile == nullptr) return false;
    if (m_help.m_ignoredSources.count(LowerCaseLeaf(frame.m_pFile)) != 0) return false;
    if (!KnowsModule(frame)) return !m_help.m_bRequireModuleInfo;
    return !m_help.m_bFilterModules || m_help.m_ignoredModules.count(LowerCase(frame.m_pModule)) == 0;
  }

  bool KnowsModule(const Platform::StackFrame& frame) const {
    return m_help.m_pSymGetModuleInfo64 != nullptr && frame.m_pModule != nullptr;
  }

  std::string FunctionOf(const Platform::StackFrame& frame) const {
    if (m_help.m_pSymGetSymFromAddr64 != nullptr && frame.m_pFunction != nullptr) return frame.m_pFunction;
    const std::uint64_t offset = frame.m_uPlace - frame.m_uBase;
    if (KnowsModule(frame)) return std::string(frame.m_pModule) + "+" + std::to_string(offset);
    if (frame.m_uBase == 0) return std::string();
    return "0x" + Hexadecimal(frame.m_uBase) + "+" + Hexadecimal(offset);
  }

  void Append(const Platform::StackFrame& frame, FrameNote& note) {
    FrameVariables found;
    found.m_pContext = &m_help;
    if (m_bVariables && frame.m_pView != nullptr)
      Platform::ReadFrameVariables(*m_help.m_pProcess, frame, Platform::VariableSink{&TakeVariable, &found});
    if (note.m_uPlace != frame.m_uPlace || note.m_sTypes != found.m_sTypes || !HasSameCircumstances(note))
      MakeTable(frame, std::move(found.m_sTypes), note);
    m_spFrames->push_back(CodeContext::Sharing(note.m_spTable, std::move(found.m_variables)));
  }

  // Compares texts with those of an earlier walk once, not for each frame.
  bool HasSameCircumstances(const FrameNote& note) {
    if (note.m_spCircumstances == m_spCircumstances) return true;
    if (!note.m_spCircumstances || *note.m_spCircumstances != *m_spCircumstances) return false;
    m_spCircumstances = note.m_spCircumstances;
    return true;
  }

  void MakeTable(const Platform::StackFrame& frame, std::string types, FrameNote& note) const {
    const auto table = boost::make_shared<AlertData>(*m_spCircumstances);
    (*table)[sMODULE];
    (*table)[CodeContext::sFUNCTION];
    (*table)[CodeContext::sFILE] = frame.m_pFile;
    (*table)[CodeContext::sLINE] = std::to_string(frame.m_iLine);
    SetOrErase(*table, sMODULE, KnowsModule(frame) ? frame.m_pModule : std::string());
    SetOrErase(*table, CodeContext::sFUNCTION, FunctionOf(frame));
    if (!types.empty()) (*table)[sVARIABLE_TYPES] = types;
    note.m_spTable = table;
    note.m_sTypes.swap(types);
    note.m_spCircumstances = m_spCircumstances;
    note.m_uPlace = frame.m_uPlace;
  }

  const DebugHelp& m_help;
  const DebugHelp::Frames m_spFrames;
  const std::size_t m_uMaxFrames;
  const bool m_bVariables;
  // The same for all frames; gathered before any lock is held.
  boost::shared_ptr<const AlertData> m_spCircumstances;
  std::vector<std::uint64_t> m_seen;  // in order, as nearly all of them come
};

DebugHelpTrouble DebugHelp::GetMissingForWalk() const {
  DebugHelpTrouble trouble;
  TellIfMissing(&DebugHelp::m_pStackWalk64, trouble);
  TellIfMissing(&DebugHelp::m_pSymFunctionTableAccess64, trouble);
  TellIfMissing(&DebugHelp::m_pSymGetModuleBase64, trouble);
  return trouble;
}

bool DebugHelp::CanReadVariables() const {
  return m_pSymSetContext != nullptr && m_pSymEnumSymbols != nullptr && m_pSymGetTypeInfo != nullptr;
}

boost::shared_ptr<std::vector<CodeContext>> DebugHelp::CreateCallStack(int maxFrames) {
  return CreateCallStack(nullptr, maxFrames);
}

boost::shared_ptr<std::vector<CodeContext>> DebugHelp::CreateCallStack(const CONTEXT& context,
                                                                       int maxFrames) {
  return CreateCallStack(&context, maxFrames);
}

DebugHelp::Frames DebugHelp::CreateCallStack(const CONTEXT* context, int maxFrames) {
  const DebugHelpTrouble trouble = GetMissingForWalk();
  trouble.Tell();
  if (!trouble.m_missing.empty()) return Frames();
  // Variables are read whatever is in them, on threads that have traps for just that.
  const Platform::HoldFloatTraps untrapped;
  DebugHelpWalk walk(*this, maxFrames);
  // Whoever is killed with the mutex held would keep all others from raising.
  const Platform::HoldKill alive;
  const Lock lock(s_mutex);
  const DebugHelpLife::Busy busy;
  const QuietThread quiet;
  if (m_pProcess != nullptr && !walk.IsFull())
    Platform::WalkStack(*m_pProcess, context, &DebugHelpWalk::TakeFrame, &walk);
  return walk.Result();
}

}  // namespace MSWindows
