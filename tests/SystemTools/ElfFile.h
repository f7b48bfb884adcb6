// A library in the ELF format, as small as one can be.
#ifndef OXACORE_TESTS_SYSTEMTOOLS_ELFFILE_H
#define OXACORE_TESTS_SYSTEMTOOLS_ELFFILE_H

#include <string>

#include "SystemTools/Bytes.h"

namespace SystemToolsTest {

struct ElfFile {
  bool m_b64 = true;
  bool m_bBigEndian = false;
  std::string m_sOwnName;         ///< none if empty
  std::string m_sNote;            ///< the package note's text; no note if empty
  bool m_bNoteInSection = false;  ///< else in a segment
  bool m_bNoteBehindAnother = false;
  unsigned int m_uNoteAlignment = 4;
  unsigned int m_uNoteType = 0xcafe1a7e;
  std::string m_sNoteOwner = "FDO";
  std::size_t m_uGap = 0;            ///< bytes behind each entry of the tables of segments and sections
  bool m_bNameBehindTheEnd = false;  ///< of the list that tells where names are

  std::string Make() const;
};

namespace Detail {

class ElfMaker {
 public:
  explicit ElfMaker(const ElfFile& file)
      : m_file(file), m_word(file.m_b64 ? 8u : 4u), m_bytes(file.m_bBigEndian) {}

  // Header, three segments, what they hold, and two sections: the first one is always of no type.
  std::string Make() {
    const std::size_t segments = m_file.m_b64 ? 64 : 52;
    const std::size_t content = segments + 3 * SegmentSize();
    m_bytes.FillUpTo(content);
    const std::size_t names = m_bytes.Size();
    m_bytes.Add('\0' + m_file.m_sOwnName + '\0').Align(8);
    const std::size_t dynamic = m_bytes.Size();
    AddDynamic(names);
    const std::size_t note = m_bytes.Size();
    AddNote();
    m_bytes.Align(8);
    const std::size_t sections = m_bytes.Size();
    m_bytes.FillUpTo(sections + 2 * SectionSize());

    Header(segments, sections);
    Segment(segments, 1, 0, sections);  // all that is loaded
    Segment(segments + SegmentSize(), 2, dynamic, note - dynamic);
    if (m_file.m_bNoteInSection)
      Section(sections + SectionSize(), 7, note, sections - note);
    else
      Segment(segments + 2 * SegmentSize(), 4, note, sections - note);
    return m_bytes.Text();
  }

 private:
  static constexpr std::size_t uADDRESS = 0x10000;  // of the first byte, in memory

  std::size_t SegmentSize() const { return (m_file.m_b64 ? 56 : 32) + m_file.m_uGap; }
  std::size_t SectionSize() const { return (m_file.m_b64 ? 64 : 40) + m_file.m_uGap; }

  void Header(std::size_t segments, std::size_t sections) {
    Bytes header(m_file.m_bBigEndian);
    header.Add(std::string("\177ELF") + (m_file.m_b64 ? '\2' : '\1') + (m_file.m_bBigEndian ? '\2' : '\1') +
               '\1');
    header.FillUpTo(16)
        .Half(3)
        .Half(62)
        .Word(1)
        .Number(0, m_word)
        .Number(segments, m_word)
        .Number(sections, m_word);
    header.Word(0)
        .Half(m_file.m_b64 ? 64 : 52)
        .Half(SegmentSize())
        .Half(3)
        .Half(SectionSize())
        .Half(2)
        .Half(0);
    Replace(0, header);
  }

  void Segment(std::size_t at, unsigned int type, std::size_t offset, std::size_t size) {
    Bytes segment(m_file.m_bBigEndian);
    segment.Word(type);
    if (m_file.m_b64) segment.Word(4);
    segment.Number(offset, m_word).Number(uADDRESS + offset, m_word).Number(0, m_word);
    segment.Number(size, m_word).Number(size, m_word);
    if (!m_file.m_b64) segment.Word(4);
    segment.Number(type == 4 ? m_file.m_uNoteAlignment : 1, m_word);
    Replace(at, segment);
  }

  void Section(std::size_t at, unsigned int type, std::size_t offset, std::size_t size) {
    Bytes section(m_file.m_bBigEndian);
    section.Word(0)
        .Word(type)
        .Number(0, m_word)
        .Number(0, m_word)
        .Number(offset, m_word)
        .Number(size, m_word);
    section.Word(0).Word(0).Number(m_file.m_uNoteAlignment, m_word).Number(0, m_word);
    Replace(at, section);
  }

  void AddDynamic(std::size_t names) {
    const auto entry = [this](std::size_t tag, std::size_t value) {
      m_bytes.Number(tag, m_word).Number(value, m_word);
    };
    if (!m_file.m_sOwnName.empty() && !m_file.m_bNameBehindTheEnd) entry(14, 1);
    entry(5, uADDRESS + names);
    entry(10, m_file.m_sOwnName.size() + 2);
    entry(0, 0);
    if (m_file.m_bNameBehindTheEnd) entry(14, 1);
  }

  void AddNote() {
    if (m_file.m_bNoteBehindAnother) AddOneNote("GNU", 3, std::string(20, '\7'));
    if (!m_file.m_sNote.empty()) AddOneNote(m_file.m_sNoteOwner, m_file.m_uNoteType, m_file.m_sNote + '\0');
  }

  void AddOneNote(const std::string& owner, unsigned int type, const std::string& content) {
    m_bytes.Word(owner.size() + 1).Word(content.size()).Word(type);
    const std::size_t start = m_bytes.Size();
    const auto fill = [&](std::size_t size) {
      m_bytes.FillUpTo(start + (size + m_file.m_uNoteAlignment - 1) / m_file.m_uNoteAlignment *
                                   m_file.m_uNoteAlignment);
      return m_bytes.Size() - start;
    };
    m_bytes.Add(owner + '\0');
    const std::size_t behindOwner = fill(owner.size() + 1);
    m_bytes.Add(content);
    fill(behindOwner + content.size());
  }

  void Replace(std::size_t at, const Bytes& bytes) {
    for (std::size_t i = 0; i < bytes.Size(); ++i)
      m_bytes.Set(at + i, static_cast<unsigned char>(bytes.Text()[i]), 1);
  }

  const ElfFile& m_file;
  const unsigned int m_word;
  Bytes m_bytes;
};

}  // namespace Detail

inline std::string ElfFile::Make() const { return Detail::ElfMaker(*this).Make(); }

}  // namespace SystemToolsTest

#endif
