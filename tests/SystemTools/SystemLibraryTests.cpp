#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/SystemLibrary.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <type_traits>

#include "Support/TemporaryFolder.h"

using namespace Oxa::Core;
using TestSupport::TemporaryFolder;

namespace {

const std::string sPLUGIN = PLUGIN;

// Whether this process has the plug-in in its memory.
bool IsPluginLoaded() {
  return TestSupport::ReadFile("/proc/self/maps").find(PLUGIN_NAME) != std::string::npos;
}

}  // namespace

TEST(SystemLibrary, FindsFunctionsByName) {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(sPLUGIN));
  ASSERT_TRUE(library);
  EXPECT_TRUE(library->HasFunction("PluginAdd"));
  EXPECT_EQ(5, library->GetFunction<int(int, int)>("PluginAdd")(2, 3));
  EXPECT_EQ(9, library->GetFunction<int (*)(int, int)>("PluginAdd")(4, 5));
}

TEST(SystemLibrary, GetFunctionGivesAPointerToTheFunctionsType) {
  using Found = decltype(std::declval<SystemLibrary>().GetFunction<int(int)>(""));
  using FoundByPointer = decltype(std::declval<SystemLibrary>().GetFunction<int (*)(int)>(""));
  EXPECT_TRUE((std::is_same_v<int (*)(int), Found>));
  EXPECT_TRUE((std::is_same_v<Found, FoundByPointer>));
}

TEST(SystemLibrary, FunctionsAreSeenByNobodyElse) {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(sPLUGIN));
  ASSERT_TRUE(library);
  EXPECT_EQ(nullptr, ::dlsym(RTLD_DEFAULT, "PluginAdd"));
}

TEST(SystemLibrary, ALibraryThatLacksAFunctionIsNull) {
  EXPECT_FALSE(SystemLibrary::Load(PathName(UNBOUND)));
}

TEST(SystemLibrary, HasFunctionIsFalseForANameThatDoesNotExist) {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(sPLUGIN));
  ASSERT_TRUE(library);
  EXPECT_FALSE(library->HasFunction("PluginSubtract"));
  EXPECT_FALSE(library->HasFunction("pluginadd"));
  EXPECT_FALSE(library->HasFunction(""));
}

TEST(SystemLibrary, GetFunctionRaisesForANameThatDoesNotExist) {
  const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(sPLUGIN));
  ASSERT_TRUE(library);
  try {
    library->GetFunction<void()>("PluginSubtract");
    FAIL() << "nothing was raised";
  } catch (NoSuchFunction& error) {
    EXPECT_EQ("No function named PluginSubtract exists in " + sPLUGIN, error.GetData(AlertInfo::sMESSAGE));
    EXPECT_EQ("Oxa.Core.SystemLibrary", error.GetData(AlertInfo::sLOG_NAME));
    EXPECT_EQ(2, static_cast<int>(error.GetSeverity()));
  }
}

TEST(SystemLibrary, KeepsTheNameThatItWasLoadedBy) {
  std::string backwards = sPLUGIN;
  for (char& c : backwards)
    if (c == '/') c = '\\';
  for (const std::string& name : {sPLUGIN, backwards, std::string("libc.so.6")}) {
    const boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName(name));
    ASSERT_TRUE(library) << name;
    EXPECT_EQ(name, static_cast<const std::string&>(library->GetPathName()));
    EXPECT_NE(nullptr, library->GetModuleHandleA());
  }
}

TEST(SystemLibrary, WhatCannotBeLoadedIsNull) {
  const TemporaryFolder folder;
  for (const std::string& name :
       {std::string(), std::string("psapi.dll"), folder.File("missing.so"), folder.Path(),
        folder.Write("text.so", "no library"), folder.Write("empty.so", ""), std::string(5000, 'x')})
    EXPECT_FALSE(SystemLibrary::Load(PathName(name))) << name;
}

// The system's loader would take it, and die of the first byte that isn't there.
TEST(SystemLibrary, ALibraryThatIsCutOffIsNull) {
  const TemporaryFolder folder;
  const std::string plugin = TestSupport::ReadFile(sPLUGIN);
  const std::string name = folder.Write("plugin.so", plugin);
  EXPECT_TRUE(SystemLibrary::Load(PathName(name)));
  for (std::size_t size = 0; size < plugin.size() / 2; size += 61) {
    std::filesystem::remove(name);
    folder.Write("plugin.so", plugin.substr(0, size));
    EXPECT_FALSE(SystemLibrary::Load(PathName(name))) << size;
  }
}

TEST(SystemLibrary, TheLibraryGoesWithItsLastUser) {
  ASSERT_FALSE(IsPluginLoaded());
  boost::shared_ptr<SystemLibrary> first = SystemLibrary::Load(PathName(sPLUGIN));
  boost::shared_ptr<SystemLibrary> second = SystemLibrary::Load(PathName(sPLUGIN));
  EXPECT_EQ(first->GetModuleHandleA(), second->GetModuleHandleA());
  const auto add = second->GetFunction<int(int, int)>("PluginAdd");
  first.reset();
  EXPECT_TRUE(IsPluginLoaded());
  EXPECT_EQ(2, add(1, 1));
  second.reset();
  EXPECT_FALSE(IsPluginLoaded());
}

TEST(SystemLibrary, IsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<SystemLibrary>);
  EXPECT_FALSE(std::is_copy_assignable_v<SystemLibrary>);
}
