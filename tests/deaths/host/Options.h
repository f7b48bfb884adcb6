// What the host was called with: KIND PLACE [name=value]...
#ifndef OXACORE_TESTS_DEATHS_OPTIONS_H
#define OXACORE_TESTS_DEATHS_OPTIONS_H

namespace Deaths {

/// Before anything else, with what main gets: static constructors ask for options, too.
void KeepOptions(int count, char** arguments);

char** Arguments();
const char* Kind();
const char* Place();

/// The value of "name=value", or null.
const char* Option(const char* name);
int NumberOption(const char* name, int otherwise);
bool IsOption(const char* name, const char* value);

}  // namespace Deaths

#endif
