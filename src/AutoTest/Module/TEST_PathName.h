// A suite of the module's own tests.
#ifndef OXACORE_AUTOTEST_MODULE_TEST_PATHNAME_H
#define OXACORE_AUTOTEST_MODULE_TEST_PATHNAME_H

#include <Infrastructure/OxaCore/AutoTest.h>

#include <string>

namespace Oxa::Core {

/// "PathName Tests": paths, taken apart and put together, and the files behind them.
class TEST_PathName : public TestSuite {
 public:
  TEST_PathName();

 private:
  void SetBase(std::string& text);
  void ExtractFNameExt(std::string& text);
  void ExtractDrivePath(std::string& text);
  void ValidatePath(std::string& text);
  void ValidateFileName(std::string& text);
  void IsPathRelative(std::string& text);
  void IsDirectoryRelative(std::string& text);
  void IsDriveRelative(std::string& text);
  void IsPathAbsolute(std::string& text);
  void MakePathAbsolute(std::string& text);
  void MakePathRelative(std::string& text);
  void FileExists(std::string& text);
  void IsDir(std::string& text);
  void FileDelete(std::string& text);
  void DirectoryCreateDelete(std::string& text);
};

}  // namespace Oxa::Core

#endif
