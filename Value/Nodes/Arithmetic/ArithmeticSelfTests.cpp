// SPDX-License-Identifier: Apache-2.0
//
// The tests of the nodes that fold any number of images: two constants, two checkers, each pair in both orders, and
// each image alone with two values of the constant.

#include <array>
#include <cstddef>
#include <iterator>
#include <string>

#include "Value/SelfTests/SelfTests.h"
#include "Value/SelfTests/TestGraph.h"

namespace SelfTests {
namespace {

constexpr NodeType kToValue{10, 320, 0};

/// A checker: where it lies, how large its cells are, and their colours by the parity of column and row.
struct CheckerRow {
  ScEng::Frame frame;
  Size cell;
  Shade color_00;
  Shade color_10;
  Shade color_01;
  Shade color_11;
};

// The first two become the checker inputs. The last two feed no case: bands and columns, one over the whole frame and
// one over a part of it.
constexpr CheckerRow kCheckers[] = {
    {{0.0, 0.0, 64.0, 64.0}, {16.0, 32.0}, kBlack, kWhite, Gray(0.5), Gray(0.25)},
    {{16.0, 16.0, 32.0, 32.0}, {8.0, 8.0}, kWhite, Gray(0.5), kBlack, Gray(0.75)},
    {{0.0, 0.0, 64.0, 64.0}, {64.0, 16.0}, kBlack, kBlack, kWhite, kWhite},
    {{0.0, 16.0, 64.0, 32.0}, {16.0, 64.0}, Gray(0.25), Gray(0.75), Gray(0.25), Gray(0.75)},
};

/// The images that the tests combine, two of each kind.
struct Inputs {
  std::array<Node*, 2> constants{};
  std::array<Node*, 2> checkers{};
};

/// Creates and sets all input nodes; false when one could not be created.
bool BuildInputs(Inputs& inputs) {
  constexpr std::array<ScEng::Frame, 2> kFrames = {ScEng::Frame{0.0, 16.0, 64.0, 32.0},
                                                   ScEng::Frame{16.0, 0.0, 32.0, 64.0}};
  for (std::size_t i = 0; i < inputs.constants.size(); ++i) {
    Node* rectangle = Engine::Get()->CreateNode(kRectangle);
    if (rectangle == nullptr) return false;
    SetFrame(*rectangle, kFrames[i]);
    SetShade(*rectangle, "color", kWhite);
    inputs.constants[i] = rectangle;
  }
  std::array<Node*, std::size(kCheckers)> checkers{};
  for (std::size_t i = 0; i < checkers.size(); ++i) {
    checkers[i] = Engine::Get()->CreateNode(kChecker);
    if (checkers[i] == nullptr) return false;
    SetFrame(*checkers[i], kCheckers[i].frame);
    SetCells(*checkers[i], kCheckers[i].cell);
    SetShade(*checkers[i], "color_00", kCheckers[i].color_00);
    SetShade(*checkers[i], "color_10", kCheckers[i].color_10);
    SetShade(*checkers[i], "color_01", kCheckers[i].color_01);
    SetShade(*checkers[i], "color_11", kCheckers[i].color_11);
  }
  for (std::size_t i = 0; i < inputs.checkers.size(); ++i) {
    inputs.checkers[i] = Engine::Get()->CreateNode(kToValue);
    if (inputs.checkers[i] == nullptr) return false;
    Connect(*checkers[i], *inputs.checkers[i]);
  }
  return true;
}

/// Two inputs by themselves, and the node on both, in either order.
bool RenderPair(TestContext& context, Node& node, const std::string& prefix, const std::string& kind,
                const std::array<Node*, 2>& pair) {
  const std::string a = kind + "-a";
  const std::string b = kind + "-b";
  bool passed = Render(context, *pair[0], a);
  passed &= Render(context, *pair[1], b);
  Connect(*pair[0], node, 0);
  Connect(*pair[1], node, 1);
  passed &= Render(context, node, prefix + "-" + a + "-" + b);
  Disconnect(*pair[0], node, 0);
  Disconnect(*pair[1], node, 1);
  Connect(*pair[1], node, 0);
  Connect(*pair[0], node, 1);
  passed &= Render(context, node, prefix + "-" + b + "-" + a);
  Disconnect(*pair[1], node, 0);
  Disconnect(*pair[0], node, 1);
  return passed;
}

/// The node on one image alone, with either constant.
bool RenderAlone(TestContext& context, Node& node, const std::string& prefix, const std::string& name, Node& input) {
  Connect(input, node);
  // "value" is what older documents call the constant.
  SetNumber(node, "value", 5.0);
  bool passed = Render(context, node, prefix + "-" + name + "-5");
  SetNumber(node, "value", 10.0);
  passed &= Render(context, node, prefix + "-" + name + "-10");
  Disconnect(input, node);
  return passed;
}

bool RunArithmetic(const NodeType& type, const std::string& prefix, TestContext context) {
  context.InitializeTest();
  context.InitTimer();
  Inputs inputs;
  const bool has_inputs = BuildInputs(inputs);
  Node* node = has_inputs ? Engine::Get()->CreateNode(type) : nullptr;
  if (node == nullptr) return Fail("ERROR: Failed to create input nodes");
  bool passed = RenderPair(context, *node, prefix, "constant", inputs.constants);
  passed &= RenderPair(context, *node, prefix, "checker", inputs.checkers);
  passed &= RenderAlone(context, *node, prefix, "constant-a", *inputs.constants[0]);
  passed &= RenderAlone(context, *node, prefix, "constant-b", *inputs.constants[1]);
  passed &= RenderAlone(context, *node, prefix, "checker-a", *inputs.checkers[0]);
  passed &= RenderAlone(context, *node, prefix, "checker-b", *inputs.checkers[1]);
  return passed;
}

}  // namespace

bool RunAdd() { return RunArithmetic({10, 320, 5}, "add", {"output/nodes/value/add/", "Value.DLL Add Value"}); }

bool RunMultiply() {
  return RunArithmetic({10, 320, 10}, "multiply", {"output/nodes/value/multiply/", "Value.DLL Multiply Value"});
}

bool RunMinimum() { return RunArithmetic({10, 320, 16}, "min", {"output/nodes/value/min/", "Value.DLL Min Value"}); }

bool RunMaximum() { return RunArithmetic({10, 320, 21}, "max", {"output/nodes/value/max/", "Value.DLL Max Value"}); }

}  // namespace SelfTests
