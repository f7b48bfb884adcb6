// The texts in an object of JSON.
#ifndef OXACORE_PLATFORM_LINUX_JSONTEXTS_H
#define OXACORE_PLATFORM_LINUX_JSONTEXTS_H

#include <map>
#include <string>

namespace Oxa::Core::Platform {

/// Puts the members of the object `json` whose values are texts into `texts`, by their names; of several with one
/// name the first. Members of other kinds are checked and left out. False, with `texts` untouched, if that isn't one
/// whole object by all rules of the language, or if it is nested more than 32 deep. Bytes above 127 are taken as they
/// stand. Throws std::bad_alloc.
bool ReadJsonTexts(const std::string& json, std::map<std::string, std::string>& texts);

}  // namespace Oxa::Core::Platform

#endif
