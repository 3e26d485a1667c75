#pragma once
// The strip along the bottom of every picture that the virtual microscope sends. It says which
// picture this is, and can be found and read again on a screenshot:
//
//   x = 0              256  272  288  304                560
//     | number, 16 bits | R | G | B | the number's complement |   16 pixels high
//
// Bit b of the number is a square of 16x16 pixels at x = 16 b, white for 1. Red, green and blue
// tell where the strip is and that colours are in order, the complement that all of it is one
// picture.

namespace tessary::lab {

constexpr int kStripSquare = 16;  // side, pixels
constexpr int kStripBits = 16;
constexpr int kStripMarks = 3;
constexpr int kStripSquares = 2 * kStripBits + kStripMarks;
constexpr int kStripMarksLeft = kStripBits * kStripSquare;
constexpr int kStripWidth = kStripSquares * kStripSquare;

}  // namespace tessary::lab
