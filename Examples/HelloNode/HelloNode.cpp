// SPDX-License-Identifier: Apache-2.0
//
// A whole node library in one file: "Hello Contrast" pushes values away from a middle.
#include <Host/NodeKit/NodeKit.h>
#include <Host/Testing/DefaultCase.h>

constexpr LibraryRecord kLibrary{.name = "Hello", .icon_folder = ":/HelloNode/"};

constexpr AttributeRow kMiddle = NumberRow("middle", 0.5, -1e4, 1e4, 0.01, 3, "The value that stays as it is.");
constexpr AttributeRow kContrast =
    NumberRow("contrast", 2.0, 0.0, 100.0, 0.1, 2, "How far values move from the middle.");
constexpr AttributeRow kAttributes[] = {kMiddle, kContrast};

// What happens to each sample. The host calls it from many threads, so it only reads its fields.
struct ContrastOperation : ValueOperation {
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return (value - a) * b + a; }
};

class HelloContrastNode : public Node {
  NODEKIT_NODE(HelloContrastNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    EvaluateOneImage(*this, evaluation, inputs, output_, [&] {
      auto* operation = new ContrastOperation;
      operation->a = EvaluatedInputs(*this, inputs).GetNumber(kMiddle);
      operation->b = EvaluatedInputs(*this, inputs).GetNumber(kContrast);
      return operation;
    });
  }
};

// Documents know a node type by its class name and its numbers: choose some that no other library has.
constinit const NodeRecord HelloContrastNode::kRecord{.library = &kLibrary,
                                                      .type_name = "HelloContrastNode",
                                                      .display_name = "Hello Contrast",
                                                      .type = {1000, 1, 1},
                                                      .icon = "Contrast",
                                                      .group = "Remapping",
                                                      .sentence = "Pushes values away from a middle.",
                                                      .keywords = "contrast,levels,curve",
                                                      .attributes = kAttributes,
                                                      .inputs = kImagePlugs,
                                                      .outputs = kImagePlugs,
                                                      .reach = ReachesSamples,
                                                      .run_test = [] { return RenderDefaultCase(kRecord); }};

NODEKIT_LIBRARY(kLibrary, HelloContrastNode)
