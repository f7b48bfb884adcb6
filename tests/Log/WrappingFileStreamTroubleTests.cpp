// What goes wrong: folders that aren't, files that can't be, full disks.
#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Core/LibraryState.h"
#include "Log/DailyFolder.h"
#include "Log/FileLimit.h"

namespace {

using namespace Oxa::Core;
using LogTests::At;
using LogTests::Complaint;
using LogTests::iNO_LIMIT;

class WrappingFileStreamTrouble : public LogTests::DailyFolder {
 protected:
  // Puts a folder in the way of a file.
  void Block(const std::string& name) const { std::filesystem::create_directory(m_folder.File(name)); }
  void Unblock(const std::string& name) const { std::filesystem::remove(m_folder.File(name)); }

  void MakeFull(const std::string& name) const {
    std::filesystem::create_symlink("/dev/full", m_folder.File(name));
  }

  template <class Raised>
  std::string WriteComplaint(const std::string& text = "text") {
    return Complaint<Raised>([&] { m_stream.Write(text); });
  }
  template <class Raised>
  std::string BeginComplaint() {
    return Complaint<Raised>([&] { Begin(m_stream, 3, 4); });
  }
  template <class Raised>
  std::string FolderComplaint(const std::string& folder) {
    return Complaint<Raised>([&] { m_stream.Initialize(folder, 7, 3, 4, "Run"); });
  }

  WrappingFileStream m_stream;
};

TEST_F(WrappingFileStreamTrouble, ErrorsAreMistakesOfTheProgram) {
  WrappingFileStream::Error_WriteFailed error("F");
  EXPECT_EQ("Logic", error.GetData(AlertInfo::sCATEGORY));
  EXPECT_EQ(AlertInfo::eERROR, error.GetSeverity());
  EXPECT_STREQ("Failed writing wrapping stream file <F>", error.what());
  EXPECT_STREQ("Error opening/creating wrapping stream file <F>",
               WrappingFileStream::Error_CreateFailed("F").what());
  EXPECT_STREQ("Error opening/creating stream sequence file <F>",
               WrappingFileStream::Error_CreateSeqFailed("F").what());
  EXPECT_STREQ("Error reading wrapping stream directory <F>",
               WrappingFileStream::Error_DirecoryParseFailed("F").what());
  EXPECT_STREQ("The stream folder <F> does not exist",
               WrappingFileStream::Error_FolderDoesNotExist("F").what());
  EXPECT_STREQ("Stream folder <F> is not a valid path",
               WrappingFileStream::Error_IllegalFolderSyntax("F").what());
}

TEST_F(WrappingFileStreamTrouble, FolderThatDoesNotExist) {
  for (const std::string& folder : {m_folder.File("none"), m_folder.File("none/"), std::string("none")})
    EXPECT_EQ("OxaCore.WrappingFileStream: The stream folder <" + folder + "> does not exist",
              FolderComplaint<WrappingFileStream::Error_FolderDoesNotExist>(folder));
  m_stream.Write("lost");
  EXPECT_EQ(Names(), All());
}

TEST_F(WrappingFileStreamTrouble, FolderThatIsAFile) {
  Put("file");
  EXPECT_EQ("OxaCore.WrappingFileStream: The stream folder <" + m_folder.File("file") + "> does not exist",
            FolderComplaint<WrappingFileStream::Error_FolderDoesNotExist>(m_folder.File("file")));
}

TEST_F(WrappingFileStreamTrouble, FolderThatNoPathCanBe) {
  for (const std::string& folder : {Path() + "//x", Path() + "/a*b", std::string(":"), std::string()})
    EXPECT_EQ("OxaCore.WrappingFileStream: Stream folder <" + folder + "> is not a valid path",
              FolderComplaint<WrappingFileStream::Error_IllegalFolderSyntax>(folder));
  EXPECT_EQ(Names(), All());
}

TEST_F(WrappingFileStreamTrouble, SecondInitializeThatFailsEndsTheWriting) {
  Begin(m_stream);
  m_stream.Write("te");
  FolderComplaint<WrappingFileStream::Error_IllegalFolderSyntax>(":");
  m_stream.Write("lost");
  Begin(m_stream);
  m_stream.Write("xt");
  FolderComplaint<WrappingFileStream::Error_FolderDoesNotExist>("none");
  m_stream.Write("lost");
  m_clock.Set(At(3, 4, 1));
  m_stream.MidnightCheck();
  EXPECT_EQ("text", Read("Run2011_03_03-0.log"));
  EXPECT_EQ(2U, All().size());
}

TEST_F(WrappingFileStreamTrouble, SequenceFileThatCannotBeOpened) {
  Block("Run2011_03_03.seq");
  EXPECT_EQ("OxaCore.WrappingFileStream: Error opening/creating stream sequence file <" +
                m_folder.File("Run2011_03_03.seq") + ">",
            BeginComplaint<WrappingFileStream::Error_CreateSeqFailed>());
  m_stream.Write("lost");
  EXPECT_EQ(Names{"Run2011_03_03.seq"}, All());
}

TEST_F(WrappingFileStreamTrouble, FileThatCannotBeOpened) {
  Block("Run2011_03_03-0.log");
  EXPECT_EQ("OxaCore.WrappingFileStream: Error opening/creating wrapping stream file <" +
                m_folder.File("Run2011_03_03-0.log") + ">",
            BeginComplaint<WrappingFileStream::Error_CreateFailed>());
  m_stream.Write("lost");
  Unblock("Run2011_03_03-0.log");
  m_stream.Write("lost as well");
  EXPECT_EQ(Names{"Run2011_03_03.seq"}, All());
  Begin(m_stream);
  m_stream.Write("text");
  EXPECT_EQ("text", Read("Run2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamTrouble, NextFileThatCannotBeOpenedEndsTheWriting) {
  Begin(m_stream, 2, 0);
  m_stream.Write("text");
  Block("Run2011_03_03-1.log");
  EXPECT_EQ("OxaCore.WrappingFileStream: Error opening/creating wrapping stream file <" +
                m_folder.File("Run2011_03_03-1.log") + ">",
            WriteComplaint<WrappingFileStream::Error_CreateFailed>());
  Unblock("Run2011_03_03-1.log");
  m_stream.Write("lost");
  EXPECT_EQ((Names{"Run2011_03_03-0.log", "Run2011_03_03.seq"}), All());
  EXPECT_EQ("text", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("1\n", Read("Run2011_03_03.seq"));
}

TEST_F(WrappingFileStreamTrouble, WrapThatFailsIsNotTold) {
  Begin(m_stream, 1, 0);
  m_stream.Write("text");
  std::filesystem::remove(m_folder.File("Run2011_03_03-0.log"));
  Block("Run2011_03_03-0.log");
  WriteComplaint<WrappingFileStream::Error_CreateFailed>();
  EXPECT_EQ(0U, Alarms().size());
}

TEST_F(WrappingFileStreamTrouble, FullDisk) {
  MakeFull("Run2011_03_03-0.log");
  Begin(m_stream);
  EXPECT_EQ("OxaCore.WrappingFileStream: Failed writing wrapping stream file <" +
                m_folder.File("Run2011_03_03-0.log") + ">",
            WriteComplaint<WrappingFileStream::Error_WriteFailed>());
  EXPECT_NO_THROW(m_stream.Write("lost"));
}

// A limit for the size of files ends the process where nobody sees to it.
TEST_F(WrappingFileStreamTrouble, FileThatMayNotGrow) {
  LogTests::FileLimit limit(10);
  {
    WrappingFileStream stream;
    Begin(stream);
    stream.Write("12345678");
    EXPECT_EQ("OxaCore.WrappingFileStream: Failed writing wrapping stream file <" +
                  m_folder.File("Run2011_03_03-0.log") + ">",
              Complaint<WrappingFileStream::Error_WriteFailed>([&] { stream.Write("90abc"); }));
  }
  EXPECT_EQ("1234567890", Read("Run2011_03_03-0.log"));
}

TEST_F(WrappingFileStreamTrouble, SequenceFileThatCannotBeWrittenIsLogged) {
  MakeFull("Run2011_03_03.seq");
  Begin(m_stream, 2, 0);
  m_stream.Write("text");
  m_stream.Write("more");
  EXPECT_EQ("text", Read("Run2011_03_03-0.log"));
  EXPECT_EQ("more", Read("Run2011_03_03-1.log"));
  const std::string complaint = "Error saving sequence file for <" + m_folder.File("Run2011_03_03.seq") + ">";
  EXPECT_EQ((std::vector<std::string>{complaint, complaint}), Alarms());
}

TEST_F(WrappingFileStreamTrouble, FolderThatIsGoneAtMidnight) {
  std::filesystem::create_directory(m_folder.File("gone"));
  m_stream.Initialize(m_folder.File("gone"), 7, 3, iNO_LIMIT, "");
  std::filesystem::remove_all(m_folder.File("gone"));
  m_clock.Set(At(3, 4, 1));
  EXPECT_EQ(
      "OxaCore.WrappingFileStream: Error reading wrapping stream directory <" + m_folder.File("gone") + "/>",
      WriteComplaint<WrappingFileStream::Error_DirecoryParseFailed>());
  EXPECT_NO_THROW(m_stream.Write("lost"));
}

TEST_F(WrappingFileStreamTrouble, FolderThatIsGoneAtMidnightWhereNothingIsDeleted) {
  std::filesystem::create_directory(m_folder.File("gone"));
  m_stream.Initialize(m_folder.File("gone"), iNO_LIMIT, 3, iNO_LIMIT, "");
  std::filesystem::remove_all(m_folder.File("gone"));
  m_clock.Set(At(3, 4, 1));
  EXPECT_EQ("OxaCore.WrappingFileStream: Error opening/creating stream sequence file <" +
                m_folder.File("gone/2011_03_04.seq") + ">",
            WriteComplaint<WrappingFileStream::Error_CreateSeqFailed>());
  EXPECT_NO_THROW(m_stream.Write("lost"));
}

TEST_F(WrappingFileStreamTrouble, FilesOfTheNewDayThatCannotBeOpened) {
  Begin(m_stream);
  Block("Run2011_03_04-0.log");
  m_clock.Set(At(3, 4, 1));
  EXPECT_EQ("OxaCore.WrappingFileStream: Error opening/creating wrapping stream file <" +
                m_folder.File("Run2011_03_04-0.log") + ">",
            Complaint<WrappingFileStream::Error_CreateFailed>([&] { m_stream.MidnightCheck(); }));
  EXPECT_NO_THROW(m_stream.Write("lost"));
}

// Raises return while the library unloads: what failed stays failed.
TEST_F(WrappingFileStreamTrouble, RaisesThatReturn) {
  Block("Run2011_03_03-1.log");
  Block("Block2011_03_03-0.log");
  Block("Seq2011_03_03.seq");
  EXPECT_EXIT(
      {
        SetLibraryUnloading();
        m_stream.Initialize("none", 7, 3, 4, "Run");
        m_stream.Initialize("//", 7, 3, 4, "Run");
        m_stream.Initialize(Path(), 7, 3, 4, "Block");
        m_stream.Initialize(Path(), 7, 3, 4, "Seq");
        m_stream.Write("lost");
        Begin(m_stream, 3, 0);
        m_stream.Write("text");
        m_stream.Write("lost");
        m_stream.Write("lost");
        std::_Exit(Read("Run2011_03_03-0.log") == "text" ? 5 : 6);
      },
      testing::ExitedWithCode(5), "");
}

}  // namespace
