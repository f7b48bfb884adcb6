// A name as the system wants it: with "/" for every separator.
#ifndef OXACORE_PLATFORM_LINUX_FILENAME_H
#define OXACORE_PLATFORM_LINUX_FILENAME_H

#include <errno.h>
#include <limits.h>
#include <stddef.h>
#include <string.h>

namespace Oxa::Core::Platform {

class FileName {
 public:
  explicit FileName(const char* name) noexcept {
    const size_t size = strlen(name) + 1;
    if (size > sizeof m_name) {
      m_iCode = ENAMETOOLONG;
      m_name[0] = 0;
      return;
    }
    memcpy(m_name, name, size);
    for (char* at = strchr(m_name, '\\'); at != nullptr; at = strchr(at, '\\')) *at = '/';
  }

  /// 0, or why the name can't be one.
  int Code() const noexcept { return m_iCode; }

  /// Empty, which names nothing, if it can't be one.
  const char* Get() const noexcept { return m_name; }

 private:
  int m_iCode = 0;
  char m_name[PATH_MAX];  // the system takes no longer one
};

}  // namespace Oxa::Core::Platform

#endif
