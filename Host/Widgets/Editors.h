// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QDoubleSpinBox>
#include <QSlider>
#include <functional>

namespace ScEng {

/// The field of a number. It takes a comma for the decimal point, is as wide as a number needs, and leaves the wheel to
/// the panel unless it has the focus.
class NumberBox : public QDoubleSpinBox {
 public:
  explicit NumberBox(QWidget* parent);

  /// Shows a value without telling anybody.
  void Show(double value);
  /// The value that is shown, rounded to the decimals. A box tells of this value again when it is left or Enter is
  /// pressed; it is no change then.
  [[nodiscard]] double GetShown() const { return shown_; }

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;
  [[nodiscard]] QString textFromValue(double value) const override;
  [[nodiscard]] double valueFromText(const QString& text) const override;
  /// Any number may be typed. One that the field cannot hold becomes the nearest that it can when it is complete.
  QValidator::State validate(QString& text, int& position) const override;
  void fixup(QString& text) const override;

 private:
  /// The number without its suffix, with a point for a comma.
  [[nodiscard]] QString Plain(const QString& text) const;
  /// Rounded to the decimals.
  [[nodiscard]] double Round(double value) const;

  double shown_ = 0.0;
};

/// The slider of a number: a groove that is filled from zero, and a handle. Positions are 0 to `kPositions`. A click
/// takes the handle along; arrow keys go by the number's own steps.
class NumberSlider : public QSlider {
 public:
  static constexpr int kPositions = 10000;

  explicit NumberSlider(QWidget* parent);

  /// Where the filling starts, and where the default is marked, 0 to 1.
  void SetMarks(double origin, double default_position);
  /// Called for arrow and page keys with the number of steps.
  void SetStepHandler(std::function<void(double steps)> handler) { on_steps_ = std::move(handler); }
  void SetDoubleClickHandler(std::function<void()> handler) { on_double_click_ = std::move(handler); }

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;
  /// The middle of the handle at a position.
  [[nodiscard]] double ToX(int position) const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  [[nodiscard]] int PositionAt(double x) const;

  double origin_ = 0.0;
  double default_position_ = 0.0;
  std::function<void(double)> on_steps_;
  std::function<void()> on_double_click_;
};

/// A flat button with a drawn sign.
class SignButton : public QAbstractButton {
 public:
  enum class Sign { kReset, kFolder };
  SignButton(Sign sign, QWidget* parent);
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Sign sign_;
};

/// A button that shows a colour, over a chequered ground where it is not opaque.
class Swatch : public QAbstractButton {
 public:
  explicit Swatch(QWidget* parent);
  void SetColor(const QColor& color);
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor color_;
};

}  // namespace ScEng
