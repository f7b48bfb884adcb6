// A library without tests. The one that it needs has some.
#include <Infrastructure/OxaCore/OxaCore.h>

extern "C" __attribute__((visibility("default"))) int CountChannels() { return IsOxaCoreDebug() ? 0 : 8; }
