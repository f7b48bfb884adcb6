#include "Platform/Linux/Mappings.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "Platform/Linux/ProcFile.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sLINE_END[] = "\\012";  // how the kernel writes it inside a name
constexpr const char* sNO_FILES[] = {"/memfd:", "/dev/", "/SYSV"};
constexpr int iFIELDS_TO_NAME = 3;  // offset, device and inode stand between the rights and the name

bool ReadAddress(const char*& at, char separator, std::uintptr_t& address) {
  char* end = nullptr;
  address = strtoull(at, &end, 16);
  if (end == at || *end != separator) return false;
  at = end + 1;
  return true;
}

const char* SkipField(const char* at) {
  at += strcspn(at, " ");
  return at + strspn(at, " ");
}

// "7f0c4a200000-7f0c4a228000 r-xp 00028000 fe:01 1312  /usr/lib/libc.so.6"
bool Read(const std::string& line, Mapping& mapping) {
  const char* at = line.c_str();
  if (!ReadAddress(at, '-', mapping.m_uStart) || !ReadAddress(at, ' ', mapping.m_uEnd) || strnlen(at, 4) < 4)
    return false;
  mapping.m_bExecutable = at[2] == 'x';
  at = SkipField(at);
  for (int field = 0; field < iFIELDS_TO_NAME; ++field) at = SkipField(at);
  mapping.m_sName = at;
  return true;
}

bool IsFile(const std::string& name) {
  if (name.empty() || name[0] != '/') return false;
  return std::none_of(std::begin(sNO_FILES), std::end(sNO_FILES),
                      [&](const char* start) { return name.compare(0, strlen(start), start) == 0; });
}

}  // namespace

bool Mappings::Next(Mapping& mapping) {
  while (m_uAt < m_text.size()) {
    const std::string::size_type end = std::min(m_text.find('\n', m_uAt), m_text.size());
    const std::string line = m_text.substr(m_uAt, end - m_uAt);
    m_uAt = end + 1;
    if (Read(line, mapping)) return true;
  }
  return false;
}

std::string FileOf(const Mapping& mapping) {
  if (!IsFile(mapping.m_sName)) return std::string();
  std::string path = mapping.m_sName;
  for (auto at = path.find(sLINE_END); at != std::string::npos; at = path.find(sLINE_END, at + 1))
    path.replace(at, strlen(sLINE_END), "\n");
  DropDeletedMark(path);
  return path;
}

}  // namespace Oxa::Core::Platform
