#include "settings/PathGrants.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "TemporaryFolder.h"
#include "base/SerialQueue.h"

namespace tessary {
namespace {

namespace fs = std::filesystem;

FolderGrants::Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

class PathGrantsTest : public ::testing::Test {
 protected:
  void TearDown() override {
    std::error_code ignored;
    fs::permissions(folder_, fs::perms::owner_all, ignored);  // so that it can go
  }

  /// Whether `url` can neither be granted nor be had from a stored grant.
  void expectUnusable(const std::string& url) const {
    EXPECT_EQ(grants_.bookmarkData(url), std::nullopt) << url;
    EXPECT_FALSE(grants_.resolveBookmarkData(bytes(url))) << url;
  }

  test::TemporaryFolder own_;
  const fs::path folder_ = own_.path();
  PathGrants grants_;
};

TEST_F(PathGrantsTest, AFolderThatCanBeUsedIsGrantedAsItsPath) {
  for (const char* name : {"pictures", "with blank, comma; and more", "μm 恭禧"}) {
    const std::string url = (folder_ / name).string();
    fs::create_directory(url);
    const auto data = grants_.bookmarkData(url);
    ASSERT_EQ(data, bytes(url));
    const auto folder = grants_.resolveBookmarkData(*data);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->url, url);
    EXPECT_FALSE(folder->dataIsStale);
  }
}

TEST_F(PathGrantsTest, AFolderThatHasGoneIsLost) {
  const auto data = grants_.bookmarkData(folder_.string());
  ASSERT_TRUE(data);
  fs::remove_all(folder_);
  EXPECT_FALSE(grants_.resolveBookmarkData(*data));
}

TEST_F(PathGrantsTest, WhatIsNoFolderCannotBeUsed) {
  std::ofstream(folder_ / "file") << "x";
  expectUnusable((folder_ / "file").string());
  expectUnusable((folder_ / "missing").string());
  expectUnusable("");
  expectUnusable(".");
  expectUnusable("tmp");
  expectUnusable(std::string("/tmp\0/x", 7));
  expectUnusable("/" + std::string(100000, 'x'));
  expectUnusable("\xFF\xFE\x01");
}

/// Whether an ordinary user can be granted `url`: root may write everywhere, so a child without
/// that right answers for it.
bool isGrantedToAnOrdinaryUser(const std::string& url) {
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(2);
    _exit(PathGrants().bookmarkData(url) ? 1 : 0);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2);
  return WEXITSTATUS(status) == 1;
}

TEST_F(PathGrantsTest, AFolderHasToBeBothWritableAndSearchable) {
  struct Row {
    fs::perms permissions;
    bool granted;
  };
  constexpr fs::perms read = fs::perms::owner_read | fs::perms::others_read;
  constexpr fs::perms write = fs::perms::owner_write | fs::perms::others_write;
  constexpr fs::perms search = fs::perms::owner_exec | fs::perms::others_exec;
  for (const Row& row : {Row{read | write | search, true}, Row{write | search, true},
                         Row{read | search, false}, Row{read | write, false}}) {
    fs::permissions(folder_, row.permissions);
    EXPECT_EQ(isGrantedToAnOrdinaryUser(folder_.string()), row.granted) << int(row.permissions);
  }
}

TEST_F(PathGrantsTest, ADiskThatDoesNotAnswerIsNotWaitedFor) {
  const auto answers = std::make_shared<std::promise<void>>();
  const PathGrants grants(
      [answers, answered = answers->get_future().share()](const std::string& url) {
        if (url == "/stuck") answered.wait();
        return true;
      },
      std::chrono::milliseconds(50));
  EXPECT_EQ(grants.unanswered(), std::nullopt);
  EXPECT_FALSE(grants.resolveBookmarkData(bytes("/stuck")));
  EXPECT_EQ(grants.unanswered(), "/stuck");
  EXPECT_TRUE(grants.bookmarkData("/fine"));
  EXPECT_EQ(grants.unanswered(), std::nullopt);
  answers->set_value();
  while (SerialQueue::abandonedThreads() > 0) std::this_thread::yield();
}

}  // namespace
}  // namespace tessary
