// Keeps what the tests log away from the programs, each test's from the others'.
#include <Infrastructure/OxaCore/System.h>
#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace {

class LogElsewhere : public testing::Environment {
 public:
  void SetUp() override { Oxa::Core::System::Instance()->SetProcessPath(m_folder.Path() + '/'); }

 private:
  StationTests::TemporaryFolder m_folder;
};

const testing::Environment* const s_pLogElsewhere = testing::AddGlobalTestEnvironment(new LogElsewhere);

}  // namespace
