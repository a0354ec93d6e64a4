// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/DlPack.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "Python/Module/AttributeValue.h"
#include "Python/Module/SharedImage.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

// The structures of DLPack 1.0, as its standard lays them down.

struct DlDevice {
  std::int32_t type = 1;
  std::int32_t id = 0;
};

struct DlType {
  std::uint8_t code = 2;
  std::uint8_t bits = 32;
  std::uint16_t lanes = 1;
};

struct DlTensor {
  void* data = nullptr;
  DlDevice device;
  std::int32_t dimensions = 0;
  DlType type;
  std::int64_t* shape = nullptr;
  std::int64_t* strides = nullptr;
  std::uint64_t byte_offset = 0;
};

struct DlManaged {
  DlTensor tensor;
  void* context = nullptr;
  void (*deleter)(DlManaged* self) = nullptr;
};

struct DlManagedVersioned {
  std::uint32_t major = 1;
  std::uint32_t minor = 0;
  void* context = nullptr;
  void (*deleter)(DlManagedVersioned* self) = nullptr;
  std::uint64_t flags = 0;
  DlTensor tensor;
};

constexpr std::uint64_t kReadOnly = 1;
constexpr std::uint64_t kCopied = 2;

/// A tensor with all that it points to.
template <class Managed>
struct Export {
  Managed managed;
  std::array<std::int64_t, 3> shape{};
  std::array<std::int64_t, 3> strides{};
  SharedImage image;
};

void FillTensor(DlTensor& tensor, const SharedImage& image, std::array<std::int64_t, 3>& shape,
                std::array<std::int64_t, 3>& strides) {
  const auto channels = static_cast<std::int64_t>(image.GetNumChannels());
  shape = {image.header.size_y, image.header.size_x, channels};
  strides = {image.header.size_x * channels, channels, 1};
  tensor.data = const_cast<float*>(image.samples.get());
  tensor.dimensions = channels == 1 ? 2 : 3;
  tensor.shape = shape.data();
  tensor.strides = strides.data();
}

/// What is left of a capsule that nobody has taken the tensor out of.
template <class Managed>
void DestroyCapsule(PyObject* capsule, const char* name) {
  if (PyCapsule_IsValid(capsule, name) == 0) return;
  auto* const managed = static_cast<Managed*>(PyCapsule_GetPointer(capsule, name));
  managed->deleter(managed);
}

constexpr const char* kName = "dltensor";
constexpr const char* kVersionedName = "dltensor_versioned";

template <class Managed>
std::unique_ptr<Export<Managed>> MakeExport(SharedImage image) {
  auto made = std::make_unique<Export<Managed>>();
  made->image = std::move(image);
  FillTensor(made->managed.tensor, made->image, made->shape, made->strides);
  made->managed.context = made.get();
  made->managed.deleter = [](Managed* self) { delete static_cast<Export<Managed>*>(self->context); };
  return made;
}

py::capsule MakeCapsule(void* pointer, const char* name, PyCapsule_Destructor destructor) {
  PyObject* const capsule = PyCapsule_New(pointer, name, destructor);
  if (capsule == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::capsule>(capsule);
}

std::pair<int, int> ReadTwo(const py::object& given, const char* name) {
  try {
    return given.cast<std::pair<int, int>>();
  } catch (const py::cast_error&) {
    throw py::type_error(std::string("__dlpack__: ") + name + " takes two whole numbers, not " + NameType(given));
  }
}

}  // namespace

py::capsule MakeDlPack(const py::object& image, const py::object& stream, const py::object& max_version,
                       const py::object& device, const py::object& copy) {
  if (!stream.is_none() && !(IsNumber(stream) && ToDouble(stream) == -1.0)) {
    throw py::value_error("an image lies in the processor's memory, where there are no streams");
  }
  if (!device.is_none() && ReadTwo(device, "dl_device") != std::pair(1, 0)) {
    throw py::buffer_error("an image lies in the processor's memory, and on no other device");
  }
  const bool copies = !copy.is_none() && copy.cast<bool>();
  const py::object source = copies ? image.attr("__deepcopy__")(py::dict()) : image;
  const auto& shared = source.cast<const SharedImage&>();
  const bool is_versioned = !max_version.is_none() && ReadTwo(max_version, "max_version").first >= 1;
  if (!is_versioned) {
    auto made = MakeExport<DlManaged>(shared);
    const py::capsule capsule =
        MakeCapsule(&made->managed, kName, [](PyObject* object) { DestroyCapsule<DlManaged>(object, kName); });
    static_cast<void>(made.release());
    return capsule;
  }
  auto made = MakeExport<DlManagedVersioned>(shared);
  made->managed.flags = copies ? kCopied : kReadOnly;
  const py::capsule capsule = MakeCapsule(&made->managed, kVersionedName, [](PyObject* object) {
    DestroyCapsule<DlManagedVersioned>(object, kVersionedName);
  });
  static_cast<void>(made.release());
  return capsule;
}

}  // namespace ValuePython
