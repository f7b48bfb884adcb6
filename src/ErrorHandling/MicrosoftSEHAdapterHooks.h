// What the fault adapter gives to the floors below.
#ifndef OXACORE_ERRORHANDLING_MICROSOFTSEHADAPTERHOOKS_H
#define OXACORE_ERRORHANDLING_MICROSOFTSEHADAPTERHOOKS_H

namespace Oxa::Core {

struct Hooks;

/// Fills in the hooks that faults are translated and the adapter is used by.
void ConnectFaults(Hooks& hooks);

}  // namespace Oxa::Core

#endif
