// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Engine.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/Log.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::RefPtr;
using Testing::Contains;
using Testing::TestNode;

/// The names of evaluated nodes, in order.
std::vector<std::string> evaluated;

RefPtr<Image> MakePixel(float value) { return RefPtr<Image>(new Image(1, 1, ColorMode::kValue, &value)); }

/// A node with one cached image that notes its evaluations and events.
class ImageNode : public TestNode {
 public:
  ImageNode() { outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")}; }
  [[nodiscard]] std::string GetName() const override { return "Image Node"; }
  bool OnProcessEvent(NodeEvent event) override {
    events.push_back(event.kind);
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug == 0 ? output_.Get() : nullptr;
  }

  std::string label;
  int evaluations = 0;
  std::vector<std::uint32_t> events;

 protected:
  RefPtr<Image> output_;
};

/// One pixel of its attribute "level"; nothing while it is disabled.
class SourceNode : public ImageNode {
 public:
  static constexpr NodeType kType{700, 1, 1};
  static constexpr const char* kName = "SourceNode";
  SourceNode() {
    Add("level", 1.0, -100.0, 100.0, 0.1, 2);
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    ++evaluations;
    evaluated.push_back(label);
    output_.Reset();
    if (!IsEnabled()) return;
    output_ = MakePixel(static_cast<float>(inputs.at(GetInplugIdFromAttributeId(0)).GetNumber()));
  }
};

/// Adds up the first pixels of whatever arrives, and keeps the inputs as it received them.
class SumNode : public ImageNode {
 public:
  static constexpr NodeType kType{700, 1, 2};
  static constexpr const char* kName = "SumNode";
  SumNode() {
    Add("amount", 0.5, 0.0, 2.0, 0.1, 2);
    Add("word", 1, "a,b,c");
    Add("on", true);
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "first"), PlugRecord::MultipleInput(PlugType::kImage, "many"),
                PlugRecord::Input(PlugType::kImage, "last")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string TranslateAttributeName(unsigned, const std::string& name) const override {
    return name == "value" ? "amount" : name;
  }
  void OnAdded() override { ++added; }
  void OnRemoved() override { ++removed; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    ++evaluations;
    evaluated.push_back(label);
    received = inputs;
    levels.clear();
    float sum = 0.0F;
    for (const PlugValue& input : inputs) {
      const Image* image = input.GetImage();
      levels.push_back(image != nullptr ? image->GetConstArray()[0] : -1.0F);
      if (image != nullptr) sum += image->GetConstArray()[0];
    }
    output_ = MakePixel(sum);
    if (warns) SetState(evaluation, State::kWarning, "take care");
  }
  std::vector<PlugValue> received;
  /// First pixel of each received image, -1 for entries that are none.
  std::vector<float> levels;
  bool warns = false;
  inline static int added = 0;
  inline static int removed = 0;
};

/// Throws what its attribute says, after it has made an image.
class ThrowingNode : public ImageNode {
 public:
  static constexpr NodeType kType{700, 1, 3};
  static constexpr const char* kName = "ThrowingNode";
  ThrowingNode() {
    Add("what", 0, "nothing,length,memory,runtime,number,state,file");
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    ++evaluations;
    output_ = MakePixel(1.0F);
    const std::string what = inputs.at(GetInplugIdFromAttributeId(0)).GetText();
    if (what == "length") throw std::length_error("too long");
    if (what == "memory") throw std::bad_alloc();
    if (what == "runtime") throw std::runtime_error("the kettle boiled over");
    if (what == "number") throw 42;
    if (what == "state") SetState(evaluation, State::kError, "no such thing");
    if (what == "file") SetState(evaluation, State::kFileError, "no such file");
  }
};

/// Two outputs, both made by one evaluation.
class TogetherNode : public TestNode {
 public:
  static constexpr NodeType kType{700, 1, 4};
  static constexpr const char* kName = "TogetherNode";
  TogetherNode() {
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "x"), PlugRecord::Output(PlugType::kImage, "y")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Together"; }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) outputs_[0] = outputs_[1] = nullptr;
    return true;
  }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    ++evaluations;
    const Image* image = inputs.at(0).GetImage();
    const float level = image != nullptr ? image->GetConstArray()[0] : 0.0F;
    outputs_[0] = MakePixel(level + 10.0F);
    outputs_[1] = MakePixel(level + 20.0F);
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug < 2 ? outputs_[outplug].Get() : nullptr;
  }
  int evaluations = 0;

 private:
  RefPtr<Image> outputs_[2];
};

/// Two outputs, each made when it is asked for, by its number.
class SeparateNode : public TestNode {
 public:
  static constexpr NodeType kType{700, 1, 5};
  static constexpr const char* kName = "SeparateNode";
  SeparateNode() {
    Add("level", 0.0, -100.0, 100.0, 0.1, 2);
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "x"), PlugRecord::Output(PlugType::kImage, "y")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Separate"; }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) outputs_[0] = outputs_[1] = nullptr;
    return true;
  }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    asked.push_back(evaluation);
    const auto level = static_cast<float>(inputs.at(GetInplugIdFromAttributeId(0)).GetNumber());
    outputs_[evaluation] = MakePixel(level + 10.0F * static_cast<float>(evaluation + 1));
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    return outplug < 2 ? outputs_[outplug].Get() : nullptr;
  }
  std::vector<unsigned> asked;

 private:
  RefPtr<Image> outputs_[2];
};

/// Delivers a number, or nothing while it is disabled.
class FeedNode : public TestNode {
 public:
  static constexpr NodeType kType{700, 1, 6};
  static constexpr const char* kName = "FeedNode";
  FeedNode() {
    Add("value", 7.0, -1000.0, 1000.0, 0.1, 2);
    outplugs_ = {PlugRecord::Output(PlugType::kNumber, "number")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Feed"; }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    delivered_ = IsEnabled() ? inputs.at(0) : PlugValue();
  }
  [[nodiscard]] PlugValue GetOutputValue(unsigned) const override { return delivered_; }

 private:
  PlugValue delivered_;
};

/// Takes an image and gives nothing.
class SinkNode : public TestNode {
 public:
  static constexpr NodeType kType{700, 1, 7};
  static constexpr const char* kName = "SinkNode";
  SinkNode() {
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Sink"; }
  [[nodiscard]] bool IsSink() const override { return true; }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    ++evaluations;
    const Image* image = inputs.at(0).GetImage();
    taken = image != nullptr ? image->GetConstArray()[0] : -1.0F;
  }
  int evaluations = 0;
  float taken = 0.0F;
};

/// Throws in the operation that its attribute names.
class UnrulyNode : public ImageNode {
 public:
  static constexpr NodeType kType{700, 1, 8};
  static constexpr const char* kName = "UnrulyNode";
  UnrulyNode() {
    Add("where", 0, "nowhere,event,image,value,name,translate");
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image"), PlugRecord::Output(PlugType::kNumber, "number")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  void OnAdded() override { Reach("added"); }
  void OnRemoved() override { Reach("removed"); }
  [[nodiscard]] std::string GetName() const override {
    Reach("name");
    return "Unruly";
  }
  [[nodiscard]] std::string TranslateAttributeName(unsigned, const std::string& name) const override {
    Reach("translate");
    return name;
  }
  bool OnProcessEvent(NodeEvent event) override {
    Reach("event");
    return ImageNode::OnProcessEvent(event);
  }
  void Evaluate(unsigned, const std::vector<PlugValue>&) override {
    ++evaluations;
    output_ = MakePixel(1.0F);
  }
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override {
    Reach("image");
    return ImageNode::GetOutputImage(outplug);
  }
  [[nodiscard]] PlugValue GetOutputValue(unsigned) const override {
    Reach("value");
    return PlugValue(1.5);
  }

  static void Reach(const std::string& operation) {
    if (operation == throws_in) throw std::runtime_error("the lid came off");
  }
  inline static std::string throws_in;
};

/// Works for some seconds in one of several ways, asked by its attribute, and can be stopped.
class LongNode : public ImageNode {
 public:
  static constexpr NodeType kType{700, 1, 9};
  static constexpr const char* kName = "LongNode";
  LongNode() {
    Add("how", 0, "quick,rows,loop,swallows");
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image"), PlugRecord::Output(PlugType::kImage, "other")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    ++evaluations;
    const Image* image = inputs.at(0).GetImage();
    output_ = MakePixel(image != nullptr ? image->GetConstArray()[0] : 0.5F);
    const std::string how = inputs.at(GetInplugIdFromAttributeId(0)).GetText();
    const auto work = [this] {
      if (on_work) on_work();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    if (how == "rows") {
      ScEng::ParallelRows(5000, 1, [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) work();
      });
    } else if (how == "loop") {
      ScEng::ProgressPass pass(5000);
      for (int i = 0; i < 5000; ++i) {
        work();
        pass.Step();
      }
    } else if (how == "swallows") {
      try {
        for (int i = 0; i < 5000; ++i) {
          work();
          ScEng::PollCancellation();
        }
      } catch (const std::exception& error) {
        SetState(evaluation, State::kError, error.what());
      }
    }
  }
  std::function<void()> on_work;
};

class EngineTest : public testing::Test {
 protected:
  EngineTest() {
    evaluated.clear();
    UnrulyNode::throws_in.clear();
  }
  ~EngineTest() override { UnrulyNode::throws_in.clear(); }

  template <class NodeClass>
  NodeClass* Create(const std::string& label = "") {
    auto* node = static_cast<NodeClass*>(engine_.CreateNode(NodeClass::kType));
    if constexpr (std::is_base_of_v<ImageNode, NodeClass>) node->label = label;
    return node;
  }
  SourceNode* CreateSource(double level, const std::string& label = "") {
    auto* node = Create<SourceNode>(label);
    node->GetAttribute(std::size_t{0})->SetNumber(level, false);
    return node;
  }
  void Link(Node* from, const std::string& from_plug, Node* to, const std::string& to_plug, unsigned index = 0) {
    const ScEng::Status status = engine_.Connect(from, from_plug, 0, to, to_plug, index);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
  }
  std::string Refusal(Node* from, const std::string& from_plug, Node* to, const std::string& to_plug,
                      unsigned index = 0, unsigned from_index = 0) {
    const ScEng::Status status = engine_.Connect(from, from_plug, from_index, to, to_plug, index);
    EXPECT_TRUE(status.IsError());
    return status.GetMessage();
  }
  static float LevelOf(const Node* node, unsigned outplug = 0) {
    const Image* image = node->GetOutputImage(outplug);
    return image != nullptr ? image->GetConstArray()[0] : -1.0F;
  }

  Engine engine_{Testing::MakeCatalog<SourceNode, SumNode, ThrowingNode, TogetherNode, SeparateNode, FeedNode, SinkNode,
                                      UnrulyNode, LongNode>()};
};

// ---- Creating and deleting ----

TEST_F(EngineTest, CreatesNodesOfTheCatalog) {
  Node* node = engine_.CreateNode(SumNode::kType);
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->GetNodeType(), SumNode::kType);
  EXPECT_EQ(engine_.CreateNode({1, 2, 3}), nullptr);
  EXPECT_EQ(Engine().CreateNode(SumNode::kType), nullptr);
}

TEST_F(EngineTest, TellsNodesThatTheyComeAndGo) {
  SumNode::added = SumNode::removed = 0;
  {
    Engine engine(Testing::MakeCatalog<SumNode>());
    Node* first = engine.CreateNode(SumNode::kType);
    engine.CreateNode(SumNode::kType);
    EXPECT_EQ(SumNode::added, 2);
    EXPECT_TRUE(engine.DeleteNode(first));
    EXPECT_EQ(SumNode::removed, 1);
    engine.SetCatalog(nullptr);
    EXPECT_EQ(SumNode::removed, 2);
    EXPECT_EQ(engine.CreateNode(SumNode::kType), nullptr);
  }
  EXPECT_EQ(SumNode::removed, 2);
}

TEST_F(EngineTest, DeletesOnlyItsOwnNodes) {
  Engine other(Testing::MakeCatalog<SumNode>());
  Node* foreign = other.CreateNode(SumNode::kType);
  EXPECT_FALSE(engine_.DeleteNode(foreign));
  EXPECT_FALSE(engine_.DeleteNode(nullptr));
  EXPECT_TRUE(other.DeleteNode(foreign));
}

TEST_F(EngineTest, DeletingANodeRemovesItsConnections) {
  SourceNode* source = CreateSource(3.0);
  auto* sum = Create<SumNode>();
  auto* after = Create<SumNode>();
  Link(source, "image", sum, "first");
  Link(sum, "image", after, "first");
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 3.0F);
  EXPECT_TRUE(engine_.DeleteNode(sum));
  EXPECT_FALSE(engine_.IsConnected(after, "first"));
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 0.0F);
  Link(source, "image", after, "first");
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 3.0F);
}

TEST_F(EngineTest, ProcessHasAnEngineOfItsOwn) { EXPECT_EQ(Engine::Get(), Engine::Get()); }

// ---- Connecting ----

TEST_F(EngineTest, ConnectsAndDisconnects) {
  SourceNode* source = CreateSource(2.0);
  auto* sum = Create<SumNode>();
  EXPECT_FALSE(engine_.IsConnected(sum, "first"));
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, sum, "first", 0));
  EXPECT_TRUE(engine_.IsConnected(sum, "first"));
  EXPECT_FALSE(engine_.IsConnected(sum, "last"));
  EXPECT_FALSE(engine_.DisconnectNodes(source, "image", 0, sum, "last", 0));
  EXPECT_FALSE(engine_.DisconnectNodes(source, "image", 0, sum, "first", 1));
  EXPECT_FALSE(engine_.DisconnectNodes(source, "image", 1, sum, "first", 0));
  EXPECT_FALSE(engine_.DisconnectNodes(source, "picture", 0, sum, "first", 0));
  EXPECT_FALSE(engine_.DisconnectNodes(sum, "image", 0, sum, "first", 0));
  EXPECT_TRUE(engine_.DisconnectNodes(source, "image", 0, sum, "first", 0));
  EXPECT_FALSE(engine_.IsConnected(sum, "first"));
  EXPECT_FALSE(engine_.DisconnectNodes(source, "image", 0, sum, "first", 0));
}

TEST_F(EngineTest, TellsNodesWhatFeedsTheirAttributes) {
  class Watcher : public NodeObserver {
   public:
    void OnAttributeSourcesChanged(Node&) override { ++changes; }
    int changes = 0;
  };
  SourceNode* source = CreateSource(2.0);
  auto* sum = Create<SumNode>();
  auto* feed = Create<FeedNode>();
  feed->SetLabel("height");
  Watcher watcher;
  sum->AddObserver(&watcher);
  const unsigned amount = sum->GetAttribute(std::string("amount"))->GetId();
  EXPECT_EQ(sum->GetAttributeSource(amount), "");

  Link(source, "image", sum, "first");
  EXPECT_EQ(watcher.changes, 0);
  Link(feed, "number", sum, "amount");
  EXPECT_EQ(watcher.changes, 1);
  EXPECT_EQ(sum->GetAttributeSource(amount), "height.number");
  EXPECT_EQ(sum->GetAttributeSource(amount + 1), "");
  EXPECT_TRUE(engine_.DisconnectNodes(feed, "number", 0, sum, "amount", 0));
  EXPECT_EQ(watcher.changes, 2);
  EXPECT_EQ(sum->GetAttributeSource(amount), "");

  Link(feed, "number", sum, "amount");
  EXPECT_TRUE(engine_.DeleteNode(feed));
  EXPECT_EQ(sum->GetAttributeSource(amount), "");
  sum->RemoveObserver(&watcher);
}

TEST_F(EngineTest, RefusesPlugsThatDoNotExist) {
  SourceNode* source = CreateSource(2.0);
  auto* sum = Create<SumNode>();
  EXPECT_TRUE(Contains(Refusal(source, "picture", sum, "first"), "picture"));
  EXPECT_TRUE(Contains(Refusal(source, "image", sum, "second"), "second"));
  EXPECT_TRUE(Contains(Refusal(source, "image", sum, "first", 0, 1), "1"));
  Refusal(nullptr, "image", sum, "first");
  Engine other(Testing::MakeCatalog<SumNode>());
  Refusal(source, "image", other.CreateNode(SumNode::kType), "first");
}

TEST_F(EngineTest, RefusesPlugsOfDifferentKinds) {
  SourceNode* source = CreateSource(2.0);
  auto* feed = Create<FeedNode>();
  auto* sum = Create<SumNode>();
  const std::string image_to_number = Refusal(source, "image", sum, "amount");
  EXPECT_TRUE(Contains(image_to_number, "image"));
  EXPECT_TRUE(Contains(image_to_number, "number"));
  Refusal(feed, "number", sum, "first");
  Refusal(feed, "number", sum, "word");
  Refusal(feed, "number", sum, "on");
  Link(feed, "number", sum, "amount");
}

TEST_F(EngineTest, RefusesASecondConnectionToAPlugOrIndex) {
  SourceNode* first = CreateSource(1.0);
  SourceNode* second = CreateSource(2.0);
  auto* feed = Create<FeedNode>();
  auto* other_feed = Create<FeedNode>();
  auto* sum = Create<SumNode>();
  Link(first, "image", sum, "first");
  EXPECT_TRUE(Contains(Refusal(second, "image", sum, "first"), "first"));
  EXPECT_TRUE(Contains(Refusal(second, "image", sum, "last", 1), "last"));
  Link(first, "image", sum, "many", 3);
  EXPECT_TRUE(Contains(Refusal(second, "image", sum, "many", 3), "3"));
  Refusal(first, "image", sum, "many", 3);
  Link(first, "image", sum, "many", 4);
  Link(feed, "number", sum, "amount");
  Refusal(other_feed, "number", sum, "amount");
  Refusal(other_feed, "number", sum, "value");
}

TEST_F(EngineTest, RefusesCycles) {
  auto* a = Create<SumNode>();
  auto* b = Create<SumNode>();
  auto* c = Create<SumNode>();
  EXPECT_TRUE(Contains(Refusal(a, "image", a, "first"), "cycle"));
  Link(a, "image", b, "first");
  Link(b, "image", c, "many", 9);
  EXPECT_TRUE(Contains(Refusal(c, "image", a, "last"), "cycle"));
  Refusal(b, "image", a, "many", 0);
  // Without the connection in between it is none.
  EXPECT_TRUE(engine_.DisconnectNodes(b, "image", 0, c, "many", 9));
  Link(c, "image", a, "last");
}

// ---- What a node receives ----

TEST_F(EngineTest, InputsComeInPlugOrderThenAttributes) {
  auto* sum = Create<SumNode>();
  Link(CreateSource(1.0), "image", sum, "last");
  Link(CreateSource(2.0), "image", sum, "many", 9);
  Link(CreateSource(3.0), "image", sum, "many", 2);
  Link(CreateSource(4.0), "image", sum, "first");
  Link(CreateSource(5.0), "image", sum, "many", 5);
  engine_.Evaluate({{sum, 0}});
  // Indices 2, 5 and 9 take one entry each; the gaps between them take none.
  EXPECT_EQ(sum->levels, (std::vector<float>{4, 3, 5, 2, 1, -1, -1, -1}));
  ASSERT_EQ(sum->received.size(), 8U);
  EXPECT_EQ(sum->received[5].GetNumber(), 0.5);
  EXPECT_EQ(sum->received[6].GetText(), "b");
  EXPECT_TRUE(sum->received[7].GetFlag());
  EXPECT_EQ(sum->GetInplugIdFromRegularInputId(0), 0U);
  EXPECT_EQ(sum->GetInplugIdFromRegularInputId(1), 1U);
  EXPECT_EQ(sum->GetInplugIdFromRegularInputId(2), 4U);
  EXPECT_EQ(sum->GetInplugIdFromAttributeId(0), 5U);
  EXPECT_EQ(LevelOf(sum), 15.0F);
}

TEST_F(EngineTest, UnconnectedInputsTakeOneEmptyEntryEach) {
  auto* sum = Create<SumNode>();
  engine_.Evaluate({{sum, 0}});
  ASSERT_EQ(sum->received.size(), 6U);
  for (unsigned i = 0; i < 3; ++i) EXPECT_FALSE(sum->received[i].HasValue());
  for (unsigned i = 3; i < 6; ++i) EXPECT_TRUE(sum->received[i].HasValue());
  EXPECT_EQ(sum->GetInplugIdFromAttributeId(0), 3U);
}

TEST_F(EngineTest, EntriesFollowTheConnections) {
  auto* sum = Create<SumNode>();
  SourceNode* source = CreateSource(1.0);
  Link(source, "image", sum, "many", 0);
  Link(source, "image", sum, "many", 1);
  Link(source, "image", sum, "many", 2);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->received.size(), 8U);
  EXPECT_EQ(LevelOf(sum), 3.0F);
  engine_.DisconnectNodes(source, "image", 0, sum, "many", 1);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->received.size(), 7U);
  engine_.DisconnectNodes(source, "image", 0, sum, "many", 0);
  engine_.DisconnectNodes(source, "image", 0, sum, "many", 2);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->received.size(), 6U);
  EXPECT_EQ(sum->GetInplugIdFromAttributeId(0), 3U);
}

TEST_F(EngineTest, ConnectedInputWithoutImageIsAnEmptyEntry) {
  auto* sum = Create<SumNode>();
  SourceNode* off = CreateSource(1.0);
  off->SetEnabled(false);
  Link(off, "image", sum, "many", 0);
  Link(CreateSource(2.0), "image", sum, "many", 1);
  engine_.Evaluate({{sum, 0}});
  ASSERT_EQ(sum->received.size(), 7U);
  EXPECT_FALSE(sum->received[1].HasValue());
  EXPECT_EQ(sum->received[2].GetType(), 8U);
}

TEST_F(EngineTest, ConnectedAttributeCarriesWhatIsDelivered) {
  auto* sum = Create<SumNode>();
  auto* feed = Create<FeedNode>();
  Link(feed, "number", sum, "value");
  EXPECT_TRUE(engine_.IsConnected(sum, "amount"));
  engine_.Evaluate({{sum, 0}});
  // The attribute's bounds are 0 and 2.
  EXPECT_EQ(sum->received[3].GetNumber(), 7.0);
  EXPECT_EQ(sum->GetAttribute(std::string("amount"))->GetValue().GetNumber(), 0.5);
  feed->SetEnabled(false);
  engine_.Evaluate({{sum, 0}});
  EXPECT_FALSE(sum->received[3].HasValue());
  engine_.DisconnectNodes(feed, "number", 0, sum, "amount", 0);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->received[3].GetNumber(), 0.5);
}

// ---- Order ----

TEST_F(EngineTest, EvaluatesEachNodeOfADiamondOnceAndInOrder) {
  SourceNode* source = CreateSource(1.0, "source");
  auto* left = Create<SumNode>("left");
  auto* right = Create<SumNode>("right");
  auto* join = Create<SumNode>("join");
  Link(source, "image", left, "first");
  Link(source, "image", right, "first");
  Link(left, "image", join, "first");
  Link(right, "image", join, "last");
  Link(source, "image", join, "many", 0);
  engine_.Evaluate({{join, 0}});
  ASSERT_EQ(evaluated.size(), 4U);
  EXPECT_EQ(evaluated.front(), "source");
  EXPECT_EQ(evaluated.back(), "join");
  EXPECT_EQ(LevelOf(join), 3.0F);
}

TEST_F(EngineTest, EvaluatesOnlyWhatIsAskedFor) {
  SourceNode* source = CreateSource(1.0);
  auto* wanted = Create<SumNode>();
  auto* unwanted = Create<SumNode>();
  Link(source, "image", wanted, "first");
  Link(source, "image", unwanted, "first");
  engine_.Evaluate({{wanted, 0}});
  EXPECT_EQ(source->evaluations, 1);
  EXPECT_EQ(unwanted->evaluations, 0);
  engine_.Evaluate({{wanted, 0}, {unwanted, 0}, {wanted, 0}});
  EXPECT_EQ(source->evaluations, 1);
  EXPECT_EQ(wanted->evaluations, 1);
  EXPECT_EQ(unwanted->evaluations, 1);
  engine_.Evaluate({});
  engine_.Evaluate({{nullptr, 0}, {wanted, 5}});
  EXPECT_EQ(wanted->evaluations, 1);
}

TEST_F(EngineTest, FollowsAChainOfAHundredThousandNodes) {
  constexpr int kLength = 100000;
  Node* last = CreateSource(4.0);
  SumNode* end = nullptr;
  Node* const first = last;
  for (int i = 0; i < kLength; ++i) {
    end = Create<SumNode>();
    ASSERT_TRUE(engine_.ConnectNodes(last, "image", 0, end, "first", 0));
    last = end;
  }
  std::size_t done = 0;
  std::size_t total = 0;
  Engine::Options options;
  options.on_evaluated = [&](Node&, std::size_t d, std::size_t t) {
    done = d;
    total = t;
  };
  engine_.Evaluate({{end, 0}}, options);
  EXPECT_EQ(LevelOf(end), 4.0F);
  EXPECT_EQ(done, 100001U);
  EXPECT_EQ(total, 100001U);
  first->GetAttribute(std::size_t{0})->SetNumber(5.0, false);
  engine_.Evaluate({{end, 0}});
  EXPECT_EQ(LevelOf(end), 5.0F);
  EXPECT_EQ(end->evaluations, 2);
  Refusal(end, "image", end, "last");
}

TEST_F(EngineTest, ReportsProgress) {
  SourceNode* source = CreateSource(1.0);
  auto* sum = Create<SumNode>();
  Link(source, "image", sum, "first");
  std::vector<std::pair<std::size_t, std::size_t>> steps;
  std::vector<Node*> nodes;
  Engine::Options options;
  options.on_evaluated = [&](Node& node, std::size_t done, std::size_t total) {
    steps.emplace_back(done, total);
    nodes.push_back(&node);
  };
  engine_.Evaluate({{sum, 0}}, options);
  EXPECT_EQ(steps, (std::vector<std::pair<std::size_t, std::size_t>>{{1, 2}, {2, 2}}));
  EXPECT_EQ(nodes, (std::vector<Node*>{source, sum}));
}

TEST_F(EngineTest, EvaluatesNodesWithoutOutputs) {
  auto* sink = Create<SinkNode>();
  Link(CreateSource(6.0), "image", sink, "image");
  engine_.Evaluate({{sink, 0}});
  EXPECT_EQ(sink->taken, 6.0F);
  engine_.Evaluate({{sink, 0}});
  EXPECT_EQ(sink->evaluations, 1);
}

// ---- Caching ----

TEST_F(EngineTest, KeepsResultsUntilAnAttributeChanges) {
  SourceNode* source = CreateSource(1.0);
  SourceNode* other = CreateSource(10.0);
  auto* sum = Create<SumNode>();
  auto* after = Create<SumNode>();
  Link(source, "image", sum, "first");
  Link(other, "image", sum, "last");
  Link(sum, "image", after, "first");
  engine_.Evaluate({{after, 0}});
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(sum->evaluations, 1);
  EXPECT_EQ(after->evaluations, 1);
  source->GetAttribute(std::size_t{0})->SetNumber(2.0, false);
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(source->evaluations, 2);
  EXPECT_EQ(other->evaluations, 1);
  EXPECT_EQ(sum->evaluations, 2);
  EXPECT_EQ(after->evaluations, 2);
  EXPECT_EQ(LevelOf(after), 12.0F);
  after->GetAttribute(std::string("on"))->SetFlag(false, false);
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(sum->evaluations, 2);
  EXPECT_EQ(after->evaluations, 3);
}

TEST_F(EngineTest, ValuesThatAreRefusedChangeNothing) {
  SourceNode* source = CreateSource(1.0);
  engine_.Evaluate({{source, 0}});
  source->GetAttribute(std::size_t{0})->SetNumber(std::nan(""), false);
  source->GetAttribute(std::size_t{0})->SetFlag(true, false);
  engine_.Evaluate({{source, 0}});
  EXPECT_EQ(source->evaluations, 1);
}

TEST_F(EngineTest, ConnectionsAndSwitchesInvalidate) {
  SourceNode* source = CreateSource(1.0);
  auto* sum = Create<SumNode>();
  auto* after = Create<SumNode>();
  Link(sum, "image", after, "first");
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 0.0F);
  Link(source, "image", sum, "first");
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 1.0F);
  engine_.DisconnectNodes(source, "image", 0, sum, "first", 0);
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 0.0F);
  Link(source, "image", sum, "many", 3);
  source->SetEnabled(false);
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 0.0F);
  source->SetEnabled(true);
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 1.0F);
}

TEST_F(EngineTest, ChangesDuringARunOfOneBranchReachTheOther) {
  SourceNode* source = CreateSource(1.0);
  auto* left = Create<SumNode>();
  auto* right = Create<SumNode>();
  Link(source, "image", left, "first");
  Link(source, "image", right, "first");
  engine_.Evaluate({{left, 0}, {right, 0}});
  source->GetAttribute(std::size_t{0})->SetNumber(2.0, false);
  engine_.Evaluate({{left, 0}});
  EXPECT_EQ(LevelOf(left), 2.0F);
  // The source is up to date now, but what the other branch made of it is not.
  engine_.Evaluate({{right, 0}});
  EXPECT_EQ(LevelOf(right), 2.0F);
  EXPECT_EQ(source->evaluations, 2);
}

// ---- States ----

TEST_F(EngineTest, NodesAreReadyAfterwards) {
  auto* sum = Create<SumNode>();
  EXPECT_EQ(sum->GetState(), Node::State::kIdle);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->GetState(), Node::State::kReady);
  sum->warns = true;
  sum->NotifyChanged();
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->GetState(), Node::State::kWarning);
  EXPECT_EQ(sum->GetStateMessage(), "take care");
  sum->warns = false;
  sum->NotifyChanged();
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->GetState(), Node::State::kReady);
  EXPECT_EQ(sum->GetStateMessage(), "");
}

TEST_F(EngineTest, ExceptionsBecomeErrorStates) {
  const std::pair<const char*, const char*> kCases[] = {
      {"length", Testing::kOversize},
      {"memory", Testing::kOversize},
      {"runtime", "the kettle boiled over"},
  };
  for (const auto& [what, message] : kCases) {
    auto* node = Create<ThrowingNode>();
    node->GetAttribute(std::size_t{0})->SetChoice(what, false);
    engine_.Evaluate({{node, 0}});
    EXPECT_EQ(node->GetState(), Node::State::kError);
    EXPECT_EQ(node->GetStateMessage(), message);
    EXPECT_EQ(node->GetOutputImage(0), nullptr) << "a half-made result stays";
  }
  auto* node = Create<ThrowingNode>();
  node->GetAttribute(std::size_t{0})->SetChoice("number", false);
  engine_.Evaluate({{node, 0}});
  EXPECT_EQ(node->GetState(), Node::State::kError);
  EXPECT_NE(node->GetStateMessage(), "");
}

TEST_F(EngineTest, ErrorsStandUntilSomethingChanges) {
  auto* node = Create<ThrowingNode>();
  Attribute* what = node->GetAttribute(std::size_t{0});
  what->SetChoice("runtime", false);
  engine_.Evaluate({{node, 0}});
  engine_.Evaluate({{node, 0}});
  EXPECT_EQ(node->evaluations, 1);
  EXPECT_TRUE(node->IsInError());
  what->SetChoice("nothing", false);
  engine_.Evaluate({{node, 0}});
  EXPECT_EQ(node->evaluations, 2);
  EXPECT_EQ(node->GetState(), Node::State::kReady);
  EXPECT_EQ(LevelOf(node), 1.0F);
}

TEST_F(EngineTest, NodesAfterAFailedOneAreLeftOut) {
  for (const char* word : {"runtime", "state", "file"}) {
    auto* failing = Create<ThrowingNode>();
    auto* sum = Create<SumNode>();
    auto* after = Create<SumNode>();
    auto* beside = Create<SumNode>();
    Link(failing, "image", sum, "first");
    Link(sum, "image", after, "first");
    Link(CreateSource(8.0), "image", beside, "first");
    engine_.Evaluate({{after, 0}, {beside, 0}});
    EXPECT_EQ(LevelOf(after), 1.0F);

    failing->GetAttribute(std::size_t{0})->SetChoice(word, false);
    engine_.Evaluate({{after, 0}, {beside, 0}});
    EXPECT_TRUE(failing->IsInError());
    EXPECT_FALSE(engine_.IsBlocked(failing));
    EXPECT_EQ(sum->evaluations, 1);
    EXPECT_EQ(after->evaluations, 1);
    EXPECT_TRUE(engine_.IsBlocked(sum));
    EXPECT_TRUE(engine_.IsBlocked(after));
    EXPECT_FALSE(sum->IsInError());
    EXPECT_EQ(sum->GetOutputImage(0), nullptr);
    EXPECT_EQ(after->GetOutputImage(0), nullptr);
    EXPECT_FALSE(engine_.IsBlocked(beside));
    EXPECT_EQ(LevelOf(beside), 8.0F);

    // One that joins later is left out as well.
    auto* late = Create<SumNode>();
    Link(failing, "image", late, "last");
    engine_.Evaluate({{late, 0}});
    EXPECT_TRUE(engine_.IsBlocked(late));
    EXPECT_EQ(late->evaluations, 0);

    failing->GetAttribute(std::size_t{0})->SetChoice("nothing", false);
    engine_.Evaluate({{after, 0}});
    EXPECT_FALSE(engine_.IsBlocked(sum));
    EXPECT_FALSE(engine_.IsBlocked(after));
    EXPECT_EQ(LevelOf(after), 1.0F);
  }
  EXPECT_FALSE(engine_.IsBlocked(nullptr));
}

// ---- Several outputs ----

TEST_F(EngineTest, OutputsMadeTogetherAreMadeOnce) {
  auto* together = Create<TogetherNode>();
  SourceNode* source = CreateSource(1.0);
  auto* sum = Create<SumNode>();
  Link(source, "image", together, "image");
  Link(together, "x", sum, "first");
  Link(together, "y", sum, "last");
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(together->evaluations, 1);
  EXPECT_EQ(LevelOf(sum), 32.0F);
  engine_.Evaluate({{together, 0}, {together, 1}});
  EXPECT_EQ(together->evaluations, 1);
  source->GetAttribute(std::size_t{0})->SetNumber(2.0, false);
  engine_.Evaluate({{together, 1}});
  EXPECT_EQ(together->evaluations, 2);
  engine_.Evaluate({{together, 0}});
  EXPECT_EQ(together->evaluations, 2);
  EXPECT_EQ(LevelOf(together, 0), 12.0F);
  EXPECT_EQ(LevelOf(together, 1), 22.0F);
}

TEST_F(EngineTest, OutputsMadeSeparatelyAreMadeOnRequest) {
  auto* separate = Create<SeparateNode>();
  engine_.Evaluate({{separate, 1}});
  EXPECT_EQ(separate->asked, (std::vector<unsigned>{1}));
  EXPECT_EQ(separate->GetOutputImage(0), nullptr);
  engine_.Evaluate({{separate, 0}, {separate, 1}});
  EXPECT_EQ(separate->asked, (std::vector<unsigned>{1, 0}));
  EXPECT_EQ(LevelOf(separate, 0), 10.0F);
  EXPECT_EQ(LevelOf(separate, 1), 20.0F);
  engine_.Evaluate({{separate, 0}, {separate, 1}});
  EXPECT_EQ(separate->asked.size(), 2U);
}

TEST_F(EngineTest, OldOutputsDoNotPassForNewOnes) {
  auto* separate = Create<SeparateNode>();
  engine_.Evaluate({{separate, 0}, {separate, 1}});
  separate->GetAttribute(std::size_t{0})->SetNumber(5.0, false);
  engine_.Evaluate({{separate, 0}});
  EXPECT_EQ(LevelOf(separate, 0), 15.0F);
  engine_.Evaluate({{separate, 1}});
  EXPECT_EQ(LevelOf(separate, 1), 25.0F);
}

TEST_F(EngineTest, OutputsWantedByDifferentNodesAreAskedInOneGo) {
  auto* separate = Create<SeparateNode>();
  auto* x = Create<SumNode>();
  auto* y = Create<SumNode>();
  Link(separate, "x", x, "first");
  Link(separate, "y", y, "first");
  engine_.Evaluate({{x, 0}, {y, 0}});
  EXPECT_EQ(separate->asked, (std::vector<unsigned>{0, 1}));
  EXPECT_EQ(LevelOf(x), 10.0F);
  EXPECT_EQ(LevelOf(y), 20.0F);
}

// ---- Release ----

TEST_F(EngineTest, ReleasesResultsAsSoonAsNothingNeedsThem) {
  SourceNode* source = CreateSource(1.0, "source");
  auto* near = Create<SumNode>("near");
  auto* far = Create<SumNode>("far");
  Link(source, "image", near, "first");
  Link(source, "image", far, "first");
  Link(near, "image", far, "last");
  std::vector<std::vector<bool>> held;
  float result = 0.0F;
  Engine::Options options;
  options.release_results = true;
  options.on_evaluated = [&](Node& node, std::size_t, std::size_t) {
    held.push_back(
        {source->GetOutputImage(0) != nullptr, near->GetOutputImage(0) != nullptr, far->GetOutputImage(0) != nullptr});
    if (&node == far) result = LevelOf(far);
  };
  engine_.Evaluate({{far, 0}}, options);
  EXPECT_EQ(result, 2.0F);
  // The source is needed until the last node is done; the result can be read while it is reported.
  EXPECT_EQ(held, (std::vector<std::vector<bool>>{{true, false, false}, {true, true, false}, {false, false, true}}));
  EXPECT_EQ(far->GetOutputImage(0), nullptr);
  EXPECT_EQ(source->events, (std::vector<std::uint32_t>{11}));
  EXPECT_EQ(near->events, (std::vector<std::uint32_t>{11}));
  EXPECT_EQ(far->events, (std::vector<std::uint32_t>{11}));

  // What has been released is made again.
  engine_.Evaluate({{far, 0}});
  EXPECT_EQ(LevelOf(far), 2.0F);
  EXPECT_EQ(source->evaluations, 2);
}

TEST_F(EngineTest, ReleasesARequestedResultAfterItsLastUse) {
  SourceNode* source = CreateSource(3.0);
  auto* sum = Create<SumNode>();
  Link(source, "image", sum, "first");
  bool source_was_there = false;
  Engine::Options options;
  options.release_results = true;
  options.on_evaluated = [&](Node& node, std::size_t, std::size_t) {
    if (&node == source) source_was_there = source->GetOutputImage(0) != nullptr;
  };
  engine_.Evaluate({{source, 0}, {source, 0}, {sum, 0}}, options);
  EXPECT_TRUE(source_was_there);
  EXPECT_EQ(sum->levels[0], 3.0F);
  EXPECT_EQ(source->GetOutputImage(0), nullptr);
}

TEST_F(EngineTest, KeepsResultsUnlessToldToRelease) {
  SourceNode* source = CreateSource(3.0);
  auto* sum = Create<SumNode>();
  Link(source, "image", sum, "first");
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(LevelOf(source), 3.0F);
  EXPECT_TRUE(source->events.empty());
}

TEST_F(EngineTest, ReleasesThroughAFailure) {
  SourceNode* source = CreateSource(3.0);
  auto* failing = Create<ThrowingNode>();
  auto* sum = Create<SumNode>();
  Link(source, "image", failing, "image");
  Link(failing, "image", sum, "first");
  failing->GetAttribute(std::size_t{0})->SetChoice("runtime", false);
  Engine::Options options;
  options.release_results = true;
  engine_.Evaluate({{sum, 0}}, options);
  EXPECT_EQ(source->GetOutputImage(0), nullptr);
  EXPECT_TRUE(failing->IsInError());
  failing->GetAttribute(std::size_t{0})->SetChoice("nothing", false);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(LevelOf(sum), 1.0F);
}

// ---- Libraries that throw ----

TEST_F(EngineTest, ANodeThatThrowsWhenItJoinsIsNotMade) {
  UnrulyNode::throws_in = "added";
  ScEng::Status status;
  EXPECT_EQ(engine_.CreateNode(UnrulyNode::kType, status), nullptr);
  EXPECT_EQ(status.GetMessage(), "node \"Test UnrulyNode\": OnAdded threw an exception: the lid came off");
  EXPECT_TRUE(engine_.GetNodes().empty());
  EXPECT_EQ(engine_.CreateNode({1, 2, 3}, status), nullptr);
  EXPECT_EQ(status.GetMessage(), "the catalogue has no node type 1, 2, 3");
}

TEST_F(EngineTest, ANodeThatThrowsWhenItLeavesIsGoneAllTheSame) {
  std::vector<std::string> logged;
  Log::SetSink([&](Log::Level, const std::string& text) { logged.push_back(text); });
  auto* node = Create<UnrulyNode>();
  UnrulyNode::throws_in = "removed";
  EXPECT_TRUE(engine_.DeleteNode(node));
  Log::SetSink(nullptr);
  EXPECT_TRUE(engine_.GetNodes().empty());
  EXPECT_EQ(logged, (std::vector<std::string>{"Unruly: OnRemoved threw an exception: the lid came off"}));
}

TEST_F(EngineTest, ExceptionsOfOtherOperationsBecomeErrorStates) {
  const std::pair<const char*, const char*> kCases[] = {
      {"event", "OnProcessEvent threw an exception: the lid came off"},
      {"image", "GetOutputImage threw an exception: the lid came off"},
      {"value", "GetOutputValue threw an exception: the lid came off"},
  };
  for (const auto& [where, message] : kCases) {
    auto* unruly = Create<UnrulyNode>();
    auto* sum = Create<SumNode>();
    Link(unruly, "image", sum, "first");
    Link(unruly, "number", sum, "amount");
    UnrulyNode::throws_in = where;
    EXPECT_EQ(engine_.Evaluate({{sum, 0}}), Engine::Outcome::kComplete);
    UnrulyNode::throws_in.clear();
    EXPECT_EQ(unruly->GetState(), Node::State::kError) << where;
    EXPECT_EQ(unruly->GetStateMessage(), message);
    EXPECT_TRUE(engine_.IsBlocked(sum)) << where;
    EXPECT_EQ(sum->evaluations, 0) << where;
    unruly->NotifyChanged();
    engine_.Evaluate({{sum, 0}});
    EXPECT_FALSE(unruly->IsInError());
    EXPECT_EQ(sum->evaluations, 1);
  }
}

TEST_F(EngineTest, ExceptionsOfNamesLeaveTheHostOnItsFeet) {
  auto* unruly = Create<UnrulyNode>();
  auto* sum = Create<SumNode>();
  UnrulyNode::throws_in = "name";
  EXPECT_EQ(unruly->GetLabel(), "a node");
  EXPECT_TRUE(unruly->IsInError());
  EXPECT_EQ(Refusal(unruly, "picture", sum, "first"), "a node has no output \"picture\"");
  Link(unruly, "number", sum, "amount");
  EXPECT_EQ(sum->GetAttributeSource(0), "a node.number");
  UnrulyNode::throws_in = "translate";
  EXPECT_EQ(unruly->GetInplugIndex("no such plug"), -1);
  EXPECT_EQ(unruly->GetStateMessage(), "TranslateAttributeName threw an exception: the lid came off");
  EXPECT_NE(unruly->GetAttribute(std::string("where")), nullptr);
}

// ---- Images in place of outputs ----

TEST_F(EngineTest, AnImageStandsInForAnOutput) {
  SourceNode* source = CreateSource(1.0);
  auto* sum = Create<SumNode>();
  auto* after = Create<SumNode>();
  Link(source, "image", sum, "first");
  Link(sum, "image", after, "first");
  EXPECT_TRUE(engine_.SetOutputOverride(sum, 0, MakePixel(7.0F)));
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 7.0F);
  EXPECT_EQ(source->evaluations, 0);
  EXPECT_EQ(sum->evaluations, 0);
  EXPECT_EQ(engine_.GetOutputImage(sum, 0)->GetConstArray()[0], 7.0F);
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(sum->evaluations, 0);

  EXPECT_TRUE(engine_.SetOutputOverride(sum, 0, MakePixel(8.0F)));
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 8.0F);
  EXPECT_TRUE(engine_.SetOutputOverride(sum, 0, nullptr));
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 1.0F);
  EXPECT_EQ(sum->evaluations, 1);
  EXPECT_EQ(engine_.GetOutputImage(sum, 0), sum->GetOutputImage(0));
}

TEST_F(EngineTest, OnlyTheOutputThatAnImageStandsInForIsLeftOut) {
  auto* separate = Create<SeparateNode>();
  auto* sum = Create<SumNode>();
  Link(separate, "x", sum, "first");
  Link(separate, "y", sum, "last");
  engine_.SetOutputOverride(separate, 0, MakePixel(100.0F));
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(separate->asked, (std::vector<unsigned>{1}));
  EXPECT_EQ(LevelOf(sum), 120.0F);
  // What depends on the other output alone is still up to date.
  auto* other = Create<SumNode>();
  Link(separate, "y", other, "first");
  engine_.Evaluate({{other, 0}});
  engine_.SetOutputOverride(separate, 0, MakePixel(200.0F));
  engine_.Evaluate({{other, 0}, {sum, 0}});
  EXPECT_EQ(other->evaluations, 1);
  EXPECT_EQ(LevelOf(sum), 220.0F);
}

TEST_F(EngineTest, AnImageStandsInForAnOutputThatFailed) {
  auto* failing = Create<ThrowingNode>();
  auto* sum = Create<SumNode>();
  Link(failing, "image", sum, "first");
  failing->GetAttribute(std::size_t{0})->SetChoice("runtime", false);
  engine_.Evaluate({{sum, 0}});
  EXPECT_TRUE(engine_.IsBlocked(sum));
  engine_.SetOutputOverride(failing, 0, MakePixel(4.0F));
  engine_.Evaluate({{sum, 0}});
  EXPECT_FALSE(engine_.IsBlocked(sum));
  EXPECT_EQ(LevelOf(sum), 4.0F);
}

TEST_F(EngineTest, ImagesInThePlaceOfOutputsSurviveTheRelease) {
  SourceNode* source = CreateSource(1.0);
  auto* sum = Create<SumNode>();
  Link(source, "image", sum, "first");
  const RefPtr<Image> image = MakePixel(9.0F);
  engine_.SetOutputOverride(source, 0, image);
  EXPECT_EQ(image->GetRefCount(), 2U);
  float result = 0.0F;
  Engine::Options options;
  options.release_results = true;
  options.on_evaluated = [&](Node&, std::size_t, std::size_t) { result = LevelOf(sum); };
  engine_.Evaluate({{sum, 0}}, options);
  EXPECT_EQ(result, 9.0F);
  EXPECT_EQ(engine_.GetOutputImage(source, 0), image.Get());
  EXPECT_TRUE(source->events.empty());
  engine_.DeleteNode(source);
  EXPECT_EQ(image->GetRefCount(), 1U);
}

TEST_F(EngineTest, RefusesImagesForWhatIsNoImageOutput) {
  auto* feed = Create<FeedNode>();
  Engine other(Testing::MakeCatalog<SourceNode>());
  EXPECT_FALSE(engine_.SetOutputOverride(feed, 0, MakePixel(1.0F)));
  EXPECT_FALSE(engine_.SetOutputOverride(CreateSource(1.0), 1, MakePixel(1.0F)));
  EXPECT_FALSE(engine_.SetOutputOverride(nullptr, 0, MakePixel(1.0F)));
  EXPECT_FALSE(engine_.SetOutputOverride(other.CreateNode(SourceNode::kType), 0, MakePixel(1.0F)));
}

// ---- Cancellation, progress, statistics ----

TEST_F(EngineTest, StopsWithinANodeAndMakesWhatIsMissingNextTime) {
  for (const char* how : {"rows", "loop", "swallows"}) {
    SourceNode* source = CreateSource(3.0);
    auto* node = Create<LongNode>();
    auto* after = Create<SumNode>();
    Link(source, "image", node, "image");
    Link(node, "image", after, "first");
    engine_.Evaluate({{after, 0}});
    EXPECT_EQ(LevelOf(after), 3.0F);

    ScEng::Cancellation cancellation;
    Engine::Options options;
    options.cancellation = &cancellation;
    node->GetAttribute(std::size_t{0})->SetChoice(how, false);
    source->GetAttribute(std::size_t{0})->SetNumber(4.0, false);
    std::thread other;
    node->on_work = [&, once = std::make_shared<std::once_flag>()] {
      std::call_once(*once, [&] {
        other = std::thread([&cancellation] {
          std::this_thread::sleep_for(std::chrono::milliseconds(10));
          cancellation.Request();
        });
      });
    };
    EXPECT_EQ(engine_.Evaluate({{after, 0}}, options), Engine::Outcome::kCanceled) << how;
    other.join();
    EXPECT_EQ(source->evaluations, 2);
    EXPECT_EQ(LevelOf(source), 4.0F);
    EXPECT_EQ(node->evaluations, 2);
    EXPECT_EQ(node->GetOutputImage(0), nullptr) << "a half-made result stays";
    EXPECT_EQ(node->GetState(), Node::State::kIdle);
    EXPECT_EQ(after->evaluations, 1);
    EXPECT_EQ(engine_.GetStatistics(node).evaluations, 1U);

    // As long as the request stands nothing is begun.
    EXPECT_EQ(engine_.Evaluate({{after, 0}}, options), Engine::Outcome::kCanceled);
    EXPECT_EQ(node->evaluations, 2);
    cancellation.Reset();
    node->GetAttribute(std::size_t{0})->SetChoice("quick", false);
    EXPECT_EQ(engine_.Evaluate({{after, 0}}, options), Engine::Outcome::kComplete);
    EXPECT_EQ(source->evaluations, 2);
    EXPECT_EQ(LevelOf(after), 4.0F) << how;
  }
}

TEST_F(EngineTest, WhatDependsOnAStoppedNodeIsMadeAnewAfterAChange) {
  SourceNode* source = CreateSource(3.0);
  auto* node = Create<LongNode>();
  auto* after = Create<SumNode>();
  Link(source, "image", node, "image");
  Link(node, "image", after, "first");
  Engine::Options releasing;
  releasing.release_results = true;
  engine_.Evaluate({{node, 0}}, releasing);
  engine_.Evaluate({{after, 0}});
  // The node alone is asked for, for its other output, and stopped: it is not dirty, and nor is what depends on it.
  ScEng::Cancellation cancellation;
  Engine::Options options;
  options.cancellation = &cancellation;
  engine_.Evaluate({{node, 0}}, releasing);
  node->on_work = [&] { cancellation.Request(); };
  node->GetAttribute(std::size_t{0})->SetChoice("loop", false);
  EXPECT_EQ(engine_.Evaluate({{node, 0}}, options), Engine::Outcome::kCanceled);
  node->on_work = nullptr;
  node->GetAttribute(std::size_t{0})->SetChoice("quick", false);
  source->GetAttribute(std::size_t{0})->SetNumber(5.0, false);
  engine_.Evaluate({{after, 0}});
  EXPECT_EQ(LevelOf(after), 5.0F);
}

TEST_F(EngineTest, ReleasesWhatWaitedForANodeThatWasStopped) {
  SourceNode* source = CreateSource(3.0);
  auto* node = Create<LongNode>();
  auto* sum = Create<SumNode>();
  Link(source, "image", node, "image");
  Link(source, "image", sum, "first");
  Link(node, "image", sum, "last");
  node->GetAttribute(std::size_t{0})->SetChoice("loop", false);
  ScEng::Cancellation cancellation;
  node->on_work = [&] { cancellation.Request(); };
  Engine::Options options;
  options.release_results = true;
  options.cancellation = &cancellation;
  EXPECT_EQ(engine_.Evaluate({{sum, 0}}, options), Engine::Outcome::kCanceled);
  EXPECT_EQ(source->GetOutputImage(0), nullptr);
}

TEST_F(EngineTest, ReportsProgressWithinNodes) {
  auto* node = Create<LongNode>();
  auto* sum = Create<SumNode>();
  Link(node, "image", sum, "first");
  node->GetAttribute(std::size_t{0})->SetChoice("rows", false);
  const std::thread::id here = std::this_thread::get_id();
  ScEng::Cancellation cancellation;
  std::vector<double> fractions;
  Engine::Options options;
  options.cancellation = &cancellation;
  options.on_progress = [&](Node& working, double fraction) {
    EXPECT_EQ(&working, node);
    EXPECT_EQ(std::this_thread::get_id(), here);
    EXPECT_GT(fraction, fractions.empty() ? 0.0 : fractions.back());
    EXPECT_LE(fraction, 1.0);
    fractions.push_back(fraction);
    if (fractions.size() == 5) cancellation.Request();
  };
  EXPECT_EQ(engine_.Evaluate({{sum, 0}}, options), Engine::Outcome::kCanceled);
  // A range that was under way when the request came still counts.
  EXPECT_GE(fractions.size(), 5U);
}

TEST_F(EngineTest, CountsTimeAndBytes) {
  auto* node = Create<LongNode>();
  EXPECT_EQ(engine_.GetStatistics(node).evaluations, 0U);
  node->GetAttribute(std::size_t{0})->SetChoice("quick", false);
  engine_.Evaluate({{node, 0}});
  const Engine::NodeStatistics quick = engine_.GetStatistics(node);
  EXPECT_EQ(quick.evaluations, 1U);
  EXPECT_EQ(quick.bytes_made, sizeof(float));
  EXPECT_EQ(quick.bytes_held, sizeof(float));
  auto* together = Create<TogetherNode>();
  Engine::Options options;
  options.release_results = true;
  engine_.Evaluate({{together, 0}}, options);
  EXPECT_EQ(engine_.GetStatistics(together).bytes_made, 2 * sizeof(float));
  EXPECT_EQ(engine_.GetStatistics(together).bytes_held, 0U);
  EXPECT_EQ(engine_.GetStatistics(nullptr).evaluations, 0U);
}

TEST_F(EngineTest, TellsWhenANodeWasEvaluatedAndWhatItMoved) {
  SourceNode* source = CreateSource(3.0);
  auto* sum = Create<SumNode>();
  Link(source, "image", sum, "first");
  Link(source, "image", sum, "many");
  struct Told {
    Node* node;
    Engine::NodeTiming timing;
  };
  std::vector<Told> told;
  Engine::Options options;
  options.on_timed = [&](Node& node, const Engine::NodeTiming& timing) { told.push_back({&node, timing}); };
  std::size_t told_before_evaluated = 0;
  options.on_evaluated = [&](Node&, std::size_t done, std::size_t) {
    if (told.size() == done) ++told_before_evaluated;
  };
  const auto before = std::chrono::steady_clock::now();
  engine_.Evaluate({{sum, 0}}, options);
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told_before_evaluated, 2U);
  EXPECT_EQ(told[0].node, source);
  EXPECT_EQ(told[0].timing.bytes_read, 0U);
  EXPECT_EQ(told[0].timing.bytes_made, sizeof(float));
  EXPECT_EQ(told[1].node, sum);
  // One image at two inputs counts once.
  EXPECT_EQ(told[1].timing.bytes_read, sizeof(float));
  EXPECT_EQ(told[1].timing.bytes_made, sizeof(float));
  EXPECT_LE(before, told[0].timing.begin);
  EXPECT_LE(told[0].timing.begin, told[0].timing.end);
  EXPECT_LE(told[0].timing.end, told[1].timing.begin);
  EXPECT_LE(told[1].timing.end, std::chrono::steady_clock::now());
  EXPECT_EQ(std::chrono::duration<double>(told[1].timing.end - told[1].timing.begin).count(),
            engine_.GetStatistics(sum).seconds);

  // What is up to date is not evaluated, so there is nothing to tell.
  told.clear();
  engine_.Evaluate({{sum, 0}}, options);
  EXPECT_TRUE(told.empty());
}

// ---- Large graphs ----

TEST_F(EngineTest, TakesAHundredThousandConnectionsAtOneInputInAnyOrder) {
  constexpr unsigned kCount = 100000;
  auto* sum = Create<SumNode>();
  std::vector<Node*> sources;
  for (unsigned i = 0; i < kCount; ++i) sources.push_back(CreateSource(i == 70000 ? 2.0 : 0.0));
  for (unsigned i = kCount; i-- > 0;) ASSERT_TRUE(engine_.ConnectNodes(sources[i], "image", 0, sum, "many", i));
  EXPECT_TRUE(engine_.IsConnected(sum, "many"));
  EXPECT_FALSE(engine_.ConnectNodes(sources[1], "image", 0, sum, "many", 5));
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(LevelOf(sum), 2.0F);
  EXPECT_EQ(sum->levels.at(70001), 2.0F);
  EXPECT_TRUE(engine_.DisconnectNodes(sources[70000], "image", 0, sum, "many", 70000));
  engine_.Evaluate({{sum, 0}});
  EXPECT_EQ(LevelOf(sum), 0.0F);
  for (Node* source : sources) ASSERT_TRUE(engine_.DeleteNode(source));
  EXPECT_FALSE(engine_.IsConnected(sum, "many"));
}

TEST_F(EngineTest, TakesAChainListedInReverse) {
  constexpr int kLength = 30000;
  std::vector<Node*> chain{CreateSource(4.0)};
  for (int i = 0; i < kLength; ++i) chain.push_back(Create<SumNode>());
  for (int i = kLength; i-- > 0;) {
    ASSERT_TRUE(engine_.ConnectNodes(chain[static_cast<std::size_t>(i)], "image", 0,
                                     chain[static_cast<std::size_t>(i) + 1], "first", 0));
  }
  EXPECT_EQ(Refusal(chain.back(), "image", chain[1], "last"), "it would close a cycle");
  engine_.Evaluate({{chain.back(), 0}});
  EXPECT_EQ(LevelOf(chain.back()), 4.0F);
}

}  // namespace
