#include "ErrorHandling/ContextTexts.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <new>
#include <utility>

#include "Platform/Threads.h"

namespace Oxa::Core {

namespace {

using KeptText = boost::shared_ptr<const ContextText>;

constexpr int iSLOT_BITS = 7;

// The lock is only tried: who held it may be gone, killed or not forked.
class Slot {
 public:
  constexpr Slot() noexcept = default;

  KeptText Find(const AlertData& table) noexcept {
    KeptText found;
    if (!m_lock.TryLock()) return found;
    if (m_pKept != nullptr && &(*m_pKept)->m_context.GetContextInfo() == &table) found = *m_pKept;
    m_lock.Unlock();
    return found;
  }

  void Keep(KeptText* text) noexcept {
    if (m_lock.TryLock()) {
      std::swap(text, m_pKept);
      m_lock.Unlock();
    }
    delete text;
  }

 private:
  Platform::ShortLock m_lock;   // guards the other
  KeptText* m_pKept = nullptr;  // owned
};

// Constant-initialised and trivially destructible: errors are raised before and after every static object.
Slot s_slots[1 << iSLOT_BITS];

Slot& SlotOf(const AlertData& table) {
  constexpr std::uint64_t uSPREAD = 0x9E3779B97F4A7C15;  // the golden ratio's
  return s_slots[reinterpret_cast<std::uintptr_t>(&table) * uSPREAD >> (64 - iSLOT_BITS)];
}

}  // namespace

ContextText::ContextText(const CodeContext& context, std::string tags)
    : m_context(context),
      m_sTags(std::move(tags)),
      m_uLines(static_cast<std::uint64_t>(std::count(m_sTags.begin(), m_sTags.end(), '\n'))) {}

boost::shared_ptr<const ContextText> FindContextText(const CodeContext& context) noexcept {
  const AlertData& table = context.GetContextInfo();
  return SlotOf(table).Find(table);
}

void KeepContextText(const CodeContext& context, std::string tags) noexcept {
  try {
    KeptText text = boost::make_shared<const ContextText>(context, std::move(tags));
    SlotOf(context.GetContextInfo()).Keep(new KeptText(std::move(text)));
  } catch (const std::bad_alloc&) {
    return;  // the next alert writes it anew
  }
}

void ForgetContextTexts() noexcept {
  for (Slot& slot : s_slots) slot.Keep(nullptr);
}

}  // namespace Oxa::Core
