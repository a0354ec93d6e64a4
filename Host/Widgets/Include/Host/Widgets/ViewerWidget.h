// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>
#include <memory>
#include <utility>
#include <vector>

#include "Host/Viewing/Look.h"
#include "Host/Widgets/Api.h"

namespace ScEng {

class HistogramBar;
class ImageView;
class ProbeList;
class ViewImage;

/// What a viewer shows.
struct ViewerContent {
  std::shared_ptr<const ViewImage> image;
  /// What the image is compared with; null for nothing.
  std::shared_ptr<const ViewImage> before;
  /// Further images that probes read, by what people call them.
  std::vector<std::pair<QString, std::shared_ptr<const ViewImage>>> inputs;
  /// What the image is, at the beginning of the status line; empty for nothing.
  QString title;
  /// A text over the picture; empty for none.
  QString message;
};

/// The whole viewer: tools, the picture, a table of probes, the histogram and a line of facts.
///
/// The look is the viewer's own: another image changes neither the range nor the shading, and zoom and place stay as
/// long as the size of the image does. Probes stay at their places in the document.
///
/// Object names: "viewer.view" is the picture, "viewer.range", "viewer.shading", "viewer.channels", "viewer.contours",
/// "viewer.marks", "viewer.tiles", "viewer.probe", "viewer.wipe", "viewer.fit", "viewer.life_size" and
/// "viewer.histogram" the tools, "viewer.facts" and "viewer.cursor" the texts of the status line, "probes" the table.
class HOST_WIDGETS_API ViewerWidget : public QWidget {
  Q_OBJECT

 public:
  explicit ViewerWidget(QWidget* parent = nullptr);
  ~ViewerWidget() override;
  ViewerWidget(const ViewerWidget&) = delete;
  ViewerWidget& operator=(const ViewerWidget&) = delete;

  void SetContent(const ViewerContent& content);
  [[nodiscard]] const ViewerContent& GetContent() const;
  /// Marks that another picture is being computed; a fraction below 0 is unknown. The last picture stays.
  void SetBusy(bool busy, double fraction = -1.0);

  [[nodiscard]] const Look& GetLook() const;
  /// Sets the look without a signal.
  void SetLook(const Look& look);

  void SetHistogramShown(bool on);
  [[nodiscard]] bool IsHistogramShown() const;

  [[nodiscard]] ImageView* GetView() const;
  [[nodiscard]] ProbeList* GetProbes() const;

 Q_SIGNALS:
  /// The look was changed with the tools.
  void LookChanged(const ScEng::Look& look);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace ScEng
