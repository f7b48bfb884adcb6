#include <Infrastructure/OxaCore/Dictionary.h>

#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "Utilities/DictionaryIndex.h"

namespace Oxa::Core {

namespace {

using std::strcmp;

const char* const sLOG_NAME = "Oxa.Core.Dictionary";
const char* const sWORD = "word";
const char* const sTOO_LONG = "%1% bytes; the longest word has %2%";

constexpr std::int32_t iPAGE = 0x20000;
constexpr std::size_t uLONGEST_WORD = iPAGE - 1;
constexpr std::size_t uLONGEST_BLOCK = 512;  // atoms

// As many as there are separators, whatever the path looks like.
std::size_t CountWords(const std::string& path, char sep) {
  const char* const str2 = path.c_str();
  const std::size_t size = path.size();
  OXA_ASSERT(str2[0] == sep);
  if (size > 0) OXA_ASSERT(str2[size - 1] != sep);
  std::size_t count = 0;
  for (std::size_t i = 0; i < size; ++i) {
    if (str2[i] != sep) continue;
    OXA_ASSERT((i == 0) || (str2[i - 1] != sep));
    ++count;
  }
  return count;
}

}  // namespace

Dictionary::Dictionary() : m_blocks(1), m_spIndex(std::make_unique<DictionaryIndex>()) {}

Dictionary::~Dictionary() = default;

const char* Dictionary::Lookup(const char* word) {
  const std::string_view text(word);
  const std::uint64_t hash = WordHash(text).Get();
  if (const char* const atom = m_spIndex->Find(word, hash)) return atom;
  if (text.length() > uLONGEST_WORD) {
    OXA_RAISE_ERROR(sLOG_NAME,
                    InvalidParameter(sWORD, AlertMessage(sTOO_LONG, text.length(), uLONGEST_WORD)));
    return nullptr;
  }
  {
    const ReaderLock reading(m_rwMutex);
    if (const char* const atom = m_blocks[BlockOf(word)].Find(word)) return atom;
  }
  // The lock had to be given back in between, and another thread may have been faster.
  const WriterLock writing(m_rwMutex);
  const char* const atom = m_blocks[BlockOf(word)].Find(word);
  return atom != nullptr ? atom : AddAtom(word, hash);
}

// Where memory fails, at worst the text of an atom that nobody knows is left behind in a page.
const char* Dictionary::AddAtom(const char* word, std::uint64_t hash) {
  m_spIndex->MakeRoom();
  const char* const atom = CreateAtom(word);
  InsertAtom(atom);
  m_spIndex->Enter(atom, hash);
  return atom;
}

const char* Dictionary::CreateAtom(const char* word) {
  const int size = static_cast<int>(std::strlen(word)) + 1;
  Page& page = GetPage(size);
  char* const atom = page.m_next;
  std::memcpy(atom, word, static_cast<std::size_t>(size));
  page.m_next += size;
  page.m_iFree -= size;
  return atom;
}

Dictionary::Page& Dictionary::GetPage(int size) {
  if (m_pages.empty() || m_pages.back().m_iFree < size) {
    Page page{std::unique_ptr<char[]>(new char[iPAGE]), nullptr, iPAGE};
    OXA_ASSERT(page.m_first != 0);
    page.m_next = page.m_first.get();
    m_pages.push_back(std::move(page));
  }
  return m_pages.back();
}

// The last block that begins with the word or ahead of it; the first one for a word ahead of all.
std::size_t Dictionary::BlockOf(const char* word) const {
  const auto before = [](const char* text, const Block& block) {
    return std::strcmp(text, block.m_atoms.front()) < 0;
  };
  const auto next = std::upper_bound(m_blocks.begin() + 1, m_blocks.end(), word, before);
  return static_cast<std::size_t>(next - m_blocks.begin()) - 1;
}

void Dictionary::InsertAtom(const char* atom) {
  const std::size_t index = BlockOf(atom);
  const std::vector<const char*>& atoms = m_blocks[index].m_atoms;
  if (atoms.size() == uLONGEST_BLOCK) {
    Block half{{atoms.begin() + uLONGEST_BLOCK / 2, atoms.end()}};
    const auto behind = m_blocks.begin() + static_cast<std::ptrdiff_t>(index) + 1;
    m_blocks.insert(behind, std::move(half));
    m_blocks[index].m_atoms.resize(uLONGEST_BLOCK / 2);
  }
  m_blocks[BlockOf(atom)].Insert(atom);
}

// Where the word stands, or where it would have to be inserted.
std::size_t Dictionary::Block::BinarySearchAtoms(const char* word) const {
  int low = 0;
  int high = static_cast<int>(m_atoms.size()) - 1;
  while (low <= high) {
    const int middle = (low + high) / 2;
    const int order = strcmp(m_atoms[middle], word);
    if (order == 0) return middle;
    order < 0 ? low = middle + 1 : high = middle - 1;
  }
  return low;
}

const char* Dictionary::Block::Find(const char* word) const {
  const std::size_t index = BinarySearchAtoms(word);
  OXA_ASSERT(index <= m_atoms.size());
  if (index >= m_atoms.size()) return nullptr;
  if (strcmp(m_atoms[index], word) == 0) return m_atoms[index];
  OXA_ASSERT(strcmp(m_atoms[index], word) > 0);
  return nullptr;
}

void Dictionary::Block::Insert(const char* atom) {
  m_atoms.insert(m_atoms.begin() + static_cast<std::ptrdiff_t>(BinarySearchAtoms(atom)), atom);
}

void Dictionary::Convert(std::vector<const char*>& atoms, const char* path, char sep) {
  std::string copy(path);
  const std::size_t count = CountWords(copy, sep);
  std::vector<const char*> found(count);
  std::replace(copy.begin(), copy.end(), sep, '\0');
  std::size_t index = 0;
  for (std::size_t at = copy.find('\0'); at != std::string::npos; at = copy.find('\0', at + 1)) {
    found[index++] = Lookup(copy.c_str() + at + 1);
  }
  OXA_ASSERT(index == count);
  atoms.swap(found);
}

void Dictionary::Convert(std::string& path, const std::vector<const char*>& atoms, char sep) {
  path.clear();
  for (const char* const atom : atoms) {
    path += sep;
    if (atom != nullptr) path += atom;
  }
}

}  // namespace Oxa::Core
