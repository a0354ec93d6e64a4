// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/GraphDocument.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "Host/Documents/AttributeText.h"
#include "Host/Documents/DocumentReader.h"

namespace ScEng {
namespace {

std::string Quote(const std::string& text) { return "\"" + text + "\""; }

std::vector<std::string> NamesOf(const std::vector<PlugRecord>& plugs) {
  std::vector<std::string> names;
  names.reserve(plugs.size());
  for (const PlugRecord& plug : plugs) names.push_back(plug.name);
  return names;
}

/// One spelling of a path for comparing.
std::filesystem::path Normalize(const std::filesystem::path& file) {
  std::error_code error;
  const auto canonical = std::filesystem::weakly_canonical(std::filesystem::absolute(file), error);
  return error ? std::filesystem::absolute(file).lexically_normal() : canonical;
}

/// The attribute that holds the file which a node reads or writes; null where it does neither.
Attribute* FindPathAttribute(const Node& node, Attribute::StringUse use) {
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    Attribute* attribute = node.GetAttribute(i);
    if (attribute->GetKind() == Attribute::Kind::kString && attribute->GetStringUse() == use) return attribute;
  }
  return nullptr;
}

std::filesystem::path GetFile(const Attribute& attribute) {
  const std::string written = attribute.GetValue().GetText();
  return written.empty() ? std::filesystem::path() : MakePath(written, attribute.GetFolder());
}

void SetFile(Attribute& attribute, const std::filesystem::path& file) {
  attribute.SetString(std::filesystem::absolute(file).string(), false);
}

}  // namespace

GraphDocument::GraphDocument(std::shared_ptr<const NodeCatalog> catalog) : engine_(std::move(catalog)) {}

GraphDocument::~GraphDocument() = default;

bool GraphDocument::Load(const std::filesystem::path& file, Findings& findings) {
  return DocumentReader(*this, file, findings).Read();
}

Node* GraphDocument::AddNode(const std::string& id, const NodeType& type, Status& status) {
  if (id.empty() || entries_.contains(id)) {
    status =
        Status::Error(id.empty() ? "a node's id is empty" : "a node with the id " + Quote(id) + " is there already");
    return nullptr;
  }
  Node* node = engine_.CreateNode(type);
  if (node == nullptr) {
    status = Status::Error("node " + Quote(id) + ": there is no node type [" + type.ToString() + "]");
    return nullptr;
  }
  ids_.push_back(id);
  ids_by_node_[node] = id;
  node->SetLabel(id);
  entries_[id] = {node, node->GetAttributeVersion()};
  return node;
}

Node* GraphDocument::FindNode(const std::string& id) const {
  const auto found = entries_.find(id);
  return found == entries_.end() ? nullptr : found->second.node;
}

std::string GraphDocument::GetId(const Node& node) const {
  const auto found = ids_by_node_.find(&node);
  return found == ids_by_node_.end() ? std::string() : found->second;
}

GraphDocument::Entry* GraphDocument::FindPlugNode(const std::string& plug, std::string& name, Status& status) {
  const std::size_t dot = plug.rfind('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == plug.size()) {
    status = Status::Error(Quote(plug) + " is not of the form NODE.NAME");
    return nullptr;
  }
  const std::string id = plug.substr(0, dot);
  name = plug.substr(dot + 1);
  const auto found = entries_.find(id);
  if (found == entries_.end()) {
    const std::string close = FindClosest(id, ids_);
    status = Status::Error("there is no node " + Quote(id) + (close.empty() ? "" : "; the closest is " + Quote(close)));
    return nullptr;
  }
  return &found->second;
}

Status GraphDocument::Connect(const std::string& from, const std::string& to, unsigned index) {
  Status status;
  std::string from_plug;
  std::string to_plug;
  const Entry* from_entry = FindPlugNode(from, from_plug, status);
  if (from_entry == nullptr) return status;
  const Entry* to_entry = FindPlugNode(to, to_plug, status);
  if (to_entry == nullptr) return status;
  if (from_entry->node->GetOutplugIndex(from_plug) < 0) {
    const auto names = NamesOf(from_entry->node->GetOutplugs());
    return Status::Error(from_entry->node->GetName() + " has no output " + Quote(from_plug) +
                         (names.empty() ? "" : "; it has " + JoinNames(names)));
  }
  const auto inplugs = NamesOf(to_entry->node->GetInplugs());
  if (std::find(inplugs.begin(), inplugs.end(), to_plug) == inplugs.end()) {
    to_plug = to_entry->node->TranslateAttributeName(to_entry->attribute_version, to_plug);
  }
  if (std::find(inplugs.begin(), inplugs.end(), to_plug) == inplugs.end()) {
    return Status::Error(to_entry->node->GetName() + " has no input or attribute " + Quote(to_plug) +
                         (inplugs.empty() ? "" : "; it has " + JoinNames(inplugs)));
  }
  return engine_.Connect(from_entry->node, from_plug, 0, to_entry->node, to_plug, index);
}

Status GraphDocument::SetAttribute(const std::string& attribute, const std::string& text,
                                   std::vector<std::string>& notes) {
  Status status;
  std::string name;
  const Entry* entry = FindPlugNode(attribute, name, status);
  if (entry == nullptr) return status;
  Attribute* found = entry->node->GetAttribute(name);
  if (found == nullptr) {
    if (entry->node->IsObsoleteAttribute(0, name.c_str())) {
      notes.push_back(Quote(attribute) + " is obsolete and passed over");
      return {};
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < entry->node->GetNumAttributes(); ++i) {
      names.push_back(entry->node->GetAttribute(i)->GetName());
    }
    return Status::Error(Quote(attribute) + ": " + entry->node->GetName() + " has no such attribute" +
                         (names.empty() ? "" : "; it has " + JoinNames(names)));
  }
  const bool is_path = found->GetKind() == Attribute::Kind::kString &&
                       found->GetStringUse() != Attribute::StringUse::kText && !text.empty();
  if (is_path) {
    SetFile(*found, MakePath(text));
    return {};
  }
  std::vector<std::string> own_notes;
  status = SetAttributeFromText(*found, text, own_notes);
  for (const std::string& note : own_notes) notes.push_back(Quote(attribute) + ": " + note);
  return status.IsError() ? Status::Error(Quote(attribute) + ": " + status.GetMessage()) : status;
}

Status GraphDocument::SetInput(const std::string& id, const std::filesystem::path& file) {
  const Node* node = FindNode(id);
  if (node == nullptr) {
    const std::string close = FindClosest(id, ids_);
    return Status::Error("there is no node " + Quote(id) + (close.empty() ? "" : "; the closest is " + Quote(close)));
  }
  Attribute* path = FindPathAttribute(*node, Attribute::StringUse::kReadPath);
  if (path == nullptr)
    return Status::Error("node " + Quote(id) + " is no reader: " + node->GetName() + " reads no file");
  SetFile(*path, file);
  return {};
}

Status GraphDocument::AddOutput(const std::string& plug, const std::filesystem::path& file, SampleType type) {
  Status status;
  std::string name;
  const Entry* entry = FindPlugNode(plug, name, status);
  if (entry == nullptr) return status;
  const int outplug = entry->node->GetOutplugIndex(name);
  if (outplug < 0) {
    const auto names = NamesOf(entry->node->GetOutplugs());
    return Status::Error(Quote(plug) + ": " + entry->node->GetName() + " has no output " + Quote(name) +
                         (names.empty() ? "" : "; it has " + JoinNames(names)));
  }
  const auto index = static_cast<unsigned>(outplug);
  if (entry->node->GetOutplugs()[index].type != PlugType::kImage) {
    return Status::Error(Quote(plug) + ": it delivers a " + PlugType::GetName(entry->node->GetOutplugs()[index].type) +
                         ", and only images can be written");
  }
  outputs_.push_back({entry->node, index, plug, file, type});
  return {};
}

std::optional<SampleType> GraphDocument::RemoveOutputs(const std::string& plug, const std::filesystem::path& file) {
  std::optional<SampleType> type;
  std::erase_if(outputs_, [&](const Output& output) {
    const bool removed = output.source == plug;
    if (removed && output.file.extension() == file.extension()) type = output.type;
    return removed;
  });
  return type;
}

Status GraphDocument::RenameOutputs(const std::function<std::filesystem::path(const std::filesystem::path&)>& rename) {
  for (Output& output : outputs_) output.file = rename(output.file);
  for (const std::string& id : ids_) {
    const Node& node = *entries_[id].node;
    Attribute* path = FindPathAttribute(node, Attribute::StringUse::kWritePath);
    if (path == nullptr || !node.IsEnabled()) continue;
    if (engine_.IsConnected(&node, path->GetName())) {
      return Status::Error("node " + Quote(id) + ": its path is fed by a connection, so each run would write one file");
    }
    if (!GetFile(*path).empty()) SetFile(*path, rename(GetFile(*path)));
  }
  return {};
}

std::vector<std::filesystem::path> GraphDocument::GetOutputFiles() const {
  std::vector<std::filesystem::path> files;
  for (const Output& output : outputs_) files.push_back(Normalize(output.file));
  for (const std::string& id : ids_) {
    const Node& node = *FindNode(id);
    const Attribute* path = FindPathAttribute(node, Attribute::StringUse::kWritePath);
    if (path == nullptr || !node.IsEnabled() || engine_.IsConnected(&node, path->GetName())) continue;
    if (!GetFile(*path).empty()) files.push_back(Normalize(GetFile(*path)));
  }
  return files;
}

void GraphDocument::CheckComplete(Findings& findings) const {
  for (const std::string& id : ids_) {
    const Node& node = *FindNode(id);
    for (const auto use : {Attribute::StringUse::kReadPath, Attribute::StringUse::kWritePath}) {
      const Attribute* path = FindPathAttribute(node, use);
      if (path == nullptr || !node.IsEnabled() || engine_.IsConnected(&node, path->GetName())) continue;
      if (path->GetValue().GetText().empty()) {
        findings.errors.push_back("node " + Quote(id) + ": " + node.GetName() + " has no path; its attribute " +
                                  Quote(path->GetName()) + " is empty");
      }
    }
  }
  std::vector<std::filesystem::path> files = GetOutputFiles();
  std::sort(files.begin(), files.end());
  for (std::size_t i = 1; i < files.size(); ++i) {
    const bool is_second = files[i] == files[i - 1] && (i < 2 || files[i] != files[i - 2]);
    if (is_second) findings.errors.push_back("two outputs have the one path " + Quote(files[i].string()));
  }
}

void GraphDocument::WriteOutputs(const Node& node, RunReport& report) {
  for (std::size_t i = 0; i < outputs_.size(); ++i) {
    const Output& output = outputs_[i];
    if (output.node != &node || node.IsInError() || engine_.IsBlocked(&node)) continue;
    const Image* image = node.GetOutputImage(output.outplug);
    if (image == nullptr) {
      report.findings.errors.push_back("output " + Quote(output.source) + " has no image, so \"" +
                                       output.file.string() + "\" is not written");
      report.failure = std::max(report.failure, RunFailure::kNode);
      continue;
    }
    const Status status = WriteImageFile(*image, output.file, output.type, report.findings.notes);
    if (status.IsError()) {
      report.findings.errors.push_back("output " + Quote(output.source) + ": " + status.GetMessage());
      report.failure = RunFailure::kFile;
      continue;
    }
    report.outputs[i].written = true;
    report.outputs[i].header = image->GetImageHeader();
  }
}

RunReport GraphDocument::Run(const Progress& progress) {
  RunReport report;
  std::vector<Engine::Request> requests;
  for (const Output& output : outputs_) {
    requests.push_back({output.node, output.outplug});
    report.outputs.push_back({output.source, output.file, false, {}});
  }
  for (const std::string& id : ids_) {
    Node* node = entries_[id].node;
    if (node->IsSink() && node->IsEnabled()) requests.push_back({node, 0});
  }

  Engine::Options options;
  options.release_results = true;
  options.on_evaluated = [&](Node& node, std::size_t done, std::size_t total) {
    ReportState(node, report);
    WriteOutputs(node, report);
    if (progress) progress(GetId(node), done, total);
  };
  engine_.Evaluate(requests, options);
  return report;
}

RunReport GraphDocument::Evaluate(Node& node, unsigned outplug) {
  RunReport report;
  engine_.Evaluate({{&node, outplug}});
  // A node that is up to date is not evaluated again, but what it had to say still holds.
  for (const std::string& id : ids_) ReportState(*FindNode(id), report);
  return report;
}

void GraphDocument::ReportState(const Node& node, RunReport& report) const {
  const std::string name = "node " + Quote(GetId(node)) + ": ";
  const std::string& message = node.GetStateMessage();
  if (node.IsInError()) {
    const bool of_file = node.GetState() == Node::State::kFileError;
    report.findings.errors.push_back(name + message);
    report.failure = std::max(report.failure, of_file ? RunFailure::kFile : RunFailure::kNode);
    return;
  }
  for (std::size_t from = 0; from < message.size();) {
    const std::size_t end = std::min(message.find('\n', from), message.size());
    report.findings.notes.push_back(name + message.substr(from, end - from));
    from = end + 1;
  }
}

}  // namespace ScEng
