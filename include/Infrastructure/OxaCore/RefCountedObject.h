// A base class with a count of its users that can be waited for.
//
// The count only counts: nothing is deleted when it falls to 0. The owner polls it and deletes.
//
// Thread safety: every operation may be called from any thread. Locks: none. Failures: none; a count that can't be is
// asserted.
//
//   class Task : public RefCountedObject { ... };
//   task.AddRef();                                       // one more thread uses it
//   ...
//   task.Release();                                      // and that thread touches it no more
//   ...
//   if (task.PollForZeroRefCount(Elapse(2), Elapse(100, Elapse::MilliSeconds))) delete &task;
#ifndef INFRASTRUCTURE_OXACORE_REFCOUNTEDOBJECT_H
#define INFRASTRUCTURE_OXACORE_REFCOUNTEDOBJECT_H

#include <Infrastructure/OxaCore/Export.h>

#include <atomic>
#include <cstdint>

namespace Oxa::Core {

class Elapse;

/// Base of objects that count their users. A new object has none.
class OXACORE_API RefCountedObject {
 public:
  RefCountedObject();

  RefCountedObject(const RefCountedObject&) = delete;
  RefCountedObject& operator=(const RefCountedObject&) = delete;

  /// Asserts that the count is 0.
  virtual ~RefCountedObject();

  /// One user more; gives the new count.
  virtual int AddRef();

  /// One user less; gives the new count. Asserts that it has not fallen below 0. The count is the last thing
  /// that is touched: an owner that sees 0 may delete the object.
  virtual int Release();

  /// The count at this moment.
  int GetRefCount() const;

  /// Waits until the count is 0 or `timeout` is over, looking at it every `pollInterval`; tells whether the
  /// count is 0 at the end. Every look is followed by a sleep, also the last one: a call takes at least one
  /// `pollInterval`. The end is a moment of the wall clock: whoever sets that meanwhile makes the wait longer or
  /// shorter.
  bool PollForZeroRefCount(const Elapse& timeout, const Elapse& pollInterval);

 private:
  std::atomic<std::int32_t> m_refCount;
};

}  // namespace Oxa::Core

#endif
