#pragma once

#include <cstdint>

namespace tessary {

/// What became of a stream's frames.
struct StreamCounters {
  uint64_t delivered = 0;
  uint64_t flagged = 0;      ///< Marked as damaged by the driver.
  uint64_t tooShort = 0;     ///< Empty, or without the bytes that the format needs.
  uint64_t undecodable = 0;  ///< Refused by the decoder.
  uint64_t late = 0;         ///< Good, but a newer one was there already.
  uint64_t gaps = 0;         ///< Never came, by the driver's count.
  uint64_t restarts = 0;     ///< Of the stream, after silence or a failed transfer.

  uint64_t faults() const { return flagged + tooShort + undecodable + gaps; }
  friend bool operator==(const StreamCounters&, const StreamCounters&) = default;
};

}  // namespace tessary
