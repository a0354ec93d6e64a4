// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Node.h"
#include "Python/Module/PythonType.h"

namespace ValuePython {

/// A node that a class of Python evaluates, by an object of its own. Takes the interpreter's lock for that alone, so
/// that it may be made, evaluated and destroyed with the lock or without.
class PythonNode : public Node {
 public:
  explicit PythonNode(const PythonType& type);

  [[nodiscard]] NodeType GetNodeType() const override { return type_.GetRecord().type; }
  [[nodiscard]] std::string GetName() const override { return type_.GetRecord().display_name; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  bool OnProcessEvent(NodeEvent event) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override;

  /// Whether all inputs that must have an image have one; of a disabled node, whether there is an image to hand on.
  [[nodiscard]] bool HasImages(const std::vector<bool>& inputs) const;

 private:
  using Entries = std::vector<std::vector<const Image*>>;

  [[nodiscard]] Entries GatherImages(const std::vector<PlugValue>& inputs) const;
  void Call(const Entries& images, const std::vector<PlugValue>& inputs);
  pybind11::tuple MakeArguments(const Entries& images) const;
  pybind11::dict MakeKeywords(const std::vector<PlugValue>& inputs) const;
  [[nodiscard]] pybind11::handle GetObject();
  void TakeResults(pybind11::object results, const Image* like);
  /// The exception itself becomes the cause of what the caller gets.
  void Fail(unsigned evaluation, const std::string& message, const pybind11::error_already_set& error);

  const PythonType& type_;
  /// Made at the first evaluation.
  std::shared_ptr<const void> object_;
  std::vector<ImagePtr> outputs_;
};

}  // namespace ValuePython
