// For objects that live until the process ends: who makes them, and marks for a leak detector.
//
// Thread safety: that of boost::shared_ptr. The markers do nothing in this build, and nothing in the library
// looks at them.
// Failures: what the constructor of the object throws, and std::bad_alloc, pass.
//
//   static const Memory::GlobalAllocator<Ledger> s_ledger;
//   s_ledger.GetPtr()->Enter(sample);
#ifndef INFRASTRUCTURE_OXACORE_MEMORY_H
#define INFRASTRUCTURE_OXACORE_MEMORY_H

#include <Infrastructure/OxaCore/Export.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

namespace Oxa::Core::Memory {

/// While one stands, its scope's allocations are not to be counted as leaks by a leak detector.
class OXACORE_API MemoryLeakDetection {
 public:
  /// `mode` 1 marks the scope.
  explicit MemoryLeakDetection(int mode);
  virtual ~MemoryLeakDetection();
};

/// Tells a leak detector to stop or to go on counting.
class OXACORE_API MemoryLeakDetectOnOff {
 public:
  /// `mode` 1 stops, 0 goes on.
  explicit MemoryLeakDetectOnOff(int mode);
  virtual ~MemoryLeakDetectOnOff();
};

OXACORE_API extern const MemoryLeakDetectOnOff DisableLeak;  ///< made with 1
OXACORE_API extern const MemoryLeakDetectOnOff EnableLeak;   ///< made with 0

/// Makes a T that is to live until the process ends, with no mark of a leak. Copies share it.
template <class T>
class GlobalAllocator {
 public:
  /// Makes the object with its default constructor.
  GlobalAllocator() {
    MemoryLeakDetection unmarked(1);
    m_spObject = boost::make_shared<T>();
  }
  GlobalAllocator(const GlobalAllocator&) = default;
  GlobalAllocator& operator=(const GlobalAllocator&) = default;
  virtual ~GlobalAllocator() = default;

  /// The object, shared.
  boost::shared_ptr<T> GetPtr() const { return m_spObject; }

 private:
  boost::shared_ptr<T> m_spObject;
};

}  // namespace Oxa::Core::Memory

#endif
