// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QWidget>
#include <memory>
#include <utility>
#include <vector>

#include "Host/Widgets/Api.h"

namespace ScEng {

class ProbeList;
class ViewImage;

/// What the probes read: for each its place in the document and on the ground, its value, of a region the lowest and
/// the highest value, the mean and how many there are, and what further images hold there. Delete removes the selected
/// one.
class HOST_WIDGETS_API ProbeTable : public QWidget {
  Q_OBJECT

 public:
  using NamedImages = std::vector<std::pair<QString, std::shared_ptr<const ViewImage>>>;

  explicit ProbeTable(QWidget* parent = nullptr);
  ~ProbeTable() override;
  ProbeTable(const ProbeTable&) = delete;
  ProbeTable& operator=(const ProbeTable&) = delete;

  /// Not owned.
  void SetProbes(ProbeList* probes);
  void SetImages(std::shared_ptr<const ViewImage> image, NamedImages inputs);

  /// Reads everything now, instead of when the event loop is next idle.
  void Refresh();

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace ScEng
