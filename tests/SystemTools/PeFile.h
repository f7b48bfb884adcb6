// A library in the PE format that holds nothing but a version resource.
#ifndef OXACORE_TESTS_SYSTEMTOOLS_PEFILE_H
#define OXACORE_TESTS_SYSTEMTOOLS_PEFILE_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "SystemTools/Bytes.h"

namespace SystemToolsTest {

struct PeTexts {
  std::u16string m_sTable;  ///< "040904B0"
  std::vector<std::pair<std::u16string, std::u16string>> m_texts;
};

struct PeFile {
  bool m_b64 = true;
  bool m_bResource = true;        ///< whether there are resources at all
  unsigned int m_uType = 16;      ///< the type of the one resource; 16 is a version
  bool m_bTextsFirst = true;      ///< else the list of translations stands in front of them
  bool m_bNamedResource = false;  ///< whether one that has a name stands in front of it
  unsigned int m_uSections = 1;   ///< those in front of the last one have nothing of it
  std::u16string m_sRoot = u"VS_VERSION_INFO";
  std::vector<PeTexts> m_tables;
  std::vector<std::pair<unsigned int, unsigned int>> m_translations;  ///< language, code page

  std::string Make() const;
};

namespace Detail {

// A block of the resource: its length, that of its value, whether that is text, its name, the value, more blocks.
inline std::string PeBlock(const std::u16string& name, const std::string& value, std::size_t valueLength,
                           bool text, const std::vector<std::string>& blocks) {
  Bytes bytes;
  bytes.Half(0).Half(valueLength).Half(text ? 1 : 0).Wide(name).Align(4).Add(value);
  for (const std::string& block : blocks) bytes.Align(4).Add(block);
  bytes.Set(0, bytes.Size(), 2);
  return bytes.Text();
}

inline std::string PeTextTable(const PeTexts& table) {
  std::vector<std::string> texts;
  for (const auto& text : table.m_texts)
    texts.push_back(PeBlock(text.first, Bytes().Wide(text.second).Text(), text.second.size() + 1, true, {}));
  return PeBlock(table.m_sTable, "", 0, true, texts);
}

inline std::string PeVersionResource(const PeFile& file) {
  std::vector<std::string> tables;
  for (const PeTexts& table : file.m_tables) tables.push_back(PeTextTable(table));
  Bytes translations;
  for (const auto& translation : file.m_translations)
    translations.Half(translation.first).Half(translation.second);
  std::vector<std::string> blocks{
      PeBlock(u"StringFileInfo", "", 0, true, tables),
      PeBlock(u"VarFileInfo", "", 0, true,
              {PeBlock(u"Translation", translations.Text(), translations.Size(), false, {})})};
  if (!file.m_bTextsFirst) std::swap(blocks[0], blocks[1]);
  const std::string fixed(52, '\1');
  return PeBlock(file.m_sRoot, fixed, fixed.size(), false, blocks);
}

// Three folders deep: type, number, language; then where the content is.
inline std::string PeResources(const PeFile& file, std::uint32_t address) {
  const std::string content = PeVersionResource(file);
  Bytes bytes;
  const unsigned int named = file.m_bNamedResource ? 1 : 0;
  const auto folder = [&](unsigned int names, unsigned int number, unsigned int leadsTo) {
    bytes.FillUpTo(bytes.Size() + 12).Half(names).Half(1);
    if (names != 0) bytes.Word(0x80000000u + 16).Word(0x80000000u);
    bytes.Word(number).Word(leadsTo);
  };
  folder(named, file.m_uType, 0x80000000u + 24 + 8 * named);
  folder(0, 1, 0x80000000u + 48 + 8 * named);
  folder(0, 0x409, 72 + 8 * named);
  bytes.Word(address + 88 + 8 * named).Word(content.size()).Word(0).Word(0);
  return bytes.Add(content).Text();
}

}  // namespace Detail

inline std::string PeFile::Make() const {
  const std::uint32_t address = 0x1000;  // of the one section
  const std::size_t optional = m_b64 ? 240 : 224;
  const std::size_t start = 64 + 24 + optional + 40 * m_uSections;
  const std::string resources = Detail::PeResources(*this, address);

  Bytes bytes;
  bytes.Add("MZ").FillUpTo(60).Word(64);
  bytes.Add(std::string("PE\0\0", 4)).Half(m_b64 ? 0x8664 : 0x14c).Half(m_uSections).Word(0).Word(0).Word(0);
  bytes.Half(optional).Half(0x2022);
  const std::size_t optionalStart = bytes.Size();
  bytes.Half(m_b64 ? 0x20b : 0x10b).FillUpTo(optionalStart + (m_b64 ? 108 : 92)).Word(16).Word(0).Word(0);
  bytes.Word(0).Word(0).Word(m_bResource ? address : 0).Word(m_bResource ? resources.size() : 0);
  bytes.FillUpTo(optionalStart + optional);
  for (unsigned int section = 1; section < m_uSections; ++section)
    bytes.FillUpTo(bytes.Size() + 12).Word(address / 2).Word(16).Word(64).FillUpTo(bytes.Size() + 16);
  bytes.Add(".rsrc")
      .FillUpTo(bytes.Size() + 3)
      .Word(resources.size())
      .Word(address)
      .Word(resources.size())
      .Word(start);
  bytes.FillUpTo(start).Add(resources);
  return bytes.Text();
}

}  // namespace SystemToolsTest

#endif
