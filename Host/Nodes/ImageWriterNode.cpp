// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/ImageWriterNode.h"

#include "Host/Files/ImageFile.h"
#include "Host/Nodes/Notes.h"

ImageWriterNode::ImageWriterNode() {
  AddAttribute("path", std::string(), Attribute::StringUse::kWritePath);
  AddAttribute("type", 0, "float,half,uint16,uint8");
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

void ImageWriterNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  if (!IsEnabled()) return;
  const Image* image = inputs.empty() ? nullptr : inputs[GetInplugIdFromRegularInputId(0)].GetImage();
  if (image == nullptr) {
    SetState(evaluation, State::kError, "The writer has no image to write; its input \"image\" carries none.");
    return;
  }
  const std::filesystem::path path = ReadPath(inputs, "path");
  if (path.empty()) {
    SetState(evaluation, State::kError, "The writer has no path; set its attribute \"path\".");
    return;
  }
  const std::string type = Read(inputs, "type").GetText();
  std::vector<std::string> notes;
  const ScEng::Status status =
      ScEng::WriteImageFile(*image, path, ScEng::FindSampleType(type).value_or(ScEng::SampleType::kFloat), notes);
  if (status.IsError()) {
    SetState(evaluation, State::kFileError, status.GetMessage());
    return;
  }
  ScEng::ReportNotes(*this, evaluation, notes);
}
