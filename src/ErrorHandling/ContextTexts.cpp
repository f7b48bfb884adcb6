#include "ErrorHandling/ContextTexts.h"

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <memory>
#include <new>
#include <utility>

#include "Core/LibraryState.h"
#include "ErrorHandling/KeptSlot.h"

namespace Oxa::Core {

namespace {

using KeptText = boost::shared_ptr<const ContextText>;

constexpr int iSLOT_BITS = 4;

// What is kept in one slot. A stack has some 25 tables, which don't spread evenly: with one place in each of 128 slots a
// fifth of them drove one another out at each alert, more or fewer by where their tables lay.
class TextSet {
 public:
  KeptText Find(const AlertData& table) const {
    for (const KeptText& kept : m_texts) {
      if (kept && &kept->m_context.GetContextInfo() == &table) return kept;
    }
    return KeptText();
  }

  /// `text` gets what was kept longest, and is to be let go once the slot is free again.
  void Exchange(KeptText& text) noexcept {
    m_texts[m_uOldest].swap(text);
    m_uOldest = (m_uOldest + 1) % m_texts.size();
  }

 private:
  std::array<KeptText, 8> m_texts;
  std::size_t m_uOldest = 0;
};

using Slot = KeptSlot<TextSet>;

Slot s_slots[1 << iSLOT_BITS];

Slot& SlotOf(const AlertData& table) {
  constexpr std::uint64_t uSPREAD = 0x9E3779B97F4A7C15;  // the golden ratio's
  return s_slots[reinterpret_cast<std::uintptr_t>(&table) * uSPREAD >> (64 - iSLOT_BITS)];
}

}  // namespace

ContextText::ContextText(const CodeContext& context, std::string element)
    : m_context(context),
      m_sElement(std::move(element)),
      m_uLines(static_cast<std::uint64_t>(std::count(m_sElement.begin(), m_sElement.end(), '\n'))) {}

boost::shared_ptr<const ContextText> FindContextText(const CodeContext& context) {
  const AlertData& table = context.GetContextInfo();
  return SlotOf(table).Find<KeptText>([&](const TextSet& set) { return set.Find(table); });
}

void KeepContextText(const CodeContext& context, std::string element) {
  if (IsLibraryUnloading()) return;  // nobody would give it up
  try {
    KeptText text = boost::make_shared<const ContextText>(context, std::move(element));
    Slot& slot = SlotOf(context.GetContextInfo());
    const auto exchange = [&](TextSet& set) {
      if (!set.Find(context.GetContextInfo())) set.Exchange(text);
      return true;
    };
    if (slot.Find<bool>(exchange)) return;
    auto set = std::make_unique<TextSet>();
    set->Exchange(text);
    slot.KeepFirst(set.release());  // another thread may have been quicker
  } catch (const std::bad_alloc&) {
    return;  // the next alert writes it anew
  }
}

void ForgetContextTexts() noexcept {
  for (Slot& slot : s_slots) slot.Keep(nullptr);
}

}  // namespace Oxa::Core
