// The system's text for one of its error codes, for messages.
#ifndef OXACORE_ERRORHANDLING_SYSTEMERRORMESSAGE_H
#define OXACORE_ERRORHANDLING_SYSTEMERRORMESSAGE_H

#include <string>

namespace Oxa::Core {

/// As the system gives it; for a code that it doesn't know a text that tells the code in decimal.
std::string SystemErrorMessage(unsigned long code);

}  // namespace Oxa::Core

#endif
