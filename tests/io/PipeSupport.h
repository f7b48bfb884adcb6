// What the tests of the pipe share.
#ifndef OXACORE_TESTS_IO_PIPESUPPORT_H
#define OXACORE_TESTS_IO_PIPESUPPORT_H

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>
#include <Infrastructure/OxaCore/io/IOErrors.h>
#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "io/Raised.h"

namespace PipeTests {

using namespace Oxa::Core;
using IoTests::Raised;

constexpr Elapse s_noWait(0);
constexpr Elapse s_long(60);        // far beyond what any test takes
constexpr double dAT_ONCE = 20000;  // in milliseconds: well below the long one, however busy the machine is

inline Elapse Milliseconds(long long count) { return Elapse(count, Elapse::MilliSeconds); }

inline std::string Written(const std::string& information) {
  return "Oxa.Core.BinaryPipe.Write: Timeout occurred during Write.  Info: " + information;
}
inline std::string ReadInfo(const std::string& information) {
  return "Oxa.Core.BinaryPipe.Read: Timeout occurred during Read.  Info: " + information;
}
inline std::string Skipped(const std::string& information) {
  return "Oxa.Core.BinaryPipe.Skip: Timeout occurred during Skip.  Info: " + information;
}

/// Keeps the warnings that it hears, as "LOG NAME: MESSAGE", in the order of their text.
class Warnings : public AlertListener {
 public:
  Warnings() { AlertManager::Instance()->AddAlertListener(*this); }
  ~Warnings() override { AlertManager::Instance()->RemoveAlertListener(*this); }

  void WarningRaised(Warning& warning) override {
    EXPECT_NE(nullptr, dynamic_cast<IOPendingWriteToPipeAborted*>(&warning));
    EXPECT_EQ(AlertInfo::eWARNING, warning.GetSeverity());
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_heard.insert(warning.GetData(AlertInfo::sLOG_NAME) + ": " + warning.GetData(AlertInfo::sMESSAGE));
  }

  std::vector<std::string> Heard() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_heard.begin(), m_heard.end()};
  }

 private:
  mutable std::mutex m_mutex;
  std::multiset<std::string> m_heard;
};

inline std::string Aborted(int bytes) {
  return "Oxa.Core.BinaryPipe.Write: Pending write of " + std::to_string(bytes) +
         " bytes aborted due to pipe being closed";
}

inline void Write(BinaryPipe& pipe, const std::string& text) { pipe.Write(text.data(), text.size()); }

/// What one block read gives, as text; a result below 0 as its number.
inline std::string ReadBlock(BinaryPipe& pipe, std::size_t count) {
  std::string block(count, '?');
  const long long got = pipe.Read(&block[0], static_cast<long long>(count));
  return got >= 0 ? block.substr(0, static_cast<std::size_t>(got)) : std::to_string(got);
}

}  // namespace PipeTests

#endif
