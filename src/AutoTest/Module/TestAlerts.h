// Errors, warnings and handlers of errors that the self-tests of error handling raise and register.
#ifndef OXACORE_AUTOTEST_MODULE_TESTALERTS_H
#define OXACORE_AUTOTEST_MODULE_TESTALERTS_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Warning.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

namespace Oxa::Core::ModuleTests {

class BasicError : public ErrorClass<BasicError, LogicError> {
 public:
  explicit BasicError(const std::string& message) : ErrorClass(message) {}
};

class CriticalError : public ErrorClass<CriticalError, OSError> {
 public:
  explicit CriticalError(const std::string& message) : ErrorClass(message) { SetSeverity(eCRITICAL); }
};

class BasicWarning : public Warning {
 public:
  explicit BasicWarning(const std::string& message) : Warning(message) {}
};

/// Forgot to say how it is thrown.
class SlicedError : public Error {
 public:
  explicit SlicedError(const std::string& message) : Error(eERROR) {
    SetData(sMESSAGE, message);
    AppendInheritance(typeid(SlicedError));
  }
};

class NumberError : public ErrorClass<NumberError, HardwareError> {
 public:
  explicit NumberError(int number) : ErrorClass(AlertMessage("Number %1%", number)) {}
};

class DerivedNumberError : public ErrorClass<DerivedNumberError, NumberError> {
 public:
  DerivedNumberError(int number, const std::string& what) : ErrorClass(number) {
    SetData(sMESSAGE, GetData(sMESSAGE) + " of " + what);
  }
};

class HandledBase : public ErrorClass<HandledBase, Error> {
 public:
  explicit HandledBase(const std::string& message) : ErrorClass(eERROR) { SetData(sMESSAGE, message); }
};

/// Its inheritance begins with its own base, so that no handler of the host is asked.
class HandledError : public ErrorClass<HandledError, HandledBase> {
 public:
  explicit HandledError(const std::string& message) : ErrorClass(message) {
    SetData(sINHERITANCE, std::string(typeid(HandledBase).name()) + "=>" + typeid(HandledError).name());
  }
};

/// Its own raise raises the same class again.
class RecursiveError : public ErrorClass<RecursiveError, LogicError> {
 public:
  RecursiveError() : ErrorClass("recursion " + std::to_string(sm_iRecursionCount)) { ++sm_iRecursionCount; }

  inline static thread_local int sm_iRecursionCount = 0;  // each thread that runs the test has its own

 protected:
  boost::shared_ptr<std::vector<CodeContext>> CreateCallStack() override {
    OXA_RAISE_ERROR("Oxa.Core.Test.ErrorHandling", RecursiveError());
    return {};
  }
};

/// A handler of `Class` as long as it lives. It writes down what it is told, under its name, and answers as it was
/// asked to.
template <class Class>
class HandlerEntry {
 public:
  HandlerEntry(std::vector<std::string>& calls, const std::string& name, bool accepts)
      : m_spHandler(new Handler(calls, name, accepts)) {
    AlertManager::Instance()->AddErrorHandler(typeid(Class).name(), m_spHandler);
  }
  HandlerEntry(const HandlerEntry&) = delete;
  HandlerEntry& operator=(const HandlerEntry&) = delete;
  ~HandlerEntry() { AlertManager::Instance()->RemoveErrorHandler(typeid(Class).name(), m_spHandler); }

 private:
  class Handler : public ErrorHandler {
   public:
    Handler(std::vector<std::string>& calls, const std::string& name, bool accepts)
        : m_calls(calls), m_sName(name), m_bAccepts(accepts) {}

    bool Handle(Error&) override {
      m_calls.push_back(m_sName + " asked");
      return m_bAccepts;
    }
    void HandledByPrior(Error&) override { m_calls.push_back(m_sName + " by prior"); }
    void HandledByLatter(Error&) override { m_calls.push_back(m_sName + " by latter"); }

   private:
    std::vector<std::string>& m_calls;
    std::string m_sName;
    bool m_bAccepts;
  };

  boost::shared_ptr<ErrorHandler> m_spHandler;
};

}  // namespace Oxa::Core::ModuleTests

#endif
