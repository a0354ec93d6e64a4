// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iostream>
#include <string>

#include "Host/Testing/TestContext.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeType.h"

/// What the self-tests share: the nodes of the host that they feed, and short ways to say what a graph looks like.
namespace SelfTests {

inline constexpr NodeType kReader{10, 16, 5};
inline constexpr NodeType kRectangle{10, 16, 10};
inline constexpr NodeType kChecker{10, 16, 16};
inline constexpr NodeType kWaves{10, 16, 32};

struct Size {
  double x;
  double y;
};

struct Shade {
  double red;
  double green;
  double blue;
  double opacity;
};

inline constexpr Shade kBlack{0.0, 0.0, 0.0, 1.0};
inline constexpr Shade kWhite{1.0, 1.0, 1.0, 1.0};
constexpr Shade Gray(double value) { return {value, value, value, 1.0}; }

inline void SetFrame(Node& node, const ScEng::Frame& frame) {
  node.GetAttribute("frame")->SetFrame(frame.x, frame.y, frame.width, frame.height, false);
}

inline void SetShade(Node& node, const std::string& name, const Shade& shade) {
  node.GetAttribute(name)->SetRgbo(shade.red, shade.green, shade.blue, shade.opacity, false);
}

inline void SetNumber(Node& node, const std::string& name, double value) {
  node.GetAttribute(name)->SetNumber(value, false);
}

inline void SetChoice(Node& node, const std::string& name, const std::string& word) {
  node.GetAttribute(name)->SetChoice(word, false);
}

/// The points that a checker takes its cells from: the first is their width, the second their height.
inline void SetCells(Node& checker, const Size& cell) {
  checker.GetAttribute("rect_x_size")->SetPoint(cell.x, cell.x, false);
  checker.GetAttribute("rect_y_size")->SetPoint(cell.y, cell.y, false);
}

/// Connects the image of one node to an image input of another, and takes the connection back.
inline void Connect(Node& from, Node& to, unsigned index = 0) {
  Engine::Get()->ConnectNodes(&from, "image", 0, &to, "image", index);
}
inline void Disconnect(Node& from, Node& to, unsigned index = 0) {
  Engine::Get()->DisconnectNodes(&from, "image", 0, &to, "image", index);
}

/// Renders the node's image as the case of that name.
inline bool Render(TestContext& context, Node& node, const std::string& case_name) {
  context.case_name = case_name;
  return context.DoTest(&node, 0, 0);
}

/// Says why a test cannot run.
inline bool Fail(const char* message) {
  std::cout << message << std::endl;
  return false;
}

}  // namespace SelfTests
