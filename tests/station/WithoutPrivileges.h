// Root may read and write everything: tests of permissions become somebody else for the length of a scope.
#ifndef STATION_TESTS_WITHOUTPRIVILEGES_H
#define STATION_TESTS_WITHOUTPRIVILEGES_H

#include <unistd.h>

#include <cstdlib>

namespace StationTests {

class WithoutPrivileges {
 public:
  WithoutPrivileges() {
    if (m_bRoot && ::seteuid(uNOBODY) != 0) std::abort();
  }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
  ~WithoutPrivileges() {
    if (m_bRoot && ::seteuid(0) != 0) std::abort();
  }

 private:
  static constexpr uid_t uNOBODY = 65534;
  const bool m_bRoot = ::geteuid() == 0;
};

}  // namespace StationTests

#endif
