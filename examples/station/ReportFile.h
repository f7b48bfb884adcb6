// The report of a run as a page in a file.
#ifndef STATION_REPORTFILE_H
#define STATION_REPORTFILE_H

#include <fstream>
#include <iosfwd>
#include <string>
#include <vector>

#include "Measurement.h"
#include "Verdicts.h"

namespace Station {

/// One thread.
class ReportFile {
 public:
  /// Makes or empties `file`, which is to hold the page of a run that begins now; empty: nothing is to be written.
  /// Raises ReportImpossible.
  explicit ReportFile(const std::string& file);

  /// Writes the page, and tells `out` where it lies. Complains if the file doesn't take it; false then.
  bool Write(std::ostream& out, const std::vector<Measurement>& measurements, const Verdicts& verdicts,
             const std::vector<std::string>& refusals);

 private:
  const std::string m_sFile;
  const std::string m_sMoment;
  std::ofstream m_stream;
};

}  // namespace Station

#endif
