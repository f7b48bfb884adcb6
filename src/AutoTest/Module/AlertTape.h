// What the raises of a self-test tell the alert listeners, in a process where others raise and listen, too.
#ifndef OXACORE_AUTOTEST_MODULE_ALERTTAPE_H
#define OXACORE_AUTOTEST_MODULE_ALERTTAPE_H

#include <string>
#include <vector>

namespace Oxa::Core {

class AlertInfo;

/// While it stands, keeps the alerts of its own thread whose message has `marker` in it, as "raised MESSAGE",
/// "handled MESSAGE" and "warned MESSAGE". One at a time on a thread; any thread may have one.
class AlertTape {
 public:
  explicit AlertTape(const std::string& marker);
  AlertTape(const AlertTape&) = delete;
  AlertTape& operator=(const AlertTape&) = delete;
  ~AlertTape();

  const std::vector<std::string>& GetHeard() const { return m_heard; }

 private:
  friend class AlertEar;
  void Note(const char* what, const AlertInfo& alert);

  std::string m_sMarker;
  std::vector<std::string> m_heard;
};

}  // namespace Oxa::Core

#endif
