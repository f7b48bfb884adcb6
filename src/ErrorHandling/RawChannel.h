// Alerts on standard error: the channel for what can't be told to any listener.
//
// Each call writes one piece, whole, so that threads don't mix their words. Nothing is thrown, whatever goes
// wrong, except that a thread's cancellation goes on. Works at any time, also before main and behind exit.
#ifndef OXACORE_ERRORHANDLING_RAWCHANNEL_H
#define OXACORE_ERRORHANDLING_RAWCHANNEL_H

#include <Infrastructure/OxaCore/AlertInfo.h>

namespace Oxa::Core {

/// Writes the alert as one XML element.
void WriteAlertElement(AlertInfo& alert, const char* circumstance);

/// Writes the alert as an XML document, and flushes.
void WriteAlertDocument(AlertInfo& alert, const char* circumstance);

/// Writes a line, and flushes. Allocates nothing.
void WriteRawLine(const char* text);

}  // namespace Oxa::Core

#endif
