#include "XML/PrettyPrintFormatter.h"

#include "StringTools/Characters.h"
#include "XML/Escape.h"
#include "XML/FormatterParts.h"
#include "XML/MarkupHandler.h"
#include "XML/TextInput.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uLINE_WIDTH = 80;
constexpr std::size_t uCDATA_WIDTH = 68;     // a short section with its marks has 80 columns
constexpr std::size_t uPACKED_WIDTH = 78;    // of encoded data, with its indentation
constexpr std::size_t uEND_TAG_MARKS = 3;    // "</" and ">"
constexpr std::size_t uATTRIBUTE_MARKS = 4;  // "=", two quotes and a blank
constexpr char sCDATA_BEGIN[] = "<![CDATA[";
constexpr char sCDATA_END[] = "]]>";

bool HasLineFeed(std::string_view text) { return text.find('\n') != std::string_view::npos; }

// Calls `work` with each line of `text`, without the white space around it. A line feed at the very end has
// an empty line behind it.
template <class Work>
void ForEachLine(std::string_view text, const Work& work) {
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    work(WithoutOuterSpace(text.substr(0, end)));
    text.remove_prefix(end + 1);
  }
  work(WithoutOuterSpace(text));
}

// With the blank that follows every attribute.
std::size_t AttributeWidth(const XMLAttribute<std::string>& attribute) {
  std::size_t width = attribute.name.size() + uATTRIBUTE_MARKS;
  for (const std::string& part : attribute.value) width += part.size();
  return width;
}

// With the blank in front of the first.
std::size_t AttributesWidth(const XMLAttributeMap<std::string>& attributes) {
  std::size_t width = 1;
  for (const XMLAttribute<std::string>& attribute : attributes) width += AttributeWidth(attribute);
  return width;
}

}  // namespace

PrettyPrintFormatter::PrettyPrintFormatter() = default;
PrettyPrintFormatter::~PrettyPrintFormatter() = default;

PrettyPrintFormatter::String PrettyPrintFormatter::GetIndent() const { return "  "; }

// --- Lines and columns

void PrettyPrintFormatter::EndLine(TextOutput& out) {
  out.EndLine();
  ++m_uLine;
}

void PrettyPrintFormatter::BreakLine(TextOutput& out) {
  if (m_uColumn == 0) return;
  EndLine(out);
  m_uColumn = 0;
}

void PrettyPrintFormatter::Put(TextOutput& out, std::string_view text) {
  out << text;
  m_uColumn += text.size();
}

void PrettyPrintFormatter::PutOnNewLine(TextOutput& out, std::string_view margin, std::string_view text) {
  EndLine(out);
  out << margin << text;
  m_uColumn = margin.size() + text.size();
}

void PrettyPrintFormatter::AlignToIndent(TextOutput& out) {
  if (!IsAtIndent()) PutOnNewLine(out, Indent(), "");
}

void PrettyPrintFormatter::EndLines(TextOutput& out, int count) {
  for (; count > 0; --count) EndLine(out);
}

void PrettyPrintFormatter::Follow(const char* text, std::size_t size) {
  for (const char* const end = text + size; text != end; ++text) {
    ++m_uColumn;
    if (*text != '\n') continue;
    ++m_uLine;
    m_uColumn = 0;
  }
}

// --- Tags

void PrettyPrintFormatter::FormatStartDoc(std::ostream& os, const String& version, const String& encoding,
                                          bool standalone) {
  m_lastStartTag.reset();
  m_uIndent = 0;
  m_uLine = 1;
  m_uColumn = 0;
  TextOutput out(os);
  PutDeclaration(out, version, encoding, standalone);
  EndLine(out);
}

void PrettyPrintFormatter::FormatStartTag(std::ostream& os, const String& name, const Attributes& attributes,
                                          bool emptyTag) {
  TextOutput out(os);
  PutStartTag(out, name, attributes, emptyTag);
  out.Flush();
}

void PrettyPrintFormatter::PutStartTag(TextOutput& out, const String& name, const Attributes& attributes,
                                       bool emptyTag) {
  BreakLine(out);
  const std::uint64_t firstLine = m_uLine;
  out << Indent() << '<' << name;
  m_uColumn += Indent().size() + name.size() + 1;
  if (!attributes.empty()) PutAttributes(out, attributes);
  if (emptyTag) {
    out << "/>";
    EndLine(out);
    m_uColumn = 0;
  } else {
    out << '>';
    ++m_uColumn;
    OpenLevel(firstLine, name);
  }
}

void PrettyPrintFormatter::PutAttributes(TextOutput& out, const Attributes& attributes) {
  const bool onOneLine = m_uColumn + AttributesWidth(attributes) <= uLINE_WIDTH;
  out << ' ';
  ++m_uColumn;
  const String margin(onOneLine ? 0 : m_uColumn, ' ');
  bool first = true;
  for (const XMLAttribute<String>& attribute : attributes) {
    if (!first && !onOneLine) PutOnNewLine(out, margin, "");
    first = false;
    PutAttribute(out, attribute);
  }
}

void PrettyPrintFormatter::PutAttribute(TextOutput& out, const XMLAttribute<String>& attribute) {
  out << attribute.name << "=\"";
  PutValue(out, attribute.value);
  out << "\" ";
  m_uColumn += AttributeWidth(attribute);
}

void PrettyPrintFormatter::OpenLevel(std::uint64_t line, const String& name) {
  m_lastStartTag = StartTag{line, name.size()};
  if (m_sMargin.size() <= m_uIndent) GrowMargin();
  m_uIndent += m_uStep;
}

void PrettyPrintFormatter::GrowMargin() {
  const String indent = GetIndent();
  m_uStep = indent.size();
  m_sMargin += indent;
}

void PrettyPrintFormatter::CloseLevel() {
  if (m_uIndent != 0) m_uIndent -= m_uStep;
}

bool PrettyPrintFormatter::EndTagFits(const String& name) const {
  return m_lastStartTag->line == m_uLine && name.size() + uEND_TAG_MARKS + m_uColumn < uLINE_WIDTH;
}

void PrettyPrintFormatter::FormatEndTag(std::ostream& os, const String& name) {
  TextOutput out(os);
  PutEndTag(out, name);  // and ends the line, which flushes
}

void PrettyPrintFormatter::PutEndTag(TextOutput& out, const String& name) {
  CloseLevel();
  if (!m_lastStartTag) {
    if (m_uColumn == 0) out << Indent();
  } else if (!EndTagFits(name)) {
    BreakLine(out);
    out << Indent();
  }
  Core::PutEndTag(out, name);
  EndLine(out);
  m_uColumn = 0;
}

void PrettyPrintFormatter::PutLines(TextOutput& out, const String& lines, std::uint64_t count) {
  out << lines;
  m_uLine += count;
  m_uColumn = 0;
}

// --- Texts

void PrettyPrintFormatter::FormatText(std::ostream& os, const String& text) {
  TextOutput out(os);
  PutText(out, text);
  out.Flush();
}

void PrettyPrintFormatter::PutText(TextOutput& out, const String& text) {
  String buffer;
  const String& escaped = EscapeInto(text, buffer);
  if (HasLineFeed(escaped))
    PutTextLines(out, escaped);
  else
    PlaceText(out, escaped);
  EndLongLine(out);
}

void PrettyPrintFormatter::FormatEntityReference(std::ostream& os, const String& reference) {
  TextOutput out(os);
  PlaceText(out, reference);
  EndLongLine(out);
  out.Flush();
}

// Behind the start tag if the end tag will fit there as well.
void PrettyPrintFormatter::PlaceText(TextOutput& out, const String& text) {
  if (m_uColumn == 0) {
    Put(out, Indent());
    Put(out, text);
  } else if (!m_lastStartTag ||
             text.size() + m_uColumn + m_lastStartTag->nameSize + uEND_TAG_MARKS < uLINE_WIDTH) {
    Put(out, text);
  } else {
    PutOnNewLine(out, Indent(), text);
  }
}

void PrettyPrintFormatter::PutTextLines(TextOutput& out, const String& text) {
  BreakLine(out);
  ForEachLine(text, [&](std::string_view line) {
    out << Indent() << line;
    EndLine(out);
  });
  m_uColumn = 0;
}

void PrettyPrintFormatter::EndLongLine(TextOutput& out) {
  if (m_uColumn >= uLINE_WIDTH) BreakLine(out);
}

void PrettyPrintFormatter::FormatTextStream(std::ostream& os, std::istream& text) {
  TextOutput out(os);
  BreakLine(out);
  TextInput input(text);
  String line;
  String buffer;
  while (input.GetLine(line))
    PutOnNewLine(out, Indent(), WithoutOuterSpace(std::string_view(EscapeInto(line, buffer))));
  EndLine(out);
  m_uColumn = 0;
}

// --- Markup

template <class Source>
void PrettyPrintFormatter::Reflow(std::ostream& os, Source& markup) {
  XMLParser<XMLHandler> parser(*this, os);
  if (!parser.Parse(markup)) parser.Abandon();
}

void PrettyPrintFormatter::FormatMarkup(std::ostream& os, const String& markup) { Reflow(os, markup); }

void PrettyPrintFormatter::FormatMarkupStream(std::ostream& os, std::istream& markup) {
  Reflow(os, markup);
  TextInput(markup).ForEach([](char) {});  // what stands behind the place where it stopped to be markup
}

// --- Blocks

void PrettyPrintFormatter::FormatComment(std::ostream& os, const String& text, bool preserve) {
  PutBlock(os, Block{"<!-- ", text, " -->", preserve});
}

void PrettyPrintFormatter::FormatProcessingInstruction(std::ostream& os, const String& target,
                                                       const String& content, bool preserve) {
  PutBlock(os, Block{"<?" + target + " ", content, "?>", preserve});
}

void PrettyPrintFormatter::PutBlock(std::ostream& os, const Block& block) {
  TextOutput out(os);
  AlignToIndent(out);
  const std::uint64_t firstLine = m_uLine;
  Put(out, block.prefix);
  if (!block.text.empty()) PutBlockText(out, block);
  if (m_uLine != firstLine && m_uColumn == 0) out << Indent();
  out << block.suffix;
  EndLine(out);
  m_uColumn = 0;
}

void PrettyPrintFormatter::PutBlockText(TextOutput& out, const Block& block) {
  const bool inLines = !block.preserve && HasLineFeed(block.text);
  if (!inLines && m_uColumn + block.text.size() + block.suffix.size() <= uLINE_WIDTH) {
    Put(out, block.text);
    return;
  }
  const String margin = String(Indent()) + GetIndent();
  if (inLines)
    ForEachLine(block.text, [&](std::string_view line) { PutOnNewLine(out, margin, line); });
  else
    PutOnNewLine(out, margin, block.text);
  BreakLine(out);
}

// --- CDATA sections

void PrettyPrintFormatter::FormatCDATA(std::ostream& os, const String& text, bool preserve) {
  if (text.size() + Indent().size() > uCDATA_WIDTH && !preserve) {
    PutBlock(os, Block{sCDATA_BEGIN, text, sCDATA_END, preserve});
    return;
  }
  TextOutput out(os);
  if (text.size() + Indent().size() <= uCDATA_WIDTH)
    PutShortCDATA(out, text);
  else
    PutPreservedCDATA(out, text);
  m_uColumn = 0;
}

void PrettyPrintFormatter::PutShortCDATA(TextOutput& out, const String& text) {
  AlignToIndent(out);
  out << sCDATA_BEGIN << text << sCDATA_END;
  EndLine(out);
}

void PrettyPrintFormatter::PutPreservedCDATA(TextOutput& out, const String& text) {
  EndLines(out, 2);
  out << sCDATA_BEGIN << text << sCDATA_END;
  Follow(text.data(), text.size());
  EndLines(out, 2);
}

void PrettyPrintFormatter::FormatCDATAStream(std::ostream& os, std::istream& text, bool preserve) {
  TextOutput out(os);
  EndLines(out, 2);
  out << sCDATA_BEGIN;
  if (preserve)
    PutLinesOf(out, text);
  else
    PutPacked(out, text);
  out << sCDATA_END;
  EndLines(out, 2);
  m_uColumn = 0;
}

// As they stand: a last line without a line end gets none. A line end is one of the layout as well.
void PrettyPrintFormatter::PutLinesOf(TextOutput& out, std::istream& text) {
  TextInput(text).ForEach([&](char c) {
    if (c == '\n')
      EndLine(out);
    else
      out << c;
  });
}

// Encoded data: its white space means nothing, and it comes in lines of one length.
void PrettyPrintFormatter::PutPacked(TextOutput& out, std::istream& text) {
  const String indent = GetIndent();
  const std::size_t width = uPACKED_WIDTH - indent.size();
  String line;
  EndLine(out);
  TextInput(text).ForEach([&](char c) {
    if (IsSpace(c)) return;
    line += c;
    if (line.size() < width) return;
    PutPackedLine(out, indent, line);
  });
  if (!line.empty()) PutPackedLine(out, indent, line);
}

void PrettyPrintFormatter::PutPackedLine(TextOutput& out, const String& indent, String& line) {
  out << indent << line;
  EndLine(out);
  line.clear();
}

}  // namespace Oxa::Core
