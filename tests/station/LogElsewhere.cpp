// Keeps what the tests log away from the programs, each test's from the others'.
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "TemporaryFolder.h"

namespace {

class LogElsewhere : public testing::Environment {
 public:
  void SetUp() override { Oxa::Core::System::Instance()->SetProcessPath(m_folder->Path() + '/'); }

  // What still waits to be written would otherwise be written after the folder is gone.
  void TearDown() override {
    Oxa::Core::LogManager::Instance()->SetBufferingMode(false);
    m_folder.reset();
  }

 private:
  std::optional<StationTests::TemporaryFolder> m_folder{std::in_place};
};

const testing::Environment* const s_pLogElsewhere = testing::AddGlobalTestEnvironment(new LogElsewhere);

}  // namespace
