#include "Platform/Libraries.h"

#include <gtest/gtest.h>

#include <string>

#include "Platform/Files.h"
#include "Platform/Machine.h"

namespace Platform = Oxa::Core::Platform;

TEST(Libraries, WhatIsMissingOrHasNoNameIsNull) {
  EXPECT_EQ(nullptr, Platform::OpenLibrary(""));
  EXPECT_EQ(nullptr, Platform::OpenLibrary("no such library"));
  EXPECT_EQ(nullptr, Platform::OpenLibrary("no/such\\library"));
  EXPECT_EQ(nullptr, Platform::OpenLibrary(std::string(100000, 'x').c_str()));
}

TEST(Libraries, NullStandsForTheProgram) {
  std::string program;
  ASSERT_EQ(0, Platform::ExecutablePath(program));
  std::string path;
  EXPECT_EQ(0, Platform::LibraryPath(nullptr, path));
  EXPECT_EQ(program, path);
}

TEST(Libraries, AHandleThatIsNoneLeavesThePath) {
  int no_library = 0;
  std::string path = "untouched";
  EXPECT_NE(0, Platform::LibraryPath(reinterpret_cast<HINSTANCE>(&no_library), path));
  EXPECT_NE(0, Platform::LibraryPath(reinterpret_cast<HINSTANCE>(1), path));
  EXPECT_EQ("untouched", path);
}

TEST(Libraries, OwnCodeIsInTheProgramThatItWasLinkedInto) {
  std::string program;
  ASSERT_EQ(0, Platform::ExecutablePath(program));
  std::string path;
  EXPECT_EQ(0, Platform::OwnPath(path));
  EXPECT_EQ(program, path);
}
