// The ways in which the station can be made to die.
#ifndef STATION_CRASHKIND_H
#define STATION_CRASHKIND_H

#include <string>

namespace Station {

/// One of them.
struct CrashKind {
  const char* m_sName;  ///< as the command line has it
  const char* m_sShows;
  void (*m_pDie)();  ///< returns only as the text of the kind tells, or where this machine can't die so
  bool m_bEndsAfter = false;  ///< the death waits for the end of the program, so that m_pDie returns
  bool m_bLeavesFolder = true;
};

/// Null if this processor knows none of that name.
const CrashKind* FindCrashKind(const std::string& name);

/// One line for each that this processor knows: its name and what it shows.
std::string CrashKindList();

}  // namespace Station

#endif
