#include "qt/QtKeyValueStore.h"

#include <QElapsedTimer>
#include <QLockFile>
#include <QTemporaryDir>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <future>
#include <limits>
#include <random>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "LogCapture.h"
#include "QtTest.h"
#include "WaitLimit.h"
#include "settings/PathGrants.h"
#include "settings/Preferences.h"

namespace tessary {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Bytes = KeyValueStore::Bytes;
using Value = KeyValueStore::Value;

Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

class QtKeyValueStoreTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(folder_.isValid()); }

  std::string path(const char* name = "settings.ini") const {
    return folder_.filePath(name).toStdString();
  }
  void write(const std::string& text, const char* name = "settings.ini") const {
    std::ofstream(path(name), std::ios::binary) << text;
  }
  std::string read() const {
    std::ostringstream text;
    text << std::ifstream(path(), std::ios::binary).rdbuf();
    return text.str();
  }
  size_t filesInFolder() const {
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator(folder_.path().toStdString()))
      count += entry.exists();
    return count;
  }
  static void store(KeyValueStore& store, const std::string& key, const Value& value) {
    const KeyValueStore::Entry entry(key, value);
    store.store({&entry, 1});
  }

  QTemporaryDir folder_;
  test::LogCapture log_;
};

TEST_F(QtKeyValueStoreTest, AKeyThatWasNeverStoredHasNoValueAndReadingMakesNoFile) {
  QtKeyValueStore store(path());
  EXPECT_EQ(store.value("none"), std::nullopt);
  EXPECT_EQ(filesInFolder(), 0U);
}

TEST_F(QtKeyValueStoreTest, WhatAKilledRunLeftBehindGoesWithTheNextSave) {
  write("half", ".settings.ini.999999999-0.part");
  write("", "settings.ini.part");  // another program's
  QtKeyValueStore store(path());
  this->store(store, "a", "1");
  EXPECT_FALSE(fs::exists(path(".settings.ini.999999999-0.part")));
  EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(QtKeyValueStoreTest, ValuesComeBackAsTextInTheSameRunAndInTheNext) {
  std::string everyByte;
  for (int i = 0; i < 256; ++i) everyByte += char(i);
  struct Row {
    KeyValueStore::Entry entry;
    std::string text;
  };
  const Row rows[] = {
      {{"zero", 0}, "0"},
      {{"low", std::numeric_limits<int64_t>::min()}, "-9223372036854775808"},
      {{"high", std::numeric_limits<int64_t>::max()}, "9223372036854775807"},
      {{"empty", ""}, ""},
      {{"color", "0.000000,0.900000,0.900000"}, "0.000000,0.900000,0.900000"},
      {{"calibrations", "lens,0,853,0.5,1,2;,0,0,0.0,0,0;"}, "lens,0,853,0.5,1,2;,0,0,0.0,0,0;"},
      {{"bytes", bytes(everyByte)}, everyByte},
      {{"string", everyByte}, everyByte},
      {{"noBytes", Bytes{}}, ""},
      {{"path", bytes("/home/a b, c;d/μm")}, "/home/a b, c;d/μm"},
  };
  std::vector<KeyValueStore::Entry> entries;
  for (const Row& row : rows) entries.push_back(row.entry);
  QtKeyValueStore now(path());
  now.store(entries);
  QtKeyValueStore next(path());
  for (const Row& row : rows) {
    EXPECT_EQ(now.value(row.entry.first), Value(row.text)) << row.entry.first;
    EXPECT_EQ(next.value(row.entry.first), Value(row.text)) << row.entry.first;
  }
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(QtKeyValueStoreTest, TheFileIsPlainToRead) {
  QtKeyValueStore store(path());
  const KeyValueStore::Entry entries[] = {
      {"gridColor", "0.0,0.9,0.9"}, {"textSize", 26}, {"imagePath", bytes("/home/me/Pictures")}};
  store.store(entries);
  EXPECT_EQ(read(), "[General]\ngridColor=0.0,0.9,0.9\nimagePath=/home/me/Pictures\ntextSize=26\n");
}

TEST_F(QtKeyValueStoreTest, WhatElseStandsInTheFileStays) {
  write("; mine\n[General]\nother=5\nk=1\n\n[Window]\nk=800\n");
  QtKeyValueStore store(path());
  this->store(store, "k", 2);
  this->store(store, "l", 3);
  EXPECT_EQ(read(), "; mine\n[General]\nother=5\nk=2\nl=3\n\n[Window]\nk=800\n");
}

TEST_F(QtKeyValueStoreTest, TwoRunsAtOnceKeepEachOthersKeys) {
  QtKeyValueStore one(path());
  QtKeyValueStore two(path());
  store(one, "a", "1");
  store(two, "b", "2");
  store(one, "c", "3");
  EXPECT_EQ(read(), "[General]\na=1\nb=2\nc=3\n");
}

TEST_F(QtKeyValueStoreTest, SettingsAreTheSameAfterJunkInTheFileIsSavedOver) {
  std::mt19937 random(3);
  const char* pieces[] = {"[General]\n",
                          "[Other]\n",
                          "\n",
                          "=",
                          ",",
                          ";",
                          "\"",
                          "\\",
                          "\\x",
                          "\\xF",
                          "@ByteArray(",
                          "@Variant(",
                          ")",
                          "gridColor=",
                          "textSize=",
                          "imagePath=",
                          "uniqueID=",
                          "0.0,0.9",
                          "-1",
                          "99999999999",
                          "calibrations=",
                          "width=",
                          "\r\n",
                          "\t ",
                          "lens,0,853,0.5,1,2;"};
  for (int round = 0; round < 100; ++round) {
    std::string text;
    for (auto i = random() % 40; i > 0; --i) {
      if (random() % 6)
        text += pieces[random() % std::size(pieces)];
      else
        text += char(random() % 256);
    }
    write(text);
    const test::LogCapture quiet;
    const PathGrants grants;
    QtKeyValueStore store(path());
    UserDefaults defaults(store);
    Preferences::registerDefaults(defaults);
    Preferences preferences(defaults, grants);
    ASSERT_GE(preferences.textSize, 12) << text;
    ASSERT_LE(preferences.textSize, 48) << text;
    preferences.maxRecord = round;
    preferences.save();

    QtKeyValueStore nextStore(path());
    UserDefaults nextDefaults(nextStore);
    Preferences::registerDefaults(nextDefaults);
    const Preferences next(nextDefaults, grants);
    ASSERT_EQ(next.maxRecord, round) << text;
    ASSERT_EQ(next.uniqueID, preferences.uniqueID) << text;
    ASSERT_EQ(next.calibrations[0].name, preferences.calibrations[0].name) << text;
    ASSERT_EQ(*next.resolution, *preferences.resolution) << text;
  }
}

TEST_F(QtKeyValueStoreTest, MissingFoldersAreMade) {
  const std::string file = path("a/b/settings.ini");
  QtKeyValueStore store(file);
  this->store(store, "k", 1);
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_EQ(QtKeyValueStore(file).value("k"), Value("1"));
}

TEST_F(QtKeyValueStoreTest, WhatCannotBeWrittenHoldsForThisRunAndIsTriedAgain) {
  write("in the way", "blocked");
  const std::string file = path("blocked/settings.ini");
  QtKeyValueStore store(file);
  this->store(store, "a", "1");
  EXPECT_THAT(log_.lines(), ElementsAre("Settings could not be written to " + file +
                                        "; they hold until the program ends."));
  EXPECT_EQ(store.value("a"), Value("1"));

  ASSERT_EQ(unlink(path("blocked").c_str()), 0);
  this->store(store, "b", "2");
  EXPECT_EQ(log_.lines().size(), 1U);
  QtKeyValueStore after(file);
  EXPECT_EQ(after.value("a"), Value("1"));
  EXPECT_EQ(after.value("b"), Value("2"));
}

TEST_F(QtKeyValueStoreTest, WhatIsNoSettingsFileIsPutAsideAndTheDefaultsHold) {
  struct Row {
    const char* what;
    std::function<void(const std::string& path)> make;
    std::function<bool(const std::string& path)> isIt;
  };
  const auto isLineEnds = [](const std::string& path) {
    return fs::file_size(path) == 100'000'000;
  };
  const Row rows[] = {
      {"a pipe", [](const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0666), 0); },
       [](const std::string& path) { return fs::is_fifo(path); }},
      {"a link to a device without end",
       [](const std::string& path) { fs::create_symlink("/dev/zero", path); },
       [](const std::string& path) { return fs::read_symlink(path) == "/dev/zero"; }},
      {"a folder", [](const std::string& path) { fs::create_directory(path); },
       [](const std::string& path) { return fs::is_directory(path); }},
      {"100 MB of line ends",
       [](const std::string& path) {
         std::ofstream(path, std::ios::binary) << std::string(100'000'000, '\n');
       },
       isLineEnds},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    fs::remove_all(path());
    fs::remove_all(path("settings.ini.aside"));
    const test::LogCapture log;
    row.make(path());
    QtKeyValueStore store(path());
    EXPECT_EQ(store.value("k"), std::nullopt);
    EXPECT_TRUE(row.isIt(path("settings.ini.aside")));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_THAT(log.lines()[0], EndsWith("settings.ini.aside, and the defaults hold."));
    this->store(store, "k", "1");
    EXPECT_EQ(read(), "[General]\nk=1\n");
    EXPECT_EQ(filesInFolder(), 2U);
  }
}

TEST_F(QtKeyValueStoreTest, WhatWasPutAsideBeforeStays) {
  write("mine", "settings.ini.aside");
  fs::create_directory(path());
  const QtKeyValueStore store(path());
  EXPECT_TRUE(fs::is_regular_file(path("settings.ini.aside")));
  EXPECT_TRUE(fs::is_directory(path("settings.ini.aside-2")));
}

TEST_F(QtKeyValueStoreTest, SettingsOfAMegabyteAreReadAndOneByteMoreIsNot) {
  const std::string settings = "k=1\n";
  const std::string filler(SettingsFile::kMostBytes - settings.size(), '\n');
  write(settings + filler);
  EXPECT_EQ(QtKeyValueStore(path()).value("k"), Value("1"));
  write(settings + filler + "\n");
  EXPECT_EQ(QtKeyValueStore(path()).value("k"), std::nullopt);
  EXPECT_TRUE(fs::exists(path("settings.ini.aside")));
}

TEST_F(QtKeyValueStoreTest, ALinkLeadsToTheFileAndStaysALink) {
  write("k=1\n", "elsewhere.ini");
  fs::permissions(path("elsewhere.ini"), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("elsewhere.ini", path());
  QtKeyValueStore store(path());
  EXPECT_EQ(store.value("k"), Value("1"));
  this->store(store, "k", "2");
  EXPECT_TRUE(fs::is_symlink(path()));
  EXPECT_EQ(QtKeyValueStore(path("elsewhere.ini")).value("k"), Value("2"));
  EXPECT_EQ(fs::status(path("elsewhere.ini")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(QtKeyValueStoreTest, LinksToLinksAreFollowedAlsoWhereTheyLeadNowhere) {
  fs::create_directory(path("deep"));
  fs::create_symlink("deep/second.ini", path());
  fs::create_symlink("../third.ini", path("deep/second.ini"));
  fs::create_symlink("last.ini", path("third.ini"));
  QtKeyValueStore store(path());
  EXPECT_EQ(store.value("k"), std::nullopt);
  this->store(store, "k", "1");
  EXPECT_THAT(log_.lines(), IsEmpty());
  for (const char* link : {"settings.ini", "deep/second.ini", "third.ini"})
    EXPECT_TRUE(fs::is_symlink(path(link))) << link;
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path("last.ini"))));
  EXPECT_EQ(read(), "[General]\nk=1\n");
}

TEST_F(QtKeyValueStoreTest, WhatIsNoFileIsNotReplaced) {
  SettingsFile file(path());
  ASSERT_EQ(mkfifo(path().c_str(), 0666), 0);
  EXPECT_EQ(file.replace("k=1\n").error(), "it is no ordinary file");
  EXPECT_TRUE(fs::is_fifo(path()));
}

TEST_F(QtKeyValueStoreTest, NobodyWaitsForTheDiskToHaveWhatIsStored) {
  std::promise<void> goOn;
  std::atomic<int> flushed = 0;
  SettingsFile::Disk disk;
  disk.flush = [wait = goOn.get_future().share(), &flushed](int) {
    wait.wait();
    ++flushed;
    return 0;
  };
  auto file = std::make_unique<SettingsFile>(path(), disk);
  SettingsFile& sameFile = *file;
  QtKeyValueStore store(std::move(file));
  this->store(store, "k", "1");
  this->store(store, "l", "2");  // also while the first is not down
  EXPECT_EQ(read(), "[General]\nk=1\nl=2\n");
  EXPECT_EQ(flushed, 0);
  goOn.set_value();
  sameFile.drain();
  EXPECT_EQ(flushed, 4);  // each time the file and its folder
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(QtKeyValueStoreTest, WhatDoesNotReachTheDiskIsLoggedUnlessItsFileSystemCannot) {
  struct Row {
    int error;
    std::vector<std::string> lines;
  };
  const std::string line = "The settings in " + path() + " may be gone after a power failure: ";
  const Row rows[] = {
      {EIO, {line + "Input/output error", line + "Input/output error"}},  // the file, its folder
      {EINVAL, {}},
      {ENOSYS, {}},
      {EOPNOTSUPP, {}},
  };
  for (const Row& row : rows) {
    const test::LogCapture log;
    SettingsFile::Disk disk;
    disk.flush = [error = row.error](int) {
      errno = error;
      return -1;
    };
    SettingsFile file(path(), disk);
    EXPECT_TRUE(file.replace("k=1\n"));
    file.drain();
    EXPECT_EQ(log.lines(), row.lines) << row.error;
  }
}

TEST_F(QtKeyValueStoreTest, ADiskThatWasSilentIsGivenTheTimeForSilentOnesUntilItAnswers) {
  write("k=1\n");
  std::promise<void> answer;
  SettingsFile::Disk disk;
  disk.answerLimit = std::chrono::milliseconds(20);
  disk.answerLimitAfterSilence =
      std::chrono::duration_cast<std::chrono::milliseconds>(test::kWaitLimit);
  disk.touch = [wait = answer.get_future().share()] { wait.wait(); };
  SettingsFile file(path(), disk);
  EXPECT_EQ(file.read().error(), "the disk does not answer");
  const std::jthread later([&] {
    std::this_thread::sleep_for(10 * disk.answerLimit);
    answer.set_value();
  });
  Result<std::string> text = file.read();
  ASSERT_TRUE(text) << text.error();
  EXPECT_EQ(*text, "k=1\n");
}

TEST_F(QtKeyValueStoreTest, ADiskThatDoesNotAnswerIsToldAndForgivenWhenItDoes) {
  write("[General]\nk=1\nother=5\n");
  std::promise<void> answer;
  SettingsFile::Disk disk;
  disk.answerLimit = disk.answerLimitAfterSilence = std::chrono::milliseconds(20);
  disk.touch = [wait = answer.get_future().share()] { wait.wait(); };
  QtKeyValueStore store(std::make_unique<SettingsFile>(path(), disk));
  EXPECT_EQ(store.value("k"), std::nullopt);

  std::vector<std::string> problems;
  store.setProblemHandler([&](const std::string& problem) { problems.push_back(problem); });
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_THAT(problems[0], StartsWith("The settings can't be read: the disk does not answer."));
  this->store(store, "l", "2");
  EXPECT_EQ(store.value("l"), Value("2"));
  ASSERT_EQ(problems.size(), 2U);
  EXPECT_THAT(problems[1], StartsWith("The settings can't be kept: the disk does not answer."));
  EXPECT_THAT(log_.lines(), ElementsAre(StartsWith("Settings could not be read from " + path()),
                                        "Settings could not be written to " + path() +
                                            "; they hold until the program ends."));
  EXPECT_EQ(read(), "[General]\nk=1\nother=5\n");

  answer.set_value();
  // The disk may take a while to come back; each call asks it anew.
  for (int round = 0; round < 1000 && !problems.back().empty(); ++round)
    this->store(store, "l", "3");
  EXPECT_EQ(problems.back(), "");
  EXPECT_EQ(read(), "[General]\nk=1\nother=5\nl=3\n");
}

TEST_F(QtKeyValueStoreTest, ADiskThatNeverAnswersHoldsUpNoEnd) {
  const int before = SerialQueue::abandonedThreads();
  const auto answer = std::make_shared<std::promise<void>>();
  {
    SettingsFile::Disk disk;
    disk.answerLimit = std::chrono::milliseconds(20);
    disk.touch = [answer, wait = answer->get_future().share()] { wait.wait(); };
    const QtKeyValueStore store(std::make_unique<SettingsFile>(path(), disk));
  }
  EXPECT_EQ(SerialQueue::abandonedThreads(), before + 1);
  answer->set_value();
  while (SerialQueue::abandonedThreads() != before) std::this_thread::yield();
}

TEST_F(QtKeyValueStoreTest, AFullDiskLeavesTheFileAsItWas) {
  const std::string large(20000, 'x');
  QtKeyValueStore store(path());
  this->store(store, "k", "1");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto oldHandler = signal(SIGXFSZ, SIG_IGN);  // writing is to fail, not to kill
  for (const rlim_t room : {0U, 100U, 8192U, 20000U}) {
    const test::LogCapture log;
    rlimit limit = before;
    limit.rlim_cur = room;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    this->store(store, "k", large);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(log.lines().size(), 1U) << room;
    EXPECT_EQ(store.value("k"), Value(large)) << room;
    EXPECT_EQ(read(), "[General]\nk=1\n") << room;
    EXPECT_EQ(filesInFolder(), 1U) << room;
  }
  signal(SIGXFSZ, oldHandler);
  this->store(store, "l", "2");
  EXPECT_EQ(QtKeyValueStore(path()).value("k"), Value(large));
}

TEST_F(QtKeyValueStoreTest, ALockThatSomeoneHoldsStallsNothing) {
  write("[General]\nk=1\n");
  QLockFile lock(QString::fromStdString(path("settings.ini.lock")));
  ASSERT_TRUE(lock.lock());
  QElapsedTimer timer;
  timer.start();
  QtKeyValueStore store(path());
  EXPECT_EQ(store.value("k"), Value("1"));
  this->store(store, "k", "2");
  EXPECT_LT(timer.elapsed(), 2000);  // it would be half a minute
  EXPECT_EQ(read(), "[General]\nk=2\n");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(QtKeyValueStoreTest, OrganisationAndApplicationNameAFileOfTheUsers) {
  EXPECT_THAT(QtKeyValueStore("Tessary", "tessary-test").path(),
              AllOf(StartsWith("/"), EndsWith("/Tessary/tessary-test.ini")));
}

// Run by the test below, in a process of its own.
TEST(QtKeyValueStoreChild, DISABLED_SavesAndIsKilled) {
  const char* file = std::getenv("SETTINGS_FILE");
  ASSERT_NE(file, nullptr);
  QtKeyValueStore store(file);
  UserDefaults defaults(store);
  Preferences::registerDefaults(defaults);
  const PathGrants grants;
  Preferences preferences(defaults, grants);
  preferences.maxRecord = 1234;
  preferences.calibrations[3].name = "lens";
  preferences.save();
  preferences.url = "/tmp";
  preferences.saveURL();
  kill(getpid(), SIGKILL);
}

TEST_F(QtKeyValueStoreTest, WhatWasSavedSurvivesBeingKilledRightAfter) {
  ASSERT_EQ(test::runDisabledTest("QtKeyValueStoreChild.DISABLED_SavesAndIsKilled",
                                  {"SETTINGS_FILE=" + path()}),
            -SIGKILL);
  QtKeyValueStore store(path());
  UserDefaults defaults(store);
  Preferences::registerDefaults(defaults);
  const PathGrants grants;
  const Preferences preferences(defaults, grants);
  EXPECT_EQ(preferences.maxRecord, 1234);
  EXPECT_EQ(preferences.calibrations[3].name, "lens");
  EXPECT_EQ(preferences.url, "/tmp");
}

}  // namespace
}  // namespace tessary
