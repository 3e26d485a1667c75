#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/Geometry.h"
#include "base/PixelBuffer.h"
#include "output/StillInfo.h"
#include "platform/ImageEncoder.h"

namespace tessary {

/// What `info` says of a still of `size`, and which program made it, as an XMP packet (UTF-8) of at
/// most `room` bytes. Of a table that does not fit the last rows are left out, and it says how
/// many; a name or text of more than a thousand bytes is cut short. Empty if there is no room at
/// all.
std::string xmpPacket(const StillInfo& info, TextureSize size, size_t room);

/// The image file of `picture` with such a packet in it. Empty when it can't be encoded. As the
/// encoder, on any thread.
std::vector<uint8_t> encodedStill(ImageEncoder& encoder, const PixelBuffer& picture,
                                  const StillInfo& info);

}  // namespace tessary
