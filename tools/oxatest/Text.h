// Texts of modules may hold any bytes; what the runner writes is UTF-8 that does no harm.
#ifndef OXATEST_TEXT_H
#define OXATEST_TEXT_H

#include <string>

namespace OxaTest {

/// The text as UTF-8 with characters that XML 1.0 has and a terminal shows. What is UTF-8 stays; every other byte
/// above 127 counts as Latin-1. A carriage return, with the line feed behind it, becomes a line feed; control
/// characters but that and the tab become U+FFFD, and so do U+FFFE and U+FFFF.
std::string Printable(const std::string& text);

/// The same in one line: a line feed becomes a blank.
std::string OneLine(const std::string& text);

/// The beginning of a printable text, not more than `width` characters of it.
std::string Shortened(const std::string& printable, std::string::size_type width);

/// `printable`, each line of it begun by `indentation` and ended by a line feed. "" stays so.
std::string Indented(const std::string& printable, const std::string& indentation);

}  // namespace OxaTest

#endif
