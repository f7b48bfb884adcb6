// Errors: how a failure is raised, told, settled in place, thrown, forwarded and survived.
//
// Raising and throwing are two steps. OXA_RAISE_ERROR builds the place and the error and calls RaiseError,
// which records a call stack, tells the listeners and the in-place handlers on the raising thread, and then
// throws a copy by value. The object in flight hands a raised mark from copy to copy; when the last holder is
// destroyed the listeners hear that the error was handled.
//
// A raise can RETURN: while the library unloads, while the process exits after a fatal error, and when a
// handler settles an error that was raised in place. The code after a raise must give a defined result.
//
// Thread safety: an error belongs to one thread at a time. Errors that cross threads (through
// std::exception_ptr, or a Clone) are counted for the thread that raised them until they are destroyed. So keep
// errors that are to be looked at later as unraised copies (CloneUnraised): the tenth raise that is still alive
// on a thread is taken for an endless recursion.
//
//   class ProbeGone : public ErrorClass<ProbeGone, HardwareError> {
//    public:
//     explicit ProbeGone(int channel) : ErrorClass(AlertMessage("Probe %1% is gone", channel)) {}
//   };
//   ...
//   OXA_RAISE_ERROR("Acme.Probe.Read", ProbeGone(3));
//   return 0.0;  // reached when the raise returns
#ifndef INFRASTRUCTURE_OXACORE_ERROR_H
#define INFRASTRUCTURE_OXACORE_ERROR_H

#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/AlertMessage.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/RaiseSite.h>

#include <boost/shared_ptr.hpp>
#include <exception>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace Oxa::Core {

class Error;

/// Live raises on one thread at which a raise is taken for an endless recursion and halted.
constexpr int g_iMAX_ERROR_RECURSION_DEPTH = 10;

/// One raise that has not been handled yet, linked into the library's list of them. Internal to Error.
struct LiveRaise {
  LiveRaise* m_pPrevious = nullptr;  ///< its neighbour in the list
  LiveRaise* m_pNext = nullptr;      ///< the same
  Error* m_pError = nullptr;         ///< who holds the raised mark
  unsigned long m_ulThread = 0;      ///< the thread that raised; 0: not linked
  bool m_bFirst = false;             ///< raised while its thread had no other live raise
};

/// An alert that stops the current operation; thrown by value, and only by its own Throw.
class OXACORE_API Error : public AlertInfo, public std::exception {
 public:
  /// "Inheritance": key of the decorated class names, base first, joined by "=>".
  static const std::string& sINHERITANCE;

  /// Without a category, a message or a place.
  explicit Error(ESeverity severity);

  /// An error rebuilt from a record; takes deep copies. Category and inheritance stay as recorded.
  Error(const AlertData& data, const std::vector<CodeContext>& callStack,
        const std::vector<CodeContext>& unwindStack);

  /// Takes the raised mark over from `other`; see Copy.
  Error(const Error& other);
  Error& operator=(const Error& other);

  /// Tells the listeners that the error was handled, if this object holds the raised mark and is not fatal.
  ~Error() override;

  std::string XMLElementName() override;

  /// A new object of the most derived class that shares this one's data and takes its raised mark.
  virtual boost::shared_ptr<Error> Clone();

  /// The same without the raised mark, which stays where it is: for errors that are kept after they are handled.
  boost::shared_ptr<Error> CloneUnraised();

  /// Raises this error at the place of `context`, under the dotted name `logName`. Throws a copy of the most
  /// derived class unless the library unloads, the process exits after a fatal error, or `inPlace` is true
  /// and a handler accepts. A second raise of one object only throws.
  /// Throws a plain Error, a copy of the thread's first live error, when raises nest
  /// g_iMAX_ERROR_RECURSION_DEPTH deep.
  void RaiseError(const CodeContext& context, const std::string& logName, bool inPlace);

  /// Calls OnRethrow and rethrows the exception that is being handled. Only for catch clauses.
  void Rethrow();

  /// Takes over data and stacks (shared) and the fatal mark of `other`. With `transferRaised` the raised mark
  /// moves here; without it this object ends up not raised. An error that this object held the mark of before
  /// is handled by being replaced.
  void Copy(const Error& other, bool transferRaised);

  /// The text under sMESSAGE; valid until that is set anew.
  const char* what() const noexcept override;

 protected:
  /// Throws a copy. This one is reached by a class that forgot to override it: it warns, and throws an Error.
  virtual void Throw();

  /// Called by Rethrow before the exception goes on. Does nothing here.
  virtual void OnRethrow();

  /// The current call stack, at most 100 frames, or null where none can be had.
  virtual boost::shared_ptr<std::vector<CodeContext>> CreateCallStack();

  /// Whether this object holds the raised mark.
  bool GetRaisedStatus() const;

  /// Appends "=>" and the decorated name of `type` to the inheritance.
  void AppendInheritance(const std::type_info& type) noexcept;

  /// Sets category and message of a category class; an empty message leaves "No Message".
  void SetCategoryAndMessage(const std::string& category, const std::string& message) noexcept;

 private:
  friend class AlertManager;
  friend class CodeSite;
  friend class LiveRaises;

  // What a raise does between taking its place and throwing; false if it doesn't throw. Apart from the throw, which
  // each frame with objects to destroy makes slower.
  bool Announce(const std::string& logName, bool inPlace);

  void TakeRaisedMark(const Error& other) noexcept;
  void EndRaise() noexcept;

  mutable bool m_bRaised = false;  // mutable: a copy takes the mark out of its source
  bool m_bFatal = false;
  mutable LiveRaise m_liveRaise;
};

/// Gives `Derived` its Clone, its Throw and its link in the inheritance, and passes all arguments to `Base`.
/// `Base` is Error, a category, or another class made this way.
template <class Derived, class Base>
class ErrorClass : public Base {
 public:
  /// A copy of class `Derived`, with the raised mark.
  boost::shared_ptr<Error> Clone() override {
    return boost::shared_ptr<Error>(new Derived(static_cast<const Derived&>(*this)));
  }

 protected:
  // A single argument of this class means a copy, also for a derived class that writes its own copy constructor.
  template <class... Arguments, class = std::enable_if_t<sizeof...(Arguments) != 1 ||
                                                         !(std::is_base_of_v<ErrorClass, Arguments> && ...)>>
  explicit ErrorClass(const Arguments&... arguments) : Base(arguments...) {
    this->AppendInheritance(typeid(Derived));
  }
  ErrorClass(const ErrorClass&) = default;
  ErrorClass& operator=(const ErrorClass&) = default;
  /// An error rebuilt from a record.
  ErrorClass(const AlertData& data, const std::vector<CodeContext>& callStack,
             const std::vector<CodeContext>& unwindStack)
      : Base(data, callStack, unwindStack) {}

  /// Throws a copy of class `Derived`.
  void Throw() override { throw Derived(static_cast<const Derived&>(*this)); }
};

/// Declares a category: a class directly on Error with a text under AlertInfo::sCATEGORY.
#define OXA_DECLARE_ERROR_CATEGORY(Class)                                   \
  class OXACORE_API Class : public ErrorClass<Class, Error> {               \
   public:                                                                  \
    /** The category's text. */                                             \
    static const std::string& sCATEGORY;                                    \
    explicit Class(const std::string& message);                             \
    /** An error rebuilt from a record. */                                  \
    Class(const AlertData& data, const std::vector<CodeContext>& callStack, \
          const std::vector<CodeContext>& unwindStack);                     \
    Class(const Class&) = default;                                          \
    Class& operator=(const Class&) = default;                               \
    ~Class() override;                                                      \
  }

OXA_DECLARE_ERROR_CATEGORY(LogicError);     ///< "Logic": a mistake of the program
OXA_DECLARE_ERROR_CATEGORY(IOError);        ///< "I/O"
OXA_DECLARE_ERROR_CATEGORY(OSError);        ///< "OperatingSystem"
OXA_DECLARE_ERROR_CATEGORY(HardwareError);  ///< "Hardware"
OXA_DECLARE_ERROR_CATEGORY(UnknownError);   ///< "Unknown"

#undef OXA_DECLARE_ERROR_CATEGORY

}  // namespace Oxa::Core

#endif
