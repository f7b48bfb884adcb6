#include "Platform/Linux/DumpMaps.h"

#if defined(__x86_64__)

#include <errno.h>
#include <string.h>

#include <algorithm>

#include "Platform/Linux/DumpText.h"
#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uLINES = 16384;

char s_lines[uLINES];

// The text of a file that was deleted or replaced ends so.
const char sDELETED[] = " (deleted)";

// Reading what belongs to a device can set it off, and the kernel's clock pages are its own business.
bool IsDevice(const char* name) noexcept {
  if (BeginsWith(name, "/dev/")) return !BeginsWith(name, "/dev/shm/") && !BeginsWith(name, "/dev/zero");
  return BeginsWith(name, "/sys/") || BeginsWith(name, "/proc/") || BeginsWith(name, "anon_inode:") ||
         BeginsWith(name, "socket:") || BeginsWith(name, "[vvar") || BeginsWith(name, "[vsyscall");
}

std::uint32_t FlagsOf(const char* rights, const char* name) noexcept {
  std::uint32_t flags = 0;
  if (rights[0] == 'r') flags |= DumpMapping::eREADABLE;
  if (rights[1] == 'w') flags |= DumpMapping::eWRITABLE;
  if (rights[2] == 'x') flags |= DumpMapping::eEXECUTABLE;
  if (rights[3] == 's') flags |= DumpMapping::eSHARED;
  if (name[0] == '/') flags |= DumpMapping::eFILE;
  if (BeginsWith(name, "[vdso]")) flags |= DumpMapping::eVDSO;
  if (IsDevice(name)) flags |= DumpMapping::eDEVICE;
  return flags;
}

void CutDeleted(char* name) noexcept {
  const std::size_t length = strlen(name);
  const std::size_t end = sizeof sDELETED - 1;
  if (length > end && strcmp(name + length - end, sDELETED) == 0) name[length - end] = 0;
}

// A line end in a name comes as "\012".
void RestoreLineEnds(char* name) noexcept {
  char* to = name;
  for (const char* from = name; *from != 0; ++to) {
    const bool coded = BeginsWith(from, "\\012");
    *to = coded ? '\n' : *from;
    from += coded ? 4 : 1;
  }
  *to = 0;
}

}  // namespace

void DumpMaps::Clear() noexcept {
  m_uCount = 0;
  m_names[0] = 0;
  m_uNames = 1;
  m_uLastName = 0;
}

void DumpMaps::Read(int handle) noexcept {
  Clear();
  std::size_t filled = 0;
  for (;;) {
    const long read =
        RawCall(SYS_read, handle, RawArgument(s_lines + filled), static_cast<long>(uLINES - filled));
    if (read == -EINTR) continue;
    if (read <= 0) return;
    filled += static_cast<std::size_t>(read);
    char* line = s_lines;
    char* const end = s_lines + filled;
    for (char* stop = std::find(line, end, '\n'); stop != end; stop = std::find(line, end, '\n')) {
      *stop = 0;
      AddLine(line, static_cast<std::size_t>(stop - line));
      line = stop + 1;
    }
    filled = static_cast<std::size_t>(end - line);
    memmove(s_lines, line, filled);
    if (filled == uLINES) return;  // no line of the system's is that long
  }
}

// "start-end rwxp offset device inode   name"
void DumpMaps::AddLine(char* line, std::size_t length) noexcept {
  if (m_uCount == uMAPPINGS) return;
  DumpMapping& mapping = m_mappings[m_uCount];
  const char* text = line;
  mapping.m_uStart = TakeNumber(text, 16);
  if (*text++ != '-') return;
  mapping.m_uEnd = TakeNumber(text, 16);
  const char* const rights = SkipWords(text, 1);
  if (rights + 4 > line + length) return;
  text = SkipWords(rights, 1);
  mapping.m_uOffset = TakeNumber(text, 16);
  char* const name = line + (SkipWords(text, 3) - line);
  CutDeleted(name);
  mapping.m_uFlags = FlagsOf(rights, name);
  RestoreLineEnds(name);
  mapping.m_uName = AddName(name);
  ++m_uCount;
}

// The mappings of one file lie side by side: its name is kept once.
std::uint32_t DumpMaps::AddName(const char* name) noexcept {
  if (*name == 0) return 0;
  if (strcmp(m_names + m_uLastName, name) == 0) return m_uLastName;
  const std::size_t size = strlen(name) + 1;
  if (m_uNames + size > uNAMES) return 0;
  memcpy(m_names + m_uNames, name, size);
  m_uLastName = static_cast<std::uint32_t>(m_uNames);
  m_uNames += size;
  return m_uLastName;
}

const DumpMapping* DumpMaps::FindNext(std::uint64_t address) const noexcept {
  const DumpMapping* const found = std::upper_bound(
      begin(), end(), address,
      [](std::uint64_t place, const DumpMapping& mapping) { return place < mapping.m_uEnd; });
  return found == end() ? nullptr : found;
}

const DumpMapping* DumpMaps::Find(std::uint64_t address) const noexcept {
  const DumpMapping* const found = FindNext(address);
  return found != nullptr && found->m_uStart <= address ? found : nullptr;
}

}  // namespace Oxa::Core::Platform

#endif
