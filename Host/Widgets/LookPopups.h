// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

#include "Host/Viewing/Look.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;

namespace ScEng {

/// A small window with settings of a look, which goes when something beside it is clicked.
class LookPopup : public QFrame {
  Q_OBJECT

 public:
  explicit LookPopup(QWidget* parent);

  /// Shows a look, without telling anybody.
  void SetLook(const Look& look);
  /// Opens below a widget, within the screen.
  void Open(const QWidget& anchor);

 Q_SIGNALS:
  void LookChanged(const ScEng::Look& look);

 protected:
  /// Puts the look into the fields; signals are blocked meanwhile.
  virtual void Show(const Look& look) = 0;
  [[nodiscard]] const Look& GetLook() const { return look_; }
  /// Takes over a look that was set with the fields.
  void Change(const Look& look);

  QFormLayout* MakeForm();
  QDoubleSpinBox* AddNumber(QFormLayout* form, const QString& name, const QString& text, const QString& suffix,
                            double low, double high, double step, const QString& tooltip);

 private:
  Look look_;
  bool is_showing_ = false;
};

/// Shading, its ramp and its light.
class ShadingPopup : public LookPopup {
  Q_OBJECT

 public:
  explicit ShadingPopup(QWidget* parent);

 protected:
  void Show(const Look& look) override;

 private:
  void Take();

  QComboBox* shading_;
  QComboBox* ramp_;
  QDoubleSpinBox* azimuth_;
  QDoubleSpinBox* altitude_;
  QDoubleSpinBox* exaggeration_;
};

/// Contours and their step.
class ContourPopup : public LookPopup {
  Q_OBJECT

 public:
  explicit ContourPopup(QWidget* parent);

 protected:
  void Show(const Look& look) override;

 private:
  void Take();

  QCheckBox* contours_;
  QDoubleSpinBox* step_;
};

}  // namespace ScEng
