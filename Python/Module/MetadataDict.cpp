// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/MetadataDict.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "Host/Util/ClosestName.h"
#include "Python/Module/AttributeValue.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

using ScEng::ImageMetadata;
using ScEng::MetadataValue;
using ScEng::OpaqueValue;
using Bytes = std::vector<std::uint8_t>;

py::bytes ToBytes(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

Bytes FromBytes(py::handle object) {
  if (!py::isinstance<py::bytes>(object) && PyByteArray_Check(object.ptr()) == 0) throw py::cast_error();
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
  if (!py::isinstance<py::str>(object)) throw py::cast_error();
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
    const auto facts = py::reinterpret_borrow<py::dict>(object);
    if (!facts.contains("type") || !facts.contains("bytes")) throw py::cast_error();
    return OpaqueValue{facts["type"].cast<std::string>(), FromBytes(facts["bytes"])};
  }
  if (PySequence_Check(object.ptr()) == 0) throw py::cast_error();
  const auto sequence = py::reinterpret_borrow<py::sequence>(object);
  // Owned: a sequence may make its entries when it is asked for them, as arrays do.
  for (const py::object entry : sequence) {
    if (!py::isinstance<py::int_>(entry)) return object.cast<std::vector<double>>();
  }
  return object.cast<std::vector<std::int64_t>>();
}

/// A value in a message: what it is where that is short, else its type.
std::string DescribeValue(py::handle value) {
  constexpr std::size_t kMost = 40;
  const auto text = py::repr(value).cast<std::string>();
  return text.size() <= kMost && text.find('\n') == std::string::npos ? text : NameType(value);
}

/// One fixed name: what it takes, and how that is read from a dictionary. py::cast_error for anything else.
struct Field {
  const char* name;
  const char* takes;
  void (*take)(ImageMetadata& metadata, py::handle value);
};

ScEng::Georeference& GroundOf(ImageMetadata& metadata) {
  if (!metadata.georeference) metadata.georeference.emplace();
  return *metadata.georeference;
}

/// Whether an exception says that a value is of another kind than is read.
bool IsOfKind(const py::error_already_set& error) {
  return error.matches(PyExc_TypeError) || error.matches(PyExc_OverflowError);
}

void TakeEntry(ImageMetadata& metadata, py::handle name, py::handle entry) {
  if (!py::isinstance<py::str>(name)) throw py::type_error("names of entries are strings, not " + NameType(name));
  const std::string wrong = "entry \"" + FromText(name) +
                            "\" takes a string, a sequence of numbers, or a dict of \"type\" and \"bytes\", not ";
  try {
    metadata.entries.push_back({FromText(name), FromObject(entry)});
  } catch (const py::cast_error&) {
    throw py::type_error(wrong + DescribeValue(entry));
  } catch (const py::error_already_set& error) {
    if (!IsOfKind(error)) throw;
    throw py::type_error(wrong + DescribeValue(entry));
  }
}

constexpr Field kFields[] = {
    {"exif", "bytes", [](ImageMetadata& m, py::handle value) { m.exif = FromBytes(value); }},
    {"iptc", "bytes", [](ImageMetadata& m, py::handle value) { m.iptc = FromBytes(value); }},
    {"xmp", "a string", [](ImageMetadata& m, py::handle value) { m.xmp = FromText(value); }},
    {"icc", "bytes", [](ImageMetadata& m, py::handle value) { m.icc = FromBytes(value); }},
    {"resolution", "two numbers (x, y)",
     [](ImageMetadata& m, py::handle value) { m.resolution = value.cast<std::array<double, 2>>(); }},
    {"resolution_unit", "a string",
     [](ImageMetadata& m, py::handle value) { m.resolution_unit = value.cast<std::string>(); }},
    {"coordinate_system", "a string",
     [](ImageMetadata& m, py::handle value) { GroundOf(m).coordinate_system = FromText(value); }},
    {"geotransform", "six numbers",
     [](ImageMetadata& m, py::handle value) { GroundOf(m).transform = value.cast<std::array<double, 6>>(); }},
    {"nodata", "a number", [](ImageMetadata& m, py::handle value) { m.nodata = value.cast<double>(); }},
    {"unit", "a string", [](ImageMetadata& m, py::handle value) { m.value_unit = FromText(value); }},
    {"display_window", "four whole numbers (left, top, right, bottom)",
     [](ImageMetadata& m, py::handle value) {
       const auto box = value.cast<std::array<std::int64_t, 4>>();
       m.display_window = ScEng::Box2I{box[0], box[1], box[2], box[3]};
     }},
    {"compression", "a string",
     [](ImageMetadata& m, py::handle value) { m.exr_compression = value.cast<std::string>(); }},
    {"had_opacity", "True or False",
     [](ImageMetadata& m, py::handle value) {
       if (!py::isinstance<py::bool_>(value)) throw py::cast_error();
       m.had_opacity = value.cast<bool>();
     }},
    {"entries", "a dict of strings, numbers and blocks of bytes by name",
     [](ImageMetadata& m, py::handle value) {
       if (!py::isinstance<py::dict>(value)) throw py::cast_error();
       for (const auto& [name, entry] : py::reinterpret_borrow<py::dict>(value)) TakeEntry(m, name, entry);
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

std::shared_ptr<const ImageMetadata> FromDict(py::handle facts, const std::string& name) {
  if (!py::isinstance<py::dict>(facts)) throw py::type_error(name + " takes a dict, not " + NameType(facts));
  const auto fields = py::reinterpret_borrow<py::dict>(facts);
  if (fields.empty()) return nullptr;
  auto metadata = std::make_shared<ImageMetadata>();
  for (const auto& [key, value] : fields) {
    if (!py::isinstance<py::str>(key))
      throw py::type_error(name + ": names of fields are strings, not " + NameType(key));
    const std::string written = FromText(key);
    const auto* const found =
        std::find_if(std::begin(kFields), std::end(kFields), [&](const Field& field) { return written == field.name; });
    if (found == std::end(kFields)) {
      std::vector<std::string> names;
      for (const Field& field : kFields) names.emplace_back(field.name);
      throw py::value_error(name + " has no field \"" + written + "\"" + ScEng::SuggestClosestNames(written, names) +
                            "; fields of one's own belong into \"entries\"");
    }
    const std::string wrong = name + ": " + written + " takes " + found->takes + ", not ";
    try {
      found->take(*metadata, value);
    } catch (const py::cast_error&) {
      throw py::type_error(wrong + DescribeValue(value));
    } catch (const py::type_error& error) {
      throw py::type_error(name + ": " + error.what());
    } catch (const py::error_already_set& error) {
      if (!IsOfKind(error)) throw;
      throw py::type_error(wrong + DescribeValue(value));
    }
  }
  return metadata;
}

}  // namespace ValuePython
