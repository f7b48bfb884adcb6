#include "AutoTest/Module/TEST_XML.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_XML::TEST_XML() : TestSuite("XML Tests") {
  AddTestMethods(*this, {{"Test XMLWriter", &TEST_XML::Writer}, {"Test XMLParser", &TEST_XML::Parser}});
}

void TEST_XML::Writer(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_XML::Parser(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
