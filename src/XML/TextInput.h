// Reads the streams that texts are taken from, and keeps to itself what goes wrong there.
#ifndef OXACORE_XML_TEXTINPUT_H
#define OXACORE_XML_TEXTINPUT_H

#include <istream>
#include <streambuf>
#include <string>

namespace Oxa::Core {

/// One rule for every reader: a stream that isn't good gives nothing and stays as it is; one that is read to
/// its end has eofbit afterwards; one whose buffer throws is at its end there, with badbit, and what it gave
/// before counts. The stream's exception mask is not heeded: an ordinary end is no failure.
class TextInput {
 public:
  explicit TextInput(std::istream& source);
  TextInput(const TextInput&) = delete;
  TextInput& operator=(const TextInput&) = delete;

  /// What can be had at once, at least one character, at most `size`; 0 at the end.
  std::streamsize Read(char* chunk, std::streamsize size);

  /// The next line, without its line feed; false at the end. One behind the last line feed only if it holds
  /// something.
  bool GetLine(std::string& line);

  /// Calls `work` with each character, to the end.
  template <class Work>
  void ForEach(const Work& work) {
    for (Traits::int_type c = Next(); c != Traits::eof(); c = Next()) work(Traits::to_char_type(c));
  }

 private:
  using Traits = std::char_traits<char>;

  Traits::int_type Next() {
    if (m_pBuffer == nullptr) return Traits::eof();
    try {
      const Traits::int_type c = m_pBuffer->sbumpc();
      if (c == Traits::eof()) End(std::ios::eofbit);
      return c;
    } catch (...) {
      Fail();
      return Traits::eof();
    }
  }

  void End(std::ios::iostate state);
  void Fail();

  std::istream& m_rSource;
  std::streambuf* m_pBuffer;  // null at the end
};

}  // namespace Oxa::Core

#endif
