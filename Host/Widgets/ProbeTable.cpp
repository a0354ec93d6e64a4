// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ProbeTable.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPointer>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Host/Image/Image.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ProbeReading.h"
#include "Host/Widgets/Probes.h"
#include "Host/Widgets/ViewText.h"

namespace ScEng {

class ProbeTable::Implementation {
 public:
  explicit Implementation(ProbeTable& owner) : owner_(owner), table_(new QTableWidget(&owner)) {
    auto* layout = new QVBoxLayout(&owner);
    layout->setContentsMargins(0, 0, 0, 0);
    table_->setObjectName(QStringLiteral("probes"));
    table_->setAccessibleName(tr("Probes"));
    table_->setFrameShape(QFrame::NoFrame);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setShowGrid(false);
    table_->setAlternatingRowColors(false);
    table_->setTabKeyNavigation(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 8);
    table_->horizontalHeader()->setHighlightSections(false);
    table_->horizontalHeader()->setDefaultAlignment(Qt::AlignRight | Qt::AlignVCenter);
    table_->installEventFilter(&owner);
    layout->addWidget(table_);
    timer_.setSingleShot(true);
    timer_.setInterval(0);
    QObject::connect(&timer_, &QTimer::timeout, &owner, [this] { Fill(); });
    QObject::connect(table_, &QTableWidget::itemSelectionChanged, &owner, [this] { TakeSelection(); });
  }

  void Fill() {
    timer_.stop();
    const QSignalBlocker block(table_);
    const std::vector<Probe> probes = probes_ != nullptr ? probes_->GetProbes() : std::vector<Probe>();
    const bool has_regions = std::any_of(probes.begin(), probes.end(), [](const Probe& p) { return !p.IsPoint(); });
    const bool has_ground = image_ != nullptr && HasGround(image_->GetImage());
    QStringList titles{tr("No."), tr("Place")};
    if (has_ground) titles.append(tr("Map"));
    titles.append(tr("Value"));
    if (has_regions) titles.append({tr("Lowest"), tr("Highest"), tr("Mean"), tr("Count")});
    for (const auto& [name, image] : inputs_) titles.append(name);
    table_->setColumnCount(static_cast<int>(titles.size()));
    table_->setHorizontalHeaderLabels(titles);
    table_->setRowCount(static_cast<int>(probes.size()));
    for (std::size_t row = 0; row < probes.size(); ++row) {
      FillRow(static_cast<int>(row), Describe(probes[row], has_ground, has_regions));
    }
    reader_.EndReading();
    table_->resizeColumnsToContents();
    const int gap = table_->fontMetrics().averageCharWidth() * 2;
    for (int i = 0; i < table_->columnCount(); ++i) table_->setColumnWidth(i, table_->columnWidth(i) + gap);
    ShowSelection();
    owner_.updateGeometry();
  }

  void ShowSelection() {
    const QSignalBlocker block(table_);
    table_->clearSelection();
    if (probes_ == nullptr) return;
    const std::vector<Probe>& probes = probes_->GetProbes();
    for (std::size_t row = 0; row < probes.size(); ++row) {
      const auto place = static_cast<int>(row);
      if (probes[row].number != probes_->GetSelected() || place >= table_->rowCount()) continue;
      table_->selectRow(place);
      table_->scrollToItem(table_->item(place, 0));
    }
  }

  ProbeTable& owner_;
  QTableWidget* table_;
  QPointer<ProbeList> probes_;
  std::shared_ptr<const ViewImage> image_;
  NamedImages inputs_;
  QTimer timer_;

 private:
  QStringList Describe(const Probe& probe, bool has_ground, bool has_regions) {
    QStringList texts{QString::number(probe.number), FormatPlace(probe)};
    if (has_ground) {
      const QPointF middle(probe.x + probe.width / 2.0, probe.y + probe.height / 2.0);
      texts.append(FormatGround(image_->GetImage(), middle));
    }
    const ProbeReading reading = reader_.Read(image_, probe);
    const bool is_outside = reading.value.isEmpty() && reading.count.isEmpty();
    texts.append(is_outside && image_ != nullptr ? tr("outside") : reading.value);
    if (has_regions) texts.append({reading.lowest, reading.highest, reading.mean, reading.count});
    for (const auto& [name, image] : inputs_) {
      const ProbeReading there = reader_.Read(image, probe);
      texts.append(probe.IsPoint() || there.mean.isEmpty() ? there.value : tr("mean %1").arg(there.mean));
    }
    return texts;
  }

  void FillRow(int row, const QStringList& texts) {
    for (int column = 0; column < texts.size(); ++column) {
      auto* item = new QTableWidgetItem(texts[column]);
      item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      table_->setItem(row, column, item);
    }
  }

  void TakeSelection() {
    if (probes_ == nullptr) return;
    const QModelIndexList rows = table_->selectionModel()->selectedRows();
    const auto& probes = probes_->GetProbes();
    const int row = rows.isEmpty() ? -1 : rows.front().row();
    probes_->Select(row >= 0 && row < static_cast<int>(probes.size()) ? probes[static_cast<std::size_t>(row)].number
                                                                      : 0);
  }

  ProbeReader reader_;
};

ProbeTable::ProbeTable(QWidget* parent) : QWidget(parent), implementation_(std::make_unique<Implementation>(*this)) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

ProbeTable::~ProbeTable() { implementation_->table_->disconnect(this); }

void ProbeTable::SetProbes(ProbeList* probes) {
  if (implementation_->probes_ != nullptr) implementation_->probes_->disconnect(this);
  implementation_->probes_ = probes;
  implementation_->timer_.start();
  if (probes == nullptr) return;
  connect(probes, &ProbeList::Changed, this, [this] { implementation_->timer_.start(); });
  connect(probes, &ProbeList::SelectionChanged, this, [this] { implementation_->ShowSelection(); });
}

void ProbeTable::SetImages(std::shared_ptr<const ViewImage> image, NamedImages inputs) {
  implementation_->image_ = std::move(image);
  implementation_->inputs_ = std::move(inputs);
  implementation_->timer_.start();
}

void ProbeTable::Refresh() { implementation_->Fill(); }

QSize ProbeTable::sizeHint() const {
  constexpr int kMostRows = 5;
  const QTableWidget& table = *implementation_->table_;
  const int rows = std::clamp(table.rowCount(), 1, kMostRows);
  int height = table.horizontalHeader()->sizeHint().height() + rows * table.verticalHeader()->defaultSectionSize() + 4;
  if (table.horizontalHeader()->length() > width()) height += table.horizontalScrollBar()->sizeHint().height();
  return {320, height};
}

bool ProbeTable::eventFilter(QObject* watched, QEvent* event) {
  const auto* key = event->type() == QEvent::KeyPress ? dynamic_cast<QKeyEvent*>(event) : nullptr;
  if (key == nullptr || implementation_->probes_ == nullptr) return QWidget::eventFilter(watched, event);
  if (key->key() != Qt::Key_Delete && key->key() != Qt::Key_Backspace) return QWidget::eventFilter(watched, event);
  implementation_->probes_->Remove(implementation_->probes_->GetSelected());
  return true;
}

}  // namespace ScEng
