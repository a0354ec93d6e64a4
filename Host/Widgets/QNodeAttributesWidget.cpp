// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/QNodeAttributesWidget.h"

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QUndoStack>
#include <algorithm>
#include <cstddef>
#include <vector>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Util/Log.h"
#include "Host/Widgets/AttributeEditor.h"
#include "Host/Widgets/Editors.h"
#include "Host/Widgets/PanelStyle.h"

using ScEng::AttributeEditor;
using ScEng::SignButton;

namespace {

using AdditionalInfo = QNodeAttributesWidget::AdditionalInfo;

// Node libraries are built with these places in them.
static_assert(offsetof(AdditionalInfo, visible) == 0 && offsetof(AdditionalInfo, enabled) == 1);
static_assert(offsetof(AdditionalInfo, reserved) == 2 && sizeof(AdditionalInfo::reserved) == 4);
static_assert(offsetof(AdditionalInfo, slider_exponent) == 8 && offsetof(AdditionalInfo, relative_width) == 16);
static_assert(offsetof(AdditionalInfo, labels) == 24);

constexpr int kIconSize = 32;
constexpr int kMargin = 16;
constexpr int kSmallMargin = 4;
constexpr int kRowSpacing = 8;
constexpr int kSmallRowSpacing = 3;
constexpr int kColumnSpacing = 12;

/// A text of the node library; an empty one where it throws.
template <class Function>
std::string AskLibrary(const char* operation, const Function& function) {
  return ScEng::AskGuarded(operation, std::string(), function);
}

/// A name for people: "auto_level" is "Auto level". A name of one letter is a term of a formula and stays.
QString MakeTitle(const std::string& name) {
  QString title = QString::fromStdString(name).replace(u'_', u' ');
  if (title.size() > 1) title[0] = title[0].toUpper();
  return title;
}

/// Marks the letter of `title` that moves the focus to the row, another one in each row.
QString AddMnemonic(QString title, QString& taken) {
  title.replace(u'&', QStringLiteral("&&"));
  for (qsizetype i = 0; i < title.size(); ++i) {
    const QChar letter = title[i].toLower();
    if (!letter.isLetter() || taken.contains(letter)) continue;
    taken += letter;
    return title.insert(i, u'&');
  }
  return title;
}

/// What the entry leaves open is as the attribute's own row has it.
AdditionalInfo Complete(AdditionalInfo info, const Attribute& attribute) {
  const AttributeRow* row = attribute.GetRow();
  if (row == nullptr) return info;
  if (info.labels.empty()) info.labels = row->labels;
  if (info.tooltip.empty()) info.tooltip = row->text;
  if (info.suffix.empty() && *row->unit != '\0') info.suffix = std::string(" ") + row->unit;
  if (info.slider_exponent == 0.0) info.slider_exponent = row->slider_exponent;
  return info;
}

QString ShowValue(const Attribute& attribute) {
  const PlugValue& value = attribute.GetDefault();
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag:
      return value.GetFlag() ? QNodeAttributesWidget::tr("on") : QNodeAttributesWidget::tr("off");
    case Attribute::Kind::kNumber: return QString::number(value.GetNumber(), 'g', 10);
    case Attribute::Kind::kChoice: return QString::fromStdString(value.GetText());
    default: return {};
  }
}

/// Says where the value of a driven attribute comes from.
class SourceLabel : public QLabel {
 public:
  explicit SourceLabel(QWidget* parent) : QLabel(parent) {
    constexpr int kHeight = 26;
    setFixedHeight(kHeight);
    setContentsMargins(26, 0, 8, 0);
    setTextFormat(Qt::PlainText);
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor accent = palette().color(QPalette::Highlight);
    QColor ground = accent;
    ground.setAlphaF(0.14F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect(), 4.0, 4.0);
    // A plug: a wire that ends in a dot.
    const double middle = height() / 2.0;
    painter.setPen(QPen(accent, 1.6));
    painter.drawLine(QPointF(7.0, middle), QPointF(14.0, middle));
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(16.0, middle), 2.6, 2.6);
    painter.end();
    QLabel::paintEvent(event);
  }
};

}  // namespace

class QNodeAttributesWidget::Implementation : public NodeObserver {
 public:
  Implementation(QNodeAttributesWidget& panel, Node* node, const NodeInterface* descriptor, const AdditionalInfo* info,
                 bool compact)
      : panel_(panel) {
    context_.node = node;
    auto* layout = new QVBoxLayout(&panel_);
    const int margin = compact ? kSmallMargin : kMargin;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(compact ? kSmallRowSpacing : kMargin);
    if (node != nullptr) {
      if (!compact) layout->addWidget(MakeHeader(*node, descriptor));
      layout->addWidget(MakeRows(*node, info, compact));
      node->AddObserver(this);
    }
    layout->addStretch(1);
    for (QWidget* child : panel_.findChildren<QWidget*>()) child->setStyle(ScEng::PanelStyle::Get());
    SetTabOrder();
    Refresh();
    ShowSources();
  }

  ~Implementation() override {
    if (context_.node != nullptr) context_.node->RemoveObserver(this);
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  void OnNodeChanged(Node&) override { Refresh(); }
  void OnAttributeSourcesChanged(Node&) override { ShowSources(); }

  void OnNodeDestroyed(Node&) override {
    // Its attributes go with it. The rows cannot go at once: this may be in the middle of what one of them does.
    context_.node = nullptr;
    rows_.clear();
    for (QWidget* child : panel_.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      child->setEnabled(false);
      child->hide();
      child->deleteLater();
    }
  }

  [[nodiscard]] ScEng::PanelContext& GetContext() { return context_; }

  void ResetToDefaults() {
    if (context_.node == nullptr || !CanResetAny()) return;
    QUndoStack& stack = context_.GetStack();
    stack.beginMacro(
        QNodeAttributesWidget::tr("%1: all defaults").arg(QString::fromStdString(context_.node->GetLabel())));
    for (const Row& row : rows_) {
      if (CanReset(row)) row.editor->Reset();
    }
    stack.endMacro();
  }

 private:
  struct Row {
    const Attribute* attribute = nullptr;
    QLabel* label = nullptr;
    AttributeEditor* editor = nullptr;
    SourceLabel* source = nullptr;
    SignButton* reset = nullptr;
    bool is_enabled = true;
    bool is_resettable = true;
    bool is_driven = false;
  };

  QWidget* MakeHeader(const Node& node, const NodeInterface* descriptor) {
    auto* header = new QWidget(&panel_);
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kColumnSpacing);
    QPixmap icon(QString::fromStdString(
        AskLibrary("GetIconPath", [&] { return descriptor != nullptr ? descriptor->GetIconPath() : std::string(); })));
    if (!icon.isNull()) {
      // The picture has more pixels than the place: they are there for displays of high resolution.
      icon.setDevicePixelRatio(static_cast<double>(icon.width()) / kIconSize);
      auto* picture = new QLabel(header);
      picture->setPixmap(icon);
      picture->setFixedSize(kIconSize, kIconSize);
      layout->addWidget(picture);
    }
    const std::string name =
        AskLibrary("GetName", [&] { return descriptor != nullptr ? descriptor->GetName() : node.GetName(); });
    auto* title = new QLabel(QString::fromStdString(name), header);
    title->setObjectName(QStringLiteral("title"));
    title->setTextFormat(Qt::PlainText);
    QFont font = title->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.25);
    title->setFont(font);
    layout->addWidget(title, 1);
    reset_all_ = new QPushButton(QNodeAttributesWidget::tr("Reset all"), header);
    reset_all_->setObjectName(QStringLiteral("reset_all"));
    reset_all_->setToolTip(QNodeAttributesWidget::tr("Sets every attribute to its default"));
    reset_all_->setAutoDefault(false);
    connect(reset_all_, &QPushButton::clicked, &panel_, [this] { ResetToDefaults(); });
    QSizePolicy policy = reset_all_->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    reset_all_->setSizePolicy(policy);
    layout->addWidget(reset_all_);
    return header;
  }

  QWidget* MakeRows(Node& node, const AdditionalInfo* info, bool compact) {
    auto* area = new QWidget(&panel_);
    auto* grid = new QGridLayout(area);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(kColumnSpacing);
    grid->setVerticalSpacing(compact ? kSmallRowSpacing : kRowSpacing);
    grid->setColumnStretch(1, 1);
    constexpr int kLeastLabel = 76;
    grid->setColumnMinimumWidth(0, kLeastLabel);
    QString taken;
    for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) {
      Attribute* attribute = node.GetAttribute(id);
      if (attribute == nullptr) continue;
      const AdditionalInfo row_info = Complete(info != nullptr ? info[id] : AdditionalInfo(), *attribute);
      if (row_info.visible) AddRow(node, *attribute, row_info, *grid, taken);
    }
    if (rows_.empty()) {
      auto* note = new QLabel(QNodeAttributesWidget::tr("This node has no attributes."), area);
      note->setEnabled(false);
      grid->addWidget(note, 0, 0, 1, 3);
    }
    return area;
  }

  void AddRow(const Node& node, Attribute& attribute, const AdditionalInfo& info, QGridLayout& grid, QString& taken) {
    QWidget* area = grid.parentWidget();
    const QString name = QString::fromStdString(attribute.GetName());
    Row row;
    row.attribute = &attribute;
    row.is_enabled = info.enabled;
    row.is_resettable = info.resettable;

    // A node may know a better name for the plug of its attribute.
    const auto plug = static_cast<unsigned>(node.GetNumRegularInputs() + attribute.GetId());
    const std::string alias = AskLibrary("GetInplugAlias", [&] { return node.GetInplugAlias(plug); });
    const QString title =
        alias.empty() || alias == attribute.GetName() ? MakeTitle(attribute.GetName()) : QString::fromStdString(alias);
    row.label = new QLabel(AddMnemonic(title, taken), area);
    row.label->setObjectName(name + QStringLiteral(".label"));

    auto* place = new QWidget(area);
    auto* place_layout = new QHBoxLayout(place);
    place_layout->setContentsMargins(0, 0, 0, 0);
    place_layout->setSpacing(0);
    row.editor = AttributeEditor::Make(context_, attribute, info, place);
    row.source = new SourceLabel(place);
    row.source->setObjectName(name + QStringLiteral(".source"));
    row.source->hide();
    constexpr double kNarrowest = 0.1;
    constexpr int kWhole = 100;
    const double width = info.relative_width >= kNarrowest ? std::min(info.relative_width, 1.0) : kNarrowest;
    const int stretch = static_cast<int>(width * kWhole);
    place_layout->addWidget(row.editor, stretch);
    place_layout->addWidget(row.source, stretch);
    if (stretch < kWhole) place_layout->addStretch(kWhole - stretch);

    row.reset = new SignButton(SignButton::Sign::kReset, area);
    row.reset->setObjectName(name + QStringLiteral(".reset"));
    row.reset->setAccessibleName(QNodeAttributesWidget::tr("Reset %1").arg(title));
    row.reset->setToolTip(QNodeAttributesWidget::tr("Back to the default"));
    QSizePolicy policy = row.reset->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    row.reset->setSizePolicy(policy);
    AttributeEditor* editor = row.editor;
    connect(row.reset, &QAbstractButton::clicked, &panel_, [editor] { editor->Reset(); });

    const QString tooltip = MakeTooltip(attribute, info);
    row.label->setToolTip(tooltip);
    row.label->setBuddy(editor->GetMainInput());
    for (QWidget* input : editor->GetInputs()) {
      if (input->toolTip().isEmpty()) input->setToolTip(tooltip);
      if (input == editor->GetMainInput()) input->setAccessibleName(title);
    }
    // A double click on the name resets, as one on the slider does.
    row.label->installEventFilter(&panel_filter_);
    panel_filter_.editors.emplace_back(row.label, row.editor, info.resettable);

    const int line = grid.rowCount();
    grid.addWidget(row.label, line, 0, Qt::AlignTop);
    constexpr int kHeight = 26;
    row.label->setFixedHeight(kHeight);
    grid.addWidget(place, line, 1);
    grid.addWidget(row.reset, line, 2, Qt::AlignTop);
    rows_.push_back(row);
  }

  static QString MakeTooltip(const Attribute& attribute, const AdditionalInfo& info) {
    const QString sentence = QString::fromStdString(info.tooltip);
    QString facts = QNodeAttributesWidget::tr("Name in documents: %1").arg(QString::fromStdString(attribute.GetName()));
    if (const QString value = ShowValue(attribute); !value.isEmpty()) {
      facts += QStringLiteral(". ") + QNodeAttributesWidget::tr("Default: %1").arg(value);
    }
    // Rich text is what makes long lines wrap.
    return QStringLiteral("<qt>") + (sentence.isEmpty() ? QString() : sentence.toHtmlEscaped() + "<br/>") +
           QStringLiteral("<small>") + facts.toHtmlEscaped() + QStringLiteral("</small></qt>");
  }

  void SetTabOrder() {
    QWidget* last = nullptr;
    const auto add = [&](QWidget* widget) {
      if (last != nullptr) setTabOrder(last, widget);
      last = widget;
    };
    for (const Row& row : rows_) {
      // As they stand from left to right: a slider before its field.
      std::vector<QWidget*> inputs = row.editor->GetInputs();
      if (row.attribute->GetKind() == Attribute::Kind::kNumber) std::reverse(inputs.begin(), inputs.end());
      for (QWidget* input : inputs) add(input);
      add(row.reset);
    }
    if (reset_all_ != nullptr && last != nullptr) setTabOrder(last, reset_all_);
  }

  void Refresh() {
    if (context_.node == nullptr) return;
    for (Row& row : rows_) {
      row.editor->Refresh();
      row.reset->setVisible(CanReset(row));
    }
    if (reset_all_ != nullptr) reset_all_->setVisible(CanResetAny());
  }

  void ShowSources() {
    if (context_.node == nullptr) return;
    for (Row& row : rows_) {
      const std::string source = context_.node->GetAttributeSource(row.attribute->GetId());
      row.is_driven = !source.empty();
      row.source->setText(QNodeAttributesWidget::tr("driven by %1").arg(QString::fromStdString(source)));
      row.source->setToolTip(
          QNodeAttributesWidget::tr("The value comes from a connection. Disconnect it to edit it here."));
      row.editor->setEnabled(row.is_enabled && !row.is_driven);
      row.editor->setVisible(!row.is_driven);
      row.source->setVisible(row.is_driven);
      row.reset->setVisible(CanReset(row));
    }
    if (reset_all_ != nullptr) reset_all_->setVisible(CanResetAny());
  }

  static bool CanReset(const Row& row) {
    return row.is_resettable && row.is_enabled && !row.is_driven && !row.editor->IsAtDefault();
  }
  [[nodiscard]] bool CanResetAny() const { return std::any_of(rows_.begin(), rows_.end(), CanReset); }

  class LabelFilter : public QObject {
   public:
    struct Entry {
      QLabel* label;
      AttributeEditor* editor;
      bool is_resettable;
      Entry(QLabel* a, AttributeEditor* b, bool c) : label(a), editor(b), is_resettable(c) {}
    };
    std::vector<Entry> editors;

   protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
      if (event->type() != QEvent::MouseButtonDblClick) return QObject::eventFilter(watched, event);
      for (const Entry& entry : editors) {
        if (entry.label == watched && entry.is_resettable && entry.editor->isEnabled()) entry.editor->Reset();
      }
      return true;
    }
  };

  QNodeAttributesWidget& panel_;
  ScEng::PanelContext context_;
  LabelFilter panel_filter_;
  std::vector<Row> rows_;
  QPushButton* reset_all_ = nullptr;
};

QNodeAttributesWidget::QNodeAttributesWidget(QWidget* parent, Node* node, const NodeInterface* descriptor,
                                             const AdditionalInfo* info, bool compact)
    : QWidget(parent), implementation_(std::make_unique<Implementation>(*this, node, descriptor, info, compact)) {
  setObjectName(QStringLiteral("attributes"));
}

QNodeAttributesWidget::~QNodeAttributesWidget() {
  // The rows use what the implementation holds, so they go first.
  qDeleteAll(findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
}

Node* QNodeAttributesWidget::GetNode() const { return implementation_->GetContext().node; }

QUndoStack* QNodeAttributesWidget::GetUndoStack() const { return &implementation_->GetContext().GetStack(); }

void QNodeAttributesWidget::SetUndoStack(QUndoStack* stack) { implementation_->GetContext().stack = stack; }

QUndoStack* QNodeAttributesWidget::GetDefaultUndoStack() {
  static QPointer<QUndoStack> stack;
  if (stack == nullptr) stack = new QUndoStack(QCoreApplication::instance());
  return stack;
}

QStyle* QNodeAttributesWidget::GetPanelStyle() { return ScEng::PanelStyle::Get(); }

void QNodeAttributesWidget::ResetToDefaults() { implementation_->ResetToDefaults(); }

QWidget* HostCreateAttributesWidget(QWidget* parent, Node* node, const NodeInterface* descriptor,
                                    const QNodeAttributesWidget::AdditionalInfo* info, bool compact) {
  if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
    Log::Error("an attribute panel needs a QApplication, and there is none");
    return nullptr;
  }
  return ScEng::AskGuarded<QWidget*>("making an attribute panel", nullptr, [&] {
    return new QNodeAttributesWidget(parent, node, descriptor, info, compact);
  });
}
