// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_CONTAINER_PTR_H
#define OXACORE_AUTOTEST_MODULE_TEST_CONTAINER_PTR_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "container_ptr Tests": the owning pointer for containers.
class TEST_container_ptr : public TestSuite {
 public:
  TEST_container_ptr();

 private:
  void Standalone(std::string& text);
  void InContainers(std::string& text);
};

}  // namespace Oxa::Core

#endif
