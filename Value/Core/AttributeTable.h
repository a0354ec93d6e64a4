// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <vector>

#include "Host/Tools/Attribute.h"
#include "Host/Util/RefCounter.h"

/// One row of a node's attribute table; its place in the table is the attribute's id.
struct AttributeRow {
  Attribute::Kind kind;
  const char* name;
  // Of a number.
  double value = 0.0;
  double lowest = 0.0;
  double highest = 0.0;
  double step = 0.0;
  int decimals = 0;
  // Of a flag, and of a choice: the default, and its comma-separated words.
  bool flag = false;
  int index = 0;
  const char* words = "";
};

constexpr AttributeRow NumberRow(const char* name, double value, double lowest, double highest, double step,
                                 int decimals) {
  return {Attribute::Kind::kNumber, name, value, lowest, highest, step, decimals};
}

constexpr AttributeRow FlagRow(const char* name, bool value) {
  AttributeRow row{Attribute::Kind::kFlag, name};
  row.flag = value;
  return row;
}

constexpr AttributeRow ChoiceRow(const char* name, int default_index, const char* words) {
  AttributeRow row{Attribute::Kind::kChoice, name};
  row.index = default_index;
  row.words = words;
  return row;
}

/// Sizes a node's attribute list to the table and fills each place with a new attribute.
void DeclareAttributes(Node& node, std::vector<ScEng::RefPtr<Attribute>>& attributes,
                       std::span<const AttributeRow> table);
