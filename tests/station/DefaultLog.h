// The files of a default log, as a test reads them.
#ifndef STATION_TESTS_DEFAULTLOG_H
#define STATION_TESTS_DEFAULTLOG_H

#include <gtest/gtest.h>

#include <string>

#include "Support/ChildProcess.h"
#include "TemporaryFolder.h"

namespace StationTests {

class DefaultLog {
 public:
  explicit DefaultLog(const std::string& folder) : m_sFolder(folder) {}

  std::string Document() const { return m_sFolder + "/DefaultLog.xml"; }
  std::string Entries() const { return ReadFile(m_sFolder + "/DefaultLog.entries"); }
  std::string Archive() const { return ReadFile(m_sFolder + "/DefaultLog.archive"); }

  /// Also those that have been rolled over.
  std::string AllEntries() const { return Archive() + Entries(); }

  /// How often `part` stands in all entries.
  int Count(const std::string& part) const {
    const std::string text = AllEntries();
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }

  /// Whether the document with its entries is well-formed XML is what xmllint says.
  void ExpectWellFormed() const {
    if (TestSupport::RunChild({"/bin/sh", "-c", "command -v xmllint"}).m_iStatus != 0) {
      GTEST_SKIP() << "xmllint isn't installed (package libxml2-utils)";
    }
    const TestSupport::ChildResult lint =
        TestSupport::RunChild({"/usr/bin/env", "xmllint", "--noent", "--noout", Document()});
    EXPECT_EQ(0, lint.m_iStatus) << lint.m_sError;
    EXPECT_EQ("", lint.m_sError);
  }

 private:
  std::string m_sFolder;
};

}  // namespace StationTests

#endif
