// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewerToolbar.h"

#include <QAction>
#include <QMenu>
#include <array>

#include "Host/Widgets/LookPopups.h"
#include "Host/Widgets/RangeModes.h"

namespace ScEng {
namespace {

constexpr std::array kChannels{ShownChannels::kAll,   ShownChannels::kFirst,  ShownChannels::kSecond,
                               ShownChannels::kThird, ShownChannels::kFourth, ShownChannels::kValue};

QString DescribeRange(RangeSource source) {
  switch (source) {
    case RangeSource::kAbsolute: return ViewerToolbar::tr("0 to 1, of the signed mode -1 to 1");
    case RangeSource::kDeclared: return ViewerToolbar::tr("The range that the image declares");
    case RangeSource::kMeasured: return ViewerToolbar::tr("The lowest to the highest value of the image");
    case RangeSource::kCustom: return ViewerToolbar::tr("A range of your own, which stays when the image changes");
  }
  return {};
}

}  // namespace

ViewerToolbar::ViewerToolbar(QWidget* parent) : ToolRow(parent) {
  setAccessibleName(tr("Viewer tools"));
  AddRange();
  shading_ = AddSign("viewer.shading", ViewerSign::kShading, tr("Shading"),
                     tr("Shading: gray, a color ramp, or relief lit from the side"), true);
  shading_popup_ = new ShadingPopup(this);
  AddPopup(shading_, shading_popup_);
  AddChannels();
  contours_ = AddSign("viewer.contours", ViewerSign::kContours, tr("Contours"), tr("Lines of equal value"), true);
  contour_popup_ = new ContourPopup(this);
  AddPopup(contours_, contour_popup_);
  marks_ = AddSign("viewer.marks", ViewerSign::kMarks, tr("Marks"),
                   tr("Marks NaN, infinities, and values below and above the range"), true);
  connect(marks_, &QAction::toggled, this, [this](bool on) {
    Look look = look_;
    look.marks = on;
    Change(look);
  });
  tiles_ = AddSign("viewer.tiles", ViewerSign::kTiles, tr("Tiles"), tr("Shows the image three by three times"), true);
  connect(tiles_, &QAction::toggled, this, [this](bool on) {
    Look look = look_;
    look.tiled = on;
    Change(look);
  });
  AddGap();
  probe_ = AddSign("viewer.probe", ViewerSign::kProbe, tr("Probe"),
                   tr("A click watches a pixel, a drag watches a region"), true);
  wipe_ = AddSign("viewer.wipe", ViewerSign::kWipe, tr("Compare"), tr("The image before to the left of a line"), true);
  wipe_->setEnabled(false);
  AddGap();
  fit_ = AddSign("viewer.fit", ViewerSign::kFit, tr("Fit"), tr("Shows the whole image (F)"), false);
  life_size_ = AddSign("viewer.life_size", ViewerSign::kLifeSize, tr("Life size"), tr("One pixel for one (1)"), false);
  AddStretch();
  histogram_ =
      AddSign("viewer.histogram", ViewerSign::kHistogram, tr("Histogram"), tr("Shows or hides the histogram"), true);
  histogram_->setChecked(true);
  SetLook(look_);
}

QAction* ViewerToolbar::AddAction(const char* name, const QString& text, const QString& tooltip, bool is_checkable,
                                  const ViewerSign* sign) {
  auto* action = new QAction(text, this);
  action->setObjectName(QString::fromLatin1(name));
  action->setToolTip(tooltip);
  action->setCheckable(is_checkable);
  if (sign != nullptr) action->setIcon(MakeViewerIcon(*sign));
  return action;
}

QAction* ViewerToolbar::AddSign(const char* name, ViewerSign sign, const QString& text, const QString& tooltip,
                                bool is_checkable) {
  QAction* action = AddAction(name, text, tooltip, is_checkable, &sign);
  Add(action);
  return action;
}

void ViewerToolbar::AddRange() {
  range_ = AddAction("viewer.range", NameRange(look_.range), tr("Which values are black and white"), false, nullptr);
  auto* menu = new QMenu(this);
  ranges_ = new QActionGroup(this);
  for (const RangeSource source : kRangeSources) {
    QAction* action = menu->addAction(NameRange(source));
    action->setCheckable(true);
    action->setToolTip(DescribeRange(source));
    action->setStatusTip(DescribeRange(source));
    action->setData(static_cast<int>(source));
    ranges_->addAction(action);
    connect(action, &QAction::triggered, this, [this, source] {
      Look look = look_;
      look.range = source;
      Change(look);
    });
  }
  menu->setToolTipsVisible(true);
  range_->setMenu(menu);
  Add(range_);
}

void ViewerToolbar::AddChannels() {
  channels_ =
      AddSign("viewer.channels", ViewerSign::kChannels, tr("Channels"), tr("The channels that are shown"), false);
  channel_menu_ = new QMenu(this);
  channels_->setMenu(channel_menu_);
  FillChannels();
}

void ViewerToolbar::FillChannels() {
  channel_menu_->clear();
  delete shown_channels_;
  shown_channels_ = new QActionGroup(this);
  for (const ShownChannels channels : kChannels) {
    if (!HasChannels(channels, color_mode_)) continue;
    QAction* action = channel_menu_->addAction(NameChannels(channels, color_mode_));
    action->setCheckable(true);
    action->setData(static_cast<int>(channels));
    action->setChecked(channels == look_.channels);
    shown_channels_->addAction(action);
    connect(action, &QAction::triggered, this, [this, channels] {
      Look look = look_;
      look.channels = channels;
      Change(look);
    });
  }
  // With one channel there is nothing to choose.
  channels_->setEnabled(ColorMode::GetNumChannels(color_mode_) > 1);
}

void ViewerToolbar::AddPopup(QAction* action, LookPopup* popup) {
  connect(action, &QAction::triggered, this, [this, action, popup] {
    ShowPopups();
    popup->Open(*FindAnchor(action));
  });
  connect(popup, &LookPopup::LookChanged, this, [this](const Look& look) { Change(look); });
}

void ViewerToolbar::SetColorMode(unsigned color_mode) {
  if (color_mode == color_mode_) return;
  color_mode_ = color_mode;
  FillChannels();
}

void ViewerToolbar::SetLook(const Look& look) {
  look_ = look;
  ShowPopups();
}

void ViewerToolbar::ShowPopups() {
  range_->setText(NameRange(look_.range));
  for (QAction* action : ranges_->actions())
    action->setChecked(action->data().toInt() == static_cast<int>(look_.range));
  if (shading_popup_ == nullptr || contour_popup_ == nullptr) return;
  shading_->setChecked(look_.shading != Shading::kPlain);
  contours_->setChecked(look_.contours);
  marks_->setChecked(look_.marks);
  tiles_->setChecked(look_.tiled);
  for (QAction* action : shown_channels_->actions()) {
    action->setChecked(action->data().toInt() == static_cast<int>(look_.channels));
  }
  shading_popup_->SetLook(look_);
  contour_popup_->SetLook(look_);
}

void ViewerToolbar::Change(const Look& look) {
  if (look == look_) return SetLook(look);
  SetLook(look);
  Q_EMIT LookChanged(look);
}

}  // namespace ScEng
