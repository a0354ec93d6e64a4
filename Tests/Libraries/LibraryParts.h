// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/LibraryInterface.h"
#include "Host/Tools/NodeInterface.h"

#define LIBRARY_EXPORT extern "C" __attribute__((visibility("default")))

/// What the test's node libraries are made of; each has one thing wrong with it, or nothing.
namespace {

class PartsLibrary : public LibraryInterface {
 public:
  [[nodiscard]] std::string GetName() const override { return "Parts"; }
};

// The one library object, which the host keeps for good.
[[maybe_unused]] LibraryInterface* MakeLibraryObject() { return new PartsLibrary; }

/// A node without inputs whose image is one pixel of its attribute "level".
class PartsNode : public Node {
 public:
  explicit PartsNode(NodeType type) : type_(type) {
    attributes_ = {ScEng::RefPtr<Attribute>(new Attribute(this, 0, "level", 0.25, 0.0, 1.0, 0.1, 2))};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return type_; }
  [[nodiscard]] std::string GetName() const override { return "Parts Node " + std::to_string(type_.GetNumbers()[2]); }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    const auto level = static_cast<float>(inputs.at(GetInplugIdFromAttributeId(0)).GetNumber());
    output_.Reset(new Image(1, 1, ColorMode::kValue, &level));
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug == 0 ? output_.Get() : nullptr;
  }

 private:
  NodeType type_;
  ScEng::RefPtr<Image> output_;
};

class PartsFactory : public NodeFactory {
 public:
  explicit PartsFactory(NodeType type) : type_(type) {}
  [[nodiscard]] NodeType GetNodeType() const override { return type_; }
  [[nodiscard]] Node* CreateNode() const override { return new PartsNode(type_); }
  [[nodiscard]] std::string GetTypeName() const override { return "PartsNode" + std::to_string(type_.GetNumbers()[2]); }

 private:
  NodeType type_;
};

class PartsDescriptor : public NodeInterface {
 public:
  PartsDescriptor(NodeType type, NodeType factory_type) : type_(type), factory_(factory_type) {}
  explicit PartsDescriptor(NodeType type) : PartsDescriptor(type, type) {}
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return "Parts Node " + std::to_string(type_.GetNumbers()[2]); }
  [[nodiscard]] NodeType GetNodeType() const override { return type_; }

 private:
  NodeType type_;
  mutable PartsFactory factory_;
};

}  // namespace
