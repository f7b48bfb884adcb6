// What a debugger makes of dumps.
#ifndef OXACORE_TESTS_DEATHS_DEBUGGER_H
#define OXACORE_TESTS_DEATHS_DEBUGGER_H

#include <filesystem>
#include <string>
#include <vector>

namespace Deaths {

/// The name of the debugger's program; "" if there is none on this machine.
std::string Debugger();

/// For each dump the functions on top of the thread that died, innermost first, "" for one without a name; nothing
/// for a dump that it doesn't open. One debugger opens them all, one after the other.
std::vector<std::vector<std::string>> TopFunctions(const std::vector<std::filesystem::path>& dumps);

}  // namespace Deaths

#endif
