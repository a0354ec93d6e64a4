// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/NodeHelp.h"

#include <QCoreApplication>
#include <QStringList>
#include <limits>

#include "Apps/Editor/Docks/AttributeText.h"
#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeRecord.h"

namespace {

struct NodeHelp {
  Q_DECLARE_TR_FUNCTIONS(NodeHelp)
};

QString Escape(const std::string& text) { return QString::fromStdString(text).toHtmlEscaped(); }

QString Code(const QString& text) {
  return QStringLiteral("<code>") + text.toHtmlEscaped() + QStringLiteral("</code>");
}

template <class Function>
std::string AskLibrary(const char* operation, const Function& function) {
  return ScEng::AskGuarded(operation, std::string(), function);
}

/// "auto_level" is "Auto level".
QString MakeTitle(const std::string& name) {
  QString title = QString::fromStdString(name).replace(u'_', u' ');
  if (!title.isEmpty()) title[0] = title[0].toUpper();
  return title.toHtmlEscaped();
}

QString DescribeRange(const Attribute& attribute) {
  const double most = std::numeric_limits<double>::max();
  const bool has_lowest = attribute.GetLowest() > -most;
  const bool has_highest = attribute.GetHighest() < most;
  if (has_lowest && has_highest) {
    return NodeHelp::tr("from %1 to %2").arg(ShowNumber(attribute.GetLowest()), ShowNumber(attribute.GetHighest()));
  }
  if (has_lowest) return NodeHelp::tr("from %1").arg(ShowNumber(attribute.GetLowest()));
  return has_highest ? NodeHelp::tr("up to %1").arg(ShowNumber(attribute.GetHighest())) : QString();
}

QString DescribeWords(const Attribute& attribute) {
  const AttributeRow* row = attribute.GetRow();
  const QStringList labels = row != nullptr ? QString::fromUtf8(row->labels).split(u',') : QStringList();
  QStringList words;
  for (const std::string& word : attribute.GetChoices()) {
    const qsizetype place = words.size();
    QString text = Code(QString::fromStdString(word));
    const QString label = place < labels.size() ? labels[place].trimmed() : QString();
    if (!label.isEmpty() && label != QString::fromStdString(word))
      text += QStringLiteral(" (") + label.toHtmlEscaped() + u')';
    words += text;
  }
  return words.join(QStringLiteral(", "));
}

QString DescribeAttribute(const Attribute& attribute) {
  const AttributeRow* row = attribute.GetRow();
  QString text = QStringLiteral("<p><b>") + MakeTitle(attribute.GetName()) + QStringLiteral("</b>&nbsp; ") +
                 Code(QString::fromStdString(attribute.GetName())) + QStringLiteral("<br/>");
  if (row != nullptr && *row->text != '\0') text += Escape(row->text) + QStringLiteral("<br/>");
  QStringList facts{Escape(attribute.GetKindName())};
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    const QString range = DescribeRange(attribute);
    if (!range.isEmpty()) facts += range;
    if (row != nullptr && *row->unit != '\0') facts += NodeHelp::tr("in %1").arg(Escape(row->unit));
  }
  const QString value = ShowValue(attribute.GetDefault());
  if (!value.isEmpty()) facts += NodeHelp::tr("default %1").arg(Code(value));
  text += QStringLiteral("<small>") + facts.join(QStringLiteral(" · ")) + QStringLiteral("</small>");
  if (attribute.GetKind() == Attribute::Kind::kChoice) {
    text += QStringLiteral("<br/><small>") + NodeHelp::tr("One of %1").arg(DescribeWords(attribute)) +
            QStringLiteral("</small>");
  }
  return text + QStringLiteral("</p>");
}

QString DescribePlug(const std::string& name, const std::string& alias, unsigned type, bool takes_many) {
  QString text = QStringLiteral("<li>") + Code(QString::fromStdString(name));
  if (!alias.empty() && alias != name) text += QStringLiteral(" (") + Escape(alias) + u')';
  text += QStringLiteral(" <small>") + Escape(PlugType::GetName(type));
  if (takes_many) text += QStringLiteral(" · ") + NodeHelp::tr("any number of connections");
  return text + QStringLiteral("</small></li>");
}

QString MakeHeading(const QString& text) { return QStringLiteral("<h3>") + text + QStringLiteral("</h3>"); }

}  // namespace

QString MakeNodeHelp(const NodeInterface& descriptor) {
  const std::string name = AskLibrary("GetName", [&] { return descriptor.GetName(); });
  const std::string type_name = AskLibrary("GetTypeName", [&] { return descriptor.GetNodeFactory()->GetTypeName(); });
  const std::string library = AskLibrary("GetLibraryName", [&] { return descriptor.GetLibraryName(); });
  const std::string icon = AskLibrary("GetIconPath", [&] { return descriptor.GetIconPath(); });
  const auto node = ScEng::AskGuarded("CreateNode", ScEng::RefPtr<Node>(),
                                      [&] { return ScEng::RefPtr<Node>(descriptor.GetNodeFactory()->CreateNode()); });
  QString text = QStringLiteral("<h2>");
  if (!icon.empty()) text += QStringLiteral("<img src=\"%1\" width=\"24\" height=\"24\"/>&nbsp; ").arg(Escape(icon));
  text += Escape(name) + QStringLiteral("</h2>");
  const NodeRecord* record = node ? node->GetRecord() : nullptr;
  if (record != nullptr) text += QStringLiteral("<p>") + Escape(record->sentence) + QStringLiteral("</p>");
  QStringList origin;
  if (record != nullptr && *record->group != '\0') origin += Escape(record->group);
  origin += Code(QString::fromStdString(type_name));
  if (!library.empty()) origin += NodeHelp::tr("from %1", "a library").arg(Escape(library));
  text += QStringLiteral("<p><small>") + origin.join(QStringLiteral(" · ")) + QStringLiteral("</small></p>");
  if (!node) return text;

  if (node->GetNumAttributes() > 0) text += MakeHeading(NodeHelp::tr("Attributes"));
  for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) text += DescribeAttribute(*node->GetAttribute(i));
  if (node->GetNumRegularInputs() > 0) {
    text += MakeHeading(NodeHelp::tr("Inputs")) + QStringLiteral("<ul>");
    for (unsigned i = 0; i < node->GetNumRegularInputs(); ++i) {
      const PlugRecord& plug = node->GetInplugs()[i];
      const std::string alias = AskLibrary("GetInplugAlias", [&] { return node->GetInplugAlias(i); });
      text += DescribePlug(plug.name, alias, plug.type, plug.connections == PlugRecord::kAnyNumber);
    }
    text += QStringLiteral("</ul>");
  }
  if (!node->GetOutplugs().empty()) {
    text += MakeHeading(NodeHelp::tr("Outputs")) + QStringLiteral("<ul>");
    for (unsigned i = 0; i < node->GetOutplugs().size(); ++i) {
      const PlugRecord& plug = node->GetOutplugs()[i];
      const std::string alias = AskLibrary("GetOutplugAlias", [&] { return node->GetOutplugAlias(i); });
      text += DescribePlug(plug.name, alias, plug.type, false);
    }
    text += QStringLiteral("</ul>");
  }
  if (node->GetNumAttributes() > 0) {
    text += QStringLiteral("<p><small>") + NodeHelp::tr("Every attribute is an input too: a wire can feed it.") +
            QStringLiteral("</small></p>");
  }
  if (record != nullptr && *record->keywords != '\0') {
    text += QStringLiteral("<p><small>") +
            NodeHelp::tr("Also found as: %1").arg(Escape(record->keywords).replace(u',', QStringLiteral(", "))) +
            QStringLiteral("</small></p>");
  }
  return text;
}
