// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/PythonResult.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "Python/Module/ArrayImage.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/SharedImage.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

/// Whether nobody else has an array over the memory of this one, to which `own` references are known.
bool IsUnshared(const py::object& object, int own) {
  if (!py::isinstance<py::array>(object) || Py_REFCNT(object.ptr()) > own) return false;
  const auto array = py::reinterpret_borrow<py::array>(object);
  if (array.owndata()) return true;
  const py::object base = array.base();
  // The array itself, and `base` here.
  return py::isinstance<py::array>(base) && IsUnshared(base, 2);
}

std::optional<unsigned> FindMode(const py::object& returned, const Image* like) {
  if (like == nullptr || like->GetColorMode() != ColorMode::kSigned || !py::hasattr(returned, "shape")) {
    return std::nullopt;
  }
  const py::tuple shape(returned.attr("shape"));
  const bool has_four = shape.size() == 3 && shape[2].cast<py::ssize_t>() == 4;
  return has_four ? std::optional(ColorMode::kSigned) : std::nullopt;
}

void FillHeader(SharedImage& image, const Image* like) {
  ImageHeader& header = image.header;
  if (like != nullptr && like->GetSizeX() == header.size_x && like->GetSizeY() == header.size_y) {
    header.pin_x = like->GetPinX();
    header.pin_y = like->GetPinY();
    header.pivot_x = like->GetPivotX();
    header.pivot_y = like->GetPivotY();
    header.outside_value = like->GetOutsideValue();
  }
  if (header.color_mode == ColorMode::kValue || header.color_mode == ColorMode::kPair) {
    const py::gil_scoped_release unlocked;
    const ScEng::SampleRange range = ScEng::MeasureFiniteRange(image.samples.get(), image.GetNumSamples());
    header.value_low = range.IsEmpty() ? 0.0F : range.low;
    header.value_high = range.IsEmpty() ? 0.0F : range.high;
  } else if (like != nullptr && like->GetColorMode() == header.color_mode) {
    header.value_low = like->GetValueLow();
    header.value_high = like->GetValueHigh();
  }
}

}  // namespace

ImagePtr TakeResult(py::object returned, const std::string& output, const Image* like) {
  if (py::isinstance<SharedImage>(returned)) return returned.cast<const SharedImage&>().Lend();
  if (!IsArrayLike(returned)) {
    throw py::type_error("evaluate returned " + NameType(returned) + " for output \"" + output +
                         "\", which takes an array or an image");
  }
  const bool is_unshared = IsUnshared(returned, 1);
  SharedImage image =
      MakeImage(returned, FindMode(returned, like), "what evaluate returned for output \"" + output + "\": ");
  const bool is_lent =
      py::isinstance<py::array>(returned) && py::reinterpret_borrow<py::array>(returned).data() == image.samples.get();
  FillHeader(image, like);
  ImagePtr lent = image.Lend();
  if (!is_lent || is_unshared) return lent;
  const py::gil_scoped_release unlocked;
  return ScEng::MakeRef<Image>(*lent);
}

}  // namespace ValuePython
