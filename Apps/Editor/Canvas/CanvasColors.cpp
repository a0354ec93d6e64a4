// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/CanvasColors.h"

#include "Host/Tools/PlugValue.h"

QColor MixColors(const QColor& a, const QColor& b, double share) {
  const auto mix = [share](float x, float y) { return static_cast<float>(x + (y - x) * share); };
  return QColor::fromRgbF(mix(a.redF(), b.redF()), mix(a.greenF(), b.greenF()), mix(a.blueF(), b.blueF()));
}

CanvasColors::CanvasColors(const QPalette& palette) {
  const QColor window = palette.color(QPalette::Active, QPalette::Window);
  const QColor base = palette.color(QPalette::Active, QPalette::Base);
  text = palette.color(QPalette::Active, QPalette::WindowText);
  is_dark = window.lightnessF() < 0.5F;
  ground = is_dark ? MixColors(base, Qt::black, 0.12) : MixColors(window, text, 0.045);
  grid = MixColors(ground, text, is_dark ? 0.13 : 0.16);
  body = is_dark ? MixColors(window, Qt::white, 0.035) : base;
  header = MixColors(body, text, is_dark ? 0.07 : 0.035);
  edge = MixColors(body, text, is_dark ? 0.26 : 0.24);
  faint = MixColors(body, text, 0.62);
  accent = palette.color(QPalette::Active, QPalette::Highlight);
  on_accent = palette.color(QPalette::Active, QPalette::HighlightedText);
  error = is_dark ? QColor(0xF2, 0x6D, 0x6D) : QColor(0xC6, 0x2F, 0x2F);
  warning = is_dark ? QColor(0xE8, 0xB3, 0x4A) : QColor(0xA8, 0x6A, 0x00);
  shadow = QColor(0, 0, 0, is_dark ? 60 : 20);
}

QColor CanvasColors::GetKind(unsigned type) const {
  switch (type) {
    case PlugType::kImage: return is_dark ? QColor(0xD8, 0xA8, 0x4E) : QColor(0xB9, 0x7C, 0x14);
    case PlugType::kNumber: return is_dark ? QColor(0x6C, 0xC0, 0x8B) : QColor(0x2C, 0x8A, 0x52);
    case PlugType::kFlag: return is_dark ? QColor(0xE0, 0x7F, 0xA4) : QColor(0xB8, 0x3F, 0x72);
    case PlugType::kText: return is_dark ? QColor(0xA9, 0x93, 0xE8) : QColor(0x6D, 0x50, 0xC2);
    case PlugType::kColor: return is_dark ? QColor(0x58, 0xC0, 0xCC) : QColor(0x11, 0x80, 0x8C);
    case PlugType::kPoint: return is_dark ? QColor(0xE2, 0x93, 0x6A) : QColor(0xB4, 0x58, 0x24);
    case PlugType::kFrame: return is_dark ? QColor(0x8F, 0xA8, 0xC8) : QColor(0x4A, 0x68, 0x90);
    default: return MixColors(body, text, 0.5);
  }
}
