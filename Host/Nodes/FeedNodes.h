// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Host/Nodes/HostNode.h"
#include "Host/Nodes/HostNodes.h"

/// A node that delivers its attribute "value" to attribute plugs of other nodes. Disabled, it delivers nothing.
class FeedNode : public ScEng::HostNode {
 public:
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    delivered_ = IsEnabled() ? Read(inputs, "value") : PlugValue();
  }
  [[nodiscard]] PlugValue GetOutputValue(unsigned outplug) const override {
    return outplug == 0 ? delivered_ : PlugValue();
  }

 protected:
  FeedNode(unsigned type, const char* output) { outplugs_ = {PlugRecord::Output(type, output)}; }

 private:
  PlugValue delivered_;
};

/// Delivers a number, without bounds.
class NumberNode : public FeedNode {
 public:
  static constexpr NodeType kType = ScEng::kNumberType;
  static constexpr const char* kTypeName = "NumberNode";
  static constexpr const char* kDisplayName = "Number";

  NumberNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }
};

/// Delivers a flag.
class FlagNode : public FeedNode {
 public:
  static constexpr NodeType kType = ScEng::kFlagType;
  static constexpr const char* kTypeName = "FlagNode";
  static constexpr const char* kDisplayName = "Flag";

  FlagNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }
};

/// Delivers a text, to string and to choice attributes.
class TextNode : public FeedNode {
 public:
  static constexpr NodeType kType = ScEng::kTextType;
  static constexpr const char* kTypeName = "TextNode";
  static constexpr const char* kDisplayName = "Text";

  TextNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }
};
