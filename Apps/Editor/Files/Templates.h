// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <filesystem>
#include <memory>

#include "Host/Documents/Findings.h"
#include "Host/Editing/EditSession.h"
#include "Host/Tools/NodeLibrary.h"

/// A document to start from.
struct Template {
  /// The name of its files; empty for the document without nodes.
  QString name;
  QString title;
  QString sentence;

  /// The document as text.
  [[nodiscard]] QByteArray ReadText() const;
  /// The resource path of its picture; empty where it has none.
  [[nodiscard]] QString GetPicture() const;
};

/// The empty document, then those that are built into the program. They read no files.
QList<Template> ListTemplates();

/// A new document without a file that holds what the template does. Null, with the reasons in `findings`, where a type
/// of node is missing.
std::unique_ptr<ScEng::EditSession> MakeFromTemplate(const Template& chosen,
                                                     const std::shared_ptr<const ScEng::NodeCatalog>& catalog,
                                                     const std::filesystem::path& state_folder,
                                                     ScEng::Findings& findings);
