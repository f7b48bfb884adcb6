#include "Platform/Linux/PeVersion.h"

#include <stdio.h>

#include <algorithm>
#include <cstdint>
#include <map>

#include "Platform/Linux/ByteView.h"
#include "Platform/Linux/PeResource.h"
#include "Platform/Linux/Utf8.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sMARK[] = "MZ";
constexpr std::uint32_t uVERSION_RESOURCE = 16;
constexpr std::uint64_t ullBLOCK_HEADER = 6;
constexpr std::uint64_t ullTRANSLATION = 4;

// Names in upper case, as they are looked for.
constexpr char sROOT[] = "VS_VERSION_INFO";
constexpr char sTEXTS[] = "STRINGFILEINFO";
constexpr char sVARIABLES[] = "VARFILEINFO";
constexpr char sTRANSLATION[] = "TRANSLATION";

// By the name of a table ("040904B0") and the name of a text, both in upper case.
using TextTables = std::map<std::string, std::map<std::string, std::string>>;

std::string UpperCase(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

std::uint64_t Aligned(std::uint64_t offset) { return (offset + 3) / 4 * 4; }

// The text of UTF-16 at `at`, to its closing 0 or to `end`; `at` is behind it then.
std::string ReadText(const ByteView& view, std::uint64_t& at, std::uint64_t end) {
  std::string text;
  Utf16Joiner joiner(text);
  while (at + 2 <= end) {
    const std::uint16_t unit = view.Half(at);
    at += 2;
    if (unit == 0) break;
    joiner.Add(unit);
  }
  joiner.Finish();
  return text;
}

// A block of the resource: its own length, that of its value, its name, the value, and blocks within it.
struct Block {
  Block(const ByteView& view, std::uint64_t start, std::uint64_t end)
      : m_ullEnd(std::min<std::uint64_t>(start + view.Half(start), end)) {
    std::uint64_t at = start + ullBLOCK_HEADER;
    m_sName = UpperCase(ReadText(view, at, m_ullEnd));
    m_ullValue = std::min(Aligned(at), m_ullEnd);
    m_ullValueSize = std::min<std::uint64_t>(view.Half(start + 2), m_ullEnd - m_ullValue);
  }

  std::string m_sName;
  std::uint64_t m_ullValue;
  std::uint64_t m_ullValueSize;
  std::uint64_t m_ullEnd;
};

// Calls `use` for each block between the two places. One that is too short to be one is the last.
template <class Use>
void ForEachBlock(const ByteView& view, std::uint64_t start, std::uint64_t end, const Use& use) {
  while (start + ullBLOCK_HEADER <= end && view.Half(start) >= ullBLOCK_HEADER) {
    const Block block(view, start, end);
    use(block);
    start = Aligned(block.m_ullEnd);
  }
}

void ReadTables(const ByteView& view, const Block& texts, TextTables& tables) {
  ForEachBlock(view, texts.m_ullValue, texts.m_ullEnd, [&](const Block& table) {
    auto& content = tables[table.m_sName];
    ForEachBlock(view, table.m_ullValue, table.m_ullEnd, [&](const Block& text) {
      // The length of the value is in characters by the rule and in bytes by many tools: its own end tells.
      std::uint64_t at = text.m_ullValue;
      content.emplace(text.m_sName, ReadText(view, at, text.m_ullEnd));
    });
  });
}

// A language and a code page, as a table of texts is named after them.
std::string TableName(unsigned int language, unsigned int codePage) {
  char name[9];
  snprintf(name, sizeof name, "%04X%04X", language & 0xFFFFu, codePage & 0xFFFFu);
  return name;
}

void ReadTranslations(const ByteView& view, const Block& variables, std::vector<std::string>& names) {
  ForEachBlock(view, variables.m_ullValue, variables.m_ullEnd, [&](const Block& variable) {
    if (variable.m_sName != sTRANSLATION || !names.empty()) return;
    for (std::uint64_t at = 0; at + ullTRANSLATION <= variable.m_ullValueSize; at += ullTRANSLATION)
      names.push_back(
          TableName(view.Half(variable.m_ullValue + at), view.Half(variable.m_ullValue + at + 2)));
  });
}

void AddTexts(const std::map<std::string, std::string>& table, const std::vector<std::string>& keys,
              VersionRecord& record) {
  for (const std::string& key : keys) {
    const auto text = table.find(UpperCase(key));
    if (text != table.end()) record.emplace(key, text->second);
  }
}

}  // namespace

bool IsPe(ModuleFile& file) {
  std::string mark;
  return file.Read(0, sizeof sMARK - 1, mark) && mark == sMARK;
}

bool ReadPeVersion(ModuleFile& file, const std::vector<std::string>& keys, VersionRecord& record) {
  std::string content;
  if (!ReadPeResource(file, uVERSION_RESOURCE, content)) return false;
  const ByteView view(content, false);
  const Block root(view, 0, content.size());
  if (root.m_sName != sROOT || view.Half(0) > content.size()) return false;
  TextTables tables;
  std::vector<std::string> translations;
  ForEachBlock(view, Aligned(root.m_ullValue + root.m_ullValueSize), root.m_ullEnd, [&](const Block& block) {
    if (block.m_sName == sTEXTS) ReadTables(view, block, tables);
    if (block.m_sName == sVARIABLES) ReadTranslations(view, block, translations);
  });
  for (const std::string& translation : translations) AddTexts(tables[translation], keys, record);
  return true;
}

}  // namespace Oxa::Core::Platform
