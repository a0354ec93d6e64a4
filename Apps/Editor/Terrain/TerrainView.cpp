// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainView.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

namespace {

constexpr double kZoomStep = 1.25;

}  // namespace

TerrainView::TerrainView(QWidget* parent)
    : QWidget(parent),
      tools_(new QWidget(this)),
      canvas_(new TerrainCanvas(this)),
      popup_(new TerrainSettingsPopup(this)),
      maps_(new SecondMapRow(this)) {
  setObjectName(QStringLiteral("terrain view"));
  setAccessibleName(tr("3D view"));
  auto* row = new QHBoxLayout(tools_);
  const int margin = fontMetrics().height() / 4;
  row->setContentsMargins(margin, margin, margin, margin);
  row->setSpacing(margin);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(tools_);
  layout->addWidget(maps_);
  layout->addWidget(canvas_, 1);

  const QToolButton* reset = AddButton(tr("Reset view"), tr("Show all of the terrain (Home)"), QStringLiteral("reset"));
  const QToolButton* out = AddButton(tr("−"), tr("Zoom out (−)"), QStringLiteral("zoom out"));
  const QToolButton* in = AddButton(tr("+"), tr("Zoom in (+)"), QStringLiteral("zoom in"));
  row->addStretch(1);
  wireframe_ = AddButton(tr("Wireframe"), tr("Show the lines of the mesh (W)"), QStringLiteral("wireframe"));
  wireframe_->setCheckable(true);
  const QToolButton* settings =
      AddButton(tr("Height and light…"), tr("Exaggeration and light"), QStringLiteral("settings"));

  connect(reset, &QToolButton::clicked, canvas_, &TerrainCanvas::ResetCamera);
  connect(out, &QToolButton::clicked, canvas_, [this] { canvas_->Zoom(1.0 / kZoomStep); });
  connect(in, &QToolButton::clicked, canvas_, [this] { canvas_->Zoom(kZoomStep); });
  connect(wireframe_, &QToolButton::clicked, this, [this](bool is_checked) {
    TerrainSettings changed = GetSettings();
    changed.wireframe = is_checked;
    TakeSettings(changed);
  });
  connect(settings, &QToolButton::clicked, this, [this, settings] { popup_->Open(*settings); });
  connect(popup_, &TerrainSettingsPopup::Changed, this, [this] { TakeSettings(popup_->GetSettings()); });
  connect(maps_, &SecondMapRow::Changed, this, [this] {
    // The image of the one before is not that of this one.
    if (second_of_ != maps_->GetMap()) second_ = nullptr;
    UpdateColors();
    emit SecondMapChanged();
  });
  connect(canvas_, &TerrainCanvas::WireframeAsked, wireframe_, &QToolButton::click);
  connect(canvas_, &TerrainCanvas::ProblemFound, this, &TerrainView::DisableTools);
}

QToolButton* TerrainView::AddButton(const QString& text, const QString& tip, const QString& object_name) {
  auto* button = new QToolButton(tools_);
  button->setText(text);
  button->setToolTip(tip);
  button->setAccessibleName(tip.section(QStringLiteral(" ("), 0, 0));
  button->setObjectName(object_name);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  tools_->layout()->addWidget(button);
  return button;
}

void TerrainView::SetHeights(std::shared_ptr<const ScEng::ViewImage> heights) {
  canvas_->SetField(heights != nullptr ? std::make_shared<const HeightField>(std::move(heights)) : nullptr);
}

void TerrainView::SetColors(std::shared_ptr<const ScEng::ViewImage> colors, const ScEng::Look& look) {
  colors_ = std::move(colors);
  look_ = look;
  UpdateColors();
}

void TerrainView::SetSecond(std::shared_ptr<const ScEng::ViewImage> second) {
  second_ = std::move(second);
  second_of_ = maps_->GetMap();
  UpdateColors();
}

void TerrainView::UpdateColors() {
  const bool is_mask = maps_->IsMask();
  const bool is_color = second_ != nullptr && !is_mask;
  ScEng::Look look = look_;
  if (is_color) {
    // What the viewer is set to is made for its own image.
    look.range = ScEng::RangeSource::kDeclared;
    look.channels = ScEng::ShownChannels::kAll;
  }
  canvas_->SetColors(
      std::make_shared<const SurfaceColors>(is_color ? second_ : colors_, look, is_mask ? second_ : nullptr));
}

void TerrainView::SetSettings(const TerrainSettings& settings) {
  popup_->SetSettings(settings);
  wireframe_->setChecked(settings.wireframe);
  canvas_->SetSettings(settings);
}

void TerrainView::TakeSettings(const TerrainSettings& settings) {
  SetSettings(settings);
  emit SettingsChanged();
}

void TerrainView::DisableTools() {
  tools_->setEnabled(false);
  maps_->setEnabled(false);
}
