// Callbacks as tasks: any function or member function can be the work of a Thread.
//
// Contract: a task shares its callback, which must not be null, and keeps a copy of the argument. Each run calls
// the callback once; what that throws passes, and so ends the thread with an error. The stop of the thread isn't
// looked at.
// Thread safety: that of what is called.
//
//   boost::shared_ptr<Callback> callback(new MethodCallback<Probe>(&probe, &Probe::Calibrate));
//   Thread::Create("Calibration")->Start(boost::shared_ptr<Task>(new CallbackTask(callback)));
#ifndef INFRASTRUCTURE_OXACORE_CALLBACKTASK_H
#define INFRASTRUCTURE_OXACORE_CALLBACKTASK_H

#include <Infrastructure/OxaCore/Callback.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Thread.h>

#include <boost/shared_ptr.hpp>
#include <type_traits>
#include <utility>

namespace Oxa::Core {

/// Calls a Callback; its result is 0.
class OXACORE_API CallbackTask : public Task {
 public:
  /// `callback` is shared, and must not be null.
  explicit CallbackTask(boost::shared_ptr<Callback> callback);
  CallbackTask(const CallbackTask&) = default;
  CallbackTask& operator=(const CallbackTask&) = default;
  ~CallbackTask() override;
  int Run(TaskDirective& directive) override;

 private:
  boost::shared_ptr<Callback> m_spCallback;
};

/// Calls a CallbackRet; its result is the task's, as int.
template <class R>
class CallbackRetTask : public Task {
 public:
  /// `callback` is shared, and must not be null.
  explicit CallbackRetTask(boost::shared_ptr<CallbackRet<R>> callback) : m_spCallback(std::move(callback)) {}
  int Run(TaskDirective&) override { return static_cast<int>((*m_spCallback)()); }

 private:
  boost::shared_ptr<CallbackRet<R>> m_spCallback;
};

/// Calls a CallbackArg with the argument; its result is 0.
template <class A>
class CallbackArgTask : public Task {
 public:
  /// `callback` is shared, and must not be null; of `argument` a copy is kept.
  CallbackArgTask(boost::shared_ptr<CallbackArg<A>> callback, A argument)
      : m_spCallback(std::move(callback)), m_argument(std::forward<A>(argument)) {}
  int Run(TaskDirective&) override {
    (*m_spCallback)(m_argument);
    return 0;
  }

 private:
  boost::shared_ptr<CallbackArg<A>> m_spCallback;
  std::decay_t<A> m_argument;
};

/// Calls a CallbackRetArg with the argument; its result is the task's, as int.
template <class R, class A>
class CallbackRetArgTask : public Task {
 public:
  /// `callback` is shared, and must not be null; of `argument` a copy is kept.
  CallbackRetArgTask(boost::shared_ptr<CallbackRetArg<R, A>> callback, A argument)
      : m_spCallback(std::move(callback)), m_argument(std::forward<A>(argument)) {}
  int Run(TaskDirective&) override { return static_cast<int>((*m_spCallback)(m_argument)); }

 private:
  boost::shared_ptr<CallbackRetArg<R, A>> m_spCallback;
  std::decay_t<A> m_argument;
};

}  // namespace Oxa::Core

#endif
