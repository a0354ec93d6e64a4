// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Host/Image/Image.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"

namespace ScEng {

/// What the host's own nodes share: adding attributes and plugs one by one, and reading what the attribute plugs carry
/// by the attributes' names.
class HostNode : public Node {
 protected:
  template <class... Arguments>
  void AddAttribute(Arguments&&... arguments) {
    const auto id = static_cast<unsigned>(attributes_.size());
    attributes_.emplace_back(new Attribute(this, id, std::forward<Arguments>(arguments)...));
  }

  /// What the plug of an attribute carries; nothing where a connection delivers nothing.
  [[nodiscard]] const PlugValue& Read(const std::vector<PlugValue>& inputs, const char* attribute) const {
    static const PlugValue nothing;
    for (unsigned id = 0; id < attributes_.size(); ++id) {
      const std::size_t plug = GetInplugIdFromAttributeId(id);
      if (attributes_[id]->GetName() == attribute && plug < inputs.size()) return inputs[plug];
    }
    return nothing;
  }

  /// The file that the plug of a path attribute names; empty where it carries no path.
  [[nodiscard]] std::filesystem::path ReadPath(const std::vector<PlugValue>& inputs, const char* attribute) const {
    const std::string written = Read(inputs, attribute).GetText();
    if (written.empty()) return {};
    return MakePath(written, GetAttribute(std::string(attribute))->GetFolder());
  }
};

/// A node with one image output, "image", which it caches.
class HostImageNode : public HostNode {
 public:
  HostImageNode() { outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")}; }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug == 0 ? output_.Get() : nullptr;
  }

 protected:
  RefPtr<Image> output_;
};

/// The descriptor and, as its own member, the factory of a host node class, which names itself by the constants
/// `kType`, `kTypeName` and `kDisplayName`.
template <class NodeClass>
class HostDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return NodeClass::kDisplayName; }
  [[nodiscard]] NodeType GetNodeType() const override { return NodeClass::kType; }
  [[nodiscard]] unsigned GetGroupCode() const override { return 1; }

 private:
  class Factory : public NodeFactory {
   public:
    [[nodiscard]] NodeType GetNodeType() const override { return NodeClass::kType; }
    [[nodiscard]] Node* CreateNode() const override { return new NodeClass; }
    [[nodiscard]] std::string GetTypeName() const override { return NodeClass::kTypeName; }
  };
  mutable Factory factory_;
};

}  // namespace ScEng
