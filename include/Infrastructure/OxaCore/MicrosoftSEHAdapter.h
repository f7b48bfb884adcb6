// Machine faults as errors: a bad pointer, a division by zero or a stack overflow becomes an Error of a class named
// after it, raised on the faulting thread as if the faulting instruction had raised it.
//
// It gets the call stack of the fault, goes to the listeners and the log, and can be caught like any other error.
// This works on threads that have the translator: the one that loads the library, every Thread, and a thread of the
// host's own once it has called InstallSEHErrorTranslator. Faults on all others, and those that nobody catches, end the
// process by way of OxaUnhandledExceptionFilter. What a host has to be compiled with, which faults a system can tell,
// and how this gets along with signal handlers of the host: docs/hosts.md.
//
//   try {
//     *sample = probe->Read();
//   } catch (MSWindows::AccessViolation& fault) {
//     OXA_RAISE_ERROR("Acme.Probe", ProbeGone(fault.GetData(AlertInfo::sMESSAGE)));
//   }
//
// Thread safety: the functions work on the calling thread; SEHAdapter is for loading, initialising and unloading, on
// one thread at a time.
#ifndef INFRASTRUCTURE_OXACORE_MICROSOFTSEHADAPTER_H
#define INFRASTRUCTURE_OXACORE_MICROSOFTSEHADAPTER_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>
#include <Infrastructure/OxaCore/SystemTools.h>  // GetWindowsErrorMessage

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <vector>

namespace MSWindows {

/// What all faults have in common. Category "OperatingSystem", severity eCRITICAL.
///
/// Every forward of a fault is a new throw of its own class; an exception object made by the translator isn't thrown
/// on. Copies share what the pointers given to the constructor lead to: that is valid until the error is caught.
class OXACORE_API SEHError : public Oxa::Core::ErrorClass<SEHError, Oxa::Core::OSError> {
 public:
  /// An error without a message, of the fault that `pointers` stand for: the system's, or a host's own. Keeps the two
  /// pointers, not what they lead to; the caller keeps that standing for as long as anybody may ask for it. Raises
  /// nothing; std::bad_alloc may come.
  explicit SEHError(const _EXCEPTION_POINTERS& pointers);
  SEHError(const SEHError&) = default;
  SEHError& operator=(const SEHError&) = default;
  ~SEHError() override;

  /// Fault and registers, while the stack of the fault still stands: for listeners, and for the last report. Both are
  /// null once the error has been forwarded.
  _EXCEPTION_POINTERS& GetExceptionPointers();

 protected:
  /// Throws a clone of this error; the exception that is being handled ends.
  void OnRethrow() override;

  /// The stack of the fault, at most 100 frames, or null where none can be had.
  boost::shared_ptr<std::vector<Oxa::Core::CodeContext>> CreateCallStack() override;

  /// Sets the message: `messageTemplate` with the address of the faulting instruction, its low 32 bits, for "%1%".
  void ConstructMessage(const std::string& messageTemplate, const _EXCEPTION_POINTERS& pointers);

 private:
  _EXCEPTION_POINTERS m_pointers;
};

/// Each class of faults: made from the fault that `pointers` stand for, with the message that is told beside its name.
/// Both pointers have to lead to what a fault left; the record is read now, the rest as with SEHError. Raises nothing,
/// which RaiseError does; std::bad_alloc may come.
#define OXA_DECLARE_FAULT(Class)                                            \
  class OXACORE_API Class : public Oxa::Core::ErrorClass<Class, SEHError> { \
   public:                                                                  \
    explicit Class(const _EXCEPTION_POINTERS& pointers);                    \
    Class(const Class&) = default;                                          \
    Class& operator=(const Class&) = default;                               \
    ~Class() override;                                                      \
  }

OXA_DECLARE_FAULT(AccessViolation);  ///< "Illegal %1% virtual address %2$#x from %3$#x", all addresses whole
OXA_DECLARE_FAULT(ArrayBoundsExceeded);   ///< "Attempted to access out of bounds array element from %1$#x"
OXA_DECLARE_FAULT(DatatypeMisalignment);  ///< "Attempted to access misaligned data from %1$#x"
OXA_DECLARE_FAULT(
    FloatDenormalOperand);  ///< "One of the operands in a floating-point operation from %1$#x is too ..."
OXA_DECLARE_FAULT(FloatDivideByZero);      ///< "Floating point divide by zero attempted at %1$#x"
OXA_DECLARE_FAULT(FloatInvalidOperation);  ///< "Invalid floating point operation attempted at %1$#x"
OXA_DECLARE_FAULT(FloatOverflow);          ///< "Exceeded maximum exponent for float operation at %1$#x"
OXA_DECLARE_FAULT(FloatStackCheck);        ///< "Stack overflowed or underflowed due to operation at %1$#x"
OXA_DECLARE_FAULT(FloatUnderflow);         ///< "Result below minimum exponent for float operation at %1$#x"
OXA_DECLARE_FAULT(IllegalInstruction);     ///< "Attempted to execute an illegal instruction from %1$#x"
OXA_DECLARE_FAULT(InPageError);            ///< "Attempted to access unreachable page from %1$#x"
OXA_DECLARE_FAULT(IntDivideByZero);        ///< "Integer divide by zero attempted at %1$#x"
OXA_DECLARE_FAULT(IntOverflow);            ///< "Integer overflow due to operation at %1$#x"
OXA_DECLARE_FAULT(
    PrivateInstruction);  ///< "Attempted to execute instruction not allowed in current machine mode ..."
OXA_DECLARE_FAULT(StackOverflow);  ///< "Stack overflow detected at %1$#x"

#undef OXA_DECLARE_FAULT

/// Puts the translation of faults in force for the process, and takes it back. The library builds the one object while
/// it loads, which is its first use; Initialize of the library is another.
class OXACORE_API SEHAdapter {
 public:
  /// The one object. It is there from the load of the library to its unload, whatever its use count is.
  static SEHAdapter& Instance();

  SEHAdapter(const SEHAdapter&) = delete;
  SEHAdapter& operator=(const SEHAdapter&) = delete;
  ~SEHAdapter();

  /// The first use sets the error mode, the translator of the calling thread, and the filter. Counts the uses.
  void Initialize();

  /// Ends one use; the last one puts back what the first one found, the translator of the calling thread too. Further
  /// calls do nothing but count.
  void Shutdown();

 private:
  SEHAdapter();

  static SEHAdapter sm_Instance;

  int m_iUseCount = 0;
  std::uint32_t m_uPreviousErrorMode = 0;
  void* m_pPreviousTranslator = nullptr;
  void* m_pPreviousFilter = nullptr;
};

/// Lets the faults of the calling thread become errors from now on. Gives the translator that the thread had before,
/// null for none. Threads of the library have it; a thread that the host made itself calls this, once, if it wants it.
/// Also gives the thread an alternate stack for signals, until it ends, and lets the signals of faults through.
OXACORE_API void* InstallSEHErrorTranslator();

/// The translator: raises the error that belongs to `code`, under the log name "OS.Windows". An unknown code gives an
/// UnknownError without a message. Returns where the raise returns, and for a fault after which nothing can go on,
/// for which it calls the filter.
OXACORE_API void SEH_To_OXA_Translator(unsigned int code, _EXCEPTION_POINTERS* pointers);

}  // namespace MSWindows

/// The last chance of a process: writes a dump and a report and ends it. Called by the system's own last chance, on the
/// thread that failed; any thread may call. Null, or pointers that lead nowhere, stand for the place of the call.
/// Nothing leaves it; it gives 0 if it ever came back.
OXACORE_API long OxaUnhandledExceptionFilter(_EXCEPTION_POINTERS* pointers);

#endif
