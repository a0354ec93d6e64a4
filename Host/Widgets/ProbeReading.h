// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/Probes.h"

namespace ScEng {

/// What a probe reads in an image, as text; empty where it lies outside.
struct ProbeReading {
  /// Of a point: the value or the channels.
  QString value;
  /// Of a region.
  QString lowest;
  QString highest;
  QString mean;
  QString count;
};

/// Reads probes, and remembers the figures of regions: those of the last reading are not measured again.
class ProbeReader {
 public:
  [[nodiscard]] ProbeReading Read(const std::shared_ptr<const ViewImage>& image, const Probe& probe);
  /// Forgets what was not read since the last call.
  void EndReading();
  /// How many regions were measured.
  [[nodiscard]] int GetMeasurements() const { return measurements_; }

 private:
  struct Region {
    /// Kept, so that no other image can have its address.
    std::shared_ptr<const ViewImage> image;
    PixelBox box;
    ViewFigures figures;
    bool is_used = true;
  };
  [[nodiscard]] const ViewFigures& Measure(const std::shared_ptr<const ViewImage>& image, const PixelBox& box);

  std::vector<std::unique_ptr<Region>> regions_;
  int measurements_ = 0;
};

/// "120, 80", of a region "120, 80 · 64 × 32".
[[nodiscard]] QString FormatPlace(const Probe& probe);

}  // namespace ScEng
