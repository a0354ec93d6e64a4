// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointer>
#include <QString>
#include <memory>
#include <optional>

#include "Host/Image/Image.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ImageView.h"
#include "Host/Widgets/Probes.h"
#include "Host/Widgets/ViewCanvas.h"
#include "Host/Widgets/ViewPlacement.h"

namespace ScEng {

class ImageView::Implementation {
 public:
  explicit Implementation(ImageView& view) : view_(view) {}

  // ---- Drawing ----

  void Paint(QPainter& painter);
  [[nodiscard]] QPoint GetCorner(const ViewImage& image) const;
  [[nodiscard]] QRectF GetArea(const Probe& probe) const;
  /// Fits another extent, and leaves the same one as it is.
  void FollowExtent();
  void Update() { view_.update(); }

  // ---- Mouse ----

  void Press(const QPointF& at, Qt::MouseButton button);
  void Move(const QPointF& at);
  void Release(const QPointF& at, Qt::MouseButton button);
  void ShowPointer(const QPointF& at);
  void Leave();

  // ---- Keys ----

  /// Whether the view has a use for a key, before any shortcut.
  static bool IsOwnKey(int key, Qt::KeyboardModifiers modifiers);
  /// Whether the key was one of the view's.
  bool TakeKey(int key, Qt::KeyboardModifiers modifiers);

  void Zoom(double zoom, const QPointF& around);
  void TellZoom();
  /// The image's pixel at a place of the view; one of the tiles counts as the image.
  [[nodiscard]] std::optional<QPoint> FindPixel(const QPointF& at) const;
  void SetCursorPixel(const std::optional<QPoint>& pixel, bool is_of_keys);

  ImageView& view_;
  std::shared_ptr<const ViewImage> image_;
  std::shared_ptr<const ViewImage> before_;
  Look look_;
  ViewPlacement placement_;
  ViewCanvas canvas_;
  ViewCanvas before_canvas_;
  QPointer<ProbeList> probes_;
  QString message_;
  bool is_probe_tool_ = false;
  bool is_wiped_ = false;
  double wipe_ = 0.5;
  bool is_busy_ = false;
  double fraction_ = -1.0;
  std::optional<QPoint> cursor_;
  bool is_key_cursor_ = false;

 private:
  enum class Drag { kNone, kPan, kWipe, kNewProbe, kMoveProbe };

  [[nodiscard]] ViewCanvas::Scene MakeScene(bool of_before) const;
  /// What the corner tells while the image is not the one that was asked for.
  [[nodiscard]] QString DescribeState() const;
  void PaintProbes(QPainter& painter) const;
  [[nodiscard]] const Probe* FindProbe(const QPointF& at) const;
  [[nodiscard]] bool IsOnWipe(const QPointF& at) const;
  /// The pixels between press and `at`, from the top left corner of the image.
  [[nodiscard]] QRect FindBand(const QPointF& at) const;
  bool TakeArrow(const QPoint& direction, Qt::KeyboardModifiers modifiers);
  bool TakeZoomKey(int key);
  bool TakeProbeKey(int key);
  void MoveCursor(const QPoint& by);

  Drag drag_ = Drag::kNone;
  Qt::MouseButton button_ = Qt::NoButton;
  QPointF pressed_;
  QPointF last_;
  Probe taken_;
};

}  // namespace ScEng
