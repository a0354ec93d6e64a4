// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/ImageReaderNode.h"

#include <utility>

#include "Host/Files/ImageFile.h"
#include "Host/Nodes/Notes.h"
#include "Host/Util/ParallelReduce.h"

namespace {

using ScEng::SampleRange;

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

}  // namespace

ImageReaderNode::ImageReaderNode() {
  constexpr double kMost = 1e9;
  AddAttribute("path", std::string(), Attribute::StringUse::kReadPath);
  AddAttribute("color_mode", 0, "auto,color,signed,value");
  AddAttribute("range", 0, "declared,measured,custom");
  AddAttribute("low", 0.0, -kMost, kMost, 0.01, 3);
  AddAttribute("high", 1.0, -kMost, kMost, 0.01, 3);
  AddAttribute("placement", 0, "file,custom");
  AddAttribute("pin", ScEng::Point{});
  AddAttribute("pivot", ScEng::Point{});
  UpdateInplugsAndOutplugs();
}

void ImageReaderNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  output_.Reset();
  if (!IsEnabled()) return;
  const std::filesystem::path path = ReadPath(inputs, "path");
  if (path.empty()) {
    SetState(evaluation, State::kError, "The reader has no path; set its attribute \"path\".");
    return;
  }
  ScEng::Status status;
  std::vector<std::string> notes;
  const auto mode = FindReadMode(Read(inputs, "color_mode").GetText());
  ImagePtr image = ScEng::ReadImageFile(path, mode, status, notes);
  if (!image) {
    SetState(evaluation, State::kFileError, status.GetMessage());
    return;
  }
  const std::string range = Read(inputs, "range").GetText();
  if (range == "measured") {
    const SampleRange measured = MeasureFinite(*image);
    image->SetValueLowHigh(measured.low, measured.high);
  } else if (range == "custom") {
    image->SetValueLowHigh(static_cast<float>(Read(inputs, "low").GetNumber()),
                           static_cast<float>(Read(inputs, "high").GetNumber()));
  }
  if (Read(inputs, "placement").GetText() == "custom") {
    const ScEng::Point pin = Read(inputs, "pin").GetPoint();
    const ScEng::Point pivot = Read(inputs, "pivot").GetPoint();
    image->SetPin(ScEng::RoundHalfDown(pin.x), ScEng::RoundHalfDown(pin.y));
    image->SetPivot(static_cast<float>(pivot.x), static_cast<float>(pivot.y));
  }
  output_ = std::move(image);
  ScEng::ReportNotes(*this, evaluation, notes);
}
