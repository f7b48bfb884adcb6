// A folder for the files of one test.
#ifndef OXACORE_AUTOTEST_MODULE_TESTFOLDER_H
#define OXACORE_AUTOTEST_MODULE_TESTFOLDER_H

#include <string>

namespace Oxa::Core {

/// A new folder below the system's one for temporary files, of which nobody else knows; goes with all that is in it.
class TestFolder {
 public:
  /// Raises a Test::Failure if there can't be one. Where the raise returns, every name in it is one that nothing has.
  TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder();

  /// Without a separator at its end.
  const std::string& GetName() const { return m_sName; }

  /// The name of a file in it, with "/".
  std::string File(const std::string& leaf) const { return m_sName + '/' + leaf; }

  /// Writes a file of that text, and gives its name. Raises a Test::Failure if that can't be done.
  std::string MakeFile(const std::string& leaf, const std::string& content) const;

 private:
  std::string m_sName;
};

}  // namespace Oxa::Core

#endif
