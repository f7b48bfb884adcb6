// Sends the samples of one series to the recorder, as typed values through a pipe.
#ifndef STATION_SAMPLESENDER_H
#define STATION_SAMPLESENDER_H

#include <Infrastructure/OxaCore/io/BinaryPipe.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <string>

#include "Recording.h"
#include "Sample.h"

namespace Station {

/// What the pipe to the recorder holds. Only whole samples go in and out, so it has room for all of one or for
/// nothing.
constexpr unsigned long long ullRECORDER_RING = 65536 * uRECORD_SIZE;

/// For one thread at a time. Each sender stacks filters of its own on the pipe, so all of them are made before the
/// first one sends, and up to uMOST_SERIES may send at once.
class SampleSender {
 public:
  /// `pipe`, of ullRECORDER_RING bytes, must outlive it, and is in non-blocking mode for those who write.
  SampleSender(Oxa::Core::BinaryPipe& pipe, const std::string& series);

  /// Puts the sample into the pipe, and never waits. False if there is no room or the pipe is closed, which is told
  /// as a SampleNotRecorded to the log of the series.
  bool Send(const Sample& sample);

 private:
  bool TrySend(const Sample& sample);

  const std::string m_sSeries;
  Oxa::Core::BinaryPipe& m_pipe;
  Oxa::Core::BufferedBinaryOutputStream m_block;  // so that samples of several threads don't mix in the pipe
  Oxa::Core::DataOutputStream m_values;
};

}  // namespace Station

#endif
