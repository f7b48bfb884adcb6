// How a test ended.
#ifndef OXATEST_OUTCOME_H
#define OXATEST_OUTCOME_H

namespace OxaTest {

enum EOutcome : int {
  ePASSED,
  eFAILED,
  eERROR,        ///< an error or an exception that isn't a failed assertion
  eCRASHED,      ///< the process ended
  eHUNG,         ///< it was ended since the test took too long
  eINTERRUPTED,  ///< it was ended since the runner was
  eDISABLED,
  eNOT_RUN,  ///< the module ended before, or the test gave no result
  eOUTCOMES  ///< how many there are
};

/// "passed" and so on.
const char* NameOf(EOutcome outcome);

/// Whether the run as a whole has failed by it.
bool IsBad(EOutcome outcome);

}  // namespace OxaTest

#endif
