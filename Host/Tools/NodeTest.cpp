// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Node.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Host/Tools/LibraryInterface.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::RefPtr;

/// Two single inputs around one that takes many, three attributes, two outputs, and an old attribute name.
class PluggedNode : public Testing::TestNode {
 public:
  PluggedNode() {
    Add("amount", 1.0, 0.0, 10.0, 0.1, 2);
    Add("on", true);
    Add("path", std::string());
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image"), PlugRecord::MultipleInput(PlugType::kImage, "more"),
                PlugRecord::Input(PlugType::kImage, "mask")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image"), PlugRecord::Output(PlugType::kNumber, "count")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return {1, 2, 3}; }
  [[nodiscard]] std::string GetName() const override { return "Plugged"; }
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override {
    return version == 0 && name == "value" ? "amount" : name;
  }
};

TEST(Node, ListsRegularInputsThenAttributes) {
  const RefPtr<Node> node(new PluggedNode);
  ASSERT_EQ(node->GetInplugs().size(), 6U);
  EXPECT_EQ(node->GetNumRegularInputs(), 3U);
  EXPECT_EQ(node->GetNumAttributes(), 3U);
  const char* const kNames[] = {"image", "more", "mask", "amount", "on", "path"};
  const unsigned kTypes[] = {8, 8, 8, 2, 1, 3};
  const std::uint32_t kConnections[] = {1, 0xFFFFFFFF, 1, 1, 1, 1};
  for (unsigned i = 0; i < 6; ++i) {
    EXPECT_EQ(node->GetInplugs()[i].name, kNames[i]);
    EXPECT_EQ(node->GetInplugName(i), kNames[i]);
    EXPECT_EQ(node->GetInplugs()[i].type, kTypes[i]);
    EXPECT_EQ(node->GetInplugs()[i].connections, kConnections[i]);
    EXPECT_EQ(node->GetInplugs()[i].first_number, 0U);
    EXPECT_EQ(node->GetInplugs()[i].second_number, 0U);
    EXPECT_EQ(node->GetInplugIndex(kNames[i]), static_cast<int>(i));
  }
  EXPECT_EQ(node->GetInplugName(6), "");
  EXPECT_EQ(node->GetInplugIndex("nothing"), -1);
}

TEST(Node, ListsOutputs) {
  const RefPtr<Node> node(new PluggedNode);
  ASSERT_EQ(node->GetOutplugs().size(), 2U);
  EXPECT_EQ(node->GetOutplugName(0), "image");
  EXPECT_EQ(node->GetOutplugName(1), "count");
  EXPECT_EQ(node->GetOutplugName(2), "");
  EXPECT_EQ(node->GetOutplugIndex("count"), 1);
  EXPECT_EQ(node->GetOutplugIndex("mask"), -1);
  EXPECT_EQ(node->GetOutplugs()[0].connections, 0U);
}

TEST(Node, FindsAttributesByIdAndByOldAndNewNames) {
  const RefPtr<Node> node(new PluggedNode);
  EXPECT_EQ(node->GetAttribute(std::size_t{1})->GetName(), "on");
  EXPECT_EQ(node->GetAttribute(std::size_t{3}), nullptr);
  EXPECT_EQ(node->GetAttribute(std::string("path")), node->GetAttribute(std::size_t{2}));
  EXPECT_EQ(node->GetAttribute(std::string("value")), node->GetAttribute(std::size_t{0}));
  EXPECT_EQ(node->GetAttribute(std::string("amount")), node->GetAttribute(std::size_t{0}));
  EXPECT_EQ(node->GetAttribute(std::string("image")), nullptr);
  EXPECT_EQ(node->GetAttribute(std::string()), nullptr);
  EXPECT_EQ(node->GetInplugIndex("value"), 3);
}

TEST(Node, PlacesInputsByTheEntriesBeforeThem) {
  const RefPtr<Node> node(new PluggedNode);
  // One entry per input before anything is connected.
  EXPECT_EQ(node->GetInplugIdFromRegularInputId(0), 0U);
  EXPECT_EQ(node->GetInplugIdFromRegularInputId(1), 1U);
  EXPECT_EQ(node->GetInplugIdFromRegularInputId(2), 2U);
  EXPECT_EQ(node->GetInplugIdFromAttributeId(0), 3U);
  EXPECT_EQ(node->GetInplugIdFromAttributeId(2), 5U);
  node->SetRegularInputEntries(1, 4);
  EXPECT_EQ(node->GetInplugIdFromRegularInputId(1), 1U);
  EXPECT_EQ(node->GetInplugIdFromRegularInputId(2), 5U);
  EXPECT_EQ(node->GetInplugIdFromAttributeId(0), 6U);
  EXPECT_EQ(node->GetInplugIdFromAttributeId(1), 7U);
  node->SetRegularInputEntries(9, 100);
  EXPECT_EQ(node->GetInplugIdFromAttributeId(0), 6U);
}

TEST(Node, AnswersForPlugsInEveryForm) {
  const RefPtr<Node> node(new PluggedNode);
  EXPECT_EQ(node->GetInplugAlias(3), "amount");
  EXPECT_TRUE(node->GetInplugVisibility(5));
  EXPECT_FALSE(node->GetInplugVisibility(6));
  EXPECT_EQ(node->GetOutplugAlias(1), "count");
  EXPECT_TRUE(node->GetOutplugVisibility(1));
  EXPECT_FALSE(node->GetOutplugVisibility(2));
  EXPECT_TRUE(node->InplugAffectsOutplug(0, 0));
  EXPECT_FALSE(node->InplugAffectsOutplug(0, 2));
  EXPECT_EQ(node->V0GetInplugIndex("mask"), 2);
  EXPECT_EQ(node->V0GetInplugName(1), "more");
  EXPECT_EQ(node->V0GetOutplugIndex("count"), 1);
  EXPECT_EQ(node->V0GetOutplugName(0), "image");
}

TEST(Node, DefaultsOfTheVirtualOperations) {
  class PlainNode : public Testing::TestNode {
   public:
    PlainNode() { UpdateInplugsAndOutplugs(); }
    [[nodiscard]] NodeType GetNodeType() const override { return {}; }
    [[nodiscard]] std::string GetName() const override { return "Plain"; }
  };
  const RefPtr<Node> node(new PlainNode);
  EXPECT_TRUE(node->GetInplugs().empty());
  EXPECT_EQ(node->GetAttributeVersion(), 0U);
  EXPECT_EQ(node->TranslateAttributeName(0, "value"), "value");
  EXPECT_FALSE(node->IsObsoleteAttribute(0, "value"));
  EXPECT_FALSE(node->IsSink());
  EXPECT_EQ(node->GetOutputImage(0), nullptr);
  EXPECT_FALSE(node->GetOutputValue(0).HasValue());
  EXPECT_TRUE(node->IsEnabled());
  EXPECT_EQ(node->GetState(), Node::State::kIdle);
  EXPECT_EQ(node->GetStateMessage(), "");
}

TEST(Node, KeepsItsState) {
  const RefPtr<Node> node(new PluggedNode);
  node->SetState(0, Node::State::kError, "no luck");
  EXPECT_EQ(static_cast<unsigned>(node->GetState()), 3U);
  EXPECT_TRUE(node->IsInError());
  EXPECT_EQ(node->GetStateMessage(), "no luck");
  node->SetState(0, Node::State::kWarning, "some luck");
  EXPECT_FALSE(node->IsInError());
  node->SetState(0, Node::State::kFileError, "no file");
  EXPECT_TRUE(node->IsInError());
}

TEST(Node, TellsOfItsSwitch) {
  const RefPtr<Node> node(new PluggedNode);
  int changes = 0;
  node->SetChangeListener([&](Node&) { ++changes; });
  node->SetEnabled(true);
  EXPECT_EQ(changes, 0);
  node->SetEnabled(false);
  EXPECT_FALSE(node->IsEnabled());
  EXPECT_EQ(changes, 1);
  node->SetEnabled(true);
  EXPECT_EQ(changes, 2);
  node->SetChangeListener(nullptr);
  node->SetEnabled(false);
  EXPECT_EQ(changes, 2);
}

/// Counts what it is told.
class CountingObserver : public NodeObserver {
 public:
  void OnNodeChanged(Node& node) override {
    ++changes;
    if (leaves) node.RemoveObserver(this);
    if (removes != nullptr) node.RemoveObserver(removes);
  }
  void OnAttributeSourcesChanged(Node&) override { ++sources; }
  void OnNodeDestroyed(Node&) override { ++ends; }

  int changes = 0;
  int sources = 0;
  int ends = 0;
  bool leaves = false;
  NodeObserver* removes = nullptr;
};

TEST(Node, TellsItsObserversAfterTheListener) {
  CountingObserver first;
  CountingObserver second;
  RefPtr<Node> node(new PluggedNode);
  int told_before = -1;
  node->SetChangeListener([&](Node&) { told_before = first.changes; });
  node->AddObserver(&first);
  node->AddObserver(&second);
  node->NotifyChanged();
  EXPECT_EQ(told_before, 0);
  EXPECT_EQ(first.changes, 1);
  EXPECT_EQ(second.changes, 1);
  node->RemoveObserver(&first);
  node->NotifyChanged();
  EXPECT_EQ(first.changes, 1);
  EXPECT_EQ(second.changes, 2);
  node.Reset();
  EXPECT_EQ(first.ends, 0);
  EXPECT_EQ(second.ends, 1);
}

TEST(Node, ObserversMayLeaveWhileTheyAreTold) {
  CountingObserver first;
  CountingObserver second;
  CountingObserver third;
  const RefPtr<Node> node(new PluggedNode);
  for (CountingObserver* observer : {&first, &second, &third}) node->AddObserver(observer);
  first.leaves = true;
  first.removes = &second;
  node->NotifyChanged();
  EXPECT_EQ(first.changes, 1);
  EXPECT_EQ(second.changes, 0);
  EXPECT_EQ(third.changes, 1);
  node->RemoveObserver(&third);
}

TEST(Node, IsLabeledByItsNameUntilItHasALabel) {
  const RefPtr<Node> node(new PluggedNode);
  EXPECT_EQ(node->GetLabel(), node->GetName());
  node->SetLabel("height");
  EXPECT_EQ(node->GetLabel(), "height");
}

TEST(NodeEvent, KindIsTheThirdNumber) {
  NodeEvent event;
  event.sender = 1;
  event.serial = 2;
  event.kind = NodeEvent::kDropCachedResults;
  std::uint32_t numbers[3] = {};
  static_assert(sizeof(event) == sizeof(numbers));
  std::memcpy(numbers, &event, sizeof(numbers));
  EXPECT_EQ(numbers[2], 11U);
}

TEST(NodeType, ComparesAndPrints) {
  EXPECT_EQ(NodeType(10, 320, 5).ToString(), "10, 320, 5");
  EXPECT_EQ(NodeType(1, 2, 3), NodeType(1, 2, 3));
  EXPECT_NE(NodeType(1, 2, 3), NodeType(1, 2, 4));
  EXPECT_LT(NodeType(1, 2, 3), NodeType(1, 3, 0));
  EXPECT_EQ(NodeType(), NodeType(0, 0, 0));
}

TEST(NodeInterface, DefaultsOfTheVirtualOperations) {
  class PlainDescriptor : public NodeInterface {
   public:
    [[nodiscard]] NodeFactory* GetNodeFactory() const override { return nullptr; }
    [[nodiscard]] std::string GetName() const override { return "Plain"; }
    [[nodiscard]] NodeType GetNodeType() const override { return {}; }
  };
  const RefPtr<NodeInterface> descriptor(new PlainDescriptor);
  EXPECT_EQ(descriptor->GetGroupCode(), 0U);
  EXPECT_FALSE(descriptor->RunTest());
  EXPECT_EQ(descriptor->CreateAttributesWidget(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(descriptor->GetLibraryName(), "");
  EXPECT_EQ(descriptor->GetExtraCode(), 0U);
  EXPECT_EQ(descriptor->GetIconPath(), "");
  EXPECT_EQ(descriptor->GetSmallIconPath(), "");
}

}  // namespace
