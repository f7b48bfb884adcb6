// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_XML_H
#define OXACORE_AUTOTEST_MODULE_TEST_XML_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "XML Tests": what writes and reads XML.
class TEST_XML : public TestSuite {
 public:
  TEST_XML();

 private:
  void Writer(std::string& text);
  void Parser(std::string& text);
};

}  // namespace Oxa::Core

#endif
