#include "virtual_microscope/StreamControl.h"

#include <algorithm>

#include "virtual_microscope/Descriptors.h"

namespace tessary::lab {
namespace {

// Where the host's wishes lie in the control's data
constexpr size_t kFormat = 2;
constexpr size_t kFrame = 3;
constexpr size_t kInterval = 4;
constexpr size_t kWishes = 8;

constexpr size_t kLength = 26;  // of the control's data in video class 1.0
constexpr uint8_t kCanBeReadAndSet = 3;

}  // namespace

void StreamControl::set(uint8_t selector, std::span<const uint8_t> data) {
  if (data.size() < kWishes) return;
  Choice choice{data[kFormat], data[kFrame], 0};
  for (size_t i = 0; i < 4; ++i) choice.interval |= uint32_t(data[kInterval + i]) << 8 * i;
  (selector == Commit ? commit_ : probe_) = corrected(choice);
}

std::optional<Bytes> StreamControl::get(uint8_t selector, uint8_t request) const {
  if (request == GetLength) return Fields().u16(kLength).bytes();
  if (request == GetInfo) return Fields().u8(kCanBeReadAndSet).bytes();
  if (request < GetCurrent || request > GetDefault) return std::nullopt;
  // The least, the most and the default are what is current: there is nothing to negotiate.
  const Choice& choice = selector == Commit ? commit_ : probe_;
  return Fields()
      .u16(1)  // hint: keep the interval
      .u8(choice.format)
      .u8(choice.frame)
      .u32(choice.interval)
      .zeros(10)  // no compression parameters, no delay
      .u32(largestPicture(sizeOf(choice).size))
      .u32(kLargestPayload)
      .bytes();
}

const VideoFormat& StreamControl::formatOf(const Choice& choice) const {
  return formats_[choice.format - 1U];
}

const PictureSize& StreamControl::sizeOf(const Choice& choice) const {
  return formatOf(choice).sizes[choice.frame - 1U];
}

StreamControl::Choice StreamControl::corrected(Choice choice) const {
  if (choice.format < 1 || choice.format > formats_.size()) choice.format = 1;
  if (choice.frame < 1 || choice.frame > formatOf(choice).sizes.size()) choice.frame = 1;
  choice.interval = choice.interval >= kSlowFrameInterval ? kSlowFrameInterval : kFrameInterval;
  return choice;
}

}  // namespace tessary::lab
