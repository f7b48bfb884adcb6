#include "ErrorHandling/ContextTexts.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <new>
#include <utility>

#include "Core/LibraryState.h"
#include "ErrorHandling/KeptSlot.h"

namespace Oxa::Core {

namespace {

using KeptText = boost::shared_ptr<const ContextText>;

constexpr int iSLOT_BITS = 7;

using Slot = KeptSlot<KeptText>;

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
  return SlotOf(table).Find<KeptText>(
      [&](const KeptText& kept) { return &kept->m_context.GetContextInfo() == &table ? kept : KeptText(); });
}

void KeepContextText(const CodeContext& context, std::string element) {
  if (IsLibraryUnloading()) return;  // nobody would give it up
  try {
    KeptText text = boost::make_shared<const ContextText>(context, std::move(element));
    SlotOf(context.GetContextInfo()).Keep(new KeptText(std::move(text)));
  } catch (const std::bad_alloc&) {
    return;  // the next alert writes it anew
  }
}

void ForgetContextTexts() noexcept {
  for (Slot& slot : s_slots) slot.Keep(nullptr);
}

}  // namespace Oxa::Core
