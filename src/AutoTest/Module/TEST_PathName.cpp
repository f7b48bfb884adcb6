#include "AutoTest/Module/TEST_PathName.h"

#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/PathName.h>

#include <filesystem>

#include "AutoTest/Module/TestFolder.h"
#include "AutoTest/Module/TestMethods.h"

namespace Oxa::Core {

namespace {

using Texts = std::vector<std::string>;

// What an edit makes of a name.
struct EditRow {
  const char* sBefore;
  const char* sArgument;
  const char* sAfter;
};

constexpr EditRow aBASES[] = {
    {"C:\\dir\\file1.txt", "d:", "d:\\dir\\file1.txt"},
    {"C:\\dir\\file1.txt", "d", "d:\\dir\\file1.txt"},
    {"C:\\dir\\file1.txt", "\\\\server\\", "\\\\server\\dir\\file1.txt"},
    {"C:\\dir\\file1.txt", "\\\\server", "\\\\server\\dir\\file1.txt"},
    {"\\\\server\\share\\file1.txt", "d:", "d:\\share\\file1.txt"},
    {"\\\\server\\share\\file1.txt", "d", "d:\\share\\file1.txt"},
    {"\\\\server\\share\\file1.txt", "\\\\server2\\", "\\\\server2\\share\\file1.txt"},
    {"\\\\server\\share\\file1.txt", "\\\\server2", "\\\\server2\\share\\file1.txt"}};

constexpr EditRow aBASES_AND_BRANCHES[] = {
    {"C:\\dir\\file1.txt", "d:\\dir2", "d:\\dir2\\file1.txt"},
    {"C:\\dir\\file1.txt", "d:\\dir2\\", "d:\\dir2\\file1.txt"},
    {"C:\\dir\\file1.txt", "\\\\server\\share", "\\\\server\\share\\file1.txt"},
    {"C:\\dir\\file1.txt", "\\\\server\\share\\", "\\\\server\\share\\file1.txt"},
    {"\\\\server\\share\\dir1\\file1.txt", "\\\\server2\\share2\\dir2",
     "\\\\server2\\share2\\dir2\\file1.txt"},
    {"\\\\server\\share\\dir1\\file1.txt", "\\\\server2\\share2\\dir2\\",
     "\\\\server2\\share2\\dir2\\file1.txt"}};

template <std::size_t uCOUNT>
void CheckEdits(void (PathName::*edit)(const std::string&), const EditRow (&rows)[uCOUNT]) {
  for (const EditRow& row : rows) {
    PathName path(row.sBefore);
    (path.*edit)(row.sArgument);
    OXA_TEST_ASSERT_MSG(path == row.sAfter,
                        std::string(row.sAfter) + " was " + static_cast<const char*>(path));
  }
}

// What a part of a name is.
struct PartRow {
  const char* sPath;
  const char* sPart;
};

template <std::size_t uCOUNT>
void CheckParts(std::string (PathName::*part)() const, const PartRow (&rows)[uCOUNT]) {
  for (const PartRow& row : rows) {
    const std::string found = (PathName(row.sPath).*part)();
    OXA_TEST_ASSERT_MSG(found == row.sPart, std::string(row.sPath) + " has " + found);
  }
}

// Whether the host has a current folder, and one that has room for a name below it: it may have been removed.
bool HasUsableFolder() {
  constexpr std::size_t uROOM = 250;
  std::error_code missing;
  const std::filesystem::path folder = std::filesystem::current_path(missing);
  return !missing && folder.native().size() < uROOM;
}

void CheckAll(bool expected, bool (PathName::*asked)() const, const Texts& paths) {
  for (const std::string& path : paths)
    OXA_TEST_ASSERT_MSG((PathName(path).*asked)() == expected, "wrong for \"" + path + "\"");
}

}  // namespace

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

void TEST_PathName::SetBase(std::string&) {
  CheckEdits(&PathName::SetBase, aBASES);
  CheckEdits(&PathName::SetBaseAndBranch, aBASES_AND_BRANCHES);
}

void TEST_PathName::ExtractFNameExt(std::string&) {
  static constexpr PartRow aNAMES[] = {{"\\\\server\\share\\dir\\file.txt1", "file.txt1"},
                                       {"C:\\di r1\\file1.txt", "file1.txt"},
                                       {"C:\\dir\\.txt1", ".txt1"},
                                       {"Z:the file name", "the file name"},
                                       {"R:.txt", ".txt"},
                                       {"file.", "file"},
                                       {"C:\\dir\\", ""}};
  CheckParts(&PathName::GetLeafAndExt, aNAMES);
  OXA_TEST_ASSERT(PathName("C:\\dir\\.txt1").GetLeaf().empty());
  OXA_TEST_ASSERT(PathName("dir.old/file.tar.gz").GetExt() == "gz");
  OXA_TEST_ASSERT(PathName("dir.old/file").GetExt().empty());
}

void TEST_PathName::ExtractDrivePath(std::string&) {
  static constexpr PartRow aFOLDERS[] = {{"\\\\server\\share\\dir\\file.txt1", "\\\\server\\share\\dir\\"},
                                         {"C:\\di r1\\file1.txt", "C:\\di r1\\"},
                                         {"F:bare\\path\\spa ces\\file.txt", "F:bare\\path\\spa ces\\"},
                                         {"Z:the file name", "Z:"},
                                         {"bare", ""}};
  CheckParts(&PathName::GetBaseAndBranch, aFOLDERS);
  OXA_TEST_ASSERT(PathName("\\\\server\\share\\dir\\file.txt1").GetBase() == "\\\\server");
  OXA_TEST_ASSERT(PathName("C:\\dir").GetBase() == "C");
}

void TEST_PathName::ValidatePath(std::string&) {
  CheckAll(true, &PathName::IsValid,
           {"/.txt", "\\Test.txt", "a:", "\\\\Computer\\path", "D:\\path", "D:/path", "..\\path", ".\\path",
            "W:\\path\\no\\spaces\\file.txt", "X:\\path\\with 2 spaces", "C:\\path\\no\\spaces"});
  CheckAll(false, &PathName::IsValid, {"", "two:\\path", "dir//file", ":.txt", "dir/a*b/file.txt"});
}

void TEST_PathName::ValidateFileName(std::string&) {
  CheckAll(true, &PathName::IsValid,
           {"Test.txt", "_Test.txt.txt", "bare.fi_le", "spaces bare.fi.le", "under_score_bare.file", "bare",
            "spaces bare", "underscore_bare"});
  CheckAll(false, &PathName::IsValid,
           {"*.txt", "|.txt", "?.txt", "<.txt", ">.txt", ";.txt", "\".txt", std::string(257, 'a')});
}

void TEST_PathName::IsPathRelative(std::string&) {
  CheckAll(true, &PathName::IsRelative, {"", "Test", ".\\Test", "..\\", ".\\"});
}

void TEST_PathName::IsDirectoryRelative(std::string&) {
  CheckAll(true, &PathName::IsRelative, {"\\Test", "/Test"});  // rooted on the drive that is current
}

void TEST_PathName::IsDriveRelative(std::string&) { CheckAll(true, &PathName::IsRelative, {"C:Test", "C:"}); }

void TEST_PathName::IsPathAbsolute(std::string&) {
  const Texts paths = {"\\\\Computer\\Test", "C:\\Test", "C:/Test"};
  CheckAll(true, &PathName::IsAbsolute, paths);
  CheckAll(false, &PathName::IsRelative, paths);
}

void TEST_PathName::MakePathAbsolute(std::string&) {
  PathName server("\\\\Computer\\Test");
  OXA_TEST_ASSERT(server.ForceAbsolute() && server == "\\\\Computer\\Test");

  PathName path("Test");
  if (!path.ForceAbsolute()) {
    OXA_TEST_ASSERT(path == "Test" && !HasUsableFolder());
    return;
  }
  OXA_TEST_ASSERT(path.GetLeafAndExt() == "Test");
  OXA_TEST_ASSERT(path != "Test");  // the current folder stands in front of it
  PathName twice(path);
  OXA_TEST_ASSERT(twice.ForceAbsolute() && twice == path);
}

void TEST_PathName::MakePathRelative(std::string&) {
  static constexpr EditRow aREFERENCES[] = {{"c:\\temp\\test.txt", "", "\\temp\\test.txt"},
                                            {"c:\\temp\\test.txt", "C:\\TEMP", "test.txt"},
                                            {"c:\\temp\\test.txt", "d:\\temp", "c:\\temp\\test.txt"},
                                            {"\\\\server\\share\\a.txt", "\\\\server", "share\\a.txt"}};
  CheckEdits(&PathName::ForceRelative, aREFERENCES);
}

void TEST_PathName::FileExists(std::string&) {
  const TestFolder folder;
  PathName file(folder.MakeFile("file.txt", "12345"));
  OXA_TEST_ASSERT(file.Exists() && !file.IsDir());
  OXA_TEST_EQUALS(5, static_cast<long>(file.GetLength()));
  OXA_TEST_ASSERT(!PathName(folder.File("other.txt")).Exists());
  OXA_TEST_ASSERT(!PathName().Exists());

  OXA_TEST_ASSERT(file.Rename("other.txt"));
  OXA_TEST_ASSERT(file == folder.File("other.txt") && file.Exists());
  OXA_TEST_ASSERT(!PathName(folder.File("file.txt")).Exists());
}

void TEST_PathName::IsDir(std::string&) {
  const TestFolder folder;
  PathName path(folder.GetName());
  OXA_TEST_ASSERT(path.IsDir() && !path.Exists());  // without a separator at its end it names a file
  path.ForceAsDir();
  OXA_TEST_ASSERT(path.IsDir() && path.Exists());
  OXA_TEST_ASSERT(!PathName(folder.File("none")).IsDir());
  OXA_TEST_ASSERT(!PathName().IsDir());

  folder.MakeFile("a.txt", "");
  folder.MakeFile("b.txt", "");
  Texts names;
  OXA_TEST_ASSERT(path.ReadDirectory(names, "*.txt"));
  OXA_TEST_ASSERT(names == (Texts{"a.txt", "b.txt"}));
}

void TEST_PathName::FileDelete(std::string&) {
  const TestFolder folder;
  PathName file(folder.MakeFile("file.txt", ""));
  OXA_TEST_ASSERT(file.Delete() && !file.Exists());
  OXA_TEST_ASSERT(file.Delete());  // what isn't there is as good as deleted

  folder.MakeFile("file.txt", "");
  PathName directory(folder.GetName());
  OXA_TEST_ASSERT(directory.Delete("file.txt"));
  OXA_TEST_ASSERT(!directory.Delete("file.txt"));
}

void TEST_PathName::DirectoryCreateDelete(std::string&) {
  const TestFolder folder;
  PathName path;
  path.SetBaseAndBranch(folder.GetName());
  path.AddBranch("TmpName");
  OXA_TEST_ASSERT(path == folder.File("TmpName/"));
  OXA_TEST_ASSERT(!path.Exists());
  OXA_TEST_ASSERT(path.CreateDirectoryA());
  OXA_TEST_ASSERT(path.Exists() && path.IsDir());
  OXA_TEST_ASSERT(path.CreateDirectoryA());
  OXA_TEST_ASSERT(path.Delete());
  OXA_TEST_ASSERT(!path.Exists());

  path += "name";
  OXA_TEST_ASSERT(path == folder.File("TmpName/name"));
  OXA_TEST_ASSERT(Raises<LogicError>([] { PathName("dir\\file.txt") += "more"; }));
  OXA_TEST_ASSERT(Raises<InvalidParameter>([] { PathName("dir") += "C:more"; }));
}

}  // namespace Oxa::Core
