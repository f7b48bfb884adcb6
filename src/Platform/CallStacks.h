// Call stacks of this process: frames with their source line, function and module.
//
// All of it rests on a library that is loaded when it is first needed. No function raises or throws, takes a lock of
// ours or logs. One thread at a time may use a reader.
#ifndef OXACORE_PLATFORM_CALLSTACKS_H
#define OXACORE_PLATFORM_CALLSTACKS_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/Variables.h"

namespace Oxa::Core::Platform {

struct FrameView;

/// Base of what a sink wants to remember of a function at a place in the code.
class PlaceNote {
 public:
  PlaceNote() = default;
  PlaceNote(const PlaceNote&) = delete;
  PlaceNote& operator=(const PlaceNote&) = delete;
  virtual ~PlaceNote() = default;
};

/// What is known of one frame. The texts are good while the frame is being looked at.
struct StackFrame {
  std::uint64_t m_uPlace;  ///< the instruction: of a caller the one behind its call
  std::uint64_t m_uFrame;  ///< the frame's address: where the stack was before the call of the function
  bool m_bInlined;         ///< of a function that the compiler put into the one of the next frame
  const char* m_pFile;     ///< null: no line is known
  int m_iLine;
  const char* m_pModule;     ///< name without folder, suffix and version; null: in no module that is known
  std::uint64_t m_uBase;     ///< where the module begins; 0 where nothing is known of it
  const char* m_pFunction;   ///< qualified, without parameters; null: not known
  const FrameView* m_pView;  ///< what the frame's variables can be read by; null: they can't
  /// The sink's, empty at first: other frames of the same function at the same place find here what it put in. It goes
  /// when what is known of the place goes: as soon as modules come or go, and where too much is known. One reader has
  /// one kind of sink.
  std::shared_ptr<PlaceNote>* m_pNote;
};

/// Called for each frame, innermost first. False: that is enough.
using FrameSink = bool (*)(const StackFrame& frame, void* argument);

/// Reads the running process.
class SymbolReader;

/// The file that the library for symbols is looked for by; empty where the system has none.
const char* SymbolLibraryName() noexcept;

/// What stands for one of the functions that call stacks are made by, in a library that has been loaded: null if any
/// of what it rests on is missing there. docs/callstacks.md has the table.
const void* FindSymbolFunction(HINSTANCE library, const char* function) noexcept;

/// Gives the form in which the signature of a function is shown.
using FunctionForm = std::string (*)(const char* signature);

/// Begins to read this process. Debug data is looked for in each module, then where the folders of `searchPath`
/// (separated by ";") and the system keep it, and not before a frame needs it. `library` has to outlive the reader.
/// Null if that fails.
SymbolReader* OpenSymbolReader(HINSTANCE library, const char* searchPath, FunctionForm form) noexcept;

/// Null is ignored.
void CloseSymbolReader(SymbolReader* reader) noexcept;

/// Hands the frames of a stack to `sink`, from `context` on, or from the caller of this function on where that is
/// null. The stack has to stand meanwhile. A fault within ends the walk, and the reader begins anew with the next one,
/// without the debug data that the fault was in; what had been read isn't given back. After eight of them nothing is
/// walked any more. Nothing may be thrown out of `sink`. False if it was a fault that ended it, or nothing was walked.
/// Kills and cancellations of this thread wait.
bool WalkStack(SymbolReader& reader, const CONTEXT* context, FrameSink sink, void* argument) noexcept;

/// For a sink: hands the variables of `frame` to another one, those of inner blocks first; of several with one name
/// only the innermost. May throw std::bad_alloc and what `sink` throws, which must not leave the sink of the frames.
void ReadFrameVariables(SymbolReader& reader, const StackFrame& frame, const VariableSink& sink);

}  // namespace Oxa::Core::Platform

#endif
