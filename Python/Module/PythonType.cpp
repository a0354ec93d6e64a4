// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/PythonType.h"

#include <pybind11/stl.h>

#include <array>
#include <utility>

#include "Python/Module/PythonNode.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

constexpr LibraryRecord kLibrary{.name = "Python"};

class PythonFactory : public NodeFactory {
 public:
  explicit PythonFactory(const PythonType& type) : type_(type) {}

  [[nodiscard]] NodeType GetNodeType() const override { return type_.GetRecord().type; }
  [[nodiscard]] Node* CreateNode() const override { return new PythonNode(type_); }
  [[nodiscard]] std::string GetTypeName() const override { return type_.GetRecord().type_name; }

 private:
  const PythonType& type_;
};

class PythonDescriptor : public NodeInterface {
 public:
  explicit PythonDescriptor(const PythonType& type) : type_(type), factory_(type) {}

  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return type_.GetRecord().display_name; }
  [[nodiscard]] NodeType GetNodeType() const override { return type_.GetRecord().type; }
  [[nodiscard]] std::string GetLibraryName() const override { return kLibrary.name; }

 private:
  const PythonType& type_;
  mutable PythonFactory factory_;
};

bool HasImage(const Node& node, unsigned, const std::vector<bool>& inputs) {
  return static_cast<const PythonNode&>(node).HasImages(inputs);
}

template <std::size_t kCount>
void CopyNumbers(const py::handle& from, AttributeRow& row) {
  const auto numbers = from.cast<std::array<double, kCount>>();
  std::copy(numbers.begin(), numbers.end(), std::begin(row.numbers));
}

Attribute::StringUse FindUse(const std::string& word) {
  if (word == "read") return Attribute::StringUse::kReadPath;
  return word == "write" ? Attribute::StringUse::kWritePath : Attribute::StringUse::kText;
}

}  // namespace

PythonType::PythonType(py::object node_class, const py::dict& description) : class_(node_class.release()) {
  for (const py::handle row : description["attributes"]) attributes_.push_back(MakeRow(row.cast<py::dict>()));
  for (const py::handle input : description["inputs"]) {
    const auto plug = input.cast<py::tuple>();
    inputs_.push_back({PlugType::kImage, Keep(plug[0]), plug[1].cast<bool>()});
    optional_.push_back(plug[2].cast<bool>());
  }
  for (const py::handle output : description["outputs"]) outputs_.push_back(ImagePlug(Keep(output)));
  takes_images_ = description["takes_images"].cast<bool>();
  const auto numbers = description["type"].cast<std::array<unsigned, 3>>();
  record_ = {.library = &kLibrary,
             .type_name = Keep(description["class"]),
             .display_name = Keep(description["name"]),
             .type = NodeType(numbers[0], numbers[1], numbers[2]),
             .group = Keep(description["group"]),
             .sentence = Keep(description["sentence"]),
             .keywords = Keep(description["keywords"]),
             .attributes = attributes_,
             .inputs = inputs_,
             .outputs = outputs_,
             .reach = ReachesImage,
             .has_image = HasImage};
}

const char* PythonType::Keep(const py::handle& text) { return texts_.emplace_back(text.cast<std::string>()).c_str(); }

AttributeRow PythonType::MakeRow(const py::dict& row) {
  const auto kind = row["kind"].cast<std::string>();
  const char* const name = Keep(row["name"]);
  const char* const text = Keep(row["text"]);
  const py::handle value = row["default"];
  AttributeRow made;
  if (kind == "flag") {
    made = FlagRow(name, value.cast<bool>(), text);
  } else if (kind == "number") {
    made = NumberRow(name, value.cast<double>(), row["lowest"].cast<double>(), row["highest"].cast<double>(),
                     row["step"].cast<double>(), row["decimals"].cast<int>(), text)
               .WithUnit(Keep(row["unit"]));
  } else if (kind == "choice") {
    made = ChoiceRow(name, row["index"].cast<int>(), Keep(row["words"]), text);
  } else if (kind == "string") {
    made = StringRow(name, Keep(value), text);
    made.string_use = FindUse(row["use"].cast<std::string>());
  } else {
    made.name = name;
    made.text = text;
    made.kind = kind == "point"   ? Attribute::Kind::kPoint
                : kind == "frame" ? Attribute::Kind::kFrame
                                  : Attribute::Kind::kColor;
    if (kind == "point") {
      CopyNumbers<2>(value, made);
    } else {
      CopyNumbers<4>(value, made);
    }
  }
  return made;
}

ScEng::RefPtr<NodeInterface> MakeDescriptor(const PythonType& type) {
  return ScEng::RefPtr<NodeInterface>(new PythonDescriptor(type));
}

}  // namespace ValuePython
