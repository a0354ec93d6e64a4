// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/Settings.h"

#include <QStandardPaths>

QString GetSettingsFile() {
  return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/editor.ini");
}
