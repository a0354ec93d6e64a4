// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/WriteFlags.h"

#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/ImageFormats.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"

void WriteFlags::Declare(CLI::App& app) {
  app.add_option("--type", type_, "Samples of the files: auto, float, half, uint16, uint8 or int16")
      ->type_name("TYPE")
      ->check(CLI::IsMember({"auto", "float", "half", "uint16", "uint8", "int16"}));
  app.add_option("--samples", samples_,
                 "What integers hold: unit (0 to 1 spread over their range) or stored (the values)")
      ->type_name("WORD")
      ->check(CLI::IsMember({"unit", "stored"}));
  app.add_option("--opacity", opacity_, "Whether opacity is written: auto (where a source had it), keep or drop")
      ->type_name("WORD")
      ->check(CLI::IsMember({"auto", "keep", "drop"}));
  app.add_flag("--strip", strips_, "Write no metadata");
  app.add_option(
         "--compression", compression_,
         "How samples are packed: none, zip, piz and so on for EXR, none, zip or lzw for TIFF, 1 to 100 for JPEG")
      ->type_name("WORD");
}

ScEng::Status WriteFlags::ApplyTo(ScEng::GraphDocument& document) const {
  document.SetCompression(compression_);
  for (std::size_t i = 0; i < document.GetOutputs().size(); ++i) {
    ScEng::DocumentOutput output = document.GetOutputs()[i];
    if (!type_.empty()) output.type = type_;
    if (!samples_.empty()) output.samples = samples_;
    if (!opacity_.empty()) output.opacity = opacity_;
    if (strips_) output.metadata = "strip";
    const ScEng::Status status = document.SetOutput(i, output);
    if (status.IsError()) return status;
  }
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node == nullptr || !node->IsSink()) continue;
    const auto set = [&](const char* name, const std::string& word) {
      Attribute* attribute = node->GetAttribute(name);
      if (attribute != nullptr && !word.empty()) attribute->SetChoice(word, false);
    };
    set("type", type_);
    set("samples", samples_);
    set("opacity", opacity_);
    set("metadata", strips_ ? "strip" : "");
  }
  return {};
}

ScEng::Status WriteFlags::Check(const ScEng::GraphDocument& document) const {
  if (compression_.empty()) return {};
  for (const std::filesystem::path& file : document.GetOutputNames()) {
    const std::string problem = ScEng::FindCompressionProblem(file, compression_);
    if (problem.empty()) continue;
    return ScEng::Status::Error("--compression " + compression_ + ": \"" + file.filename().string() + "\": " + problem);
  }
  return {};
}
