#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <span>

#include <sys/mman.h>
#include <unistd.h>

namespace tessary::test {

/// A copy of some bytes that ends where readable memory ends: reading one byte too many ends the
/// program, also inside of libraries that no sanitizer looks into.
class GuardedBytes {
 public:
  explicit GuardedBytes(std::span<const uint8_t> bytes) : size_(bytes.size()) {
    const auto page = size_t(sysconf(_SC_PAGESIZE));
    const size_t readable = (size_ + page - 1) / page * page;
    mapped_ = readable + page;
    base_ = static_cast<uint8_t*>(
        mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (base_ == MAP_FAILED || mprotect(base_ + readable, page, PROT_NONE) != 0) {
      throw std::bad_alloc();
    }
    start_ = base_ + readable - size_;
    if (size_ != 0) std::memcpy(start_, bytes.data(), size_);
  }
  ~GuardedBytes() { munmap(base_, mapped_); }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  std::span<const uint8_t> bytes() const { return {start_, size_}; }

 private:
  size_t size_;
  size_t mapped_ = 0;
  uint8_t* base_ = nullptr;
  uint8_t* start_ = nullptr;
};

}  // namespace tessary::test
