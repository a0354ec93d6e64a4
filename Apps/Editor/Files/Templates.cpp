// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/Templates.h"

#include <QCoreApplication>
#include <QFile>
#include <string_view>

/// Makes the resources known, which a static library does not do by itself. In no namespace, as the macro needs it.
static void LoadTemplateResources() { Q_INIT_RESOURCE(Templates); }

namespace {

QString Tr(const char* text) { return QCoreApplication::translate("Templates", text); }

}  // namespace

QByteArray Template::ReadText() const {
  LoadTemplateResources();
  QFile file(QStringLiteral(":/editor/templates/") + name + QStringLiteral(".json"));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString Template::GetPicture() const {
  LoadTemplateResources();
  return name.isEmpty() ? QString() : QStringLiteral(":/editor/templates/") + name + QStringLiteral(".png");
}

QList<Template> ListTemplates() {
  return {
      {{}, Tr("Empty"), Tr("A document without nodes.")},
      {QStringLiteral("shaded"), Tr("Shaded Terrain"), Tr("A generated height field, lit from the upper left.")},
      {QStringLiteral("bands"), Tr("Height Bands"), Tr("Terraces, and a soft mask for each band of heights.")},
      {QStringLiteral("cliffs"), Tr("Cliffs"), Tr("How steep the land is, and a mask of the steepest places.")},
      {QStringLiteral("lakes"), Tr("Lakes"), Tr("Water in the low places, each lake with a number, and the shores.")},
      {QStringLiteral("relief"), Tr("Beveled Shape"), Tr("A mask raised with a bevel and lit. Connect your own mask.")},
      {QStringLiteral("hollows"), Tr("Hollows"), Tr("Land shaded by how much of the sky each place sees.")}};
}

std::unique_ptr<ScEng::EditSession> MakeFromTemplate(const Template& chosen,
                                                     const std::shared_ptr<const ScEng::NodeCatalog>& catalog,
                                                     const std::filesystem::path& state_folder,
                                                     ScEng::Findings& findings) {
  auto session = std::make_unique<ScEng::EditSession>(catalog, state_folder);
  if (chosen.name.isEmpty()) return session;
  const QByteArray text = chosen.ReadText();
  // The history starts with what the template holds, as it does with what a file holds.
  session->GetDocument().LoadText(std::string_view(text.constData(), static_cast<std::size_t>(text.size())), {},
                                  chosen.title.toStdString(), findings);
  if (findings.GetNumErrors() > 0) return nullptr;
  return session;
}
