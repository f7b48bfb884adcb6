// The errors that every part of the library and every host needs.
//
// Thread safety: that of every error (Error.h): one object belongs to one thread at a time. Locks: none.
// Failures: an error that can't be built for want of memory stays as far as it got; building the texts that are its
// arguments may throw std::bad_alloc. A value that can't be printed leaves a text that says so.
//
//   if (index >= m_probes.size()) OXA_RAISE_ERROR("Acme.Probes", IndexOutOfBounds(index, "m_probes", m_probes.size()));
//   if (gain <= 0) OXA_RAISE_ERROR("Acme.Probe.SetGain", InvalidParameter("gain", gain));
#ifndef INFRASTRUCTURE_OXACORE_COMMONERRORS_H
#define INFRASTRUCTURE_OXACORE_COMMONERRORS_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>

#include <cstddef>
#include <exception>
#include <sstream>
#include <string>

namespace Oxa::Core {

/// An assertion that failed; "%1%" is its message. The library only logs it, and never raises it.
class OXACORE_API AssertionFailure : public ErrorClass<AssertionFailure, LogicError> {
 public:
  explicit AssertionFailure(const std::string& message);
  ~AssertionFailure() override;
};

/// "NULL pointer variable named %1%".
class OXACORE_API NullPointer : public ErrorClass<NullPointer, LogicError> {
 public:
  explicit NullPointer(const std::string& variable);
  ~NullPointer() override;
};

/// "Caught std::exception - %1%": what OXA_FORWARD_ERRORS makes of a standard exception.
class OXACORE_API StdException : public ErrorClass<StdException, LogicError> {
 public:
  explicit StdException(const std::exception& cause);
  ~StdException() override;
};

/// "Out of bounds index of %1% for %2% with size of %3%".
class OXACORE_API IndexOutOfBounds : public ErrorClass<IndexOutOfBounds, LogicError> {
 public:
  IndexOutOfBounds(long long index, const std::string& container, unsigned long long size);
  ~IndexOutOfBounds() override;
};

/// "No function named %1% exists in %2%".
class OXACORE_API NoSuchFunction : public ErrorClass<NoSuchFunction, LogicError> {
 public:
  NoSuchFunction(const std::string& function, const std::string& module);
  ~NoSuchFunction() override;
};

/// "Attempt to allocate %1% failed".
class OXACORE_API AllocationFailed : public ErrorClass<AllocationFailed, OSError> {
 public:
  explicit AllocationFailed(const std::string& what);
  ~AllocationFailed() override;
};

/// A parameter that an operation refuses: "Invalid Parameter: " name " = " value.
class OXACORE_API InvalidParameter : public ErrorClass<InvalidParameter, LogicError> {
 public:
  static const std::string& sPARAM_NAME;   ///< "ParamName"
  static const std::string& sPARAM_VALUE;  ///< "ParamValue"

  /// The value reads "{Not Provided}".
  explicit InvalidParameter(const std::string& name);

  /// `value` is printed through a stream.
  template <class T>
  InvalidParameter(const std::string& name, const T& value) : InvalidParameter(Printed{name, Print(value)}) {}

  /// From a table that holds "ParamName" and, where there is one, "ParamValue". Its other entries are taken over
  /// as well, but for what tells the class: severity, category and inheritance.
  explicit InvalidParameter(const AlertData& data);

  ~InvalidParameter() override;

 private:
  struct Printed {
    std::string m_sName;
    std::string m_sValue;
  };
  explicit InvalidParameter(const Printed& parameter);
  void Construct(const std::string& name, const std::string& value);

  template <class T>
  static std::string Print(const T& value) {
    try {
      std::ostringstream text;
      text << value;
      return text.str();
    } catch (...) {
      return AlertMessageFailed();
    }
  }
};

}  // namespace Oxa::Core

#endif
