// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainKeys.h"

namespace {

constexpr double kDegrees = 5.0;
constexpr double kWay = 0.05;
constexpr double kZoom = 1.15;

TerrainMove MakeMove(bool is_pan, double right, double up) {
  if (is_pan) return {TerrainMove::kPan, right * kWay, up * kWay};
  return {TerrainMove::kOrbit, right * kDegrees, up * kDegrees};
}

}  // namespace

std::optional<TerrainMove> FindTerrainKey(const QKeyEvent& event) {
  const Qt::KeyboardModifiers others = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
  if ((event.modifiers() & others) != Qt::NoModifier) return std::nullopt;
  const bool is_pan = event.modifiers().testFlag(Qt::ShiftModifier);
  switch (event.key()) {
    case Qt::Key_Left: return MakeMove(is_pan, -1.0, 0.0);
    case Qt::Key_Right: return MakeMove(is_pan, 1.0, 0.0);
    case Qt::Key_Up: return MakeMove(is_pan, 0.0, 1.0);
    case Qt::Key_Down: return MakeMove(is_pan, 0.0, -1.0);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_PageUp: return TerrainMove{TerrainMove::kZoom, kZoom, 0.0};
    case Qt::Key_Minus:
    case Qt::Key_PageDown: return TerrainMove{TerrainMove::kZoom, 1.0 / kZoom, 0.0};
    case Qt::Key_Home: return TerrainMove{TerrainMove::kReset, 0.0, 0.0};
    case Qt::Key_W: return TerrainMove{TerrainMove::kWireframe, 0.0, 0.0};
    default: return std::nullopt;
  }
}
