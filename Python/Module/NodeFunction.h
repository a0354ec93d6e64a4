// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeType.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/NodeEngine.h"
#include "Python/Module/SharedImage.h"

namespace ValuePython {

/// A node type as a function: images first, attributes by name.
class NodeFunction {
 public:
  /// `type` is a class name, a display name or three numbers, looked for at the first call; `name` is what messages
  /// call the function. `result` is the class of the tuple for several outputs, or None.
  NodeFunction(std::string type, std::string name, pybind11::object result);

  pybind11::object Call(const pybind11::args& given, const pybind11::kwargs& attributes);

 private:
  struct Input {
    std::string name;
    bool takes_many = false;
    /// Whether it may be left free while the inputs before it have images.
    bool is_optional = false;
  };
  /// What one call works with.
  struct Work;

  void Resolve();
  void ReadImages(const pybind11::args& images, Work& work) const;
  void ReadConstant(pybind11::handle number, std::size_t place, Work& work) const;
  [[nodiscard]] std::shared_ptr<SharedImage> ReadImage(pybind11::handle given, const std::string& name) const;
  void ReadKeywords(const pybind11::kwargs& attributes, Work& work) const;
  void ReadNamedImage(std::size_t input, pybind11::handle given, Work& work) const;
  void CheckInputs(const Work& work) const;
  void CheckState(const Node& node, const Interruption& interruption) const;
  void SetAttributes(Node& node, const Work& work) const;
  [[nodiscard]] pybind11::object MakeResult(const std::vector<pybind11::object>& outputs) const;
  [[nodiscard]] std::string ListInputs() const;

  std::string type_name_;
  std::string name_;
  pybind11::object result_;

  // Since the last look into the catalogue.
  std::optional<std::uint64_t> generation_;
  NodeType type_;
  std::vector<Input> inputs_;
  std::vector<std::string> attributes_;
  std::vector<std::string> outputs_;
  /// The attribute that counts with one image alone, and that a number in place of a second image sets.
  std::optional<std::size_t> constant_;
};

}  // namespace ValuePython
