#include "System/Executable.h"

#include <gtest/gtest.h>

using Oxa::Core::Executable;
using Oxa::Core::SplitExecutable;

namespace {

void ExpectSplit(const char* path, const char* folder, const char* leaf) {
  const Executable executable = SplitExecutable(path);
  EXPECT_EQ(folder, executable.folder) << path;
  EXPECT_EQ(leaf, executable.leaf) << path;
}

}  // namespace

TEST(Executable, IsSplitBehindTheLastSeparator) {
  ExpectSplit("/a/b", "/a/", "b");
  ExpectSplit("/a/b.c/d.e.f", "/a/b.c/", "d.e.f");
  ExpectSplit("/x", "/", "x");
  ExpectSplit("a/b", "a/", "b");
}

TEST(Executable, WhatIsMissingHasAStandIn) {
  ExpectSplit("", "./", "Unknown");
  ExpectSplit("/", "/", "Unknown");
  ExpectSplit("/a/", "/a/", "Unknown");
  ExpectSplit("x", "./", "x");
}
