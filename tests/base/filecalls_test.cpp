#include "base/FileCalls.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"

namespace tessary {
namespace {

TEST(NextIndexedPath, CountsWithinTheSecondOfAName) {
  struct Row {
    const char* path;
    const char* next;
  };
  constexpr Row kRows[] = {
      {"/a/20240131_093005.mp4", "/a/20240131_093005_1.mp4"},
      {"/a/20240131_093005_1.mp4", "/a/20240131_093005_2.mp4"},
      {"/a/20240131_093005_9.mp4", "/a/20240131_093005_10.mp4"},
      {"/a_b/20240131_093005.mp4", "/a_b/20240131_093005_1.mp4"},
      {"/a/b.mp4", "/a/b_1.mp4"},
      {"/a/b_1.mp4", "/a/b_1_1.mp4"},
      {"/a/b_c_d.mp4", "/a/b_c_d_1.mp4"},
  };
  for (const auto& [path, next] : kRows) EXPECT_EQ(nextIndexedPath(path), next);
}

TEST(FileErrorText, SaysWhatTheUserCanUnderstand) {
  EXPECT_EQ(fileErrorText(ENOSPC, "/a/b.jpg"), "the disk is full");
  EXPECT_EQ(fileErrorText(ENOENT, "/a/b.jpg"), "the folder \"/a\" is gone");
  EXPECT_EQ(fileErrorText(EROFS, "/a/b.jpg"), "the disk can only be read");
  EXPECT_EQ(fileErrorText(ENOTCONN, "/a/b.jpg"), "the disk does not answer");
  EXPECT_EQ(fileErrorText(ENOTTY, "/a/b.jpg"), "Inappropriate ioctl for device");
}

TEST(FileCalls, RenamesOnlyToANameThatNoFileHas) {
  const test::TemporaryFolder own;
  const std::string folder = own.path();
  std::ofstream(folder + "/a") << "one";
  std::ofstream(folder + "/b") << "two";
  FileCalls& calls = FileCalls::system();
  EXPECT_EQ(calls.renameToNew(folder + "/a", folder + "/b"), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(calls.renameToNew(folder + "/a", folder + "/c"), 0);
  EXPECT_FALSE(std::filesystem::exists(folder + "/a"));
  EXPECT_TRUE(std::filesystem::exists(folder + "/c"));
}

}  // namespace
}  // namespace tessary
