// The messages of alerts: Boost.Format templates with positional placeholders.
#ifndef INFRASTRUCTURE_OXACORE_ALERTMESSAGE_H
#define INFRASTRUCTURE_OXACORE_ALERTMESSAGE_H

#include <Infrastructure/OxaCore/Export.h>

#include <boost/format.hpp>
#include <string>

namespace Oxa::Core {

/// Reports on standard error that a message could not be formatted, and gives the text that stands for it
/// (empty when there is no memory even for that).
OXACORE_API std::string AlertMessageFailed() noexcept;

/// Puts `arguments`, in order, for "%1%", "%2%"… into a Boost.Format template: the message of an alert.
/// Never throws: when formatting does, the result is "Failed to construct alert message due to exception."
template <class... Arguments>
std::string AlertMessage(const char* messageTemplate, const Arguments&... arguments) noexcept {
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
