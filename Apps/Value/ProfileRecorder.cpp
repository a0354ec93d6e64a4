// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ProfileRecorder.h"

#include <algorithm>
#include <map>
#include <utility>

#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeInterface.h"

namespace {

std::string FindTypeName(const ScEng::NodeCatalog& catalog, const Node& node) {
  ScEng::Status status;
  return ScEng::CallGuarded("GetName", status, std::string(), [&] {
    const NodeInterface* descriptor = catalog.Find(node.GetNodeType());
    return descriptor != nullptr ? descriptor->GetName() : std::string();
  });
}

}  // namespace

ProfileRecorder::ProfileRecorder(ScEng::GraphDocument& document, std::string name) : document_(document) {
  record_.name = std::move(name);
}

ScEng::RunReport ProfileRecorder::Run(const ScEng::GraphDocument::Progress& progress, Engine::Options options) {
  const auto on_timed = std::move(options.on_timed);
  options.on_timed = [&](Node& node, const Engine::NodeTiming& timing) {
    AddNode(node, timing);
    if (on_timed) on_timed(node, timing);
  };
  const ScEng::FileWatch watch([this](const ScEng::FileWatch::Event& event) {
    stages_.push_back({event.work, event.file, {event.begin, event.end}, event.file_bytes, event.sample_bytes});
  });
  record_.span.begin = ProfileSpan::Clock::now();
  ScEng::RunReport report = document_.Run(progress, options);
  record_.span.end = ProfileSpan::Clock::now();
  CollectWrites(record_.span.end);
  NameWrites(report);
  return report;
}

void ProfileRecorder::AddNode(Node& node, const Engine::NodeTiming& timing) {
  CollectWrites(timing.begin);
  NodeStep step;
  step.id = node.GetLabel();
  step.type = FindTypeName(document_.GetEngine().GetCatalog(), node);
  step.span = {timing.begin, timing.end};
  step.bytes_read = timing.bytes_read;
  step.bytes_made = timing.bytes_made;
  for (unsigned outplug = 0; outplug < node.GetOutplugs().size() && step.size_x == 0; ++outplug) {
    const Image* image = document_.GetEngine().GetOutputImage(&node, outplug);
    if (image == nullptr) continue;
    step.size_x = image->GetSizeX();
    step.size_y = image->GetSizeY();
  }
  step.files = std::exchange(stages_, {});
  record_.nodes.push_back(std::move(step));
}

void ProfileRecorder::CollectWrites(ProfileSpan::Clock::time_point until) {
  const auto later =
      std::find_if(stages_.begin(), stages_.end(), [&](const FileRecord& stage) { return stage.span.begin >= until; });
  for (auto stage = stages_.begin(); stage != later; ++stage) {
    // A file is encoded, then saved.
    const bool continues =
        stage->work == ScEng::FileWork::kSave && !record_.writes.empty() && record_.writes.back().file == stage->file;
    if (!continues) record_.writes.push_back({{}, stage->file, stage->span, {}});
    WriteStep& write = record_.writes.back();
    write.span.end = stage->span.end;
    write.stages.push_back(std::move(*stage));
  }
  stages_.erase(stages_.begin(), later);
}

void ProfileRecorder::NameWrites(const ScEng::RunReport& report) {
  std::map<std::filesystem::path, std::string> sources;
  for (const ScEng::OutputReport& output : report.outputs) {
    std::string& text = sources[output.file];
    text += (text.empty() ? "" : ", ") + output.source;
  }
  for (WriteStep& write : record_.writes) {
    const auto found = sources.find(write.file);
    if (found != sources.end()) write.sources = found->second;
  }
}
