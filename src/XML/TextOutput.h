// Gathers the pieces of layout steps and hands them to a stream, or adds them to a text, in as few calls as it can.
//
// Unformatted on purpose: a width or a fill that a host left set on its stream is not meant for markup.
#ifndef OXACORE_XML_TEXTOUTPUT_H
#define OXACORE_XML_TEXTOUTPUT_H

#include <cstddef>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>

namespace Oxa::Core {

class TextOutput {
 public:
  explicit TextOutput(std::ostream& os) : m_pStream(&os) {}
  explicit TextOutput(std::string& text) : m_pText(&text) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;

  // Not in the destructor: what the stream throws on request has to get out.
  void Flush() {
    if (m_uUsed != 0) Write(m_buffer, m_uUsed);
    m_uUsed = 0;
  }

  TextOutput& Put(const char* text, std::size_t size) {
    if (size > sizeof m_buffer - m_uUsed) return PutBeyond(text, size);
    std::memcpy(m_buffer + m_uUsed, text, size);
    m_uUsed += size;
    return *this;
  }

  TextOutput& operator<<(std::string_view text) { return Put(text.data(), text.size()); }
  template <std::size_t Size>
  TextOutput& operator<<(const char (&literal)[Size]) {
    return Put(literal, Size - 1);
  }
  TextOutput& operator<<(char c) { return Put(&c, 1); }

  /// A line end and a flush of the stream, as std::endl. A text has nothing to flush.
  void EndLine();

 private:
  TextOutput& PutBeyond(const char* text, std::size_t size);
  void Write(const char* text, std::size_t size);

  std::ostream* const m_pStream = nullptr;  // one of the two is there
  std::string* const m_pText = nullptr;
  std::size_t m_uUsed = 0;
  char m_buffer[512];
};

}  // namespace Oxa::Core

#endif
