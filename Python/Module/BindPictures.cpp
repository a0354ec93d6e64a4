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

/// Width, height and the bytes of the pixels: red, green, blue and opacity.
py::tuple Draw(const SharedImage& image, const std::optional<std::pair<float, float>>& range,
               const std::optional<std::string>& colormap, int most) {
  const ScEng::Look look = MakeLook(range, colormap);
  const int size_x = image.header.size_x;
  const int size_y = image.header.size_y;
  const double zoom = std::min(1.0, static_cast<double>(most) / std::max({size_x, size_y, 1}));
  const int width = size_x == 0 ? 0 : std::max(1, static_cast<int>(size_x * zoom));
  const int height = size_y == 0 ? 0 : std::max(1, static_cast<int>(size_y * zoom));
  std::string bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, '\0');
  const ImagePtr lent = image.Lend();
  Interruption interruption;
  interruption.Run([&] {
    const auto view = ScEng::ViewImage::Make(*lent);
    ScEng::DrawView(
        *view, look, {0.0, 0.0, zoom},
        {reinterpret_cast<std::uint8_t*>(bytes.data()), width, height, static_cast<std::size_t>(width) * 4});
  });
  return py::make_tuple(width, height, py::bytes(bytes));
}

}  // namespace

void BindPictures(py::module_& module) {
  module.def("draw", &Draw, py::arg("image"), py::arg("range"), py::arg("colormap"), py::arg("most"));
  module.def("list_colormaps", &ScEng::GetRampNames);
}

}  // namespace ValuePython
