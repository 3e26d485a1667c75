#include "virtual_microscope/StreamPump.h"

#include <algorithm>
#include <cerrno>
#include <random>

#include "virtual_microscope/Descriptors.h"
#include "virtual_microscope/Say.h"

namespace tessary::lab {
namespace {

using namespace std::chrono;

// A payload's header: its length, then these bits
constexpr uint8_t kHeaderLength = 2;
constexpr uint8_t kEndOfHeader = 0x80;
constexpr uint8_t kEndOfPicture = 0x02;

constexpr size_t kIntactHead = 600;  // so that it still begins like a JPEG
constexpr size_t kBetweenDamages = 97;
constexpr size_t kTruncatedTo = 3;  // a third

/// How far pictures that the host was too slow for are made up for.
constexpr milliseconds kMostCatchUp(200);

Bytes corrupted(Bytes picture) {
  static std::mt19937 generator(1);
  for (size_t i = kIntactHead; i < picture.size(); i += kBetweenDamages)
    picture[i] = uint8_t(generator());
  return picture;
}

}  // namespace

bool StreamPump::Fault::take() {
  if (left <= 0) return false;
  if (--left == 0) say("{} {} is over", name, asked);
  return true;
}

void StreamPump::start() {
  streaming_ = true;
  picture_.reset();
  due_ = Clock::now();
}

bool StreamPump::removeTransfer(uint32_t sequence) {
  return std::erase_if(transfers_, [=](const Transfer& t) { return t.sequence == sequence; }) > 0;
}

void StreamPump::pump() {
  while (streaming_ && !transfers_.empty()) {
    if (fail_.left > 0) {
      link_.complete(transfers_.front().sequence, -EPROTO, 0);
      transfers_.pop_front();
      picture_.reset();
      fail_.take();
      continue;
    }
    if (!picture_) {
      if (Clock::now() < std::max(due_, frozenUntil_)) return;
      beginPicture();
    }
    sendPiece(transfers_.front());
    transfers_.pop_front();
  }
}

void StreamPump::beginPicture() {
  due_ = std::max(due_ + interval(), Clock::now() - kMostCatchUp);
  const auto& pictures = control_.committedSize().pictures;
  picture_ = pictures[nextPicture_++ % pictures.size()];
  if (corrupt_.take())
    picture_ = corrupted(*std::move(picture_));
  else if (truncate_.take())
    picture_->resize(picture_->size() / kTruncatedTo);
  offset_ = 0;
  frameID_ ^= 1;
}

void StreamPump::sendPiece(const Transfer& transfer) {
  const size_t room = std::min(transfer.length, kLargestPayload);
  const size_t size = std::min(room - kHeaderLength, picture_->size() - offset_);
  const bool isLast = offset_ + size == picture_->size();
  const uint8_t bits = kEndOfHeader | frameID_ | (isLast ? kEndOfPicture : 0);
  const Bytes payload =
      Fields().u8(kHeaderLength).u8(bits).raw(std::span(*picture_).subspan(offset_, size)).bytes();
  link_.complete(transfer.sequence, 0, uint32_t(payload.size()), payload);
  offset_ += size;
  if (!isLast) return;
  picture_.reset();
  ++sent_;
}

std::optional<milliseconds> StreamPump::timeToNextPicture() const {
  if (!streaming_ || transfers_.empty()) return std::nullopt;
  const auto wait = ceil<milliseconds>(std::max(due_, frozenUntil_) - Clock::now());
  return std::max(wait, 0ms);
}

StreamPump::Clock::duration StreamPump::interval() const {
  using HundredNanoseconds = duration<uint32_t, std::ratio<1, 10'000'000>>;
  const auto asked = duration_cast<Clock::duration>(duration<double>(1 / framesPerSecond_));
  return std::max<Clock::duration>(asked, HundredNanoseconds(control_.committedInterval()));
}

}  // namespace tessary::lab
