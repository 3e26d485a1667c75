#include <ostream>

#include "PixelTest.h"

namespace tessary::test {
namespace {

struct Reticle {
  int32_t type;
  const char* name;
  friend std::ostream& operator<<(std::ostream& out, const Reticle& reticle) {
    return out << reticle.name;
  }
};

class Reticles : public PixelTest, public ::testing::WithParamInterface<Reticle> {};

TEST_P(Reticles, WithoutACalibrationIsARulerInPixels) {
  view.changeScale(GetParam().type);
  EXPECT_TRUE(picture(std::string(GetParam().name) + "-ruler"));
}

TEST_P(Reticles, WithACalibrationShowsARoundLength) {
  view.changeScale(GetParam().type);
  view.setCalibration(1880.0F, kUnitMillimetre);  // 0.05 mm in 94 pixels
  EXPECT_TRUE(picture(std::string(GetParam().name) + "-scaled"));
}

INSTANTIATE_TEST_SUITE_P(All, Reticles,
                         ::testing::Values(Reticle{kScaleCrosshair, "crosshair"},
                                           Reticle{kScaleGrid, "grid"},
                                           Reticle{kScaleConcentric, "concentric"}),
                         [](const auto& tested) { return std::string(tested.param.name); });

using OneReticle = PixelTest;

TEST_F(OneReticle, InMicrometresHasAGreekLetter) {
  view.changeScale(kScaleCrosshair);
  view.setCalibration(9.2F, kUnitMicrometre);  // 10 micrometres in 92 pixels
  EXPECT_TRUE(picture("crosshair-micrometres"));
}

TEST_F(OneReticle, WithZeroPixelsPerUnitIsItsAxes) {
  view.changeScale(kScaleGrid);
  view.setCalibration(0.0F, kUnitMillimetre);
  EXPECT_TRUE(picture("grid-axes"));
}

TEST_F(OneReticle, PutAwayLeavesThePicture) {
  view.changeScale(kScaleGrid);
  view.changeScale(kScaleNone);
  EXPECT_TRUE(picture("frame"));
}

}  // namespace
}  // namespace tessary::test
