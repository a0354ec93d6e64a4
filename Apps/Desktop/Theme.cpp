// SPDX-License-Identifier: Apache-2.0
#include "Apps/Desktop/Theme.h"

#include <QApplication>
#include <QColor>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOptionMenuItem>

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

/// Draws the borders of menus and other popups, and the lines in menus, so that they are seen on dark ground as well,
/// where the style below draws them darker still.
class ThemeStyle : public QProxyStyle {
 public:
  ThemeStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    const bool is_popup = element == PE_Frame && widget != nullptr && widget->windowType() == Qt::Popup;
    const bool is_menu = element == PE_PanelMenu || element == PE_FrameMenu;
    if (!is_popup && element != PE_FrameMenu) QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (!is_popup && !is_menu) return;
    painter->save();
    painter->setPen(option->palette.color(QPalette::Mid));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
  }

  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override {
    const auto* item = element == CE_MenuItem ? qstyleoption_cast<const QStyleOptionMenuItem*>(option) : nullptr;
    const bool is_line = item != nullptr && item->menuItemType == QStyleOptionMenuItem::Separator;
    if (!is_line || !item->text.isEmpty()) return QProxyStyle::drawControl(element, option, painter, widget);
    constexpr int kInset = 6;
    painter->fillRect(QRect(item->rect.left() + kInset, item->rect.center().y(), item->rect.width() - 2 * kInset, 1),
                      item->palette.color(QPalette::Mid));
  }
};

}  // namespace

bool ApplyTheme(const std::string& theme) {
  QApplication::setStyle(new ThemeStyle);
  const bool is_dark =
      theme.empty() ? QApplication::palette().color(QPalette::Window).lightnessF() < 0.5F : theme == "dark";
  QApplication::setPalette(MakePalette(is_dark ? kDark : kLight));
  return is_dark;
}
