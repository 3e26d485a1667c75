#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace tessary::lab {

using Bytes = std::vector<uint8_t>;

inline void append(Bytes& bytes, std::span<const uint8_t> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

inline Bytes join(std::initializer_list<Bytes> parts) {
  Bytes bytes;
  for (const Bytes& part : parts) append(bytes, part);
  return bytes;
}

/// What USB sends: numbers with their lowest byte first. Each call appends one field.
class Fields {
 public:
  Fields& u8(size_t value) {
    bytes_.push_back(uint8_t(value));
    return *this;
  }
  Fields& u16(size_t value) { return u8(value).u8(value >> 8); }
  Fields& u32(size_t value) { return u16(value).u16(value >> 16); }
  Fields& zeros(size_t count) {
    bytes_.insert(bytes_.end(), count, 0);
    return *this;
  }
  Fields& raw(std::span<const uint8_t> bytes) {
    append(bytes_, bytes);
    return *this;
  }

  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

/// Its length, its types, then its fields.
inline Bytes descriptor(std::initializer_list<uint8_t> types, const Fields& fields) {
  Bytes bytes{uint8_t(1 + types.size() + fields.bytes().size())};
  append(bytes, types);
  append(bytes, fields.bytes());
  return bytes;
}

}  // namespace tessary::lab
