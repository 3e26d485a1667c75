#pragma once

#include <string>

#include <gtest/gtest.h>

#include "base/PixelBuffer.h"

namespace tessary::test {

/// Compares a picture with the one kept under `name`, every byte of every pixel. Where they differ,
/// the result says how many pixels and where the first is, and the build folder gets
/// `name`.actual.png and `name`.diff.png: the kept picture dimmed, red where a pixel is missing or
/// has another colour, white where there is one too many.
///
/// With TESSARY_RENEW_PICTURES set in the environment the picture is kept instead.
::testing::AssertionResult looksLike(const PixelBuffer& picture, const std::string& name);

}  // namespace tessary::test
