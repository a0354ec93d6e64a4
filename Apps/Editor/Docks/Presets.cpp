// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/Presets.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QUrl>
#include <cmath>
#include <optional>
#include <string_view>

#include "Host/Documents/Findings.h"
#include "Host/Files/ImageFile.h"
#include "Host/Math/Geometry.h"

namespace {

using ScEng::Status;

const QString kEnding = QStringLiteral(".json");
constexpr int kLongestName = 100;
/// No preset of a node is nearly as large.
constexpr qint64 kLargestFile = 1 << 20;

Status MakeError(const QString& name, const std::string& what) {
  return Status::Error(ScEng::MakeLine("preset \"" + name.toStdString() + "\": " + what));
}

QJsonValue ToJson(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return value.GetFlag();
    case PlugType::kNumber: return value.GetNumber();
    case PlugType::kText: return QString::fromStdString(value.GetText());
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return QJsonArray{color.red, color.green, color.blue, color.opacity};
    }
    case PlugType::kPoint: return QJsonArray{value.GetPoint().x, value.GetPoint().y};
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return QJsonArray{frame.x, frame.y, frame.width, frame.height};
    }
    default: return {};
  }
}

/// The numbers of a list of that length; nothing for anything else.
std::optional<std::vector<double>> ReadNumbers(const QJsonValue& value, qsizetype count) {
  const QJsonArray list = value.toArray();
  if (!value.isArray() || list.size() != count) return std::nullopt;
  std::vector<double> numbers;
  for (const QJsonValue& entry : list) {
    if (!entry.isDouble()) return std::nullopt;
    numbers.push_back(entry.toDouble());
  }
  return numbers;
}

std::optional<PlugValue> FromJson(const QJsonValue& value, const Attribute& attribute) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: return value.isBool() ? std::optional(PlugValue(value.toBool())) : std::nullopt;
    case Attribute::Kind::kNumber: return value.isDouble() ? std::optional(PlugValue(value.toDouble())) : std::nullopt;
    case Attribute::Kind::kChoice: {
      const std::string word = value.toString().toStdString();
      const bool is_known = value.isString() && attribute.GetChoiceIndex(word) >= 0;
      return is_known ? std::optional(PlugValue(word)) : std::nullopt;
    }
    case Attribute::Kind::kString:
      return value.isString() ? std::optional(PlugValue(value.toString().toStdString())) : std::nullopt;
    case Attribute::Kind::kPoint: {
      const auto numbers = ReadNumbers(value, 2);
      return numbers ? std::optional(PlugValue(ScEng::Point{(*numbers)[0], (*numbers)[1]})) : std::nullopt;
    }
    case Attribute::Kind::kColor: {
      const auto n = ReadNumbers(value, 4);
      return n ? std::optional(PlugValue(ScEng::Rgbo{(*n)[0], (*n)[1], (*n)[2], (*n)[3]})) : std::nullopt;
    }
    case Attribute::Kind::kFrame: {
      const auto n = ReadNumbers(value, 4);
      return n ? std::optional(PlugValue(ScEng::Frame{(*n)[0], (*n)[1], (*n)[2], (*n)[3]})) : std::nullopt;
    }
  }
  return std::nullopt;
}

bool IsPath(const Attribute& attribute) {
  return attribute.GetKind() == Attribute::Kind::kString && attribute.GetStringUse() != Attribute::StringUse::kText;
}

QString MakeFileName(const QString& name) {
  // Signs that some file system has a use for, and the dot of hidden files, are written as codes.
  return QString::fromLatin1(QUrl::toPercentEncoding(name, " ", ".~"));
}

}  // namespace

Presets::Presets(const std::string& type_name)
    : Presets(type_name,
              QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/presets")) {}

Presets::Presets(const std::string& type_name, const QString& folder)
    : type_name_(type_name), folder_(folder + u'/' + MakeFileName(QString::fromStdString(type_name))) {}

QString Presets::GetFile(const QString& name) const { return folder_ + u'/' + MakeFileName(name) + kEnding; }

QStringList Presets::GetNames() const {
  QStringList names;
  for (const QString& file : QDir(folder_).entryList({u'*' + kEnding}, QDir::Files)) {
    names += QUrl::fromPercentEncoding(file.chopped(kEnding.size()).toLatin1());
  }
  names.sort(Qt::CaseInsensitive);
  return names;
}

Status Presets::Save(const QString& name, const Node& node) const {
  if (name.trimmed().isEmpty()) return Status::Error("a preset needs a name");
  if (name.size() > kLongestName) {
    return Status::Error("the name of a preset has at most " + std::to_string(kLongestName) + " characters");
  }
  QJsonObject attributes;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    if (IsPath(attribute)) continue;
    if (attribute.GetKind() == Attribute::Kind::kNumber && !std::isfinite(attribute.GetValue().GetNumber())) continue;
    attributes.insert(QString::fromStdString(attribute.GetName()), ToJson(attribute.GetValue()));
  }
  const QJsonObject preset{{QStringLiteral("type"), QString::fromStdString(type_name_)},
                           {QStringLiteral("attributes"), attributes}};
  const QString file = GetFile(name);
  if (!QDir().mkpath(folder_)) return MakeError(name, "the folder \"" + folder_.toStdString() + "\" cannot be made");
  const QByteArray text = QJsonDocument(preset).toJson();
  return ScEng::WriteWholeFile(file.toStdString(),
                               std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
}

Status Presets::Load(const QString& name, const Node& node, const std::string& id,
                     std::vector<ScEng::AttributeValue>& values, std::vector<std::string>& notes) const {
  QFile file(GetFile(name));
  if (!file.open(QIODevice::ReadOnly)) return MakeError(name, file.errorString().toStdString());
  const QByteArray text = file.read(kLargestFile + 1);
  if (text.size() > kLargestFile) return MakeError(name, "the file is larger than a preset may be, 1 MiB");
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(text, &error);
  if (document.isNull()) return MakeError(name, "it is no JSON: " + error.errorString().toStdString());
  if (document.object().value(QStringLiteral("type")).toString().toStdString() != type_name_) {
    return MakeError(name, "it is none of " + type_name_);
  }
  const QJsonObject attributes = document.object().value(QStringLiteral("attributes")).toObject();
  for (auto entry = attributes.begin(); entry != attributes.end(); ++entry) {
    const std::string key = entry.key().toStdString();
    const Attribute* attribute = node.GetAttribute(key);
    const auto value = attribute == nullptr || IsPath(*attribute) ? std::nullopt : FromJson(entry.value(), *attribute);
    if (value) {
      values.push_back({id + "." + attribute->GetName(), *value});
    } else {
      notes.push_back(MakeError(name, "the value for \"" + key + "\" does not fit and is left out").GetMessage());
    }
  }
  return {};
}

Status Presets::Remove(const QString& name) const {
  QFile file(GetFile(name));
  return file.remove() ? Status() : MakeError(name, file.errorString().toStdString());
}
