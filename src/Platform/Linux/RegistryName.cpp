#include "Platform/Linux/RegistryName.h"

#include <string.h>

namespace Oxa::Core::Platform {

namespace {

const char* const pDIGITS = "0123456789ABCDEF";

bool IsPlain(unsigned char byte) noexcept {
  if (byte >= 0x80 || (byte >= '0' && byte <= '9')) return true;
  const unsigned char lower = byte | 0x20U;
  return (lower >= 'a' && lower <= 'z') || (byte != 0 && strchr(" !#()+,-.@_{}", byte) != nullptr);
}

void Append(std::string& name, char character, bool first) {
  const auto byte = static_cast<unsigned char>(character);
  if (IsPlain(byte) && !(first && byte == '.')) {
    name += character;
    return;
  }
  name += '%';
  name += pDIGITS[byte >> 4U];
  name += pDIGITS[byte & 15U];
}

std::string Escaped(const std::string& part) {
  if (part.empty()) return "%";
  std::string name;
  for (const char character : part) Append(name, character, name.empty());
  return name;
}

}  // namespace

const char* const g_pUNFINISHED_VALUE = "%%XXXXXX";

std::string FolderOfKey(const std::string& key) {
  std::string folder;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = key.find('\\', begin);
    folder += '/' + Escaped(key.substr(begin, end - begin));
    if (end == std::string::npos) return folder;
    begin = end + 1;
  }
}

std::string FileOfValue(const std::string& name) { return Escaped(name) + '='; }

}  // namespace Oxa::Core::Platform
