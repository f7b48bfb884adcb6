// A folder of daily files, a day in March 2011, and an ear for complaints: what the tests of daily logs share.
#ifndef OXACORE_TESTS_LOG_DAILYFOLDER_H
#define OXACORE_TESTS_LOG_DAILYFOLDER_H

#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Log/LogTape.h"
#include "Support/ClockAndZones.h"
#include "Support/TemporaryFolder.h"

namespace LogTests {

constexpr int iNO_LIMIT = -1;

/// So long after local midnight of a day in 2011.
inline Oxa::Core::Time At(int month, int day, int hour, int minute = 0) {
  return Oxa::Core::Time(month, day, 2011, Oxa::Core::Elapse(hour, minute, 0, 0));
}

/// It is noon of 3 March 2011 UTC.
class DailyFolder : public testing::Test {
 protected:
  using Names = std::set<std::string>;

  std::string Path() const { return m_folder.Path(); }
  std::string Read(const std::string& name) const { return m_folder.Read(name); }
  void Put(const std::string& name, const std::string& text = "") const { m_folder.Write(name, text); }
  Names All() const { return m_folder.Names(); }

  /// With the prefix "Run", files of up to `maxFileSize` bytes, and nothing deleted.
  void Begin(Oxa::Core::WrappingFileStream& stream, int maxFilesPerDay = iNO_LIMIT,
             int maxFileSize = iNO_LIMIT) const {
    stream.Initialize(Path(), iNO_LIMIT, maxFilesPerDay, maxFileSize, "Run");
  }

  /// Without a prefix, so that files are deleted.
  void BeginPruning(Oxa::Core::WrappingFileStream& stream, int maxAgeDays,
                    int maxFilesPerDay = iNO_LIMIT) const {
    stream.Initialize(Path(), maxAgeDays, maxFilesPerDay, iNO_LIMIT, "");
  }

  /// The texts of all alarms so far.
  std::vector<std::string> Alarms() const {
    std::vector<std::string> texts;
    for (const auto& entry : m_ear.Of(Oxa::Core::WrappingFileStream::s_logPath)) {
      if (entry.m_eSeverity == Oxa::Core::eLOG_ALARM) texts.push_back(entry.m_sMessage);
    }
    return texts;
  }

  const TestSupport::Zones m_zones{"UTC"};
  const TestSupport::TemporaryFolder m_folder;
  const Unbuffered m_unbuffered;
  const TapeHandler m_ear;
  TestSupport::ClockAt m_clock{At(3, 3, 12)};
};

/// What `action` raises of class `Raised`: its text, behind the name that it was raised under.
template <class Raised, class Action>
std::string Complaint(const Action& action) {
  try {
    action();
  } catch (Raised& error) {
    return error.GetData(Oxa::Core::AlertInfo::sLOG_NAME) + ": " + error.what();
  }
  return "nothing was raised";
}

}  // namespace LogTests

#endif
