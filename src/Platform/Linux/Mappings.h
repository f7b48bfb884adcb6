// What a process has in its memory of which file, as /proc/PID/maps tells it.
#ifndef OXACORE_PLATFORM_LINUX_MAPPINGS_H
#define OXACORE_PLATFORM_LINUX_MAPPINGS_H

#include <cstdint>
#include <string>

namespace Oxa::Core::Platform {

struct Mapping {
  std::uintptr_t m_uStart = 0;
  std::uintptr_t m_uEnd = 0;  ///< the first address behind it
  bool m_bExecutable = false;
  std::string m_sName;  ///< as the kernel writes it; may be of no file
};

/// The lines of the text one by one. A line that isn't of the form is passed over.
class Mappings {
 public:
  /// The text must stay.
  explicit Mappings(const std::string& text) : m_text(text) {}

  /// False at the end. Throws std::bad_alloc.
  bool Next(Mapping& mapping);

 private:
  const std::string& m_text;
  std::string::size_type m_uAt = 0;
};

/// The whole path of the file; empty if the name is that of something else. Throws std::bad_alloc.
std::string FileOf(const Mapping& mapping);

}  // namespace Oxa::Core::Platform

#endif
