// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <set>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Node.h"

namespace {

using ScEng::Status;

/// An input file and the plug that it goes to.
struct Input {
  std::string plug;
  std::string file;
};

/// The names of the image plugs among a node's regular inputs, or its outputs.
std::vector<PlugRecord> ImagePlugs(const std::vector<PlugRecord>& plugs, std::size_t count) {
  std::vector<PlugRecord> images;
  for (std::size_t i = 0; i < count; ++i) {
    if (plugs[i].type == PlugType::kImage) images.push_back(plugs[i]);
  }
  return images;
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

class ApplyCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("apply", "Applies one node to files");
    sub->add_option("NODE", words_, "Class name, display name or the three numbers of a node")->expected(0, 3);
    sub->add_option("-i,--input", inputs_, "Image files, in the order of the node's inputs, or PLUG=FILE")
        ->type_name("FILE")
        ->expected(1, -1);
    sub->add_option("--set", settings_, "Sets an attribute; of two settings of one the last wins")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    sub->add_option("-o,--output", outputs_, "The file for the node's (first) output, or PLUG=FILE")
        ->type_name("FILE")
        ->required()
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    sub->add_option("--range", range_, "Declares the value range of the inputs")->type_name("LOW,HIGH");
    sub->add_option("--type", type_, "Samples of the output: float, half, uint16 or uint8")
        ->type_name("TYPE")
        ->check(CLI::IsMember({"float", "half", "uint16", "uint8"}));
    sub->footer(
        "Examples:\n"
        "  value apply \"Value Add\" -i terrain.exr --set constant=0.25 -o raised.exr\n"
        "  value apply ImageValueMultiplyNode -i terrain.exr -i mask.png -o masked.exr\n"
        "  value apply 10,320,37 -i image_a=old.exr -i image_b=new.exr -o image_a_df_b=changed.png");
    return sub;
  }

  ExitCode Run() override {
    const auto catalogue = LoadCatalogue();
    if (!catalogue) return ExitCode::kPlugin;
    const std::string name = FindNodeName(*catalogue);
    if (name.empty()) return Fail(ExitCode::kUsage, "NODE is missing; \"value nodes\" lists them");
    const NodeInterface* descriptor = FindNode(*catalogue, name);
    if (descriptor == nullptr) return ExitCode::kUsage;
    ScEng::GraphDocument document(catalogue);
    Status status;
    id_ = descriptor->GetName();
    const Node* node = document.AddNode(id_, descriptor->GetNodeType(), status);
    std::vector<std::string> notes;
    if (!status.IsError()) status = SetAttributes(document, notes);
    if (!status.IsError()) status = ConnectInputs(document, *node);
    if (!status.IsError()) status = AddOutputs(document, *node);
    if (status.IsError()) return Fail(ExitCode::kUsage, status.GetMessage());
    reporter_.Notes(notes);

    const ScEng::RunReport report = document.Run(
        [&](const std::string& id, std::size_t done, std::size_t total) { reporter_.Progress(id, done, total); });
    const ExitCode code = ReportRun(report, "");
    nlohmann::ordered_json answer;
    answer["node"] = descriptor->GetNodeFactory()->GetTypeName();
    answer["outputs"] = nlohmann::ordered_json::array();
    for (const auto& output : report.outputs) answer["outputs"].push_back(ToJson(output));
    reporter_.Finish(answer);
    return code;
  }

 private:
  /// The node as it was written. Where it stands behind "-i FILE...", it was taken for one more file.
  std::string FindNodeName(const ScEng::NodeCatalogue& catalogue) {
    std::string name;
    for (const std::string& word : words_) name += (name.empty() ? "" : " ") + word;
    for (auto it = inputs_.begin(); name.empty() && it != inputs_.end(); ++it) {
      std::error_code error;
      if (catalogue.FindWritten(*it) == nullptr || std::filesystem::exists(*it, error)) continue;
      name = *it;
      inputs_.erase(it);
      break;
    }
    return name;
  }

  Status SetAttributes(ScEng::GraphDocument& document, std::vector<std::string>& notes) {
    for (const std::string& setting : settings_) {
      const auto assignment = SplitAssignment(setting);
      if (!assignment) return Status::Error("--set " + setting + " is not of the form NAME=VALUE");
      const Status status = document.SetAttribute(id_ + "." + assignment->first, assignment->second, notes);
      if (status.IsError()) return Status::Error("--set " + setting + ": " + status.GetMessage());
    }
    return {};
  }

  /// Splits PLUG=FILE; a text that is no plug but an existing file is a file with "=" in its name.
  Status SplitPlug(const std::string& text, const std::vector<PlugRecord>& plugs, bool may_exist, Input& input) const {
    input = {"", text};
    const auto assignment = SplitAssignment(text);
    if (!assignment) return {};
    if (FindPlug(plugs, assignment->first) != nullptr) {
      input = {assignment->first, assignment->second};
      return {};
    }
    std::error_code error;
    const bool in_name = assignment->first.find_first_of("/\\.") != std::string::npos;
    if (in_name || (may_exist && std::filesystem::exists(ScEng::MakePath(text), error))) return {};
    return Status::Error("the node has no " + std::string(may_exist ? "input" : "output") + " \"" + assignment->first +
                         "\"; it has " + NamesOf(plugs));
  }

  Status ConnectInputs(ScEng::GraphDocument& document, const Node& node) {
    const std::vector<PlugRecord> plugs = ImagePlugs(node.GetInplugs(), node.GetNumRegularInputs());
    if (inputs_.empty() && !plugs.empty()) {
      return Status::Error("no input file; give -i FILE for " + NamesOf(plugs));
    }
    std::optional<std::pair<std::string, std::string>> range;
    Status status = ReadRange(range);
    if (status.IsError()) return status;

    std::set<std::string> taken;
    unsigned index = 0;
    for (const std::string& text : inputs_) {
      Input input;
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
      status = AddReader(document, input.file, index, range);
      if (!status.IsError()) {
        status = document.Connect(ReaderId(index) + ".image", id_ + "." + plug->name, many ? index : 0);
      }
      if (status.IsError()) return status;
      ++index;
    }
    return {};
  }

  static std::string ReaderId(unsigned index) { return "input " + std::to_string(index + 1); }

  Status AddReader(ScEng::GraphDocument& document, const std::string& file, unsigned index,
                   const std::optional<std::pair<std::string, std::string>>& range) const {
    Status status;
    const std::string id = ReaderId(index);
    if (file.empty()) return Status::Error("an input file has no name");
    document.AddNode(id, ScEng::kImageReaderType, status);
    if (status.IsError()) return status;
    status = document.SetInput(id, ScEng::MakePath(file));
    if (!range || status.IsError()) return status;
    std::vector<std::string> notes;
    for (const auto& [name, value] :
         {std::pair<std::string, std::string>{"range", "custom"}, {"low", range->first}, {"high", range->second}}) {
      status = document.SetAttribute(id + "." + name, value, notes);
      if (status.IsError()) return Status::Error("--range " + *range_ + " is not of the form LOW,HIGH");
    }
    return {};
  }

  Status ReadRange(std::optional<std::pair<std::string, std::string>>& range) const {
    if (!range_) return {};
    const std::size_t comma = range_->find(',');
    if (comma == std::string::npos || range_->find(',', comma + 1) != std::string::npos) {
      return Status::Error("--range " + *range_ + " is not of the form LOW,HIGH");
    }
    range = {range_->substr(0, comma), range_->substr(comma + 1)};
    return {};
  }

  Status AddOutputs(ScEng::GraphDocument& document, const Node& node) {
    const std::vector<PlugRecord> plugs = ImagePlugs(node.GetOutplugs(), node.GetOutplugs().size());
    if (plugs.empty()) return Status::Error("the node has no image output to write");
    const auto type = ScEng::FindSampleType(type_).value_or(ScEng::SampleType::kFloat);
    for (const std::string& text : outputs_) {
      Input output;
      Status status = SplitPlug(text, plugs, false, output);
      if (!status.IsError() && output.file.empty()) status = Status::Error("output " + text + " names no file");
      if (!status.IsError()) {
        const std::string plug = output.plug.empty() ? plugs.front().name : output.plug;
        status = document.AddOutput(id_ + "." + plug, ScEng::MakePath(output.file), type);
      }
      if (status.IsError()) return status;
    }
    ScEng::Findings findings;
    document.CheckComplete(findings);
    return findings.errors.empty() ? Status() : Status::Error(findings.errors.front());
  }

  // The node's id in the graph, which messages name.
  std::string id_;
  std::vector<std::string> words_;
  std::vector<std::string> inputs_;
  std::vector<std::string> settings_;
  std::vector<std::string> outputs_;
  std::optional<std::string> range_;
  std::string type_ = "float";
};

}  // namespace

std::unique_ptr<Command> MakeApplyCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<ApplyCommand>(common, reporter);
}
