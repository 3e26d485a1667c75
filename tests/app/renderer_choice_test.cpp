#include <gtest/gtest.h>

#include "app/RendererChoice.h"

namespace tessary {
namespace {

using OpenGl = std::optional<std::string>;

TEST(RendererChoice, OpenGlIsForGraphicsCardsAndForThoseWhoAskForIt) {
  const struct {
    std::optional<Renderer> wanted;
    bool hasCard;
    OpenGl openGl;
    Renderer chosen;
    const char* reason;
  } rows[] = {
      {{}, true, "AMD Radeon Graphics", Renderer::kOpenGl, "AMD Radeon Graphics"},
      {{},
       true,
       "llvmpipe (LLVM 15)",
       Renderer::kRaster,
       "OpenGL would run on the processor (llvmpipe (LLVM 15))"},
      {{}, true, {}, Renderer::kRaster, "OpenGL can't be had"},
      {{}, false, "AMD Radeon Graphics", Renderer::kRaster, "there is no graphics card"},
      {Renderer::kOpenGl, false, "llvmpipe", Renderer::kOpenGl, "llvmpipe"},
      {Renderer::kOpenGl, true, {}, Renderer::kRaster, "OpenGL can't be had"},
      {Renderer::kRaster, true, "AMD Radeon Graphics", Renderer::kRaster, "as asked for"},
  };
  for (const auto& row : rows) {
    const RendererChoice choice =
        chooseRenderer(row.wanted, row.hasCard, [&] { return row.openGl; });
    EXPECT_EQ(choice.renderer, row.chosen) << row.reason;
    EXPECT_EQ(choice.reason, row.reason);
  }
}

TEST(RendererChoice, NoDriverIsLoadedWhereItsAnswerWouldChangeNothing) {
  int asked = 0;
  const auto probe = [&]() -> OpenGl {
    ++asked;
    return "AMD";
  };
  chooseRenderer(std::nullopt, false, probe);
  chooseRenderer(Renderer::kRaster, true, probe);
  EXPECT_EQ(asked, 0);
  chooseRenderer(std::nullopt, true, probe);
  EXPECT_EQ(asked, 1);
}

}  // namespace
}  // namespace tessary
