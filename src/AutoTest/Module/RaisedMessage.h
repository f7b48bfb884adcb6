// What a self-test's step raises, by its text.
#ifndef OXACORE_AUTOTEST_MODULE_RAISEDMESSAGE_H
#define OXACORE_AUTOTEST_MODULE_RAISEDMESSAGE_H

#include <Infrastructure/OxaCore/AlertInfo.h>

#include <string>

namespace Oxa::Core {

/// The message of the `Expected` that `action` raises; "nothing raised" if it comes back. Errors of other classes pass.
template <class Expected, class Action>
std::string MessageOf(const Action& action) {
  try {
    action();
  } catch (Expected& error) {
    return error.GetData(AlertInfo::sMESSAGE);
  }
  return "nothing raised";
}

}  // namespace Oxa::Core

#endif
