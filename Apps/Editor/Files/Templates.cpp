// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/Templates.h"

#include <QCoreApplication>
#include <QFile>
#include <string_view>

/// Makes the resources known, which a static library does not do by itself. In no namespace, as the macro needs it.
static void LoadTemplateResources() { Q_INIT_RESOURCE(Templates); }

namespace {

struct Templates {
  Q_DECLARE_TR_FUNCTIONS(Templates)
};

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
  return {{{}, Templates::tr("Empty"), Templates::tr("A document without nodes.")},
          {QStringLiteral("shaded"), Templates::tr("Shaded Terrain"),
           Templates::tr("A generated height field, lit from the upper left.")},
          {QStringLiteral("bands"), Templates::tr("Height Bands"),
           Templates::tr("Terraces, and a soft mask for each band of heights.")},
          {QStringLiteral("cliffs"), Templates::tr("Cliffs"),
           Templates::tr("How steep the land is, and a mask of the steepest places.")},
          {QStringLiteral("lakes"), Templates::tr("Lakes"),
           Templates::tr("Water in the low places, each lake with a number, and the shores.")},
          {QStringLiteral("relief"), Templates::tr("Beveled Shape"),
           Templates::tr("A mask raised with a bevel and lit. Connect your own mask.")},
          {QStringLiteral("hollows"), Templates::tr("Hollows"),
           Templates::tr("Land shaded by how much of the sky each place sees.")}};
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
