// Saves a JPEG and a PNG of 1280 by 720 pixels into a folder, for full_disk_test.   still_saver
// FOLDER
#include <random>

#include <fmt/format.h>

#include "FakeFailureListener.h"
#include "ManualExecutor.h"
#include "jpeg/JpegImageEncoder.h"
#include "output/StillImage.h"
#include "png/PngImageEncoder.h"

int main(int argc, char** argv) {
  using namespace tessary;
  if (argc != 2) return 2;
  PixelBuffer picture({1280, 720});
  std::minstd_rand random(1);  // grain, so that neither file is small
  for (size_t i = 0; i < picture.byteCount(); ++i) picture.data()[i] = uint8_t(random() >> 16U);
  JpegImageEncoder jpeg;
  PngImageEncoder png;
  {
    test::ManualExecutor mainQueue;  // nobody reads what is told
    test::FakeFailureListener failures;
    StillImage still(jpeg, png, mainQueue, failures);
    still.saveImageFile(argv[1], "still.jpg", 0, picture, {});
    still.saveImageFile(argv[1], "still.png", 1, picture, {});
  }
  fmt::print("alive\n");
}
