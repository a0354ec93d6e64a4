// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <span>
#include <vector>

#include "Host/Tools/Api.h"
#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/NodeType.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Tools/Reach.h"
#include "Host/Tools/Scaling.h"

class Node;

/// What the node types of one library share.
struct LibraryRecord {
  /// The library's name; empty for the host's own node types.
  const char* name = "";
  /// The folder of the icons in Qt's resources, with a slash at its end.
  const char* icon_folder = "";
  /// The group that menus show the types in.
  unsigned group_code = 0;
};

/// A plug as a node's record has it.
struct PlugRow {
  unsigned type = PlugType::kImage;
  const char* name = "";
  /// Of an input: whether it takes any number of connections.
  bool takes_many = false;
};

constexpr PlugRow ImagePlug(const char* name) { return {PlugType::kImage, name}; }
/// An input that takes any number of images, each at a connection index of its own.
constexpr PlugRow ImagesPlug(const char* name) { return {PlugType::kImage, name, true}; }

/// One image in, one image out: the plugs of most nodes.
inline constexpr PlugRow kImagePlugs[] = {ImagePlug("image")};

/// Everything about a node type that never changes: a constant, which the node class has as `kRecord`.
struct NodeRecord {
  const LibraryRecord* library = nullptr;
  /// The node class's own name, which documents store.
  const char* type_name = "";
  const char* display_name = "";
  NodeType type = {};
  /// Base name of the icon files: "Add" stands for `Add.png` (48 pixels) and `Add12.png`; empty for a type without.
  const char* icon = "";
  /// The heading that lists and pages show the type under.
  const char* group = "";
  /// What the node does, in one sentence.
  const char* sentence = "";
  /// Further words to find the type by, comma-separated.
  const char* keywords = "";
  std::span<const AttributeRow> attributes = {};
  std::span<const PlugRow> inputs = {};
  std::span<const PlugRow> outputs = {};
  /// The reach with what the plugs carry, in the form that `Node::Evaluate` receives; null for a type that does not
  /// say.
  Reach (*reach)(const Node& node, const std::vector<PlugValue>& inputs) = nullptr;
  /// Whether an output can have an image (a node without outputs: whether it has what it works on) as the node is set,
  /// enabled or not, with an image at these of its regular inputs: one entry for each. More images never make it false.
  /// Null for a type that does not say.
  bool (*has_image)(const Node& node, unsigned outplug, const std::vector<bool>& inputs) = nullptr;
  /// Whether the node, while it is enabled, makes its one image with one call of `ComputeValue` on its input images,
  /// puts nothing but a header on it afterwards, and reads the samples of its inputs nowhere else but with `Settle` and
  /// `FetchSamples`, and their declared ranges only where its reach says so. The engine may then have it and others
  /// compute in one pass, with pending images between them; see `ScEng::PendingScope`.
  bool joins = false;
  /// How the result follows images that are reduced, while no connection feeds an attribute. Null for a type that does
  /// not say; what its reach calls samples follows as it is.
  Scaling (*scaling)(const Node& node) = nullptr;
  /// What the descriptor's `RunTest` runs; null for a type without a self-test.
  bool (*run_test)() = nullptr;
};

/// The reach of a node whose output pixels depend on the input pixels at the same place alone.
inline Reach ReachesSamples(const Node&, const std::vector<PlugValue>&) { return Reach::Samples(); }
/// The reach of a node that needs its inputs whole, or that makes its image whole.
inline Reach ReachesImage(const Node&, const std::vector<PlugValue>&) { return Reach::Image(); }

/// The result of smaller images is the same picture, smaller.
inline Scaling ScalesAsPicture(const Node&) { return Scaling::kSame; }

/// An output has an image when there is one at an input, be the node enabled or not.
inline bool HasImageOfAnyInput(const Node&, unsigned, const std::vector<bool>& inputs) {
  return std::find(inputs.begin(), inputs.end(), true) != inputs.end();
}
/// The same of a node that needs all of its inputs.
inline bool HasImageOfEveryInput(const Node&, unsigned, const std::vector<bool>& inputs) {
  return std::find(inputs.begin(), inputs.end(), false) == inputs.end();
}
/// An output has an image while the node is enabled.
HOST_TOOLS_API bool HasImageWhileEnabled(const Node& node, unsigned outplug, const std::vector<bool>& inputs);
/// The same, where there is an image at an input.
HOST_TOOLS_API bool HasImageOfAnyInputWhileEnabled(const Node& node, unsigned outplug, const std::vector<bool>& inputs);
