// The messages of alerts: Boost.Format templates with positional placeholders.
//
// Thread safety: any thread may call anything; nothing is shared. Locks: none.
// Failures: nothing raises and nothing throws. A template that doesn't fit its arguments gives a text that says so, and
// a line on standard error.
//
//   explicit ProbeGone(int channel) : ErrorClass(AlertMessage("Probe %1% is gone", channel)) {}
#ifndef INFRASTRUCTURE_OXACORE_ALERTMESSAGE_H
#define INFRASTRUCTURE_OXACORE_ALERTMESSAGE_H

#include <Infrastructure/OxaCore/Export.h>

#include <boost/format.hpp>
#include <string>

namespace Oxa::Core {

/// For the clause that catches what went wrong with a message: says so on standard error and gives the text that
/// stands for it (empty when there is no memory even for that). Only the cancellation of the thread passes.
OXACORE_API std::string AlertMessageFailed();

/// Puts `arguments`, in order, for "%1%", "%2%"… into a Boost.Format template: the message of an alert.
/// When formatting throws, the result is "Failed to construct alert message due to exception."; nothing leaves
/// but the cancellation of the thread.
template <class... Arguments>
std::string AlertMessage(const char* messageTemplate, const Arguments&... arguments) {
  try {
    boost::format message(messageTemplate);
    static_cast<void>((message % ... % arguments));
    return message.str();
  } catch (...) {
    return AlertMessageFailed();
  }
}

}  // namespace Oxa::Core

#endif
