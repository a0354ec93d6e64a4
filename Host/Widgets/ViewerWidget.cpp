// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewerWidget.h"

#include <QAction>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <cmath>
#include <optional>

#include "Host/Image/Image.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ElidedLabel.h"
#include "Host/Widgets/HistogramBar.h"
#include "Host/Widgets/ImageView.h"
#include "Host/Widgets/ProbeTable.h"
#include "Host/Widgets/Probes.h"
#include "Host/Widgets/ViewText.h"
#include "Host/Widgets/ViewerToolbar.h"

namespace ScEng {
namespace {

const QString kBetween = QStringLiteral("  ·  ");

QString NameMode(unsigned color_mode) {
  switch (color_mode) {
    case ColorMode::kColor: return ViewerWidget::tr("color");
    case ColorMode::kSigned: return ViewerWidget::tr("signed");
    case ColorMode::kPair: return ViewerWidget::tr("pair");
    default: return ViewerWidget::tr("value");
  }
}

/// A value for reading along with others.
QString ShortenValue(float value) {
  constexpr int kDigits = 6;
  return FormatShort(static_cast<double>(value), kDigits);
}

QString DescribeFigures(const ViewFigures& figures) {
  QStringList parts;
  if (figures.finite.IsEmpty()) {
    parts.append(ViewerWidget::tr("no finite value"));
  } else {
    parts.append(
        ViewerWidget::tr("measured %1 to %2").arg(ShortenValue(figures.finite.low), ShortenValue(figures.finite.high)));
  }
  if (figures.nan > 0) parts.append(ViewerWidget::tr("%1 NaN").arg(figures.nan));
  if (figures.infinite > 0) parts.append(ViewerWidget::tr("%1 infinite").arg(figures.infinite));
  return parts.join(kBetween);
}

/// Lowest and highest would be those of means.
QString DescribePreview(const ViewImage& image) { return ViewerWidget::tr("preview 1:%1").arg(image.GetReduction()); }

}  // namespace

class ViewerWidget::Implementation {
 public:
  explicit Implementation(ViewerWidget& owner) : owner_(owner) {
    auto* layout = new QVBoxLayout(&owner);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    tools_ = new ViewerToolbar(&owner);
    view_ = new ImageView(&owner);
    view_->setObjectName(QStringLiteral("viewer.view"));
    probes_ = new ProbeList(&owner);
    view_->SetProbes(probes_);
    table_ = new ProbeTable(&owner);
    table_->SetProbes(probes_);
    table_->hide();
    histogram_ = new HistogramBar(&owner);
    histogram_->SetModeShown(false);
    layout->addWidget(tools_);
    layout->addWidget(view_, 1);
    layout->addWidget(table_);
    layout->addWidget(histogram_);
    layout->addLayout(MakeStatus());
    QWidget::setTabOrder(tools_, view_);
    Connect();
  }

  void ShowContent() {
    const ViewImage* image = content_.image.get();
    if (image != nullptr) tools_->SetColorMode(image->GetImage().GetColorMode());
    tools_->wipe_->setEnabled(content_.before != nullptr);
    view_->SetBefore(content_.before);
    view_->SetImage(content_.image);
    view_->SetMessage(content_.message);
    histogram_->SetImage(content_.image);
    table_->SetImages(content_.image, content_.inputs);
    ShowFacts();
    ShowCursor(view_->GetCursor());
  }

  void ShowLook() {
    tools_->SetLook(look_);
    view_->SetLook(look_);
    histogram_->SetLook(look_);
  }

  ViewerWidget& owner_;
  ViewerContent content_;
  Look look_;
  ViewerToolbar* tools_ = nullptr;
  ImageView* view_ = nullptr;
  ProbeList* probes_ = nullptr;
  HistogramBar* histogram_ = nullptr;

 private:
  QLayout* MakeStatus() {
    auto* line = new QHBoxLayout;
    line->setSpacing(12);
    facts_ = new ElidedLabel(Qt::ElideRight, &owner_);
    facts_->setObjectName(QStringLiteral("viewer.facts"));
    facts_->setAccessibleName(tr("Facts of the image"));
    facts_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    cursor_ = new ElidedLabel(Qt::ElideLeft, &owner_);
    cursor_->setObjectName(QStringLiteral("viewer.cursor"));
    cursor_->setAccessibleName(tr("Value under the cursor"));
    cursor_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    cursor_->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    line->addWidget(facts_, 1);
    line->addWidget(cursor_, 0);
    return line;
  }

  void Connect() {
    const auto take = [this](const Look& look) {
      look_ = look;
      ShowLook();
      Q_EMIT owner_.LookChanged(look_);
    };
    QObject::connect(tools_, &ViewerToolbar::LookChanged, &owner_, [this, take](const Look& look) {
      Look changed = look;
      // A range of one's own begins with the one that is seen.
      const bool is_new = look.range == RangeSource::kCustom && look_.range != RangeSource::kCustom;
      if (is_new && content_.image != nullptr) changed.custom = GetShownRange(*content_.image, look_);
      take(changed);
    });
    QObject::connect(histogram_, &HistogramBar::LookChanged, &owner_, [this, take](const Look& look) {
      Look changed = look_;
      changed.range = look.range;
      changed.custom = look.custom;
      take(changed);
    });
    QObject::connect(tools_->probe_, &QAction::toggled, view_, &ImageView::SetProbeTool);
    QObject::connect(tools_->wipe_, &QAction::toggled, view_, &ImageView::SetWipe);
    QObject::connect(tools_->fit_, &QAction::triggered, view_, &ImageView::Fit);
    QObject::connect(tools_->life_size_, &QAction::triggered, view_, [this] { view_->SetZoom(1.0); });
    QObject::connect(tools_->histogram_, &QAction::toggled, histogram_, &QWidget::setVisible);
    QObject::connect(probes_, &ProbeList::Changed, table_,
                     [this] { table_->setVisible(!probes_->GetProbes().empty()); });
    QObject::connect(view_, &ImageView::CursorMoved, &owner_,
                     [this](std::optional<QPoint> pixel) { ShowCursor(pixel); });
    QObject::connect(view_, &ImageView::ZoomChanged, &owner_, [this] { ShowFacts(); });
  }

  void ShowFacts() {
    QStringList parts;
    if (!content_.title.isEmpty()) parts.append(content_.title);
    if (content_.image != nullptr) {
      const Image& image = content_.image->GetImage();
      const ImageHeader& header = content_.image->GetHeader();
      parts.append(tr("%1 × %2").arg(header.size_x).arg(header.size_y));
      parts.append(NameMode(image.GetColorMode()));
      parts.append(FormatZoom(view_->GetZoom()));
      parts.append(tr("declared %1 to %2").arg(ShortenValue(image.GetValueLow()), ShortenValue(image.GetValueHigh())));
      parts.append(content_.image->IsPreview() ? DescribePreview(*content_.image)
                                               : DescribeFigures(content_.image->GetFigures()));
    }
    facts_->setText(parts.join(kBetween));
  }

  void ShowCursor(const std::optional<QPoint>& pixel) {
    if (!pixel || content_.image == nullptr) return cursor_->setText(QString());
    const Image& image = content_.image->GetImage();
    const QString value = FormatPixel(*content_.image, *pixel);
    if (value.isEmpty()) return cursor_->setText(QString());
    const Box2I box = content_.image->GetHeader().GetBox();
    const QPoint place = *pixel + QPoint(static_cast<int>(box.left), static_cast<int>(box.top));
    QStringList parts{tr("x %1, y %2").arg(place.x()).arg(place.y())};
    if (HasGround(image)) parts.append(tr("map %1").arg(FormatGround(image, QPointF(place) + QPointF(0.5, 0.5))));
    parts.append(value);
    cursor_->setText(parts.join(kBetween));
  }

  ProbeTable* table_ = nullptr;
  ElidedLabel* facts_ = nullptr;
  ElidedLabel* cursor_ = nullptr;
};

ViewerWidget::ViewerWidget(QWidget* parent)
    : QWidget(parent), implementation_(std::make_unique<Implementation>(*this)) {
  setAccessibleName(tr("Viewer"));
}

ViewerWidget::~ViewerWidget() {
  // The parts live longer than what their signals go to.
  for (QObject* child : findChildren<QObject*>()) child->disconnect(this);
}

void ViewerWidget::SetContent(const ViewerContent& content) {
  implementation_->content_ = content;
  implementation_->ShowContent();
}

const ViewerContent& ViewerWidget::GetContent() const { return implementation_->content_; }

void ViewerWidget::SetBusy(bool busy, double fraction) { implementation_->view_->SetBusy(busy, fraction); }

const Look& ViewerWidget::GetLook() const { return implementation_->look_; }

void ViewerWidget::SetLook(const Look& look) {
  implementation_->look_ = look;
  implementation_->ShowLook();
}

void ViewerWidget::SetHistogramShown(bool on) { implementation_->tools_->histogram_->setChecked(on); }

bool ViewerWidget::IsHistogramShown() const { return implementation_->tools_->histogram_->isChecked(); }

ImageView* ViewerWidget::GetView() const { return implementation_->view_; }

ProbeList* ViewerWidget::GetProbes() const { return implementation_->probes_; }

}  // namespace ScEng
