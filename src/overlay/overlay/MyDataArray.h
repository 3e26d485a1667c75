#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>

namespace tessary {

/// Says how much was asked for and ends the program, with exit status 1 and without unwinding.
[[noreturn]] void outOfMemory(int64_t elements, size_t elementSize);

/// Growable array of plain records: the vertices of the overlay, the points of a pencil stroke.
/// Fields are open, as renderer and shape list read them. Setting `count` to 0 empties the array
/// and keeps its block, so that a redraw in the steady state allocates nothing. Indices are
/// trusted. Sources handed in must not lie in the array itself. A failed allocation ends the
/// program.
template <typename T>
class MyDataArray {
  static_assert(std::is_trivially_copyable_v<T>, "elements are moved as bytes");

 public:
  MyDataArray() = default;
  ~MyDataArray() {
    std::free(data);
    data = nullptr;
  }
  /// Deep copy with the source's capacity and `pos`. An empty source still gives a block, of size
  /// 0.
  MyDataArray(const MyDataArray& other) { copyFrom(other); }
  /// Deep copy, also when the source is about to go. Arrays with the same `data` are taken for the
  /// same array and left as they are; two that never stored anything are meant to be caught by
  /// this.
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): equal `data` covers it.
  MyDataArray& operator=(const MyDataArray& other) {
    if (data == other.data) return *this;
    std::free(data);
    copyFrom(other);
    return *this;
  }

  std::span<const T> elements() const { return {data, static_cast<size_t>(count)}; }

  /// Makes room for `n` more elements. Growth is linear on purpose: 256 more than asked for.
  void inc_capacity(int32_t n) {
    if (n <= 0) return;
    if (data == nullptr) {
      resizeBlock(int64_t{n} + kSpare);
    } else if (size < int64_t{count} + n) {
      resizeBlock(int64_t{size} + n + kSpare);
    }
  }

  /// Appends `n` elements of `src`; nothing for `n` of 0 or less.
  void push_back(const T* src, int32_t n) {
    if (n <= 0) return;
    inc_capacity(n);
    std::memcpy(at(count), src, bytes(n));
    count += n;
  }

  /// Opens a gap of `n` elements at `index`, for the caller to fill: it holds what it held.
  void insert(int32_t index, int32_t n) {
    if (n <= 0) return;
    inc_capacity(n);
    if (index < count) std::memmove(at(index + n), at(index), bytes(count - index));
    count += n;
  }

  /// Takes out `n` elements from `index` on. The block keeps its size.
  void erase(int32_t index, int32_t n) {
    if (n <= 0) return;
    const int32_t behind = index + n;
    if (behind < count) std::memmove(at(index), at(behind), bytes(count - behind));
    count -= n;
  }

  /// Puts the `n` elements of `src` in the place of the `old` elements at `index`.
  void replace(const T* src, int32_t index, int32_t n, int32_t old) {
    if (n < old) {
      erase(index + n, old - n);
    } else if (old < n) {
      insert(index + old, n - old);
    }
    if (n > 0) std::memcpy(at(index), src, bytes(n));
  }

  T* data = nullptr;  ///< Null while nothing was ever stored.
  int32_t size = 0;   ///< Capacity in elements.
  int32_t count = 0;  ///< Elements in use.
  int32_t pos = -1;   ///< For the owner: where a shape's vertices begin in the view's total list.

 private:
  static constexpr int64_t kSpare = 256;

  static size_t bytes(int64_t n) { return static_cast<size_t>(n) * sizeof(T); }
  T* at(int32_t index) { return data + index; }

  void resizeBlock(int64_t elements) {
    if (elements > std::numeric_limits<int32_t>::max()) outOfMemory(elements, sizeof(T));
    void* block = std::realloc(data, bytes(elements));
    if (block == nullptr) outOfMemory(elements, sizeof(T));
    data = static_cast<T*>(block);
    size = static_cast<int32_t>(elements);
  }

  void copyFrom(const MyDataArray& other) {
    const size_t blockBytes = bytes(other.size);
    void* block = std::malloc(blockBytes > 0 ? blockBytes : 1);
    if (block == nullptr) outOfMemory(other.size, sizeof(T));
    data = static_cast<T*>(block);
    size = other.size;
    count = other.count;
    pos = other.pos;
    if (count > 0) std::memcpy(data, other.data, bytes(count));
  }
};

}  // namespace tessary
