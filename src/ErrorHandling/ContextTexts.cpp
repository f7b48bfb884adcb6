#include "ErrorHandling/ContextTexts.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <utility>

#include "Core/LibraryState.h"
#include "ErrorHandling/KeptSets.h"

namespace Oxa::Core {

namespace {

using KeptText = boost::shared_ptr<const ContextText>;

KeptSets<ContextText, 4> s_texts;

std::uint64_t KeyOf(const AlertData& table) { return reinterpret_cast<std::uintptr_t>(&table); }

}  // namespace

ContextText::ContextText(const CodeContext& context, std::string element)
    : m_context(context),
      m_sElement(std::move(element)),
      m_uLines(static_cast<std::uint64_t>(std::count(m_sElement.begin(), m_sElement.end(), '\n'))) {}

KeptText FindContextText(const CodeContext& context) {
  const AlertData& table = context.GetContextInfo();
  return s_texts.Find<KeptText>(KeyOf(table), [&](const KeptText& kept) {
    return &kept->m_context.GetContextInfo() == &table ? kept : KeptText();
  });
}

void KeepContextText(const CodeContext& context, std::string element) {
  if (IsLibraryUnloading()) return;  // nobody would give it up
  const AlertData& table = context.GetContextInfo();
  s_texts.Keep(
      KeyOf(table), [&](const KeptText& kept) { return &kept->m_context.GetContextInfo() == &table; },
      [&] { return boost::make_shared<const ContextText>(context, std::move(element)); });
}

void ForgetContextTexts() noexcept { s_texts.Forget(); }

}  // namespace Oxa::Core
