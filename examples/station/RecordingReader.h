// Reads a recording back: from a file that may be anything, or may have been cut short anywhere.
#ifndef STATION_RECORDINGREADER_H
#define STATION_RECORDINGREADER_H

#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <string>
#include <vector>

#include "Measurement.h"

namespace Station {

/// What was found in a recording.
struct Recorded {
  std::vector<Measurement> m_measurements;  ///< one per series, with its samples; not evaluated yet
  std::string m_sDamage;                    ///< why this isn't all; empty if it is
};

/// Reads as many samples as there are. Nothing that the file tells about itself is trusted.
/// Raises RecordingUnreadable for a file that can't be opened or has no proper head, and gives nothing where that
/// returns. Where the samples go wrong, that has been a RecordingDamaged, and the samples before it count.
Recorded ReadRecording(const std::string& file);

/// The same from all that `source` tells to be there (AvailableBytes); `name` is what messages call it.
Recorded ReadRecording(const std::string& name, Oxa::Core::BinaryInputStream& source);

}  // namespace Station

#endif
