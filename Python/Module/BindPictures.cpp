// SPDX-License-Identifier: Apache-2.0
#include <png.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
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

/// Pixels of four bytes, red, green, blue and opacity, as a PNG.
std::string EncodePng(int width, int height, const std::string& pixels) {
  png_image picture{};
  picture.version = PNG_IMAGE_VERSION;
  picture.width = static_cast<png_uint_32>(width);
  picture.height = static_cast<png_uint_32>(height);
  picture.format = PNG_FORMAT_RGBA;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(picture);
  std::string png(size, '\0');
  if (png_image_write_to_memory(&picture, png.data(), &size, 0, pixels.data(), 0, nullptr) == 0) {
    throw std::runtime_error(std::string("a picture could not be made: ") + picture.message);
  }
  png.resize(size);
  return png;
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
    ScEng::DrawView(
        *view, look, {0.0, 0.0, zoom},
        {reinterpret_cast<std::uint8_t*>(bytes.data()), width, height, static_cast<std::size_t>(width) * 4});
    png = EncodePng(width, height, bytes);
  });
  return py::bytes(png);
}

}  // namespace

void BindPictures(py::module_& module) {
  module.def("draw", &Draw, py::arg("image"), py::arg("range"), py::arg("colormap"), py::arg("most"));
  module.def("list_colormaps", &ScEng::GetRampNames);
}

}  // namespace ValuePython
