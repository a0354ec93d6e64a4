// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>

#include "Host/Viewing/Look.h"
#include "Host/Widgets/Api.h"

namespace ScEng {

class ViewImage;

/// The histogram of an image with the range that is shown as black to white. Two handles and two fields set a range of
/// one's own, a list chooses where the range comes from, and two marks show the declared range.
///
/// Arrow keys move the handle that has the focus, with Shift ten times as far; Home and End take it to the lowest and
/// the highest value.
class HOST_WIDGETS_API HistogramBar : public QWidget {
  Q_OBJECT

 public:
  explicit HistogramBar(QWidget* parent = nullptr);
  ~HistogramBar() override;
  HistogramBar(const HistogramBar&) = delete;
  HistogramBar& operator=(const HistogramBar&) = delete;

  void SetImage(std::shared_ptr<const ViewImage> image);
  /// Shows the range of a look, without telling anybody.
  void SetLook(const Look& look);
  [[nodiscard]] const Look& GetLook() const;

  /// Whether bars stand for the logarithm of how many values there are.
  void SetLogarithmic(bool on);
  [[nodiscard]] bool IsLogarithmic() const;

  /// Whether the list of modes is part of the bar; it is, unless it has a place elsewhere.
  void SetModeShown(bool on);

 Q_SIGNALS:
  /// The range was changed here.
  void LookChanged(const ScEng::Look& look);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace ScEng
