#include "Log/UnfinishedEntry.h"

#include <algorithm>
#include <string_view>

#include "Log/LogEntryText.h"

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

constexpr std::string_view sBEGINNING = "<LogEntry";
constexpr std::size_t uCHUNK = 65536;

bool ReadAll(const std::string& file, std::string& content) {
  int code = 0;
  Platform::FileHandle handle = Platform::FileHandle::OpenForReading(file.c_str(), code);
  std::size_t got = code == 0 ? uCHUNK : 0;
  while (code == 0 && got != 0) {
    const std::size_t size = content.size();
    content.resize(size + uCHUNK);
    code = handle.Read(content.data() + size, uCHUNK, got);
    content.resize(size + got);
  }
  return code == 0;
}

}  // namespace

std::uint64_t LengthOfWholeEntries(const std::string& entries) {
  const std::size_t separator = entries.rfind(sLOG_ENTRY_SEPARATOR);
  const std::size_t end = separator == std::string::npos ? 0 : separator + sLOG_ENTRY_SEPARATOR.size();
  const std::size_t common = std::min(entries.size() - end, sBEGINNING.size());
  return entries.compare(end, common, sBEGINNING.substr(0, common)) == 0 ? end : entries.size();
}

void CutUnfinishedEntry(const std::string& file) {
  std::string content;
  if (!ReadAll(file, content)) return;
  const std::uint64_t whole = LengthOfWholeEntries(content);
  if (whole == content.size()) return;
  int code = 0;
  Platform::FileHandle handle = Platform::FileHandle::OpenForWriting(file.c_str(), code);
  if (code == 0) handle.Truncate(whole);
}

}  // namespace Oxa::Core
