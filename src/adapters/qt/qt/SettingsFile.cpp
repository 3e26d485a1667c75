#include "qt/SettingsFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Log.h"
#include "base/PartFiles.h"

namespace tessary {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSilent = "the disk does not answer";
constexpr std::chrono::seconds kReadEndLimit{1};
constexpr std::chrono::seconds kSyncEndLimit{5};
constexpr int kNameAttempts = 100;
constexpr int kMostLinks = 8;

std::string textOf(int error) { return std::generic_category().message(error); }

/// Gives what is in the file's place another name.
void putAside(const std::string& path, std::string_view reason) {
  for (int number = 1; number <= kNameAttempts; ++number) {
    const std::string other =
        number == 1 ? path + ".aside" : fmt::format("{}.aside-{}", path, number);
    if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, other.c_str(), RENAME_NOREPLACE) == 0) {
      log("{} {}: it is now {}, and the defaults hold.", path, reason, other);
      return;
    }
    if (errno != EEXIST) break;
  }
  log("{} {}: the defaults hold.", path, reason);
}

/// The file that a link leads to, also where there is none yet.
std::string behindLinks(const std::string& path) {
  fs::path file = path;
  std::error_code error;
  for (int links = 0; links < kMostLinks && fs::is_symlink(file, error); ++links)
    file = file.parent_path() / fs::read_symlink(file, error);
  return file;
}

void sync(const std::string& path, const FileDescriptor& file,
          const std::function<int(int)>& flushNow) {
  const auto flush = [&](int fd) {
    // Not every file system can; then there is nothing to wait for either.
    if (flushNow(fd) == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP) return;
    log("The settings in {} may be gone after a power failure: {}", path, textOf(errno));
  };
  flush(file.get());
  const std::string folder = fs::path(path).parent_path();
  const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen()) flush(directory.get());
}

}  // namespace

SettingsFile::SettingsFile(std::string path) : SettingsFile(std::move(path), Disk()) {}

SettingsFile::SettingsFile(std::string path, Disk disk)
    : path_(std::move(path)),
      disk_(std::move(disk)),
      look_("com.tessary.settings.file", kReadEndLimit),
      sync_("com.tessary.settings.sync", kSyncEndLimit) {}

template <typename Look>
auto SettingsFile::ask(Look look) -> decltype(look()) {
  auto answer = look_.call(silent_ ? disk_.answerLimitAfterSilence : disk_.answerLimit,
                           [touch = disk_.touch, look = std::move(look)] {
                             touch();
                             return look();
                           });
  silent_ = !answer;
  if (!answer) return Error{kSilent};
  return *std::move(answer);
}

Result<std::string> SettingsFile::read() {
  return ask([path = path_] { return readNow(path); });
}

Result<void> SettingsFile::replace(std::string text) {
  auto written = ask([path = path_, text = std::move(text)] { return replaceNow(path, text); });
  if (!written) return Error{written.error()};
  sync_.post([path = path_, file = *written, flush = disk_.flush] { sync(path, *file, flush); });
  return {};
}

Result<std::string> SettingsFile::readNow(const std::string& path) {
  std::string none;
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return none;
    return Error{textOf(errno)};
  }
  // Asked before it is opened, because to open a device may do something. A link may lead nowhere.
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return none;
    return Error{textOf(errno)};
  }
  if (!S_ISREG(status.st_mode)) {
    putAside(path, "is no ordinary file");
    return none;
  }
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.isOpen()) return Error{textOf(errno)};
  std::string text(kMostBytes + 1, '\0');
  size_t size = 0;
  while (size < text.size()) {
    const ssize_t count = ::read(file.get(), text.data() + size, text.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Error{textOf(errno)};
    if (count == 0) break;
    size += size_t(count);
  }
  if (size > kMostBytes) {
    putAside(path, "is too large for settings");
    return none;
  }
  return text.substr(0, size);
}

Result<std::shared_ptr<FileDescriptor>> SettingsFile::replaceNow(const std::string& path,
                                                                 const std::string& text) {
  const std::string place = behindLinks(path);
  std::error_code ignored;
  fs::create_directories(fs::path(place).parent_path(), ignored);
  struct stat status {};
  const bool isThere = ::stat(place.c_str(), &status) == 0;
  if (isThere && !S_ISREG(status.st_mode)) return Error{"it is no ordinary file"};

  removeAbandonedParts(fs::path(place).parent_path());
  FileCalls& calls = FileCalls::system();
  const std::string part = hiddenPartPath(place);
  auto file = std::make_shared<FileDescriptor>(calls.openNew(part));
  if (!file->isOpen()) return Error{textOf(errno)};
  const auto giveUp = [&](int error) {
    calls.unlink(part);
    return Error{textOf(error)};
  };
  if (isThere && ::fchmod(file->get(), status.st_mode & 07777) != 0) return giveUp(errno);
  const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  if (const int error = writeWhole(calls, file->get(), bytes, 0)) return giveUp(error);
  // Starts the write-out without waiting for it. With the blocks handed to the disk before the new
  // name, a journalling file system does not bring back a name without its bytes after a power
  // failure. Where that is not to be had, nothing is lost by asking.
  ::sync_file_range(file->get(), 0, 0, SYNC_FILE_RANGE_WRITE);
  if (::rename(part.c_str(), place.c_str()) != 0) return giveUp(errno);
  return file;
}

}  // namespace tessary
