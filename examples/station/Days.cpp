#include "Days.h"

#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/WrappingFileStreamIterator.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iomanip>
#include <ostream>

#include "DailyLog.h"
#include "ShownText.h"
#include "Station.h"

namespace Station {

using Oxa::Core::PathName;
using Oxa::Core::WrappingFileStreamIterator;

namespace {

constexpr int iNAME_WIDTH = 26;
constexpr int iCOUNT_WIDTH = 8;
constexpr std::size_t uMOMENT = 23;  // 2011/03/03 02:33:17.123

class DayPrinter : public WrappingFileStreamIterator {
 public:
  explicit DayPrinter(std::ostream& out) : m_out(out) {}

 protected:
  void NextFile(std::string fileName) override {
    std::ifstream file(fileName, std::ios::binary);
    std::string line;
    std::string first;
    std::string last;
    unsigned long count = 0;
    for (; std::getline(file, line); ++count) {
      last = MomentOf(line);
      if (count == 0) first = last;
    }
    m_out << std::left << std::setw(iNAME_WIDTH) << PathName(fileName).GetLeafAndExt() << std::right
          << std::setw(iCOUNT_WIDTH) << count << "  " << first << "  " << last << '\n';
  }

 private:
  // Of a line that is somebody else's, as much as a moment would take.
  static std::string MomentOf(const std::string& line) {
    return Shown(line.substr(0, std::min(line.find('\t'), uMOMENT)));
  }

  std::ostream& m_out;
};

int Refuse(const std::string& folder, const char* reason, int status) {
  Complain("The folder \"" + Shown(folder) + "\" " + reason);
  return status;
}

}  // namespace

int ShowDays(std::ostream& out, const std::string& folder) {
  if (!PathName(folder).IsDir()) return Refuse(folder, "isn't there", iCANNOT_START);
  DayPrinter days(out);
  days.Initialize(folder, sDAILY_PREFIX);
  if (!days.FilesExist()) return Refuse(folder, "holds no daily log", iINCOMPLETE);
  out << '\n'
      << std::left << std::setw(iNAME_WIDTH) << "daily log" << std::right << std::setw(iCOUNT_WIDTH)
      << "entries"
      << "  from, to\n";
  days.IterateFiles();
  out << '\n';
  return iALL_MEASURED;
}

}  // namespace Station
