// The files behind named locks: what they are called, how they come to be, and what else may lie in their place.
#include "Platform/Linux/NamedLockFile.h"

#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/Together.h"

namespace Platform = Oxa::Core::Platform;
using Platform::NamedLockRecord;

namespace {

constexpr uid_t uNOBODY = 65534;

std::string FileName(const std::string& name) {
  char file[Platform::uLOCK_FILE_NAME_SIZE];
  Platform::LockFileName(name.c_str(), file);
  return file;
}

template <class Action>
int InForkedChild(const Action& action) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(action());
  return TestSupport::AwaitChild(child, std::chrono::seconds(60));
}

class NamedLockFileTest : public testing::Test {
 protected:
  NamedLockFileTest() : m_sFolder((std::filesystem::temp_directory_path() / "oxalocksXXXXXX").string()) {
    if (::mkdtemp(m_sFolder.data()) == nullptr) std::abort();
  }
  ~NamedLockFileTest() override { std::filesystem::remove_all(m_sFolder); }

  // The result's code; the record is kept in m_pRecord.
  int Map(const std::string& name = "lock") {
    m_pRecord = nullptr;
    return Platform::MapLockFile(m_sFolder.c_str(), name.c_str(), m_pRecord);
  }

  std::string Path(const std::string& name = "lock") const { return m_sFolder + '/' + FileName(name); }

  // Changes the file behind the lock by way of its record.
  template <class Change>
  void Spoil(const Change& change) {
    ASSERT_EQ(0, Map());
    m_pRecord->m_ullGeneration = 77;
    change(*m_pRecord);
    Platform::UnmapLockFile(m_pRecord);
  }

  // All map it at once; how many have mapped the same one as the first.
  std::uint64_t UsersOfOneMadeTogether(int threads, const std::string& name) {
    std::vector<NamedLockRecord*> records(static_cast<std::size_t>(threads));
    TestSupport::Together(threads, [&](int index) {
      NamedLockRecord*& record = records[static_cast<std::size_t>(index)];
      ASSERT_EQ(0, Platform::MapLockFile(m_sFolder.c_str(), name.c_str(), record));
      ++record->m_ullGeneration;
    });
    const std::uint64_t users = records.front()->m_ullGeneration;
    for (NamedLockRecord* const record : records) Platform::UnmapLockFile(record);
    return users;
  }

  std::size_t FilesInFolder() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_sFolder)) ++count;
    return count;
  }

  void ExpectNewLock() {
    ASSERT_EQ(0, Map());
    EXPECT_EQ(0u, m_pRecord->m_ullGeneration);
    EXPECT_EQ(0, pthread_mutex_trylock(&m_pRecord->m_mutex));
    EXPECT_EQ(0, pthread_mutex_unlock(&m_pRecord->m_mutex));
    EXPECT_EQ(1u, FilesInFolder());
  }

  std::string m_sFolder;
  NamedLockRecord* m_pRecord = nullptr;
};

TEST(LockFileNameTest, LettersAndDigitsStandForThemselves) {
  EXPECT_EQ("oxacore.lock.Calibration-2_b.c", FileName("Calibration-2_b.c"));
  EXPECT_EQ("oxacore.lock.", FileName(""));
}

TEST(LockFileNameTest, EverythingElseIsEscaped) {
  EXPECT_EQ("oxacore.lock.a%2Fb%5Cc%20%25%C3%01", FileName("a/b\\c %\xC3\x01"));
  EXPECT_EQ("oxacore.lock...%2F..", FileName("../.."));
}

// Programs of different versions have to find the same file.
TEST(LockFileNameTest, NamesThatAreJustShortEnoughStandInFull) {
  EXPECT_EQ("oxacore.lock." + std::string(200, 'n'), FileName(std::string(200, 'n')));
  EXPECT_EQ("oxacore.lock." + std::string(120, 'n') + "%-bb0933049d34cd95d10cb4228da04c03.201",
            FileName(std::string(201, 'n')));
}

TEST(LockFileNameTest, LongNamesEndInADigest) {
  std::set<std::string> files;
  for (const std::size_t length : {199u, 200u, 201u, 254u, 255u, 256u, 3000u}) {
    for (const char last : {'a', 'b', '/'}) {
      const std::string file = FileName(std::string(length, 'n') + last);
      EXPECT_LT(file.size(), Platform::uLOCK_FILE_NAME_SIZE);
      EXPECT_EQ(std::string::npos, file.find('/'));
      files.insert(file);
    }
  }
  EXPECT_EQ(21u, files.size());
  EXPECT_NE(FileName(std::string(100, '/')), FileName(std::string(101, '/')));
}

TEST_F(NamedLockFileTest, IsMadeForEverybodyWhateverTheMask) {
  const mode_t before = ::umask(0077);
  EXPECT_EQ(0, Map());
  ::umask(before);
  struct stat status;
  ASSERT_EQ(0, ::stat(Path().c_str(), &status));
  EXPECT_EQ(static_cast<mode_t>(S_IFREG | 0666), status.st_mode);
  EXPECT_EQ(static_cast<off_t>(NamedLockRecord::uFILE_SIZE), status.st_size);
  EXPECT_EQ(1u, status.st_nlink);
  EXPECT_EQ(1u, FilesInFolder());  // nothing temporary is left
}

TEST_F(NamedLockFileTest, IsTheSameForAllWhoMapIt) {
  ASSERT_EQ(0, Map());
  NamedLockRecord* const first = m_pRecord;
  first->m_ullGeneration = 3;
  ASSERT_EQ(0, Map());
  EXPECT_NE(first, m_pRecord);
  EXPECT_EQ(3u, m_pRecord->m_ullGeneration);
}

TEST_F(NamedLockFileTest, MadeByManyAtOnceItIsOne) {
  constexpr int threads = 4;
  for (int round = 0; round < 200; ++round) {
    EXPECT_EQ(static_cast<unsigned>(threads), UsersOfOneMadeTogether(threads, std::to_string(round)));
  }
}

TEST_F(NamedLockFileTest, ReplacedByManyAtOnceItIsOne) {
  constexpr int threads = 4;
  for (int round = 0; round < 200; ++round) {
    std::ofstream(Path(std::to_string(round))) << "no lock";
    EXPECT_EQ(static_cast<unsigned>(threads), UsersOfOneMadeTogether(threads, std::to_string(round)));
  }
}

TEST_F(NamedLockFileTest, AnEmptyFileIsReplaced) {
  std::ofstream(Path()).flush();
  ExpectNewLock();
}

TEST_F(NamedLockFileTest, AShortFileIsReplaced) {
  Spoil([](NamedLockRecord&) {});
  std::filesystem::resize_file(Path(), NamedLockRecord::uFILE_SIZE - 1);
  ExpectNewLock();
}

TEST_F(NamedLockFileTest, AForeignFileOfTheRightSizeIsReplaced) {
  std::ofstream(Path()) << std::string(NamedLockRecord::uFILE_SIZE, 'x');
  ExpectNewLock();
}

// Two who found it damaged might otherwise both take away what lies there: the second one a good lock.
TEST_F(NamedLockFileTest, ADamagedFileIsReplacedByOneAtATime) {
  std::ofstream(Path()) << "no lock";
  const int other = ::open(Path().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(0, ::flock(other, LOCK_EX));
  EXPECT_EQ(EAGAIN, Map());
  EXPECT_EQ(std::string("no lock").size(), std::filesystem::file_size(Path()));
  ::close(other);
  ExpectNewLock();
}

TEST_F(NamedLockFileTest, ALockOfAnEarlierStartOfTheSystemIsReplaced) {
  Spoil(
      [](NamedLockRecord& record) { std::strcpy(record.m_sBoot, "00000000-0000-0000-0000-000000000000\n"); });
  ExpectNewLock();
}

TEST_F(NamedLockFileTest, ALockThatKnowsNoStartOfTheSystemIsTaken) {
  Spoil([](NamedLockRecord& record) { std::memset(record.m_sBoot, 0, sizeof record.m_sBoot); });
  ASSERT_EQ(0, Map());
  EXPECT_EQ(77u, m_pRecord->m_ullGeneration);
}

TEST_F(NamedLockFileTest, ALockOfAnotherLayoutIsRefusedAndStays) {
  Spoil([](NamedLockRecord& record) { ++record.m_uLayout; });
  EXPECT_EQ(EPROTO, Map());
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(NamedLockFileTest, ALockOfProgramsWithAnotherKindOfMutexIsRefused) {
  Spoil([](NamedLockRecord& record) { record.m_uMutexSize = 24; });
  EXPECT_EQ(EPROTO, Map());
}

TEST_F(NamedLockFileTest, TheLockOfAnotherNameIsRefused) {
  Spoil([](NamedLockRecord& record) { std::strcpy(record.m_sName, "another"); });
  EXPECT_EQ(EEXIST, Map());
}

TEST_F(NamedLockFileTest, WhatIsNoPlainFileIsRefusedAndStays) {
  ASSERT_EQ(0, ::mkfifo(Path("pipe").c_str(), 0666));
  std::filesystem::create_directory(Path("folder"));
  std::filesystem::create_symlink("elsewhere", Path("link"));
  EXPECT_EQ(EEXIST, Map("pipe"));
  EXPECT_EQ(EISDIR, Map("folder"));
  EXPECT_EQ(ELOOP, Map("link"));
  EXPECT_EQ(3u, FilesInFolder());
}

TEST_F(NamedLockFileTest, AMissingFolderIsTold) {
  NamedLockRecord* record = nullptr;
  EXPECT_EQ(ENOENT, Platform::MapLockFile((m_sFolder + "/none").c_str(), "lock", record));
  EXPECT_EQ(nullptr, record);
}

TEST_F(NamedLockFileTest, TheNextFolderIsTakenForAMissingOne) {
  const std::string missing = m_sFolder + "/none";
  const char* const folders[] = {missing.c_str(), m_sFolder.c_str(), "/never/asked"};
  NamedLockRecord* record = nullptr;
  EXPECT_EQ(0, Platform::MapLockFile(folders, 3, "lock", record));
  EXPECT_TRUE(std::filesystem::exists(Path()));
  EXPECT_EQ(ENOENT, Platform::MapLockFile(folders, 1, "lock", record));
}

// Mounts a volume that nobody can write to, for this process alone. False where that can't be had.
bool MountUnchangeable(const std::string& folder) {
  std::filesystem::create_directory(folder);
  return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
         ::mount("none", folder.c_str(), "tmpfs", MS_RDONLY, nullptr) == 0;
}

TEST_F(NamedLockFileTest, OrForOneThatNobodyCanWriteTo) {
  const std::string fixed = m_sFolder + "/fixed";
  const char* const folders[] = {fixed.c_str(), m_sFolder.c_str()};
  const int failed = InForkedChild([&] {
    if (!MountUnchangeable(fixed)) return -1;
    NamedLockRecord* record = nullptr;
    EXPECT_EQ(EROFS, Platform::MapLockFile(folders, 1, "lock", record));
    EXPECT_EQ(0, Platform::MapLockFile(folders, 2, "lock", record));
    return HasFailure() ? 1 : 0;
  });
  if (failed == 255) GTEST_SKIP() << "nothing can be mounted here";
  EXPECT_EQ(0, failed);
  EXPECT_TRUE(std::filesystem::exists(Path()));
}

TEST_F(NamedLockFileTest, NoOtherFolderIsTakenForARefusal) {
  std::filesystem::create_directory(Path());
  const std::string other = m_sFolder + "/other";
  std::filesystem::create_directory(other);
  const char* const folders[] = {m_sFolder.c_str(), other.c_str()};
  NamedLockRecord* record = nullptr;
  EXPECT_EQ(EISDIR, Platform::MapLockFile(folders, 2, "lock", record));
  EXPECT_TRUE(std::filesystem::is_empty(other));
}

TEST_F(NamedLockFileTest, ANameThatDoesNotFitIsRefused) {
  EXPECT_EQ(0, Map(std::string(sizeof NamedLockRecord::m_sName - 1, 'n')));
  EXPECT_EQ(ENAMETOOLONG, Map(std::string(sizeof NamedLockRecord::m_sName, 'n')));
}

TEST_F(NamedLockFileTest, WithoutRoomThereIsACodeAndNothingIsLeft) {
  EXPECT_EQ(EFBIG, InForkedChild([this] {
              const rlimit none = {0, 0};
              ::signal(SIGXFSZ, SIG_IGN);
              ::setrlimit(RLIMIT_FSIZE, &none);
              return Map();
            }));
  EXPECT_EQ(0u, FilesInFolder());
}

// A sticky folder for everybody, as that of the system, and somebody who isn't its owner.
class NamedLockUserTest : public NamedLockFileTest {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    ASSERT_EQ(0, ::chmod(m_sFolder.c_str(), 01777));
  }

  template <class Action>
  int AsNobody(const Action& action) {
    return InForkedChild([&] { return ::setuid(uNOBODY) == 0 ? action() : -1; });
  }
};

TEST_F(NamedLockUserTest, UsersShareALock) {
  ASSERT_EQ(0, Map());
  EXPECT_EQ(-SIGKILL, AsNobody([this] {
    NamedLockRecord* record;
    if (Platform::MapLockFile(m_sFolder.c_str(), "lock", record) != 0) return 1;
    record->m_ullGeneration = 9;
    pthread_mutex_lock(&record->m_mutex);
    return ::kill(::getpid(), SIGKILL);
  }));
  EXPECT_EQ(9u, m_pRecord->m_ullGeneration);
  EXPECT_EQ(EOWNERDEAD, pthread_mutex_trylock(&m_pRecord->m_mutex));
  pthread_mutex_consistent(&m_pRecord->m_mutex);
  pthread_mutex_unlock(&m_pRecord->m_mutex);
}

TEST_F(NamedLockUserTest, TheOrdersOfMakingDoNotMatter) {
  EXPECT_EQ(0, AsNobody([this] { return Map(); }));
  ASSERT_EQ(0, Map());
  EXPECT_EQ(1u, FilesInFolder());
}

TEST_F(NamedLockUserTest, AnotherUsersFileIsNotTakenAway) {
  std::ofstream(Path()) << "no lock";
  ASSERT_EQ(0, ::chmod(Path().c_str(), 0666));
  EXPECT_EQ(EPERM, AsNobody([this] { return Map(); }));
  ExpectNewLock();
}

TEST_F(NamedLockUserTest, AFileWithoutRightsIsToldAsSuch) {
  ASSERT_EQ(0, Map());
  ASSERT_EQ(0, ::chmod(Path().c_str(), 0600));
  EXPECT_EQ(EACCES, AsNobody([this] { return Map(); }));
}

}  // namespace
