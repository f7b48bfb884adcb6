// The process of one module.
#ifndef OXATEST_CHILD_H
#define OXATEST_CHILD_H

#include "Options.h"

namespace OxaTest {

/// Loads the module, builds its tree and runs it as often as is wanted, telling each step. Gives the exit status: 0
/// if all could be told, whatever it was.
int RunChild(const Options& options);

}  // namespace OxaTest

#endif
