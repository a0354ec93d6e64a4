// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <system_error>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/MessageText.h"

namespace ScEng {
namespace {

/// What of an output this build cannot write; empty where it can write all.
std::string FindUnwritable(const DocumentOutput& output) {
  if (!output.layer.empty())
    return "\"layer\" " + Quote(output.layer) + ": files with layers cannot be written; leave it empty";
  if (output.type == "int16") return "\"type\" int16 cannot be written; float, half, uint16 and uint8 can";
  if (output.samples == "stored") return "\"samples\" stored cannot be written; unit can";
  if (output.opacity == "drop") return "\"opacity\" drop cannot be written; auto and keep can";
  return {};
}

}  // namespace

std::filesystem::path NormalizePath(const std::filesystem::path& file) {
  std::error_code error;
  const auto canonical = std::filesystem::weakly_canonical(std::filesystem::absolute(file), error);
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
  return written.empty() ? std::filesystem::path() : MakePath(written, attribute.GetFolder());
}

void SetFile(Attribute& attribute, const std::filesystem::path& file) {
  attribute.SetString(std::filesystem::absolute(file).string(), false);
}

Status GraphDocument::SetInput(const std::string& id, const std::filesystem::path& file) {
  Status status;
  const DocumentEntry* entry = content_->Find(id, status);
  if (entry == nullptr) return status;
  if (entry->node == nullptr) return Status::Error("node " + Quote(id) + " is of a type that is unknown here");
  Attribute* path = FindPathAttribute(*entry->node, Attribute::StringUse::kReadPath);
  if (path == nullptr) {
    return Status::Error("node " + Quote(id) + " is not a reader: " + entry->node->GetName() + " reads no file");
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

std::vector<std::filesystem::path> GraphDocument::GetOutputFiles() const {
  std::vector<std::filesystem::path> files;
  for (const DocumentOutput& output : content_->outputs) files.push_back(NormalizePath(content_->GetFile(output)));
  for (const std::string& id : content_->ids) {
    const DocumentEntry& entry = *content_->Find(id);
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    const Attribute* path = FindPathAttribute(*entry.node, Attribute::StringUse::kWritePath);
    if (path == nullptr || content_->IsFed(entry, path->GetName())) continue;
    if (!GetFile(*path).empty()) files.push_back(NormalizePath(GetFile(*path)));
  }
  return files;
}

void GraphDocument::CheckComplete(Findings& findings) const {
  for (const std::string& id : content_->ids) {
    const DocumentEntry& entry = *content_->Find(id);
    if (entry.node == nullptr) {
      findings.AddError("node " + Quote(id) + ": " + content_->DescribeUnknownType(entry.placeholder->type));
      continue;
    }
    const Node& node = *entry.node;
    for (const auto use : {Attribute::StringUse::kReadPath, Attribute::StringUse::kWritePath}) {
      const Attribute* path = FindPathAttribute(node, use);
      if (path == nullptr || !node.IsEnabled() || content_->IsFed(entry, path->GetName())) continue;
      const bool is_replaced = use == Attribute::StringUse::kReadPath && content_->sources.contains({&node, 0});
      if (!is_replaced && path->GetValue().GetText().empty()) {
        findings.AddError("node " + Quote(id) + ": " + node.GetName() + " has no path; its attribute " +
                          Quote(path->GetName()) + " is empty");
      }
    }
  }
  for (const DocumentOutput& output : content_->outputs) {
    const std::string problem = FindUnwritable(output);
    if (!problem.empty()) findings.AddError("output " + Quote(output.from) + ": " + problem);
  }
  std::vector<std::filesystem::path> files = GetOutputFiles();
  std::sort(files.begin(), files.end());
  for (std::size_t i = 1; i < files.size(); ++i) {
    const bool is_second = files[i] == files[i - 1] && (i < 2 || files[i] != files[i - 2]);
    if (is_second) findings.AddError("two outputs have the one path " + QuotePath(files[i]));
  }
}

}  // namespace ScEng
