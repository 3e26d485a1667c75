#include "opengl/GraphicsCard.h"

#include <algorithm>
#include <array>
#include <string>
#include <system_error>

namespace tessary {
namespace {

/// How the names begin of nodes that drivers render through: the kernel's own, those of vendors,
/// and a virtual machine's way to its host's card.
constexpr std::array<std::string_view, 5> kRenderNodes = {"dri/renderD", "nvidia0", "mali0",
                                                          "kgsl-", "dxg"};
constexpr std::array<std::string_view, 5> kSoftwareRenderers = {
    "llvmpipe", "softpipe", "swrast", "Software Rasterizer", "SwiftShader"};

bool hasNode(const std::filesystem::path& devices, std::string_view beginning) {
  const std::filesystem::path path = devices / beginning;
  const std::string name = path.filename().string();
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(path.parent_path(), error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (entry->path().filename().string().starts_with(name)) return true;
  }
  return false;
}

}  // namespace

bool hasGraphicsCard(const std::filesystem::path& devices) {
  return std::any_of(kRenderNodes.begin(), kRenderNodes.end(),
                     [&](std::string_view node) { return hasNode(devices, node); });
}

bool isSoftwareRenderer(std::string_view glRenderer) {
  return std::any_of(
      kSoftwareRenderers.begin(), kSoftwareRenderers.end(),
      [&](std::string_view name) { return glRenderer.find(name) != std::string_view::npos; });
}

}  // namespace tessary
