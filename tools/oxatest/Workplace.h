// Where the process of a module may write.
#ifndef OXATEST_WORKPLACE_H
#define OXATEST_WORKPLACE_H

#include <cstdint>
#include <string>

namespace OxaTest {

/// A folder in that of TMPDIR, or in /tmp without such a variable, which others can't look into, with the file that
/// takes the output. Gone with this object.
class Workplace {
 public:
  Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  ~Workplace();

  /// Empty if all is there; else why it isn't.
  const std::string& Complaint() const { return m_sComplaint; }

  const std::string& Folder() const { return m_sFolder; }

  /// The file that takes the output; what is written goes to its end.
  int Output() const { return m_iOutput; }

  /// What stands in the file between where the last call ended and `end`; of more than 64 KiB only the end, with a
  /// line that says so.
  std::string TakeOutput(std::uint64_t end);
  /// The same up to the end of the file.
  std::string TakeOutput();

  /// The size of the file.
  std::uint64_t OutputSize() const;

  /// Gives the space of what TakeOutput has given, or won't give if it is called for an end from `size` on, back to the
  /// system, if that can be.
  void GiveBack(std::uint64_t size);

 private:
  std::string m_sFolder;
  std::string m_sComplaint;
  int m_iOutput = -1;
  std::uint64_t m_uTaken = 0;
  std::uint64_t m_uGivenBack = 0;
};

}  // namespace OxaTest

#endif
