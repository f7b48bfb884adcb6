// What an alert says of itself in the log.
#ifndef OXACORE_LOG_ALERTENTRY_H
#define OXACORE_LOG_ALERTENTRY_H

#include <string>

namespace Oxa::Core {

/// Parts of an alert's XML, without the layout of their lines; "" for what isn't in it.
struct AlertEntry {
  std::string m_sMessage;
  std::string m_sFile;  ///< where it was raised
  std::string m_sLine;
  std::string m_sFunction;
};

/// Reads what is well-formed of `xml`. Control characters are no mistake in it: texts have them whole.
AlertEntry ReadAlertEntry(const std::string& xml);

}  // namespace Oxa::Core

#endif
