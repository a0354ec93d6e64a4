// SPDX-License-Identifier: Apache-2.0
#include "Value/Core/AttributeTable.h"

namespace {

Attribute* MakeAttribute(Node& node, unsigned id, const AttributeRow& row) {
  switch (row.kind) {
    case Attribute::Kind::kFlag: return new Attribute(&node, id, row.name, row.flag);
    case Attribute::Kind::kChoice: return new Attribute(&node, id, row.name, row.index, row.words);
    default: break;
  }
  return new Attribute(&node, id, row.name, row.value, row.lowest, row.highest, row.step, row.decimals);
}

}  // namespace

void DeclareAttributes(Node& node, std::vector<ScEng::RefPtr<Attribute>>& attributes,
                       std::span<const AttributeRow> table) {
  attributes.resize(table.size());
  unsigned id = 0;
  for (const AttributeRow& row : table) {
    attributes[id].Reset(MakeAttribute(node, id, row));
    ++id;
  }
}
