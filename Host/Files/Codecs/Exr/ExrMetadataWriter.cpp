// SPDX-License-Identifier: Apache-2.0
#include <OpenEXR/ImfFloatAttribute.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfOpaqueAttribute.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfVecAttribute.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <set>

#include "Host/Files/Codecs/ExifBlock.h"
#include "Host/Files/Codecs/Exr/ExrMetadata.h"
#include "Host/Files/Codecs/Exr/ExrStream.h"

namespace ScEng::Exr {
namespace {

constexpr std::size_t kMostName = 255;
constexpr int kVersion = 2;

using Directory = ExifBlock::Directory;

/// A field of an EXIF block and the attribute that stands for it.
struct ExifRow {
  Directory directory;
  unsigned tag;
  const char* attribute;
};
constexpr ExifRow kExifTexts[] = {{Directory::kImage, 0x010E, "comments"},   {Directory::kImage, 0x8298, "owner"},
                                  {Directory::kPhoto, 0x9003, "capDate"},    {Directory::kImage, 0x0132, "capDate"},
                                  {Directory::kImage, 0x013B, "Artist"},     {Directory::kImage, 0x0131, "Software"},
                                  {Directory::kImage, 0x010F, "cameraMake"}, {Directory::kImage, 0x0110, "cameraModel"},
                                  {Directory::kPhoto, 0xA433, "lensMake"},   {Directory::kPhoto, 0xA434, "lensModel"}};
constexpr ExifRow kExifNumbers[] = {{Directory::kPhoto, 0x829A, "expTime"},
                                    {Directory::kPhoto, 0x829D, "aperture"},
                                    {Directory::kPhoto, 0x8827, "isoSpeed"},
                                    {Directory::kPhoto, 0x920A, "nominalFocalLength"}};

class MetadataWriter {
 public:
  MetadataWriter(const WritePlan& plan, Imf::Header& header, std::vector<std::string>& notes)
      : plan_(plan), metadata_(plan.metadata), header_(header), notes_(notes) {}

  void Write() {
    // These count more than entries of their names, which may be of another type.
    AddResolution();
    if (!metadata_.xmp.empty()) Put(kXmpName, Imf::StringAttribute(metadata_.xmp));
    for (const auto& [layer, stored] : plan_.stored_headers) AddStored(layer.empty() ? "" : layer + "/", stored);
    for (const MetadataEntry& entry : metadata_.entries) AddEntry(entry);
    if (!metadata_.exif.empty()) AddExif();
    if (!metadata_.iptc.empty()) LeaveOut("IPTC block");
    if (!metadata_.icc.empty()) LeaveOut("color profile");
    if (metadata_.georeference) LeaveOut("coordinate system");
    if (metadata_.nodata) LeaveOut("nodata value");
    if (!metadata_.value_unit.empty()) LeaveOut("unit of values");
    if (!left_out_.empty()) {
      notes_.push_back("OpenEXR cannot hold these entries of the metadata, which are left out: " + left_out_);
    }
  }

 private:
  void LeaveOut(const std::string& what) { notes_.push_back("OpenEXR holds no " + what + ", which is left out"); }

  bool Has(const std::string& attribute) const { return header_.find(attribute) != header_.end(); }

  void Put(const std::string& name, const Imf::Attribute& attribute) {
    header_.insert(name, attribute);
    taken_.insert(name);
  }

  void AddText(const std::string& name, const std::string& text) { header_.insert(name, Imf::StringAttribute(text)); }
  void AddNumber(const std::string& name, double number) {
    header_.insert(name, Imf::FloatAttribute(static_cast<float>(number)));
  }

  void AddEntry(const MetadataEntry& entry) {
    const auto* row = std::find_if(std::begin(kNames), std::end(kNames),
                                   [&](const NameRow& known) { return entry.name == known.name; });
    const std::string name = row == std::end(kNames) ? entry.name : row->attribute;
    const bool has_name = !name.empty() && name.size() <= kMostName && name.find('\0') == std::string::npos;
    bool is_written = has_name && !IsStructural(name) && !taken_.contains(name);
    try {
      is_written = is_written && std::visit([&](const auto& value) { return AddValue(name, value); }, entry.value);
    } catch (const std::exception&) {
      // The library has an attribute of this name and of another type, or the value is damaged.
      is_written = false;
    }
    if (!is_written) left_out_ += (left_out_.empty() ? "" : ", ") + entry.name;
  }

  bool AddValue(const std::string& name, const std::string& text) {
    if (Has(name)) return false;
    AddText(name, text);
    return true;
  }

  bool AddValue(const std::string& name, const std::vector<std::int64_t>& numbers) {
    const bool fits = std::all_of(numbers.begin(), numbers.end(), [](std::int64_t number) {
      return number == static_cast<std::int64_t>(static_cast<std::int32_t>(number));
    });
    if (!fits || numbers.empty() || numbers.size() > 3) return false;
    const auto at = [&](std::size_t i) { return static_cast<int>(numbers[i]); };
    if (numbers.size() == 1) header_.insert(name, Imf::IntAttribute(at(0)));
    if (numbers.size() == 2) header_.insert(name, Imf::V2iAttribute({at(0), at(1)}));
    if (numbers.size() == 3) header_.insert(name, Imf::V3iAttribute({at(0), at(1), at(2)}));
    return true;
  }

  bool AddValue(const std::string& name, const std::vector<double>& numbers) {
    if (numbers.empty() || numbers.size() > 3) return false;
    const auto at = [&](std::size_t i) { return static_cast<float>(numbers[i]); };
    if (numbers.size() == 1) AddNumber(name, numbers[0]);
    if (numbers.size() == 2) header_.insert(name, Imf::V2fAttribute({at(0), at(1)}));
    if (numbers.size() == 3) header_.insert(name, Imf::V3fAttribute({at(0), at(1), at(2)}));
    return true;
  }

  bool AddValue(const std::string& name, const OpaqueValue& value) {
    const std::string_view prefix = kOpaquePrefix;
    if (!value.type.starts_with(prefix) || value.bytes.size() > std::numeric_limits<int>::max()) return false;
    const std::string type = value.type.substr(prefix.size());
    if (type.empty() || type.size() > kMostName) return false;
    const std::unique_ptr<Imf::Attribute> attribute(Imf::Attribute::knownType(type.c_str())
                                                        ? Imf::Attribute::newAttribute(type.c_str())
                                                        : new Imf::OpaqueAttribute(type.c_str()));
    MemoryInput stream(value.bytes);
    attribute->readValueFrom(stream, static_cast<int>(value.bytes.size()), kVersion);
    if (stream.tellg() != value.bytes.size()) return false;
    header_.insert(name, *attribute);
    return true;
  }

  void AddResolution() {
    if (!metadata_.resolution) return;
    constexpr double kCentimetersInInch = 2.54;
    const auto [x, y] = *metadata_.resolution;
    if (!(x > 0.0 && y > 0.0 && std::isfinite(x) && std::isfinite(y))) return LeaveOut("such resolution");
    if (!metadata_.resolution_unit.empty()) {
      const double density = metadata_.resolution_unit == "cm" ? x * kCentimetersInInch : x;
      Put(kDensityName, Imf::FloatAttribute(static_cast<float>(density)));
    }
    // Of a file that gave both, the shape of the pixels is among the entries.
    if (metadata_.Find(kAspectName) == nullptr && x != y) header_.pixelAspectRatio() = static_cast<float>(y / x);
  }

  void AddExif() {
    const ExifBlock exif(metadata_.exif);
    for (const ExifRow& row : kExifTexts) {
      const auto text = exif.GetText(row.directory, row.tag);
      if (text && !text->empty() && !Has(row.attribute)) AddText(row.attribute, *text);
    }
    for (const ExifRow& row : kExifNumbers) {
      const auto numbers = exif.GetNumbers(row.directory, row.tag);
      if (!numbers.empty() && !Has(row.attribute)) AddNumber(row.attribute, numbers[0]);
    }
    AddAngle(exif, 1, "latitude", 'S');
    AddAngle(exif, 3, "longitude", 'W');
  }

  /// Degrees, minutes and seconds, and with the tag before them on which side of zero they are.
  void AddAngle(const ExifBlock& exif, unsigned side_tag, const char* attribute, char negative) {
    const auto numbers = exif.GetNumbers(Directory::kPosition, side_tag + 1);
    const auto side = exif.GetText(Directory::kPosition, side_tag);
    if (numbers.size() != 3 || !side || side->empty() || Has(attribute)) return;
    const double degrees = numbers[0] + numbers[1] / 60.0 + numbers[2] / 3600.0;
    AddNumber(attribute, side->front() == negative ? -degrees : degrees);
  }

  void AddStored(const std::string& layer, const StoredHeader& stored) {
    if (layer.size() + std::string_view("value:pivot").size() > kMostName) {
      left_out_ += (left_out_.empty() ? "" : ", ") + layer + "value:*";
      return;
    }
    if (stored.mode) Put(layer + "value:mode", Imf::IntAttribute(*stored.mode));
    if (stored.range) {
      Put(layer + "value:low", Imf::FloatAttribute(stored.range->first));
      Put(layer + "value:high", Imf::FloatAttribute(stored.range->second));
    }
    if (stored.pin) {
      Put(layer + "value:pin", Imf::V2iAttribute({stored.pin->first, stored.pin->second}));
    }
    if (stored.pivot) {
      Put(layer + "value:pivot", Imf::V2fAttribute({stored.pivot->first, stored.pivot->second}));
    }
  }

  const WritePlan& plan_;
  const ImageMetadata& metadata_;
  Imf::Header& header_;
  std::vector<std::string>& notes_;
  std::set<std::string> taken_;
  std::string left_out_;
};

}  // namespace

void WriteMetadata(const WritePlan& plan, Imf::Header& header, std::vector<std::string>& notes) {
  MetadataWriter(plan, header, notes).Write();
}

}  // namespace ScEng::Exr
