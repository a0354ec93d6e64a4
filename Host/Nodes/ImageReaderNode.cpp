// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/ImageReaderNode.h"

#include "Host/Files/ImageFile.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Nodes/HostLibrary.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Nodes/Notes.h"
#include "Host/Nodes/Paths.h"
#include "Host/Util/ParallelReduce.h"

namespace {

using ScEng::SampleRange;

constexpr double kMost = 1e9;

constexpr AttributeRow kPath = PathRow("path", Attribute::StringUse::kReadPath,
                                       "The file to read. A relative path starts at the document's folder.");
constexpr AttributeRow kColorMode = ChoiceRow(
    "color_mode", 0, "auto,color,signed,value",
    "What the samples are read as: colour with opacity, signed vectors, or one value per pixel. auto decides by "
    "what the file holds.");
constexpr AttributeRow kRange = ChoiceRow(
    "range", 0, "declared,measured,custom",
    "The value range that the image declares: the one stored in the file, the lowest to the highest sample, or "
    "low to high. The samples stay as they are.");
constexpr AttributeRow kLow =
    NumberRow("low", 0.0, -kMost, kMost, 0.01, 3, "The lower end of the declared range where range is custom.")
        .OnlyWithWords(kRange.name, "custom");
constexpr AttributeRow kHigh =
    NumberRow("high", 1.0, -kMost, kMost, 0.01, 3, "The upper end of the declared range where range is custom.")
        .OnlyWithWords(kRange.name, "custom");
constexpr AttributeRow kPlacement = ChoiceRow(
    "placement", 0, "file,custom", "Where the image lies: where the file says, or where pin and pivot put it.");
constexpr AttributeRow kPin =
    PointRow("pin", 0.0, 0.0, "The document pixel that the pivot lies on, where placement is custom.")
        .OnlyWithWords(kPlacement.name, "custom");
constexpr AttributeRow kPivot =
    PointRow("pivot", 0.0, 0.0,
             "The point of the image that lies on the pin, from (0, 0) at its top left to (1, 1), where "
             "placement is custom.")
        .OnlyWithWords(kPlacement.name, "custom");
constexpr AttributeRow kSamples =
    ChoiceRow("samples", 0, "auto,unit,stored",
              "What integers in the file become: auto makes 8 and 16 bits without sign 0 to 1 and takes others as they "
              "are, unit divides all by their type's largest, stored takes the numbers as they are.");
constexpr AttributeRow kPart =
    StringRow("part", "", "The part of a file with several: its name, or an index from 0. Empty for the first.");
constexpr AttributeRow kChannels =
    StringRow("channels", "", "One to four channels by their full names with commas, read in that order.");
constexpr AttributeRow kLayer =
    StringRow("layer", "", "The layer to read, diffuse of a channel diffuse.R. Empty for the channels without a layer.")
        .OnlyWithoutText(kChannels.name);
constexpr AttributeRow kAttributes[] = {kPath, kColorMode, kRange,   kLow,  kHigh,  kPlacement,
                                        kPin,  kPivot,     kSamples, kPart, kLayer, kChannels};

SampleRange MeasureFinite(const Image& image) {
  const auto measured =
      ScEng::ParallelReduce<SampleRange>(image.GetNumSamples(), 65536, [&](std::size_t from, std::size_t to) {
        return ScEng::MeasureFiniteRange(image.GetConstArray() + from, to - from);
      });
  if (measured.IsEmpty()) return {0.0F, 0.0F};
  return measured;
}

ScEng::ReadMode FindReadMode(const std::string& word) {
  if (word == "color") return ScEng::ReadMode::kColor;
  if (word == "signed") return ScEng::ReadMode::kSigned;
  return word == "value" ? ScEng::ReadMode::kValue : ScEng::ReadMode::kAuto;
}

ScEng::SampleScale FindSampleScale(const std::string& word) {
  if (word == "unit") return ScEng::SampleScale::kUnit;
  return word == "stored" ? ScEng::SampleScale::kStored : ScEng::SampleScale::kAuto;
}

ScEng::ReadOptions MakeOptions(const EvaluatedInputs& inputs) {
  ScEng::ReadOptions options;
  options.mode = FindReadMode(inputs.GetText(kColorMode));
  options.scale = FindSampleScale(inputs.GetText(kSamples));
  options.part = inputs.GetText(kPart);
  options.layer = inputs.GetText(kLayer);
  options.channels = inputs.GetText(kChannels);
  return options;
}

/// Puts an image where pin and pivot have it; what it carries of the ground moves along.
void Place(Image& image, const ScEng::Point& pin, const ScEng::Point& pivot) {
  const ScEng::Box2I before = image.GetBox();
  image.SetPin(ScEng::RoundHalfDown(pin.x), ScEng::RoundHalfDown(pin.y));
  image.SetPivot(static_cast<float>(pivot.x), static_cast<float>(pivot.y));
  const ScEng::Box2I after = image.GetBox();
  if (image.GetMetadata() == nullptr) return;
  image.SetMetadata(ScEng::MoveMetadata(image.GetMetadata(), after.left - before.left, after.top - before.top));
}

}  // namespace

constinit const NodeRecord ImageReaderNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "ImageReaderNode",
    .display_name = "Image Reader",
    .type = ScEng::kImageReaderType,
    .group = "Files",
    .sentence = "Reads an image file.",
    .keywords = "load,open,file,import,alpha,opacity,transparency,dem,elevation model,input,source,picture,raster",
    .attributes = kAttributes,
    .outputs = kImagePlugs,
    .reach = ReachesImage,
    .has_image = HasImageWhileEnabled,
};

void ImageReaderNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  output_.ReleaseAll();
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const std::filesystem::path path = ScEng::GetPath(*this, evaluated, kPath);
  if (path.empty()) {
    SetState(evaluation, State::kError, "The reader has no path; set its attribute \"path\".");
    return;
  }
  ScEng::Status status;
  std::vector<std::string> notes;
  ImagePtr image = ScEng::ReadImageFile(path, MakeOptions(evaluated), status, notes);
  if (!image) {
    SetState(evaluation, State::kFileError, status.GetMessage());
    return;
  }
  const std::string range = evaluated.GetText(kRange);
  if (range == "measured") {
    const SampleRange measured = MeasureFinite(*image);
    image->SetValueLowHigh(measured.low, measured.high);
  } else if (range == "custom") {
    image->SetValueLowHigh(evaluated.GetNumber(kLow), evaluated.GetNumber(kHigh));
  }
  if (evaluated.GetText(kPlacement) == "custom") {
    Place(*image, evaluated.GetPoint(kPin), evaluated.GetPoint(kPivot));
  }
  output_.Set(image.Get());
  ScEng::ReportNotes(*this, evaluation, notes);
}
