#include "base/PartFiles.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "TemporaryFolder.h"
#include "base/FileDescriptor.h"

namespace tessary {
namespace {

using ::testing::MatchesRegex;

class PartFiles : public ::testing::Test {
 protected:
  std::string make(const std::string& name) const {
    std::ofstream(folder / name) << "part";
    return (folder / name).string();
  }
  bool exists(const std::string& name) const { return std::filesystem::exists(folder / name); }

  test::TemporaryFolder own_;
  const std::filesystem::path folder = own_.path();
};

TEST_F(PartFiles, AreHiddenBesideTheirNameAndNoTwoAreAlike) {
  const std::string first = hiddenPartPath("/pictures/a.jpg");
  EXPECT_THAT(first, MatchesRegex("/pictures/\\.a\\.jpg\\.[0-9]+-[0-9]+\\.part"));
  EXPECT_NE(first, hiddenPartPath("/pictures/a.jpg"));
}

TEST_F(PartFiles, OfProcessesThatAreGoneAreRemoved) {
  constexpr const char* kGone = ".a.jpg.999999999-0.part";
  make(kGone);
  removeAbandonedParts(folder.string());
  EXPECT_FALSE(exists(kGone));
}

TEST_F(PartFiles, OfProcessesThatAreThereAndAllOtherFilesStay) {
  const std::string own = hiddenPartPath((folder / "a.jpg").string());
  std::ofstream(own) << "part";
  const std::string names[] = {"a.jpg",
                               ".a.jpg.999999999.part",
                               ".a.jpg.999999999-x.part",
                               ".a.jpg.999999999-0",
                               "a.jpg.999999999-0.part",
                               ".999999999-0.part",
                               ".a.jpg.-5-0.part",
                               ".a.jpg.0-0.part",
                               ".a.jpg.99999999999999999999-0.part"};
  for (const std::string& name : names) make(name);
  removeAbandonedParts(folder.string());
  EXPECT_TRUE(std::filesystem::exists(own));
  for (const std::string& name : names) EXPECT_TRUE(exists(name)) << name;
}

TEST_F(PartFiles, ThatAnotherMachineWritesStay) {
  constexpr const char* kName = ".a.jpg.999999999-0.part";
  const FileDescriptor file(::open(make(kName).c_str(), O_WRONLY | O_CLOEXEC));
  markInUse(file.get());
  removeAbandonedParts(folder.string());
  EXPECT_TRUE(exists(kName));
}

TEST_F(PartFiles, AFolderThatIsGoneHoldsNone) {
  removeAbandonedParts((folder / "none").string());  // and that is all
}

TEST_F(PartFiles, AFileIsInUseWhileTheMarkedOneIsOpen) {
  const std::string path = make("a.mp4");
  EXPECT_FALSE(isInUse(path));
  {
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_FALSE(isInUse(path));
    markInUse(file.get());
    EXPECT_TRUE(isInUse(path));
  }
  EXPECT_FALSE(isInUse(path));
  EXPECT_FALSE(isInUse(path + "none"));
}

}  // namespace
}  // namespace tessary
