// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Util/Status.h"

/// What the window of `value panel` shows.
struct PanelRequest {
  ScEng::GraphDocument* document = nullptr;
  /// The node that is edited, of that document.
  Node* node = nullptr;
  NodeInterface* descriptor = nullptr;
  /// The outputs of the node that can be shown.
  std::vector<unsigned> outplugs;
  /// The files that feed the node, as they were written for `value apply`.
  std::vector<std::string> inputs;
  /// The range that was declared for them; empty for none.
  std::string range;
  /// "light", "dark", or empty for that of the desktop.
  std::string theme;
  int scale = 1;
  /// Where the window is drawn to instead of the display; empty for the display.
  std::string screenshot;
  /// Told the one line that Qt ends the process with when it finds no display.
  std::function<void(const std::string&)> on_fatal;
};

struct PanelAnswer {
  /// Of writing the screenshot.
  ScEng::Status status;
  /// The screenshot's size in pixels.
  int width = 0;
  int height = 0;
};

/// The entry point of the module: opens the window and returns when it is closed, or draws the screenshot.
extern "C" void ValueShowPanel(const PanelRequest& request, PanelAnswer& answer);
