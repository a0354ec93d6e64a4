// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentAdvice.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

#include "Host/Documents/MessageText.h"
#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Effect.h"

namespace ScEng {
namespace {

/// Whether a list of flags, which may be shorter than its ids, holds this one.
bool Has(const std::vector<bool>& flags, std::size_t id) { return id < flags.size() && flags[id]; }

/// A few names, and how many more there are.
std::string JoinFew(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 3;
  const auto shown = static_cast<std::ptrdiff_t>(std::min(names.size(), kMost));
  const std::string few = JoinNames({names.begin(), names.begin() + shown});
  return names.size() > kMost ? few + " and " + std::to_string(names.size() - kMost) + " more" : few;
}

}  // namespace

void DocumentAdvice::CheckOutputs(Findings& findings) const {
  MissingFolders folders;
  std::set<std::pair<const DocumentEntry*, unsigned>> checked;
  for (std::size_t i = 0; i < content_.outputs.size(); ++i) {
    const OutputEntry& output = content_.output_entries[i];
    const std::string who = "output " + Quote(content_.outputs[i].from);
    const bool is_new = checked.emplace(output.entry, output.outplug).second;
    if (is_new) CheckImage(who, *output.entry, output.outplug, findings);
    CheckFile(who, content_.GetFile(content_.outputs[i]), folders, findings);
  }
  for (const DocumentEntry* sink : flow_.GetSinks()) CheckSink(*sink, folders, findings);
  for (const auto& [folder, writers] : folders) {
    findings.AddError(JoinFew(writers) + ": the folder " + QuotePath(folder) + " does not exist");
  }
}

void DocumentAdvice::CheckSink(const DocumentEntry& sink, MissingFolders& folders, Findings& findings) const {
  const std::string who = "node " + Quote(sink.id);
  CheckImage(who, sink, 0, findings);
  const Attribute* path = FindPathAttribute(*sink.node, Attribute::StringUse::kWritePath);
  if (path == nullptr || content_.IsFed(sink, path->GetName())) return;
  const std::filesystem::path file = GetFile(*path);
  if (!file.empty()) CheckFile(who, file, folders, findings);
}

void DocumentAdvice::CheckImage(const std::string& who, const DocumentEntry& entry, unsigned outplug,
                                Findings& findings) const {
  if (flow_.GetDelivery(entry, outplug) != ImageFlow::Delivery::kNo) return;
  findings.AddError(who + " cannot get an image: " + flow_.DescribeCause(entry, outplug));
}

void DocumentAdvice::CheckFile(const std::string& who, const std::filesystem::path& file, MissingFolders& folders,
                               Findings& findings) {
  std::vector<std::string> problems = FindSaveProblems(file);
  std::error_code error;
  const std::filesystem::path folder = file.parent_path();
  const bool is_missing =
      !folder.empty() && std::filesystem::status(folder, error).type() == std::filesystem::file_type::not_found;
  if (is_missing) {
    // Without "sub/..", a folder may well be there.
    const std::filesystem::path plain = folder.lexically_normal();
    folders[std::filesystem::exists(plain, error) ? folder : plain].push_back(who);
    // The place comes after the ending, and all that is wrong with it is the folder.
    if (!problems.empty()) problems.pop_back();
  }
  for (const std::string& problem : problems) findings.AddError(who + ": " + problem);
}

void DocumentAdvice::NoteSettings(std::string (DocumentAdvice::*describe)(const DocumentEntry&, const Attribute&) const,
                                  Findings& findings) const {
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    // What a disabled node is set to waits for the day on which it is enabled.
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    for (std::size_t i = 0; i < entry.node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *entry.node->GetAttribute(i);
      const std::string idle = (this->*describe)(entry, attribute);
      if (!idle.empty()) findings.AddNote(Quote(id + "." + attribute.GetName()) + " " + idle);
    }
  }
}

void DocumentAdvice::NoteFedSettings(Findings& findings) const { NoteSettings(&DocumentAdvice::DescribeFed, findings); }

void DocumentAdvice::NoteForeignWords(Findings& findings) const {
  // The node of the host that delivers what its one attribute holds.
  constexpr NodeType kTextType{10, 16, 50};
  for (const ConnectionEntry& connection : content_.connections) {
    const Node* from = connection.from->node;
    const Node* to = connection.to->node;
    if (from == nullptr || to == nullptr || !from->IsEnabled() || !(from->GetNodeType() == kTextType)) continue;
    const Attribute* fed = to->GetAttribute(connection.inplug);
    const Attribute* text = from->GetAttribute(0);
    if (fed == nullptr || fed->GetKind() != Attribute::Kind::kChoice) continue;
    if (content_.IsFed(*connection.from, text->GetName())) continue;
    const std::string word = text->GetValue().GetText();
    if (fed->GetChoiceIndex(word) >= 0) continue;
    findings.AddNote(Quote(connection.from->id + "." + connection.outplug) + " delivers " + Quote(word) + " to " +
                     Quote(connection.to->id + "." + connection.inplug) + ", which has no such word" +
                     content_.SuggestName(word, fed->GetChoices()) + "; known are " + JoinNames(fed->GetChoices()));
  }
}

void DocumentAdvice::NoteIdleSettings(Findings& findings, AdviceScope scope) const {
  NoteSettings(scope == AdviceScope::kAll ? &DocumentAdvice::DescribeIdle : &DocumentAdvice::DescribeIdleInItself,
               findings);
  if (flow_.WritesNothing() && !content_.lacks_parts) {
    findings.AddNote("nothing is written: the document has no outputs and no enabled writer");
  }
}

bool DocumentAdvice::IsSet(const DocumentEntry& entry, const Attribute& attribute) {
  return Has(entry.gave_attributes, attribute.GetId()) || Has(entry.set_attributes, attribute.GetId()) ||
         attribute.GetValue() != attribute.GetDefault();
}

std::string DocumentAdvice::DescribeFed(const DocumentEntry& entry, const Attribute& attribute) const {
  const bool is_fed = IsSet(entry, attribute) && content_.IsFed(entry, attribute.GetName());
  return is_fed ? "is set and has no effect, because a connection feeds it" : "";
}

std::string DocumentAdvice::DescribeIdle(const DocumentEntry& entry, const Attribute& attribute) const {
  const bool is_told_otherwise = content_.IsFed(entry, attribute.GetName()) || DependsOnPlaceholder(entry, attribute);
  if (is_told_otherwise || !IsSet(entry, attribute)) return {};
  return DescribeNoEffect(*entry.node, attribute, flow_.CountImages(entry));
}

std::string DocumentAdvice::DescribeIdleInItself(const DocumentEntry& entry, const Attribute& attribute) const {
  const AttributeRow* row = attribute.GetRow();
  const bool depends_on_sibling = row != nullptr && *row->effect.attribute != '\0';
  return depends_on_sibling ? std::string() : DescribeIdle(entry, attribute);
}

bool DocumentAdvice::DependsOnPlaceholder(const DocumentEntry& entry, const Attribute& attribute) const {
  const AttributeRow* row = attribute.GetRow();
  return row != nullptr && *row->effect.attribute != '\0' && content_.IsFed(entry, row->effect.attribute);
}

// ---- GraphDocument ----

void GraphDocument::CheckOutputs(Findings& findings) const {
  const DocumentAdvice advice(*this);
  advice.CheckOutputs(findings);
  advice.NoteFedSettings(findings);
  advice.NoteForeignWords(findings);
}

void GraphDocument::Advise(Findings& findings, AdviceScope scope) const {
  DocumentAdvice(*this).NoteIdleSettings(findings, scope);
}

}  // namespace ScEng
