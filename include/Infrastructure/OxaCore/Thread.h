// Threads and tasks: a Task is work, a Thread runs it, a TaskDirective tells the work when to stop.
//
// Threads are made by Thread::Create and held by boost::shared_ptr. A thread that runs keeps itself alive:
// dropping the last reference neither stops nor destroys it. One that has ended may be started again. Nothing
// leaves a task but its result: an error that it throws is kept on the Thread (GetLastError), told to the
// listeners and logged.
//
// Thread safety: any thread may use any operation, except that a thread can't wait for itself. Failures: those of
// Condition pass through the waits. The machine's clock limits the waits: who sets it makes them longer or
// shorter.
// Locks that a caller can meet, in this order: the thread's state condition, then its mutex. OnThreadComplete runs
// with the condition held: another thread that waits for this one, stops or starts it, waits for the listener too.
//
//   class Watch : public Task {
//    public:
//     int Run(TaskDirective& directive) override {
//       while (!directive.TimedWaitForStopRequest(Elapse(1))) Look();
//       return 0;
//     }
//   };
//   ...
//   const boost::shared_ptr<Thread> thread = Thread::Create("Watch");
//   thread->Start(boost::shared_ptr<Task>(new Watch));
//   ...
//   if (!thread->Stop(Elapse(5))) Complain(thread->GetName());
#ifndef INFRASTRUCTURE_OXACORE_THREAD_H
#define INFRASTRUCTURE_OXACORE_THREAD_H

#include <Infrastructure/OxaCore/Condition.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/Notifications.h>
#include <Infrastructure/OxaCore/RefCountedObject.h>
#include <Infrastructure/OxaCore/Time.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <cstddef>
#include <string>

namespace Oxa::Core {

namespace Platform {
class NativeThread;
}

/// What a running task is handed: whether it is to stop.
class OXACORE_API TaskDirective {
 public:
  /// "TaskDirective::%1% called but wasn't implemented by the TaskDirective subclass".
  class OXACORE_API UnimplementedInterface : public ErrorClass<UnimplementedInterface, LogicError> {
   public:
    explicit UnimplementedInterface(const std::string& method);
    ~UnimplementedInterface() override;
  };

  TaskDirective() = default;
  TaskDirective(const TaskDirective&) = default;
  TaskDirective& operator=(const TaskDirective&) = default;
  virtual ~TaskDirective();

  /// Whether a stop has been asked for.
  virtual bool MustStop() = 0;

  /// Sleeps until a stop is asked for. Raises UnimplementedInterface ("Oxa.Core.TaskDirective") where a
  /// subclass has no such wait.
  virtual void WaitForStopRequest();

  /// The same for `timeout` at most; tells whether a stop has been asked for. False where the raise returns.
  virtual bool TimedWaitForStopRequest(const Elapse& timeout);

  /// The opposite of MustStop.
  bool KeepRunning() { return !MustStop(); }
};

/// A piece of work.
class OXACORE_API Task {
 public:
  Task() = default;
  Task(const Task&) = default;
  Task& operator=(const Task&) = default;
  virtual ~Task();

  /// Does the work; what it gives becomes the thread's result. Called on the thread that runs it. A task that
  /// may be stopped asks `directive` from time to time.
  virtual int Run(TaskDirective& directive) = 0;
};

/// A handle on one thread of the system at a time.
class OXACORE_API Thread : public RefCountedObject, public TaskDirective {
 public:
  /// Bits, so that one value can stand for several states. A thread is in exactly one of the first four.
  enum EState : int {
    eTHREAD_IDLE = 1,         ///< never started
    eTHREAD_RUNNING = 2,      ///< began, and the task hasn't ended
    eTHREAD_COMPLETED = 4,    ///< the task returned
    eTHREAD_ERROR = 8,        ///< ended by an error, was killed, or couldn't start
    eTHREAD_NOT_RUNNING = 13  ///< the three that aren't eTHREAD_RUNNING, as a mask
  };

  /// Values in between, below and above are allowed and count as the nearest that the system knows.
  enum EPriority : int {
    ePRIORITY_IDLE = 0,
    ePRIORITY_LOWEST = 3,
    ePRIORITY_BELOW_NORMAL = 4,
    ePRIORITY_NORMAL = 5,
    ePRIORITY_ABOVE_NORMAL = 6,
    ePRIORITY_HIGHEST = 7,
    ePRIORITY_TIME_CRITICAL = 10
  };

  /// "Attempted to run thread %1% with a NULL Task pointer".
  class OXACORE_API NullTaskPointer : public ErrorClass<NullTaskPointer, LogicError> {
   public:
    explicit NullTaskPointer(const std::string& thread);
    ~NullTaskPointer() override;
  };

  /// "Thread named %1% terminated by OS before thread ended".
  class OXACORE_API OSThreadTermination : public ErrorClass<OSThreadTermination, OSError> {
   public:
    explicit OSThreadTermination(const std::string& thread);
    ~OSThreadTermination() override;
  };

  /// "Thread named %1% killed by call to Thread::Kill()".
  class OXACORE_API ThreadKilled : public ErrorClass<ThreadKilled, LogicError> {
   public:
    explicit ThreadKilled(const std::string& thread);
    ~ThreadKilled() override;
  };

  /// Hears how threads end. Called on the thread that ends, or on the one that killed it or found it gone.
  class OXACORE_API Listener : public NotificationListener {
   public:
    Listener();
    ~Listener() override;

    /// The task returned. The thread's state condition is held: this must not wait for another thread that
    /// uses `thread`.
    virtual void OnThreadComplete(boost::shared_ptr<Thread> thread);

    /// The thread failed; its state is eTHREAD_ERROR a moment later, and nothing more is told of that. `error`
    /// lives as long as the call; keep a CloneUnraised.
    virtual void OnThreadError(boost::shared_ptr<Thread> thread, Error& error);
  };

  /// A new thread, not started. Without a `name` it is "OxaThread 0000", "OxaThread 0001" and so on, up to
  /// "OxaThread 10000", which is followed by "OxaThread 0000".
  static boost::shared_ptr<Thread> Create(const std::string& name);

  /// A running one is stopped first and waited for, 5 seconds at most. Always takes at least 100 ms.
  ~Thread() override;

  /// Runs `task` on a new thread of the system. False if there is none to be had: the state is eTHREAD_ERROR
  /// then. With a zero `timeout` true at once; the state may be the old one for a moment. Otherwise waits so
  /// long for eTHREAD_RUNNING and tells whether it was seen: a fast task may have passed through it already,
  /// and the answer is false then.
  /// Asserts that the thread isn't running and that there is a task. Without one, the thread begins and fails
  /// with NullTaskPointer.
  bool Start(boost::shared_ptr<Task> task, const Elapse& timeout = Elapse(0));

  /// Asks a running task to stop, and waits until it has, `timeout` at most. Tells whether it has; a zero
  /// `timeout` doesn't wait and gives true. Nothing is asked of a thread that hasn't begun yet.
  bool Stop(const Elapse& timeout = Elapse(0));

  /// Ends a running thread where it stands, as the last resort: destructors don't run, and every lock that it
  /// held stays held. Up to 10 seconds for a thread that is still starting; false if it doesn't get any
  /// further. The state is eTHREAD_ERROR then, with ThreadKilled as the error. Raises OSError
  /// ("Oxa.Core.Thread.Kill") if the system can't do it. `timeout` is for the state, as in Stop.
  /// The victim isn't ended while it is inside the library's own short locks. It must not hold the memory
  /// allocator's lock, which nobody can give back.
  bool Kill(const Elapse& timeout);

  /// Waits until the thread isn't running. Null waits without limit and gives true; otherwise tells whether it
  /// came to that within `*timeout`.
  bool WaitFor(const Elapse* timeout);

  /// The same for `count` of them; null entries are passed over. The first one that doesn't end in time makes
  /// it false at once. Asserts "0 != threads" and "count > 0".
  static bool WaitForAll(boost::shared_ptr<Thread>* threads, std::size_t count, Elapse* timeout);

  /// Waits for one of the states in `mask`. A state that the thread passes through quickly may be missed. All
  /// three assert "!IsCurrentThread()".
  void WaitForState(int mask);
  /// The same for `timeout` at most; tells whether it is in one of them.
  bool TimedWaitForState(int mask, const Elapse& timeout);
  /// Whether it is now.
  bool TryWaitForState(int mask);

  // Of this moment.
  EState GetState();
  bool IsState(int mask) const;
  bool IsRunning() const;     ///< eTHREAD_RUNNING
  bool HasBegun() const;      ///< running, completed or failed
  bool HasCompleted() const;  ///< eTHREAD_COMPLETED

  /// Whether it runs and the system knows of it. A thread that the system ended behind its back is
  /// eTHREAD_ERROR from here on, with OSThreadTermination as the error.
  bool IsAlive() const;

  /// Whether the caller runs on this thread. False if this isn't running.
  bool IsCurrentThread() const;

  /// What the task gave; -1 while it runs and after it failed.
  int GetResult() const;

  /// The error of the last run, or null.
  boost::shared_ptr<Error> GetLastError();

  /// The task of the last start, or null.
  boost::shared_ptr<Task> GetTask();

  /// The system's id of the thread of the last start; 0 before the first.
  unsigned long GetThreadID() const;
  static unsigned long GetCurrentId();

  /// Stable only while nobody calls SetName.
  const std::string& GetName() const;
  /// Debuggers see the new name from the next start on.
  void SetName(const std::string& name);

  /// What the next start asks for, in bytes; see SetStackSizeLimits.
  unsigned long GetStackSize() const;
  void SetStackSize(unsigned long size);

  /// As it was set last.
  EPriority GetPriority();
  /// For a running thread at once, otherwise from the next start on. What the system refuses to this process
  /// is remembered and has no effect.
  void SetPriority(EPriority priority);

  /// For threads that are made from now on.
  static void SetDefaultStackSize(unsigned long size);

  /// A thread's size is brought between the two when it starts. Asserts "minSize <= maxSize".
  static void SetStackSizeLimits(unsigned long minSize, unsigned long maxSize);

  /// After that it is multiplied and `offset` added, in 32 bits: this is what the system is asked for. What it
  /// gives may be more.
  static void SetStackSizeTransform(unsigned long offset, unsigned long multiplier);

  /// Takes a stop back that a task hasn't heard yet.
  void ResetStopFlag();

  /// Adding twice counts once. `listener` isn't owned.
  void AddListener(Listener& listener);
  void RemoveListener(Listener& listener);

  // For the task.
  bool MustStop() override;
  void WaitForStopRequest() override;
  bool TimedWaitForStopRequest(const Elapse& timeout) override;

 protected:
  /// Tells the waiting and, of a completed one, the listeners. Asserts that it is one state, and a new one.
  void SetState(EState state);

 private:
  class NotifyThreadComplete;
  class NotifyThreadError;
  class LastStep;

  Thread();

  static unsigned int Invoker(void* argument);
  unsigned int Invoke();
  unsigned int Run();
  Task* FindTask();
  void RunTask(Task& task);
  void FailBy(Error& error, const char* cause);
  void FailByUnknown(const char* cause);
  void LogErrorRaised(Error& error);
  void SetLastError(Error& error, bool notify);
  void KeepLastError(boost::shared_ptr<Error> error);
  void SetWindowsThreadName();

  using Handle = boost::shared_ptr<Platform::NativeThread>;
  bool StartNative(const boost::shared_ptr<Task>& task);
  bool RunNative(const Handle& native);
  Handle GetHandle() const;
  void SetHandle(const Handle& handle);
  unsigned int PlatformStackSize() const;
  void SetTask(const boost::shared_ptr<Task>& task);
  static int GetPlatformSpecificPriority(EPriority priority);

  void AwaitTaskStart() const;
  void KillNative(Platform::NativeThread& native);
  void BuryKilled();
  void BeginRun();
  void EndRun();
  std::string CopyOfName() const;

  std::atomic<EState> m_eState;        ///< written under m_stateCondition
  mutable Condition m_stateCondition;  ///< also guards m_hThread
  std::atomic<bool> m_bStopRequested;  ///< written under m_stateCondition
  mutable Mutex m_mutex;               ///< guards m_stackSize, m_name, m_spTask and m_ePriority; a leaf
  unsigned long m_stackSize;
  std::string m_name;
  boost::shared_ptr<Task> m_spTask;
  std::atomic<unsigned long> m_threadID;
  EPriority m_ePriority;
  std::atomic<int> m_result;
  std::atomic<bool> m_bTaskStarted;  ///< past the start-up of the run, about to call the task
  boost::shared_ptr<Error> m_spLastError;
  boost::shared_ptr<Thread> m_spSelf;  ///< keeps this alive as long as m_iRuns isn't 0
  boost::weak_ptr<Thread> m_wpThis;
  NotificationSupport m_listeners;
  Handle m_hThread;
  int m_iRuns;                   ///< runs whose last step is still to come: a restart may overtake it
  int m_iAwaited;                ///< states that somebody waits for; guarded by m_stateCondition
  std::atomic<bool> m_bKilling;  ///< Kill is at work, and it is for Kill to tell the end

  static Mutex& s_mutex;  ///< guards what follows
  static unsigned long s_defaultStackSize;
  static unsigned long s_minStackSize;
  static unsigned long s_maxStackSize;
  static unsigned long s_stackSizeMultiplier;
  static unsigned long s_stackSizeOffset;
};

}  // namespace Oxa::Core

#endif
