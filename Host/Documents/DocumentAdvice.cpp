// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentAdvice.h"

#include <vector>

#include "Host/Documents/MessageText.h"
#include "Host/Tools/AttributeRow.h"
#include "Host/Tools/Effect.h"

namespace ScEng {
namespace {

/// Whether a list of flags, which may be shorter than its ids, holds this one.
bool Has(const std::vector<bool>& flags, std::size_t id) { return id < flags.size() && flags[id]; }

}  // namespace

void DocumentAdvice::CheckOutputs(Findings& findings) const {
  for (std::size_t i = 0; i < content_.outputs.size(); ++i) {
    const OutputEntry& output = content_.output_entries[i];
    const std::string who = "output " + Quote(content_.outputs[i].from);
    CheckImage(who, *output.entry, output.outplug, findings);
    CheckFile(who, content_.GetFile(content_.outputs[i]), findings);
  }
  for (const DocumentEntry* sink : flow_.GetSinks()) CheckSink(*sink, findings);
}

void DocumentAdvice::CheckSink(const DocumentEntry& sink, Findings& findings) const {
  const std::string who = "node " + Quote(sink.id);
  CheckImage(who, sink, 0, findings);
  const Attribute* path = FindPathAttribute(*sink.node, Attribute::StringUse::kWritePath);
  if (path == nullptr || content_.IsFed(sink, path->GetName())) return;
  const std::filesystem::path file = GetFile(*path);
  if (!file.empty()) CheckFile(who, file, findings);
}

void DocumentAdvice::CheckImage(const std::string& who, const DocumentEntry& entry, unsigned outplug,
                                Findings& findings) const {
  if (flow_.GetDelivery(entry, outplug) != ImageFlow::Delivery::kNo) return;
  findings.AddError(who + " cannot get an image: " + flow_.DescribeCause(entry, outplug));
}

void DocumentAdvice::CheckFile(const std::string& who, const std::filesystem::path& file, Findings& findings) {
  for (const std::string& problem : FindSaveProblems(file)) findings.AddError(who + ": " + problem);
}

void DocumentAdvice::NoteIdleSettings(Findings& findings) const {
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    // What a disabled node is set to waits for the day on which it is enabled.
    if (entry.node == nullptr || !entry.node->IsEnabled()) continue;
    for (std::size_t i = 0; i < entry.node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *entry.node->GetAttribute(i);
      const std::string idle = DescribeIdle(entry, attribute);
      if (!idle.empty()) findings.AddNote(Quote(id + "." + attribute.GetName()) + " " + idle);
    }
  }
  const bool writes_nothing = content_.outputs.empty() && flow_.GetSinks().empty() && !content_.lacks_parts;
  if (writes_nothing) findings.AddNote("nothing is written: the document has no outputs and no enabled writer");
}

std::string DocumentAdvice::DescribeIdle(const DocumentEntry& entry, const Attribute& attribute) const {
  const bool is_own = Has(entry.gave_attributes, attribute.GetId()) || attribute.GetValue() != attribute.GetDefault();
  const bool was_set = Has(entry.set_attributes, attribute.GetId());
  // Who sets a fed attribute is told so on the spot.
  if (content_.IsFed(entry, attribute.GetName())) {
    return is_own && !was_set ? "is set and has no effect, because a connection feeds it" : "";
  }
  if (!(is_own || was_set) || DependsOnPlaceholder(entry, attribute)) return {};
  return DescribeNoEffect(*entry.node, attribute, flow_.CountImages(entry));
}

bool DocumentAdvice::DependsOnPlaceholder(const DocumentEntry& entry, const Attribute& attribute) const {
  const AttributeRow* row = attribute.GetRow();
  return row != nullptr && *row->effect.attribute != '\0' && content_.IsFed(entry, row->effect.attribute);
}

// ---- GraphDocument ----

void GraphDocument::CheckOutputs(Findings& findings) const { DocumentAdvice(*this).CheckOutputs(findings); }

void GraphDocument::Advise(Findings& findings) const { DocumentAdvice(*this).NoteIdleSettings(findings); }

}  // namespace ScEng
