#include "ErrorHandling/ContextTexts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace Oxa::Core;

namespace {

constexpr std::size_t uTABLES = 100;

// With places of their own, which lie where memory is.
std::vector<CodeContext> MakeContexts() {
  std::vector<CodeContext> contexts;
  for (std::size_t line = 0; line < uTABLES; ++line) {
    AlertData table;
    table[CodeContext::sLINE] = std::to_string(line);
    contexts.emplace_back(std::move(table), AlertData());
  }
  return contexts;
}

}  // namespace

TEST(ContextTexts, WhatIsFoundIsTheTextOfThatTable) {
  for (const CodeContext& context : MakeContexts()) {
    KeepContextText(context, "<Line>" + context.Get(CodeContext::sLINE) + "</Line>\n");
    const auto known = FindContextText(context);
    ASSERT_TRUE(known);
    EXPECT_EQ("<Line>" + context.Get(CodeContext::sLINE) + "</Line>\n", known->m_sElement);
    EXPECT_EQ(1u, known->m_uLines);
  }
}

TEST(ContextTexts, ManyTablesDoNotDriveOneAnotherOut) {
  const std::vector<CodeContext> contexts = MakeContexts();
  for (const CodeContext& context : contexts) KeepContextText(context, "<Context/>\n");
  std::size_t found = 0;
  for (const CodeContext& context : contexts) found += FindContextText(context) ? 1 : 0;
  EXPECT_GE(found, uTABLES * 82 / 100);  // one place for each hash of a table would leave some 70
}

TEST(ContextTexts, WhatIsKeptAlreadyDrivesNothingOut) {
  const std::vector<CodeContext> contexts = MakeContexts();
  for (const CodeContext& context : contexts) KeepContextText(context, "<Context/>\n");
  const auto count = [&] {
    return std::count_if(contexts.begin(), contexts.end(),
                         [](const CodeContext& context) { return FindContextText(context) != nullptr; });
  };
  const auto before = count();
  for (int time = 0; time < 20; ++time) KeepContextText(contexts.back(), "<Context/>\n");
  EXPECT_EQ(before, count());
}
