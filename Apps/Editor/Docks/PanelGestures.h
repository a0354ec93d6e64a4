// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "Host/Editing/EditSession.h"

/// Makes one step of the history of what a person does in a panel in one go: a drag of the mouse, or what is typed into
/// a field until it is left. Undo and redo, which panels handle themselves, become the session's.
class PanelGestures : public QObject {
 public:
  /// Watches everything within `area`.
  PanelGestures(ScEng::EditSession& session, QWidget* area);
  ~PanelGestures() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Begin();
  void End();
  /// Ends it when the widget has been told what ends it, since it may make its last change then.
  void EndSoon();
  void FollowDialog(QObject* watched, QEvent* event);
  bool FilterKey(const QWidget& widget, QEvent* event);

  ScEng::EditSession& session_;
  QPointer<QWidget> area_;
  bool is_open_ = false;
  bool is_ending_ = false;
  /// A dialog for colors is open, which is one gesture from its start to its end.
  bool has_dialog_ = false;
};
