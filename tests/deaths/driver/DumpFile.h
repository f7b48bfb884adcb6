// The little that a verdict needs of a dump: where the dying thread stood.
#ifndef OXACORE_TESTS_DEATHS_DUMPFILE_H
#define OXACORE_TESTS_DEATHS_DUMPFILE_H

#include <filesystem>
#include <string>

namespace Deaths {

/// The function that the failing instruction lies in, by the symbols of the module's file; "" if it lies in none.
/// Begins with "!" if the dump at `path` makes no sense, with what is wrong.
std::string FunctionOnTop(const std::filesystem::path& path);

}  // namespace Deaths

#endif
