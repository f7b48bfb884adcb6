#include "AutoTest/Module/TEST_Callback.h"

#include <Infrastructure/OxaCore/Callback.h>
#include <Infrastructure/OxaCore/TempSet.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

// What the plain functions below write to; each thread that runs the test has its own.
thread_local std::string* t_pResult = nullptr;

class CClass {
 public:
  explicit CClass(std::string& result) : m_sResult(result) {}

  void Plain() { m_sResult += "CClass"; }
  std::string Ret() { return "CClassRet"; }
  void Arg(const std::string& text) { m_sResult += "CClass" + text; }
  std::string RetArg(const std::string& text) { return "CClassRet" + text; }

 private:
  std::string& m_sResult;
};

void Global() { *t_pResult += "CGlobal"; }
std::string GlobalRet() { return "CGlobalRet"; }
void GlobalArg(const std::string& text) { *t_pResult += "CGlobal" + text; }
std::string GlobalRetArg(const std::string& text) { return "CGlobalRet" + text; }

using Text = const std::string&;

template <class Kind>
using Ptr = boost::shared_ptr<Kind>;

void CheckWithoutResult(CClass& object, std::string& result) {
  for (const Ptr<Callback>& callback : {Ptr<Callback>(new MethodCallback<CClass>(&object, &CClass::Plain)),
                                        Ptr<Callback>(new GlobalCallback(&Global))}) {
    (*callback)();
  }
  OXA_TEST_ASSERT(result == "CClassCGlobal");
  result.clear();
  for (const Ptr<CallbackArg<Text>>& callback :
       {Ptr<CallbackArg<Text>>(new MethodCallbackArg<CClass, Text>(&object, &CClass::Arg)),
        Ptr<CallbackArg<Text>>(new GlobalCallbackArg<Text>(&GlobalArg))}) {
    (*callback)("Arg");
  }
  OXA_TEST_ASSERT(result == "CClassArgCGlobalArg");
}

void CheckWithResult(CClass& object) {
  MethodCallbackRet<CClass, std::string> method(&object, &CClass::Ret);
  GlobalCallbackRet<std::string> global(&GlobalRet);
  OXA_TEST_ASSERT(method() + global() == "CClassRetCGlobalRet");
  MethodCallbackRetArg<CClass, std::string, Text> methodArg(&object, &CClass::RetArg);
  GlobalCallbackRetArg<std::string, Text> globalArg(&GlobalRetArg);
  OXA_TEST_ASSERT(methodArg("Arg") + globalArg("Arg") == "CClassRetArgCGlobalRetArg");
}

// Takes what it is given by a shared pointer.
class Reader {
 public:
  void Read(boost::shared_ptr<double> value) { m_dValue = *value; }
  double m_dValue = 0;
};

}  // namespace

TEST_Callback::TEST_Callback() : TestSuite("Callback template & macro Tests") {
  AddTestMethods(*this, {{"Test callback variants", &TEST_Callback::Variants},
                         {"Test callback example with smart pointers", &TEST_Callback::SmartPointers}});
}

void TEST_Callback::Variants(std::string&) {
  std::string result;
  CClass object(result);
  const TempSet<std::string*> here(t_pResult, &result);
  CheckWithoutResult(object, result);
  CheckWithResult(object);
}

void TEST_Callback::SmartPointers(std::string&) {
  Reader reader;
  const boost::shared_ptr<double> value = boost::make_shared<double>(1.414);
  MethodCallbackArg<Reader, boost::shared_ptr<double>> callback(&reader, &Reader::Read);
  callback(value);
  OXA_TEST_EQUALS_DELTA(1.414, reader.m_dValue, 0.0);
  *value = 97.2;
  callback(value);
  OXA_TEST_EQUALS_DELTA(97.2, reader.m_dValue, 0.0);
  OXA_TEST_ASSERT(value.unique());  // no copy of the pointer is left
}

}  // namespace Oxa::Core
