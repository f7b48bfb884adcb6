#include <Infrastructure/OxaCore/Log.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <functional>
#include <string>

namespace {

using Oxa::Core::FormatOnce;

// Hands `use` a FormatOnce of the arguments. The format is checked by nobody: wrong ones are wanted here.
void With(const std::function<void(FormatOnce&)>& use, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  FormatOnce message(format, args);
  use(message);
  va_end(args);
}

std::string LongText(std::size_t length) {
  std::string text(length, 'x');
  if (length > 0) text.back() = 'y';
  return text;
}

TEST(FormatOnce, ExpandsOnFirstUseAndGivesTheSameTextFromThenOn) {
  With(
      [](FormatOnce& message) {
        EXPECT_FALSE(message.IsExpanded());
        const char* const text = message.GetText();
        EXPECT_STREQ("7 of nine is 0.50", text);
        EXPECT_TRUE(message.IsExpanded());
        EXPECT_EQ(text, message.GetText());
      },
      "%d of %s is %.2f", 7, "nine", 0.5);
}

TEST(FormatOnce, IsNotTouchedByLaterChangesOfTheArguments) {
  char word[] = "before";
  With(
      [&word](FormatOnce& message) {
        EXPECT_STREQ("before", message.GetText());
        std::strcpy(word, "after");
        EXPECT_STREQ("before", message.GetText());
      },
      "%s", word);
}

class FormatOnceOfLength : public testing::TestWithParam<std::size_t> {};

TEST_P(FormatOnceOfLength, HoldsTheWholeText) {
  const std::string text = LongText(GetParam());
  With([&text](FormatOnce& message) { EXPECT_EQ(text, message.GetText()); }, "%s", text.c_str());
}

INSTANTIATE_TEST_SUITE_P(AroundTheBuffers, FormatOnceOfLength,
                         testing::Values(0, 1, 4094, 4095, 4096, 4097, 8191, 8192, 8193, 16382, 16383));

class FormatOnceBeyond : public testing::TestWithParam<std::size_t> {};

TEST_P(FormatOnceBeyond, CutsWhatTheLargestBufferCannotHold) {
  const std::string text = LongText(GetParam());
  With([&text](FormatOnce& message) { EXPECT_EQ(text.substr(0, 16383), message.GetText()); }, "%s",
       text.c_str());
}

INSTANTIATE_TEST_SUITE_P(TheLargestBuffer, FormatOnceBeyond, testing::Values(16384, 16385, 32768, 100000));

// Every trial walks the arguments from their beginning.
TEST(FormatOnce, WalksAllArgumentsAgainInALargerBuffer) {
  const std::string padding = LongText(5000);
  With([&padding](FormatOnce& message) { EXPECT_EQ("1 " + padding + " 2.5 end", message.GetText()); },
       "%d %s %.1f %s", 1, padding.c_str(), 2.5, "end");
}

TEST(FormatOnce, CannotExpandANullFormat) {
  With(
      [](FormatOnce& message) {
        EXPECT_EQ(nullptr, message.GetText());
        EXPECT_EQ(nullptr, message.GetText());
        EXPECT_EQ(nullptr, message.GetFormat());
      },
      nullptr);
}

TEST(FormatOnce, CannotExpandAnIncompleteDirective) {
  With(
      [](FormatOnce& message) {
        EXPECT_EQ(nullptr, message.GetText());
        EXPECT_STREQ("ends with %", message.GetFormat());
      },
      "ends with %");
}

TEST(FormatOnce, CannotExpandAWideTextThatIsNoText) {
  const wchar_t text[] = {0x7fffffff, 0};
  With([](FormatOnce& message) { EXPECT_EQ(nullptr, message.GetText()); }, "%ls", text);
}

}  // namespace
