// The multi-pass form of a stream: iterators that can go back as far as the last checkpoint.
//
// What lies behind a checkpoint is forgotten, so that a parse keeps no more in memory than the construct that it
// might have to look at again. Iterators are positions in a buffer that all of them share; what is read one
// after the other is taken from it as a span, without a step of the iterator for each character.
#ifndef OXACORE_XML_XMLSTREAMITERATOR_H
#define OXACORE_XML_XMLSTREAMITERATOR_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <iterator>
#include <vector>

#include "XML/TextInput.h"

namespace Oxa::Core {

/// The part of a stream that is kept in memory.
class XMLStreamWindow {
 public:
  /// Reads from where `stream` stands, at first into `room` bytes, more if a construct needs them.
  explicit XMLStreamWindow(std::istream& stream, std::size_t room = 16384)
      : m_input(stream), m_buffer(room) {}

  /// The characters from position `at` on, as many as are there, at least one; reads on if need be. None at
  /// the end. `size` is their number. Throws illegal_backtracking if they have been forgotten.
  const char* From(std::uint64_t at, std::size_t& size) {
    const std::uint64_t index = at - m_uForgotten;
    if (index >= m_uFilled && !ReadOn(at)) {
      size = 0;
      return nullptr;
    }
    size = m_uFilled - static_cast<std::size_t>(at - m_uForgotten);
    return &m_buffer[static_cast<std::size_t>(at - m_uForgotten)];
  }

  /// The character at `at`, which must not lie beyond the end; fails as From.
  char At(std::uint64_t at) {
    const std::uint64_t index = at - m_uForgotten;
    if (index >= m_uFilled && !ReadOn(at)) return 0;
    return m_buffer[static_cast<std::size_t>(at - m_uForgotten)];
  }

  bool IsEnd(std::uint64_t at) { return at - m_uForgotten >= m_uFilled && !ReadOn(at); }

  /// The characters that were read from `at` on and are still kept.
  const char* Kept(std::uint64_t at) const {
    return m_buffer.data() + static_cast<std::size_t>(at - m_uForgotten);
  }

  /// Nobody goes back behind `at` any more.
  void Checkpoint(std::uint64_t at) { m_uCheckpoint = at; }

  std::size_t GetRoom() const { return m_buffer.size(); }

 private:
  bool ReadOn(std::uint64_t at);
  void MakeRoom();

  TextInput m_input;
  std::vector<char> m_buffer;
  std::size_t m_uFilled = 0;        // how much of the buffer holds characters
  std::uint64_t m_uForgotten = 0;   // the position of its first one
  std::uint64_t m_uCheckpoint = 0;  // what lies before may be forgotten
};

/// A position. One without a window stands for the end.
class XMLStreamIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  XMLStreamIterator() = default;
  explicit XMLStreamIterator(XMLStreamWindow& window) : m_pWindow(&window) {}

  char operator*() const { return m_pWindow->At(m_uAt); }
  XMLStreamIterator& operator++() {
    ++m_uAt;
    return *this;
  }
  XMLStreamIterator operator++(int) {
    XMLStreamIterator before = *this;
    ++m_uAt;
    return before;
  }
  bool operator==(const XMLStreamIterator& other) const {
    if (other.m_pWindow == nullptr) return m_pWindow == nullptr || m_pWindow->IsEnd(m_uAt);
    return m_pWindow == other.m_pWindow && m_uAt == other.m_uAt;
  }
  bool operator!=(const XMLStreamIterator& other) const { return !(*this == other); }

  void Checkpoint() const { m_pWindow->Checkpoint(m_uAt); }

  /// Steps over the characters for which `accepts` holds; gives their number.
  template <class Accepts>
  std::size_t Skip(const Accepts& accepts) {
    const std::uint64_t begin = m_uAt;
    std::size_t size = 0;
    while (const char* span = m_pWindow->From(m_uAt, size)) {
      const char* at = span;
      const char* const end = span + size;
      while (at != end && accepts(*at)) ++at;
      m_uAt += static_cast<std::size_t>(at - span);
      if (at != end) break;
    }
    return static_cast<std::size_t>(m_uAt - begin);
  }

  /// The text from here to `last`, all of which has been read.
  const char* Begin() const { return m_pWindow->Kept(m_uAt); }
  const char* End(const XMLStreamIterator& last) const { return m_pWindow->Kept(last.m_uAt); }

 private:
  XMLStreamWindow* m_pWindow = nullptr;
  std::uint64_t m_uAt = 0;
};

}  // namespace Oxa::Core

#endif
