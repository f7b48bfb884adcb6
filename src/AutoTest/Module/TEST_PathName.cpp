#include "AutoTest/Module/TEST_PathName.h"

#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

TEST_PathName::TEST_PathName() : TestSuite("PathName Tests") {
  AddTestMethods(*this, {{"TestSetBase", &TEST_PathName::SetBase},
                         {"TestExtractFNameExt", &TEST_PathName::ExtractFNameExt},
                         {"TestExtractDrivePath", &TEST_PathName::ExtractDrivePath},
                         {"ValidatePath", &TEST_PathName::ValidatePath},
                         {"ValidateFileName", &TEST_PathName::ValidateFileName},
                         {"IsPathRelative", &TEST_PathName::IsPathRelative},
                         {"IsDirectoryRelative", &TEST_PathName::IsDirectoryRelative},
                         {"IsDriveRelative", &TEST_PathName::IsDriveRelative},
                         {"IsPathAbsolute", &TEST_PathName::IsPathAbsolute},
                         {"MakePathAbsolute", &TEST_PathName::MakePathAbsolute},
                         {"MakePathRelative", &TEST_PathName::MakePathRelative},
                         {"FileExists", &TEST_PathName::FileExists},
                         {"IsDir", &TEST_PathName::IsDir},
                         {"File Delete", &TEST_PathName::FileDelete},
                         {"Directory Create/Delete", &TEST_PathName::DirectoryCreateDelete}});
}

void TEST_PathName::SetBase(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::ExtractFNameExt(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::ExtractDrivePath(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::ValidatePath(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::ValidateFileName(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::IsPathRelative(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::IsDirectoryRelative(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::IsDriveRelative(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::IsPathAbsolute(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::MakePathAbsolute(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::MakePathRelative(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::FileExists(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::IsDir(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::FileDelete(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

void TEST_PathName::DirectoryCreateDelete(std::string&) { OXA_TEST_ASSERT_MSG(false, "not written yet"); }

}  // namespace Oxa::Core
