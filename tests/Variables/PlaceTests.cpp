// What the debug data tells of single instructions, where compilers tell it in ways of their own.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "SymbolizedProcessTest.h"

#define JOIN(a, b) a##b
#define JOINED(a, b) JOIN(a, b)
#define FOUR(name) JOINED(JOINED(name, name), JOINED(name, name))
#define X16 FOUR(xxxx)
#define X64 FOUR(X16)
#define X256 FOUR(X64)
#define X1024 FOUR(X256)
#define X4096 FOUR(X1024)

namespace X256 {
__attribute__((noinline)) int F(int number) { return number + 1; }
}  // namespace X256
namespace X4096 {
__attribute__((noinline)) int F(int number) { return number + 2; }
}  // namespace X4096

// In MadeUpLines.cpp.
extern "C" const char s_firstPlace[], s_placeOfLine[], s_placeOfNoLine[], s_otherPlaceOfNoLine[],
    s_placeOfOtherLine[];

namespace {

using namespace Oxa::Core::Platform;

class SymbolizedPlaces : public SymbolizedProcessTest {
 protected:
  const PlacedFunction& At(const void* place) {
    return GetProcess().GetFacts(reinterpret_cast<std::uintptr_t>(place)).m_place.m_functions.front();
  }
  std::string LineAt(const void* place) {
    const PlacedFunction& function = At(place);
    return (function.m_pFile == nullptr ? "" : function.m_pFile) + (":" + std::to_string(function.m_iLine));
  }
  std::string NameAt(int (*place)(int)) { return At(reinterpret_cast<const void*>(place)).m_sName; }
};

TEST_F(SymbolizedPlaces, TakeTheLineBeforeWhereNoneIsGiven) {
  EXPECT_EQ(":0", LineAt(s_firstPlace));
  EXPECT_EQ("MadeUpLines.cpp:111", LineAt(s_placeOfLine));
  EXPECT_EQ("MadeUpLines.cpp:111", LineAt(s_placeOfNoLine));
  EXPECT_EQ("MadeUpLines.cpp:111", LineAt(s_otherPlaceOfNoLine));
  EXPECT_EQ("MadeUpLines.cpp:222", LineAt(s_placeOfOtherLine));
}

// Reading them needs stack in proportion to their length.
TEST_F(SymbolizedPlaces, ReadNoDecoratedNamesThatAreVeryLong) {
  EXPECT_EQ(std::string(256, 'x') + "::F(int)", NameAt(&X256::F));
  EXPECT_EQ(std::string(4096, 'x') + "::F", NameAt(&X4096::F));
}

}  // namespace
