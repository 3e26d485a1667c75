#pragma once

#include <filesystem>
#include <string_view>

namespace tessary {

/// Whether this machine has a device that OpenGL could be driven by, told by its device nodes
/// alone: no driver is loaded. It may be without a driver all the same.
bool hasGraphicsCard(const std::filesystem::path& devices = "/dev");

/// Whether OpenGL runs on the processor, by what it calls its renderer (GL_RENDERER).
bool isSoftwareRenderer(std::string_view glRenderer);

}  // namespace tessary
