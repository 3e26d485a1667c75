#include "output/StillImage.h"

#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FileSizeLimit.h"
#include "LogCapture.h"
#include "TemporaryFolder.h"

namespace tessary {
namespace {

using test::contentsOf;
using test::LogCapture;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// "Encodes" to its own name and the bytes of the picture.
class FakeEncoder final : public ImageEncoder {
 public:
  explicit FakeEncoder(std::string name) : name_(std::move(name)) {}
  std::vector<uint8_t> encode(const PixelBuffer& picture) override {
    ++calls;
    if (fails) return {};
    std::vector<uint8_t> bytes(name_.begin(), name_.end());
    bytes.insert(bytes.end(), picture.data(), picture.data() + picture.byteCount());
    return bytes;
  }
  bool fails = false;
  int calls = 0;

 private:
  std::string name_;
};

class StillImageTest : public ::testing::Test {
 protected:
  StillImageTest() { std::memset(picture.data(), 'p', picture.byteCount()); }

  bool save(const std::string& in, const std::string& name, int32_t imagePNG) {
    return still.saveImageFile(in, name, imagePNG, picture);
  }

  TemporaryFolder folder;
  LogCapture log;
  FakeEncoder jpeg{"jpeg:"};
  FakeEncoder png{"png:"};
  PixelBuffer picture{TextureSize{2, 1}};
  StillImage still{jpeg, png};
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
  EXPECT_EQ(jpeg.calls, 0);
}

TEST_F(StillImageTest, WithoutAPictureNothingIsWrittenAndTheAnswerIsTrue) {
  for (const TextureSize size : {TextureSize{0, 0}, TextureSize{640, 0}, TextureSize{0, 480}}) {
    EXPECT_TRUE(still.saveImageFile(folder.path(), "a.jpg", 0, PixelBuffer(size)));
  }
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_EQ(log.lines().size(), 3U);
  EXPECT_EQ(log.lines()[0],
            "Nothing was saved to " + folder.file("a.jpg") + ": there is no picture");
  EXPECT_EQ(jpeg.calls, 0);
}

TEST_F(StillImageTest, WithoutAPictureAFolderThatIsGoneIsStillAnsweredFalse) {
  EXPECT_FALSE(still.saveImageFile(folder.file("gone"), "a.jpg", 0, PixelBuffer(TextureSize{})));
}

TEST_F(StillImageTest, AFailingEncoderIsLoggedAndLeavesNothing) {
  png.fails = true;
  EXPECT_TRUE(save(folder.path(), "a.png", 1));
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_THAT(log.lines(), ElementsAre("The picture for " + folder.file("a.png") +
                                       " is lost: it could not be encoded"));
}

TEST_F(StillImageTest, AFullDiskIsLoggedAndLeavesNothing) {
  const PixelBuffer large(TextureSize{100, 100});
  std::memset(const_cast<uint8_t*>(large.data()), 'p', large.byteCount());
  {
    const test::FileSizeLimit limit(4096);
    EXPECT_TRUE(still.saveImageFile(folder.path(), "a.jpg", 0, large));
  }
  EXPECT_THAT(folder.names(), IsEmpty());
  EXPECT_THAT(log.lines(),
              ElementsAre(StartsWith("The picture for " + folder.file("a.jpg") + " is lost: ")));
}

TEST_F(StillImageTest, AFailureLeavesThePictureThatWasThere) {
  test::makeFile(folder.file("a.jpg"), "old");
  jpeg.fails = true;
  EXPECT_TRUE(save(folder.path(), "a.jpg", 0));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "old");
}

}  // namespace
}  // namespace tessary
