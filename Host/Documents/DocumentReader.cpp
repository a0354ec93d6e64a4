// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentReader.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <system_error>
#include <utility>

#include "Host/Documents/AttributeText.h"
#include "Host/Documents/MessageText.h"
#include "Host/Tools/Guard.h"

namespace ScEng {
namespace {

constexpr const char* kFormat = "value-graph";
constexpr std::uint32_t kOldestVersion = 1;
constexpr std::uint32_t kNewestVersion = 2;
constexpr std::size_t kLongestName = 120;

/// A whole number from 0 to the largest of 32 bits, also where it is written with a fraction of zero.
std::optional<std::uint32_t> ReadUnsigned(const JsonValue& value) {
  const double* number = value.GetNumber();
  if (number == nullptr || *number < 0.0 || *number > static_cast<double>(UINT32_MAX) ||
      *number != std::floor(*number)) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(*number);
}

std::optional<NodeType> ReadTypeNumbers(const JsonValue& value) {
  const JsonValue::Array* array = value.GetArray();
  if (array == nullptr || array->size() != 3) return std::nullopt;
  const auto first = ReadUnsigned((*array)[0]);
  const auto second = ReadUnsigned((*array)[1]);
  const auto third = ReadUnsigned((*array)[2]);
  if (!first || !second || !third) return std::nullopt;
  return NodeType(*first, *second, *third);
}

/// A value for a message.
std::string Describe(const JsonValue& value) {
  constexpr std::size_t kLongest = 40;
  return MakeLine(FormatJsonLine(value, kLongest), kLongest);
}

}  // namespace

DocumentReader::DocumentReader(GraphDocument& document, const std::string& name, std::filesystem::path folder,
                               Findings& findings, const LoadOptions& options)
    : document_(document),
      content_(*document.content_),
      lead_(KeepEnd(name, kLongestName) + ": "),
      folder_(std::move(folder)),
      findings_(findings),
      options_(options) {}

bool DocumentReader::ReadFile(const std::filesystem::path& file) {
  std::error_code error;
  const auto fail = [&](const std::string& reason) {
    findings_.AddError("cannot read document " + QuotePath(file) + ": " + reason);
    return false;
  };
  if (!std::filesystem::exists(file, error)) return fail("there is no such file");
  if (std::filesystem::is_directory(file, error)) return fail("it is a folder");
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return fail("it cannot be opened");
  std::string text;
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  while (stream && text.size() <= kMostBytes) {
    const std::size_t before = text.size();
    text.resize(before + kPiece);
    stream.read(text.data() + before, static_cast<std::streamsize>(kPiece));
    text.resize(before + static_cast<std::size_t>(stream.gcount()));
  }
  if (stream.bad()) return fail("reading it failed");
  ReadText(text);
  return true;
}

void DocumentReader::ReadText(std::string_view text) {
  content_.folder = folder_;
  const std::size_t before = findings_.errors.size();
  const std::size_t further = findings_.further_errors;
  const auto refuse = [&](const std::string& problem) {
    findings_.errors.resize(before);
    findings_.further_errors = further;
    AddError(problem);
  };
  if (text.size() > kMostBytes) {
    refuse("it is larger than " + std::to_string(kMostBytes >> 20) + " MiB");
    return;
  }
  const ParseProblem problem = ParseDocument(text, *this);
  if (!problem.text.empty() && !problem.is_syntax) {
    content_.lacks_parts = true;
    refuse(problem.text);
    return;
  }
  const auto version = version_ ? ReadUnsigned(*version_) : std::nullopt;
  if (version && *version > kNewestVersion) {
    // What else looks wrong may well be right in that version.
    refuse("\"version\" is " + std::to_string(*version) + "; this program reads versions " +
           std::to_string(kOldestVersion) + " to " + std::to_string(kNewestVersion));
    if (problem.is_syntax) AddError(problem.text);
    return;
  }
  const bool has_end = !problem.is_syntax;
  content_.lacks_parts = content_.lacks_parts || !has_end || !lists_.contains(DocumentList::kNodes);
  ReadRest();
  if (!has_end) AddErrorsBefore(before, {problem.text});
  if (has_end && is_object_) AddErrorsBefore(before, FindHeadErrors());
}

void DocumentReader::AddErrorsBefore(std::size_t before, const std::vector<std::string>& texts) {
  if (texts.empty()) return;
  const auto from = findings_.errors.begin() + static_cast<std::ptrdiff_t>(before);
  const std::vector<std::string> others(std::make_move_iterator(from), std::make_move_iterator(findings_.errors.end()));
  findings_.errors.resize(before);
  for (const std::string& text : texts) AddError(text);
  for (const std::string& other : others) findings_.AddError(other);
}

std::vector<std::string> DocumentReader::FindHeadErrors() const {
  std::vector<std::string> errors;
  const std::string* format = format_ ? format_->GetText() : nullptr;
  if (format == nullptr || *format != kFormat) {
    errors.push_back("\"format\" is not " + Quote(kFormat) + ", so this is not a graph document");
  }
  const auto version = version_ ? ReadUnsigned(*version_) : std::nullopt;
  if (!version || *version < kOldestVersion) {
    errors.push_back("\"version\" is " + (version_ ? Describe(*version_) : "missing") +
                     "; this program reads versions " + std::to_string(kOldestVersion) + " to " +
                     std::to_string(kNewestVersion));
  }
  if (!lists_.contains(DocumentList::kNodes)) errors.emplace_back("\"nodes\" is missing");
  return errors;
}

void DocumentReader::OnValue(const std::string& key, const JsonValue& value) {
  if (key == "format") {
    format_ = value;
  } else if (key == "version") {
    version_ = value;
  } else if (key == "$schema") {
    if (value.GetText() != nullptr) {
      content_.schema = *value.GetText();
    } else {
      AddError("\"$schema\" is not a string");
    }
  } else if (key == "view") {
    ReadView(value);
  } else {
    AddError("the document: the key " + Quote(key) +
             " is unknown; known are $schema, format, version, nodes, connections, outputs, frames, view");
  }
}

void DocumentReader::OnObject() { is_object_ = true; }

void DocumentReader::OnList(DocumentList list) { lists_.insert(list); }

void DocumentReader::OnLostList(DocumentList list) {
  lists_.insert(list);
  content_.lacks_parts = content_.lacks_parts || list != DocumentList::kFrames;
}

void DocumentReader::OnEntry(DocumentList list, std::size_t index, JsonValue entry) {
  const std::string place = DescribePlace(list, index);
  // A node type of a library answers for its names, and need not keep its exceptions to itself.
  const Status status = CallGuarded("its node type", [&] {
    switch (list) {
      case DocumentList::kNodes: ReadNode(entry, place); break;
      case DocumentList::kConnections: ReadConnection(entry, index, place); break;
      case DocumentList::kOutputs: ReadOutput(entry, index, place); break;
      case DocumentList::kFrames: ReadFrame(entry, place); break;
    }
  });
  if (status.IsError()) AddError(place + ": " + status.GetMessage());
}

void DocumentReader::OnFault(const std::string& text) { AddError(text); }

// ---- Nodes ----

void DocumentReader::ReadNode(const JsonValue& node, const std::string& place) {
  if (!CheckObject(node, place, {"id", "type", "enabled", "attributeVersion", "attributes", "position", "note"})) {
    return;
  }
  std::string id;
  const bool has_id = ReadString(node, place, "id", id);
  const std::string what = has_id ? "node " + Quote(id) : place;
  bool is_unknown = false;
  const NodeInterface* descriptor = ReadType(node, what, is_unknown);
  const bool is_kept = has_id && is_unknown && options_.unknown_types == UnknownTypes::kKeep;
  if (is_unknown && !is_kept) AddError(what + ": " + content_.DescribeUnknownType(*node.Find("type")));
  // A placeholder stands in for what is refused as well, so that nothing that depends on it looks wrong.
  const bool can_be_added = has_id && (descriptor != nullptr || is_unknown);
  DocumentEntry* entry = can_be_added ? AddNode(id, place, descriptor) : nullptr;
  if (has_id && !document_.HasId(id)) faulty_ids_.insert(id);
  if (entry == nullptr) {
    CheckNodeKeys(node, what, has_id ? id : place, descriptor);
    return;
  }
  if (descriptor != nullptr) {
    entry->gave_numbers = node.Find("type")->GetText() == nullptr;
  } else {
    entry->placeholder->type = *node.Find("type");
    entry->placeholder->is_reported = !is_kept;
  }
  ReadNodeKeys(node, what, *entry);
  if (is_kept) {
    AddNote(what + ": " + content_.DescribeUnknownType(entry->placeholder->type) +
            "; the node is kept as it is written");
  }
  if (is_unknown) content_.Tell(&DocumentObserver::OnNodeAdded, id);
}

const NodeInterface* DocumentReader::ReadType(const JsonValue& node, const std::string& what, bool& is_unknown) {
  const JsonValue* type = node.Find("type");
  if (type == nullptr) {
    AddError(what + ": \"type\" is missing");
    return nullptr;
  }
  if (type->GetText() == nullptr && !ReadTypeNumbers(*type)) {
    AddError(what + ": \"type\" is neither a type name nor its three numbers");
    return nullptr;
  }
  const NodeInterface* descriptor = FindType(*type);
  is_unknown = descriptor == nullptr;
  return descriptor;
}

DocumentEntry* DocumentReader::AddNode(const std::string& id, const std::string& place,
                                       const NodeInterface* descriptor) {
  Status status;
  DocumentEntry* entry = nullptr;
  if (descriptor == nullptr) {
    entry = content_.AddEntry(id, status);
    if (entry != nullptr) entry->placeholder = std::make_unique<Placeholder>();
  } else if (document_.AddNode(id, descriptor->GetNodeType(), status) != nullptr) {
    entry = content_.Find(id);
  }
  if (entry == nullptr) AddError(place + ", \"id\": " + status.GetMessage());
  return entry;
}

void DocumentReader::ReadNodeKeys(const JsonValue& node, const std::string& what, DocumentEntry& entry) {
  if (const JsonValue* enabled = node.Find("enabled")) {
    entry.gave_enabled = true;
    if (enabled->GetFlag() == nullptr) {
      AddError(what + ": \"enabled\" takes true or false");
    } else if (entry.node != nullptr) {
      entry.node->SetEnabled(*enabled->GetFlag());
    } else {
      entry.placeholder->enabled = *enabled->GetFlag();
    }
  }
  if (const JsonValue* version = node.Find("attributeVersion")) {
    const auto number = ReadUnsigned(*version);
    entry.gave_version = true;
    if (!number) {
      AddError(what + ": \"attributeVersion\" takes a whole number from 0");
    } else if (entry.node != nullptr) {
      entry.attribute_version = *number;
    } else {
      entry.placeholder->attribute_version = *number;
    }
  }
  if (const JsonValue* attributes = node.Find("attributes")) {
    if (attributes->GetObject() == nullptr) {
      AddError(what + ": \"attributes\" is not an object");
    } else if (entry.node != nullptr) {
      ReadAttributes(*attributes, entry);
    } else {
      entry.placeholder->attributes = *attributes;
    }
  }
  const auto position = ReadOptionalNumbers(node, what, "position", 2, "x, y");
  if (position) entry.position = Point{(*position)[0], (*position)[1]};
  ReadOptionalString(node, what, "note", entry.note);
}

void DocumentReader::CheckNodeKeys(const JsonValue& node, const std::string& what, const std::string& id,
                                   const NodeInterface* descriptor) {
  DocumentEntry entry;
  entry.id = id;
  // A node that nothing else knows of; it goes with this function, whatever its type throws.
  RefPtr<Node> checked;
  const Status created = CallGuarded("CreateNode", [&] {
    if (descriptor != nullptr) checked.Reset(descriptor->GetNodeFactory()->CreateNode());
    if (checked) entry.attribute_version = checked->GetAttributeVersion();
  });
  entry.node = created.IsError() ? nullptr : checked.Get();
  if (entry.node == nullptr) entry.placeholder = std::make_unique<Placeholder>();
  ReadNodeKeys(node, what, entry);
}

const NodeInterface* DocumentReader::FindType(const JsonValue& type) {
  const NodeCatalog& catalog = content_.engine.GetCatalog();
  if (type.GetText() == nullptr) return catalog.Find(*ReadTypeNumbers(type));
  if (types_.empty()) {
    for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
      types_.emplace(descriptor->GetNodeFactory()->GetTypeName(), descriptor);
    }
  }
  const auto found = types_.find(*type.GetText());
  return found == types_.end() ? nullptr : found->second;
}

void DocumentReader::ReadAttributes(const JsonValue& attributes, DocumentEntry& entry) {
  // By current name, in the order of the document; a name that is current itself comes first.
  struct Given {
    std::string current;
    std::vector<const JsonMember*> members;
  };
  std::vector<Given> given;
  std::unordered_map<std::string, std::size_t> places;
  for (const JsonMember& member : *attributes.GetObject()) {
    const std::string current = entry.node->TranslateAttributeName(entry.attribute_version, member.key);
    const auto [place, is_new] = places.emplace(current, given.size());
    if (is_new) given.push_back({current, {}});
    auto& members = given[place->second].members;
    members.insert(member.key == current ? members.begin() : members.end(), &member);
  }
  for (const auto& [current, members] : given) {
    ReadAttribute(members.front()->key, members.front()->value, entry);
    for (std::size_t i = 1; i < members.size(); ++i) {
      AddNote(Quote(entry.id + "." + members[i]->key) + " is an old name of " + Quote(current) +
              " and ignored, since " + Quote(members.front()->key) + " is given too");
    }
  }
}

void DocumentReader::ReadAttribute(const std::string& written, const JsonValue& value, DocumentEntry& entry) {
  const Node& node = *entry.node;
  const std::string current = node.TranslateAttributeName(entry.attribute_version, written);
  const std::size_t count = node.GetNumAttributes();
  std::size_t id = 0;
  while (id < count && node.GetAttribute(id)->GetName() != current) ++id;
  if (id == count) {
    const std::string what = Quote(entry.id + "." + written);
    if (node.IsObsoleteAttribute(entry.attribute_version, written.c_str())) {
      AddNote(what + " is obsolete and ignored");
      return;
    }
    Refuse({written, value, document_.content_->DescribeMissingAttribute(node, written)}, written, entry);
    return;
  }
  std::vector<std::string> notes;
  const Status status = SetAttributeFromJson(*node.GetAttribute(id), value, notes);
  entry.gave_attributes.resize(count);
  entry.gave_attributes[id] = true;
  if (status.IsError()) Refuse({current, value, status.GetMessage()}, written, entry);
  for (const std::string& note : notes) AddNote(Quote(entry.id + "." + written) + ": " + note);
}

void DocumentReader::Refuse(KeptAttribute attribute, const std::string& written, DocumentEntry& entry) {
  const std::string text = Quote(entry.id + "." + written) + ": " + attribute.problem;
  if (options_.unknown_types == UnknownTypes::kRefuse) return AddError(text);
  AddNote(text + "; it is kept as it is written");
  entry.kept_attributes.push_back(std::move(attribute));
}

// ---- Connections and outputs ----

void DocumentReader::ReadConnection(const JsonValue& connection, std::size_t index, const std::string& place) {
  if (!CheckObject(connection, place, {"from", "to", "index"})) return;
  PendingConnection pending;
  pending.place = index;
  pending.is_good = ReadString(connection, place, "from", pending.from);
  pending.is_good = ReadString(connection, place, "to", pending.to) && pending.is_good;
  if (const JsonValue* given = connection.Find("index")) {
    const auto number = ReadUnsigned(*given);
    if (!number) AddError(place + ": \"index\" takes a whole number from 0");
    pending.is_good = number && pending.is_good;
    pending.index = number.value_or(0);
    pending.gave_index = true;
  }
  connections_.push_back(std::move(pending));
}

void DocumentReader::ReadOutput(const JsonValue& output, std::size_t index, const std::string& place) {
  if (!CheckObject(output, place, {"from", "path", "type", "samples", "opacity", "metadata", "layer"})) return;
  PendingOutput pending;
  pending.place = index;
  bool is_good = ReadString(output, place, "from", pending.output.from);
  is_good = ReadString(output, place, "path", pending.output.path) && is_good;
  for (const OutputWords& known : GetOutputWords()) {
    const JsonValue* word = output.Find(known.key);
    if (word == nullptr) continue;
    const std::string* text = word->GetText();
    if (text != nullptr && std::find(known.words.begin(), known.words.end(), *text) != known.words.end()) {
      pending.output.*known.word = *text;
      continue;
    }
    AddError(place + ": \"" + known.key + "\" takes one of the words " + JoinNames(known.words) + ", not " +
             Describe(*word));
    is_good = false;
  }
  is_good = ReadOptionalString(output, place, "layer", pending.output.layer) && is_good;
  pending.is_good = is_good;
  outputs_.push_back(std::move(pending));
}

void DocumentReader::MakeConnection(const PendingConnection& pending) {
  const auto report = [&](const Status& status) {
    const bool has_ends = !pending.from.empty() && !pending.to.empty();
    AddError(DescribePlace(DocumentList::kConnections, pending.place) +
             (has_ends ? " " + Quote(pending.from) + " to " + Quote(pending.to) : "") + ": " + status.GetMessage());
  };
  ConnectionEntry connection;
  connection.index = pending.index;
  connection.gave_index = pending.gave_index;
  bool is_good = pending.is_good;
  const auto attempt = [&](const auto& function) {
    Status status;
    const Status guarded = CallGuarded("a node type", [&] { status = function(); });
    if (guarded.IsError()) status = guarded;
    if (status.IsError()) report(status);
    is_good = is_good && !status.IsError();
  };
  // What is wrong with a node or a missing end has been said.
  const auto can_be_found = [&](const std::string& plug) {
    const bool can = !plug.empty() && !IsOfFaultyNode(plug);
    is_good = is_good && can;
    return can;
  };
  if (can_be_found(pending.from)) attempt([&] { return content_.FindSource(pending.from, connection); });
  if (can_be_found(pending.to)) attempt([&] { return content_.FindTarget(pending.to, connection); });
  if (is_good) attempt([&] { return content_.Connect(connection); });
  if (is_good || connection.to == nullptr) return;
  const Node* to = connection.to->node;
  const bool feeds_attribute =
      to != nullptr && to->GetInplugIndex(connection.inplug) >= static_cast<int>(to->GetNumRegularInputs());
  if (!feeds_attribute) content_.Find(connection.to->id)->has_lost_connection = true;
}

void DocumentReader::MakeOutput(const PendingOutput& pending) {
  const auto report = [&](const Status& status) {
    if (status.IsError()) AddError(DescribePlace(DocumentList::kOutputs, pending.place) + ": " + status.GetMessage());
    return !status.IsError();
  };
  bool is_good = pending.is_good && report(document_.content_->CheckOutput(pending.output));
  if (pending.output.from.empty() || IsOfFaultyNode(pending.output.from)) return;
  OutputEntry found;
  is_good = report(content_.FindImageOutput(pending.output.from, found)) && is_good;
  if (is_good) report(document_.AddOutput(pending.output));
}

void DocumentReader::ReadRest() {
  for (const PendingConnection& connection : connections_) MakeConnection(connection);
  for (const PendingOutput& output : outputs_) MakeOutput(output);
  if (!view_) return;
  OutputEntry shown;
  if (!view_->shown.empty() && content_.FindImageOutput(view_->shown, shown).IsError()) {
    if (!IsOfFaultyNode(view_->shown)) {
      AddNote("\"view\": " + Quote(view_->shown) + " is not an image output, so nothing is shown");
    }
    view_->shown.clear();
  }
  content_.view = view_;
  content_.Tell(&DocumentObserver::OnViewChanged);
}

bool DocumentReader::IsOfFaultyNode(const std::string& plug) const {
  if (faulty_ids_.empty() && !content_.lacks_parts) return false;
  const std::string id = plug.substr(0, plug.rfind('.'));
  return faulty_ids_.contains(id) || (content_.lacks_parts && plug.size() > id.size() && !document_.HasId(id));
}

// ---- For people and editors ----

void DocumentReader::ReadFrame(const JsonValue& value, const std::string& place) {
  if (!CheckObject(value, place, {"title", "box", "color"})) return;
  DocumentFrame frame;
  bool is_good = ReadOptionalString(value, place, "title", frame.title);
  is_good = ReadOptionalString(value, place, "color", frame.color) && is_good;
  if (value.Find("box") == nullptr) AddError(place + ": \"box\" is missing");
  const auto box = ReadOptionalNumbers(value, place, "box", 4, "x, y, width, height");
  if (box) frame.box = {(*box)[0], (*box)[1], (*box)[2], (*box)[3]};
  // The numbers and the title of a document are good in themselves, so that this is about the colour.
  const Status status = GraphDocument::Content::CheckFrame(frame);
  if (status.IsError()) AddError(place + ": " + status.GetMessage());
  if (!box || !is_good || status.IsError()) return;
  content_.frames.push_back(std::move(frame));
  content_.Tell(&DocumentObserver::OnFramesChanged);
}

void DocumentReader::ReadView(const JsonValue& value) {
  const std::string what = "\"view\"";
  if (!CheckObject(value, what, {"center", "zoom", "shown"})) return;
  DocumentView view;
  const auto center = ReadOptionalNumbers(value, what, "center", 2, "x, y");
  if (center) view.center = Point{(*center)[0], (*center)[1]};
  if (const JsonValue* zoom = value.Find("zoom")) {
    // Anything but a number counts as 0, which is not a zoom either.
    view.zoom = zoom->GetNumber() != nullptr ? *zoom->GetNumber() : 0.0;
  }
  const bool is_good = ReadOptionalString(value, what, "shown", view.shown);
  const Status status = GraphDocument::Content::CheckView(view);
  if (status.IsError()) {
    AddError(what + ": " + status.GetMessage());
  } else if (is_good) {
    view_ = std::move(view);
  }
}

// ---- What all share ----

void DocumentReader::AddError(const std::string& text) { findings_.AddError(lead_ + text); }

void DocumentReader::AddNote(const std::string& text) { findings_.AddNote(lead_ + text); }

bool DocumentReader::CheckObject(const JsonValue& value, const std::string& what,
                                 std::initializer_list<std::string_view> keys) {
  const JsonValue::Object* object = value.GetObject();
  if (object == nullptr) {
    AddError(what + " is not an object");
    return false;
  }
  for (const JsonMember& member : *object) {
    const bool is_known = std::find(keys.begin(), keys.end(), member.key) != keys.end();
    if (is_known) continue;
    const std::vector<std::string> known(keys.begin(), keys.end());
    AddError(what + ": the key " + Quote(member.key) + " is unknown" +
             document_.content_->SuggestName(member.key, known) + "; known are " + JoinNames(known));
  }
  return true;
}

bool DocumentReader::ReadString(const JsonValue& object, const std::string& what, const char* key, std::string& value) {
  const JsonValue* found = object.Find(key);
  if (found == nullptr) {
    AddError(what + ": \"" + key + "\" is missing");
    return false;
  }
  if (found->GetText() == nullptr || found->GetText()->empty()) {
    AddError(what + ": \"" + key + "\" is not a string with something in it");
    return false;
  }
  value = *found->GetText();
  return true;
}

bool DocumentReader::ReadOptionalString(const JsonValue& object, const std::string& what, const char* key,
                                        std::string& value) {
  const JsonValue* found = object.Find(key);
  if (found == nullptr) return true;
  if (found->GetText() == nullptr) {
    AddError(what + ": \"" + key + "\" is not a string");
    return false;
  }
  value = *found->GetText();
  return true;
}

std::optional<std::vector<double>> DocumentReader::ReadOptionalNumbers(const JsonValue& object, const std::string& what,
                                                                       const char* key, std::size_t count,
                                                                       const char* names) {
  const JsonValue* found = object.Find(key);
  if (found == nullptr) return std::nullopt;
  auto numbers = ReadNumbers(*found);
  if (numbers && numbers->size() == count) return numbers;
  AddError(what + ": \"" + key + "\" takes " + std::to_string(count) + " numbers (" + names + "), not " +
           Describe(*found));
  return std::nullopt;
}

}  // namespace ScEng
