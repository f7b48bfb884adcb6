// One line of the table: how a host is to die, and what is to be left of it.
#ifndef OXACORE_TESTS_DEATHS_ROW_H
#define OXACORE_TESTS_DEATHS_ROW_H

#include <set>
#include <string>
#include <vector>

namespace Deaths {

/// How many files of a kind are left. `m_iMost` -1 is no limit.
struct Count {
  int m_iLeast;
  int m_iMost;
  bool Holds(int number) const { return number >= m_iLeast && (m_iMost < 0 || number <= m_iMost); }
};

constexpr Count NONE = {0, 0};
constexpr Count ONE = {1, 1};
constexpr Count ANY = {0, -1};
constexpr Count SOME = {1, -1};

/// Where the files lie: below the base path, in the fallback beside the program, or in the working folder itself.
enum class EWhere { eNOWHERE, eBASE, ePROGRAM, eWORKING };

/// Which folders of the run may be written to.
enum class EFolders { eALL, eBASE_IMPOSSIBLE, eBASE_READ_ONLY, eWORKING_ONLY, eALL_READ_ONLY };

struct Row {
  std::string m_sKind;
  std::string m_sPlace;
  std::vector<std::string> m_more;  ///< further arguments of the host
  EFolders m_eFolders = EFolders::eALL;

  std::set<int> m_statuses;  ///< those that are right: exit status, or minus the signal
  Count m_reports = ONE;
  Count m_dumps = ONE;
  EWhere m_eWhere = EWhere::eBASE;
  int m_iMostFolders = 1;
  bool m_bWhole = true;          ///< files are to be whole: there is room for them
  bool m_bAllOrNothing = false;  ///< reports are whole or empty, even so
  std::string m_sMessage;        ///< in the report; "" if it doesn't matter
  std::string m_sTop;            ///< the function on top; "" if it can't be known
  int m_iTopWithin = 1;          ///< it is one of so many frames on top
  bool m_bInReport = false;      ///< the report tells of the function as well
  bool m_bSlow = false;          ///< it is the watch that ends it
};

/// All rows, each once.
std::vector<Row> AllRows();

/// A hundred of them: every kind, every place, every trouble that doesn't need the watch, and three that do.
std::vector<Row> ShortRows();

}  // namespace Deaths

#endif
