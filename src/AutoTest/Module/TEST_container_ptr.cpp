#include "AutoTest/Module/TEST_container_ptr.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_container_ptr::TEST_container_ptr() : TestSuite("container_ptr Tests") {
  AddTestMethods(*this, {{"Standalone Test", &TEST_container_ptr::Standalone},
                         {"In Containers Test", &TEST_container_ptr::InContainers}});
}

void TEST_container_ptr::Standalone(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_container_ptr::InContainers(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
