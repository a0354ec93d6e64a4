// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/HistogramBar.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <cmath>
#include <utility>

#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/HistogramPlot.h"
#include "Host/Widgets/QNodeAttributesWidget.h"
#include "Host/Widgets/RangeModes.h"
#include "Host/Widgets/ViewText.h"

namespace ScEng {

class HistogramBar::Implementation {
 public:
  explicit Implementation(HistogramBar& bar) : bar_(bar) {
    auto* layout = new QHBoxLayout(&bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    mode_ = new QComboBox(&bar);
    mode_->setObjectName(QStringLiteral("histogram.mode"));
    mode_->setAccessibleName(tr("Range"));
    mode_->setToolTip(tr("Where the values of black and white come from"));
    for (const RangeSource source : kRangeSources) mode_->addItem(NameRange(source));
    low_ = MakeField(QStringLiteral("histogram.low"), tr("Value shown as black"));
    plot_ = new HistogramPlot(&bar);
    high_ = MakeField(QStringLiteral("histogram.high"), tr("Value shown as white"));
    logarithmic_ = new QPushButton(tr("Log"), &bar);
    logarithmic_->setObjectName(QStringLiteral("histogram.log"));
    logarithmic_->setAccessibleName(tr("Logarithmic histogram"));
    logarithmic_->setToolTip(tr("Shows rare values beside frequent ones"));
    logarithmic_->setCheckable(true);
    logarithmic_->setFixedWidth(logarithmic_->fontMetrics().horizontalAdvance(logarithmic_->text()) + 24);
    layout->addWidget(mode_);
    layout->addWidget(low_);
    layout->addWidget(plot_, 1);
    layout->addWidget(high_);
    layout->addWidget(logarithmic_);
    for (QWidget* part : {static_cast<QWidget*>(mode_), static_cast<QWidget*>(low_), static_cast<QWidget*>(high_),
                          static_cast<QWidget*>(logarithmic_)}) {
      part->setStyle(QNodeAttributesWidget::GetPanelStyle());
    }
    // From the black point to the white one.
    const auto handles = plot_->findChildren<RangeHandle*>();
    QWidget* last = low_;
    for (RangeHandle* handle : handles) {
      QWidget::setTabOrder(last, handle);
      last = handle;
    }
    QWidget::setTabOrder(last, high_);
    Connect();
    Show();
  }

  void Show() {
    const QSignalBlocker block(mode_);
    plot_->SetLook(look_);
    for (std::size_t i = 0; i < kRangeSources.size(); ++i) {
      if (kRangeSources[i] == look_.range) mode_->setCurrentIndex(static_cast<int>(i));
    }
    ShowNumbers();
  }

  HistogramBar& bar_;
  Look look_;
  QComboBox* mode_ = nullptr;
  QLineEdit* low_ = nullptr;
  QLineEdit* high_ = nullptr;
  HistogramPlot* plot_ = nullptr;
  QPushButton* logarithmic_ = nullptr;

 private:
  QLineEdit* MakeField(const QString& name, const QString& meaning) {
    auto* field = new QLineEdit(&bar_);
    field->setObjectName(name);
    field->setAccessibleName(meaning);
    field->setToolTip(meaning);
    field->setAlignment(Qt::AlignRight);
    field->setFixedWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("-0.0000000")) + 16);
    return field;
  }

  void Connect() {
    QObject::connect(mode_, &QComboBox::currentIndexChanged, &bar_, [this](int index) {
      Look look = look_;
      look.range = kRangeSources[static_cast<std::size_t>(index)];
      // A range of one's own begins with the one that is seen.
      if (look.range == RangeSource::kCustom) look.custom = plot_->GetShown();
      Change(look);
    });
    QObject::connect(plot_, &HistogramPlot::RangeMoved, &bar_, [this](const ValueRange& range) { SetCustom(range); });
    for (QLineEdit* field : {low_, high_}) {
      QObject::connect(field, &QLineEdit::editingFinished, &bar_, [this] { TakeNumbers(); });
    }
    QObject::connect(logarithmic_, &QPushButton::toggled, &bar_, [this](bool on) { plot_->SetLogarithmic(on); });
  }

  /// What finds room in a field. A text that is left as it is stands for the exact value.
  static QString Write(float value) {
    constexpr int kDigits = 6;
    return FormatShort(static_cast<double>(value), kDigits);
  }

  void ShowNumbers() {
    const ValueRange& shown = plot_->GetShown();
    low_->setText(Write(shown.low));
    high_->setText(Write(shown.high));
    for (QLineEdit* field : {low_, high_}) field->setCursorPosition(0);
  }

  /// Takes over what was typed; what is no range goes back to the one that is shown.
  void TakeNumbers() {
    const auto read = [](const QLineEdit& field, float shown) {
      if (field.text() == Write(shown)) return shown;
      bool is_number = false;
      const float value = QString(field.text()).replace(QLatin1Char(','), QLatin1Char('.')).toFloat(&is_number);
      return is_number && std::isfinite(value) ? value : shown;
    };
    const ValueRange shown = plot_->GetShown();
    const ValueRange typed{read(*low_, shown.low), read(*high_, shown.high)};
    if (typed == shown || typed.low > typed.high) return ShowNumbers();
    SetCustom(typed);
  }

  void SetCustom(const ValueRange& range) {
    Look look = look_;
    look.range = RangeSource::kCustom;
    look.custom = range;
    Change(look);
  }

  void Change(const Look& look) {
    if (look == look_) return;
    look_ = look;
    Show();
    Q_EMIT bar_.LookChanged(look_);
  }
};

HistogramBar::HistogramBar(QWidget* parent)
    : QWidget(parent), implementation_(std::make_unique<Implementation>(*this)) {
  setAccessibleName(tr("Histogram and shown range"));
}

HistogramBar::~HistogramBar() {
  // Fields that lose the focus while the widget goes would tell of it.
  for (QObject* child : findChildren<QObject*>()) child->disconnect(this);
}

void HistogramBar::SetImage(std::shared_ptr<const ViewImage> image) {
  implementation_->plot_->SetImage(std::move(image));
  implementation_->Show();
}

void HistogramBar::SetLook(const Look& look) {
  if (look == implementation_->look_) return;
  implementation_->look_ = look;
  implementation_->Show();
}

const Look& HistogramBar::GetLook() const { return implementation_->look_; }

void HistogramBar::SetLogarithmic(bool on) { implementation_->logarithmic_->setChecked(on); }

bool HistogramBar::IsLogarithmic() const { return implementation_->plot_->IsLogarithmic(); }

void HistogramBar::SetModeShown(bool on) { implementation_->mode_->setVisible(on); }

}  // namespace ScEng
