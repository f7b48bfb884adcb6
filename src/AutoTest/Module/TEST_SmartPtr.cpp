#include "AutoTest/Module/TEST_SmartPtr.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_SmartPtr::TEST_SmartPtr() : TestSuite("Smart Pointer Tests") {
  AddTestMethods(*this, {{"Test default construction/destruction", &TEST_SmartPtr::DefaultConstruction},
                         {"Test copy construction/destruction", &TEST_SmartPtr::CopyConstruction},
                         {"Test assignment operator", &TEST_SmartPtr::Assignment},
                         {"Test implicit type conversion in copy & assign", &TEST_SmartPtr::Conversions},
                         {"Test dereferencing a pointer", &TEST_SmartPtr::Dereferencing},
                         {"Tests array storage and array style access", &TEST_SmartPtr::Arrays}});
}

void TEST_SmartPtr::DefaultConstruction(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_SmartPtr::CopyConstruction(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_SmartPtr::Assignment(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_SmartPtr::Conversions(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_SmartPtr::Dereferencing(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_SmartPtr::Arrays(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
