// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/OneNodeGraph.h"

#include <algorithm>
#include <set>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Apps/Value/StandardInput.h"
#include "Apps/Value/UsageText.h"
#include "Host/Files/ImageFile.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/ClosestName.h"
#include "Host/Util/RefCounter.h"

namespace {

using ScEng::Status;

std::vector<std::string> ListNames(const std::vector<PlugRecord>& plugs) {
  std::vector<std::string> names;
  for (const PlugRecord& plug : plugs) names.push_back(plug.name);
  return names;
}

std::string NamesOf(const std::vector<PlugRecord>& plugs) {
  std::string names;
  for (const PlugRecord& plug : plugs) names += (names.empty() ? "" : ", ") + plug.name;
  return names.empty() ? "none" : names;
}

const PlugRecord* FindPlug(const std::vector<PlugRecord>& plugs, const std::string& name) {
  const auto found =
      std::find_if(plugs.begin(), plugs.end(), [&](const PlugRecord& plug) { return plug.name == name; });
  return found == plugs.end() ? nullptr : &*found;
}

std::string ReaderId(unsigned index) { return "input " + std::to_string(index + 1); }

}  // namespace

void OneNodeGraph::DeclareNode(CLI::App& sub) {
  sub.add_option("NODE", words_, kNodeWords)->expected(0, 3);
  sub.add_option("-i,--input", inputs_,
                 "Image files, in the order of the node's inputs, or PLUG=FILE; - is standard input")
      ->type_name("FILE")
      ->expected(1, -1);
  AddRepeatable(sub, "--set", settings_, "NAME=VALUE", "Sets an attribute; of two settings of one the last wins");
}

void OneNodeGraph::DeclareRange(CLI::App& sub) {
  sub.add_option("--range", range_, "Declares the value range of the inputs")->type_name("LOW,HIGH");
}

std::vector<PlugRecord> OneNodeGraph::GetImagePlugs(const std::vector<PlugRecord>& plugs, std::size_t count) {
  std::vector<PlugRecord> images;
  for (std::size_t i = 0; i < count; ++i) {
    if (plugs[i].type == PlugType::kImage) images.push_back(plugs[i]);
  }
  return images;
}

std::vector<std::string> OneNodeGraph::NameInputs() const {
  if (!inputs_.empty()) return inputs_;
  std::vector<std::string> names;
  for (const PlugRecord& plug : GetImagePlugs(node_->GetInplugs(), node_->GetNumRegularInputs())) {
    names.push_back(plug.name + ".exr");
  }
  return names;
}

std::string OneNodeGraph::FindNodeName(const ScEng::NodeCatalog& catalog) {
  std::string name = JoinWords(words_);
  for (auto it = inputs_.begin(); name.empty() && it != inputs_.end(); ++it) {
    std::error_code error;
    if (catalog.FindWritten(*it) == nullptr || std::filesystem::exists(*it, error)) continue;
    name = *it;
    inputs_.erase(it);
    break;
  }
  return name;
}

Status OneNodeGraph::AddNode(ScEng::GraphDocument& document, const NodeInterface& descriptor,
                             std::vector<std::string>& notes) {
  Status status;
  id_ = descriptor.GetName();
  node_ = document.AddNode(id_, descriptor.GetNodeType(), status);
  return status.IsError() ? status : SetAttributes(document, notes);
}

Status OneNodeGraph::SetAttributes(ScEng::GraphDocument& document, std::vector<std::string>& notes) const {
  for (const std::string& setting : defaults_) {
    const auto assignment = SplitAssignment(setting);
    // A type of the same name may be another library's.
    if (!assignment || node_->GetAttribute(assignment->first) == nullptr) continue;
    const Status status = document.SetAttribute(id_ + "." + assignment->first, assignment->second, notes);
    if (status.IsError()) return status;
  }
  for (const std::string& setting : settings_) {
    const auto assignment = SplitAssignment(setting);
    if (!assignment) return Status::Error("--set " + setting + " is not of the form NAME=VALUE");
    const std::string name = assignment->first.substr(assignment->first.rfind('.') + 1);
    if (name != assignment->first && node_->GetAttribute(name) != nullptr) {
      return Status::Error("--set " + setting + " names a node as in a document; write --set " + name + "=" +
                           assignment->second);
    }
    const Status status = document.SetAttribute(id_ + "." + name, assignment->second, notes);
    if (status.IsError()) {
      return Status::Error("--set " + setting + ": " + RemoveName(status.GetMessage(), id_ + "." + name));
    }
  }
  return {};
}

Status OneNodeGraph::SplitPlug(const std::string& text, const std::vector<PlugRecord>& plugs, bool is_input,
                               PlugFile& result) {
  result = {"", text};
  const auto assignment = SplitAssignment(text);
  if (!assignment) return {};
  if (FindPlug(plugs, assignment->first) != nullptr) {
    result = {assignment->first, assignment->second};
    return {};
  }
  std::error_code error;
  const bool in_name = assignment->first.find_first_of("/\\.") != std::string::npos;
  if (in_name || (is_input && std::filesystem::exists(ScEng::MakeReadPath(text), error))) return {};
  return Status::Error("the node has no " + std::string(is_input ? "input" : "output") + " \"" + assignment->first +
                       "\"; it has " + NamesOf(plugs) +
                       ScEng::SuggestClosestNames(assignment->first, ListNames(plugs)));
}

std::string OneNodeGraph::AddEach(const std::string& each) {
  each_.push_back(each);
  return ReaderId(static_cast<unsigned>(each_.size() - 1));
}

Status OneNodeGraph::FindPattern(const NodeInterface& descriptor, const std::string& each, std::string& pattern) {
  PlugFile split;
  Status status;
  const ScEng::RefPtr<Node> node = ScEng::CreateNode(descriptor, status);
  if (!node) return status;
  const std::vector<PlugRecord> plugs = GetImagePlugs(node->GetInplugs(), node->GetNumRegularInputs());
  status = SplitPlug(each, plugs, true, split);
  pattern = split.file;
  return pattern.empty() && !status.IsError() ? Status::Error("it names no files") : status;
}

Status OneNodeGraph::TakeStandardInput() {
  for (std::string& input : inputs_) {
    const auto assignment = SplitAssignment(input);
    if ((assignment ? assignment->second : input) != kStandardStream) continue;
    std::filesystem::path path;
    const Status status = StandardInput::FindImage(kStandardStream, path);
    if (status.IsError()) return status;
    input = assignment ? assignment->first + "=" + path.string() : path.string();
  }
  return {};
}

Status OneNodeGraph::ConnectInputs(ScEng::GraphDocument& document, std::vector<std::string>& notes) const {
  const std::vector<PlugRecord> plugs = GetImagePlugs(node_->GetInplugs(), node_->GetNumRegularInputs());
  std::vector<std::string> inputs = each_;
  inputs.insert(inputs.end(), inputs_.begin(), inputs_.end());
  if (inputs.empty() && !plugs.empty()) {
    return Status::Error("no input file; give -i FILE for " + NamesOf(plugs));
  }
  Range range;
  Status status = ReadRange(range);
  if (status.IsError()) return status;

  std::set<std::string> taken;
  unsigned index = 0;
  for (const std::string& text : inputs) {
    PlugFile input;
    status = SplitPlug(text, plugs, true, input);
    if (status.IsError()) return status;
    const PlugRecord* plug = nullptr;
    if (!input.plug.empty()) plug = FindPlug(plugs, input.plug);
    for (const PlugRecord& candidate : plugs) {
      if (plug != nullptr) break;
      if (candidate.connections == PlugRecord::kAnyNumber || !taken.contains(candidate.name)) plug = &candidate;
    }
    if (plug == nullptr) {
      return Status::Error("input " + text + " is one too many; the node takes " + NamesOf(plugs));
    }
    const bool many = plug->connections == PlugRecord::kAnyNumber;
    if (!taken.insert(plug->name).second && !many) {
      return Status::Error("input \"" + plug->name + "\" is given twice");
    }
    status = AddReader(document, input.file, index, range, notes);
    if (!status.IsError()) {
      status = document.Connect(ReaderId(index) + ".image", id_ + "." + plug->name, many ? index : 0);
    }
    if (status.IsError()) return status;
    ++index;
  }
  return {};
}

Status OneNodeGraph::AddReader(ScEng::GraphDocument& document, const std::string& file, unsigned index,
                               const Range& range, std::vector<std::string>& notes) const {
  Status status;
  const std::string id = ReaderId(index);
  if (file.empty()) return Status::Error("an input file has no name");
  document.AddNode(id, ScEng::kImageReaderType, status);
  if (status.IsError()) return status;
  status = document.SetInput(id, ScEng::MakeReadPath(file));
  if (!range || status.IsError()) return status;
  std::vector<std::string> own_notes;
  for (const auto& [name, value] :
       {std::pair<std::string, std::string>{"range", "custom"}, {"low", range->first}, {"high", range->second}}) {
    status = document.SetAttribute(id + "." + name, value, own_notes);
    if (status.IsError()) return Status::Error("--range " + *range_ + " is not of the form LOW,HIGH");
  }
  // The range is the same for every input, so what is to be said of it is said once.
  if (index > 0) return {};
  status = CheckRange(*document.FindNode(id), *range, own_notes);
  if (status.IsError()) return Status::Error("--range " + *range_ + status.GetMessage());
  for (const std::string& note : own_notes) notes.push_back("--range " + *range_ + ": " + note);
  return {};
}

Status OneNodeGraph::CheckRange(const Node& reader, const std::pair<std::string, std::string>& range,
                                std::vector<std::string>& notes) {
  const double low = reader.GetAttribute("low")->GetValue().GetNumber();
  const double high = reader.GetAttribute("high")->GetValue().GetNumber();
  if (low > high) {
    return Status::Error(" has its low end above its high end; write --range " + range.second + "," + range.first);
  }
  if (low == high) notes.emplace_back("its ends are equal, so nodes that go by the range see no differences");
  return {};
}

Status OneNodeGraph::ReadRange(Range& range) const {
  if (!range_) return {};
  const std::size_t comma = range_->find(',');
  if (comma == std::string::npos || range_->find(',', comma + 1) != std::string::npos) {
    return Status::Error("--range " + *range_ + " is not of the form LOW,HIGH");
  }
  range = {range_->substr(0, comma), range_->substr(comma + 1)};
  return {};
}
