#include <Infrastructure/OxaCore/Callback.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

using namespace Oxa::Core;

namespace {

static_assert(std::is_abstract_v<Callback> && std::has_virtual_destructor_v<Callback>);
static_assert(std::is_abstract_v<CallbackRet<int>> && std::has_virtual_destructor_v<CallbackRet<int>>);
static_assert(std::is_abstract_v<CallbackArg<int>> && std::has_virtual_destructor_v<CallbackArg<int>>);
static_assert(std::is_abstract_v<CallbackRetArg<int, int>> &&
              std::has_virtual_destructor_v<CallbackRetArg<int, int>>);

std::string g_result;

class Class {
 public:
  void Plain() { m_result += "CClass"; }
  std::string Ret() { return "CClassRet"; }
  void Arg(std::string text) { m_result += "CClass" + text; }
  std::string RetArg(std::string text) { return "CClassRet" + text; }
  void Value(boost::shared_ptr<double> value) { m_dValue = *value; }
  void Count(int& count) { ++count; }
  void Take(std::unique_ptr<int> number) { m_dValue = *number; }
  [[noreturn]] void Fail() { throw std::runtime_error("failed"); }

  std::string m_result;
  double m_dValue = 0;
};

void Global() { g_result += "CGlobal"; }
std::string GlobalRet() { return "CGlobalRet"; }
void GlobalArg(std::string text) { g_result += "CGlobal" + text; }
std::string GlobalRetArg(std::string text) { return "CGlobalRet" + text; }
int Twice(int number) { return 2 * number; }

class Callbacks : public testing::Test {
 protected:
  void SetUp() override { g_result.clear(); }
  Class m_object;
};

TEST_F(Callbacks, MethodAndGlobalAreBothCallbacks) {
  MethodCallback<Class> method(&m_object, &Class::Plain);
  GlobalCallback global(&Global);
  for (Callback* callback : {static_cast<Callback*>(&method), static_cast<Callback*>(&global)}) (*callback)();
  EXPECT_EQ("CClassCGlobal", m_object.m_result + g_result);
}

TEST_F(Callbacks, WithAResultGiveIt) {
  MethodCallbackRet<Class, std::string> method(&m_object, &Class::Ret);
  GlobalCallbackRet<std::string> global(&GlobalRet);
  CallbackRet<std::string>& first = method;
  CallbackRet<std::string>& second = global;
  EXPECT_EQ("CClassRetCGlobalRet", first() + second());
}

TEST_F(Callbacks, WithAnArgumentHandItOn) {
  MethodCallbackArg<Class, std::string> method(&m_object, &Class::Arg);
  GlobalCallbackArg<std::string> global(&GlobalArg);
  CallbackArg<std::string>& first = method;
  CallbackArg<std::string>& second = global;
  first("Arg");
  second("Arg");
  EXPECT_EQ("CClassArgCGlobalArg", m_object.m_result + g_result);
}

TEST_F(Callbacks, WithAnArgumentAndAResultDoBoth) {
  MethodCallbackRetArg<Class, std::string, std::string> method(&m_object, &Class::RetArg);
  GlobalCallbackRetArg<std::string, std::string> global(&GlobalRetArg);
  CallbackRetArg<std::string, std::string>& first = method;
  CallbackRetArg<std::string, std::string>& second = global;
  EXPECT_EQ("CClassRetArgCGlobalRetArg", first("Arg") + second("Arg"));
}

TEST_F(Callbacks, SharedPointerArgumentIsSeenWithItsValueOfTheMoment) {
  MethodCallbackArg<Class, boost::shared_ptr<double>> callback(&m_object, &Class::Value);
  const boost::shared_ptr<double> value = boost::make_shared<double>(1.414);
  callback(value);
  EXPECT_EQ(1.414, m_object.m_dValue);
  *value = 97.2;
  callback(value);
  EXPECT_EQ(97.2, m_object.m_dValue);
  EXPECT_EQ(1, value.use_count());
}

TEST_F(Callbacks, ReferenceArgumentsAreNotCopied) {
  MethodCallbackArg<Class, int&> callback(&m_object, &Class::Count);
  int count = 0;
  callback(count);
  callback(count);
  EXPECT_EQ(2, count);
}

TEST_F(Callbacks, ArgumentsMayBeMovableOnly) {
  MethodCallbackArg<Class, std::unique_ptr<int>> callback(&m_object, &Class::Take);
  callback(std::make_unique<int>(7));
  EXPECT_EQ(7, m_object.m_dValue);
}

TEST_F(Callbacks, DontOwnTheirObject) {
  {
    boost::shared_ptr<Callback> callback(new MethodCallback<Class>(&m_object, &Class::Plain));
    (*callback)();
  }
  EXPECT_EQ("CClass", m_object.m_result);
}

TEST_F(Callbacks, CopiesCallTheSame) {
  MethodCallback<Class> method(&m_object, &Class::Plain);
  MethodCallback<Class> methodCopy(method);
  GlobalCallback global(&Global);
  GlobalCallback globalCopy(global);
  methodCopy();
  globalCopy();
  EXPECT_EQ("CClassCGlobal", m_object.m_result + g_result);
}

TEST_F(Callbacks, ExceptionsPass) {
  MethodCallback<Class> callback(&m_object, &Class::Fail);
  EXPECT_THROW(callback(), std::runtime_error);
}

TEST_F(Callbacks, CallAnyNumberOfTimes) {
  GlobalCallbackRetArg<int, int> twice(&Twice);
  EXPECT_EQ(4, twice(2));
  EXPECT_EQ(-6, twice(-3));
}

}  // namespace
