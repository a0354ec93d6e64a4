// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/WireFit.h"

#include <QCoreApplication>
#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Apps/Editor/Canvas/GraphScene.h"

namespace {

/// The texts of this file.
class WireFit {
  Q_DECLARE_TR_FUNCTIONS(WireFit)
};

bool KindsFit(unsigned one, unsigned other) {
  return one == other || one == PlugType::kNone || other == PlugType::kNone;
}

/// Whether wires lead from one node to another, however many are in between.
bool LeadsTo(const GraphScene& scene, const std::string& from, const std::string& to,
             const std::optional<ScEng::DocumentConnection>& replaced) {
  std::unordered_set<std::string> seen{from};
  std::vector<std::string> open{from};
  while (!open.empty()) {
    const std::string id = std::move(open.back());
    open.pop_back();
    if (id == to) return true;
    for (const WireItem* wire : scene.GetWires(id)) {
      const ScEng::DocumentConnection& connection = wire->GetConnection();
      if (replaced && connection == *replaced) continue;
      const std::string next = GetNodeOfPlug(connection.to);
      if (GetNodeOfPlug(connection.from) == id && seen.insert(next).second) open.push_back(next);
    }
  }
  return false;
}

}  // namespace

QString NamePlugKind(unsigned type) {
  switch (type) {
    case PlugType::kImage: return WireFit::tr("image");
    case PlugType::kFlag: return WireFit::tr("flag");
    case PlugType::kNumber: return WireFit::tr("number");
    case PlugType::kText: return WireFit::tr("text");
    case PlugType::kColor: return WireFit::tr("color");
    case PlugType::kPoint: return WireFit::tr("point");
    case PlugType::kFrame: return WireFit::tr("frame");
    default: return WireFit::tr("unknown");
  }
}

QString FindMisfit(const GraphScene& scene, const PlugRef& one, const PlugRef& other,
                   const std::optional<ScEng::DocumentConnection>& replaced) {
  if (one.is_input == other.is_input) {
    return one.is_input ? WireFit::tr("Both are inputs") : WireFit::tr("Both are outputs");
  }
  const PlugRef& from = one.is_input ? other : one;
  const PlugRef& to = one.is_input ? one : other;
  if (from.node == to.node) return WireFit::tr("A node cannot feed itself");
  if (!KindsFit(from.type, to.type)) {
    return WireFit::tr("Output: %1, input: %2").arg(NamePlugKind(from.type), NamePlugKind(to.type));
  }
  return LeadsTo(scene, to.node, from.node, replaced) ? WireFit::tr("This would close a cycle") : QString();
}

bool HasFittingRow(const GraphScene& scene, const PlugRef& fixed, const std::string& node) {
  const NodeItem* item = scene.FindNode(node);
  if (item == nullptr) return false;
  const std::vector<PlugFace>& rows = fixed.is_input ? item->GetFace().outputs : item->GetFace().inputs;
  return std::any_of(rows.begin(), rows.end(), [&](const PlugFace& row) { return KindsFit(row.type, fixed.type); });
}
