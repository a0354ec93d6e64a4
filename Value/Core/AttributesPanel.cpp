// SPDX-License-Identifier: Apache-2.0
#include "Value/Core/AttributesPanel.h"

#include <vector>

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

}  // namespace

QWidget* CreateAttributesPanel(Node* node, QWidget* parent, const NodeInterface& descriptor,
                               std::span<const PanelEntry> entries) {
  static const auto create = LoadPanels();
  if (create == nullptr) return nullptr;
  // The panel copies what it needs, so the array lasts for this call only.
  std::vector<AdditionalInfo> infos(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    infos[i].labels = entries[i].labels;
    infos[i].slider_exponent = entries[i].slider_exponent;
  }
  return create(parent, node, &descriptor, infos.empty() ? nullptr : infos.data(), false);
}
