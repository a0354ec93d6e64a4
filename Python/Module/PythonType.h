// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <deque>
#include <string>
#include <vector>

#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"

namespace ValuePython {

/// A node type that a class of Python is: its record, and the class. It never changes, and lives as long as the
/// process.
class PythonType {
 public:
  /// `description` is what `valuenodes._classes` makes of the class, checked.
  PythonType(pybind11::object node_class, const pybind11::dict& description);
  PythonType(const PythonType&) = delete;
  PythonType& operator=(const PythonType&) = delete;

  [[nodiscard]] const NodeRecord& GetRecord() const { return record_; }
  [[nodiscard]] pybind11::handle GetClass() const { return class_; }
  /// Whether `evaluate` takes images, not arrays.
  [[nodiscard]] bool TakesImages() const { return takes_images_; }
  [[nodiscard]] bool IsOptional(std::size_t input) const { return optional_[input]; }

 private:
  const char* Keep(const pybind11::handle& text);
  AttributeRow MakeRow(const pybind11::dict& row);

  // Never released: descriptors outlive the interpreter.
  pybind11::handle class_;
  std::deque<std::string> texts_;
  std::vector<AttributeRow> attributes_;
  std::vector<PlugRow> inputs_;
  std::vector<PlugRow> outputs_;
  std::vector<bool> optional_;
  bool takes_images_ = false;
  NodeRecord record_;
};

/// The descriptor of such a type.
ScEng::RefPtr<NodeInterface> MakeDescriptor(const PythonType& type);

}  // namespace ValuePython
