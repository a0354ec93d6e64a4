// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

class Image;

/// An image as a picture: values from the declared range as black to white, colour as colour, the signed mode from -1
/// to 1, NaN in magenta. Images wider or higher than `limit` are drawn from every n-th pixel.
[[nodiscard]] QImage DrawImage(const Image& image, int limit);

/// Shows a picture as large as there is room, and a message over it.
class Preview : public QWidget {
  Q_OBJECT

 public:
  explicit Preview(QWidget* parent);

  void Show(QImage picture, const QString& message);
  [[nodiscard]] const QImage& GetPicture() const { return picture_; }
  [[nodiscard]] QSize sizeHint() const override { return {560, 560}; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {240, 240}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QImage picture_;
  QString message_;
};
