// The log's own printf against that of the C library.
#include "Log/QuickPrint.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "Support/LeakDetector.h"

namespace {

using Oxa::Core::iNOT_QUICK;
using Oxa::Core::QuickPrint;

constexpr std::size_t uROOM = 2048;

const char* const sNOT_QUICK = "left to the C library";

int Quick(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  const int length = QuickPrint(buffer, size, format, args);
  va_end(args);
  return length;
}

template <class... Arguments>
std::string Quickly(const std::string& format, Arguments... arguments) {
  char buffer[uROOM];
  const int length = Quick(buffer, sizeof buffer, format.c_str(), arguments...);
  if (length == iNOT_QUICK) return sNOT_QUICK;
  EXPECT_EQ(0, buffer[length]);
  return {buffer, static_cast<std::size_t>(length)};
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <class... Arguments>
std::string ByTheLibrary(const std::string& format, Arguments... arguments) {
  char buffer[uROOM];
  const int length = std::snprintf(buffer, sizeof buffer, format.c_str(), arguments...);
  return {buffer, static_cast<std::size_t>(length)};
}
#pragma GCC diagnostic pop

template <class... Arguments>
void ExpectSame(const std::string& format, Arguments... arguments) {
  ASSERT_EQ(ByTheLibrary(format, arguments...), Quickly(format, arguments...)) << format;
}

TEST(QuickPrint, WritesWhatTheLibraryWrites) {
  ExpectSame("");
  ExpectSame("no conversion, 100%% of it%%");
  ExpectSame("Channel %d reads %8.3f K at step %u: %s%c", 3, 0.375, 17U, "stable", '!');
  ExpectSame("%5s|%-5s|%.2s|%-6.3s|%5.9s|%s", "abc", "abc", "abc", "abcdef", "abc", "");
  ExpectSame("%c|%3c|%-3c|", 'a', 'b', 'c');
  ExpectSame("%hhd %hd %ld %lld %zd %hhu %hx %lX %llx %zu", -129, 70000, LONG_MIN, LLONG_MIN, std::size_t{7},
             300, 0x12345, ULONG_MAX, ULLONG_MAX, SIZE_MAX);
  ExpectSame("%+d % d %+ d %05d %-5d| %+05d %-05d|% 05d", 1, 2, 3, 4, 5, 6, 7, 8);
  ExpectSame("%f %lf %F %e %E %g %G %.f", 1.5, 2.5, 3.5, 1e100, 1e-100, 1e-10, 1e20, 0.5);
}

TEST(QuickPrint, AZeroByteStaysInTheText) { EXPECT_EQ(std::string("a\0b", 3), Quickly("a%cb", '\0')); }

TEST(QuickPrint, NothingBehindAPrecisionIsRead) {
  const char text[] = {'a', 'b', 'c'};
  EXPECT_EQ("abc", Quickly("%.3s", &text[0]));
}

TEST(QuickPrint, LeavesWhatItDoesNotKnow) {
  const char* const nothing = nullptr;
  EXPECT_EQ(sNOT_QUICK, Quickly("%s", nothing));
  EXPECT_EQ(sNOT_QUICK, Quickly("%f", std::numeric_limits<double>::infinity()));
  EXPECT_EQ(sNOT_QUICK, Quickly("%f", std::nan("")));
  EXPECT_EQ(sNOT_QUICK, Quickly("%g", 5e-324));
  for (const char* format :
       {"%",   "%5",    "%l", "%.", "%q", "%*d", "%1$d", "%#x", "%.3d", "%.0x",          "%+u",
        "%'d", "%100d", "%p", "%o", "%n", "%m",  "%jd",  "%td", "%5%",  "%999999999999d"})
    EXPECT_EQ(sNOT_QUICK, Quickly(format, 0)) << format;
  for (const char* format : {"%Lf", "%a", "%#g", "%.100f", "%100f", "%hf", "%llf"})
    EXPECT_EQ(sNOT_QUICK, Quickly(format, 1.0)) << format;
  for (const char* format : {"%05s", "%+s", "%ls", "%hs", "% c", "%.1c", "%lc"})
    EXPECT_EQ(sNOT_QUICK, Quickly(format, "x")) << format;
}

TEST(QuickPrint, TextThatFitsToTheByteIsWrittenAndNoMore) {
  char buffer[8];
  for (const char* format : {"%s", "%7s", "%-7s", "1234%s", "%s4567"}) {
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(7, Quick(buffer, 8, format, std::strlen(format) > 4 ? "123" : "1234567")) << format;
    EXPECT_EQ(iNOT_QUICK, Quick(buffer, 7, format, std::strlen(format) > 4 ? "123" : "1234567")) << format;
  }
  EXPECT_EQ(iNOT_QUICK, Quick(buffer, 0, ""));
  EXPECT_EQ(0, Quick(buffer, 1, ""));
}

TEST(QuickPrint, LeavesNumbersToTheLibraryInOtherRoundings) {
  std::fesetround(FE_UPWARD);
  const std::string upward = Quickly("%.1f", 0.25);
  std::fesetround(FE_TONEAREST);
  EXPECT_EQ(sNOT_QUICK, upward);
  EXPECT_EQ("0.2", Quickly("%.1f", 0.25));
}

TEST(QuickPrint, LeavesNumbersToTheLibraryWhereTheyHaveACommaInstead) {
  const std::string folder = testing::TempDir() + "/quickprint-locale";
  const std::string make = "mkdir -p " + folder + " && localedef -f UTF-8 -i de_DE " + folder + "/commas";
  if (std::system(make.c_str()) != 0) GTEST_SKIP() << "no localedef, or nothing to make a locale of";
  ::setenv("LOCPATH", folder.c_str(), 1);
  TestSupport::ForgiveLeaks();  // the C library loses the folders that it looked in
  const locale_t commas = ::newlocale(LC_NUMERIC_MASK, "commas", nullptr);
  ::unsetenv("LOCPATH");
  ASSERT_NE(nullptr, commas);
  ::uselocale(commas);
  const std::string library = ByTheLibrary("%.1f", 0.5);
  const std::string quick = Quickly("%.1f", 0.5);
  ::uselocale(LC_GLOBAL_LOCALE);
  ::freelocale(commas);
  EXPECT_EQ("0,5", library);
  EXPECT_EQ(sNOT_QUICK, quick);
}

#if defined(__x86_64__)
// Filters of measured data have the processor take the smallest numbers for zero, since it is slow with them.
TEST(QuickPrint, LeavesToTheLibraryWhatTheProcessorTakesForZero) {
  constexpr unsigned int uZEROS = 0x8040;
  const unsigned int before = __builtin_ia32_stmxcsr();
  __builtin_ia32_ldmxcsr(before | uZEROS);
  const std::string quick = Quickly("%e|%g|%f", 1e-310, 2e-310, 3e-310);
  __builtin_ia32_ldmxcsr(before);
  EXPECT_EQ(sNOT_QUICK, quick);
}
#endif

double SignallingNan() {
  volatile std::uint64_t bits = 0x7FF0000000000001;
  const std::uint64_t copy = bits;
  double value = 0;
  std::memcpy(&value, &copy, sizeof value);
  return value;
}

TEST(QuickPrint, ComputesWithNoNumberSoThatNoneTraps) {
  const double nan = SignallingNan();
  std::feclearexcept(FE_ALL_EXCEPT);
  for (const double value : {nan, 0.1, -1e300, 123456.789, 1e-300})
    for (const char* format : {"%f", "%.2f", "%e", "%.17g"}) Quickly(format, value);
  EXPECT_EQ(0, std::fetestexcept(FE_ALL_EXCEPT));
}

// Numbers that are likely to be told wrongly: any bits, few digits behind the point, the middle between two texts.
class Numbers {
 public:
  double Next() {
    switch (m_random() % 4) {
      case 0:
        return OfBits();
      case 1:
        return static_cast<double>(static_cast<std::int64_t>(m_random() % 2000001) - 1000000) / Power();
      case 2:
        return std::ldexp(static_cast<double>(m_random() % 4096) + 0.5,
                          static_cast<int>(m_random() % 24) - 12);
      default:
        return static_cast<double>(m_random()) / static_cast<double>(m_random() | 1);
    }
  }

  std::uint64_t Bits() { return m_random() >> m_random() % 64; }

  std::string Format(const char* conversions) {
    std::string format = "%";
    for (const char flag : {'-', '0', '+', ' '})
      if (m_random() % 4 == 0) format += flag;
    if (m_random() % 2 == 0) format += std::to_string(m_random() % 30);
    return format + conversions[m_random() % std::strlen(conversions)];
  }

  std::string WithPrecision(std::string format) {
    if (m_random() % 4 != 0) format.insert(format.size() - 1, "." + std::to_string(m_random() % 20));
    return format;
  }

 private:
  double OfBits() {
    const std::uint64_t bits = m_random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return std::isnormal(value) ? value : 0.0;
  }
  double Power() {
    double power = 1;
    for (std::uint64_t i = m_random() % 8; i > 0; --i) power *= 10;
    return power;
  }

  std::mt19937_64 m_random{20};
};

#if defined(OXACORE_SOAK)
constexpr int iNUMBERS = 20000000;
#else
constexpr int iNUMBERS = 500000;
#endif

TEST(QuickPrint, DoublesInAllFormatsAreTheLibrarys) {
  Numbers numbers;
  for (int i = 0; i < iNUMBERS; ++i) {
    const std::string format = numbers.WithPrecision(numbers.Format("fFeEgG"));
    ASSERT_NO_FATAL_FAILURE(ExpectSame(format, numbers.Next()));
  }
  for (const double value : {0.0, -0.0, std::numeric_limits<double>::min(),
                             std::numeric_limits<double>::max(), 0.5, 1.5, 2.5, 9.995, 999999.5})
    for (const char* format : {"%f", "%.0f", "%.99f", "%e", "%g", "%+08.2f", "%-12.0e|", "%.0g"})
      ASSERT_NO_FATAL_FAILURE(ExpectSame(format, value));
}

TEST(QuickPrint, WholeNumbersInAllFormatsAreTheLibrarys) {
  Numbers numbers;
  for (int i = 0; i < iNUMBERS; ++i) {
    const std::uint64_t bits = numbers.Bits();
    std::string format = numbers.Format("di");
    ASSERT_NO_FATAL_FAILURE(ExpectSame(format, static_cast<int>(bits)));
    ASSERT_NO_FATAL_FAILURE(ExpectSame(format.insert(format.size() - 1, "l"), static_cast<long>(bits)));
    format = numbers.Format("uxX");
    if (format.find_first_of("+ ") != std::string::npos) continue;
    ASSERT_NO_FATAL_FAILURE(ExpectSame(format, static_cast<unsigned int>(bits)));
    ASSERT_NO_FATAL_FAILURE(
        ExpectSame(format.insert(format.size() - 1, "ll"), static_cast<unsigned long long>(bits)));
  }
}

}  // namespace
