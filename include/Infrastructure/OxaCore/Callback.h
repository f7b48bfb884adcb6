// Plain functions and member functions as objects, with or without an argument and a result.
//
// Contract: a callback object holds what it was given and nothing else. A "Method" form doesn't own its object,
// which must live as long as it is called; a "Global" form holds a plain function. Neither may be null. What
// the function throws passes.
// Thread safety: a callback has no state of its own; calls by several threads are as safe as the function is.
//
//   boost::shared_ptr<CallbackArg<int>> callback(new MethodCallbackArg<Probe, int>(&probe, &Probe::Read));
//   (*callback)(4);
#ifndef INFRASTRUCTURE_OXACORE_CALLBACK_H
#define INFRASTRUCTURE_OXACORE_CALLBACK_H

#include <Infrastructure/OxaCore/Export.h>

#include <utility>

namespace Oxa::Core {

// --- No argument, no result

/// Something to call.
class OXACORE_API Callback {
 public:
  Callback() = default;
  Callback(const Callback&) = default;
  Callback& operator=(const Callback&) = default;
  virtual ~Callback();
  /// The call.
  virtual void operator()() = 0;
};

/// Calls a plain function.
class OXACORE_API GlobalCallback : public Callback {
 public:
  /// `function` must not be null.
  explicit GlobalCallback(void (*function)()) : m_pFunction(function) {}
  GlobalCallback(const GlobalCallback&) = default;
  GlobalCallback& operator=(const GlobalCallback&) = default;
  ~GlobalCallback() override;
  void operator()() override;

 private:
  void (*m_pFunction)();
};

/// Calls a member function of `object`.
template <class T>
class MethodCallback : public Callback {
 public:
  /// `object` isn't owned. Neither may be null.
  MethodCallback(T* object, void (T::*method)()) : m_pObject(object), m_pMethod(method) {}
  void operator()() override { (m_pObject->*m_pMethod)(); }

 private:
  T* m_pObject;
  void (T::*m_pMethod)();
};

// --- No argument, a result

/// Something to call that answers.
template <class R>
class CallbackRet {
 public:
  CallbackRet() = default;
  CallbackRet(const CallbackRet&) = default;
  CallbackRet& operator=(const CallbackRet&) = default;
  virtual ~CallbackRet() = default;
  /// The call.
  virtual R operator()() = 0;
};

/// Calls a plain function.
template <class R>
class GlobalCallbackRet : public CallbackRet<R> {
 public:
  /// `function` must not be null.
  explicit GlobalCallbackRet(R (*function)()) : m_pFunction(function) {}
  R operator()() override { return m_pFunction(); }

 private:
  R (*m_pFunction)();
};

/// Calls a member function of `object`.
template <class T, class R>
class MethodCallbackRet : public CallbackRet<R> {
 public:
  /// `object` isn't owned. Neither may be null.
  MethodCallbackRet(T* object, R (T::*method)()) : m_pObject(object), m_pMethod(method) {}
  R operator()() override { return (m_pObject->*m_pMethod)(); }

 private:
  T* m_pObject;
  R (T::*m_pMethod)();
};

// --- An argument, no result

/// Something to call with an argument.
template <class A>
class CallbackArg {
 public:
  CallbackArg() = default;
  CallbackArg(const CallbackArg&) = default;
  CallbackArg& operator=(const CallbackArg&) = default;
  virtual ~CallbackArg() = default;
  /// The call.
  virtual void operator()(A argument) = 0;
};

/// Calls a plain function.
template <class A>
class GlobalCallbackArg : public CallbackArg<A> {
 public:
  /// `function` must not be null.
  explicit GlobalCallbackArg(void (*function)(A)) : m_pFunction(function) {}
  void operator()(A argument) override { m_pFunction(std::forward<A>(argument)); }

 private:
  void (*m_pFunction)(A);
};

/// Calls a member function of `object`.
template <class T, class A>
class MethodCallbackArg : public CallbackArg<A> {
 public:
  /// `object` isn't owned. Neither may be null.
  MethodCallbackArg(T* object, void (T::*method)(A)) : m_pObject(object), m_pMethod(method) {}
  void operator()(A argument) override { (m_pObject->*m_pMethod)(std::forward<A>(argument)); }

 private:
  T* m_pObject;
  void (T::*m_pMethod)(A);
};

// --- An argument and a result

/// Something to call with an argument that answers.
template <class R, class A>
class CallbackRetArg {
 public:
  CallbackRetArg() = default;
  CallbackRetArg(const CallbackRetArg&) = default;
  CallbackRetArg& operator=(const CallbackRetArg&) = default;
  virtual ~CallbackRetArg() = default;
  /// The call.
  virtual R operator()(A argument) = 0;
};

/// Calls a plain function.
template <class R, class A>
class GlobalCallbackRetArg : public CallbackRetArg<R, A> {
 public:
  /// `function` must not be null.
  explicit GlobalCallbackRetArg(R (*function)(A)) : m_pFunction(function) {}
  R operator()(A argument) override { return m_pFunction(std::forward<A>(argument)); }

 private:
  R (*m_pFunction)(A);
};

/// Calls a member function of `object`.
template <class T, class R, class A>
class MethodCallbackRetArg : public CallbackRetArg<R, A> {
 public:
  /// `object` isn't owned. Neither may be null.
  MethodCallbackRetArg(T* object, R (T::*method)(A)) : m_pObject(object), m_pMethod(method) {}
  R operator()(A argument) override { return (m_pObject->*m_pMethod)(std::forward<A>(argument)); }

 private:
  T* m_pObject;
  R (T::*m_pMethod)(A);
};

}  // namespace Oxa::Core

#endif
