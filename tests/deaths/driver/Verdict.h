// Whether a death was one as it should be.
#ifndef OXACORE_TESTS_DEATHS_VERDICT_H
#define OXACORE_TESTS_DEATHS_VERDICT_H

#include <string>
#include <vector>

#include "Run.h"

namespace Deaths {

struct Verdict {
  std::vector<std::string> m_complaints;  ///< empty if all is well
  bool m_bEnded = false;                  ///< by itself, in time
  bool m_bPossible = true;                ///< the machine gave the trouble that was asked for
  int m_iFolders = 0;
  int m_iReports = 0;
  int m_iGoodReports = 0;
  int m_iDumps = 0;
  int m_iGoodDumps = 0;
};

/// Looks at all that the run left but what a debugger has to say.
Verdict Judge(const Run& run);

/// Adds what a debugger found on top of each of the run's dumps, as TopFunctions has it.
void AddDebugger(Verdict& verdict, const Run& run, const std::vector<std::vector<std::string>>& tops);

}  // namespace Deaths

#endif
