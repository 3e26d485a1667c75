#include <fstream>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "opengl/GraphicsCard.h"

namespace tessary::test {
namespace {

TEST(GraphicsCard, IsToldByTheNodesThatDriversRenderThrough) {
  for (const char* node : {"dri/renderD128", "dri/renderD129", "nvidia0", "mali0", "dxg"}) {
    const TemporaryFolder folder;
    const std::filesystem::path devices = folder.path();
    EXPECT_FALSE(hasGraphicsCard(devices));
    // What a screen without a card has, too.
    std::filesystem::create_directories(devices / "dri");
    std::ofstream(devices / "dri" / "card0");
    std::ofstream(devices / "nvram");
    EXPECT_FALSE(hasGraphicsCard(devices));
    std::ofstream(devices / node);
    EXPECT_TRUE(hasGraphicsCard(devices)) << node;
  }
  EXPECT_FALSE(hasGraphicsCard("/nowhere/at/all"));
}

TEST(GraphicsCard, ARendererOnTheProcessorIsToldByItsName) {
  for (const char* name : {"llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "Software Rasterizer",
                           "Google SwiftShader", "Mesa DRI swrast"})
    EXPECT_TRUE(isSoftwareRenderer(name)) << name;
  for (const char* name : {"Mesa Intel(R) UHD Graphics 620 (KBL GT2)", "AMD Radeon Graphics",
                           "NVIDIA GeForce GTX 1050/PCIe/SSE2", "virgl (AMD Radeon)", ""})
    EXPECT_FALSE(isSoftwareRenderer(name)) << name;
}

}  // namespace
}  // namespace tessary::test
