// Processes that the tests started and that have lost their parents.
#ifndef OXATEST_ORPHANS_H
#define OXATEST_ORPHANS_H

namespace OxaTest {

/// From now on they become children of this process, also those that have left their group and session. False if the
/// system refuses.
bool AdoptOrphans();

/// Ends all children of this process, and theirs, but those that it had when it began to adopt.
void EndOrphans();

}  // namespace OxaTest

#endif
