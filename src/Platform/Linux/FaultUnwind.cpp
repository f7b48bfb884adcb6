#include "Platform/Linux/FaultUnwind.h"

#if defined(__x86_64__)

#include <link.h>
#include <malloc.h>
#include <unwind.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "Platform/Linux/FaultTables.h"

namespace Oxa::Core::Platform {

namespace {

constexpr int iALLOCATOR_DEPTH = 10;              // how deep below its entry the allocator faults
constexpr std::uintptr_t uALLOCATOR = 64 * 1024;  // more than the code of its functions takes
constexpr int iDEEPEST = 4096;
constexpr int iKEPT_REGISTERS[] = {3, 6, 12, 13, 14, 15};  // those that calls leave alone

// The code of the unwinder; nothing where it isn't a library of its own.
std::atomic<std::uintptr_t> s_uUnwinderLow{0};
std::atomic<std::uintptr_t> s_uUnwinderHigh{0};

template <class Function>
std::uintptr_t AddressOf(Function* function) noexcept {
  return reinterpret_cast<std::uintptr_t>(function);
}

// Not in a table: its addresses would be filled in when the library is loaded, and everything here has to work before.
bool IsAllocator(std::uintptr_t function) noexcept {
  using New = void* (*)(std::size_t);
  using Delete = void (*)(void*) noexcept;
  return function == AddressOf(&std::malloc) || function == AddressOf(&std::free) ||
         function == AddressOf(&std::calloc) || function == AddressOf(&std::realloc) ||
         function == AddressOf(&std::aligned_alloc) || function == AddressOf(&::posix_memalign) ||
         function == AddressOf(&::memalign) || function == AddressOf(&::malloc_trim) ||
         function == AddressOf(&::malloc_usable_size) ||
         function == AddressOf(static_cast<New>(&::operator new)) ||
         function == AddressOf(static_cast<New>(&::operator new[])) ||
         function == AddressOf(static_cast<Delete>(&::operator delete)) ||
         function == AddressOf(static_cast<Delete>(&::operator delete[]));
}

// The aligned ones are gone before they fault: they jump to a function that has no name, and stands among them.
bool StandsInAllocator(std::uintptr_t function) noexcept {
  const std::uintptr_t one = AddressOf(&std::malloc);
  const std::uintptr_t other = AddressOf(&::posix_memalign);
  const std::uintptr_t low = std::min(one, other);
  const std::uintptr_t high = std::max(one, other);
  return high - low <= uALLOCATOR && function >= low && function <= high;
}

struct Part {
  std::uintptr_t m_uLow;
  std::uintptr_t m_uHigh;
};

bool Overlaps(const Part& part, std::uintptr_t address) noexcept {
  return address >= part.m_uLow && address < part.m_uHigh;
}

// The part of `object` that holds the unwinder, unless it holds this function as well. It is found by a function that
// nobody intercepts; the sanitizers do so with those that throw.
int NoteUnwinder(dl_phdr_info* object, std::size_t, void*) {
  Part found = {0, 0};
  bool own = false;
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const auto& header = object->dlpi_phdr[i];
    if (header.p_type != PT_LOAD) continue;
    const std::uintptr_t low = object->dlpi_addr + header.p_vaddr;
    const Part part = {low, low + header.p_memsz};
    if (Overlaps(part, AddressOf(&_Unwind_GetRegionStart))) found = part;
    own = own || Overlaps(part, AddressOf(&NoteUnwinder));
  }
  if (found.m_uHigh == 0) return 0;
  if (!own) {
    s_uUnwinderLow.store(found.m_uLow);
    s_uUnwinderHigh.store(found.m_uHigh);
  }
  return 1;
}

// The walk from the trampoline up.
class Search {
 public:
  explicit Search(FaultState& state) noexcept : m_state(state) {}

  bool Run() noexcept {
    _Unwind_Backtrace(&Search::OnFrame, this);
    if (m_bSkipping) m_state.m_resume[CONTEXT::iPLACE] = 0;  // nothing is left to go on with
    return m_iDepth > 0 && !m_bAllocator;
  }

 private:
  static _Unwind_Reason_Code OnFrame(_Unwind_Context* context, void* self) {
    return static_cast<Search*>(self)->Look(*context) ? _URC_NO_REASON : _URC_NORMAL_STOP;
  }

  // Whether to go on.
  bool Look(_Unwind_Context& context) noexcept {
    int before = 0;
    const std::uintptr_t place = _Unwind_GetIPInfo(&context, &before) - (before == 0 ? 1 : 0);
    const std::uintptr_t stack = _Unwind_GetCFA(&context);
    if (m_iDepth == 0 && !IsInterrupted(place, stack)) return true;
    ++m_iDepth;
    const std::uintptr_t function = _Unwind_GetRegionStart(&context);
    if (m_iDepth <= iALLOCATOR_DEPTH && (IsAllocator(function) || StandsInAllocator(function))) {
      m_bAllocator = true;
      return false;
    }
    if (m_bSkipping) StartAt(context, place, stack);
    return m_iDepth < iDEEPEST && !LetsThrough(context, place, stack);
  }

  bool IsInterrupted(std::uintptr_t place, std::uintptr_t stack) const noexcept {
    return place == m_state.m_resume[CONTEXT::iPLACE] && stack == m_state.m_resume[CONTEXT::iSTACK];
  }

  void StartAt(_Unwind_Context& context, std::uintptr_t place, std::uintptr_t stack) noexcept {
    m_bSkipping = false;
    for (const int number : iKEPT_REGISTERS) m_state.m_resume[number] = _Unwind_GetGR(&context, number);
    m_state.m_resume[CONTEXT::iPLACE] = place;
    m_state.m_resume[CONTEXT::iSTACK] = stack;
  }

  // A frame without a table lets everything through, but says nothing about those above.
  bool LetsThrough(_Unwind_Context& context, std::uintptr_t place, std::uintptr_t stack) noexcept {
    const auto* const table = static_cast<const unsigned char*>(
        reinterpret_cast<const void*>(_Unwind_GetLanguageSpecificData(&context)));
    const bool roomy = stack >= m_state.m_uLowest;
    if (roomy && table == nullptr) return false;
    if (roomy && CoversPlace(table, _Unwind_GetRegionStart(&context), place)) return true;
    m_bSkipping = true;
    return false;
  }

  FaultState& m_state;
  int m_iDepth = 0;
  bool m_bSkipping = false;
  bool m_bAllocator = false;
};

struct Question {
  FaultState* m_pState;
  bool m_bAnswer;
};

void Ask(void* question) {
  Question& asked = *static_cast<Question*>(question);
  asked.m_bAnswer = Search(*asked.m_pState).Run();
}

}  // namespace

void PrepareUnwinding() noexcept { dl_iterate_phdr(&NoteUnwinder, nullptr); }

bool IsUnwinder(std::uintptr_t place) noexcept {
  return place >= s_uUnwinderLow.load(std::memory_order_relaxed) &&
         place < s_uUnwinderHigh.load(std::memory_order_relaxed);
}

bool FindFirstFrame(FaultState& state) noexcept {
  Question question = {&state, false};
  return CallGuarded(&Ask, &question) && question.m_bAnswer;
}

}  // namespace Oxa::Core::Platform

#endif
