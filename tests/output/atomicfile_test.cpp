#include "output/AtomicFile.h"

#include <optional>
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
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

std::span<const uint8_t> bytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

TEST(AtomicFile, AppearsWholeUnderItsName) {
  const TemporaryFolder folder;
  FileSync sync;
  AtomicFile file(folder.file("a.jpg"));
  ASSERT_TRUE(file.isOpen());
  EXPECT_TRUE(file.write(bytes("one ")));
  EXPECT_TRUE(file.write(bytes("two")));
  EXPECT_TRUE(file.commit(sync));
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "one two");
  EXPECT_THAT(file.error(), IsEmpty());
}

TEST(AtomicFile, IsHiddenBesideItsNameUntilThen) {
  const TemporaryFolder folder;
  AtomicFile file(folder.file("a.jpg"));
  EXPECT_TRUE(file.write(bytes("one")));
  EXPECT_THAT(folder.names(), ElementsAre(StartsWith(".a.jpg.")));
}

TEST(AtomicFile, LeavesNothingWhenItIsNotCommitted) {
  const TemporaryFolder folder;
  {
    AtomicFile file(folder.file("a.jpg"));
    EXPECT_TRUE(file.write(bytes("one")));
  }
  EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(AtomicFile, ReplacesAFileOfThatNameInOneStep) {
  const TemporaryFolder folder;
  makeFile(folder.file("a.jpg"), "old, and longer than the new one");
  FileSync sync;
  {
    AtomicFile file(folder.file("a.jpg"));
    EXPECT_TRUE(file.write(bytes("new")));
    EXPECT_EQ(contentsOf(folder.file("a.jpg")), "old, and longer than the new one");
    EXPECT_TRUE(file.commit(sync));
  }
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "new");
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST(AtomicFile, TwoOfOneNameDoNotMeet) {
  const TemporaryFolder folder;
  FileSync sync;
  AtomicFile first(folder.file("a.jpg"));
  AtomicFile second(folder.file("a.jpg"));
  EXPECT_TRUE(first.write(bytes("first")));
  EXPECT_TRUE(second.write(bytes("second")));
  EXPECT_TRUE(second.commit(sync));
  EXPECT_TRUE(first.commit(sync));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "first");
}

TEST(AtomicFile, HasThePermissionsOfAnyOtherFile) {
  const TemporaryFolder folder;
  FileSync sync;
  const mode_t before = umask(027);
  AtomicFile file(folder.file("a.jpg"));
  umask(before);
  ASSERT_TRUE(file.commit(sync));
  struct stat status {};
  ASSERT_EQ(stat(folder.file("a.jpg").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST(AtomicFile, AFolderThatIsGoneIsToldInPlainWords) {
  const TemporaryFolder folder;
  FileSync sync;
  AtomicFile file(folder.file("none/a.jpg"));
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(file.error(), "No such file or directory");
  EXPECT_FALSE(file.write(bytes("one")));
  EXPECT_FALSE(file.commit(sync));
}

TEST(AtomicFile, AFolderThatTakesNoFilesIsToldInPlainWords) {
  const AtomicFile file("/proc/self/a.jpg");  // for the superuser too
  EXPECT_FALSE(file.isOpen());
  EXPECT_THAT(file.error(), Not(IsEmpty()));
}

TEST(AtomicFile, AFullDiskLeavesNothingAndKeepsTheOldFile) {
  const TemporaryFolder folder;
  makeFile(folder.file("a.jpg"), "old");
  FileSync sync;
  {
    AtomicFile file(folder.file("a.jpg"));
    const std::string large(10000, 'x');
    {
      const test::FileSizeLimit limit(4096);
      EXPECT_FALSE(file.write(bytes(large)));
    }
    EXPECT_THAT(file.error(), Not(IsEmpty()));
    EXPECT_FALSE(file.write(bytes("more")));
    EXPECT_FALSE(file.commit(sync));
  }
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
  EXPECT_EQ(contentsOf(folder.file("a.jpg")), "old");
}

TEST(AtomicFile, ANameThatIsTakenByAFolderLeavesNothing) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.file("a.jpg"));
  FileSync sync;
  {
    AtomicFile file(folder.file("a.jpg"));
    EXPECT_TRUE(file.write(bytes("one")));
    EXPECT_FALSE(file.commit(sync));
    EXPECT_EQ(file.error(), "Is a directory");
  }
  EXPECT_THAT(folder.names(), ElementsAre("a.jpg"));
}

TEST(AtomicFile, AFolderThatVanishesMeanwhileIsAFailure) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.file("stick"));
  FileSync sync;
  AtomicFile file(folder.file("stick/a.jpg"));
  EXPECT_TRUE(file.write(bytes("one")));
  std::filesystem::remove_all(folder.file("stick"));
  EXPECT_FALSE(file.commit(sync));
  EXPECT_EQ(file.error(), "No such file or directory");
}

}  // namespace
}  // namespace tessary
