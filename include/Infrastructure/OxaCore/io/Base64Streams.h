// Base64 (RFC 4648, standard alphabet) on byte streams: a filter that encodes and one that decodes.
//
// Both hold one group of data and no buffer, and allocate nothing. They have no lock: one thread at a time. The
// stream below isn't owned and must outlive them. What it raises passes, unless an operation says otherwise.
//
//   Base64EncoderStream encoder(sink, false, 0, "");
//   encoder.Write(bytes, size);
//   encoder.Close();
//   ...
//   Base64DecoderStream decoder(source);
//   const long long size = decoder.Read(bytes, room);
#ifndef INFRASTRUCTURE_OXACORE_IO_BASE64STREAMS_H
#define INFRASTRUCTURE_OXACORE_IO_BASE64STREAMS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <string>

namespace Oxa::Core {

/// Encodes what is written to it. Every three bytes go to the stream below as one block of four characters.
class OXACORE_API Base64EncoderStream : public BinaryOutputStreamFilter {
 public:
  /// See InsertNewlines.
  Base64EncoderStream(BinaryOutputStream& sink, bool insertNewlines, int lineLength,
                      const std::string& lineSeparator);

  /// Encodes the one or two bytes that wait, without a flush. The bits beside the pad then come from the group
  /// before, or are 0 if there was none: Flush or Close first for a clean end. What the stream below raises here
  /// is lost.
  ~Base64EncoderStream() override;

  /// From now on, with `insertNewlines`, `lineSeparator` goes out as a block of its own after every group if
  /// `lineLength` is 4 or more, and never if it is less. It is no line length in any other sense. While newlines are
  /// on and none goes out, the characters are counted; if `lineLength` is raised later, separators come only if
  /// the count so far, with the next group, isn't above it.
  void InsertNewlines(bool insertNewlines, int lineLength, const std::string& lineSeparator);

  /// The same as Write(byte) for each byte in order.
  void Write(const void* buffer, unsigned long long count) override;
  void Write(unsigned char byte) override;

  /// Encodes the one or two bytes that wait, with pads, and flushes the stream below. With no byte waiting it does
  /// nothing at all; the stream below isn't flushed.
  void Flush() override;

 private:
  void EncodeDataBlock();
  void PutGroup(unsigned int characters);
  void CountLine();

  unsigned char m_block[3];  ///< the group being collected; behind m_iBlockSize the one before
  bool m_bInsertNewlines;
  std::string m_lineSeparator;
  int m_iBlockSize;  ///< bytes in m_block, 0 to 3
  int m_iLineLength;
  int m_iLineCount;  ///< characters since the last separator
};

/// Decodes what it reads. Bad input is no error: what is outside the alphabet is skipped (but byte 255, which counts
/// as 'A'), pads count as zero bits wherever they stand, and a group that the stream ends in gives what it has.
/// A group of two valid characters, or of one, gives one byte, three give two, four give three. A group of pads
/// alone reads as the end of the stream, though more may follow.
/// Skip is the forwarding one: it skips characters of the stream below, not decoded bytes.
class OXACORE_API Base64DecoderStream : public BinaryInputStreamFilter {
 public:
  /// `source` isn't owned and must outlive this filter.
  explicit Base64DecoderStream(BinaryInputStream& source);
  ~Base64DecoderStream() override;

  /// The same as Read() for each byte until `count` are there or one gives -1. An IOError ends it: it is told
  /// as a warning IOErrorDuringRead ("Oxa.Core.BinaryInputStream"), and the result is the number of bytes so far.
  long long Read(void* buffer, long long count) override;

  /// The next byte, or -1 if the stream below has no more or, in non-blocking mode, none now.
  int Read() override;

  /// An estimate: three quarters of what is available below, line ends and pads too, and what is decoded.
  unsigned long long AvailableBytes() override;

 protected:
  /// Drops what is decoded and not read yet.
  void DoBufferedInputInvalidation() override;

 private:
  int DecodeNextBlock();
  int Keep(unsigned int bits, int bytes);
  unsigned char NextDecoded();
  long long ReadBlock(unsigned char* bytes, long long count, long long& stored);

  unsigned char m_decoded[3];
  int m_iNumDecodedBytes;  ///< bytes of m_decoded still to deliver
  int m_iDecodeIndex;      ///< next byte to deliver
};

}  // namespace Oxa::Core

#endif
