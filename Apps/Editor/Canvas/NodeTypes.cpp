// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodeTypes.h"

#include <algorithm>

#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"

namespace {

bool HasKind(const std::vector<TypePlug>& plugs, unsigned kind) {
  return std::any_of(plugs.begin(), plugs.end(), [kind](const TypePlug& plug) { return plug.type == kind; });
}

/// What only a node of the type can tell.
void ReadPlugs(const Node& node, TypeInfo& info) {
  for (unsigned i = 0; i < node.GetNumRegularInputs(); ++i) {
    const PlugRecord& plug = node.GetInplugs()[i];
    info.inputs.push_back(
        {plug.name, QString::fromStdString(node.GetInplugAlias(i)), {}, plug.type, plug.connections > 1});
  }
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    const AttributeRow* row = attribute.GetRow();
    info.attributes.push_back({attribute.GetName(), QString::fromStdString(attribute.GetName()),
                               row == nullptr ? QString() : QString::fromUtf8(row->text), attribute.GetPlugType(),
                               false});
  }
  for (unsigned i = 0; i < node.GetOutplugs().size(); ++i) {
    const PlugRecord& plug = node.GetOutplugs()[i];
    info.outputs.push_back({plug.name, QString::fromStdString(node.GetOutplugAlias(i)), {}, plug.type, false});
  }
  if (const NodeRecord* record = node.GetRecord()) {
    info.sentence = QString::fromUtf8(record->sentence);
    info.group = QString::fromUtf8(record->group);
  }
}

TypeInfo ReadType(const NodeInterface& descriptor) {
  TypeInfo info;
  ScEng::Status status;
  const ScEng::RefPtr<Node> node = ScEng::CreateNode(descriptor, status);
  // A type that fails is shown by as much as it told until then; adding one says what is wrong with it.
  static_cast<void>(ScEng::CallTypeGuarded(descriptor, "its description", [&] {
    info.type = descriptor.GetNodeType();
    info.type_name = descriptor.GetNodeFactory()->GetTypeName();
    info.name = QString::fromStdString(descriptor.GetName());
    const std::string icon = descriptor.GetIconPath();
    if (!icon.empty()) info.icon = QPixmap(QString::fromStdString(icon));
    if (node) ReadPlugs(*node, info);
  }));
  return info;
}

}  // namespace

bool TypeInfo::Takes(unsigned kind) const { return HasKind(inputs, kind) || HasKind(attributes, kind); }
bool TypeInfo::Gives(unsigned kind) const { return HasKind(outputs, kind); }
bool TypeInfo::Passes(unsigned kind) const {
  return !inputs.empty() && !outputs.empty() && inputs.front().type == kind && outputs.front().type == kind;
}

NodeTypes::NodeTypes(std::shared_ptr<const ScEng::NodeCatalog> catalog) : catalog_(std::move(catalog)) {
  for (const NodeInterface* descriptor : catalog_->GetDescriptors()) {
    infos_.push_back(ReadType(*descriptor));
    by_type_.emplace(infos_.back().type, infos_.size() - 1);
  }
}

const TypeInfo* NodeTypes::Find(const NodeType& type) const {
  const auto found = by_type_.find(type);
  return found == by_type_.end() ? nullptr : &infos_[found->second];
}

const TypeInfo* NodeTypes::FindName(const std::string& type_name) const {
  const auto found =
      std::find_if(infos_.begin(), infos_.end(), [&](const TypeInfo& info) { return info.type_name == type_name; });
  return found == infos_.end() ? nullptr : &*found;
}

std::vector<std::size_t> NodeTypes::Search(const std::string& words) const {
  // Nobody searches in most sessions of tests and pictures.
  if (texts_.empty()) texts_ = ScEng::MakeSearchTexts(*catalog_);
  return ScEng::Search(texts_, {words});
}
