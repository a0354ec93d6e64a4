// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/SharedPanel.h"

#include <QVBoxLayout>
#include <utility>

namespace {

constexpr const char* kCopy = "copy";

std::vector<PlugValue> ReadValues(const Node& node) {
  std::vector<PlugValue> values;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) values.push_back(node.GetAttribute(i)->GetValue());
  return values;
}

}  // namespace

SharedPanel::SharedPanel(ScEng::EditSession& session, const std::shared_ptr<const ScEng::NodeCatalog>& catalog,
                         NodeInterface& descriptor, std::vector<std::string> ids, QWidget* parent)
    : QWidget(parent), session_(session), ids_(std::move(ids)), copies_(catalog) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  ScEng::Status status;
  copy_ = copies_.AddNode(kCopy, descriptor.GetNodeType(), status);
  if (copy_ == nullptr) return;
  panel_ = new NodePanel(*copy_, &descriptor, this);
  layout->addWidget(panel_);
  copy_->AddObserver(this);
  Follow();
}

SharedPanel::~SharedPanel() {
  if (copy_ != nullptr) copy_->RemoveObserver(this);
  // It looks at the copy, which goes before the children of a widget do.
  delete panel_;
}

void SharedPanel::Follow() {
  const Node* first = session_.GetDocument().FindNode(ids_.front());
  if (copy_ == nullptr || first == nullptr || first->GetNumAttributes() != copy_->GetNumAttributes()) return;
  is_following_ = true;
  std::vector<std::string> notes;
  for (std::size_t i = 0; i < copy_->GetNumAttributes(); ++i) {
    Attribute& attribute = *copy_->GetAttribute(i);
    const PlugValue& value = first->GetAttribute(i)->GetValue();
    attribute.SetFolder(first->GetAttribute(i)->GetFolder());
    if (attribute.GetValue() == value) continue;
    copies_.SetAttributeValue(std::string(kCopy) + "." + attribute.GetName(), value, notes);
  }
  is_following_ = false;
  shown_ = ReadValues(*copy_);
  for (std::size_t i = 0; i < copy_->GetNumAttributes(); ++i) {
    std::string driven;
    bool differs = false;
    for (const std::string& id : ids_) {
      const Node* node = session_.GetDocument().FindNode(id);
      if (node == nullptr) continue;
      if (!node->GetAttributeSource(static_cast<unsigned>(i)).empty()) driven = id;
      differs = differs || !(node->GetAttribute(i)->GetValue() == shown_[i]);
    }
    panel_->MarkDiffering(copy_->GetAttribute(i)->GetName(), differs);
    panel_->SetBlocked(copy_->GetAttribute(i)->GetName(), !driven.empty(),
                       tr("A connection feeds it at %1.").arg(QString::fromStdString(driven).toHtmlEscaped()));
  }
}

void SharedPanel::OnNodeChanged(Node& node) {
  if (is_following_) return;
  const std::vector<PlugValue> now = ReadValues(node);
  std::vector<ScEng::AttributeValue> values;
  std::string name;
  for (std::size_t i = 0; i < now.size() && i < shown_.size(); ++i) {
    if (now[i] == shown_[i]) continue;
    name = node.GetAttribute(i)->GetName();
    for (const std::string& id : ids_) values.push_back({id + "." + name, now[i]});
  }
  shown_ = now;
  if (values.empty()) return;
  const QString title =
      tr("Set %1 of %n nodes", nullptr, static_cast<int>(ids_.size())).arg(QString::fromStdString(name));
  const ScEng::Status status = session_.Group(title.toStdString(), [&] { return session_.SetAttributes(values); });
  if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
}
