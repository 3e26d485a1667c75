// A disk that stops answering when it is told to: shows one folder under another name through FUSE.
// Every call waits while this process is stopped (SIGSTOP), and goes on with SIGCONT. It has no
// files without a name, as older file systems haven't.
//   mirror_disk FOLDER MOUNT_POINT

#define FUSE_USE_VERSION 35

#include <cerrno>
#include <cstdio>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <fuse3/fuse.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

std::string s_folder;  // without a slash at its end

std::string real(const char* path) { return s_folder + path; }

/// What FUSE expects: 0 or more, or the error below 0.
template <typename Number>
Number answer(Number result) {
  return result < 0 ? Number(-errno) : result;
}

/// The calls under their own names, which are the C library's too.
struct Mirror {
  static int getattr(const char* path, struct stat* status, fuse_file_info*) {
    return answer(::lstat(real(path).c_str(), status));
  }

  static int readdir(const char* path, void* entries, fuse_fill_dir_t fill, off_t, fuse_file_info*,
                     fuse_readdir_flags) {
    DIR* folder = ::opendir(real(path).c_str());
    if (folder == nullptr) return -errno;
    while (const dirent* entry = ::readdir(folder))
      fill(entries, entry->d_name, nullptr, 0, fuse_fill_dir_flags(0));
    ::closedir(folder);
    return 0;
  }

  static int open(const char* path, fuse_file_info* file) {
    const int fd = ::open(real(path).c_str(), file->flags | O_CLOEXEC);
    if (fd < 0) return -errno;
    file->fh = uint64_t(fd);
    return 0;
  }

  static int create(const char* path, mode_t mode, fuse_file_info* file) {
    const int fd = ::open(real(path).c_str(), file->flags | O_CREAT | O_CLOEXEC, mode);
    if (fd < 0) return -errno;
    file->fh = uint64_t(fd);
    return 0;
  }

  static int read(const char*, char* bytes, size_t size, off_t at, fuse_file_info* file) {
    return int(answer(::pread(int(file->fh), bytes, size, at)));
  }

  static int write(const char*, const char* bytes, size_t size, off_t at, fuse_file_info* file) {
    return int(answer(::pwrite(int(file->fh), bytes, size, at)));
  }

  static int release(const char*, fuse_file_info* file) { return answer(::close(int(file->fh))); }
  static int fsync(const char*, int, fuse_file_info* file) {
    return answer(::fsync(int(file->fh)));
  }
  static int unlink(const char* path) { return answer(::unlink(real(path).c_str())); }
  static int mkdir(const char* path, mode_t mode) {
    return answer(::mkdir(real(path).c_str(), mode));
  }
  static int rmdir(const char* path) { return answer(::rmdir(real(path).c_str())); }
  static int access(const char* path, int mode) {
    return answer(::access(real(path).c_str(), mode));
  }
  static int statfs(const char* path, struct statvfs* status) {
    return answer(::statvfs(real(path).c_str(), status));
  }

  static int rename(const char* from, const char* to, unsigned flags) {
    return answer(::renameat2(AT_FDCWD, real(from).c_str(), AT_FDCWD, real(to).c_str(), flags));
  }

  static int link(const char* from, const char* to) {
    return answer(::link(real(from).c_str(), real(to).c_str()));
  }

  static int truncate(const char* path, off_t size, fuse_file_info* file) {
    return answer(file != nullptr ? ::ftruncate(int(file->fh), size)
                                  : ::truncate(real(path).c_str(), size));
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    fmt::print(stderr, "mirror_disk FOLDER MOUNT_POINT\n");
    return 2;
  }
  s_folder = argv[1];
  fuse_operations calls{};
  calls.getattr = Mirror::getattr;
  calls.readdir = Mirror::readdir;
  calls.open = Mirror::open;
  calls.create = Mirror::create;
  calls.read = Mirror::read;
  calls.write = Mirror::write;
  calls.release = Mirror::release;
  calls.fsync = Mirror::fsync;
  calls.unlink = Mirror::unlink;
  calls.mkdir = Mirror::mkdir;
  calls.rmdir = Mirror::rmdir;
  calls.access = Mirror::access;
  calls.statfs = Mirror::statfs;
  calls.rename = Mirror::rename;
  calls.link = Mirror::link;
  calls.truncate = Mirror::truncate;
  // In the foreground, one call at a time, and nothing remembered: every call is asked for.
  std::string options = "-oattr_timeout=0,entry_timeout=0,negative_timeout=0";
  std::string program = argv[0], foreground = "-f", single = "-s", mountPoint = argv[2];
  char* arguments[] = {program.data(), foreground.data(), single.data(), options.data(),
                       mountPoint.data()};
  return fuse_main(5, arguments, &calls, nullptr);
}
