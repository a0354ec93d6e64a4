// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

class QComboBox;

/// Chooses an image that is laid over the terrain, and whether its colors or, where its values are high, a tint.
class SecondMapRow : public QWidget {
  Q_OBJECT

 public:
  explicit SecondMapRow(QWidget* parent = nullptr);

  /// The images that there are, "id.plug". One that is chosen and gone is no longer chosen.
  void SetMaps(const QStringList& maps);
  /// Empty for none.
  [[nodiscard]] QString GetMap() const;
  [[nodiscard]] bool IsMask() const;

 signals:
  /// By the person who looks, or since what was chosen is gone.
  void Changed();

 private:
  void Update();

  QComboBox* map_;
  QComboBox* use_;
};
