#include "AutoTest/Module/TEST_StringTools.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_StringTools::TEST_StringTools() : TestSuite("StringTools Tests") {
  AddTestMethods(*this, {{"TestTrimWS", &TEST_StringTools::TrimWS},
                         {"TestUpCase", &TEST_StringTools::UpCase},
                         {"TestDownCase", &TEST_StringTools::DownCase},
                         {"TestLineBreaks", &TEST_StringTools::LineBreaks},
                         {"TestEscape", &TEST_StringTools::Escape},
                         {"TestUnEscape", &TEST_StringTools::UnEscape},
                         {"TestArray2Str", &TEST_StringTools::Array2Str},
                         {"TestStr2Array", &TEST_StringTools::Str2Array},
                         {"TestConversion", &TEST_StringTools::Conversion},
                         {"TestSplitJoin", &TEST_StringTools::SplitJoin}});
}

void TEST_StringTools::TrimWS(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::UpCase(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::DownCase(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::LineBreaks(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::Escape(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::UnEscape(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::Array2Str(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::Str2Array(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::Conversion(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_StringTools::SplitJoin(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
