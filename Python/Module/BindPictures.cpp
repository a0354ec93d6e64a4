// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Util/ClosestName.h"
#include "Host/Viewing/DrawView.h"
#include "Python/Module/Bindings.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/PngPicture.h"
#include "Python/Module/SharedImage.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

ScEng::Look MakeLook(const std::optional<std::pair<float, float>>& range, const std::optional<std::string>& colormap) {
  ScEng::Look look;
  if (range) {
    look.range = ScEng::RangeSource::kCustom;
    look.custom = {range->first, range->second};
  }
  if (!colormap) return look;
  const std::vector<std::string>& ramps = ScEng::GetRampNames();
  if (std::find(ramps.begin(), ramps.end(), *colormap) == ramps.end()) {
    std::string names;
    for (const std::string& ramp : ramps) names += (names.empty() ? "\"" : ", \"") + ramp + "\"";
    throw py::value_error("there is no colormap \"" + *colormap + "\"; there are " + names +
                          ScEng::SuggestClosestNames(*colormap, ramps));
  }
  look.shading = ScEng::Shading::kRamp;
  look.ramp = *colormap;
  return look;
}

/// The bytes of a PNG of at most `most` columns and rows.
py::bytes Draw(const SharedImage& image, const std::optional<std::pair<float, float>>& range,
               const std::optional<std::string>& colormap, int most) {
  const ScEng::Look look = MakeLook(range, colormap);
  const int size_x = image.header.size_x;
  const int size_y = image.header.size_y;
  const double zoom = std::min(1.0, static_cast<double>(most) / std::max({size_x, size_y, 1}));
  const int width = size_x == 0 ? 0 : std::max(1, static_cast<int>(size_x * zoom));
  const int height = size_y == 0 ? 0 : std::max(1, static_cast<int>(size_y * zoom));
  if (width == 0 || height == 0) throw py::value_error("an image without pixels makes no picture");
  std::string bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, '\0');
  std::string png;
  const ImagePtr lent = image.Lend();
  Interruption interruption;
  interruption.Run([&] {
    const auto view = ScEng::ViewImage::Make(*lent);
    auto* const pixels = reinterpret_cast<std::uint8_t*>(bytes.data());
    ScEng::DrawView(*view, look, {0.0, 0.0, zoom}, {pixels, width, height, static_cast<std::size_t>(width) * 4});
    png = EncodePng(static_cast<std::size_t>(width), static_cast<std::size_t>(height), pixels);
  });
  return py::bytes(png);
}

}  // namespace

void BindPictures(py::module_& module) {
  module.def("draw", &Draw, py::arg("image"), py::arg("range"), py::arg("colormap"), py::arg("most"));
  module.def("list_colormaps", &ScEng::GetRampNames);
}

}  // namespace ValuePython
