// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/SecondMapRow.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <algorithm>

SecondMapRow::SecondMapRow(QWidget* parent) : QWidget(parent), map_(new QComboBox(this)), use_(new QComboBox(this)) {
  auto* row = new QHBoxLayout(this);
  const int margin = fontMetrics().height() / 4;
  row->setContentsMargins(margin, 0, margin, margin);
  row->setSpacing(margin);
  auto* label = new QLabel(tr("&Map"), this);
  label->setBuddy(map_);
  row->addWidget(label);
  map_->setObjectName(QStringLiteral("second map"));
  map_->setAccessibleName(tr("Image over the terrain"));
  map_->setToolTip(tr("An image that is laid over the terrain"));
  map_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  constexpr int kLeastLetters = 8;
  map_->setMinimumContentsLength(kLeastLetters);
  row->addWidget(map_, 1);
  use_->setObjectName(QStringLiteral("use of second map"));
  use_->setAccessibleName(tr("How the image is laid over the terrain"));
  use_->setToolTip(tr("As color, or as a tint where its values are high"));
  use_->addItems({tr("Color"), tr("Mask")});
  row->addWidget(use_);
  SetMaps({});
  Update();
  for (QComboBox* list : {map_, use_}) {
    connect(list, &QComboBox::currentIndexChanged, this, [this] {
      Update();
      emit Changed();
    });
  }
}

void SecondMapRow::SetMaps(const QStringList& maps) {
  const QString before = GetMap();
  {
    const QSignalBlocker blocker(map_);
    map_->clear();
    map_->addItem(tr("None"), QString());
    for (const QString& map : maps) map_->addItem(map, map);
    map_->setCurrentIndex(std::max(0, map_->findData(before)));
  }
  Update();
  if (GetMap() != before) emit Changed();
}

QString SecondMapRow::GetMap() const { return map_->currentData().toString(); }

bool SecondMapRow::IsMask() const { return use_->currentIndex() == 1; }

void SecondMapRow::Update() { use_->setEnabled(!GetMap().isEmpty()); }
