// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Attribute.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Node.h"

namespace {

std::vector<std::string> SplitWords(const std::string& list) {
  std::vector<std::string> words;
  std::size_t from = 0;
  while (from <= list.size() && !list.empty()) {
    const std::size_t comma = std::min(list.find(',', from), list.size());
    words.push_back(list.substr(from, comma - from));
    from = comma + 1;
  }
  return words;
}

double RoundToDecimals(double value, int decimals) {
  const double scale = std::pow(10.0, decimals);
  const double scaled = value * scale;
  return std::isfinite(scaled) ? std::round(scaled) / scale : value;
}

PlugValue MakeDefault(const AttributeRow& row) {
  const auto& [first, second, third, fourth] = row.numbers;
  switch (row.kind) {
    case Attribute::Kind::kFlag: return row.flag;
    case Attribute::Kind::kNumber: return first;
    case Attribute::Kind::kChoice:
    case Attribute::Kind::kString: return std::string(row.string);
    case Attribute::Kind::kColor: return ScEng::Rgbo{first, second, third, fourth};
    case Attribute::Kind::kPoint: return ScEng::Point{first, second};
    case Attribute::Kind::kFrame: break;
  }
  return ScEng::Frame{first, second, third, fourth};
}

}  // namespace

Attribute::Attribute(Node* node, unsigned id, const AttributeRow& row)
    : Attribute(node, id, row.name, row.kind, MakeDefault(row)) {
  row_ = &row;
  string_use_ = row.string_use;
  if (kind_ == Kind::kNumber) TakeNumberForm(row.lowest, row.highest, row.step, row.decimals);
  if (kind_ == Kind::kChoice) TakeWords(row.index, row.words);
}

Attribute::Attribute(Node* node, unsigned id, std::string name, Kind kind, PlugValue value)
    : node_(node), id_(id), name_(std::move(name)), kind_(kind), value_(value), default_(std::move(value)) {}

Attribute::Attribute(Node* node, unsigned id, std::string name, bool value)
    : Attribute(node, id, std::move(name), Kind::kFlag, PlugValue(value)) {}

Attribute::Attribute(Node* node, unsigned id, std::string name, double value, double lowest, double highest,
                     double step, int decimals)
    : Attribute(node, id, std::move(name), Kind::kNumber, PlugValue(value)) {
  TakeNumberForm(lowest, highest, step, decimals);
}

Attribute::Attribute(Node* node, unsigned id, std::string name, int default_index, const std::string& values)
    : Attribute(node, id, std::move(name), Kind::kChoice, PlugValue(std::string())) {
  TakeWords(default_index, values);
}

Attribute::Attribute(Node* node, unsigned id, std::string name, std::string value, StringUse use)
    : Attribute(node, id, std::move(name), Kind::kString, PlugValue(std::move(value))) {
  string_use_ = use;
}

Attribute::Attribute(Node* node, unsigned id, std::string name, const ScEng::Rgbo& value)
    : Attribute(node, id, std::move(name), Kind::kColor, PlugValue(value)) {}

Attribute::Attribute(Node* node, unsigned id, std::string name, const ScEng::Point& value)
    : Attribute(node, id, std::move(name), Kind::kPoint, PlugValue(value)) {}

Attribute::Attribute(Node* node, unsigned id, std::string name, const ScEng::Frame& value)
    : Attribute(node, id, std::move(name), Kind::kFrame, PlugValue(value)) {}

void Attribute::TakeNumberForm(double lowest, double highest, double step, int decimals) {
  lowest_ = lowest;
  highest_ = highest;
  step_ = step;
  decimals_ = decimals;
}

void Attribute::TakeWords(int default_index, const std::string& words) {
  choices_ = SplitWords(words);
  const auto index = static_cast<std::size_t>(default_index);
  if (default_index >= 0 && index < choices_.size()) value_ = default_ = PlugValue(choices_[index]);
}

const char* Attribute::GetKindName() const {
  switch (kind_) {
    case Kind::kFlag: return "flag";
    case Kind::kNumber: return "number";
    case Kind::kChoice: return "choice";
    case Kind::kString: return "string";
    case Kind::kColor: return "color";
    case Kind::kPoint: return "point";
    case Kind::kFrame: break;
  }
  return "frame";
}

unsigned Attribute::GetPlugType() const { return value_.GetType(); }

void Attribute::ResetToDefault() { Take(kind_, default_); }

int Attribute::GetChoiceIndex(const std::string& word) const {
  const auto found = std::find(choices_.begin(), choices_.end(), word);
  if (word.empty() || found == choices_.end()) return -1;
  return static_cast<int>(found - choices_.begin());
}

void Attribute::SetDefault(double first, double second, double third, double fourth) {
  switch (kind_) {
    case Kind::kNumber: default_ = PlugValue(first); break;
    case Kind::kPoint: default_ = PlugValue(ScEng::Point{first, second}); break;
    case Kind::kColor: default_ = PlugValue(ScEng::Rgbo{first, second, third, fourth}); break;
    case Kind::kFrame: default_ = PlugValue(ScEng::Frame{first, second, third, fourth}); break;
    case Kind::kFlag: default_ = PlugValue(first != 0.0); break;
    case Kind::kChoice:
    case Kind::kString: break;
  }
}

bool Attribute::Take(Kind kind, PlugValue value) {
  if (kind != kind_) return false;
  value_ = std::move(value);
  if (node_ != nullptr) node_->NotifyChanged();
  return true;
}

bool Attribute::SetNumber(double value, bool quantized) {
  if (std::isnan(value)) return false;
  const double wanted = quantized ? RoundToDecimals(value, decimals_) : value;
  return Take(Kind::kNumber, PlugValue(std::clamp(wanted, lowest_, highest_)));
}

bool Attribute::SetFlag(bool value, bool) { return Take(Kind::kFlag, PlugValue(value)); }

bool Attribute::SetChoice(const std::string& word, bool) {
  return GetChoiceIndex(word) >= 0 && Take(Kind::kChoice, PlugValue(word));
}

bool Attribute::SetString(const std::string& value, bool) { return Take(Kind::kString, PlugValue(value)); }

bool Attribute::SetRgbo(double red, double green, double blue, double opacity, bool) {
  return Take(Kind::kColor, PlugValue(ScEng::Rgbo{red, green, blue, opacity}));
}

bool Attribute::SetPoint(double x, double y, bool quantized) {
  const ScEng::Point point = quantized ? ScEng::Point{std::round(x), std::round(y)} : ScEng::Point{x, y};
  return Take(Kind::kPoint, PlugValue(point));
}

bool Attribute::SetFrame(double x, double y, double width, double height, bool quantized) {
  ScEng::Frame frame{x, y, width, height};
  if (quantized) frame = {std::round(x), std::round(y), std::round(width), std::round(height)};
  return Take(Kind::kFrame, PlugValue(frame));
}
