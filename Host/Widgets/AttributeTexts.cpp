// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/AttributeTexts.h"

#include <dlfcn.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <filesystem>

#include "Host/Util/Log.h"

namespace ScEng {
namespace {

const char kOwnObject = 0;

/// All sentences, by type and attribute. A missing file is no error: panels work without tooltips.
QJsonObject ReadTexts() {
  Dl_info self{};
  if (dladdr(&kOwnObject, &self) == 0 || self.dli_fname == nullptr) return {};
  const std::filesystem::path folder = std::filesystem::path(self.dli_fname).parent_path();
  // An installation has a folder for data that its library folder need not lie beside; a build folder is laid out
  // plainly.
  for (const char* place : {VALUE_DATA_FROM_LIBRARIES, "../share/value"}) {
    QFile file(QString::fromStdString((folder / place / "attribute_texts.json").lexically_normal().string()));
    if (!file.open(QIODevice::ReadOnly)) continue;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (document.isObject()) return document.object();
    Log::Warning("%s is no JSON object: %s", qPrintable(file.fileName()), qPrintable(error.errorString()));
  }
  Log::Info("there is no attribute_texts.json near %s, so panels have no tooltips", folder.c_str());
  return {};
}

}  // namespace

QString FindAttributeText(const std::string& type_name, const std::string& attribute) {
  static const QJsonObject texts = ReadTexts();
  return texts[QString::fromStdString(type_name)].toObject()[QString::fromStdString(attribute)].toString();
}

}  // namespace ScEng
