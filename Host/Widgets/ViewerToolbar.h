// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QActionGroup>

#include "Host/Image/ColorMode.h"
#include "Host/Viewing/Look.h"
#include "Host/Widgets/ToolRow.h"
#include "Host/Widgets/ViewerIcons.h"

class QMenu;

namespace ScEng {

class LookPopup;

/// The tools of a viewer in one row. It changes a look, and has the actions of everything else.
class ViewerToolbar : public ToolRow {
  Q_OBJECT

 public:
  explicit ViewerToolbar(QWidget* parent);

  /// Shows a look, without telling anybody.
  void SetLook(const Look& look);
  /// The color mode of the image, which tells what channels there are.
  void SetColorMode(unsigned color_mode);

  QAction* probe_ = nullptr;
  QAction* wipe_ = nullptr;
  QAction* fit_ = nullptr;
  QAction* life_size_ = nullptr;
  QAction* histogram_ = nullptr;

 Q_SIGNALS:
  void LookChanged(const ScEng::Look& look);

 private:
  QAction* AddAction(const char* name, const QString& text, const QString& tooltip, bool is_checkable,
                     const ViewerSign* sign);
  QAction* AddSign(const char* name, ViewerSign sign, const QString& text, const QString& tooltip, bool is_checkable);
  void AddRange();
  void AddChannels();
  void AddPopup(QAction* action, LookPopup* popup);
  void FillChannels();
  void ShowPopups();
  void Change(const Look& look);

  Look look_;
  unsigned color_mode_ = ColorMode::kValue;
  QAction* range_ = nullptr;
  QActionGroup* ranges_ = nullptr;
  QAction* shading_ = nullptr;
  QAction* channels_ = nullptr;
  QMenu* channel_menu_ = nullptr;
  QActionGroup* shown_channels_ = nullptr;
  QAction* contours_ = nullptr;
  QAction* marks_ = nullptr;
  QAction* tiles_ = nullptr;
  LookPopup* shading_popup_ = nullptr;
  LookPopup* contour_popup_ = nullptr;
};

}  // namespace ScEng
