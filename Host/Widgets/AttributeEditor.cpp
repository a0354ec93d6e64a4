// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/AttributeEditor.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "Host/Widgets/Editors.h"
#include "Host/Widgets/SliderScale.h"

namespace ScEng {
namespace {

using AdditionalInfo = QNodeAttributesWidget::AdditionalInfo;

constexpr int kGap = 8;

QString ToText(const std::string& text) { return QString::fromStdString(text); }

// ---- Numbers ----

class NumberEditor : public AttributeEditor {
 public:
  NumberEditor(PanelContext& context, Attribute& attribute, const AdditionalInfo& info, QWidget* parent)
      : AttributeEditor(context, attribute, parent),
        scale_(attribute, info.slider_exponent),
        slider_(new NumberSlider(this)),
        box_(new NumberBox(this)) {
    box_->setDecimals(attribute.GetDecimals());
    box_->setRange(attribute.GetLowest(), attribute.GetHighest());
    box_->setSingleStep(attribute.GetStep());
    box_->setSuffix(ToText(info.suffix));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kGap);
    layout->addWidget(slider_, 1);
    layout->addWidget(box_);
    AddInput(box_, "");
    AddInput(slider_, "slider");
    setTabOrder(slider_, box_);

    connect(box_, &QDoubleSpinBox::valueChanged, this, [this](double value) {
      if (value != box_->GetShown()) Set(value);
    });
    connect(box_, &QDoubleSpinBox::editingFinished, this, [this] { BeginGesture(); });
    connect(slider_, &QSlider::valueChanged, this,
            [this](int position) { Set(scale_.ToValue(static_cast<double>(position) / NumberSlider::kPositions)); });
    connect(slider_, &QSlider::sliderPressed, this, [this] { BeginGesture(); });
    connect(slider_, &QSlider::sliderReleased, this, [this] {
      BeginGesture();
      if (IsLive()) Refresh();
    });
    slider_->SetStepHandler([this](double steps) {
      if (!IsLive()) return;
      Set(GetAttribute().GetValue().GetNumber() + steps * GetAttribute().GetStep());
      Refresh();
    });
    if (info.resettable) slider_->SetDoubleClickHandler([this] { Reset(); });
  }

  void Refresh() override {
    const double value = GetAttribute().GetValue().GetNumber();
    box_->Show(value);
    // The handle stays under the hand that drags it.
    if (slider_->isSliderDown()) return;
    if (IsAtDefault()) scale_.Reset();
    scale_.Include(value);
    const QSignalBlocker blocker(slider_);
    slider_->setValue(ToPosition(value));
    slider_->SetMarks(scale_.ToPosition(std::clamp(0.0, scale_.GetLow(), scale_.GetHigh())),
                      scale_.ToPosition(GetAttribute().GetDefault().GetNumber()));
    slider_->setAccessibleDescription(box_->text());
  }

 private:
  void Set(double value) {
    Commit([value](Attribute& attribute) { attribute.SetNumber(value, true); });
  }

  [[nodiscard]] int ToPosition(double value) const {
    return static_cast<int>(std::lround(scale_.ToPosition(value) * NumberSlider::kPositions));
  }

  SliderScale scale_;
  NumberSlider* slider_;
  NumberBox* box_;
};

// ---- Choices ----

class ChoiceEditor : public AttributeEditor {
 public:
  ChoiceEditor(PanelContext& context, Attribute& attribute, const AdditionalInfo& info, QWidget* parent)
      : AttributeEditor(context, attribute, parent), box_(new QComboBox(this)) {
    const QStringList labels = info.labels.empty() ? QStringList() : ToText(info.labels).split(u',');
    for (const std::string& word : attribute.GetChoices()) {
      const int index = box_->count();
      const bool is_labeled = index < labels.size() && !labels[index].trimmed().isEmpty();
      box_->addItem(is_labeled ? labels[index].trimmed() : ToText(word), ToText(word));
      if (is_labeled) box_->setItemData(index, ToText(word), Qt::ToolTipRole);
    }
    constexpr int kMostShown = 20;
    box_->setMaxVisibleItems(kMostShown);
    // The list is made now, so that it gets the style of the panel.
    box_->view()->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    box_->setFocusPolicy(Qt::StrongFocus);
    box_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    constexpr int kHeight = 26;
    box_->setFixedHeight(kHeight);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(box_);
    AddInput(box_, "");
    connect(box_, &QComboBox::currentIndexChanged, this, [this](int index) {
      const std::string word = box_->itemData(index).toString().toStdString();
      Commit([&word](Attribute& changed) { changed.SetChoice(word, true); });
    });
  }

  void Refresh() override {
    const QSignalBlocker blocker(box_);
    box_->setCurrentIndex(GetAttribute().GetChoiceIndex(GetAttribute().GetValue().GetText()));
  }

 private:
  QComboBox* box_;
};

// ---- Flags ----

class FlagEditor : public AttributeEditor {
 public:
  FlagEditor(PanelContext& context, Attribute& attribute, QWidget* parent)
      : AttributeEditor(context, attribute, parent), box_(new QCheckBox(this)) {
    constexpr int kHeight = 26;
    box_->setFixedHeight(kHeight);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(box_, 0, Qt::AlignLeft);
    AddInput(box_, "");
    connect(box_, &QCheckBox::toggled, this,
            [this](bool is_on) { Commit(0, [is_on](Attribute& changed) { changed.SetFlag(is_on, true); }); });
  }

  void Refresh() override {
    const QSignalBlocker blocker(box_);
    box_->setChecked(GetAttribute().GetValue().GetFlag());
  }

 private:
  QCheckBox* box_;
};

// ---- Strings ----

class StringEditor : public AttributeEditor {
 public:
  StringEditor(PanelContext& context, Attribute& attribute, QWidget* parent)
      : AttributeEditor(context, attribute, parent), field_(new QLineEdit(this)) {
    constexpr int kHeight = 26;
    field_->setFixedHeight(kHeight);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kGap / 2);
    layout->addWidget(field_, 1);
    AddInput(field_, "");
    if (attribute.GetStringUse() == Attribute::StringUse::kText) {
      connect(field_, &QLineEdit::textChanged, this, [this] { Take(); });
      connect(field_, &QLineEdit::editingFinished, this, [this] { BeginGesture(); });
      return;
    }
    // Half a path names no file, so a path counts when it is complete.
    connect(field_, &QLineEdit::editingFinished, this, [this] {
      Take();
      BeginGesture();
    });
    auto* button = new SignButton(SignButton::Sign::kFolder, this);
    const QString tip = QCoreApplication::translate("ScEng::AttributeEditor", "Choose a file");
    button->setToolTip(tip);
    layout->addWidget(button);
    AddInput(button, "browse");
    button->setAccessibleName(tip);
    connect(button, &QAbstractButton::clicked, this, [this] { Browse(); });
  }

  void Refresh() override {
    const QSignalBlocker blocker(field_);
    const QString text = ToText(GetAttribute().GetValue().GetText());
    if (field_->text() != text) field_->setText(text);
  }

 private:
  void Take() {
    const std::string text = field_->text().toStdString();
    Commit([&text](Attribute& changed) { changed.SetString(text, true); });
  }

  void Browse() {
    if (!IsLive()) return;
    auto* dialog = new QFileDialog(window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    const bool is_read = GetAttribute().GetStringUse() == Attribute::StringUse::kReadPath;
    dialog->setAcceptMode(is_read ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    dialog->setFileMode(is_read ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    std::string written = GetAttribute().GetValue().GetText();
    std::replace(written.begin(), written.end(), '\\', '/');
    const std::filesystem::path file = GetAttribute().GetFolder() / written;
    if (file.has_parent_path()) dialog->setDirectory(ToText(file.parent_path().string()));
    if (!written.empty()) dialog->selectFile(ToText(file.filename().string()));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& chosen) {
      Commit(0, [&chosen](Attribute& changed) { changed.SetString(chosen.toStdString(), true); });
    });
    dialog->open();
  }

  QLineEdit* field_;
};

// ---- Colours, points, frames ----

std::vector<double> GetNumbers(const PlugValue& value, Attribute::Kind kind) {
  if (kind == Attribute::Kind::kColor) {
    const Rgbo color = value.GetColor();
    return {color.red, color.green, color.blue, color.opacity};
  }
  if (kind == Attribute::Kind::kPoint) return {value.GetPoint().x, value.GetPoint().y};
  const Frame frame = value.GetFrame();
  return {frame.x, frame.y, frame.width, frame.height};
}

void SetNumbers(Attribute& attribute, const std::vector<double>& numbers) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kColor: attribute.SetRgbo(numbers[0], numbers[1], numbers[2], numbers[3], true); break;
    // Some points are fractions of an image, so that nothing is rounded to whole pixels here.
    case Attribute::Kind::kPoint: attribute.SetPoint(numbers[0], numbers[1], false); break;
    default: attribute.SetFrame(numbers[0], numbers[1], numbers[2], numbers[3], false); break;
  }
}

/// Several numbers that make one value, two to a line.
class NumbersEditor : public AttributeEditor {
 public:
  NumbersEditor(PanelContext& context, Attribute& attribute, QWidget* parent)
      : AttributeEditor(context, attribute, parent), kind_(attribute.GetKind()), layout_(new QGridLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setHorizontalSpacing(kGap / 2 + 2);
    layout_->setVerticalSpacing(kGap / 2);
    layout_->setColumnStretch(2, 1);
    layout_->setColumnStretch(4, 1);
    // Of several fields none is the main one.
    if (kind_ != Attribute::Kind::kColor) setObjectName(ToText(attribute.GetName()));
    switch (kind_) {
      case Attribute::Kind::kColor: AddColor(); break;
      case Attribute::Kind::kPoint: AddFields({{"x", "X"}, {"y", "Y"}}); break;
      default:
        AddFields({{"x", "X"},
                   {"y", "Y"},
                   {"width", QT_TRANSLATE_NOOP("ScEng::AttributeEditor", "W")},
                   {"height", QT_TRANSLATE_NOOP("ScEng::AttributeEditor", "H")}});
        break;
    }
  }

  void Refresh() override {
    const std::vector<double> numbers = GetNumbers(GetAttribute().GetValue(), kind_);
    for (std::size_t i = 0; i < boxes_.size(); ++i) boxes_[i]->Show(numbers[i]);
    if (swatch_ != nullptr) swatch_->SetColor(GetColor());
  }

 private:
  using Fields = std::vector<std::pair<std::string, const char*>>;

  void AddColor() {
    swatch_ = new Swatch(this);
    layout_->addWidget(swatch_, 0, 0, 2, 1);
    AddInput(swatch_, "");
    connect(swatch_, &QAbstractButton::clicked, this, [this] { ChooseColor(); });
    AddFields({{"red", QT_TRANSLATE_NOOP("ScEng::AttributeEditor", "R")},
               {"green", QT_TRANSLATE_NOOP("ScEng::AttributeEditor", "G")},
               {"blue", QT_TRANSLATE_NOOP("ScEng::AttributeEditor", "B")},
               {"opacity", QT_TRANSLATE_NOOP("ScEng::AttributeEditor", "O")}});
    constexpr double kColorStep = 0.05;
    for (NumberBox* box : boxes_) box->setSingleStep(kColorStep);
    boxes_.back()->setRange(0.0, 1.0);
    boxes_.back()->setToolTip(QCoreApplication::translate("ScEng::AttributeEditor", "Opacity"));
  }

  void AddFields(const Fields& fields) {
    constexpr double kMost = 1e9;
    constexpr int kDecimals = 3;
    for (const auto& [part, label] : fields) {
      const std::size_t index = boxes_.size();
      auto* box = new NumberBox(this);
      box->setDecimals(kDecimals);
      box->setRange(-kMost, kMost);
      const int row = static_cast<int>(index / 2);
      const int column = 1 + static_cast<int>(index % 2) * 2;
      auto* name = new QLabel(QCoreApplication::translate("ScEng::AttributeEditor", label), this);
      // The fields of all rows stand in two columns.
      constexpr int kNameWidth = 14;
      name->setFixedWidth(kNameWidth);
      layout_->addWidget(name, row, column);
      layout_->addWidget(box, row, column + 1);
      boxes_.push_back(box);
      AddInput(box, part);
      connect(box, &QDoubleSpinBox::valueChanged, this, [this, box, index](double value) {
        if (value == box->GetShown()) return;
        Commit([&](Attribute& changed) {
          // The others stay as they are, although their fields may show them rounded.
          std::vector<double> numbers = GetNumbers(changed.GetValue(), kind_);
          numbers[index] = value;
          SetNumbers(changed, numbers);
        });
      });
      connect(box, &QDoubleSpinBox::editingFinished, this, [this] { BeginGesture(); });
    }
  }

  [[nodiscard]] QColor GetColor() const {
    const Rgbo color = GetAttribute().GetValue().GetColor();
    const auto part = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue), part(color.opacity));
  }

  void ChooseColor() {
    if (!IsLive()) return;
    auto* dialog = new QColorDialog(GetColor(), window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    const Gesture gesture = MakeGesture();
    const std::vector<double> before = GetNumbers(GetAttribute().GetValue(), kind_);
    connect(dialog, &QColorDialog::currentColorChanged, this, [this, gesture](const QColor& color) {
      Commit(gesture, [&color](Attribute& changed) {
        changed.SetRgbo(color.redF(), color.greenF(), color.blueF(), color.alphaF(), true);
      });
    });
    // Merged with what was tried on the way, so that nothing is left to undo.
    connect(dialog, &QDialog::rejected, this, [this, gesture, before] {
      Commit(gesture, [&before](Attribute& changed) { SetNumbers(changed, before); });
    });
    dialog->open();
  }

  Attribute::Kind kind_;
  QGridLayout* layout_;
  std::vector<NumberBox*> boxes_;
  Swatch* swatch_ = nullptr;
};

}  // namespace

QUndoStack& PanelContext::GetStack() const {
  return stack != nullptr ? *stack : *QNodeAttributesWidget::GetDefaultUndoStack();
}

AttributeEditor* AttributeEditor::Make(PanelContext& context, Attribute& attribute, const AdditionalInfo& info,
                                       QWidget* parent) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: return new FlagEditor(context, attribute, parent);
    case Attribute::Kind::kNumber: return new NumberEditor(context, attribute, info, parent);
    case Attribute::Kind::kChoice: return new ChoiceEditor(context, attribute, info, parent);
    case Attribute::Kind::kString: return new StringEditor(context, attribute, parent);
    default: return new NumbersEditor(context, attribute, parent);
  }
}

AttributeEditor::AttributeEditor(PanelContext& context, Attribute& attribute, QWidget* parent)
    : QWidget(parent), context_(context), attribute_(attribute) {}

void AttributeEditor::AddInput(QWidget* input, const std::string& part) {
  input->setObjectName(ToText(attribute_.GetName() + (part.empty() ? "" : "." + part)));
  input->setAccessibleName(ToText(attribute_.GetName() + (part.empty() ? "" : " " + part)));
  input->installEventFilter(this);
  inputs_.push_back(input);
}

void AttributeEditor::Commit(Gesture gesture, const std::function<void(Attribute&)>& change) {
  if (!IsLive()) return;
  const PlugValue before = attribute_.GetValue();
  change(attribute_);
  if (attribute_.GetValue() == before) return;
  context_.GetStack().push(new AttributeCommand(*context_.node, attribute_, before, gesture));
}

void AttributeEditor::Reset() {
  BeginGesture();
  if (!IsLive() || IsAtDefault()) return;
  Commit(0, [](Attribute& attribute) { attribute.ResetToDefault(); });
}

bool AttributeEditor::eventFilter(QObject* watched, QEvent* event) {
  auto* input = qobject_cast<QWidget*>(watched);
  switch (event->type()) {
    case QEvent::Wheel:
      if (input == nullptr || input->hasFocus()) break;
      event->ignore();
      return true;
    case QEvent::FocusIn: BeginGesture(); break;
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress: return FilterKey(event);
    default: break;
  }
  return QWidget::eventFilter(watched, event);
}

bool AttributeEditor::FilterKey(QEvent* event) {
  const auto* key = static_cast<const QKeyEvent*>(event);
  const bool is_undo = key->matches(QKeySequence::Undo);
  if (!is_undo && !key->matches(QKeySequence::Redo)) return false;
  event->accept();
  if (event->type() == QEvent::ShortcutOverride) return true;
  BeginGesture();
  if (is_undo) {
    context_.GetStack().undo();
  } else {
    context_.GetStack().redo();
  }
  return true;
}

}  // namespace ScEng
