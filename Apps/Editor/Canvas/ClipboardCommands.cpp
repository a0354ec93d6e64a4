// SPDX-License-Identifier: Apache-2.0
// The commands that copy nodes.
#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <cmath>

#include "Apps/Editor/Canvas/CanvasCommands.h"

using ScEng::Status;

namespace {

constexpr char kMimeType[] = "application/x-value-graph";

}  // namespace

void CanvasCommands::Duplicate(bool keeps_incoming) {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  if (ids.empty()) return;
  const QPointF offset(36, 36);
  std::vector<std::string> copies;
  const Status status =
      session_.Group(tr("Duplicate %n node(s)", nullptr, static_cast<int>(ids.size())).toStdString(), [&] {
        const Status done = session_.Duplicate(ids, {offset.x(), offset.y()}, keeps_incoming, &copies);
        if (done.IsError()) return done;
        // Those that were placed automatically have no position to copy.
        std::vector<ScEng::EditSession::Placement> placements;
        for (std::size_t i = 0; i < copies.size() && i < ids.size(); ++i) {
          if (session_.GetDocument().GetPosition(copies[i])) continue;
          const QPointF place = scene_.FindNode(ids[i])->pos() + offset;
          placements.push_back({copies[i], ScEng::Point{std::round(place.x()), std::round(place.y())}});
        }
        return placements.empty() ? Status() : session_.SetPositions(placements);
      });
  if (Do(status)) scene_.SelectIds(copies);
}

void CanvasCommands::Copy() {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  if (ids.empty()) return;
  ScEng::CopiedNodes copied;
  if (!Do(session_.Copy(ids, copied))) return;
  auto* data = new QMimeData;
  data->setText(QString::fromStdString(copied.text));
  data->setData(QString::fromLatin1(kMimeType), QByteArray::fromStdString(copied.text));
  QApplication::clipboard()->setMimeData(data);
}

void CanvasCommands::Cut() {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  if (ids.empty()) return;
  Copy();
  Do(session_.RemoveNodes(ids));
}

Status CanvasCommands::PlacePasted(const std::vector<std::string>& ids, const QPointF& place) {
  if (ids.empty()) return Status();
  // Nodes without a position are laid out below each other by the scene; together they go to where they are wanted.
  QRectF extent;
  for (const std::string& id : ids) extent |= scene_.FindNode(id)->GetBody();
  const QPointF offset = place - extent.center();
  std::vector<ScEng::EditSession::Placement> placements;
  for (const std::string& id : ids) {
    const QPointF corner = scene_.FindNode(id)->pos() + offset;
    placements.push_back({id, ScEng::Point{std::round(corner.x()), std::round(corner.y())}});
  }
  return session_.SetPositions(placements);
}

void CanvasCommands::Paste(const QPointF& place) {
  const QMimeData* data = QApplication::clipboard()->mimeData();
  if (data == nullptr) return;
  const QString mime = QString::fromLatin1(kMimeType);
  const std::string text = data->hasFormat(mime) ? data->data(mime).toStdString() : data->text().toStdString();
  if (text.empty()) return;
  std::vector<std::string> ids;
  const Status status = session_.Group(tr("Paste").toStdString(), [&] {
    const Status pasted = session_.Paste(text, {}, &ids);
    return pasted.IsError() ? pasted : PlacePasted(ids, place);
  });
  if (Do(status)) scene_.SelectIds(ids);
}
