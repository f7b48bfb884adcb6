#include <Infrastructure/OxaCore/StringTools.h>

#include <algorithm>
#include <string_view>

#include "StringTools/Characters.h"

namespace Oxa::Core {

namespace {

template <class Char>
using View = std::basic_string_view<Char>;

template <class Char>
using Text = std::basic_string<Char>;

template <class Char, class Change>
Text<Char> Changed(Text<Char> text, const Change& change) {
  for (Char& c : text) c = change(c);
  return text;
}

// The position behind `pos` at which the line that starts there is broken: the last white space that fits, or
// the first one behind a word that doesn't.
template <class Char>
std::size_t FindBreak(View<Char> text, std::size_t pos, std::size_t width) {
  for (std::size_t i = pos + width; i > pos; --i) {
    if (IsSpace(text[i])) return i;
  }
  std::size_t i = pos + width;
  while (i < text.size() && !IsSpace(text[i])) ++i;
  return i;
}

template <class Char>
Text<Char> BreakLines(View<Char> text, std::size_t width, Char breakChar) {
  if (width == 0) width = 1;
  Text<Char> lines;
  lines.reserve(text.size());
  std::size_t pos = 0;
  while (text.size() - pos > width) {
    std::size_t i = FindBreak(text, pos, width);
    while (i < text.size() && IsSpace(text[i])) ++i;
    lines += WithoutOuterSpace(text.substr(pos, i - pos));
    if (i < text.size()) lines += breakChar;
    pos = i;
  }
  return lines += WithoutOuterSpace(text.substr(pos));
}

// Fills a vector from the front: texts that are there already lend their memory to the new ones, and pieces are
// gathered first, so that the vector grows in few steps.
template <class Char>
class PieceWriter {
 public:
  explicit PieceWriter(std::vector<Text<Char>>& out) : m_out(out) {}

  void Add(View<Char> piece) {
    if (m_uGathered == uROOM) Flush();
    m_gathered[m_uGathered++] = {piece.data(), piece.size()};
  }

  int Finish() {
    Flush();
    m_out.resize(m_uCount);
    return static_cast<int>(m_uCount);
  }

 private:
  static constexpr std::size_t uROOM = 16;

  // A view would begin empty, which costs as much as half a piece.
  struct Piece {
    const Char* m_pBegin;
    std::size_t m_uSize;
  };

  void Flush() {
    if (m_uCount + m_uGathered > m_out.capacity()) m_out.reserve(2 * m_uCount + m_uGathered);
    for (std::size_t i = 0; i < m_uGathered; ++i) Write(m_gathered[i]);
    m_uGathered = 0;
  }

  void Write(const Piece& piece) {
    if (m_uCount < m_out.size()) {
      m_out[m_uCount].assign(piece.m_pBegin, piece.m_uSize);
    } else {
      m_out.emplace_back(piece.m_pBegin, piece.m_uSize);
    }
    ++m_uCount;
  }

  std::vector<Text<Char>>& m_out;
  std::size_t m_uCount = 0;
  Piece m_gathered[uROOM];
  std::size_t m_uGathered = 0;
};

// `delimiter` is a text or one character, which is found much faster.
template <class Char, class Delimiter>
int SplitAt(View<Char> text, Delimiter delimiter, std::size_t delimiterSize, std::vector<Text<Char>>& out) {
  PieceWriter<Char> pieces(out);
  std::size_t begin = 0;
  for (std::size_t found; (found = text.find(delimiter, begin)) != View<Char>::npos;
       begin = found + delimiterSize) {
    pieces.Add(text.substr(begin, found - begin));
  }
  pieces.Add(text.substr(begin));
  return pieces.Finish();
}

template <class Char>
int SplitText(View<Char> text, View<Char> delimiter, std::vector<Text<Char>>& out) {
  if (delimiter.size() == 1) return SplitAt(text, delimiter.front(), 1, out);
  if (!delimiter.empty()) return SplitAt(text, delimiter, delimiter.size(), out);
  PieceWriter<Char> whole(out);
  whole.Add(text);
  return whole.Finish();
}

template <class Char>
Char* PutText(Char* to, View<Char> text) {
  if (text.size() == 1) {
    *to = text.front();
  } else {
    std::char_traits<Char>::copy(to, text.data(), text.size());
  }
  return to + text.size();
}

template <class Char>
Text<Char> JoinTexts(const std::vector<Text<Char>>& pieces, View<Char> delimiter) {
  if (pieces.empty()) return Text<Char>();
  std::size_t size = (pieces.size() - 1) * delimiter.size();
  for (const Text<Char>& piece : pieces) size += piece.size();
  Text<Char> joined(size, Char());
  Char* to = PutText<Char>(joined.data(), pieces.front());
  for (std::size_t i = 1; i < pieces.size(); ++i) to = PutText<Char>(PutText(to, delimiter), pieces[i]);
  return joined;
}

constexpr char cESCAPE = '\\';

void AppendEscaped(const std::string& item, char separator, std::string& out) {
  for (const char c : item) {
    if (c == separator || c == cESCAPE) out += cESCAPE;
    out += c;
  }
}

std::string Unescaped(std::string_view text) {
  std::string item;
  item.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == cESCAPE && ++i == text.size()) break;
    item += text[i];
  }
  return item;
}

template <class Char>
View<Char> ViewOf(const Text<Char>& text) {
  return text;
}

}  // namespace

namespace StringTools {

std::string TrimStart(const std::string& text) { return std::string(WithoutLeadingSpace(ViewOf(text))); }
std::string TrimEnd(const std::string& text) { return std::string(WithoutTrailingSpace(ViewOf(text))); }
std::string TrimWSByLocale(const std::string& text) { return std::string(WithoutOuterSpace(ViewOf(text))); }
TUnicodeStr TrimStart(const TUnicodeStr& text) { return TUnicodeStr(WithoutLeadingSpace(ViewOf(text))); }
TUnicodeStr TrimEnd(const TUnicodeStr& text) { return TUnicodeStr(WithoutTrailingSpace(ViewOf(text))); }
TUnicodeStr TrimWS(const TUnicodeStr& text) { return TUnicodeStr(WithoutOuterSpace(ViewOf(text))); }

std::string UpCase(const std::string& text) {
  return Changed(text, [](char c) { return ToUpper(c); });
}
std::string DownCase(const std::string& text) {
  return Changed(text, [](char c) { return ToLower(c); });
}
TUnicodeStr UpCase(const TUnicodeStr& text) {
  return Changed(text, [](wchar_t c) { return ToUpper(c); });
}
TUnicodeStr DownCase(const TUnicodeStr& text) {
  return Changed(text, [](wchar_t c) { return ToLower(c); });
}

std::string LineBreaks(const std::string& text, unsigned int width, char breakChar) {
  return BreakLines(ViewOf(text), width, breakChar);
}
TUnicodeStr LineBreaks(const TUnicodeStr& text, unsigned int width, wchar_t breakChar) {
  return BreakLines(ViewOf(text), width, breakChar);
}

int Split(const std::string& text, const std::string& delimiter, std::vector<std::string>& out) {
  return SplitText(ViewOf(text), ViewOf(delimiter), out);
}
int Split(const TUnicodeStr& text, const TUnicodeStr& delimiter, std::vector<TUnicodeStr>& out) {
  return SplitText(ViewOf(text), ViewOf(delimiter), out);
}

std::string Join(const std::vector<std::string>& pieces, const std::string& delimiter) {
  return JoinTexts(pieces, ViewOf(delimiter));
}
TUnicodeStr Join(const std::vector<TUnicodeStr>& pieces, const TUnicodeStr& delimiter) {
  return JoinTexts(pieces, ViewOf(delimiter));
}

void Escape(std::string& text, char separator) {
  std::string escaped;
  escaped.reserve(text.size());
  AppendEscaped(text, separator, escaped);
  text.swap(escaped);
}

void UnEscape(std::string& text, char) { text = Unescaped(text); }

void Array2Str(const std::vector<std::string>& items, char separator, std::string& out) {
  std::string text;  // `out` may be one of the items
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += separator;
    AppendEscaped(items[i], separator, text);
  }
  out.swap(text);
}

void Str2Array(const std::string& text, char separator, std::vector<std::string>& out) {
  out.clear();
  if (text.empty()) return;
  const std::string_view view = text;
  std::size_t begin = 0;
  bool evenBackslashes = true;  // directly before the character
  for (std::size_t i = 0; i < view.size(); ++i) {
    if (view[i] == separator && evenBackslashes) {
      out.push_back(Unescaped(view.substr(begin, i - begin)));
      begin = i + 1;
    }
    evenBackslashes = view[i] != cESCAPE || !evenBackslashes;
  }
  out.push_back(Unescaped(view.substr(begin)));
}

}  // namespace StringTools

}  // namespace Oxa::Core
