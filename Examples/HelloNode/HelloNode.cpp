// SPDX-License-Identifier: Apache-2.0
//
// A whole node library in one file: "Hello Contrast" pushes values away from a middle. It shows the four things that a
// library has: an operation, a node, a descriptor with its factory, and the three entry points.

#include <Host/Image/ComputeValue.h>
#include <Host/Image/Image.h>
#include <Host/Tools/LibraryInterface.h>
#include <Host/Tools/Node.h>
#include <Host/Tools/NodeInterface.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

// Choose numbers that no other library has: documents know a node type by them.
constexpr NodeType kContrastType(1000, 1, 1);

/// What happens to each sample. The host calls it from many threads, so it only reads its fields.
class ContrastOperation : public ValueOperation {
 public:
  ContrastOperation(float middle, float factor) {
    a = middle;
    b = factor;
  }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return (value - a) * b + a; }
};

class HelloContrastNode : public Node {
 public:
  HelloContrastNode() {
    attributes_.emplace_back(new Attribute(this, kMiddle, "middle", 0.5, -10000.0, 10000.0, 0.01, 3));
    attributes_.emplace_back(new Attribute(this, kContrast, "contrast", 2.0, 0.0, 100.0, 0.1, 2));
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }

  [[nodiscard]] NodeType GetNodeType() const override { return kContrastType; }
  [[nodiscard]] std::string GetName() const override { return "Hello Contrast"; }

  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    output_.Reset();
    const Image* image = inputs[GetInplugIdFromRegularInputId(0)].GetImage();
    if (image == nullptr) return;
    if (!IsEnabled()) {
      output_.Reset(new Image(*image));
      return;
    }
    const double middle = inputs[GetInplugIdFromAttributeId(kMiddle)].GetNumber();
    const double contrast = inputs[GetInplugIdFromAttributeId(kContrast)].GetNumber();
    ContrastOperation operation(static_cast<float>(middle), static_cast<float>(contrast));
    output_.Reset(ComputeValue(image, &operation));
    if (!output_) SetState(evaluation, State::kError, "Output image is larger than maximum image size.");
  }

  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug == 0 ? output_.Get() : nullptr;
  }

  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }

 private:
  enum : unsigned { kMiddle, kContrast };
  ScEng::RefPtr<Image> output_;
};

class HelloContrastFactory : public NodeFactory {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return kContrastType; }
  [[nodiscard]] Node* CreateNode() const override { return new HelloContrastNode; }
  [[nodiscard]] std::string GetTypeName() const override { return "HelloContrastNode"; }
};

class HelloContrastDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return "Hello Contrast"; }
  [[nodiscard]] NodeType GetNodeType() const override { return kContrastType; }
  [[nodiscard]] std::string GetLibraryName() const override { return "Hello"; }

 private:
  mutable HelloContrastFactory factory_;
};

class HelloLibrary : public LibraryInterface {
 public:
  [[nodiscard]] std::string GetName() const override { return "Hello"; }
};

}  // namespace

#define HELLO_EXPORT extern "C" __attribute__((visibility("default")))

HELLO_EXPORT LibraryInterface* GetLibraryInterface() { return new HelloLibrary; }
HELLO_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
HELLO_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  return index == 0 ? new HelloContrastDescriptor : nullptr;
}
