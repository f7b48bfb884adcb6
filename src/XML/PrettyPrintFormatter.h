// The formatter that indents by two blanks and keeps lines near 80 columns.
//
// It follows the line and the column of what it writes itself; what somebody else writes onto the stream in
// between goes unnoticed. Several line ends in a row, blank lines and blanks in front of ">" are part of the
// layout that readers of these documents know.
#ifndef OXACORE_XML_PRETTYPRINTFORMATTER_H
#define OXACORE_XML_PRETTYPRINTFORMATTER_H

#include <Infrastructure/OxaCore/XMLFormatter.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "XML/TextOutput.h"

namespace Oxa::Core {

class PrettyPrintFormatter : public XMLFormatter {
 public:
  class XMLHandler;

  PrettyPrintFormatter();
  ~PrettyPrintFormatter() override;

  void FormatStartDoc(std::ostream& os, const String& version, const String& encoding,
                      bool standalone) override;
  void FormatStartTag(std::ostream& os, const String& name, const Attributes& attributes,
                      bool emptyTag) override;
  void FormatTextStream(std::ostream& os, std::istream& text) override;
  void FormatText(std::ostream& os, const String& text) override;
  void FormatEndTag(std::ostream& os, const String& name) override;
  void FormatProcessingInstruction(std::ostream& os, const String& target, const String& content,
                                   bool preserve) override;
  /// The markup is parsed and laid out anew. Of one that isn't well-formed, what was recognised is written.
  void FormatMarkupStream(std::ostream& os, std::istream& markup) override;
  void FormatMarkup(std::ostream& os, const String& markup) override;
  void FormatComment(std::ostream& os, const String& text, bool preserve) override;
  void FormatCDATAStream(std::ostream& os, std::istream& text, bool preserve) override;
  void FormatCDATA(std::ostream& os, const String& text, bool preserve) override;
  void FormatEntityReference(std::ostream& os, const String& reference) override;

  /// The steps of FormatStartTag, FormatText and FormatEndTag, which leave it to the caller to flush `out`: for whoever
  /// takes many of them in a row.
  void PutStartTag(TextOutput& out, const String& name, const Attributes& attributes, bool emptyTag);
  void PutText(TextOutput& out, const String& text);
  void PutEndTag(TextOutput& out, const String& name);
  /// Ends the line of a start tag, if it's that line.
  void BreakLine(TextOutput& out);
  /// Elements that were laid out at this level, each on lines of its own, with `count` line ends. The line before has
  /// been ended.
  void PutLines(TextOutput& out, const String& lines, std::uint64_t count);

  /// The blanks of one step of indentation.
  virtual String GetIndent() const;

 private:
  struct StartTag {
    std::uint64_t line;  // where it begins
    std::size_t nameSize;
  };

  struct Block {
    const String& prefix;
    const String& text;
    const String& suffix;
    bool preserve;
  };

  std::string_view Indent() const { return std::string_view(m_sMargin.data(), m_uIndent); }
  bool IsAtIndent() const { return m_uColumn == Indent().size(); }

  void EndLine(TextOutput& out);
  void EndLines(TextOutput& out, int count);
  void Put(TextOutput& out, std::string_view text);
  void PutOnNewLine(TextOutput& out, std::string_view margin, std::string_view text);
  void AlignToIndent(TextOutput& out);

  void PutAttributes(TextOutput& out, const Attributes& attributes);
  void PutAttribute(TextOutput& out, const XMLAttribute<String>& attribute);
  void OpenLevel(std::uint64_t line, const String& name);
  void GrowMargin();
  void CloseLevel();
  bool EndTagFits(const String& name) const;

  void PlaceText(TextOutput& out, const String& text);
  void PutTextLines(TextOutput& out, const String& text);
  void EndLongLine(TextOutput& out);

  template <class Source>
  void Reflow(std::ostream& os, Source& markup);

  void PutBlock(std::ostream& os, const Block& block);
  void PutBlockText(TextOutput& out, const Block& block);
  void PutShortCDATA(TextOutput& out, const String& text);
  void PutPreservedCDATA(TextOutput& out, const String& text);
  void PutLinesOf(TextOutput& out, std::istream& text);
  void PutPacked(TextOutput& out, std::istream& text);
  void PutPackedLine(TextOutput& out, const String& indent, String& line);
  void Follow(const char* text, std::size_t size);

  std::uint64_t m_uLine = 1;    // of the line being written
  std::uint64_t m_uColumn = 0;  // characters written on it
  // The start tag that was written last in the document; its end tag doesn't take it back.
  std::optional<StartTag> m_lastStartTag;
  String m_sMargin;           // of the deepest level so far
  std::size_t m_uIndent = 0;  // how much of it belongs to the current level
  std::size_t m_uStep = 0;    // and to one level
};

}  // namespace Oxa::Core

#endif
