// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Tests/Libraries/LibraryParts.h"

/// A node library with one node type that takes an image, for libraries that are wrong in how they evaluate. The node
/// adds its attribute "level" to every sample; a library derives from it and does one thing in another way.
namespace {

class ImagePartsNode : public Node {
 public:
  ImagePartsNode() {
    attributes_ = {ScEng::RefPtr<Attribute>(new Attribute(this, 0, "level", 0.25, 0.0, 1.0, 0.1, 2)),
                   ScEng::RefPtr<Attribute>(new Attribute(this, 1, "style", 0, "plain,fancy"))};
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 1); }
  [[nodiscard]] std::string GetName() const override { return "Image Parts"; }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    output_.Reset();
    const Image* image = inputs.at(GetInplugIdFromRegularInputId(0)).GetImage();
    if (image == nullptr) return;
    if (!IsEnabled()) {
      output_.Reset(new Image(*image));
      return;
    }
    output_.Reset(new Image(image->GetImageHeader(), nullptr));
    level_ = static_cast<float>(inputs.at(GetInplugIdFromAttributeId(0)).GetNumber());
    Compute(*image, *output_, evaluation);
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug == 0 ? output_.Get() : nullptr;
  }

 protected:
  virtual void Compute(const Image& image, Image& output, unsigned) {
    for (std::size_t i = 0; i < image.GetNumSamples(); ++i) output.GetArray()[i] = image.GetConstArray()[i] + level_;
  }
  [[nodiscard]] float GetLevel() const { return level_; }

 private:
  ScEng::RefPtr<Image> output_;
  float level_ = 0.0F;
};

template <class NodeClass>
class ImagePartsFactory : public NodeFactory {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 1); }
  [[nodiscard]] Node* CreateNode() const override { return new NodeClass; }
  [[nodiscard]] std::string GetTypeName() const override { return "ImagePartsNode"; }
};

template <class NodeClass>
class ImagePartsDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return "Image Parts"; }
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 1); }

 private:
  mutable ImagePartsFactory<NodeClass> factory_;
};

}  // namespace

/// The three entry points of a library with one node type.
#define ONE_NODE_LIBRARY(Descriptor)                                                     \
  LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); } \
  LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }                       \
  LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) { return index == 0 ? new Descriptor : nullptr; }
