// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/ImageWriterNode.h"

#include "Host/Files/ImageFile.h"
#include "Host/Files/PendingWrites.h"
#include "Host/Nodes/HostLibrary.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Nodes/Notes.h"
#include "Host/Nodes/Paths.h"

namespace {

constexpr AttributeRow kPath =
    PathRow("path", Attribute::StringUse::kWritePath, "The file to write. Its ending chooses the format.");
constexpr AttributeRow kType =
    ChoiceRow("type", 0, "auto,float,half,uint16,uint8,int16",
              "The type of the stored samples. auto takes the most exact one that the format has.");
constexpr AttributeRow kSamples =
    ChoiceRow("samples", 0, "unit,stored",
              "What unsigned integers hold: 0 to 1 spread over their whole range, or the values themselves, rounded.");
constexpr AttributeRow kOpacity =
    ChoiceRow("opacity", 0, "auto,keep,drop",
              "Whether opacity is written. auto leaves it out where all files that the image was made of had none.");
constexpr AttributeRow kMetadata = ChoiceRow(
    "metadata", 0, "keep,strip", "Whether what the read file said of itself (EXIF, profile, coordinates) is written.");
constexpr AttributeRow kLayer =
    StringRow("layer", "", "The layer of an EXR. Writers with one path and different layers make one file.");
constexpr AttributeRow kAttributes[] = {kPath, kType, kSamples, kOpacity, kMetadata, kLayer};

}  // namespace

constinit const NodeRecord ImageWriterNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "ImageWriterNode",
    .display_name = "Image Writer",
    .type = ScEng::kImageWriterType,
    .group = "Files",
    .sentence = "Writes its input image to a file when the document is run.",
    .keywords = "save,export,output,store,render,file,alpha,opacity,transparency",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .reach = ReachesImage,
    .has_image = HasImageOfAnyInput,
};

void ImageWriterNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage();
  if (image == nullptr) {
    SetState(evaluation, State::kError, "The writer has no image to write; its input \"image\" carries none.");
    return;
  }
  const std::filesystem::path path = ScEng::GetPath(*this, evaluated, kPath);
  if (path.empty()) {
    SetState(evaluation, State::kError, "The writer has no path; set its attribute \"path\".");
    return;
  }
  ScEng::WriteOptions options = ScEng::MakeWriteOptions(evaluated.GetText(kType), evaluated.GetText(kSamples),
                                                        evaluated.GetText(kOpacity), evaluated.GetText(kMetadata));
  const std::string layer = evaluated.GetText(kLayer);
  std::vector<std::string> notes;
  if (auto* pending = ScEng::PendingWrites::GetCurrent()) {
    options.compression = pending->GetCompression();
    if (pending->Take({path, layer, ImagePtr(const_cast<Image*>(image)), options, this})) return;
  }
  ScEng::SampleType type = ScEng::SampleType::kFloat;
  const ScEng::Status status = ScEng::WriteImageLayers({{layer, image, options}}, path, notes, &type);
  if (status.IsError()) {
    SetState(evaluation, State::kFileError, status.GetMessage());
    return;
  }
  if (auto* pending = ScEng::PendingWrites::GetCurrent()) pending->Tell({path, image->GetImageHeader(), type});
  ScEng::ReportNotes(*this, evaluation, notes);
}
