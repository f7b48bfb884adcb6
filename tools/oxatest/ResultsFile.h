// The file that takes the results.
#ifndef OXATEST_RESULTSFILE_H
#define OXATEST_RESULTSFILE_H

#include "Records.h"

#include <fstream>
#include <string>
#include <vector>

namespace OxaTest {

/// A file is written beside its place and put there when it is whole: what stood there before stays until then. What
/// isn't a file, as a pipe, is written to directly.
class ResultsFile {
 public:
  /// Looks whether `path` can be written, and opens it if it isn't a file. "": nothing is to be written.
  explicit ResultsFile(const std::string& path);

  /// Empty if nothing went wrong until now; else what did.
  const std::string& Complaint() const { return m_sComplaint; }

  /// Once.
  void Write(const std::vector<ModuleRecord>& modules);

 private:
  void Prepare();
  int MakeBeside();
  void WriteBeside(const std::vector<ModuleRecord>& modules);
  void PutInPlace();
  void Complain(const std::string& why);

  const std::string m_sPath;
  std::string m_sTarget;  // the same without links
  std::string m_sBeside;
  std::ofstream m_direct;
  std::string m_sComplaint;
};

}  // namespace OxaTest

#endif
