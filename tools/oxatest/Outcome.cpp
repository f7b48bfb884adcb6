#include "Outcome.h"

namespace OxaTest {

const char* NameOf(EOutcome outcome) {
  static const char* const s_NAMES[] = {"passed", "failed",      "error",    "crashed",
                                        "hung",   "interrupted", "disabled", "not run"};
  return outcome >= 0 && outcome < eOUTCOMES ? s_NAMES[outcome] : "";
}

bool IsBad(EOutcome outcome) {
  return outcome == eFAILED || outcome == eERROR || outcome == eCRASHED || outcome == eHUNG;
}

}  // namespace OxaTest
