#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/Geometry.h"

namespace tessary {

/// What stands before the coded picture in one frame of an MJPEG stream.
struct JpegFrameHeader {
  TextureSize size;
};

/// Reads the header without trusting it. Nothing for bytes that don't begin with a whole header of
/// the one kind that cameras send: baseline or extended Huffman coding, 8 bits, all components in
/// one scan, with its quantisation tables.
std::optional<JpegFrameHeader> readJpegFrameHeader(std::span<const uint8_t> bytes);

/// Copies a frame whose header has been read, in place of the oddities that cheap cameras put into
/// it: without the segments that no decoder needs (application data, comments), and with the scan
/// parameters that baseline coding prescribes.
void copyWithPlainHeader(std::span<const uint8_t> bytes, std::vector<uint8_t>& copy);

}  // namespace tessary
