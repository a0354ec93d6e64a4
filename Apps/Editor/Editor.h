// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/Status.h"

/// What the window of `value edit` shows.
struct EditorRequest {
  std::shared_ptr<const ScEng::NodeCatalog> catalog;
  /// Empty for what the editor starts with.
  std::filesystem::path document;
  /// Where journals of documents without a file go; empty for the user's folder.
  std::filesystem::path state_folder;
  /// "light", "dark", or empty for that of the desktop.
  std::string theme;
  int scale = 1;
  /// Where the window is drawn to instead of the display; empty for the display.
  std::string screenshot;
  /// The size of the window that is drawn, in pixels before scaling; 0 for the usual one.
  int width = 0;
  int height = 0;
  /// The output that is shown, "id.plug"; empty for the one of the document.
  std::string shown;
  /// The docks that are open, by name; empty for the usual ones.
  std::vector<std::string> docks;
  /// Told the one line that Qt ends the process with when it finds no display.
  std::function<void(const std::string&)> on_fatal;
};

struct EditorAnswer {
  /// Of writing the screenshot.
  ScEng::Status status;
  /// What is wrong with the document, or with what is asked of the window; then nothing is drawn.
  std::vector<std::string> problems;
  /// The problems are those of the request.
  bool is_usage = false;
  /// The screenshot's size in pixels.
  int width = 0;
  int height = 0;
};

/// The entry point of the module: opens the window and returns when it is closed, or draws the screenshot.
extern "C" void ValueShowEditor(const EditorRequest& request, EditorAnswer& answer);
