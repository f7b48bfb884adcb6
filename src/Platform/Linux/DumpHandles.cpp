#include "Platform/Linux/DumpSource.h"

#if defined(__x86_64__)

#include <fcntl.h>
#include <string.h>

#include "Platform/Linux/DumpFolder.h"
#include "Platform/Linux/DumpText.h"
#include "Platform/Linux/RawCall.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::uint32_t uMOST = 4096;

Minidump::Handle s_handles[uMOST];

// What is open under one number: a file's name, or "socket:[12345]" and the like.
void ReadHandle(DumpSource& source, int folder, const char* number, Minidump::Handle& handle) noexcept {
  char target[4096] = {};
  RawCall(SYS_readlinkat, folder, RawArgument(number), RawArgument(target), sizeof target - 1);
  handle = {};
  handle.m_uHandle = TakeNumber(number, 10);
  handle.m_uType = source.m_file.AppendText(target[0] == '/' ? "File" : "Other");
  handle.m_uName = source.m_file.AppendText(target);
}

std::uint32_t ReadHandles(DumpSource& source, int folder) noexcept {
  std::uint32_t count = 0;
  ForNamesIn(folder, [&](const char* name) {
    if (name[0] != '.' && count < uMOST) ReadHandle(source, folder, name, s_handles[count++]);
  });
  return count;
}

}  // namespace

void WriteHandles(DumpSource& source) noexcept {
  const int folder = source.Open("fd");
  if (folder < 0) return;
  const std::uint32_t count = ReadHandles(source, folder);
  RawCall(SYS_close, folder);
  const std::uint32_t place = source.m_file.Align();
  const Minidump::HandleListHeader header = {sizeof header, sizeof(Minidump::Handle), count, 0};
  source.m_file.AppendValue(header);
  source.m_file.Append(s_handles, count * sizeof s_handles[0]);
  source.m_file.AddStream(Minidump::eHANDLE_DATA, place);
}

}  // namespace Oxa::Core::Platform

#endif
