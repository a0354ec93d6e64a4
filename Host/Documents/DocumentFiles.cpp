// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/ImageFlow.h"
#include "Host/Documents/MessageText.h"

namespace ScEng {
std::filesystem::path NormalizePath(const std::filesystem::path& file) {
  if (file.empty()) return {};
  std::error_code error;
  std::filesystem::path canonical = std::filesystem::weakly_canonical(std::filesystem::absolute(file), error);
  // A link to a file that is not there yet is followed by whoever writes it.
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks && !error; ++i) {
    // What is not there is an error for this function, and no link.
    std::error_code status_error;
    if (!std::filesystem::is_symlink(std::filesystem::symlink_status(canonical, status_error))) break;
    const auto target = canonical.parent_path() / std::filesystem::read_symlink(canonical, error);
    if (!error) canonical = std::filesystem::weakly_canonical(target, error);
  }
  return error ? std::filesystem::absolute(file).lexically_normal() : canonical;
}

Attribute* FindPathAttribute(const Node& node, Attribute::StringUse use) {
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    Attribute* attribute = node.GetAttribute(i);
    if (attribute->GetKind() == Attribute::Kind::kString && attribute->GetStringUse() == use) return attribute;
  }
  return nullptr;
}

std::filesystem::path GetFile(const Attribute& attribute) {
  const std::string written = attribute.GetValue().GetText();
  if (written.empty()) return {};
  const bool is_read = attribute.GetStringUse() == Attribute::StringUse::kReadPath;
  return is_read ? MakeReadPath(written, attribute.GetFolder()) : MakePath(written, attribute.GetFolder());
}

void SetFile(Attribute& attribute, const std::filesystem::path& file) {
  attribute.SetString(std::filesystem::absolute(file).string(), false);
}

Status GraphDocument::SetInput(const std::string& id, const std::filesystem::path& file) {
  Status status;
  const DocumentEntry* entry = content_->Find(id, status);
  if (entry == nullptr && content_->Find(id.substr(0, id.rfind('.'))) != nullptr) {
    return Status::Error("there is no node " + Quote(id) +
                         "; a reader is named without its plug: " + Quote(id.substr(0, id.rfind('.'))));
  }
  if (entry == nullptr) return status;
  if (entry->node == nullptr) return Status::Error("node " + Quote(id) + " is of a type that is unknown here");
  Attribute* path = FindPathAttribute(*entry->node, Attribute::StringUse::kReadPath);
  if (path == nullptr) {
    return Status::Error("node " + Quote(id) + " is not a reader: " + entry->node->GetName() + " reads no file" +
                         content_->SuggestReader());
  }
  if (content_->IsFed(*entry, path->GetName())) {
    return Status::Error("node " + Quote(id) + ": its " + Quote(path->GetName()) +
                         " is fed by a connection, so a file that is given here has no effect");
  }
  SetFile(*path, file);
  return {};
}

Status GraphDocument::RenameOutputs(const std::function<std::filesystem::path(const std::filesystem::path&)>& rename) {
  for (DocumentOutput& output : content_->outputs) {
    output.path = std::filesystem::absolute(rename(content_->GetFile(output))).string();
  }
  for (const std::string& id : content_->ids) {
    const DocumentEntry& entry = *content_->Find(id);
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    Attribute* path = FindPathAttribute(*entry.node, Attribute::StringUse::kWritePath);
    if (path == nullptr) continue;
    if (content_->IsFed(entry, path->GetName())) {
      return Status::Error("node " + Quote(id) + ": its path is fed by a connection, so each run would write one file");
    }
    if (!GetFile(*path).empty()) SetFile(*path, rename(GetFile(*path)));
  }
  return {};
}

std::string GetLayer(const Node& node) {
  const Attribute* layer = node.GetAttribute("layer");
  return layer != nullptr && layer->GetKind() == Attribute::Kind::kString ? layer->GetValue().GetText() : "";
}

std::vector<LayerFile> GraphDocument::Content::ListLayerFiles() {
  std::vector<LayerFile> files;
  for (const DocumentOutput& output : outputs) files.push_back({NormalizePath(GetFile(output)), output.layer});
  for (const std::string& id : ids) {
    const DocumentEntry& entry = *Find(id);
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    const Attribute* path = FindPathAttribute(*entry.node, Attribute::StringUse::kWritePath);
    if (path == nullptr || IsFed(entry, path->GetName())) continue;
    const std::filesystem::path file = ScEng::GetFile(*path);
    if (!file.empty()) files.push_back({NormalizePath(file), GetLayer(*entry.node)});
  }
  return files;
}

std::vector<std::filesystem::path> GraphDocument::GetOutputFiles() const {
  std::vector<std::filesystem::path> files;
  std::set<LayerFile> layers;
  std::set<std::filesystem::path> seen;
  for (const LayerFile& file : content_->ListLayerFiles()) {
    // The layers of a file are written together; one layer twice is two files of one name.
    const bool is_new_layer = layers.insert(file).second;
    const bool is_new_file = seen.insert(file.file).second;
    if (is_new_file || !is_new_layer) files.push_back(file.file);
  }
  return files;
}

std::vector<std::filesystem::path> GraphDocument::GetOutputNames() const {
  std::vector<std::filesystem::path> names;
  for (const DocumentOutput& output : content_->outputs) names.push_back(content_->GetFile(output));
  for (const std::string& id : content_->ids) {
    const DocumentEntry& entry = *content_->Find(id);
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    const Attribute* path = FindPathAttribute(*entry.node, Attribute::StringUse::kWritePath);
    if (path == nullptr || content_->IsFed(entry, path->GetName()) || ScEng::GetFile(*path).empty()) continue;
    names.push_back(ScEng::GetFile(*path));
  }
  return names;
}

std::map<std::string, std::filesystem::path> GraphDocument::GetInputFiles() const {
  std::map<std::string, std::filesystem::path> files;
  for (const std::string& id : content_->ids) {
    const DocumentEntry& entry = *content_->Find(id);
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    const Attribute* path = FindPathAttribute(*entry.node, Attribute::StringUse::kReadPath);
    if (path == nullptr || content_->IsFed(entry, path->GetName())) continue;
    const std::filesystem::path file = ScEng::GetFile(*path);
    if (!file.empty()) files.emplace(id, file);
  }
  return files;
}

namespace {

/// Two names of one file, each with its own result, would leave only the last one.
void CheckHardLinks(const std::vector<LayerFile>& files, Findings& findings) {
  std::map<std::pair<dev_t, ino_t>, std::filesystem::path> seen;
  for (const LayerFile& file : files) {
    struct stat status {};
    if (stat(file.file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink < 2) continue;
    const auto [first, is_new] = seen.try_emplace({status.st_dev, status.st_ino}, file.file);
    if (is_new || first->second == file.file) continue;
    findings.AddError("two outputs are one file: " + QuotePath(first->second) + " and " + QuotePath(file.file) +
                      " are hard links");
  }
}

bool HasControlCharacter(const std::string& text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char letter) { return letter < ' ' || letter == 127; });
}

}  // namespace

void GraphDocument::CheckComplete(Findings& findings) const {
  // Most documents have no reader without a path, and then it does not matter who needs what.
  std::optional<ImageFlow> flow;
  const auto is_needed = [&](const DocumentEntry& entry) {
    if (!flow) flow.emplace(*content_);
    // Of a document that writes nothing yet, any node may be what is asked for next.
    return flow->IsNeeded(entry) || flow->WritesNothing();
  };
  for (const std::string& id : content_->ids) {
    const DocumentEntry& entry = *content_->Find(id);
    if (entry.node == nullptr) {
      if (entry.placeholder->is_reported) continue;
      findings.AddError("node " + Quote(id) + ": " + content_->DescribeUnknownType(entry.placeholder->type));
      continue;
    }
    for (const KeptAttribute& kept : entry.kept_attributes) {
      if (entry.IsInForce(kept)) findings.AddError(Quote(id + "." + kept.name) + ": " + kept.problem);
    }
    const Node& node = *entry.node;
    for (const auto use : {Attribute::StringUse::kReadPath, Attribute::StringUse::kWritePath}) {
      const Attribute* path = FindPathAttribute(node, use);
      if (path == nullptr || !node.IsEnabled() || content_->IsFed(entry, path->GetName())) continue;
      const bool is_replaced = use == Attribute::StringUse::kReadPath && content_->sources.contains({&node, 0});
      if (!is_replaced && path->GetValue().GetText().empty() && is_needed(entry)) {
        findings.AddError("node " + Quote(id) + ": " + node.GetName() + " has no path; its attribute " +
                          Quote(path->GetName()) + " is empty");
      }
    }
  }
  std::vector<LayerFile> files = content_->ListLayerFiles();
  std::sort(files.begin(), files.end());
  CheckHardLinks(files, findings);
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto& [file, layer] = files[i];
    const bool is_second = i > 0 && files[i] == files[i - 1] && (i < 2 || files[i] != files[i - 2]);
    const std::string of_layer = layer.empty() ? "" : " and the one layer " + Quote(layer);
    if (is_second) findings.AddError("two outputs have the one path " + QuotePath(file) + of_layer);
    if (HasControlCharacter(layer)) findings.AddError("the layer " + Quote(layer) + " holds a control character");
    const bool has_name = !layer.empty() && (i == 0 || files[i].file != files[i - 1].file);
    if (has_name && !HasLayers(file)) {
      findings.AddError("an output has the layer " + Quote(layer) + ", and " + QuotePath(file) +
                        " is in a format without layers; .exr has them");
    }
  }
}

}  // namespace ScEng
