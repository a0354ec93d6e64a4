// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/AttributeText.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <filesystem>

#include "Host/Files/ImageFile.h"
#include "Host/Math/Geometry.h"

namespace {

QString JoinNumbers(std::initializer_list<double> numbers) {
  QStringList texts;
  for (const double number : numbers) texts += ShowNumber(number);
  return texts.join(u',');
}

PlugValue ReadForCommand(const Attribute& attribute) {
  const PlugValue& value = attribute.GetValue();
  if (attribute.GetKind() != Attribute::Kind::kString || attribute.GetStringUse() == Attribute::StringUse::kText) {
    return value;
  }
  if (value.GetText().empty()) return value;
  std::error_code error;
  const std::filesystem::path path = ScEng::MakePath(value.GetText(), attribute.GetFolder());
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? value : PlugValue(absolute.lexically_normal().string());
}

}  // namespace

QString ShowNumber(double number) { return QString::number(number, 'g', QLocale::FloatingPointShortest); }

QString ShowValue(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return value.GetFlag() ? QStringLiteral("true") : QStringLiteral("false");
    case PlugType::kNumber: return ShowNumber(value.GetNumber());
    case PlugType::kText: return QString::fromStdString(value.GetText());
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return JoinNumbers({color.red, color.green, color.blue, color.opacity});
    }
    case PlugType::kPoint: return JoinNumbers({value.GetPoint().x, value.GetPoint().y});
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return JoinNumbers({frame.x, frame.y, frame.width, frame.height});
    }
    default: return {};
  }
}

QString QuoteForShell(const QString& text) {
  const auto is_plain = [](QChar c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           QStringView(u"_-./,:=@%+").contains(c);
  };
  if (!text.isEmpty() && std::all_of(text.begin(), text.end(), is_plain)) return text;
  QString quoted = text;
  // Nothing is special between single quotes but their end.
  quoted.replace(u'\'', QStringLiteral("'\\''"));
  return u'\'' + quoted + u'\'';
}

std::vector<QString> MakeSetOptions(const Node& node, const std::string& id) {
  std::vector<QString> options;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    const bool is_driven = !node.GetAttributeSource(attribute.GetId()).empty();
    if (is_driven || attribute.GetValue() == attribute.GetDefault()) continue;
    const std::string name = id.empty() ? attribute.GetName() : id + "." + attribute.GetName();
    options.push_back(QStringLiteral("--set ") +
                      QuoteForShell(QString::fromStdString(name) + u'=' + ShowValue(ReadForCommand(attribute))));
  }
  return options;
}

QString MakeApplyCommand(const Node& node, const std::string& type_name) {
  QStringList words{QStringLiteral("value"), QStringLiteral("apply"), QuoteForShell(QString::fromStdString(type_name))};
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) {
    if (node.GetInplugs()[i].type == PlugType::kImage) words += {QStringLiteral("-i"), QStringLiteral("FILE")};
  }
  for (const QString& option : MakeSetOptions(node)) words += option;
  words += {QStringLiteral("-o"), QStringLiteral("FILE")};
  return words.join(u' ');
}
