// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/WindowFlags.h"

#include <cstdlib>

#include "Host/Files/ImageFile.h"

namespace {

bool IsSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

void WindowFlags::Declare(CLI::App& sub, int largest_scale) {
  sub.add_option("--screenshot", screenshot_, "Draws the window to a file; needs no display")->type_name("FILE");
  sub.add_option("--theme", theme_, "light or dark (default: as the desktop)")
      ->type_name("THEME")
      ->check(CLI::IsMember({"light", "dark"}));
  const std::string help = largest_scale == 2 ? "1 or 2" : "a whole number from 1 to " + std::to_string(largest_scale);
  sub.add_option("--scale", scale_, "Device pixels per pixel: " + help)
      ->type_name("N")
      ->check(CLI::Range(1, largest_scale));
}

std::string WindowFlags::FindProblem() const {
  return screenshot_ && screenshot_->empty() ? "--screenshot names no file" : "";
}

std::string WindowFlags::FindMissingDisplay() const {
  if (screenshot_ || IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY") || IsSet("QT_QPA_PLATFORM")) return {};
  return "there is no display to open a window on; give --screenshot FILE to draw it without one, or set DISPLAY";
}

std::string WindowFlags::GetScreenshot() const {
  return screenshot_ ? ScEng::MakePath(*screenshot_).string() : std::string();
}
