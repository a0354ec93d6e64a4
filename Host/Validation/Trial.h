// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Node.h"
#include "Host/Util/RefCounter.h"

namespace ScEng {

class Subject;

struct Size {
  int x = 0;
  int y = 0;
};

enum class Samples { kOrdinary, kAwkward };

/// What a node is given for one evaluation.
struct Setup {
  /// For messages: "3 x 2 value images".
  std::string about;
  /// For the image inputs in turn; an input that takes many gets all. Empty: nothing is connected.
  std::vector<ImagePtr> images;
  /// What the attribute plugs carry, by id. Empty: the attributes' own values.
  std::vector<PlugValue> attributes;
};

/// Two images of that size and mode, with samples that are the same at every call.
Setup MakeSetup(Size size, unsigned color_mode, Samples samples);

/// The same with images of its own, so that nothing that is done to the one shows in the other.
Setup CopyOf(const Setup& setup);

/// What an evaluation left at one output.
struct OutputCopy {
  bool has_image = false;
  ImageHeader header;
  std::vector<float> samples;
};

/// How an evaluation went.
struct Trial {
  bool in_error = false;
  std::string message;
  std::vector<OutputCopy> outputs;
  /// What is wrong with the state or an output, and what would be right; empty where nothing is.
  std::string problem;
};

/// Evaluates every output as the engine does: what leaves the node as an exception becomes its error state. Reads every
/// sample of every output. `announce` tells the validating process what is being evaluated.
Trial Evaluate(Subject& subject, Node& node, const Setup& setup, bool announce = true);

/// What the plugs of the node carry for the setup, in the engine's order.
std::vector<PlugValue> MakeInputs(Node& node, const Setup& setup);

/// Says in which way two evaluations differ: "sample 3 of output \"image\" is 0.5 and then 1"; empty where they do not.
/// Any NaN equals any NaN.
std::string FindDifference(const Node& node, const Trial& first, const Trial& second);

/// Whether two images are the same in header and samples.
bool AreSame(const OutputCopy& first, const OutputCopy& second);
OutputCopy CopyOf(const Image& image);

/// The values that an attribute's plug can carry at its limits: bounds, far beyond them, every word, a word that is not
/// in the list, both flags, nothing.
std::vector<PlugValue> GetLimits(const Attribute& attribute);
/// The words of a choice or both flags; nothing for other kinds.
std::vector<PlugValue> GetWords(const Attribute& attribute);
std::string Describe(const PlugValue& value);

void DropResults(Node& node);

}  // namespace ScEng
