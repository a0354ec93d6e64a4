// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Editor.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPixmap>
#include <QSettings>
#include <QTranslator>

#include "Apps/Desktop/Screenshot.h"
#include "Apps/Desktop/Theme.h"
#include "Apps/Desktop/WindowProcess.h"
#include "Apps/Editor/Files/Settings.h"
#include "Apps/Editor/Window/EditorWindow.h"

namespace {

std::string FindTheme(const EditorRequest& request) {
  if (!request.theme.empty()) return request.theme;
  if (!request.screenshot.empty()) return "light";
  const QSettings settings(GetSettingsFile(), QSettings::IniFormat);
  return settings.value(QStringLiteral("window/theme")).toString().toStdString();
}

/// What Qt writes on the buttons of dialogs. Its own translations are a package that need not be there.
[[maybe_unused]] constexpr const char* kButtonTexts[] = {
    QT_TRANSLATE_NOOP("QPlatformTheme", "OK"),     QT_TRANSLATE_NOOP("QPlatformTheme", "Save"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Open"),   QT_TRANSLATE_NOOP("QPlatformTheme", "Discard"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Cancel"), QT_TRANSLATE_NOOP("QPlatformTheme", "Close"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "&Yes"),   QT_TRANSLATE_NOOP("QPlatformTheme", "&No"),
};

/// The texts of the editor and of Qt in the user's language, where there are any.
class Translations {
 public:
  Translations() {
    const QLocale locale;
    Install(editor_, locale, QString(), QStringLiteral(":/translations"));
    Install(qt_, locale, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
  }

 private:
  static void Install(QTranslator& translator, const QLocale& locale, const QString& name, const QString& folder) {
    const QString prefix = name.isEmpty() ? QString() : QStringLiteral("_");
    if (translator.load(locale, name, prefix, folder)) QCoreApplication::installTranslator(&translator);
  }

  QTranslator editor_;
  QTranslator qt_;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) void ValueShowEditor(const EditorRequest& request,
                                                                       EditorAnswer& answer) {
  const bool is_drawn = !request.screenshot.empty();
  const WindowProcess process({.offscreen = is_drawn, .scale = request.scale, .on_fatal = request.on_fatal});
  QApplication::setApplicationName(QStringLiteral("value-editor"));
  QApplication::setDesktopFileName(QStringLiteral("value-editor"));
  const Translations translations;
  ApplyTheme(FindTheme(request));
  EditorWindow window(request);
  window.show();
  window.Start(answer);
  if (!answer.problems.empty()) return;
  if (!is_drawn) {
    QApplication::exec();
    return;
  }
  window.WaitUntilDone();
  const QPixmap picture = window.grab();
  answer.width = picture.width();
  answer.height = picture.height();
  answer.status = WriteScreenshot(picture, request.screenshot);
}
