// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/SaveAsTo.h"

#include <QCoreApplication>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Editor/Files/DocumentPath.h"
#include "Host/Files/ImageFile.h"

namespace {

namespace fs = std::filesystem;
using ScEng::Status;

/// What has to change of a document that moves to another folder.
struct PathChanges {
  std::vector<ScEng::AttributeValue> attributes;
  std::vector<std::pair<std::size_t, ScEng::DocumentOutput>> outputs;
};

fs::path MakeAbsolute(const fs::path& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path.empty() ? fs::path(".") : path, error);
  return (error ? path : absolute).lexically_normal();
}

bool IsRelative(const std::string& written) { return !written.empty() && ScEng::MakePath(written).is_relative(); }

PathChanges FindChanges(const ScEng::GraphDocument& document, const fs::path& before, const fs::path& now,
                        bool with_written) {
  PathChanges changes;
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    for (std::size_t i = 0; node != nullptr && i < node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *node->GetAttribute(i);
      if (attribute.GetKind() != Attribute::Kind::kString) continue;
      if (attribute.GetStringUse() == Attribute::StringUse::kText) continue;
      const std::string written = attribute.GetValue().GetText();
      const bool is_read = attribute.GetStringUse() == Attribute::StringUse::kReadPath;
      if (!IsRelative(written) || (!is_read && !with_written)) continue;
      const fs::path file = is_read ? ScEng::MakeReadPath(written, before) : ScEng::MakePath(written, before);
      const std::string moved = MakeDocumentPath(file, now);
      if (moved != written) changes.attributes.push_back({id + "." + attribute.GetName(), PlugValue(moved)});
    }
  }
  const std::vector<ScEng::DocumentOutput>& outputs = document.GetOutputs();
  for (std::size_t i = 0; with_written && i < outputs.size(); ++i) {
    if (!IsRelative(outputs[i].path)) continue;
    ScEng::DocumentOutput output = outputs[i];
    output.path = MakeDocumentPath(ScEng::MakePath(output.path, before), now);
    if (output.path != outputs[i].path) changes.outputs.emplace_back(i, std::move(output));
  }
  return changes;
}

Status Apply(ScEng::EditSession& session, const PathChanges& changes) {
  Status status;
  if (!changes.attributes.empty()) status = session.SetAttributes(changes.attributes);
  for (std::size_t i = 0; i < changes.outputs.size() && !status.IsError(); ++i) {
    status = session.SetOutput(changes.outputs[i].first, changes.outputs[i].second);
  }
  return status;
}

}  // namespace

Status SaveAsTo(ScEng::EditSession& session, const fs::path& file) {
  const fs::path before = MakeAbsolute(session.GetDocument().GetFolder());
  const fs::path now = MakeAbsolute(file).parent_path();
  if (MakeAbsolute(before / ".") == MakeAbsolute(now / ".")) return session.SaveAs(file);
  const PathChanges changes = FindChanges(session.GetDocument(), before, now, !session.GetFile().empty());
  if (changes.attributes.empty() && changes.outputs.empty()) return session.SaveAs(file);
  // What can be told ahead leaves the history alone.
  const std::string problem = ScEng::TryPlace(file);
  if (!problem.empty()) return Status::Error("cannot write " + file.string() + ": " + problem);
  const std::size_t place = session.GetPlace();
  const QString title =
      QCoreApplication::translate("SaveAsTo", "Adapt paths to %1").arg(QString::fromStdString(now.string()));
  Status status = session.Group(title.toStdString(), [&] { return Apply(session, changes); });
  if (status.IsError()) return status;
  status = session.SaveAs(file);
  if (status.IsError()) session.GoTo(place);
  return status;
}
