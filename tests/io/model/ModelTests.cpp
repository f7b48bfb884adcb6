// Random stacks of filters over files and pipes against a model of them. A failure names the seed of its sequence:
// OXACORE_MODEL_SEED=SEED in the environment repeats that one and shows all of it.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "Sequence.h"
#include "Subject.h"
#include "Support/TemporaryFolder.h"

namespace {

#if defined(OXACORE_SOAK)
constexpr unsigned long long s_ulSEQUENCES = 100000;
#elif defined(__SANITIZE_THREAD__)
constexpr unsigned long long s_ulSEQUENCES = 500;  // one thread: what is wanted there is ModelThreadTests.cpp
#elif defined(__SANITIZE_ADDRESS__)
constexpr unsigned long long s_ulSEQUENCES = 3000;
#else
constexpr unsigned long long s_ulSEQUENCES = 20000;
#endif

// Thousands of files come and go, which a disk takes milliseconds for. Works before the folder is made.
struct FilesInMemory {
  FilesInMemory() {
    if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 0);
  }
};

class ModelTest : public ::testing::Test {
 protected:
  ModelTest() { Model::CollectAlerts(); }

  Model::Report Run(unsigned long long seed, bool wantsHistory) {
    Model::Report report = Model::RunSequence(seed, m_folder.Path() + "/", wantsHistory);
    EXPECT_TRUE(report.m_bSame) << "OXACORE_MODEL_SEED=" << seed << '\n' << report.m_sHistory;
    return report;
  }

  FilesInMemory m_filesInMemory;
  TestSupport::TemporaryFolder m_folder;
};

TEST_F(ModelTest, RandomStacksDoWhatTheModelTells) {
  if (const char* const seed = std::getenv("OXACORE_MODEL_SEED")) {
    std::cout << Run(std::strtoull(seed, nullptr, 10), true).m_sHistory;
    return;
  }
  int compared = 0;
  for (unsigned long long seed = 1; seed <= s_ulSEQUENCES && !HasFailure(); ++seed)
    compared += Run(seed, false).m_iOperations;
  EXPECT_TRUE(HasFailure() || compared > static_cast<int>(s_ulSEQUENCES) * 20) << compared;
}

}  // namespace
