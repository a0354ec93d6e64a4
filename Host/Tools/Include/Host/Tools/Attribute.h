// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "Host/Math/Geometry.h"
#include "Host/Tools/Api.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Util/RefCounter.h"

class Node;
struct AttributeRow;

/// A named, typed parameter of a node. The form is chosen by the constructor and never changes.
///
/// Every attribute is an input plug of its node as well: unconnected, the plug carries the attribute's own value. A
/// change of the value tells the node, so that what depends on it is evaluated again. Not safe for use from several
/// threads at once.
class HOST_TOOLS_API Attribute : public RefCounter<Attribute> {
 public:
  enum class Kind { kFlag, kNumber, kChoice, kString, kColor, kPoint, kFrame };

  /// What a string attribute is for. The paths of a document are relative to it and may use either slash.
  enum class StringUse { kText, kReadPath, kWritePath };

  /// A flag.
  Attribute(Node* node, unsigned id, std::string name, bool value);
  /// A number with its default, bounds, the step of a spin box and the decimals shown.
  Attribute(Node* node, unsigned id, std::string name, double value, double lowest, double highest, double step,
            int decimals);
  /// A choice among the words of a comma-separated list, with the index of the default.
  Attribute(Node* node, unsigned id, std::string name, int default_index, const std::string& values);
  /// A string.
  Attribute(Node* node, unsigned id, std::string name, std::string value, StringUse use = StringUse::kText);
  /// A colour with opacity.
  Attribute(Node* node, unsigned id, std::string name, const ScEng::Rgbo& value);
  /// A point.
  Attribute(Node* node, unsigned id, std::string name, const ScEng::Point& value);
  /// A frame.
  Attribute(Node* node, unsigned id, std::string name, const ScEng::Frame& value);
  /// Any of these, as a row of the node's table has it. The row outlives the attribute.
  Attribute(Node* node, unsigned id, const AttributeRow& row);

  [[nodiscard]] unsigned GetId() const { return id_; }
  /// The row that the attribute was made from, with what is said of it; null for one made by another constructor.
  [[nodiscard]] const AttributeRow* GetRow() const { return row_; }
  [[nodiscard]] const std::string& GetName() const { return name_; }
  [[nodiscard]] Kind GetKind() const { return kind_; }
  /// The word for the kind in messages: "number", "choice", ...
  [[nodiscard]] const char* GetKindName() const;
  /// The data-type code of the attribute's plug.
  [[nodiscard]] unsigned GetPlugType() const;

  /// The value as its plug carries it; a choice as its word.
  [[nodiscard]] const PlugValue& GetValue() const { return value_; }
  [[nodiscard]] const PlugValue& GetDefault() const { return default_; }
  void ResetToDefault();

  [[nodiscard]] double GetLowest() const { return lowest_; }
  [[nodiscard]] double GetHighest() const { return highest_; }
  [[nodiscard]] double GetStep() const { return step_; }
  [[nodiscard]] int GetDecimals() const { return decimals_; }
  [[nodiscard]] StringUse GetStringUse() const { return string_use_; }

  /// The folder that relative paths at this attribute's plug start from: that of the document. Empty for the working
  /// directory.
  [[nodiscard]] const std::filesystem::path& GetFolder() const { return folder_; }
  void SetFolder(std::filesystem::path folder) { folder_ = std::move(folder); }

  /// The words of a choice, in the order of their indices.
  [[nodiscard]] const std::vector<std::string>& GetChoices() const { return choices_; }
  /// The index of a word of the list; -1 for any other string, the empty one included.
  [[nodiscard]] int GetChoiceIndex(const std::string& word) const;

  /// Writes the default of a number (first argument); of a point, colour or frame the first two or all four. The value
  /// stays.
  void SetDefault(double first, double second, double third, double fourth);

  // The setters answer whether the value was taken: not for an attribute of another kind, a NaN or a word that is not
  // in the list. `quantized` rounds numbers to the attribute's decimals first, as an editor does with what is typed;
  // false rounds nothing.

  /// Takes `value` clamped to the bounds; a NaN is refused and the value stays.
  bool SetNumber(double value, bool quantized);
  bool SetFlag(bool value, bool quantized);
  bool SetChoice(const std::string& word, bool quantized);
  bool SetString(const std::string& value, bool quantized);
  bool SetRgbo(double red, double green, double blue, double opacity, bool quantized);
  bool SetPoint(double x, double y, bool quantized);
  bool SetFrame(double x, double y, double width, double height, bool quantized);

 private:
  friend class RefCounter<Attribute>;
  ~Attribute() = default;
  Attribute(Node* node, unsigned id, std::string name, Kind kind, PlugValue value);

  void TakeNumberForm(double lowest, double highest, double step, int decimals);
  void TakeWords(int default_index, const std::string& words);
  bool Take(Kind kind, PlugValue value);

  Node* node_;
  const AttributeRow* row_ = nullptr;
  unsigned id_;
  std::string name_;
  Kind kind_;
  PlugValue value_;
  PlugValue default_;
  double lowest_ = -std::numeric_limits<double>::max();
  double highest_ = std::numeric_limits<double>::max();
  double step_ = 1.0;
  int decimals_ = 6;
  std::vector<std::string> choices_;
  StringUse string_use_ = StringUse::kText;
  std::filesystem::path folder_;
};
