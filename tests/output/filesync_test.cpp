#include "output/FileSync.h"

#include <cerrno>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "LogCapture.h"
#include "TemporaryFolder.h"

namespace tessary {
namespace {

using test::LogCapture;
using test::makeFile;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

FileIdentity identityOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return {status.st_dev, status.st_ino};
}

/// Takes down what is flushed, in order, and answers with the errors that it was given.
class Flushes {
 public:
  FileSync::Flush function() {
    return [this](int fd) {
      struct stat status {};
      fstat(fd, &status);
      const std::lock_guard lock(mutex_);
      flushed_.push_back({status.st_dev, status.st_ino});
      if (errors_.empty()) return 0;
      errno = errors_.front();
      errors_.erase(errors_.begin());
      return errno == 0 ? 0 : -1;
    };
  }
  void failWith(std::vector<int> errors) { errors_ = std::move(errors); }
  std::vector<FileIdentity> flushed() const {
    const std::lock_guard lock(mutex_);
    return flushed_;
  }

 private:
  mutable std::mutex mutex_;  // guards all below
  std::vector<FileIdentity> flushed_;
  std::vector<int> errors_;
};

class FileSyncTest : public ::testing::Test {
 protected:
  FileSyncTest() { makeFile(path, "picture"); }

  FileSync::Refused refused() {
    return [this](const std::string& refusedPath) { refusedPaths.push_back(refusedPath); };
  }

  TemporaryFolder folder;
  const std::string path = folder.file("a.jpg");
  std::vector<std::string> refusedPaths;  // read after draining
  Flushes flushes;
  LogCapture log;
};

TEST_F(FileSyncTest, FlushesTheFileAndThenItsFolder) {
  FileSync sync(refused(), flushes.function());
  sync.makeDurable(path, identityOf(path));
  sync.drain();
  EXPECT_THAT(flushes.flushed(), ElementsAre(identityOf(path), identityOf(folder.path())));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FileSyncTest, TheSystemsOwnFlushWorksOnBoth) {
  FileSync sync;
  sync.makeDurable(path, identityOf(path));
  sync.drain();
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST_F(FileSyncTest, TheCallerDoesNotWait) {
  std::promise<void> promise;
  const std::shared_future<void> allowed = promise.get_future().share();
  FileSync sync({}, [&](int) {
    allowed.wait();
    return 0;
  });
  sync.makeDurable(path, identityOf(path));  // would never return if the flush were waited for
  promise.set_value();
  sync.drain();
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST_F(FileSyncTest, WhatIsPendingAtTheEndIsFinished) {
  {
    FileSync sync(refused(), flushes.function());
    for (int i = 0; i < 20; ++i) sync.makeDurable(path, identityOf(path));
  }
  EXPECT_EQ(flushes.flushed().size(), 40U);
}

TEST_F(FileSyncTest, AFileThatTheDiskRefusesIsKeptLoggedAndTold) {
  flushes.failWith({EIO});
  FileSync sync(refused(), flushes.function());
  sync.makeDurable(path, identityOf(path));
  sync.drain();
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_THAT(log.lines(),
              ElementsAre("The file " + path +
                          " may be lost, the disk could not take it: Input/output error"));
  EXPECT_THAT(refusedPaths, ElementsAre(path));
}

TEST_F(FileSyncTest, TheEndDoesNotWaitForADiskThatDoesNotAnswer) {
  const auto answers = std::make_shared<std::promise<void>>();
  const auto asked = std::make_shared<std::promise<void>>();
  {
    FileSync sync({}, [answers, asked, calls = 0](int) mutable {
      if (calls++ > 0) return 0;
      asked->set_value();
      answers->get_future().wait();
      return 0;
    });
    sync.makeDurable(path, identityOf(path));
    asked->get_future().wait();
  }
  EXPECT_EQ(SerialQueue::abandonedThreads(), 1);
  answers->set_value();
  while (SerialQueue::abandonedThreads() > 0) std::this_thread::yield();
}

TEST_F(FileSyncTest, AFolderThatCanNotBeFlushedIsLoggedAndKeepsTheFile) {
  flushes.failWith({0, ENOSPC});
  FileSync sync(refused(), flushes.function());
  sync.makeDurable(path, identityOf(path));
  sync.drain();
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_THAT(log.lines(),
              ElementsAre("The file " + path +
                          " may be gone after a power failure: No space left on device"));
}

TEST_F(FileSyncTest, AFileSystemWithoutFlushesIsNoFailure) {
  flushes.failWith({EINVAL, EINVAL, ENOSYS, EOPNOTSUPP});
  FileSync sync(refused(), flushes.function());
  sync.makeDurable(path, identityOf(path));
  sync.makeDurable(path, identityOf(path));
  sync.drain();
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FileSyncTest, AnInterruptedFlushIsRepeated) {
  flushes.failWith({EINTR, EINTR});
  FileSync sync(refused(), flushes.function());
  sync.makeDurable(path, identityOf(path));
  sync.drain();
  EXPECT_EQ(flushes.flushed().size(), 4U);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FileSyncTest, AFileThatWasReplacedOrRemovedMeanwhileIsLeftAlone) {
  const FileIdentity old = identityOf(path);
  makeFile(folder.file("b.jpg"), "another");
  std::filesystem::rename(folder.file("b.jpg"), path);
  flushes.failWith({EIO, EIO});
  FileSync sync(refused(), flushes.function());
  sync.makeDurable(path, old);
  sync.makeDurable(folder.file("gone.jpg"), old);
  sync.drain();
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_THAT(flushes.flushed(), IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
}  // namespace tessary
