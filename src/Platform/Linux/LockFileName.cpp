#include <stdio.h>
#include <string.h>

#include "Platform/Linux/NamedLockFile.h"

namespace Oxa::Core::Platform {

namespace {

constexpr char sPREFIX[] = "oxacore.lock.";
constexpr std::size_t uMOST_IN_FULL = 200;        // of a name's escaped form
constexpr std::size_t uKEPT_BEFORE_DIGEST = 120;  // enough for a person to recognise it
constexpr std::uint64_t uFIRST_SEED = 0xcbf29ce484222325u;
constexpr std::uint64_t uSECOND_SEED = 0x9e3779b97f4a7c15u;
constexpr std::uint64_t uPRIME = 0x100000001b3u;

bool StandsForItself(char character) noexcept {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '.' || character == '_' || character == '-';
}

// Writes as much as `most` bytes can hold without cutting an escape, and a 0. Gives whether that was all.
bool Escape(const char* name, char* text, std::size_t most) noexcept {
  std::size_t length = 0;
  for (; *name != '\0'; ++name) {
    const std::size_t needed = StandsForItself(*name) ? 1 : 3;
    if (length + needed > most) return false;
    if (needed == 1) {
      text[length] = *name;
      text[length + 1] = '\0';
    } else {
      snprintf(text + length, 4, "%%%02X", static_cast<unsigned char>(*name));
    }
    length += needed;
  }
  return true;
}

std::uint64_t Digest(const char* name, std::uint64_t seed) noexcept {
  for (; *name != '\0'; ++name) seed = (seed ^ static_cast<unsigned char>(*name)) * uPRIME;
  return seed ^ (seed >> 32);
}

}  // namespace

// "%-" is no escape, so that no short name is mistaken for a long one.
void LockFileName(const char* name, char (&fileName)[uLOCK_FILE_NAME_SIZE]) noexcept {
  static_assert(sizeof sPREFIX + uMOST_IN_FULL <= uLOCK_FILE_NAME_SIZE);
  char escaped[uMOST_IN_FULL + 1] = "";
  if (Escape(name, escaped, uMOST_IN_FULL)) {
    snprintf(fileName, sizeof fileName, "%s%s", sPREFIX, escaped);
    return;
  }
  escaped[0] = '\0';
  Escape(name, escaped, uKEPT_BEFORE_DIGEST);
  snprintf(fileName, sizeof fileName, "%s%.*s%%-%016llx%016llx.%u", sPREFIX,
           static_cast<int>(uKEPT_BEFORE_DIGEST), escaped,
           static_cast<unsigned long long>(Digest(name, uFIRST_SEED)),
           static_cast<unsigned long long>(Digest(name, uSECOND_SEED)), static_cast<unsigned>(strlen(name)));
}

}  // namespace Oxa::Core::Platform
