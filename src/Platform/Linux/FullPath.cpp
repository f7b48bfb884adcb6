#include <errno.h>
#include <limits.h>
#include <string.h>
#include <unistd.h>

#include "Platform/Files.h"
#include "Platform/Linux/FileName.h"

namespace Oxa::Core::Platform {

namespace {

// An absolute name that grows part by part; "" stands for the root until it is closed.
class AbsoluteName {
 public:
  void AddParts(const char* text) noexcept {
    while (*text != 0) {
      const size_t length = strcspn(text, "/");
      AddPart(text, length);
      text += length;
      text += strspn(text, "/");
    }
  }

  void Close(bool withSeparator) noexcept {
    if (withSeparator || m_uLength == 0) m_text[m_uLength++] = '/';
    m_text[m_uLength++] = 0;
  }

  const char* Text() const noexcept { return m_text; }
  size_t Size() const noexcept { return m_uLength; }

 private:
  void AddPart(const char* part, size_t length) noexcept {
    if (length == 0 || (length == 1 && part[0] == '.')) return;
    if (length == 2 && part[0] == '.' && part[1] == '.') {
      while (m_uLength > 0 && m_text[--m_uLength] != '/') {
      }
      return;
    }
    m_text[m_uLength++] = '/';
    memcpy(m_text + m_uLength, part, length);
    m_uLength += length;
  }

  char m_text[2 * PATH_MAX +
              2];  // the current folder and a name have room, with a separator before and behind
  size_t m_uLength = 0;
};

bool EndsInSeparator(const char* name) { return *name != 0 && name[strlen(name) - 1] == '/'; }

}  // namespace

int FullPath(const char* name, char* buffer, std::size_t size) noexcept {
  const FileName converted(name);
  if (converted.Code() != 0) return converted.Code();
  AbsoluteName path;
  if (converted.Get()[0] != '/') {
    char current[PATH_MAX];
    if (getcwd(current, sizeof current) == nullptr) return errno;
    path.AddParts(current);
  }
  path.AddParts(converted.Get());
  path.Close(EndsInSeparator(converted.Get()));
  if (path.Size() > size) return ERANGE;
  memcpy(buffer, path.Text(), path.Size());
  return 0;
}

}  // namespace Oxa::Core::Platform
