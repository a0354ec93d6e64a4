// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/ImageWriterNode.h"

#include "Host/Files/ImageFile.h"
#include "Host/Nodes/HostLibrary.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Nodes/Notes.h"
#include "Host/Nodes/Paths.h"

namespace {

constexpr AttributeRow kPath =
    PathRow("path", Attribute::StringUse::kWritePath, "The file to write. Its ending chooses the format.");
constexpr AttributeRow kType = ChoiceRow("type", 0, "float,half,uint16,uint8", "The type of the stored samples.");
constexpr AttributeRow kAttributes[] = {kPath, kType};

}  // namespace

constinit const NodeRecord ImageWriterNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "ImageWriterNode",
    .display_name = "Image Writer",
    .type = ScEng::kImageWriterType,
    .group = "Files",
    .sentence = "Writes its input image to a file when the document is run.",
    .keywords = "save,export,output,store,file",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .reach = ReachesImage,
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
  const std::string type = evaluated.GetText(kType);
  std::vector<std::string> notes;
  const ScEng::Status status =
      ScEng::WriteImageFile(*image, path, ScEng::FindSampleType(type).value_or(ScEng::SampleType::kFloat), notes);
  if (status.IsError()) {
    SetState(evaluation, State::kFileError, status.GetMessage());
    return;
  }
  ScEng::ReportNotes(*this, evaluation, notes);
}
