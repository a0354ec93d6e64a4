// SPDX-License-Identifier: Apache-2.0
#include "Apps/Desktop/Theme.h"

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <QStyleFactory>

namespace {

/// The colours of one theme, from which the palette is made.
struct Theme {
  QColor window;
  QColor base;
  QColor text;
  QColor accent;
  QColor on_accent;
};

const Theme kLight{QColor(0xF5, 0xF6, 0xF8), QColor(0xFF, 0xFF, 0xFF), QColor(0x1E, 0x22, 0x28),
                   QColor(0x2F, 0x6F, 0xDE), QColor(0xFF, 0xFF, 0xFF)};
const Theme kDark{QColor(0x26, 0x29, 0x2E), QColor(0x1C, 0x1F, 0x23), QColor(0xE8, 0xEA, 0xED),
                  QColor(0x6A, 0xA5, 0xFF), QColor(0x10, 0x14, 0x1A)};

QColor Between(const QColor& a, const QColor& b, float share) {
  return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * share, a.greenF() + (b.greenF() - a.greenF()) * share,
                          a.blueF() + (b.blueF() - a.blueF()) * share);
}

QPalette MakePalette(const Theme& theme) {
  QPalette palette(theme.text, Between(theme.window, theme.text, 0.04F), Between(theme.window, Qt::white, 0.3F),
                   Between(theme.window, theme.text, 0.45F), Between(theme.window, theme.text, 0.25F), theme.text,
                   theme.text, theme.base, theme.window);
  palette.setColor(QPalette::Highlight, theme.accent);
  palette.setColor(QPalette::HighlightedText, theme.on_accent);
  palette.setColor(QPalette::Link, theme.accent);
  palette.setColor(QPalette::ToolTipBase, theme.base);
  palette.setColor(QPalette::ToolTipText, theme.text);
  palette.setColor(QPalette::PlaceholderText, Between(theme.base, theme.text, 0.5F));
  const QColor faint = Between(theme.window, theme.text, 0.45F);
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, faint);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, faint);
  return palette;
}

}  // namespace

bool ApplyTheme(const std::string& theme) {
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  const bool is_dark =
      theme.empty() ? QApplication::palette().color(QPalette::Window).lightnessF() < 0.5F : theme == "dark";
  QApplication::setPalette(MakePalette(is_dark ? kDark : kLight));
  return is_dark;
}
