// Opening by disposition and access, and who gets in beside whom.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

#include "Platform/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/Together.h"

namespace {

using Oxa::Core::Platform::EDisposition;
using Oxa::Core::Platform::EOrigin;
using Oxa::Core::Platform::FileAccess;
using Oxa::Core::Platform::FileHandle;
using TestSupport::ReadFile;
using TestSupport::TemporaryFolder;

constexpr FileAccess NEITHER{false, false};
constexpr FileAccess READS{true, false};
constexpr FileAccess WRITES{false, true};
constexpr FileAccess BOTH{true, true};
constexpr FileAccess ALL[] = {NEITHER, READS, WRITES, BOTH};

constexpr EDisposition ALL_DISPOSITIONS[] = {EDisposition::eOPEN_EXISTING, EDisposition::eCREATE_NEW,
                                             EDisposition::eCREATE_ALWAYS, EDisposition::eOPEN_ALWAYS};

FileHandle Open(const std::string& name, const FileAccess& access,
                EDisposition disposition = EDisposition::eOPEN_EXISTING) {
  int code = -12345;
  FileHandle handle = FileHandle::OpenShared(name.c_str(), access, disposition, code);
  EXPECT_EQ(0, code) << name;
  EXPECT_TRUE(handle.IsOpen()) << name;
  return handle;
}

int CodeOf(const std::string& name, const FileAccess& access,
           EDisposition disposition = EDisposition::eOPEN_EXISTING) {
  int code = -12345;
  EXPECT_EQ(code == 0, FileHandle::OpenShared(name.c_str(), access, disposition, code).IsOpen()) << name;
  return code;
}

int Write(FileHandle& handle, const std::string& text) {
  std::size_t written = 0;
  const int code = handle.Write(text.data(), text.size(), written);
  EXPECT_EQ(code == 0 ? text.size() : 0, written);
  return code;
}

std::string Read(FileHandle& handle) {
  std::string text(100, '\0');
  std::size_t read = 0;
  EXPECT_EQ(0, handle.Read(text.data(), text.size(), read));
  text.resize(read);
  return text;
}

bool MayOpen(const std::string& name, const FileAccess& access) {
  int code = -12345;
  const bool bOpen =
      FileHandle::OpenShared(name.c_str(), access, EDisposition::eOPEN_EXISTING, code).IsOpen();
  EXPECT_EQ(bOpen ? 0 : EWOULDBLOCK, code);
  return bOpen;
}

std::uint64_t Place(const FileHandle& handle) {
  std::uint64_t place = 12345;
  EXPECT_EQ(0, handle.Position(place));
  return place;
}

}  // namespace

TEST(SharedFile, AMissingFileIsMadeUnlessItHasToBeThere) {
  const TemporaryFolder folder;
  for (const FileAccess& access : ALL) {
    EXPECT_EQ(ENOENT, CodeOf(folder.File("gone"), access));
    for (const EDisposition disposition :
         {EDisposition::eCREATE_NEW, EDisposition::eCREATE_ALWAYS, EDisposition::eOPEN_ALWAYS}) {
      Open(folder.File("made"), access, disposition);
      EXPECT_EQ(0U, std::filesystem::file_size(folder.File("made")));
      std::filesystem::remove(folder.File("made"));
    }
  }
  EXPECT_FALSE(std::filesystem::exists(folder.File("gone")));
}

TEST(SharedFile, AFileThatIsThereIsKeptOrEmptiedOrInTheWay) {
  const TemporaryFolder folder;
  for (const FileAccess& access : ALL) {
    const std::string name = folder.Write("file", "content");
    EXPECT_EQ(EEXIST, CodeOf(name, access, EDisposition::eCREATE_NEW));
    Open(name, access, EDisposition::eOPEN_ALWAYS);
    Open(name, access, EDisposition::eOPEN_EXISTING);
    EXPECT_EQ("content", ReadFile(name));
    Open(name, access, EDisposition::eCREATE_ALWAYS);
    EXPECT_EQ("", ReadFile(name));
  }
}

TEST(SharedFile, DoesWhatItsAccessSays) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "abcdef");
  {
    FileHandle both = Open(name, BOTH);
    EXPECT_EQ(0, Write(both, "AB"));
    EXPECT_EQ("cdef", Read(both));
  }
  {
    FileHandle writing = Open(name, WRITES);
    EXPECT_EQ(0, Write(writing, "12"));
    std::size_t read = 99;
    char byte = 0;
    EXPECT_EQ(EBADF, writing.Read(&byte, 1, read));
    EXPECT_EQ(0U, read);
  }
  FileHandle reading = Open(name, READS);
  EXPECT_EQ("12cdef", Read(reading));
  EXPECT_EQ(EBADF, Write(reading, "x"));
  EXPECT_EQ("12cdef", ReadFile(name));
}

TEST(SharedFile, OneWritesOrManyRead) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  for (const FileAccess& access : {WRITES, BOTH}) {
    FileHandle writer = Open(name, access);
    EXPECT_FALSE(MayOpen(name, WRITES));
    EXPECT_FALSE(MayOpen(name, BOTH));
    EXPECT_TRUE(MayOpen(name, READS));
    EXPECT_TRUE(MayOpen(name, NEITHER));
    EXPECT_EQ(0, writer.Close());
    EXPECT_TRUE(MayOpen(name, access));
  }
  FileHandle one = Open(name, READS);
  FileHandle other = Open(name, READS);
  EXPECT_FALSE(MayOpen(name, WRITES));
  EXPECT_EQ(0, one.Close());
  EXPECT_FALSE(MayOpen(name, BOTH));
  EXPECT_EQ(0, other.Close());
  EXPECT_TRUE(MayOpen(name, BOTH));
  const FileHandle neither = Open(name, NEITHER);
  EXPECT_TRUE(MayOpen(name, WRITES));
}

TEST(SharedFile, NobodyEmptiesWhatSomebodyElseHas) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  for (const FileAccess& owner : {READS, WRITES, BOTH}) {
    const FileHandle handle = Open(name, owner);
    for (const FileAccess& access : ALL)
      EXPECT_EQ(EWOULDBLOCK, CodeOf(name, access, EDisposition::eCREATE_ALWAYS));
    EXPECT_EQ("content", ReadFile(name));
  }
}

TEST(SharedFile, WhoEmptiedItAndReadsIsNoMoreThanAReader) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  {
    const FileHandle reader = Open(name, READS, EDisposition::eCREATE_ALWAYS);
    EXPECT_TRUE(MayOpen(name, READS));
    EXPECT_FALSE(MayOpen(name, WRITES));
  }
  const FileHandle neither = Open(name, NEITHER, EDisposition::eCREATE_ALWAYS);
  EXPECT_TRUE(MayOpen(name, WRITES));
}

TEST(SharedFile, OtherWaysToOpenItAreFree) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  const FileHandle writer = Open(name, WRITES);
  int code = -1;
  EXPECT_TRUE(FileHandle::OpenForAppend(name.c_str(), code).IsOpen());
  EXPECT_TRUE(FileHandle::OpenForReading(name.c_str(), code).IsOpen());
  EXPECT_FALSE(MayOpen(name, WRITES));
}

TEST(SharedFile, TheClaimMovesWithTheHandle) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  FileHandle first = Open(name, WRITES);
  FileHandle second(std::move(first));
  // NOLINTNEXTLINE(bugprone-use-after-move,clang-analyzer-cplusplus.Move): that is what is asked
  EXPECT_EQ(0, first.Close());
  EXPECT_FALSE(MayOpen(name, WRITES));
  second = FileHandle();
  EXPECT_TRUE(MayOpen(name, WRITES));
}

TEST(SharedFile, OfManyThatWantToWriteOneGetsIn) {
  const TemporaryFolder folder;
  const std::string name = folder.Write("file", "content");
  FileHandle handles[4];
  TestSupport::Together(4, [&](int index) {
    int code = -1;
    handles[index] = FileHandle::OpenShared(name.c_str(), WRITES, EDisposition::eOPEN_ALWAYS, code);
  });
  int iOpen = 0;
  for (const FileHandle& handle : handles) iOpen += handle.IsOpen() ? 1 : 0;
  EXPECT_EQ(1, iOpen);
}

TEST(SharedFile, RefusesFoldersAndNamesThatCannotBe) {
  const TemporaryFolder folder;
  for (const FileAccess& access : ALL) {
    for (const EDisposition disposition : ALL_DISPOSITIONS) {
      const int expected = disposition == EDisposition::eCREATE_NEW ? EEXIST : EISDIR;
      EXPECT_EQ(expected, CodeOf(folder.Path(), access, disposition));
      EXPECT_EQ(ENOENT, CodeOf(folder.File("no/folder"), access, disposition));
      EXPECT_EQ(ENOENT, CodeOf("", access, disposition));
      EXPECT_EQ(ENAMETOOLONG, CodeOf(std::string(100000, 'x'), access, disposition));
    }
  }
}

TEST(SharedFile, MovesFromAllOriginsAndTellsThePlace) {
  const TemporaryFolder folder;
  FileHandle handle = Open(folder.Write("file", "abcdef"), READS);
  EXPECT_EQ(0U, Place(handle));
  std::uint64_t place = 99;
  EXPECT_EQ(0, handle.Move(4, EOrigin::eBEGIN, place));
  EXPECT_EQ(4U, place);
  EXPECT_EQ(0, handle.Move(-2, EOrigin::eCURRENT, place));
  EXPECT_EQ(2U, place);
  EXPECT_EQ("cdef", Read(handle));
  EXPECT_EQ(6U, Place(handle));
  EXPECT_EQ(0, handle.Move(-5, EOrigin::eEND, place));
  EXPECT_EQ(1U, place);
  EXPECT_NE(0, handle.Move(-7, EOrigin::eEND, place));
  EXPECT_NE(0, handle.Move(-1, EOrigin::eBEGIN, place));
  EXPECT_EQ(1U, place);
  EXPECT_EQ(1U, Place(handle));
  EXPECT_EQ(0, handle.Move(5LL << 32, EOrigin::eBEGIN, place));
  EXPECT_EQ(5ULL << 32, place);
  EXPECT_EQ("", Read(handle));
}

TEST(SharedFile, AClosedOneHasNoPlace) {
  FileHandle handle;
  std::uint64_t place = 99;
  EXPECT_EQ(EBADF, handle.Move(0, EOrigin::eBEGIN, place));
  EXPECT_EQ(EBADF, handle.Position(place));
  EXPECT_EQ(99U, place);
}
