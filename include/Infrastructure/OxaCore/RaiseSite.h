// The macros that stand where failures are raised and forwarded. All that they do is test and call.
//
//   OXA_RAISE_ERROR("Acme.Probe.Read", ProbeGone(3));
//   OXA_RAISE_ERROR_IN_PLACE("Acme.Probe.Read", ProbeGone(3));   // a handler may settle it: then it returns
//   OXA_RAISE_WARNING("Acme.Probe.Read", ProbeNoisy(3));
//
//   try { Read(path); } OXA_FORWARD_ERRORS
//   try { Read(path); } OXA_FORWARD_ERRORS_WITH_INFO(OXA_VARIABLE(path), OXA_INFO("Step", "calibration"))
//   try { Read(path); } OXA_FORWARD_ERRORS_WITH_INFO_AS("Acme.Probe.Read", OXA_VARIABLE(path))
//
// The forwarding macros are the catch clauses: whatever leaves the block leaves it as an Error with one more
// place on its unwind stack. Raises can return, so a function with a result needs a return behind the
// clauses.
//
// Thread safety: any thread may raise and forward; the locks that it meets are those of AlertManager.h.
#ifndef INFRASTRUCTURE_OXACORE_RAISESITE_H
#define INFRASTRUCTURE_OXACORE_RAISESITE_H

#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/Export.h>

#include <exception>
#include <initializer_list>
#include <sstream>
#include <string>

/// The full signature of the function in which it stands, as the compiler writes it.
#if defined(_MSC_VER)
#define OXA_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define OXA_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
#endif

namespace Oxa::Core {

class Error;
class Warning;

/// One detail of a place: a variable with its value, or an extra entry of the context table.
struct PlaceDetail {
  bool m_bVariable;      ///< a variable; else an entry of the table
  const char* m_pName;   ///< its name, which somebody else owns
  std::string m_sValue;  ///< its value as a text

  /// `value` is printed through a stream; one that can't be printed is left empty, since the failure that is
  /// being forwarded matters more. `name` must outlive the detail.
  template <class T>
  PlaceDetail(bool variable, const char* name, const T& value) : m_bVariable(variable), m_pName(name) {
    try {
      std::ostringstream text;
      text << value;
      m_sValue = text.str();
    } catch (...) {
      LetCancellationPass();
    }
  }

  /// For the clause that catches what went wrong with the value.
  OXACORE_API static void LetCancellationPass();
};

/// The dotted name under which an alert is raised. Null counts as empty.
class LogName {
 public:
  // The name isn't copied: a LogName lives as long as the call that it is made for.
  constexpr LogName(const char* name) : m_pName(name != nullptr ? name : "") {}
  LogName(const std::string& name) : m_pName(name.c_str()) {}
  /// Never null.
  const char* Get() const { return m_pName; }

 private:
  const char* m_pName;
};

/// A place in the code as the compiler knows it. Made by OXA_CODE_SITE; holds pointers to literals only.
class OXACORE_API CodeSite {
 public:
  /// None of the texts is copied.
  constexpr CodeSite(const char* file, int line, const char* buildTime, const char* signature)
      : m_pFile(file), m_iLine(line), m_pBuildTime(buildTime), m_pSignature(signature) {}

  /// The context of this place at this moment; an empty one without the memory for it.
  CodeContext MakeContext() const;

  /// Raises `error` here: see Error::RaiseError.
  void Raise(LogName logName, Error& error, bool inPlace) const;
  void Raise(LogName logName, Error&& error, bool inPlace) const;
  void Raise(LogName logName, Warning& warning) const;
  void Raise(LogName logName, Warning&& warning) const { Raise(logName, warning); }

  /// Adds this place to `error` and rethrows it.
  void Forward(Error& error, std::initializer_list<PlaceDetail> details = {}) const;
  /// The same but for the rethrow, which is the caller's next step: a rethrow costs by the frames that it leaves.
  void Pass(Error& error, std::initializer_list<PlaceDetail> details) const;
  /// Raises a StdException from `exception`, under `logName`.
  void Forward(const std::exception& exception, std::initializer_list<PlaceDetail> details = {},
               LogName logName = nullptr) const;
  /// Raises an UnknownError with an empty message for the exception that is being handled, under `logName`. The
  /// cancellation of a thread passes untouched.
  void ForwardUnknown(std::initializer_list<PlaceDetail> details = {}, LogName logName = nullptr) const;

  /// Reports a failed assertion; always false. See AssertFailed.
  bool FailAssertion(const char* condition) const;

 private:
  CodeContext MakeContext(std::initializer_list<PlaceDetail> details) const;
  bool Announce(Error& error, LogName logName, bool inPlace) const;

  const char* m_pFile;
  int m_iLine;
  const char* m_pBuildTime;
  const char* m_pSignature;
};

}  // namespace Oxa::Core

/// The place where this macro stands.
#define OXA_CODE_SITE ::Oxa::Core::CodeSite(__FILE__, __LINE__, __TIMESTAMP__, OXA_FUNCTION_SIGNATURE)

/// Raises the error that the last argument builds.
#define OXA_RAISE_ERROR(logName, ...) OXA_CODE_SITE.Raise(logName, __VA_ARGS__, false)
/// The same; a registered ErrorHandler may settle it, and the raise then returns.
#define OXA_RAISE_ERROR_IN_PLACE(logName, ...) OXA_CODE_SITE.Raise(logName, __VA_ARGS__, true)
/// Raises the warning that the last argument builds; always returns.
#define OXA_RAISE_WARNING(logName, ...) OXA_CODE_SITE.Raise(logName, __VA_ARGS__)

/// A local variable that is visible behind the try block, for OXA_FORWARD_ERRORS_WITH_INFO.
#define OXA_VARIABLE(variable) ::Oxa::Core::PlaceDetail(true, #variable, variable)
/// An extra key and value, for OXA_FORWARD_ERRORS_WITH_INFO.
#define OXA_INFO(key, value) ::Oxa::Core::PlaceDetail(false, key, value)

/// Catch clauses: every failure leaves the block as an Error with this place on its unwind stack.
#define OXA_FORWARD_ERRORS OXA_FORWARD_ERRORS_WITH_INFO()
/// The same, and the place carries the given OXA_VARIABLEs and OXA_INFOs.
#define OXA_FORWARD_ERRORS_WITH_INFO(...) OXA_FORWARD_ERRORS_WITH_INFO_AS(nullptr, __VA_ARGS__)
/// The same two, and what becomes an Error here gets the dotted log name. What is one already keeps its own.
#define OXA_FORWARD_ERRORS_AS(logName) OXA_FORWARD_ERRORS_WITH_INFO_AS(logName, )
/// With the log name and with values.
#define OXA_FORWARD_ERRORS_WITH_INFO_AS(logName, ...)            \
  catch (::Oxa::Core::Error & oxaError) {                        \
    OXA_CODE_SITE.Pass(oxaError, {__VA_ARGS__});                 \
    throw;                                                       \
  }                                                              \
  catch (::std::exception & oxaException) {                      \
    OXA_CODE_SITE.Forward(oxaException, {__VA_ARGS__}, logName); \
  }                                                              \
  catch (...) {                                                  \
    OXA_CODE_SITE.ForwardUnknown({__VA_ARGS__}, logName);        \
  }

#endif
