#include <Infrastructure/OxaCore/Memory.h>

namespace Oxa::Core::Memory {

MemoryLeakDetection::MemoryLeakDetection(int) {}
MemoryLeakDetection::~MemoryLeakDetection() = default;

MemoryLeakDetectOnOff::MemoryLeakDetectOnOff(int) {}
MemoryLeakDetectOnOff::~MemoryLeakDetectOnOff() = default;

}  // namespace Oxa::Core::Memory
