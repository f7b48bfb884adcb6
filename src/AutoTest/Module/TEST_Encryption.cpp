#include "AutoTest/Module/TEST_Encryption.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_Encryption::TEST_Encryption() : TestSuite("Encryption Tests") {
  AddTestMethods(*this, {{"String Encryption Test", &TEST_Encryption::Strings},
                         {"Password Test", &TEST_Encryption::Password},
                         {"BYTE Vector Encryption Test", &TEST_Encryption::ByteVectors},
                         {"Fundamental Type Encryption Test", &TEST_Encryption::FundamentalTypes}});
}

void TEST_Encryption::Strings(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_Encryption::Password(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_Encryption::ByteVectors(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_Encryption::FundamentalTypes(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
