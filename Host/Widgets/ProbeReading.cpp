// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ProbeReading.h"

#include <QPoint>
#include <algorithm>

#include "Host/Widgets/ViewText.h"

namespace ScEng {

ProbeReading ProbeReader::Read(const std::shared_ptr<const ViewImage>& image, const Probe& probe) {
  ProbeReading reading;
  if (image == nullptr) return reading;
  if (probe.IsPoint()) {
    reading.value = FormatPixelAt(*image, QPoint(probe.x, probe.y));
    return reading;
  }
  const Box2I box = image->GetHeader().GetBox();
  const ViewFigures& figures = Measure(
      image, {static_cast<int>(probe.x - box.left), static_cast<int>(probe.y - box.top), probe.width, probe.height});
  if (figures.values == 0) return reading;
  const auto mark = [&](const QString& text) { return MarkPreview(*image, text); };
  reading.count = mark(QString::number(figures.values * static_cast<std::uint64_t>(image->GetReduction()) *
                                       static_cast<std::uint64_t>(image->GetReduction())));
  if (figures.finite.IsEmpty()) return reading;
  constexpr int kDigits = 7;
  reading.lowest = mark(FormatValue(figures.finite.low));
  reading.highest = mark(FormatValue(figures.finite.high));
  reading.mean = mark(FormatShort(figures.mean, kDigits));
  return reading;
}

const ViewFigures& ProbeReader::Measure(const std::shared_ptr<const ViewImage>& image, const PixelBox& box) {
  for (const auto& region : regions_) {
    if (region->image != image || region->box != box) continue;
    region->is_used = true;
    return region->figures;
  }
  ++measurements_;
  regions_.push_back(std::make_unique<Region>(Region{image, box, MeasureBox(*image, box)}));
  return regions_.back()->figures;
}

void ProbeReader::EndReading() {
  const auto unused = [](const std::unique_ptr<Region>& region) { return !region->is_used; };
  regions_.erase(std::remove_if(regions_.begin(), regions_.end(), unused), regions_.end());
  for (const auto& region : regions_) region->is_used = false;
}

QString FormatPlace(const Probe& probe) {
  const QString corner = QStringLiteral("%1, %2").arg(probe.x).arg(probe.y);
  return probe.IsPoint() ? corner : corner + QStringLiteral(" · %1 × %2").arg(probe.width).arg(probe.height);
}

}  // namespace ScEng
