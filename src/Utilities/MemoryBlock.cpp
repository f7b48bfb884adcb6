#include <Infrastructure/OxaCore/MemoryBlock.h>

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>

namespace Oxa::Core {

namespace {

constexpr char g_LOG_NAME[] = "Oxa.Core.MemoryBlock";
constexpr char g_FAILED_ALLOCATION[] = " byte memory block";

using Count = std::atomic<std::int32_t>;
constexpr unsigned long long g_COUNT_SIZE = 4;
static_assert(sizeof(Count) == g_COUNT_SIZE, "the count stands in the first 4 bytes");
constexpr unsigned long long g_MOST = std::numeric_limits<unsigned long long>::max() - g_COUNT_SIZE;

/// The sum of `size` and the count's bytes as text, also where the sum has 65 bits: those from 2^64 =
/// 18446744073709551616 on differ in the last digit only.
std::string TotalAsText(unsigned long long size) {
  if (size <= g_MOST) return std::to_string(size + g_COUNT_SIZE);
  return "1844674407370955161" + std::to_string(6 + (size + g_COUNT_SIZE));
}

void* AllocateWithCount(unsigned long long size) {
  return size <= g_MOST ? std::malloc(static_cast<std::size_t>(size + g_COUNT_SIZE)) : nullptr;
}

}  // namespace

MemoryBlock::MemoryBlock(unsigned long long size)
    : m_pAllocation(nullptr), m_pBlock(nullptr), m_pCount(nullptr), m_ullSize(0) {
  if (size > 0) Allocate(size);
}

MemoryBlock::MemoryBlock(const MemoryBlock& other) { Share(other); }

MemoryBlock& MemoryBlock::operator=(const MemoryBlock& other) {
  if (this != &other) {
    Release();
    Share(other);
  }
  return *this;
}

MemoryBlock::~MemoryBlock() { Release(); }

void MemoryBlock::Allocate(unsigned long long size) {
  m_pAllocation = AllocateWithCount(size);
  if (m_pAllocation == nullptr) {
    OXA_RAISE_ERROR(g_LOG_NAME, AllocationFailed(TotalAsText(size) + g_FAILED_ALLOCATION));
    return;
  }
  m_pCount = ::new (m_pAllocation) Count(1);
  m_pBlock = static_cast<unsigned char*>(m_pAllocation) + g_COUNT_SIZE;
  m_ullSize = size;
}

void MemoryBlock::Share(const MemoryBlock& other) noexcept {
  m_pAllocation = other.m_pAllocation;
  m_pBlock = other.m_pBlock;
  m_pCount = other.m_pCount;
  m_ullSize = other.m_ullSize;
  if (m_pCount != nullptr) m_pCount->fetch_add(1, std::memory_order_relaxed);
}

void* MemoryBlock::GetBlock() { return m_pBlock; }

unsigned long long MemoryBlock::Size() { return m_ullSize; }

bool MemoryBlock::IsNULL() { return m_pBlock == nullptr; }

void MemoryBlock::Release() {
  if (m_pCount != nullptr && m_pCount->fetch_sub(1, std::memory_order_acq_rel) == 1) std::free(m_pAllocation);
  m_pAllocation = nullptr;
  m_pBlock = nullptr;
  m_pCount = nullptr;
}

}  // namespace Oxa::Core
