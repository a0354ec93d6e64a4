// SPDX-License-Identifier: Apache-2.0
#include "Host/NodeKit/AttributesPanel.h"

#include <algorithm>
#include <vector>

#include "Host/Tools/NodeRecord.h"
#include "Host/Util/HostModule.h"
#include "Host/Util/Log.h"
#include "Host/Widgets/QNodeAttributesWidget.h"

namespace {

using AdditionalInfo = QNodeAttributesWidget::AdditionalInfo;

decltype(&HostCreateAttributesWidget) LoadPanels() {
  ScEng::HostModule module("HostWidgets", "the library of attribute panels");
  const auto function = module.Load<decltype(&HostCreateAttributesWidget)>("HostCreateAttributesWidget");
  if (function == nullptr) Log::Error("%s", module.GetProblem().c_str());
  return function;
}

/// One entry per attribute, or none where every row is presented as it is.
std::vector<AdditionalInfo> MakeEntries(const NodeRecord& record) {
  const auto needs_entry = [](const AttributeRow& row) { return *row.labels != '\0' || row.slider_exponent != 0.0; };
  if (std::none_of(record.attributes.begin(), record.attributes.end(), needs_entry)) return {};
  std::vector<AdditionalInfo> entries(record.attributes.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    entries[i].labels = record.attributes[i].labels;
    entries[i].slider_exponent = record.attributes[i].slider_exponent;
  }
  return entries;
}

}  // namespace

QWidget* CreateAttributesPanel(Node* node, QWidget* parent, const NodeInterface& descriptor, const NodeRecord& record) {
  static const auto create = LoadPanels();
  if (create == nullptr) return nullptr;
  // The panel copies what it needs, so the entries last for this call only.
  const std::vector<AdditionalInfo> entries = MakeEntries(record);
  return create(parent, node, &descriptor, entries.empty() ? nullptr : entries.data(), false);
}
