// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/ArrayImage.h"

#include <pybind11/numpy.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Python/Module/AttributeValue.h"
#include "Python/Module/ConvertSamples.h"
#include "Python/Module/Errors.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/ObjectOwner.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::string DescribeShape(const py::array& array) { return py::str(array.attr("shape")).cast<std::string>(); }

/// The array that numpy makes of an object, without a copy where there need not be one.
py::array MakeArray(py::handle object) {
  const py::module_ numpy = ImportNumpy();
  const bool is_device_array = py::hasattr(object, "__dlpack__") && !py::hasattr(object, "__array__") &&
                               !py::hasattr(object, "__array_interface__") && PyObject_CheckBuffer(object.ptr()) == 0;
  if (is_device_array) return numpy.attr("from_dlpack")(object);
  return numpy.attr("asarray")(object);
}

/// What is masked is no number.
py::array FillMasked(const py::array& array) {
  const py::object masked = py::module_::import("numpy").attr("ma").attr("MaskedArray");
  if (!py::isinstance(array, masked)) return array;
  return array.attr("astype")("float32").attr("filled")(py::float_(std::numeric_limits<double>::quiet_NaN()));
}

unsigned FindMode(const py::array& array, std::size_t channels, std::optional<unsigned> wanted) {
  constexpr unsigned kModes[] = {ColorMode::kValue, ColorMode::kPair, ColorMode::kColor, ColorMode::kColor};
  if (channels < 1 || channels > 4) {
    throw py::value_error("an image has 1 to 4 channels, and an array of shape " + DescribeShape(array) + " has " +
                          std::to_string(channels));
  }
  const unsigned natural = kModes[channels - 1];
  if (!wanted || *wanted == natural) return natural;
  if (natural == ColorMode::kColor && *wanted == ColorMode::kSigned) return *wanted;
  throw py::value_error(std::string("mode \"") + ColorMode::GetName(*wanted) + "\" takes " +
                        (*wanted == ColorMode::kValue  ? "one channel"
                         : *wanted == ColorMode::kPair ? "two channels"
                                                       : "three or four channels") +
                        ", and an array of shape " + DescribeShape(array) + " has " + std::to_string(channels));
}

int FindSize(py::ssize_t size, int most, const char* what) {
  if (size > most) {
    throw py::value_error("an image has at most " + std::to_string(most) + " " + what + ", not " +
                          std::to_string(size) + "; valuenodes.set_max_size allows more");
  }
  return static_cast<int>(size);
}

NumberArray Describe(const py::array& array, std::size_t channels) {
  NumberArray numbers;
  numbers.data = static_cast<const std::uint8_t*>(array.data());
  numbers.rows = static_cast<std::size_t>(array.shape(0));
  numbers.columns = static_cast<std::size_t>(array.shape(1));
  numbers.channels = channels;
  numbers.row_stride = array.strides(0);
  numbers.column_stride = array.strides(1);
  numbers.channel_stride = array.ndim() == 3 ? array.strides(2) : 0;
  const py::dtype type = array.dtype();
  numbers.kind = type.kind();
  numbers.size = static_cast<std::size_t>(type.itemsize());
  const auto order = type.attr("byteorder").cast<std::string>();
  numbers.is_swapped = order == (std::endian::native == std::endian::little ? ">" : "<");
  return numbers;
}

bool CanShare(const py::array& array, const NumberArray& numbers) {
  const bool is_float = numbers.kind == 'f' && numbers.size == sizeof(float) && !numbers.is_swapped;
  const bool is_aligned = reinterpret_cast<std::uintptr_t>(numbers.data) % alignof(float) == 0;
  return is_float && is_aligned && numbers.channels != 3 && (array.flags() & py::array::c_style) != 0;
}

SharedImage Convert(const NumberArray& numbers, const ImageHeader& header) {
  Interruption interruption;
  std::optional<OverflowPlace> overflow;
  ImagePtr image;
  interruption.Run([&] {
    image = ScEng::MakeRef<Image>(header, nullptr);
    overflow = ConvertToFloats(numbers, image->GetArray());
  });
  if (overflow) {
    ThrowOverflow("the number in row " + std::to_string(overflow->row) + ", column " +
                  std::to_string(overflow->column) + " is beyond the largest float, 3.4028235e+38");
  }
  return SharedImage::Take(std::move(image));
}

SharedImage ReadImage(py::handle object, std::optional<unsigned> mode) {
  if (!IsArrayLike(object) && !py::isinstance<py::list>(object) && !py::isinstance<py::tuple>(object)) {
    throw py::type_error("an image is made of an array, not of " + NameType(object));
  }
  ImportNumpy();
  py::array array = py::isinstance<py::array>(object) ? py::reinterpret_borrow<py::array>(object) : MakeArray(object);
  if (py::detail::npy_api::get().PyArray_Type_ != Py_TYPE(array.ptr())) array = FillMasked(array);
  if (array.ndim() != 2 && array.ndim() != 3) {
    throw py::value_error("an image is an array of shape (rows, columns) or (rows, columns, channels), not " +
                          DescribeShape(array));
  }
  const std::size_t channels = array.ndim() == 3 ? static_cast<std::size_t>(array.shape(2)) : 1;
  const unsigned color_mode = FindMode(array, channels, mode);
  const int size_x = FindSize(array.shape(1), Image::GetMaxSizeX(), "columns");
  const int size_y = FindSize(array.shape(0), Image::GetMaxSizeY(), "rows");
  NumberArray numbers = Describe(array, channels);
  if (!CanConvert(numbers) && numbers.kind == 'f') {
    // Other floats than those of the language.
    array = array.attr("astype")("float64");
    numbers = Describe(array, channels);
  }
  if (!CanConvert(numbers)) {
    throw py::type_error("an image is made of real numbers, not of " + py::str(array.dtype()).cast<std::string>());
  }
  const ImageHeader header = ImageHeader::Fresh(size_x, size_y, color_mode);
  if (!CanShare(array, numbers)) return Convert(numbers, header);
  SharedImage shared;
  shared.header = header;
  shared.samples = Samples(KeepObject(std::move(array)), reinterpret_cast<const float*>(numbers.data));
  return shared;
}

}  // namespace

py::module_ ImportNumpy() {
  try {
    return py::module_::import("numpy");
  } catch (const py::error_already_set& error) {
    if (!error.matches(PyExc_ModuleNotFoundError)) throw;
  }
  PyErr_SetString(PyExc_ModuleNotFoundError,
                  "arrays become images by numpy, which this Python does not have: install python3-numpy with apt, or "
                  "numpy with pip");
  throw py::error_already_set();
}

bool IsArrayLike(py::handle object) {
  if (py::isinstance<py::str>(object) || py::isinstance<py::bytes>(object)) return false;
  return py::hasattr(object, "__array__") || py::hasattr(object, "__array_interface__") ||
         py::hasattr(object, "__dlpack__") || PyObject_CheckBuffer(object.ptr()) != 0;
}

SharedImage MakeImage(py::handle object, std::optional<unsigned> mode, const std::string& lead) {
  try {
    return ReadImage(object, mode);
  } catch (const py::value_error& error) {
    throw py::value_error(lead + error.what());
  } catch (const py::type_error& error) {
    throw py::type_error(lead + error.what());
  } catch (py::error_already_set& error) {
    // What numpy says of lists that are no arrays, for example. What comes out of code in Python stays as it is.
    for (PyObject* const kind : {PyExc_OverflowError, PyExc_ValueError, PyExc_TypeError}) {
      if (!error.type().is(py::handle(kind)) || error.trace()) continue;
      const std::string message = lead + py::str(error.value()).cast<std::string>();
      PyErr_SetString(kind, message.c_str());
      throw py::error_already_set();
    }
    throw;
  }
}

}  // namespace ValuePython
