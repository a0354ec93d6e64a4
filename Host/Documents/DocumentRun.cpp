// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentRun.h"

#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "Host/Documents/MessageText.h"
#include "Host/Tools/Guard.h"

namespace ScEng {
namespace {

/// Device and number of a file; nothing where there is none.
std::optional<std::pair<dev_t, ino_t>> FindIdentity(const std::filesystem::path& file) {
  struct stat state {};
  if (stat(file.c_str(), &state) != 0) return std::nullopt;
  return std::pair(state.st_dev, state.st_ino);
}

}  // namespace

RunReport DocumentRun::WriteAll(const GraphDocument::Progress& progress, Engine::Options options) {
  for (std::size_t i = 0; i < content_.outputs.size(); ++i) {
    report_.outputs.push_back({content_.outputs[i].from, content_.GetFile(content_.outputs[i]), false, {}});
  }
  if (!HasAllTypes()) return std::move(report_);

  const auto on_evaluated = options.on_evaluated;
  FindFilesRead();
  std::vector<Engine::Request> requests;
  // Outputs whose images the caller has set.
  std::vector<std::size_t> given;
  std::unordered_map<const Node*, std::vector<std::size_t>> outputs_of;
  for (std::size_t i = 0; i < content_.outputs.size(); ++i) {
    const OutputEntry& output = content_.output_entries[i];
    const LayerFile file{NormalizePath(report_.outputs[i].file), content_.outputs[i].layer};
    if (!ClaimFile(file, "output " + Quote(content_.outputs[i].from))) continue;
    const auto source = content_.sources.find({output.entry->node, output.outplug});
    if (source != content_.sources.end()) {
      given.push_back(i);
      continue;
    }
    requests.push_back({output.entry->node, output.outplug});
    outputs_of[output.entry->node].push_back(i);
  }
  std::vector<const DocumentEntry*> writers;
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    bool is_sink = false;
    const Status told = CallGuarded("IsSink", [&] { is_sink = entry.node->IsSink(); });
    if (told.IsError()) {
      entry.node->SetState(0, Node::State::kError, told.GetMessage());
      ReportState(*entry.node);
      continue;
    }
    if (is_sink && entry.node->IsEnabled()) writers.push_back(&entry);
  }
  options.release_results = true;
  EvaluateWriterPaths(writers, options);
  if (report_.canceled) return std::move(report_);
  for (const DocumentEntry* writer : writers) {
    const std::filesystem::path file = FindWriterFile(*writer);
    const bool is_free =
        file.empty() || ClaimFile({NormalizePath(file), GetLayer(*writer->node)}, "node " + Quote(writer->id));
    if (is_free) requests.push_back({writer->node, 0});
  }
  // All claims are known now, and with them which files have several layers.
  for (const std::size_t i : given) {
    const OutputEntry& output = content_.output_entries[i];
    WriteOutput(i, content_.sources.at({output.entry->node, output.outplug}).Get());
  }

  const auto write_outputs = [&](Node& node) {
    ReportState(node);
    const auto outputs = outputs_of.extract(&node);
    if (outputs.empty() || node.IsInError() || content_.engine.IsBlocked(&node)) return;
    for (const std::size_t i : outputs.mapped()) {
      WriteOutput(i, content_.engine.GetOutputImage(&node, content_.output_entries[i].outplug));
    }
  };
  options.on_evaluated = [&](Node& node, std::size_t done, std::size_t total) {
    write_outputs(node);
    if (progress) progress(node.GetLabel(), done, total);
    if (on_evaluated) on_evaluated(node, done, total);
  };
  Evaluate(requests, options);
  if (!report_.canceled) {
    // Nodes that were up to date are not evaluated again, but what they and those before them had to say still holds.
    std::vector<const DocumentEntry*> kept;
    for (const std::string& id : content_.ids) {
      const DocumentEntry* const entry = content_.Find(id);
      if (outputs_of.contains(entry->node)) kept.push_back(entry);
    }
    for (const DocumentEntry* source : ListSources(kept)) ReportState(*source->node);
    for (const DocumentEntry* entry : kept) write_outputs(*entry->node);
  }
  if (!report_.canceled) WritePending();
  report_.written = pending_.GetWritten();
  return std::move(report_);
}

RunReport DocumentRun::Evaluate(Node& node, unsigned outplug, Engine::Options options, RefPtr<Image>* image) {
  const auto source = content_.sources.find({&node, outplug});
  if (source != content_.sources.end()) {
    if (image != nullptr) *image = source->second;
    return std::move(report_);
  }
  if (!HasAllTypes(node)) return std::move(report_);
  const auto on_evaluated = options.on_evaluated;
  options.on_evaluated = [&](Node& evaluated, std::size_t done, std::size_t total) {
    // Where results are released, this is the only moment at which the image is there.
    if (&evaluated == &node && image != nullptr) image->Reset(content_.engine.GetOutputImage(&node, outplug));
    if (on_evaluated) on_evaluated(evaluated, done, total);
  };
  Evaluate({{&node, outplug}}, options);
  if (report_.canceled) return std::move(report_);
  if (image != nullptr && !*image && !node.IsInError()) image->Reset(content_.engine.GetOutputImage(&node, outplug));
  // A node that is up to date is not evaluated again, but what it had to say still holds.
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    if (entry.node != nullptr) ReportState(*entry.node);
  }
  return std::move(report_);
}

bool DocumentRun::HasAllTypes() {
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    if (entry.node != nullptr) continue;
    report_.findings.AddError("node " + Quote(id) + ": " + content_.DescribeUnknownType(entry.placeholder->type));
    report_.failure = RunFailure::kNode;
  }
  return report_.failure == RunFailure::kNone;
}

bool DocumentRun::HasAllTypes(const Node& node) {
  const bool has_placeholder = content_.entries.size() != content_.entries_by_node.size();
  if (!has_placeholder) return true;
  for (const DocumentEntry* entry : ListSources({content_.entries_by_node.at(&node)})) {
    if (entry->node != nullptr) continue;
    report_.findings.AddError("node " + Quote(entry->id) + ": " +
                              content_.DescribeUnknownType(entry->placeholder->type));
    report_.failure = RunFailure::kNode;
  }
  return report_.failure == RunFailure::kNone;
}

std::vector<const DocumentEntry*> DocumentRun::ListSources(std::vector<const DocumentEntry*> found) const {
  std::unordered_map<const DocumentEntry*, std::vector<const DocumentEntry*>> sources;
  for (const ConnectionEntry& connection : content_.connections) {
    // What is fed by an image from outside needs nothing else.
    const int outplug =
        connection.from->node == nullptr ? -1 : connection.from->node->GetOutplugIndex(connection.outplug);
    if (outplug >= 0 && content_.sources.contains({connection.from->node, static_cast<unsigned>(outplug)})) continue;
    sources[connection.to].push_back(connection.from);
  }
  std::unordered_set<const DocumentEntry*> seen(found.begin(), found.end());
  for (std::size_t i = 0; i < found.size(); ++i) {
    for (const DocumentEntry* source : sources[found[i]]) {
      if (seen.insert(source).second) found.push_back(source);
    }
  }
  return found;
}

bool DocumentRun::ClaimFile(const LayerFile& file, const std::string& writer) {
  const auto [claim, is_new] = claims_[file.file].writers.emplace(file.layer, writer);
  if (is_new) return true;
  const std::string layer = file.layer.empty() ? "" : " with the layer " + Quote(file.layer);
  report_.findings.AddError(writer + " is not written: this run writes " + QuotePath(file.file) + layer + " for " +
                            claim->second);
  report_.failure = RunFailure::kFile;
  return false;
}

void DocumentRun::FindFilesRead() {
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    if (!entry.node->IsEnabled()) continue;
    const Attribute* path = FindPathAttribute(*entry.node, Attribute::StringUse::kReadPath);
    if (path == nullptr) continue;
    if (content_.IsFed(entry, path->GetName())) reads_any_file_ = true;
    if (GetFile(*path).empty()) continue;
    const std::filesystem::path file = NormalizePath(GetFile(*path));
    files_read_.insert(file);
    if (const auto identity = FindIdentity(file)) identities_read_.insert(*identity);
  }
}

bool DocumentRun::HasToWait(const std::filesystem::path& file, const std::string& layer) const {
  const std::filesystem::path target = NormalizePath(file);
  const auto claim = claims_.find(target);
  const bool has_layers = !layer.empty() || (claim != claims_.end() && claim->second.writers.size() > 1);
  if (has_layers || reads_any_file_ || files_read_.contains(target)) return true;
  const auto identity = FindIdentity(target);
  return identity && identities_read_.contains(*identity);
}

void DocumentRun::WritePending() {
  std::vector<std::filesystem::path> order;
  for (PendingWrites::Write& write : pending_.Release()) {
    const std::filesystem::path file = NormalizePath(write.file);
    FileClaim& claim = claims_[file];
    if (claim.images.empty()) order.push_back(file);
    claim.images.push_back(std::move(write));
  }
  for (const std::filesystem::path& file : order) {
    const FileClaim& claim = claims_[file];
    if (claim.images.size() < claim.writers.size()) {
      report_.findings.AddError(QuotePath(file) +
                                " is not written: " + std::to_string(claim.writers.size() - claim.images.size()) +
                                " of its " + std::to_string(claim.writers.size()) + " layers could not be made");
      report_.failure = std::max(report_.failure, RunFailure::kNode);
      continue;
    }
    std::vector<ImageLayer> layers;
    for (const PendingWrites::Write& write : claim.images) {
      layers.push_back({write.layer, write.image.Get(), write.options});
    }
    std::vector<std::string> notes;
    SampleType type = SampleType::kFloat;
    const Status status = WriteImageLayers(layers, claim.images.front().file, notes, &type);
    if (!status.IsError()) pending_.Tell({file, claim.images.front().image->GetImageHeader(), type});
    for (const PendingWrites::Write& write : claim.images) {
      const bool is_first = &write == &claim.images.front();
      ReportWrite(write.writer, write.image->GetImageHeader(), status, is_first ? notes : std::vector<std::string>());
    }
  }
}

void DocumentRun::EvaluateWriterPaths(const std::vector<const DocumentEntry*>& writers,
                                      const Engine::Options& options) {
  std::unordered_map<const DocumentEntry*, std::string> paths;
  for (const DocumentEntry* writer : writers) {
    const Attribute* path = FindPathAttribute(*writer->node, Attribute::StringUse::kWritePath);
    if (path != nullptr && content_.IsFed(*writer, path->GetName())) paths.emplace(writer, path->GetName());
  }
  if (paths.empty()) return;
  std::vector<Engine::Request> requests;
  for (const ConnectionEntry& connection : content_.connections) {
    const auto path = paths.find(connection.to);
    if (path == paths.end() || path->second != connection.inplug) continue;
    path_sources_.emplace(connection.to, &connection);
    Node* node = connection.from->node;
    requests.push_back({node, static_cast<unsigned>(node->GetOutplugIndex(connection.outplug))});
  }
  Engine::Options own = options;
  // What these nodes deliver is needed again in a moment.
  own.release_results = false;
  own.on_evaluated = [&](Node& node, std::size_t, std::size_t) { ReportState(node); };
  Evaluate(requests, own);
}

void DocumentRun::Evaluate(const std::vector<Engine::Request>& requests, const Engine::Options& options) {
  const PendingWrites::Scope scope(pending_);
  report_.canceled = content_.engine.Evaluate(requests, options) == Engine::Outcome::kCanceled;
}

std::filesystem::path DocumentRun::FindWriterFile(const DocumentEntry& writer) const {
  const Attribute* path = FindPathAttribute(*writer.node, Attribute::StringUse::kWritePath);
  if (path == nullptr) return {};
  const auto source = path_sources_.find(&writer);
  if (source == path_sources_.end()) return GetFile(*path);
  const Node& node = *source->second->from->node;
  const int outplug = node.GetOutplugIndex(source->second->outplug);
  std::string written;
  const Status status =
      CallGuarded("GetOutputValue", [&] { written = node.GetOutputValue(static_cast<unsigned>(outplug)).GetText(); });
  // The engine asks again, and reports it.
  if (status.IsError()) return {};
  return written.empty() ? std::filesystem::path() : MakePath(written, path->GetFolder());
}

void DocumentRun::WriteOutput(std::size_t output, const Image* image) {
  OutputReport& told = report_.outputs[output];
  const DocumentOutput& asked = content_.outputs[output];
  if (image == nullptr) {
    const OutputEntry& output_entry = content_.output_entries[output];
    report_.findings.AddError("output " + Quote(told.source) + " has no image, so " + QuotePath(told.file) +
                              " is not written" + DescribeLack(*output_entry.entry, output_entry.outplug));
    report_.failure = std::max(report_.failure, RunFailure::kNode);
    return;
  }
  WriteOptions options = MakeWriteOptions(asked.type, asked.samples, asked.opacity, asked.metadata);
  options.compression = content_.compression;
  if (pending_.Take({told.file, asked.layer, ImagePtr(const_cast<Image*>(image)), options, &told})) return;
  std::vector<std::string> notes;
  SampleType type = SampleType::kFloat;
  const Status status = WriteImageLayers({{asked.layer, image, options}}, told.file, notes, &type);
  if (!status.IsError()) pending_.Tell({told.file, image->GetImageHeader(), type});
  ReportWrite(&told, image->GetImageHeader(), status, notes);
}

std::string DocumentRun::DescribeLack(const DocumentEntry& entry, unsigned outplug) {
  // Images do not come and go during a run, and many outputs may lack theirs.
  if (!flow_) flow_ = std::make_unique<const ImageFlow>(content_);
  if (flow_->GetDelivery(entry, outplug) != ImageFlow::Delivery::kNo) return {};
  return ": " + flow_->DescribeCause(entry, outplug);
}

void DocumentRun::ReportWrite(const void* writer, const ImageHeader& header, const Status& status,
                              const std::vector<std::string>& notes) {
  const auto output = std::find_if(report_.outputs.begin(), report_.outputs.end(),
                                   [&](const OutputReport& report) { return &report == writer; });
  const bool is_output = output != report_.outputs.end();
  const std::string name =
      is_output ? "output " + Quote(output->source) : "node " + Quote(static_cast<const Node*>(writer)->GetLabel());
  for (const std::string& note : notes) report_.findings.AddNote(is_output ? note : name + ": " + note);
  if (status.IsError()) {
    report_.findings.AddError(name + ": " + status.GetMessage());
    report_.failure = RunFailure::kFile;
    return;
  }
  if (!is_output) return;
  output->written = true;
  output->header = header;
}

void DocumentRun::ReportState(const Node& node) {
  // A node that is evaluated once for a path and once for an image says the same twice.
  if (!reported_.insert(&node).second) return;
  const std::string name = "node " + Quote(node.GetLabel()) + ": ";
  const std::string& message = node.GetStateMessage();
  if (node.IsInError()) {
    const bool of_file = node.GetState() == Node::State::kFileError;
    report_.findings.AddError(name + message);
    report_.failure = std::max(report_.failure, of_file ? RunFailure::kFile : RunFailure::kNode);
    return;
  }
  for (std::size_t from = 0; from < message.size();) {
    const std::size_t end = std::min(message.find('\n', from), message.size());
    report_.findings.AddNote(name + message.substr(from, end - from));
    from = end + 1;
  }
}

// ---- GraphDocument ----

RunReport GraphDocument::Run(const Progress& progress, const Engine::Options& options) {
  return DocumentRun(*this).WriteAll(progress, options);
}

RunReport GraphDocument::Evaluate(Node& node, unsigned outplug, const Engine::Options& options) {
  return DocumentRun(*this).Evaluate(node, outplug, options, nullptr);
}

RefPtr<Image> GraphDocument::Evaluate(const std::string& plug, RunReport& report, const Engine::Options& options) {
  RefPtr<Image> image;
  OutputEntry found;
  const Status status = content_->FindImageOutput(plug, found);
  if (status.IsError() || found.entry->node == nullptr) {
    report.findings.AddError(status.IsError() ? status.GetMessage()
                                              : "node " + Quote(found.entry->id) + ": " +
                                                    content_->DescribeUnknownType(found.entry->placeholder->type));
    report.failure = RunFailure::kNode;
    return image;
  }
  DocumentRun run(*this);
  report = run.Evaluate(*found.entry->node, found.outplug, options, &image);
  if (!image && report.failure == RunFailure::kNone && !report.canceled) {
    report.findings.AddError("output " + Quote(plug) + " has no image" + run.DescribeLack(*found.entry, found.outplug));
    report.failure = RunFailure::kNode;
  }
  return image;
}

Status GraphDocument::SetSource(const std::string& plug, RefPtr<Image> image) {
  OutputEntry found;
  Status status = content_->FindImageOutput(plug, found);
  if (status.IsError()) return status;
  if (found.entry->node == nullptr) {
    return Status::Error("node " + Quote(found.entry->id) + " is of a type that is unknown here");
  }
  content_->engine.SetOutputOverride(found.entry->node, found.outplug, image);
  const std::pair<const Node*, unsigned> key(found.entry->node, found.outplug);
  if (image) {
    content_->sources[key] = std::move(image);
  } else {
    content_->sources.erase(key);
  }
  return {};
}

}  // namespace ScEng
