// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/Panel.h"

#include <QApplication>
#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QPalette>
#include <QPixmap>
#include <QStyleFactory>
#include <cstdlib>
#include <string_view>

#include "Apps/Panel/PanelWindow.h"
#include "Host/Files/ImageFile.h"

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

/// Where a fatal message of Qt goes; Qt ends the process after it.
const PanelRequest* running_request = nullptr;

void TakeMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtFatalMsg || running_request == nullptr) return;
  // Several lines of advice that speak of Qt's plugins say less than this one.
  static_cast<void>(text);
  running_request->on_fatal("no window can be opened on the display; give --screenshot FILE to draw it without one");
}

ScEng::Status WriteScreenshot(const QPixmap& picture, const std::string& file) {
  const QByteArray format = QFileInfo(QString::fromStdString(file)).suffix().toLower().toLatin1();
  if (!QImageWriter::supportedImageFormats().contains(format)) {
    return ScEng::Status::Error("cannot write " + file + ": there is no picture format \"" + format.toStdString() +
                                "\"; use .png");
  }
  QByteArray bytes;
  QBuffer buffer(&bytes);
  if (!buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, format.constData())) {
    return ScEng::Status::Error("cannot write " + file + ": the picture cannot be encoded");
  }
  return ScEng::WriteWholeFile(file, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void ValueShowPanel(const PanelRequest& request,
                                                                      PanelAnswer& answer) {
  running_request = &request;
  qInstallMessageHandler(TakeMessage);
  if (!request.screenshot.empty()) qputenv("QT_QPA_PLATFORM", "offscreen");
  if (request.scale > 1) qputenv("QT_SCALE_FACTOR", QByteArray::number(request.scale));
  int count = 1;
  char name[] = "value";
  char* arguments[] = {name, nullptr};
  QApplication application(count, arguments);
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  const bool is_dark_desktop = QApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
  const bool is_dark = request.theme.empty() ? is_dark_desktop && request.screenshot.empty() : request.theme == "dark";
  QApplication::setPalette(MakePalette(is_dark ? kDark : kLight));
  {
    PanelWindow window(request);
    window.show();
    if (request.screenshot.empty()) {
      QApplication::exec();
    } else {
      QApplication::processEvents();
      if (QWidget* focused = QApplication::focusWidget()) focused->clearFocus();
      const QPixmap picture = window.grab();
      answer.width = picture.width();
      answer.height = picture.height();
      answer.status = WriteScreenshot(picture, request.screenshot);
    }
  }
  qInstallMessageHandler(nullptr);
  running_request = nullptr;
}
