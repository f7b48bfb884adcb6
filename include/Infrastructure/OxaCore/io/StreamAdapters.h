// Adapters between the streams of this library and those of the standard library, in both directions, and a
// stream over the elements of a container. Templates only.
//
// Whatever an adapter stands on is not owned and must outlive it.
// Thread safety: none of their own; the rules of what they wrap count. Locks: none.
// Failures: BinaryInputAdapterImpl and BinaryOutputAdapterImpl raise nothing and look at no state after writing: a
// failure stays in the flags of the standard stream, and comes as std::ios_base::failure if its exceptions mask says
// so. In the other direction an error of the library passes through the stream buffer of Boost.Iostreams into the
// standard stream, which sets badbit, and lets the error itself pass if its exceptions mask holds badbit. The
// exception to that is flushing: the buffer drops an error that it meets while it is flushed or closed, and what
// tells of it is badbit alone.
//
//   std::stringstream text;
//   BinaryStreamAdapter<std::stringstream> stream(text);
//   DataOutputStream(stream) << 5 << std::string("five");
//
//   boost::iostreams::stream<BinaryInputStream::Source<char>> in(file);  // an std::istream over any stream
//   std::getline(in, line);
#ifndef INFRASTRUCTURE_OXACORE_IO_STREAMADAPTERS_H
#define INFRASTRUCTURE_OXACORE_IO_STREAMADAPTERS_H

#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <algorithm>
#include <boost/iostreams/categories.hpp>
#include <cstddef>
#include <ios>
#include <istream>
#include <iterator>
#include <limits>
#include <ostream>
#include <type_traits>

namespace Oxa::Core {

/// A count of bytes in the type of the standard streams, which ends earlier.
inline std::streamsize ToStreamSize(unsigned long long count) {
  constexpr unsigned long long limit = std::numeric_limits<std::streamsize>::max();
  return static_cast<std::streamsize>(std::min(count, limit));
}

/// Reads a standard stream of type `T`. The second argument is true for a `T` that has both directions.
template <class T, bool bBothWays>
class BinaryInputAdapterImpl : public BinaryInputStream {
 public:
  /// `stream` isn't owned and must outlive this.
  explicit BinaryInputAdapterImpl(T& stream) : m_stream(&stream) {}

  /// -1 if the stream isn't good before it is read; else what it gave, 0 included: the call that meets the end
  /// gives what there was, and the next one -1. A count below 1 reads nothing.
  long long Read(void* buffer, long long count) override {
    if (!Input().good()) return -1;
    Input().read(static_cast<char*>(buffer), std::max(count, 0LL));
    return Input().gcount();
  }

  /// The byte, or -1.
  int Read() override { return Input().get(); }

  /// Whether the stream is still good when `count` bytes, or all that there were, have been passed over.
  bool Skip(unsigned long long count) override {
    Input().ignore(ToStreamSize(count), -1);
    return Input().good();
  }

  /// What the stream's buffer knows to be there; 0 if it knows that nothing is.
  unsigned long long AvailableBytes() override {
    return static_cast<unsigned long long>(std::max<std::streamsize>(Input().rdbuf()->in_avail(), 0));
  }

 private:
  using Side = std::conditional_t<bBothWays, std::istream, T>;

  Side& Input() { return *m_stream; }

  T* m_stream;  // not owned
};

/// Writes to a standard stream of type `T`. The second argument is true for a `T` that has both directions.
template <class T, bool bBothWays>
class BinaryOutputAdapterImpl : public BinaryOutputStream {
 public:
  /// `stream` isn't owned and must outlive this.
  explicit BinaryOutputAdapterImpl(T& stream) : m_stream(&stream) {}

  /// What the stream does with that many bytes. Its state isn't looked at.
  void Write(const void* buffer, unsigned long long count) override {
    if (count != 0) Output().write(static_cast<const char*>(buffer), ToStreamSize(count));
  }
  /// The same for one byte.
  void Write(unsigned char byte) override { Output().put(static_cast<char>(byte)); }
  /// Flushes the stream.
  void Flush() override { Output().flush(); }

 private:
  using Side = std::conditional_t<bBothWays, std::ostream, T>;

  Side& Output() { return *m_stream; }

  T* m_stream;  // not owned
};

/// Input and output at once over a standard stream with both directions, such as std::stringstream.
template <class T>
class BinaryStreamAdapter : public BinaryInputAdapterImpl<T, true>, public BinaryOutputAdapterImpl<T, true> {
 public:
  /// `stream` isn't owned and must outlive this.
  explicit BinaryStreamAdapter(T& stream)
      : BinaryInputAdapterImpl<T, true>(stream), BinaryOutputAdapterImpl<T, true>(stream) {}

  /// Does nothing. It stands for the one of either base.
  void Close() override {}
};

/// Reads the elements from one iterator up to another as bytes, the low bytes of each element first. Elements are
/// integers. The elements and the iterators to them must stay valid.
///
/// An element of 8 bits is given as a signed char, a char on every platform: above 127 it comes out negative, 255
/// like the end of the stream. Take an unsigned element type to get bytes as they are.
/// Iterators that can be gone through once only (those of standard streams) do for all but AvailableBytes.
template <class Iterator>
class IteratorBinaryInputAdapter : public BinaryInputStream {
 public:
  /// From `begin` up to `end`, which isn't read.
  IteratorBinaryInputAdapter(Iterator begin, Iterator end) : m_end(end), m_current(begin) {}
  ~IteratorBinaryInputAdapter() override = default;

  using BinaryInputStream::Read;

  /// The next byte, or -1.
  int Read() override {
    if (m_current == m_end) return -1;
    const int byte = ByteAt(m_iBitOffset);
    m_iBitOffset += s_iBITS_PER_BYTE;
    if (m_iBitOffset == m_iBitWidth) Advance();
    return byte;
  }

  /// Counts ELEMENTS, whatever their width, less the bytes that have been read of the current one; never below 0.
  unsigned long long AvailableBytes() override {
    const long long elements = std::distance(m_current, m_end);
    return static_cast<unsigned long long>(std::max(elements - m_iBitOffset / s_iBITS_PER_BYTE, 0LL));
  }

 private:
  using Element = typename std::iterator_traits<Iterator>::value_type;
  static_assert(std::is_integral_v<Element>, "only integers have bytes in an order that can be told");

  static constexpr int s_iBITS_PER_BYTE = 8;

  int ByteAt(int bitOffset) const {
    const Element element = *m_current;
    if constexpr (std::is_same_v<Element, char> || std::is_same_v<Element, signed char>) {
      return static_cast<signed char>(element);
    } else {
      return static_cast<int>((static_cast<unsigned long long>(element) >> bitOffset) & 0xFFU);
    }
  }

  void Advance() {
    m_iBitOffset = 0;
    ++m_current;
  }

  Iterator m_end;
  Iterator m_current;
  int m_iBitOffset = 0;
  int m_iBitWidth = static_cast<int>(sizeof(Element)) * s_iBITS_PER_BYTE;
};

/// A source as Boost.Iostreams has them, over any stream of the library: boost::iostreams::stream of this is an
/// std::istream. Holds a reference; copies share the stream.
template <class Char>
class BinaryInputStream::Source {
  static_assert(sizeof(Char) == 1, "the streams of the library consist of bytes");

 public:
  // What Boost.Iostreams asks of a device.
  using char_type = Char;
  using category = boost::iostreams::source_tag;

  /// Implicit, since boost::iostreams::stream converts. `stream` isn't owned.
  Source(BinaryInputStream& stream) : m_stream(&stream) {}  // NOLINT: boost::iostreams::stream converts

  /// The bytes that were read, or -1 at the end. The result -2 of a stream in non-blocking mode has no meaning for
  /// Boost: don't use such a stream this way. What the stream raises passes.
  std::streamsize read(char_type* buffer, std::streamsize count) { return m_stream->Read(buffer, count); }

 private:
  BinaryInputStream* m_stream;  // not owned
};

/// A sink as Boost.Iostreams has them, over any stream of the library: boost::iostreams::stream of this is an
/// std::ostream. Its flush empties the buffer of the standard stream into this library's, and no further.
template <class Char>
class BinaryOutputStream::Sink {
  static_assert(sizeof(Char) == 1, "the streams of the library consist of bytes");

 public:
  // What Boost.Iostreams asks of a device.
  using char_type = Char;
  using category = boost::iostreams::sink_tag;

  /// Implicit, since boost::iostreams::stream converts. `stream` isn't owned.
  Sink(BinaryOutputStream& stream) : m_stream(&stream) {}  // NOLINT: boost::iostreams::stream converts

  /// Writes all, and gives `count`. What the stream raises passes.
  std::streamsize write(const char_type* buffer, std::streamsize count) {
    m_stream->Write(buffer, static_cast<unsigned long long>(count));
    return count;
  }

 private:
  BinaryOutputStream* m_stream;  // not owned
};

}  // namespace Oxa::Core

#endif
