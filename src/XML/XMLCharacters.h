// The character classes of XML 1.0, as one table of 256 entries.
//
// The parser takes each byte as the character of that code, so that of the tables of Appendix B only what lies
// below 256 can ever be asked for: no ideograph and no combining character does.
#ifndef OXACORE_XML_XMLCHARACTERS_H
#define OXACORE_XML_XMLCHARACTERS_H

#include <array>
#include <cstdint>

namespace Oxa::Core::XMLCharacters {

using Set = std::uint32_t;

constexpr Set uCHAR = 1U << 0;
constexpr Set uS = 1U << 1;
constexpr Set uBASE_CHAR = 1U << 2;
constexpr Set uIDEOGRAPHIC = 1U << 3;
constexpr Set uCOMBINING_CHAR = 1U << 4;
constexpr Set uDIGIT = 1U << 5;
constexpr Set uEXTENDER = 1U << 6;
constexpr Set uNAME_PUNCTUATION = 1U << 7;
constexpr Set uNAME_START_PUNCTUATION = 1U << 8;
constexpr Set uVERSION_NUM = 1U << 9;
constexpr Set uPUBID_CHAR = 1U << 10;
constexpr Set uPUBID_CHAR_IN_APOS = 1U << 11;
constexpr Set uTEXT = 1U << 12;  // Char but for the markup of character data, and "]"
constexpr Set uCOMMENT_TEXT = 1U << 13;
constexpr Set uCDATA_TEXT = 1U << 14;
constexpr Set uPI_TEXT = 1U << 15;
constexpr Set uENTITY_VALUE_IN_QUOT = 1U << 16;
constexpr Set uENTITY_VALUE_IN_APOS = 1U << 17;
constexpr Set uATT_VALUE_IN_QUOT = 1U << 18;
constexpr Set uATT_VALUE_IN_APOS = 1U << 19;
constexpr Set uLITERAL_IN_QUOT = 1U << 20;
constexpr Set uLITERAL_IN_APOS = 1U << 21;
constexpr Set uASCII_LETTER = 1U << 22;
constexpr Set uENC_NAME = 1U << 23;
constexpr Set uDECIMAL = 1U << 24;
constexpr Set uHEXADECIMAL = 1U << 25;
constexpr Set uIGNORE_TEXT = 1U << 26;

constexpr Set uLETTER = uBASE_CHAR | uIDEOGRAPHIC;
constexpr Set uNAME_START = uLETTER | uNAME_START_PUNCTUATION;
constexpr Set uNAME_CHAR = uLETTER | uDIGIT | uNAME_PUNCTUATION | uCOMBINING_CHAR | uEXTENDER;

class Table {
 public:
  constexpr Table() {
    AddBasicSets();
    AddAppendixB();
    AddAsciiSets();
    AddTextsWithoutDelimiters();
  }

  constexpr Set Of(char c) const { return m_sets[static_cast<unsigned char>(c)]; }

 private:
  constexpr void Add(Set set, unsigned first, unsigned last) {
    for (unsigned c = first; c <= last; ++c) m_sets[c] |= set;
  }
  constexpr void Add(Set set, const char* characters) {
    for (; *characters != 0; ++characters) m_sets[static_cast<unsigned char>(*characters)] |= set;
  }
  constexpr void AddCharsBut(Set set, const char* delimiters) {
    for (Set& sets : m_sets)
      if ((sets & uCHAR) != 0) sets |= set;
    for (; *delimiters != 0; ++delimiters) m_sets[static_cast<unsigned char>(*delimiters)] &= ~set;
  }

  constexpr void AddBasicSets() {
    Add(uCHAR, "\t\n\r");
    Add(uCHAR, 0x20, 0xff);
    Add(uS, " \t\r\n");
  }

  constexpr void AddAppendixB() {
    Add(uBASE_CHAR, 0x41, 0x5a);
    Add(uBASE_CHAR, 0x61, 0x7a);
    Add(uBASE_CHAR, 0xc0, 0xd6);
    Add(uBASE_CHAR, 0xd8, 0xf6);
    Add(uBASE_CHAR, 0xf8, 0xff);
    Add(uDIGIT, 0x30, 0x39);
    Add(uEXTENDER, 0xb7, 0xb7);
    Add(uNAME_START_PUNCTUATION, "_:");
    Add(uNAME_PUNCTUATION, ".-_:");
  }

  constexpr void AddAsciiSets() {
    const Set alphanumeric = uVERSION_NUM | uPUBID_CHAR | uPUBID_CHAR_IN_APOS | uENC_NAME;
    Add(alphanumeric | uASCII_LETTER, 'a', 'z');
    Add(alphanumeric | uASCII_LETTER, 'A', 'Z');
    Add(alphanumeric | uDECIMAL | uHEXADECIMAL, '0', '9');
    Add(uHEXADECIMAL, "abcdefABCDEF");
    Add(uVERSION_NUM, "_.:-");
    Add(uENC_NAME, "._-");
    Add(uPUBID_CHAR, "'");
    Add(uPUBID_CHAR | uPUBID_CHAR_IN_APOS, " \r\n()+,./:=?;!*#@$_%-");
  }

  constexpr void AddTextsWithoutDelimiters() {
    AddCharsBut(uTEXT, "<&]");
    AddCharsBut(uCOMMENT_TEXT, "-");
    AddCharsBut(uCDATA_TEXT, "]");
    AddCharsBut(uPI_TEXT, "?");
    AddCharsBut(uENTITY_VALUE_IN_QUOT, "%&\"");
    AddCharsBut(uENTITY_VALUE_IN_APOS, "%&'");
    AddCharsBut(uATT_VALUE_IN_QUOT, "<&\"");
    AddCharsBut(uATT_VALUE_IN_APOS, "<&'");
    AddCharsBut(uLITERAL_IN_QUOT, "\"");
    AddCharsBut(uLITERAL_IN_APOS, "'");
    AddCharsBut(uIGNORE_TEXT, "<]");
  }

  std::array<Set, 256> m_sets{};
};

constexpr Table s_table;

/// Whether `c` belongs to one of `sets`.
constexpr bool IsIn(Set sets, char c) { return (s_table.Of(c) & sets) != 0; }

}  // namespace Oxa::Core::XMLCharacters

#endif
