// Bounded streams: filters that let only so many bytes pass, so that a reader stays inside an embedded section and
// a writer inside what was allotted to it. They keep no data.
//
// Thread safety: none; one object belongs to one thread at a time. Failures: XIOExceededOutputLimit of the output;
// what the stream below raises passes.
//
//   BoundedBinaryInputStream section(file, header.sectionSize);
//   ReadSection(section);  // meets the end of the stream at the end of the section
#ifndef INFRASTRUCTURE_OXACORE_IO_BOUNDEDSTREAMS_H
#define INFRASTRUCTURE_OXACORE_IO_BOUNDEDSTREAMS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

namespace Oxa::Core {

/// The first bytes of a source; then its end.
class OXACORE_API BoundedBinaryInputStream : public BinaryInputStreamFilter {
 public:
  /// Lets the next `limit` bytes of `source` through.
  BoundedBinaryInputStream(BinaryInputStream& source, unsigned long long limit);
  ~BoundedBinaryInputStream() override;

  /// At most as many as are left; -1 with none left, and for the rest what the source gives.
  long long Read(void* buffer, long long count) override;
  int Read() override;

  /// A count beyond the limit passes over what is left, gives false, and counts nothing: those bytes still count
  /// as ahead. Otherwise `count` counts as delivered, whatever the source gives.
  bool Skip(unsigned long long count) override;

  /// Those of the source, but no more than are left.
  unsigned long long AvailableBytes() override;

  /// The bytes delivered.
  unsigned long long NumBytesInput() const { return m_count; }

 private:
  unsigned long long m_limit;
  unsigned long long m_count = 0;  // delivered
};

/// Lets the first bytes through to a sink, and raises at the next one.
class OXACORE_API BoundedBinaryOutputStream : public BinaryOutputStreamFilter {
 public:
  /// Lets `limit` bytes through to `sink`.
  BoundedBinaryOutputStream(BinaryOutputStream& sink, unsigned long long limit);
  ~BoundedBinaryOutputStream() override;

  /// If the block goes beyond the limit, what fits of it is written, the sink is flushed, and
  /// XIOExceededOutputLimit is raised ("Oxa.Core.BoundedBinaryOutputStream"); the rest is dropped.
  void Write(const void* buffer, unsigned long long count) override;

  /// Raises the same at the limit, and neither writes nor flushes then.
  void Write(unsigned char byte) override;

  /// The bytes written.
  unsigned long long NumBytesOutput() const { return m_count; }

 private:
  unsigned long long m_limit;
  unsigned long long m_count = 0;  // written
};

}  // namespace Oxa::Core

#endif
