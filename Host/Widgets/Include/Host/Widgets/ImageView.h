// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPoint>
#include <QWidget>
#include <memory>
#include <optional>

#include "Host/Viewing/Look.h"
#include "Host/Widgets/Api.h"

namespace ScEng {

class ProbeList;
class ViewImage;

/// Shows an image by a look, and moves over it.
///
/// The wheel zooms at the cursor; the middle button, and the left one unless the probe tool has it, moves the image; a
/// double click or F shows all of it, 1 shows it life size, + and - zoom, the arrow keys move. Ctrl with the arrow keys
/// moves a cursor from pixel to pixel, with Shift ten at a time; Return puts a probe there. Page Up and Page Down
/// select probes; Shift with the arrow keys moves the selected one, Alt with them changes its size, Delete removes it.
/// Comma and point move the line between the image before and after.
///
/// A zoom of 1 is one pixel of the layout per pixel of the image. From 32 on each pixel has its numbers in it. Only
/// what is seen is drawn, at the resolution of the display, when something has changed.
class HOST_WIDGETS_API ImageView : public QWidget {
  Q_OBJECT

 public:
  explicit ImageView(QWidget* parent = nullptr);
  ~ImageView() override;
  ImageView(const ImageView&) = delete;
  ImageView& operator=(const ImageView&) = delete;

  /// Shows another image, or none. Zoom and place stay where the size is the same; else all of it is shown.
  void SetImage(std::shared_ptr<const ViewImage> image);
  [[nodiscard]] const std::shared_ptr<const ViewImage>& GetImage() const;
  /// The image to compare with; it lies where it lies in the document.
  void SetBefore(std::shared_ptr<const ViewImage> before);

  void SetLook(const Look& look);
  [[nodiscard]] const Look& GetLook() const;

  /// Shows the image before to the left of a line, and the image to its right.
  void SetWipe(bool on);
  [[nodiscard]] bool IsWiped() const;
  /// Where the line is, 0 at the left edge of the view to 1 at the right one.
  void SetWipePlace(double share);
  [[nodiscard]] double GetWipePlace() const;

  /// A text over the picture; empty for none.
  void SetMessage(const QString& message);
  [[nodiscard]] const QString& GetMessage() const;
  /// Marks that another picture is being computed, up to a share of 0 to 1; one below 0 is unknown. The last picture
  /// stays.
  void SetBusy(bool busy, double fraction = -1.0);

  /// The probes that are drawn over the picture; not owned.
  void SetProbes(ProbeList* probes);
  /// Whether the left button sets probes: a click a point, a drag a region.
  void SetProbeTool(bool on);
  [[nodiscard]] bool IsProbeTool() const;

  void Fit();
  /// Whether all of the image is shown, whatever the size of the view.
  [[nodiscard]] bool IsFitted() const;
  [[nodiscard]] double GetZoom() const;
  /// From 1/64 to 64, around the middle of the view.
  void SetZoom(double zoom);
  void StepZoom(int steps);
  /// The place in the view of a point in the image, in its pixels from its top left corner, and back.
  [[nodiscard]] QPointF ToView(const QPointF& point) const;
  [[nodiscard]] QPointF ToImage(const QPointF& place) const;

  /// The pixel under the mouse, or under the cursor of the keyboard, from the top left corner of the image.
  [[nodiscard]] std::optional<QPoint> GetCursor() const;
  /// How often the image was drawn anew. Showing again what has not changed draws nothing.
  [[nodiscard]] int GetDrawings() const;

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 Q_SIGNALS:
  void CursorMoved(std::optional<QPoint> pixel);
  void ZoomChanged(double zoom);
  void WipeMoved(double share);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool event(QEvent* event) override;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace ScEng
