#include "output/StillImage.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeFailureListener.h"
#include "FileSizeLimit.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "TemporaryFolder.h"
#include "output/XmpPacket.h"

namespace tessary {
namespace {

using test::contentsOf;
using test::LogCapture;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// "Encodes" to its own name and the bytes of the picture.
class FakeEncoder final : public ImageEncoder {
 public:
  explicit FakeEncoder(std::string name) : name_(std::move(name)) {}
  std::vector<uint8_t> encode(const PixelBuffer& picture, const std::string& xmp) override {
    ++calls;
    lastXmp = xmp;
    if (fails) return {};
    std::vector<uint8_t> bytes(name_.begin(), name_.end());
    bytes.insert(bytes.end(), picture.data(), picture.data() + picture.byteCount());
    return bytes;
  }
  size_t xmpRoom() const override { return room; }

  bool fails = false;
  int calls = 0;
  size_t room = 100'000;
  std::string lastXmp;

 private:
  std::string name_;
};

/// A disk that does not answer until it is let go: when a file is made, or when it is written.
class StuckDisk final : public FileCalls {
 public:
  explicit StuckDisk(bool whenMade) : whenMade_(whenMade) {}
  int openNameless(const std::string& folder) override {
    if (whenMade_) answers_.wait();
    return FileCalls::openNameless(folder);
  }
  ssize_t writeAt(int fd, std::span<const uint8_t> bytes, int64_t offset) override {
    if (!whenMade_) answers_.wait();
    return FileCalls::writeAt(fd, bytes, offset);
  }
  void letGo() { promise_.set_value(); }

 private:
  const bool whenMade_;
  std::promise<void> promise_;
  const std::shared_future<void> answers_ = promise_.get_future().share();
};

class StillImageTest : public ::testing::Test {
 protected:
  StillImageTest() { std::memset(picture.data(), 'p', picture.byteCount()); }

  bool save(const std::string& in, const std::string& name, int32_t imagePNG) {
    return still.saveImageFile(in, name, imagePNG, picture, {});
  }

  /// What the user reads of pictures.
  std::string told() {
    mainQueue.runAll();
    return failures.text(Failure::StillNotSaved);
  }

  TemporaryFolder folder;
  LogCapture log;
  FakeEncoder jpeg{"jpeg:"};
  FakeEncoder png{"png:"};
  PixelBuffer picture{TextureSize{2, 1}};
  test::ManualExecutor mainQueue;
  test::FakeFailureListener failures;
  StillImage still{jpeg, png, mainQueue, failures};
};

TEST_F(StillImageTest, TheFormatChoosesTheEncoder) {
  EXPECT_TRUE(save(folder.path(), "a.jpg", 0));
  EXPECT_TRUE(save(folder.path(), "b.png", 1));
  EXPECT_TRUE(save(folder.path(), "c.png", -5));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "jpeg:pppppppp");
  EXPECT_EQ(contentsOf(folder.file("b.png")), "png:pppppppp");
  EXPECT_EQ(contentsOf(folder.file("c.png")), "png:pppppppp");
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg", "b.png", "c.png"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StillImageTest, SaysInTheFileWhereThePictureComesFrom) {
  const StillInfo info{{2025, 1, 15, 9, 30, 5, -3600}, "Scope 55", -1.0F, "mm"};
  EXPECT_TRUE(still.saveImageFile(folder.path(), "a.png", 1, picture, info));
  EXPECT_EQ(png.lastXmp, xmpPacket(info, {2, 1}, png.room));
  EXPECT_THAT(png.lastXmp, HasSubstr("Scope 55"));
  jpeg.room = 10;
  EXPECT_TRUE(still.saveImageFile(folder.path(), "b.jpg", 0, picture, info));
  EXPECT_EQ(jpeg.lastXmp, "");
  EXPECT_EQ(contentsOf(folder.file("b.jpg")), "jpeg:pppppppp")
      << "the picture is saved all the same";
}

TEST_F(StillImageTest, ANameThatExistsIsOverwritten) {
  test::makeFile(folder.file("a.jpg"), "a picture of another day, longer than this one");
  EXPECT_TRUE(save(folder.path(), "a.jpg", 0));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "jpeg:pppppppp");
}

TEST_F(StillImageTest, AFolderInAnyScriptWorks) {
  const std::string path = folder.file("Präparate 標本");
  std::filesystem::create_directory(path);
  EXPECT_TRUE(save(path + "/", "a.jpg", 0));
  EXPECT_EQ(contentsOf(path + "/a.jpg"), "jpeg:pppppppp");
}

TEST_F(StillImageTest, ADestinationThatCanNotBeMadeIsAnsweredFalse) {
  const std::string gone = folder.file("gone");
  EXPECT_FALSE(save(gone, "a.jpg", 0));
  EXPECT_THAT(log.lines(), ElementsAre("Can NOT save file: " + gone + "/a.jpg",
                                       "No file can be made in the folder " + gone +
                                           ": No such file or directory"));
  EXPECT_EQ(told(), "The picture was not saved: the folder \"" + gone +
                        "\" is gone. Choose another folder in Options.");
  EXPECT_TRUE(save(folder.path(), "a.jpg", 0));
  EXPECT_EQ(told(), "") << "a picture that is saved takes it back";
}

TEST_F(StillImageTest, WithoutAPictureNothingIsWrittenAndTheAnswerIsTrue) {
  for (const TextureSize size : {TextureSize{0, 0}, TextureSize{640, 0}, TextureSize{0, 480}}) {
    EXPECT_TRUE(still.saveImageFile(folder.path(), "a.jpg", 0, PixelBuffer(size), {}));
  }
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_EQ(log.lines().size(), 3U);
  EXPECT_EQ(log.lines()[0],
            "Nothing was saved to " + folder.file("a.jpg") + ": there is no picture");
  EXPECT_EQ(jpeg.calls, 0);
}

TEST_F(StillImageTest, WithoutAPictureAFolderThatIsGoneIsStillAnsweredFalse) {
  EXPECT_FALSE(
      still.saveImageFile(folder.file("gone"), "a.jpg", 0, PixelBuffer(TextureSize{}), {}));
}

TEST_F(StillImageTest, AFailingEncoderIsLoggedAndLeavesNothing) {
  png.fails = true;
  EXPECT_TRUE(save(folder.path(), "a.png", 1));
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("The picture for " + folder.file("a.png") +
                                       " is lost: it could not be encoded"));
  EXPECT_THAT(told(), StartsWith("The picture is lost: "));
}

TEST_F(StillImageTest, AFullDiskIsLoggedAndLeavesNothing) {
  const PixelBuffer large(TextureSize{100, 100});
  std::memset(const_cast<uint8_t*>(large.data()), 'p', large.byteCount());
  {
    const test::FileSizeLimit limit(4096);
    EXPECT_TRUE(still.saveImageFile(folder.path(), "a.jpg", 0, large, {}));
  }
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_THAT(log.lines(),
              ElementsAre(StartsWith("The picture for " + folder.file("a.jpg") + " is lost: ")));
  EXPECT_THAT(told(), StartsWith("The picture is lost: the file has become as large"));
}

TEST_F(StillImageTest, AFailureLeavesThePictureThatWasThere) {
  test::makeFile(folder.file("a.jpg"), "old");
  jpeg.fails = true;
  EXPECT_TRUE(save(folder.path(), "a.jpg", 0));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "old");
}

TEST_F(StillImageTest, WhatAKilledProgramLeftIsRemoved) {
  test::makeFile(folder.file(".a.jpg.999999999-0.part"), "half");
  EXPECT_TRUE(save(folder.path(), "b.jpg", 0));
  EXPECT_THAT(folder.names(), ElementsAre("b.jpg"));
}

// A disk that does not answer.

constexpr std::chrono::milliseconds kShort(50);

TEST_F(StillImageTest, ADiskThatDoesNotAnswerIsNotWaitedForTwice) {
  StuckDisk disk(true);
  const TemporaryFolder another;
  {
    StillImage stuck(jpeg, png, mainQueue, failures, disk, kShort);
    EXPECT_FALSE(stuck.saveImageFile(folder.path(), "a.jpg", 0, picture, {}));
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"Can NOT save file: " + folder.file("a.jpg"),
                                        "No file can be made in the folder " + folder.path() +
                                            ": the disk does not answer"}));
    EXPECT_EQ(told(),
              "The picture was not saved: the disk does not answer. Choose another folder in "
              "Options.");
    const auto before = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i)
      EXPECT_FALSE(stuck.saveImageFile(folder.path(), "b.jpg", 0, picture, {}));
    EXPECT_LT(std::chrono::steady_clock::now() - before, 100 * kShort);
    EXPECT_FALSE(stuck.saveImageFile(another.path(), "c.jpg", 0, picture, {})) << "stuck as well";
    EXPECT_EQ(SerialQueue::abandonedThreads(), 1);
  }
  EXPECT_EQ(SerialQueue::abandonedThreads(), 2);
  disk.letGo();
  while (SerialQueue::abandonedThreads() > 0) std::this_thread::yield();
  EXPECT_THAT(folder.names(), IsEmpty()) << "what was told to be not saved is not";
}

TEST_F(StillImageTest, ADiskThatIsSlowToWriteGetsItsPictureLater) {
  StuckDisk disk(false);
  StillImage slow(jpeg, png, mainQueue, failures, disk, kShort);
  EXPECT_TRUE(slow.saveImageFile(folder.path(), "a.jpg", 0, picture, {}));
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_FALSE(slow.saveImageFile(folder.path(), "b.jpg", 0, picture, {}));
  disk.letGo();
  while (folder.names().empty()) std::this_thread::yield();
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "jpeg:pppppppp");
  while (!slow.saveImageFile(folder.path(), "c.jpg", 0, picture, {})) std::this_thread::yield();
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg", "c.jpg"));
}

}  // namespace
}  // namespace tessary
