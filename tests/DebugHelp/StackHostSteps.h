// What StackHost does to the library so that it has to get along with less.
#ifndef OXACORE_TESTS_DEBUGHELP_STACKHOSTSTEPS_H
#define OXACORE_TESTS_DEBUGHELP_STACKHOSTSTEPS_H

#include <string>

namespace StackHost {

/// Changes a field of the object: "no-modules", "no-symbols" (it does without that function), "any-module" (modules
/// needn't be known), "all-modules" (none are left out).
void Change(const std::string& field);

/// Makes the object in children that are short of memory at one point each, and prints how that was.
void FirstUseShortOfMemory();

/// Begins anew with one allocation after the other failing, and prints how often that failed.
void BeginAnewShortOfMemory();

/// Prints what is written to the logger of call stacks from now on.
void ShowLog();

/// This thread's operations with denormal numbers trap from now on.
void SetDenormalTrap();
bool HasDenormalTrap();

}  // namespace StackHost

#endif
