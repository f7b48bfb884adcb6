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

  /// Whether the input ends at `at`; reads on if need be. Throws illegal_backtracking if what stands there has
  /// been forgotten.
  bool IsEnd(std::uint64_t at) {
    return at - m_uForgotten >= m_uFilled && !ReadOn(at);  // what is forgotten wraps around to large numbers
  }

  /// The character at `at`, of which IsEnd has said that there is one.
  char At(std::uint64_t at) const { return *Kept(at); }

  /// How many characters are there from `at` on, where the input doesn't end.
  std::size_t GetSize(std::uint64_t at) const {
    return m_uFilled - static_cast<std::size_t>(at - m_uForgotten);
  }

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
    if (other.m_pWindow == nullptr) return m_pWindow == nullptr || IsEnd();
    return m_pWindow == other.m_pWindow && m_uAt == other.m_uAt;
  }
  bool operator!=(const XMLStreamIterator& other) const { return !(*this == other); }

  /// Whether there is nothing more; not asked of the one that stands for the end.
  bool IsEnd() const { return m_pWindow->IsEnd(m_uAt); }

  /// How many characters from here on are in the window.
  std::size_t GetSize() const { return m_pWindow->GetSize(m_uAt); }
  XMLStreamIterator& operator+=(std::size_t count) {
    m_uAt += count;
    return *this;
  }

  void Checkpoint() const { m_pWindow->Checkpoint(m_uAt); }

  /// Steps over the characters for which `accepts` holds; gives their number.
  template <class Accepts>
  std::size_t Skip(const Accepts& accepts) {
    const std::uint64_t begin = m_uAt;
    while (!IsEnd()) {
      const char* const span = Begin();
      const char* const end = span + GetSize();
      const char* at = span;
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
