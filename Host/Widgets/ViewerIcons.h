// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIcon>

namespace ScEng {

/// The signs of the viewer's tools. They are drawn in the colors of the application's palette when they are shown, so
/// that they follow the theme, at any size.
enum class ViewerSign {
  kShading,
  kChannels,
  kContours,
  kMarks,
  kTiles,
  kProbe,
  kWipe,
  kFit,
  kLifeSize,
  kHistogram,
  kMore,
};

[[nodiscard]] QIcon MakeViewerIcon(ViewerSign sign);

}  // namespace ScEng
