// How names of the registry become names of files.
//
// A part of a key is a folder, a value a file with "=" behind its name. Letters, digits, bytes above 127 and a few
// others stand for themselves, the rest as "%" and two digits; so no name leads out of its folder, none is hidden, and
// different names never meet. The empty part is "%".
#ifndef OXACORE_PLATFORM_LINUX_REGISTRYNAME_H
#define OXACORE_PLATFORM_LINUX_REGISTRYNAME_H

#include <string>

namespace Oxa::Core::Platform {

/// The folder of a key, with "/" in front of each part: "/Software/Acme" for "Software\Acme".
std::string FolderOfKey(const std::string& key);

/// The file of a value in the folder of its key.
std::string FileOfValue(const std::string& name);

/// What mkostemp makes a file's name from that no key and no value can have.
extern const char* const g_pUNFINISHED_VALUE;

}  // namespace Oxa::Core::Platform

#endif
