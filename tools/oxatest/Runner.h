// Runs one module in a process of its own.
#ifndef OXATEST_RUNNER_H
#define OXATEST_RUNNER_H

#include "Display.h"
#include "Options.h"
#include "Records.h"

#include <string>

namespace OxaTest {

/// Never fails: what goes wrong stands in the record. CatchSignals and AdoptOrphans come
/// first.
ModuleRecord RunModule(const std::string& module, const Options& options, Display& display);

}  // namespace OxaTest

#endif
