// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDoubleSpinBox>
#include <QSlider>
#include <QString>
#include <QWidget>

/// A number by a slider and a field, which follow each other.
class SettingRow : public QWidget {
  Q_OBJECT

 public:
  struct Range {
    double low = 0.0;
    double high = 1.0;
    int decimals = 0;
    QString unit;
    /// Equal ways of the slider are equal factors. Needs `low` above 0.
    bool is_logarithmic = false;
    /// `high` is followed by `low`.
    bool is_circle = false;
  };

  SettingRow(const QString& name, const QString& object_name, const Range& range, QWidget* parent = nullptr);

  [[nodiscard]] double GetValue() const { return field_->value(); }
  /// Tells nobody.
  void SetValue(double value);
  [[nodiscard]] QWidget* GetField() const { return field_; }

 signals:
  void Changed();

 private:
  [[nodiscard]] int ToPosition(double value) const;
  [[nodiscard]] double ToValue(int position) const;

  Range range_;
  QSlider* slider_;
  QDoubleSpinBox* field_;
};
