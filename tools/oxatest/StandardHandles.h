// Standard input, output and error.
#ifndef OXATEST_STANDARDHANDLES_H
#define OXATEST_STANDARDHANDLES_H

namespace OxaTest {

/// Those of the three that are closed become the null device, so that no other file is taken for one of them. False
/// if the system refuses.
bool OpenStandardHandles();

/// Whether all could be written so far that was to be shown. What couldn't is dropped then.
bool FlushOutput();

}  // namespace OxaTest

#endif
