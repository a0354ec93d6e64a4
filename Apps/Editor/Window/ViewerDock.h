// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <map>
#include <memory>
#include <string>

#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"
#include "Host/Viewing/Look.h"

class QComboBox;
class QLabel;
class QToolButton;

namespace ScEng {
class ViewerWidget;
}

/// The viewer with what it shows: an output of a node, which follows the selection or is pinned, or one of the images
/// that feed the node.
class ViewerDock : public QWidget {
  Q_OBJECT

 public:
  explicit ViewerDock(ScEng::EditSession& session, QWidget* parent = nullptr);

  void SetShown(const QString& plug);
  [[nodiscard]] const QString& GetShown() const { return shown_; }
  void SetResult(const std::shared_ptr<const ScEng::ShownResult>& result);
  void SetProgress(const ScEng::EvaluationProgress& progress, bool is_idle);

  /// A pinned viewer stays with its output whatever is selected.
  void SetPinned(bool pinned);
  [[nodiscard]] bool IsPinned() const;

  [[nodiscard]] ScEng::ViewerWidget& GetViewer() { return *viewer_; }
  [[nodiscard]] const std::shared_ptr<const ScEng::ShownResult>& GetResult() const { return result_; }

 signals:
  /// Another output of the node is to be shown.
  void ShowRequested(const QString& plug);
  void PinChanged(bool pinned);

 private:
  void FillOutputs();
  void FillSources();
  void ShowContent();
  void TakeLook(const ScEng::Look& look);
  /// Gives the viewer the range of an image, "id.plug", that is shown next.
  void RecallRange(const QString& plug);
  void FollowRename(const std::string& before, const std::string& now);

  ScEng::EditSession& session_;
  SessionWatch watch_;
  QString shown_;
  /// The plug whose image is seen: the shown one, or one that feeds its node.
  QString seen_;
  /// Ranges of one's own belong to the values of an image: each stays with its plug.
  std::map<QString, ScEng::ValueRange> own_ranges_;
  /// Where the range of the others comes from.
  ScEng::RangeSource range_ = ScEng::Look().range;
  std::shared_ptr<const ScEng::ShownResult> result_;
  QLabel* title_ = nullptr;
  QComboBox* outputs_ = nullptr;
  QComboBox* sources_ = nullptr;
  QToolButton* pin_ = nullptr;
  ScEng::ViewerWidget* viewer_ = nullptr;
};
