#include "jpeg/JpegFrameHeader.h"

#include <algorithm>

namespace tessary {
namespace {

constexpr uint8_t kStartOfImage = 0xD8;
constexpr uint8_t kBaselineFrame = 0xC0;
constexpr uint8_t kExtendedFrame = 0xC1;
constexpr uint8_t kHuffmanTables = 0xC4;
constexpr uint8_t kStartOfScan = 0xDA;
constexpr uint8_t kQuantisationTables = 0xDB;
constexpr uint8_t kRestartInterval = 0xDD;
constexpr uint8_t kComment = 0xFE;

bool isApplicationData(uint8_t marker) { return marker >= 0xE0 && marker <= 0xEF; }

/// A marker and what follows it, without the two bytes of its length.
struct Segment {
  uint8_t marker = 0;
  size_t payload = 0;  // where it starts in the frame
  size_t size = 0;
};

/// The segment at `position`, which moves behind it.
std::optional<Segment> nextSegment(std::span<const uint8_t> bytes, size_t& position) {
  if (position >= bytes.size() || bytes[position] != 0xFF) return std::nullopt;
  while (position < bytes.size() && bytes[position] == 0xFF) ++position;  // fill bytes are allowed
  if (bytes.size() - position < 3) return std::nullopt;
  const uint8_t marker = bytes[position];
  const size_t length = size_t(bytes[position + 1]) << 8 | bytes[position + 2];
  const size_t payload = position + 3;
  if (length < 2 || length - 2 > bytes.size() - payload) return std::nullopt;
  position = payload + length - 2;
  return Segment{marker, payload, length - 2};
}

bool startsImage(std::span<const uint8_t> bytes) {
  return bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == kStartOfImage;
}

}  // namespace

std::optional<JpegFrameHeader> readJpegFrameHeader(std::span<const uint8_t> bytes) {
  if (!startsImage(bytes)) return std::nullopt;
  JpegFrameHeader header;
  size_t components = 0;
  bool hasQuantisationTables = false;
  for (size_t position = 2;;) {
    const std::optional<Segment> segment = nextSegment(bytes, position);
    if (!segment) return std::nullopt;
    const std::span<const uint8_t> payload = bytes.subspan(segment->payload, segment->size);
    switch (segment->marker) {
      case kBaselineFrame:
      case kExtendedFrame:
        if (payload.size() < 6 || components != 0 || payload[0] != 8) return std::nullopt;
        header.size = {payload[3] << 8 | payload[4], payload[1] << 8 | payload[2]};
        components = payload[5];
        if (components == 0 || payload.size() != 6 + 3 * components) return std::nullopt;
        break;
      case kQuantisationTables: hasQuantisationTables = true; break;
      case kStartOfScan: {
        const bool whole = components != 0 && hasQuantisationTables && !payload.empty() &&
                           payload[0] == components && payload.size() == 4 + 2 * components;
        return whole ? std::optional(header) : std::nullopt;
      }
      case kHuffmanTables:
      case kRestartInterval:
      case kComment: break;
      default:
        if (!isApplicationData(segment->marker)) return std::nullopt;
    }
  }
}

void copyWithPlainHeader(std::span<const uint8_t> bytes, std::vector<uint8_t>& copy) {
  copy.assign(bytes.begin(), bytes.begin() + 2);
  for (size_t position = 2;;) {
    const std::optional<Segment> segment = nextSegment(bytes, position);
    if (!segment) return;
    if (isApplicationData(segment->marker) || segment->marker == kComment) continue;
    copy.push_back(0xFF);
    const size_t rest = segment->payload - 3;  // from the marker's own byte
    if (segment->marker != kStartOfScan) {
      copy.insert(copy.end(), bytes.begin() + ptrdiff_t(rest), bytes.begin() + ptrdiff_t(position));
      continue;
    }
    copy.insert(copy.end(), bytes.begin() + ptrdiff_t(rest), bytes.end());
    const size_t parameters = copy.size() - (bytes.size() - position) - 3;
    copy[parameters] = 0;       // first coefficient
    copy[parameters + 1] = 63;  // last coefficient
    copy[parameters + 2] = 0;   // no successive approximation
    return;
  }
}

}  // namespace tessary
