#include <Infrastructure/OxaCore/ModuleVersionInfo.h>
#include <Infrastructure/OxaCore/SystemLibrary.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "Support/TemporaryFolder.h"
#include "SystemTools/ElfFile.h"
#include "SystemTools/VersionSupport.h"

using namespace Oxa::Core;
using namespace SystemToolsTest;
using TestSupport::TemporaryFolder;

TEST(ModuleVersionInfo, KeysHaveTheirTexts) {
  EXPECT_EQ("PathName", ModuleVersionInfo::sPATH_NAME);
  EXPECT_EQ("FileName", ModuleVersionInfo::sFILE_NAME);
  EXPECT_EQ("Comments", ModuleVersionInfo::sCOMMENTS);
  EXPECT_EQ("CompanyName", ModuleVersionInfo::sCOMPANY_NAME);
  EXPECT_EQ("FileDescription", ModuleVersionInfo::sFILE_DESCRIPTION);
  EXPECT_EQ("FileVersion", ModuleVersionInfo::sFILE_VERSION);
  EXPECT_EQ("InternalName", ModuleVersionInfo::sINTERNAL_NAME);
  EXPECT_EQ("LegalCopyright", ModuleVersionInfo::sLEGAL_COPYRIGHT);
  EXPECT_EQ("LegalTrademarks", ModuleVersionInfo::sLEGAL_TRADEMARKS);
  EXPECT_EQ("OriginalFilename", ModuleVersionInfo::sORIGINAL_FILENAME);
  EXPECT_EQ("ProductName", ModuleVersionInfo::sPRODUCT_NAME);
  EXPECT_EQ("ProductVersion", ModuleVersionInfo::sPRODUCT_VERSION);
  EXPECT_EQ("SpecialBuild", ModuleVersionInfo::sSPECIAL_BUILD);
}

TEST(ModuleVersionInfo, FilesWithoutAVersionAreNull) {
  const TemporaryFolder folder;
  for (const std::string& name :
       {folder.File("missing"), folder.Path(), std::string(), std::string("/dev/null"),
        std::string(5000, 'x'), folder.Write("empty", ""), folder.Write("text.so.1.2", "no library"),
        folder.Write("short.1.2", "\177EL"), folder.Write("plain.so", ElfFile().Make()),
        folder.Write("plain.so.1", ElfFile().Make()), std::string(PLUGIN)})
    EXPECT_EQ(boost::shared_ptr<ModuleVersionInfo>(), ModuleVersionInfo::Create(name)) << name;
}

TEST(ModuleVersionInfo, APipeIsNotWaitedFor) {
  const TemporaryFolder folder;
  const std::string name = folder.File("pipe");
  ASSERT_EQ(0, ::mkfifo(name.c_str(), 0600));
  EXPECT_FALSE(ModuleVersionInfo::Create(name));
}

TEST(ModuleVersionInfo, GetLeavesTheValueIfTheKeyIsAbsent) {
  const TemporaryFolder folder;
  ElfFile file;
  file.m_sNote = R"({"name":"probe"})";
  const auto info = ModuleVersionInfo::Create(folder.Write("probe.so", file.Make()));
  ASSERT_TRUE(info);
  std::string value = "untouched";
  for (const std::string& key :
       {ModuleVersionInfo::sSPECIAL_BUILD, std::string("name"), std::string("productname"), std::string()}) {
    EXPECT_FALSE(info->Get(key, value)) << key;
    EXPECT_EQ("untouched", value);
  }
  EXPECT_TRUE(info->Get(ModuleVersionInfo::sPRODUCT_NAME, value));
  EXPECT_EQ("probe", value);
}

TEST(ModuleVersionInfo, TellsThePathThatWasPassedAndItsLastPart) {
  const TemporaryFolder folder;
  const TestSupport::CurrentFolder current(folder.Path());
  folder.Write("probe.so.1.2.", ElfFile().Make());
  ElfFile file;
  file.m_sNote = R"({"PathName":"elsewhere","FileName":"other"})";
  folder.Write("probe.so.1.", file.Make());
  for (const auto& [path, name] :
       {std::pair<std::string, std::string>{folder.File("probe.so.1."), "probe.so.1."},
        {"probe.so.1.", "probe.so.1."},
        {"./probe.so.1.", "probe.so.1."},
        {".\\probe.so.1.", "probe.so.1."},
        {folder.Path() + "//probe.so.1.", "probe.so.1."}}) {
    const auto values = VersionOf(path);
    EXPECT_EQ((Values{{"PathName", path}, {"FileName", name}}), values);
  }
}

#ifdef OXACORE_LIBRARY

TEST(ModuleVersionInfo, OurOwnLibraryTellsItsVersion) {
  Values values = VersionOf(OXACORE_LIBRARY);
  EXPECT_EQ(OXACORE_LIBRARY, values["PathName"]);
  EXPECT_EQ("libOxaCore.so", values["FileName"]);
  EXPECT_EQ(OXACORE_VERSION, values["FileVersion"]);
  EXPECT_EQ(OXACORE_SONAME, values["InternalName"]);
#ifdef OXACORE_HAS_PACKAGE_METADATA
  EXPECT_EQ("OxaCore", values["ProductName"]);
  EXPECT_EQ(OXACORE_VERSION, values["ProductVersion"]);
  EXPECT_EQ("libOxaCore.so", values["OriginalFilename"]);
  EXPECT_EQ("Foundation library of a family of measuring-instrument applications", values["FileDescription"]);
  EXPECT_EQ(8u, values.size());
#endif
}

TEST(ModuleVersionInfo, ALoadedLibraryIsFoundByItsHandle) {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(OXACORE_SONAME));
  ASSERT_TRUE(library);
  const auto info = ModuleVersionInfo::Create(library->GetModuleHandleA());
  ASSERT_TRUE(info);
  std::string value;
  ASSERT_TRUE(info->Get(ModuleVersionInfo::sPATH_NAME, value));
  EXPECT_TRUE(std::filesystem::equivalent(OXACORE_LIBRARY, value)) << value;
  ASSERT_TRUE(info->Get(ModuleVersionInfo::sFILE_VERSION, value));
  EXPECT_EQ(OXACORE_VERSION, value);
}

#endif

TEST(ModuleVersionInfo, ALibraryThatWasLoadedFromAnotherCurrentFolderIsFound) {
  const TemporaryFolder folder;
  std::filesystem::copy_file(PLUGIN, folder.File("plugin.so.4.5"));
  boost::shared_ptr<SystemLibrary> library;
  {
    const TestSupport::CurrentFolder current(folder.Path());
    library = SystemLibrary::Load(PathName("./plugin.so.4.5"));
  }
  ASSERT_TRUE(library);
  const auto info = ModuleVersionInfo::Create(library->GetModuleHandleA());
  ASSERT_TRUE(info);
  std::string value;
  EXPECT_TRUE(info->Get(ModuleVersionInfo::sPATH_NAME, value));
  EXPECT_EQ(std::filesystem::canonical(folder.File("plugin.so.4.5")).string(), value);
  EXPECT_TRUE(info->Get(ModuleVersionInfo::sFILE_VERSION, value));
  EXPECT_EQ("4.5", value);
}

TEST(ModuleVersionInfo, HandlesThatAreNoneAreNull) {
  int no_library = 0;
  EXPECT_FALSE(ModuleVersionInfo::Create(reinterpret_cast<HINSTANCE>(&no_library)));
  EXPECT_FALSE(ModuleVersionInfo::Create(reinterpret_cast<HINSTANCE>(1)));
  boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(PLUGIN));
  HINSTANCE gone = library->GetModuleHandleA();
  library.reset();
  EXPECT_FALSE(ModuleVersionInfo::Create(gone));
}

// This program says nothing of itself, and neither does its plug-in.
TEST(ModuleVersionInfo, NullStandsForTheProgram) {
  EXPECT_FALSE(ModuleVersionInfo::Create(HINSTANCE()));
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(PLUGIN));
  EXPECT_FALSE(ModuleVersionInfo::Create(library->GetModuleHandleA()));
}
