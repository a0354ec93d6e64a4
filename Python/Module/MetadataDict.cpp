// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/MetadataDict.h"

#include <pybind11/stl.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace ValuePython {
namespace {

using ScEng::ImageMetadata;
using ScEng::MetadataValue;
using ScEng::OpaqueValue;
using Bytes = std::vector<std::uint8_t>;

py::bytes ToBytes(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

Bytes FromBytes(py::handle object) {
  const auto text = object.cast<std::string>();
  return {text.begin(), text.end()};
}

/// Text of files is UTF-8 as a rule; what is not keeps its bytes as surrogates.
py::object ToText(const std::string& text) {
  PyObject* const decoded = PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "surrogateescape");
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(decoded);
}

std::string FromText(py::handle object) {
  PyObject* const encoded = PyUnicode_AsEncodedString(object.ptr(), "utf-8", "surrogateescape");
  if (encoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::bytes>(encoded).cast<std::string>();
}

py::object ToObject(const MetadataValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return ToText(*text);
  if (const auto* whole = std::get_if<std::vector<std::int64_t>>(&value)) return py::tuple(py::cast(*whole));
  if (const auto* numbers = std::get_if<std::vector<double>>(&value)) return py::tuple(py::cast(*numbers));
  const auto& opaque = std::get<OpaqueValue>(value);
  py::dict facts;
  facts["type"] = opaque.type;
  facts["bytes"] = ToBytes(opaque.bytes);
  return facts;
}

MetadataValue FromObject(py::handle object) {
  if (py::isinstance<py::str>(object)) return FromText(object);
  if (py::isinstance<py::dict>(object)) {
    return OpaqueValue{object["type"].cast<std::string>(), FromBytes(object["bytes"])};
  }
  const auto sequence = py::reinterpret_borrow<py::sequence>(object);
  // Owned: a sequence may make its entries when it is asked for them, as arrays do.
  for (const py::object entry : sequence) {
    if (!py::isinstance<py::int_>(entry)) return object.cast<std::vector<double>>();
  }
  return object.cast<std::vector<std::int64_t>>();
}

/// One fixed name: how it is read from a dictionary.
struct Field {
  const char* name;
  void (*take)(ImageMetadata& metadata, py::handle value);
};

ScEng::Georeference& GroundOf(ImageMetadata& metadata) {
  if (!metadata.georeference) metadata.georeference.emplace();
  return *metadata.georeference;
}

constexpr Field kFields[] = {
    {"exif", [](ImageMetadata& m, py::handle value) { m.exif = FromBytes(value); }},
    {"iptc", [](ImageMetadata& m, py::handle value) { m.iptc = FromBytes(value); }},
    {"xmp", [](ImageMetadata& m, py::handle value) { m.xmp = FromText(value); }},
    {"icc", [](ImageMetadata& m, py::handle value) { m.icc = FromBytes(value); }},
    {"resolution", [](ImageMetadata& m, py::handle value) { m.resolution = value.cast<std::array<double, 2>>(); }},
    {"resolution_unit", [](ImageMetadata& m, py::handle value) { m.resolution_unit = value.cast<std::string>(); }},
    {"coordinate_system", [](ImageMetadata& m, py::handle value) { GroundOf(m).coordinate_system = FromText(value); }},
    {"geotransform",
     [](ImageMetadata& m, py::handle value) { GroundOf(m).transform = value.cast<std::array<double, 6>>(); }},
    {"nodata", [](ImageMetadata& m, py::handle value) { m.nodata = value.cast<double>(); }},
    {"unit", [](ImageMetadata& m, py::handle value) { m.value_unit = FromText(value); }},
    {"display_window",
     [](ImageMetadata& m, py::handle value) {
       const auto box = value.cast<std::array<std::int64_t, 4>>();
       m.display_window = ScEng::Box2I{box[0], box[1], box[2], box[3]};
     }},
    {"compression", [](ImageMetadata& m, py::handle value) { m.exr_compression = value.cast<std::string>(); }},
    {"had_opacity", [](ImageMetadata& m, py::handle value) { m.had_opacity = value.cast<bool>(); }},
    {"entries",
     [](ImageMetadata& m, py::handle value) {
       for (const auto& [name, entry] : value.cast<py::dict>())
         m.entries.push_back({FromText(name), FromObject(entry)});
     }},
};

void PutBytes(py::dict& facts, const char* name, const Bytes& bytes) {
  if (!bytes.empty()) facts[name] = ToBytes(bytes);
}

void PutText(py::dict& facts, const char* name, const std::string& text) {
  if (!text.empty()) facts[name] = ToText(text);
}

}  // namespace

py::dict ToDict(const ImageMetadata* metadata) {
  py::dict facts;
  if (metadata == nullptr) return facts;
  PutBytes(facts, "exif", metadata->exif);
  PutBytes(facts, "iptc", metadata->iptc);
  PutText(facts, "xmp", metadata->xmp);
  PutBytes(facts, "icc", metadata->icc);
  if (metadata->resolution) facts["resolution"] = py::tuple(py::cast(*metadata->resolution));
  PutText(facts, "resolution_unit", metadata->resolution_unit);
  if (metadata->georeference) {
    PutText(facts, "coordinate_system", metadata->georeference->coordinate_system);
    if (const auto& transform = metadata->georeference->transform) {
      facts["geotransform"] = py::tuple(py::cast(*transform));
    }
  }
  if (metadata->nodata) facts["nodata"] = *metadata->nodata;
  PutText(facts, "unit", metadata->value_unit);
  if (const auto& box = metadata->display_window) {
    facts["display_window"] = py::make_tuple(box->left, box->top, box->right, box->bottom);
  }
  PutText(facts, "compression", metadata->exr_compression);
  if (metadata->had_opacity) facts["had_opacity"] = *metadata->had_opacity;
  py::dict entries;
  for (const ScEng::MetadataEntry& entry : metadata->entries) entries[ToText(entry.name)] = ToObject(entry.value);
  if (!entries.empty()) facts["entries"] = entries;
  return facts;
}

std::shared_ptr<const ImageMetadata> FromDict(const py::dict& facts) {
  if (facts.empty()) return nullptr;
  auto metadata = std::make_shared<ImageMetadata>();
  for (const auto& [key, value] : facts) {
    const auto name = key.cast<std::string>();
    const Field* found = nullptr;
    for (const Field& field : kFields) {
      if (name == field.name) found = &field;
    }
    if (found == nullptr) {
      throw py::value_error("metadata has no field \"" + name + "\"; fields of one's own belong into \"entries\"");
    }
    found->take(*metadata, value);
  }
  return metadata;
}

}  // namespace ValuePython
