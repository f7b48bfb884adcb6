// A value of every type that goes through data streams, for self-tests of what lies beneath them.
#ifndef OXACORE_AUTOTEST_MODULE_STREAMVALUES_H
#define OXACORE_AUTOTEST_MODULE_STREAMVALUES_H

namespace Oxa::Core {

class DataInputStream;
class DataOutputStream;

/// How many bytes they take on a stream.
constexpr int iSTREAM_VALUES_SIZE = 1116;

/// Writes them.
void WriteStreamValues(DataOutputStream& out);

/// Reads them. Raises a Test::Failure if one isn't what was written.
void CheckStreamValues(DataInputStream& in);

}  // namespace Oxa::Core

#endif
