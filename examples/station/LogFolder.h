// Where the default log of this process lies.
#ifndef STATION_LOGFOLDER_H
#define STATION_LOGFOLDER_H

#include <string>

namespace Station {

/// Sends the default log to `folder`, which is made if need be; empty: it stays beside the program. Gives why
/// nothing can be written there; empty if that's not so. To be called before anything is logged: so it raises
/// nothing, since every alert is.
std::string SendLogTo(const std::string& folder);

/// The document to open in order to read the log.
std::string LogDocument();

/// Has everything written that still waits to be, which shutting the library down would drop; from now on a
/// message is written before the call that logs it returns.
void FinishLog();

}  // namespace Station

#endif
