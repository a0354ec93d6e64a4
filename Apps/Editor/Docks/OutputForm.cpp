// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/OutputForm.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QToolButton>

#include "Apps/Editor/Docks/Signs.h"
#include "Apps/Editor/Files/DocumentPath.h"
#include "Host/Files/ImageFile.h"

namespace fs = std::filesystem;

OutputForm::OutputForm(QWidget* parent) : QWidget(parent) {
  auto* form = new QFormLayout(this);
  form->setContentsMargins(0, 0, 0, 0);
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  from_ = new QComboBox(this);
  from_->setObjectName(QStringLiteral("outputs.from"));
  from_->setAccessibleName(tr("Image that is written"));
  from_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  form->addRow(tr("&Image"), from_);
  auto* place = new QWidget(this);
  auto* place_layout = new QHBoxLayout(place);
  place_layout->setContentsMargins(0, 0, 0, 0);
  path_ = new QLineEdit(place);
  path_->setObjectName(QStringLiteral("outputs.path"));
  path_->setAccessibleName(tr("File that is written"));
  path_->setToolTip(tr("The ending says the format. A relative path starts from the folder of the document."));
  auto* browse = new QToolButton(place);
  browse->setObjectName(QStringLiteral("outputs.browse"));
  browse->setText(QStringLiteral("…"));
  browse->setAccessibleName(tr("Choose the file"));
  browse->setToolTip(tr("Choose the file"));
  browse->setFocusPolicy(Qt::TabFocus);
  place_layout->addWidget(path_, 1);
  place_layout->addWidget(browse);
  auto* path_label = new QLabel(tr("&File"), this);
  path_label->setBuddy(path_);
  form->addRow(path_label, place);
  error_ = new QLabel(this);
  error_->setObjectName(QStringLiteral("outputs.error"));
  error_->setTextFormat(Qt::PlainText);
  error_->setWordWrap(true);
  error_->hide();
  form->addRow(QString(), error_);
  const QString automatic = tr("Automatic");
  type_ = AddChoice(QStringLiteral("outputs.type"), tr("&Samples"), tr("What each sample is stored as"),
                    {{automatic, QStringLiteral("auto")},
                     {tr("Float (32 bits)"), QStringLiteral("float")},
                     {tr("Half (16 bits)"), QStringLiteral("half")},
                     {tr("Integers of 16 bits"), QStringLiteral("uint16")},
                     {tr("Integers of 8 bits"), QStringLiteral("uint8")},
                     {tr("Signed integers of 16 bits"), QStringLiteral("int16")}});
  samples_ = AddChoice(QStringLiteral("outputs.samples"), tr("I&ntegers hold"), tr("What integers stand for"),
                       {{tr("0 to 1, as shares of the largest"), QStringLiteral("unit")},
                        {tr("The values themselves"), QStringLiteral("stored")}});
  opacity_ = AddChoice(QStringLiteral("outputs.opacity"), tr("&Opacity"), tr("Whether the opacity is written"),
                       {{automatic, QStringLiteral("auto")},
                        {tr("Keep"), QStringLiteral("keep")},
                        {tr("Leave out"), QStringLiteral("drop")}});
  metadata_ = AddChoice(QStringLiteral("outputs.metadata"), tr("&Metadata"), tr("Whether metadata is written"),
                        {{tr("Keep"), QStringLiteral("keep")}, {tr("Leave out"), QStringLiteral("strip")}});
  layer_ = new QLineEdit(this);
  layer_->setObjectName(QStringLiteral("outputs.layer"));
  layer_->setAccessibleName(tr("Layer"));
  layer_->setToolTip(
      tr("Outputs with one path and different layers are written to one file, where its format has layers."));
  form->addRow(tr("&Layer"), layer_);
  connect(from_, &QComboBox::activated, this, &OutputForm::TellIfEdited);
  connect(path_, &QLineEdit::editingFinished, this, &OutputForm::TellIfEdited);
  connect(layer_, &QLineEdit::editingFinished, this, &OutputForm::TellIfEdited);
  connect(browse, &QToolButton::clicked, this, &OutputForm::Browse);
  QWidget* last = from_;
  for (QWidget* next : {static_cast<QWidget*>(path_), static_cast<QWidget*>(browse), static_cast<QWidget*>(type_)}) {
    setTabOrder(last, next);
    last = next;
  }
}

QComboBox* OutputForm::AddChoice(const QString& name, const QString& label, const QString& tip,
                                 const QList<std::pair<QString, QString>>& choices) {
  auto* box = new QComboBox(this);
  box->setObjectName(name);
  box->setAccessibleName(QString(label).remove(u'&'));
  box->setToolTip(tip);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  for (const auto& [text, word] : choices) box->addItem(text, word);
  connect(box, &QComboBox::activated, this, &OutputForm::TellIfEdited);
  static_cast<QFormLayout*>(layout())->addRow(label, box);
  return box;
}

void OutputForm::Show(const ScEng::DocumentOutput& output, const QStringList& plugs, const fs::path& folder) {
  const ScEng::DocumentOutput before = std::exchange(shown_, output);
  folder_ = folder;
  const QString from = QString::fromStdString(output.from);
  // A list that is open stays open where nothing has changed.
  if (plugs != plugs_ || from_->count() != plugs.size()) {
    from_->clear();
    from_->addItems(plugs);
    plugs_ = plugs;
  }
  // What is not there any more is shown all the same.
  if (from_->findText(from) < 0) from_->addItem(from);
  from_->setCurrentIndex(from_->findText(from));
  const auto show_text = [](QLineEdit* field, const std::string& was, const std::string& now) {
    // What is being typed stays, unless the output is another one now.
    if (was != now || !field->hasFocus()) field->setText(QString::fromStdString(now));
  };
  show_text(path_, before.path, output.path);
  show_text(layer_, before.layer, output.layer);
  const auto show_word = [](QComboBox* box, const std::string& word) {
    box->setCurrentIndex(word.empty() ? 0 : std::max(0, box->findData(QString::fromStdString(word))));
  };
  show_word(type_, output.type);
  show_word(samples_, output.samples);
  show_word(opacity_, output.opacity);
  show_word(metadata_, output.metadata);
  if (!(before == output)) ShowError({});
}

ScEng::DocumentOutput OutputForm::GetOutput() const {
  const auto read = [](const QComboBox* box, const std::string& shown) {
    // The first word is what an empty one stands for; a document that leaves it out goes on doing so.
    return box->currentIndex() == 0 && shown.empty() ? std::string() : box->currentData().toString().toStdString();
  };
  ScEng::DocumentOutput output;
  output.from = from_->currentText().toStdString();
  output.path = path_->text().toStdString();
  output.type = read(type_, shown_.type);
  output.samples = read(samples_, shown_.samples);
  output.opacity = read(opacity_, shown_.opacity);
  output.metadata = read(metadata_, shown_.metadata);
  output.layer = layer_->text().toStdString();
  return output;
}

void OutputForm::ShowError(const QString& message) {
  QPalette colors = palette();
  colors.setColor(QPalette::WindowText, GetSignColor(Sign::kError, colors));
  error_->setPalette(colors);
  error_->setText(message);
  error_->setVisible(!message.isEmpty());
}

void OutputForm::TellIfEdited() {
  if (GetOutput() == shown_) {
    ShowError({});
  } else {
    emit Edited();
  }
}

void OutputForm::Browse() {
  auto* dialog = new QFileDialog(this, tr("Write to"));
  dialog->setObjectName(QStringLiteral("outputs.dialog"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  const fs::path file = ScEng::MakePath(path_->text().toStdString(), folder_);
  if (!folder_.empty() || file.is_absolute()) dialog->setDirectory(QString::fromStdString(file.parent_path().string()));
  dialog->selectFile(QString::fromStdString(file.filename().string()));
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& chosen) {
    path_->setText(QString::fromStdString(MakeDocumentPath(chosen.toStdString(), folder_)));
    TellIfEdited();
  });
  dialog->open();
}
