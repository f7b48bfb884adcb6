// Typed values on a byte stream: what one end writes, the other end reads with the same sequence of operators.
//
// The bytes carry no type, no padding and no mark of a version. Every number is little-endian:
//   char, signed char, unsigned char, bool      1 byte; a bool is 0 or 1
//   short, unsigned short                       2
//   int, unsigned int, long, unsigned long      4, on every platform
//   long long, unsigned long long               8
//   float, double                               4 and 8, as IEEE 754 has them
//   std::string                                 length in bytes as 4 bytes, then the bytes
//   std::wstring                                length in UTF-16 code units as 4 bytes, then 2 bytes for each unit
//
// A character beyond 0xFFFF is two code units, a surrogate pair, on the stream. A surrogate without its partner
// travels as it stands in both directions. Where a wstring itself holds the two halves of a pair, they are one
// character when they arrive.
//
// Both streams are filters without a buffer and without a lock: one thread at a time, and the stream below must
// outlive them. Small values pay for a call of the stream below each: put a buffered stream there.
// Failures: what the stream below raises passes. The rest is told at each operation.
//
//   DataOutputStream out(buffered);
//   out << 7 << 2.5 << std::string("mV");
//   out.Flush();
//   ...
//   DataInputStream in(source);
//   in >> channel >> value >> unit;
#ifndef INFRASTRUCTURE_OXACORE_IO_DATASTREAMS_H
#define INFRASTRUCTURE_OXACORE_IO_DATASTREAMS_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <string>

namespace Oxa::Core {

/// Writes typed values. Raw bytes can be written in between.
class OXACORE_API DataOutputStream : public BinaryOutputStreamFilter {
 public:
  /// `sink` isn't owned and must outlive this filter.
  explicit DataOutputStream(BinaryOutputStream& sink);
  ~DataOutputStream() override;

  // Each is one Write of the stream below: of a byte for the three char types, of a block for all others.
  DataOutputStream& operator<<(signed char value) { return PutChar(value); }
  DataOutputStream& operator<<(char value) { return PutChar(value); }
  DataOutputStream& operator<<(unsigned char value) { return PutChar(value); }
  DataOutputStream& operator<<(bool value) { return Put(static_cast<unsigned char>(value)); }
  DataOutputStream& operator<<(short value) { return Put(value); }
  DataOutputStream& operator<<(unsigned short value) { return Put(value); }
  DataOutputStream& operator<<(int value) { return Put(value); }
  DataOutputStream& operator<<(unsigned int value) { return Put(value); }
  DataOutputStream& operator<<(long long value) { return Put(value); }
  DataOutputStream& operator<<(unsigned long long value) { return Put(value); }
  DataOutputStream& operator<<(float value) { return Put(value); }
  DataOutputStream& operator<<(double value) { return Put(value); }

  /// Raise InvalidParameter ("value", log name "Oxa.Core.DataOutputStream") for what 4 bytes can't hold. Nothing
  /// is written then, also where that raise returns.
  DataOutputStream& operator<<(long value);
  DataOutputStream& operator<<(unsigned long value);

  /// The length goes to the stream below, the bytes through this object's own Write, which a derived class may
  /// override; no bytes, no such call. Of a string of more than 4294967295 bytes as many are written as the low
  /// 32 bits of its length tell.
  DataOutputStream& operator<<(const std::string& value);

  /// The same for code units. Raises InvalidParameter ("value") for a character above 0x10FFFF, and
  /// AllocationFailed if there is no memory for more than 127 units; nothing is written then, also where such a
  /// raise returns.
  DataOutputStream& operator<<(const std::wstring& value);

  /// Not a value: it would go out as a bool. Make a std::string of a literal.
  DataOutputStream& operator<<(const void* value) = delete;

 private:
  template <class T>
  DataOutputStream& Put(T value) {
    m_sink->Write(&value, sizeof value);
    return *this;
  }

  template <class T>
  DataOutputStream& PutChar(T value) {
    m_sink->Write(static_cast<unsigned char>(value));
    return *this;
  }

  template <class OnStream, class T>
  DataOutputStream& PutNarrowed(T value);
  void WriteUnits(const std::wstring& value, char16_t* text, unsigned int length);
};

/// Reads typed values. Only the three char types tell of the end of the stream: the others leave the variable as
/// it was, or with as many of its bytes exchanged as came before the end.
class OXACORE_API DataInputStream : public BinaryInputStreamFilter {
 public:
  /// `source` isn't owned and must outlive this filter.
  explicit DataInputStream(BinaryInputStream& source);
  ~DataInputStream() override;

  /// Reads from the stream below until there are `count` bytes at `buffer`, or the stream has no more. Doesn't
  /// tell which: what came is in the buffer, the rest of the buffer is as it was.
  /// Every result of the stream below is added to a count of 64 bits without a sign, -1 and -2 too. So with
  /// nothing read yet these end the call; after some bytes they take one or two off the count, and the stream
  /// is asked for them again, until the count has run down past 0. Hence a stream that has no data for a while
  /// must not be read this way (bytes get lost), and one that answers 0 for ever keeps the call for ever.
  void ReadFully(void* buffer, unsigned long long count);

  // Raise XIOEndOfStream (0 bytes of 1, log name "Oxa.Core.DataInputStream") if the stream below has no byte; the
  // variable then stays as it was, also where that raise returns.
  DataInputStream& operator>>(signed char& value);
  DataInputStream& operator>>(char& value);
  DataInputStream& operator>>(unsigned char& value);

  // As ReadFully does. Any byte but 0 is true; a long gets the sign of its 4 bytes.
  DataInputStream& operator>>(bool& value);
  DataInputStream& operator>>(short& value) { return Take(value); }
  DataInputStream& operator>>(unsigned short& value) { return Take(value); }
  DataInputStream& operator>>(int& value) { return Take(value); }
  DataInputStream& operator>>(unsigned int& value) { return Take(value); }
  DataInputStream& operator>>(long& value);
  DataInputStream& operator>>(unsigned long& value);
  DataInputStream& operator>>(long long& value) { return Take(value); }
  DataInputStream& operator>>(unsigned long long& value) { return Take(value); }
  DataInputStream& operator>>(float& value) { return Take(value); }
  DataInputStream& operator>>(double& value) { return Take(value); }

  /// By ReadFully: the length, then the bytes; at the end of the stream that gives an empty string. The string
  /// always gets as many characters as the length told: those that didn't come any more are null characters.
  /// Raises AllocationFailed ("Oxa.Core.DataInputStream") if there is no memory for that many; `value` is as
  /// before then. Where that raise returns, too.
  DataInputStream& operator>>(std::string& value);

  /// The same for code units, of which two can make one character.
  DataInputStream& operator>>(std::wstring& value);

 private:
  // Nearly always a value comes in one piece.
  template <class T>
  DataInputStream& Take(T& value) {
    const long long got = m_source->Read(&value, sizeof value);
    if (got != sizeof value) ReadOn(&value, sizeof value, got);
    return *this;
  }

  void ReadOn(void* buffer, unsigned long long count, long long got);
  template <class T>
  DataInputStream& TakeChar(T& value);
  template <class OnStream, class T>
  DataInputStream& TakeNarrowed(T& value);
};

}  // namespace Oxa::Core

#endif
