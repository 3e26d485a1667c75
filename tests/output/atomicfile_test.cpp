#include "output/AtomicFile.h"

#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "FileSizeLimit.h"
#include "TemporaryFolder.h"

namespace tessary {
namespace {

using test::contentsOf;
using test::makeFile;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::span<const uint8_t> bytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

/// A file system without nameless files, or without the means to name them.
class PlainFileSystem final : public FileCalls {
 public:
  explicit PlainFileSystem(bool hasNameless) : hasNameless_(hasNameless) {}
  int openNameless(const std::string& folder) override {
    if (hasNameless_) return FileCalls::openNameless(folder);
    errno = EOPNOTSUPP;
    return -1;
  }
  int link(int, const std::string&) override {
    errno = ENOENT;
    return -1;
  }

 private:
  const bool hasNameless_;
};

/// Which kind of file system a picture is saved to.
enum class Files { Nameless, NoNameless, NoLinks };

class AtomicFileTest : public ::testing::TestWithParam<Files> {
 protected:
  FileCalls& calls() {
    return GetParam() == Files::Nameless ? FileCalls::system() : static_cast<FileCalls&>(plain);
  }
  const TemporaryFolder folder;
  PlainFileSystem plain{GetParam() == Files::NoLinks};
};
INSTANTIATE_TEST_SUITE_P(, AtomicFileTest,
                         ::testing::Values(Files::Nameless, Files::NoNameless, Files::NoLinks));

TEST_P(AtomicFileTest, AppearsWholeUnderItsName) {
  AtomicFile file(folder.file("a.jpg"), calls());
  ASSERT_TRUE(file.isOpen());
  EXPECT_TRUE(file.save(bytes("one two")));
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "one two");
  EXPECT_EQ(file.error(), 0);
  struct stat status {};
  ASSERT_EQ(stat(folder.file("a.jpg").c_str(), &status), 0);
  EXPECT_EQ(file.identity(), (FileIdentity{status.st_dev, status.st_ino}));
}

TEST_P(AtomicFileTest, LeavesNothingWhenItIsNotSaved) {
  { AtomicFile file(folder.file("a.jpg"), calls()); }
  EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_P(AtomicFileTest, ReplacesAFileOfThatName) {
  makeFile(folder.file("a.jpg"), "old, and longer than the new one");
  AtomicFile file(folder.file("a.jpg"), calls());
  EXPECT_TRUE(file.save(bytes("new")));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "new");
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST_P(AtomicFileTest, TwoOfOneNameDoNotMeet) {
  AtomicFile first(folder.file("a.jpg"), calls());
  AtomicFile second(folder.file("a.jpg"), calls());
  EXPECT_TRUE(second.save(bytes("second")));
  EXPECT_TRUE(first.save(bytes("first")));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "first");
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST_P(AtomicFileTest, HasThePermissionsOfAnyOtherFile) {
  const mode_t before = umask(027);
  AtomicFile file(folder.file("a.jpg"), calls());
  const bool saved = file.save(bytes("one"));
  umask(before);
  ASSERT_TRUE(saved);
  struct stat status {};
  ASSERT_EQ(stat(folder.file("a.jpg").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_P(AtomicFileTest, AFolderThatIsGoneIsAnError) {
  AtomicFile file(folder.file("none/a.jpg"), calls());
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(file.error(), ENOENT);
  EXPECT_FALSE(file.save(bytes("one")));
}

TEST_P(AtomicFileTest, AFolderThatTakesNoFilesIsAnError) {
  const AtomicFile file("/proc/self/a.jpg", calls());  // for the superuser too
  EXPECT_FALSE(file.isOpen());
  EXPECT_NE(file.error(), 0);
}

TEST_P(AtomicFileTest, AFullDiskLeavesNothingAndKeepsTheOldFile) {
  makeFile(folder.file("a.jpg"), "old");
  {
    AtomicFile file(folder.file("a.jpg"), calls());
    const std::string large(10000, 'x');
    const test::FileSizeLimit limit(4096);
    EXPECT_FALSE(file.save(bytes(large)));
    EXPECT_EQ(file.error(), EFBIG);
  }
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "old");
}

TEST_P(AtomicFileTest, ANameThatIsTakenByAFolderLeavesNothing) {
  std::filesystem::create_directory(folder.file("a.jpg"));
  {
    AtomicFile file(folder.file("a.jpg"), calls());
    EXPECT_FALSE(file.save(bytes("one")));
    EXPECT_EQ(file.error(), EISDIR);
  }
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST_P(AtomicFileTest, AFolderThatVanishesMeanwhileIsAnError) {
  std::filesystem::create_directory(folder.file("stick"));
  AtomicFile file(folder.file("stick/a.jpg"), calls());
  std::filesystem::remove_all(folder.file("stick"));
  EXPECT_FALSE(file.save(bytes("one")));
  EXPECT_EQ(file.error(), ENOENT);
}

TEST(AtomicFile, HasNoNameUntilItIsSaved) {
  const TemporaryFolder folder;
  const AtomicFile file(folder.file("a.jpg"));
  EXPECT_TRUE(file.isOpen());
  EXPECT_THAT(folder.names(), IsEmpty()) << "a process that is killed here leaves nothing";
}

TEST(AtomicFile, IsHiddenBesideItsNameWhereNamelessFilesAreNotToBeHad) {
  const TemporaryFolder folder;
  PlainFileSystem calls(false);
  const AtomicFile file(folder.file("a.jpg"), calls);
  EXPECT_THAT(folder.names(), ElementsAre(StartsWith(".a.jpg.")));
}

}  // namespace
}  // namespace tessary
