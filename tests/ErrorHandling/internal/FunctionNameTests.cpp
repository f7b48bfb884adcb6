#include "ErrorHandling/FunctionName.h"

#include <gtest/gtest.h>

namespace {

using Oxa::Core::FunctionName;

TEST(FunctionName, CutsReturnTypeAndParameters) {
  EXPECT_EQ("main", FunctionName("int main()"));
  EXPECT_EQ("Oxa::Core::Mutex::Lock",
            FunctionName("virtual void Oxa::Core::Mutex::Lock(const Oxa::Core::Elapse&)"));
  EXPECT_EQ("A::Get", FunctionName("const std::string& A::Get(int) const"));
  EXPECT_EQ("A::Find", FunctionName("T* A::Find(int (*)(int), char) const &"));
}

TEST(FunctionName, LooksThroughTemplateBrackets) {
  EXPECT_EQ("A::f", FunctionName("std::function<void(int)> A::f(std::function<void(int)>)"));
  EXPECT_EQ("A<T, U>::f", FunctionName("std::map<int, char> A<T, U>::f(T) [with T = int; U = char]"));
  EXPECT_EQ("A<T>::f", FunctionName("T A<T>::f(T) [T = int]"));
}

TEST(FunctionName, KeepsConstructorsAndDestructors) {
  EXPECT_EQ("A::A", FunctionName("A::A(int)"));
  EXPECT_EQ("A::~A", FunctionName("virtual A::~A()"));
}

TEST(FunctionName, KeepsOperators) {
  EXPECT_EQ("A::operator()", FunctionName("void A::operator()(int) const"));
  EXPECT_EQ("A::operator<", FunctionName("bool A::operator<(const A&) const"));
  EXPECT_EQ("operator<<", FunctionName("std::ostream& operator<<(std::ostream&, const A&)"));
  EXPECT_EQ("A::operator->", FunctionName("B* A::operator->()"));
  EXPECT_EQ("A::operator bool", FunctionName("A::operator bool() const"));
  EXPECT_EQ("cooperator", FunctionName("void cooperator(int)"));
}

TEST(FunctionName, KeepsAnonymousNamespaces) {
  EXPECT_EQ("{anonymous}::f", FunctionName("void {anonymous}::f(int)"));
  EXPECT_EQ("(anonymous namespace)::f", FunctionName("void (anonymous namespace)::f(int)"));
}

TEST(FunctionName, NamesLambdasAfterTheirFunction) {
  EXPECT_EQ("A::f::<lambda>", FunctionName("A::f(int)::<lambda(char)>"));
  EXPECT_EQ("A::f::<lambda>", FunctionName("void A::f(int)::<lambda(auto:1)> [with auto:1 = int]"));
}

TEST(FunctionName, LeavesOtherTextsAlone) {
  EXPECT_EQ("", FunctionName(""));
  EXPECT_EQ("top level", FunctionName("top level"));
  EXPECT_EQ("unbalanced)", FunctionName("unbalanced)"));
  EXPECT_EQ("]", FunctionName("]"));
}

}  // namespace
