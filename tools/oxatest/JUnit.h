// The results in the form that build servers read.
#ifndef OXATEST_JUNIT_H
#define OXATEST_JUNIT_H

#include "Records.h"

#include <iosfwd>
#include <vector>

namespace OxaTest {

/// Writes a whole document, in UTF-8: well-formed, whatever the texts of the modules are.
void WriteJUnit(std::ostream& out, const std::vector<ModuleRecord>& modules);

}  // namespace OxaTest

#endif
