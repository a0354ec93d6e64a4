// SPDX-License-Identifier: Apache-2.0
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Host/Util/ParallelRows.h"
#include "Python/Module/ArrayImage.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/Bindings.h"
#include "Python/Module/CallArguments.h"
#include "Python/Module/DlPack.h"
#include "Python/Module/HeaderArguments.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/MetadataDict.h"
#include "Python/Module/SharedImage.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

using SharedImagePtr = std::shared_ptr<SharedImage>;

std::vector<py::ssize_t> ShapeOf(const SharedImage& image) {
  std::vector<py::ssize_t> shape{image.header.size_y, image.header.size_x};
  if (image.GetNumChannels() > 1) shape.push_back(static_cast<py::ssize_t>(image.GetNumChannels()));
  return shape;
}

std::vector<py::ssize_t> StridesOf(const SharedImage& image) {
  std::vector<py::ssize_t> strides(ShapeOf(image).size(), sizeof(float));
  const auto pixel = static_cast<py::ssize_t>(image.GetNumChannels() * sizeof(float));
  strides[1] = pixel;
  strides[0] = pixel * image.header.size_x;
  return strides;
}

/// An array of the samples themselves, which keeps the image. It cannot be written to: others may hold the image.
py::array ViewSamples(const py::object& self) {
  const auto& image = self.cast<const SharedImage&>();
  py::array array(py::dtype::of<float>(), ShapeOf(image), StridesOf(image), image.samples.get(), self);
  array.attr("flags").attr("writeable") = false;
  return array;
}

py::object ToArray(const py::object& self, const py::object& dtype, const py::object& copy) {
  py::object array = ViewSamples(self);
  const bool is_copy = !copy.is_none() && copy.cast<bool>();
  const bool converts = !dtype.is_none() && !py::dtype::from_args(dtype).equal(py::dtype::of<float>());
  if (converts) {
    if (!copy.is_none() && !is_copy) throw py::value_error("samples of another type than float32 need a copy");
    return array.attr("astype")(dtype);
  }
  return is_copy ? array.attr("copy")() : array;
}

py::buffer_info DescribeBuffer(SharedImage& image) {
  const auto shape = ShapeOf(image);
  return {const_cast<float*>(image.samples.get()),
          sizeof(float),
          py::format_descriptor<float>::format(),
          static_cast<py::ssize_t>(shape.size()),
          shape,
          StridesOf(image),
          true};
}

py::dict DescribeArray(const SharedImage& image) {
  py::dict facts;
  facts["version"] = 3;
  facts["typestr"] = "<f4";
  facts["shape"] = py::tuple(py::cast(ShapeOf(image)));
  facts["data"] = py::make_tuple(reinterpret_cast<std::uintptr_t>(image.samples.get()), true);
  return facts;
}

/// An image of samples; of another image it takes these and the mode alone.
SharedImagePtr MakeFromArray(const py::object& array, const HeaderArguments& arguments) {
  std::optional<unsigned> mode = arguments.FindMode();
  const bool is_image = py::isinstance<SharedImage>(array);
  if (is_image && !mode) mode = array.cast<const SharedImage&>().header.color_mode;
  auto image = std::make_shared<SharedImage>(
      MakeImage(is_image ? ViewSamples(array) : array, mode, arguments.function + ": array: "));
  arguments.ApplyTo(image->header);
  return image;
}

/// The same image but for what the arguments say.
SharedImagePtr Replace(const py::object& self, const HeaderArguments& arguments, py::handle metadata) {
  const auto& before = self.cast<const SharedImage&>();
  auto image = std::make_shared<SharedImage>(before);
  const std::optional<unsigned> mode = arguments.FindMode();
  if (mode) image->header.color_mode = MakeImage(ViewSamples(self), mode, "replace: ").header.color_mode;
  arguments.ApplyTo(image->header);
  if (!metadata.is_none()) image->metadata = FromDict(metadata, "replace: metadata");
  return image;
}

std::string Describe(const SharedImage& image) {
  const ImageHeader& header = image.header;
  const auto format = [](float number) { return py::str("{:g}").format(number).cast<std::string>(); };
  std::string text = "<valuenodes.Image " + std::to_string(header.size_x) + " x " + std::to_string(header.size_y) +
                     " " + ColorMode::GetName(header.color_mode) + ", range " + format(header.value_low) + " to " +
                     format(header.value_high);
  if (header.pin_x != 0 || header.pin_y != 0) {
    text += ", pin (" + std::to_string(header.pin_x) + ", " + std::to_string(header.pin_y) + ")";
  }
  return text + ">";
}

bool HaveSameSamples(const SharedImage& one, const SharedImage& other) {
  if (one.samples == other.samples) return true;
  std::atomic<bool> differs{false};
  Interruption interruption;
  interruption.Run([&] {
    ScEng::ParallelRows(one.GetNumSamples(), std::size_t{1} << 16, [&](std::size_t from, std::size_t to) {
      for (std::size_t i = from; i < to && !differs.load(std::memory_order_relaxed); ++i) {
        const float a = one.samples.get()[i];
        const float b = other.samples.get()[i];
        // NaN equals NaN here: an image is equal to its copy.
        if (!(a == b || (a != a && b != b))) differs.store(true, std::memory_order_relaxed);
      }
    });
  });
  return !differs;
}

/// Images are equal when they have the same mode, size, place, range, outside value and samples.
bool AreEqual(const SharedImage& one, const SharedImage& other) {
  const auto facts = [](const ImageHeader& h) {
    return std::tuple(h.size_x, h.size_y, h.color_mode, h.pin_x, h.pin_y, h.pivot_x, h.pivot_y, h.value_low,
                      h.value_high);
  };
  const float a = one.header.outside_value;
  const float b = other.header.outside_value;
  const bool same_outside = a == b || (a != a && b != b);
  return facts(one.header) == facts(other.header) && same_outside && HaveSameSamples(one, other);
}

SharedImagePtr CopyDeeply(const SharedImage& image) {
  ImagePtr copy;
  Interruption interruption;
  interruption.Run([&] { copy = ScEng::MakeRef<Image>(*image.Lend()); });
  return std::make_shared<SharedImage>(SharedImage::Take(std::move(copy)));
}

/// What `pickle` makes the image of again.
py::tuple Reduce(const py::object& self) {
  const auto& image = self.cast<const SharedImage&>();
  const ImageHeader& header = image.header;
  return py::make_tuple(
      py::module_::import("valuenodes._pickling").attr("restore_image"),
      py::make_tuple(ViewSamples(self), ColorMode::GetName(header.color_mode),
                     py::make_tuple(header.pin_x, header.pin_y), py::make_tuple(header.pivot_x, header.pivot_y),
                     py::make_tuple(header.value_low, header.value_high), header.outside_value,
                     ToDict(image.metadata.get())));
}

SharedImagePtr Construct(const py::args& given, const py::kwargs& given_by_name) {
  const CallArguments arguments("Image", {"array", "mode", "pin", "pivot", "range", "outside"}, 6, given,
                                given_by_name);
  if (!arguments.Has(0)) throw py::type_error("Image needs an array or an image as \"array\"");
  return MakeFromArray(
      py::reinterpret_borrow<py::object>(arguments[0]),
      HeaderArguments::Read("Image", arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]));
}

SharedImagePtr ReplaceSome(const py::object& self, const py::args& given, const py::kwargs& given_by_name) {
  if (!py::isinstance<SharedImage>(self))
    throw py::type_error("replace is a method of images, not of " + NameType(self));
  const CallArguments arguments("replace", {"mode", "pin", "pivot", "range", "outside", "metadata"}, 0, given,
                                given_by_name);
  return Replace(self,
                 HeaderArguments::Read("replace", arguments[0], arguments[1], arguments[2], arguments[3], arguments[4]),
                 arguments[5]);
}

SharedImagePtr TakeDlPack(const py::args& given, const py::kwargs& given_by_name) {
  const CallArguments arguments("from_dlpack", {"object"}, 1, given, given_by_name);
  if (!arguments.Has(0) || !py::hasattr(arguments[0], "__dlpack__")) {
    throw py::type_error(
        "from_dlpack: object is what has __dlpack__, such as a tensor in the processor's memory, not " +
        (arguments.Has(0) ? NameType(arguments[0]) : "nothing"));
  }
  const py::object array = ImportNumpy().attr("from_dlpack")(arguments[0]);
  return std::make_shared<SharedImage>(MakeImage(array, std::nullopt, "from_dlpack: object: "));
}

void BindConstruction(py::class_<SharedImage, SharedImagePtr>& image) {
  // What stands before the dashes is the signature that `inspect` finds.
  image
      .def(py::init(&Construct),
           "__init__(self, array, mode=None, pin=(0, 0), pivot=(0.0, 0.0), range=None, outside=0.0)\n--\n\n")
      .def("replace", &ReplaceSome,
           "replace(self, *, mode=None, pin=None, pivot=None, range=None, outside=None, metadata=None)\n--\n\n"
           "Another image with the same samples, and what is given in the place of what this one says.\n\n"
           "A mode that does not fit the channels is a ValueError. The samples are shared, not copied.")
      .def_static(
          "from_dlpack", &TakeDlPack,
          "from_dlpack(object)\n--\n\n"
          "An image of what has __dlpack__, such as a tensor in the processor's memory. Dense float32 is shared.")
      .def("__bool__", [](const SharedImage&) -> bool {
        throw py::value_error(
            "an image is neither true nor false; compare it with None, or ask numpy.asarray(image).any() or .all()");
      });
}

void BindProperties(py::class_<SharedImage, SharedImagePtr>& image) {
  image
      .def_property_readonly(
          "mode", [](const SharedImage& self) { return ColorMode::GetName(self.header.color_mode); },
          "What the channels mean: \"color\", \"signed\", \"value\" or \"pair\".")
      .def_property_readonly(
          "size", [](const SharedImage& self) { return std::pair(self.header.size_x, self.header.size_y); },
          "Columns and rows.")
      .def_property_readonly("channels", &SharedImage::GetNumChannels, "How many numbers each pixel has.")
      .def_property_readonly(
          "shape", [](const SharedImage& self) { return py::tuple(py::cast(ShapeOf(self))); },
          "That of the array: rows, columns and, but for values, channels.")
      .def_property_readonly(
          "pin", [](const SharedImage& self) { return std::pair(self.header.pin_x, self.header.pin_y); },
          "The column and row at which the pivot lies.")
      .def_property_readonly(
          "pivot", [](const SharedImage& self) { return std::pair(self.header.pivot_x, self.header.pivot_y); },
          "The point that lies at the pin, as shares of the size.")
      .def_property_readonly(
          "range", [](const SharedImage& self) { return std::pair(self.header.value_low, self.header.value_high); },
          "The lowest and the highest value that samples are meant to have.")
      .def_property_readonly(
          "outside", [](const SharedImage& self) { return self.header.outside_value; },
          "What counts where the image does not reach.")
      .def_property_readonly(
          "metadata", [](const SharedImage& self) { return ToDict(self.metadata.get()); },
          "What the image carries of its file: a dictionary of its own, whose changes do not reach the image.");
}

void BindSharing(py::class_<SharedImage, SharedImagePtr>& image) {
  image.def_buffer(&DescribeBuffer)
      .def("__array__", &ToArray, py::arg("dtype") = py::none(), py::arg("copy") = py::none())
      .def_property_readonly("__array_interface__", &DescribeArray)
      .def("__dlpack__", &MakeDlPack, py::kw_only(), py::arg("stream") = py::none(),
           py::arg("max_version") = py::none(), py::arg("dl_device") = py::none(), py::arg("copy") = py::none())
      .def("__dlpack_device__", [](const SharedImage&) { return std::pair(1, 0); });
}

void BindCopies(py::class_<SharedImage, SharedImagePtr>& image) {
  image.def("__repr__", &Describe)
      .def("__copy__", [](const SharedImage& self) { return std::make_shared<SharedImage>(self); })
      .def(
          "__deepcopy__", [](const SharedImage& self, const py::dict&) { return CopyDeeply(self); }, py::arg("memo"))
      .def("__reduce__", &Reduce)
      .def("__eq__", [](const SharedImage& self, const py::object& other) -> py::object {
        if (!py::isinstance<SharedImage>(other)) {
          return py::reinterpret_borrow<py::object>(py::handle(Py_NotImplemented));
        }
        return py::bool_(AreEqual(self, other.cast<const SharedImage&>()));
      });
  // What is equal would have to have one hash, and samples that are lent may change.
  image.attr("__hash__") = py::none();
}

}  // namespace

void BindImage(py::module_& module) {
  py::options options;
  options.disable_function_signatures();
  // Messages of Python name a type by the module that it is made in: this one is the package's.
  const py::object name = module.attr("__name__");
  module.attr("__name__") = "valuenodes";
  py::class_<SharedImage, SharedImagePtr> image(module, "Image", py::buffer_protocol());
  BindConstruction(image);
  BindProperties(image);
  BindSharing(image);
  BindCopies(image);
  module.attr("__name__") = name;
}

}  // namespace ValuePython
