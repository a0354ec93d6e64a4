// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ImageValueOperationNodes.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/Engine.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeLibrary.h"
#include "Tests/Support/ValueTesting.h"
#include "Tests/Support/WatchedMemory.h"
#include "Value/Nodes/Arithmetic/ArithmeticNodes.h"
#include "Value/Operations/ArithmeticOperations.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::IsCopyOf;
using Testing::IsInErrorState;
using Testing::MakeInputs;
using Testing::MakeNode;
using Testing::MakeRow;
using Testing::NodeRef;

/// Follows one operation from here on.
template <class Operation>
Operation* Watch(Operation* operation) {
  Testing::WatchMemory(operation);
  return operation;
}

/// Fails at every sample.
class ThrowingOperation : public ValueOperation {
 public:
  float Compute(float, float) override { throw std::runtime_error("no result"); }
  float Compute(float) override { throw std::runtime_error("no result"); }
};

/// Distinguishes the two forms and the order of the images: 10 * first + second of two, value + 1000 of one.
class MarkingOperation : public ValueOperation {
 public:
  float Compute(float first, float second) override { return 10.0F * first + second; }
  float Compute(float value) override { return value + 1000.0F; }
};

enum class Makes { kMarking, kThrowing, kNothing };

/// A node type of each base that counts and follows its operations.
template <class Base>
class TestNode : public Base {
 public:
  TestNode() { this->UpdateInplugsAndOutplugs(); }
  [[nodiscard]] NodeType GetNodeType() const override { return {99, 1, 1}; }
  [[nodiscard]] std::string GetName() const override { return "Test"; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override {
    ++operations_made;
    received = inputs.size();
    output_was_released = this->GetOutputImage(0) == nullptr;
    switch (makes) {
      case Makes::kMarking: return Watch(new MarkingOperation);
      case Makes::kThrowing: return Watch(new ThrowingOperation);
      case Makes::kNothing: break;
    }
    return nullptr;
  }

  Makes makes = Makes::kMarking;
  int operations_made = 0;
  std::size_t received = 0;
  bool output_was_released = false;
};

using OneNode = TestNode<ImageValueOperationOneNode>;
using TwoNode = TestNode<ImageValueOperationTwoNode>;
using ManyNode = TestNode<ImageValueOperationManyNode>;

void ExpectImagePlug(const PlugRecord& plug, const std::string& name, std::uint32_t connections) {
  EXPECT_EQ(plug.first_number, 0U);
  EXPECT_EQ(plug.type, 8U);
  EXPECT_EQ(plug.name, name);
  EXPECT_EQ(plug.second_number, 0U);
  EXPECT_EQ(plug.connections, connections);
}

// ---- What the bases declare ----

TEST(OperationNodeBases, DeclareTheirPlugs) {
  const auto one = MakeNode<OneNode>();
  ASSERT_EQ(one->GetInplugs().size(), 1U);
  ExpectImagePlug(one->GetInplugs()[0], "image", 1);
  ASSERT_EQ(one->GetOutplugs().size(), 1U);
  ExpectImagePlug(one->GetOutplugs()[0], "image", 0);

  const auto two = MakeNode<TwoNode>();
  ASSERT_EQ(two->GetInplugs().size(), 2U);
  ExpectImagePlug(two->GetInplugs()[0], "image_a", 1);
  ExpectImagePlug(two->GetInplugs()[1], "image_b", 1);
  ASSERT_EQ(two->GetOutplugs().size(), 1U);
  ExpectImagePlug(two->GetOutplugs()[0], "image", 0);

  const auto many = MakeNode<ManyNode>();
  EXPECT_EQ(many->GetNumRegularInputs(), 1U);
  ASSERT_EQ(many->GetInplugs().size(), 2U);
  ExpectImagePlug(many->GetInplugs()[0], "image", PlugRecord::kAnyNumber);
  EXPECT_EQ(many->GetInplugs()[1].name, "constant");
  ASSERT_EQ(many->GetOutplugs().size(), 1U);
  ExpectImagePlug(many->GetOutplugs()[0], "image", 0);
}

TEST(OperationNodeBases, OnlyTheManyBaseHasAnAttribute) {
  EXPECT_EQ(MakeNode<OneNode>()->GetNumAttributes(), 0U);
  EXPECT_EQ(MakeNode<TwoNode>()->GetNumAttributes(), 0U);
  const auto many = MakeNode<ManyNode>();
  ASSERT_EQ(many->GetNumAttributes(), 1U);
  const Attribute& constant = *many->GetAttribute(std::size_t{0});
  EXPECT_EQ(constant.GetId(), 0U);
  EXPECT_EQ(constant.GetName(), "constant");
  EXPECT_EQ(constant.GetKind(), Attribute::Kind::kNumber);
  EXPECT_EQ(constant.GetDefault().GetNumber(), 0.0);
  EXPECT_EQ(constant.GetValue().GetNumber(), 0.0);
  EXPECT_EQ(constant.GetLowest(), -1e9);
  EXPECT_EQ(constant.GetHighest(), 1e9);
  // The float nearest 0.01, written out.
  EXPECT_EQ(constant.GetStep(), 0.00999999977648258209228515625);
  EXPECT_EQ(constant.GetDecimals(), 3);
  EXPECT_EQ(constant.GetRefCount(), 1U);
}

TEST(OperationNodeBases, OnlyTheManyBaseKnowsAnOldName) {
  const auto many = MakeNode<ManyNode>();
  for (const unsigned version : {0U, 1U, 7U}) {
    EXPECT_EQ(many->TranslateAttributeName(version, "value"), "constant");
    for (const char* name : {"constant", "values", "valu", "Value", "value ", ""}) {
      EXPECT_EQ(many->TranslateAttributeName(version, name), name);
    }
  }
  EXPECT_EQ(MakeNode<OneNode>()->TranslateAttributeName(0, "value"), "value");
  EXPECT_EQ(MakeNode<TwoNode>()->TranslateAttributeName(0, "value"), "value");
}

// ---- What all three do ----

template <class NodeClass>
class OperationNodeBase : public testing::Test {
 public:
  /// Images for a node that applies its operation: two for the base that needs them.
  std::vector<const Image*> GetEnough() {
    if (std::is_same_v<NodeClass, TwoNode>) return {first_.Get(), second_.Get()};
    return {first_.Get()};
  }
  std::vector<float> GetExpected() {
    if (std::is_same_v<NodeClass, TwoNode>) return {13.0F, 24.0F};
    return {1001.0F, 1002.0F};
  }

  ImageRef first_ = MakeRow({1.0F, 2.0F});
  ImageRef second_ = MakeRow({3.0F, 4.0F});
  NodeRef<NodeClass> node_ = MakeNode<NodeClass>();
};

using Bases = testing::Types<OneNode, TwoNode, ManyNode>;
TYPED_TEST_SUITE(OperationNodeBase, Bases);

TYPED_TEST(OperationNodeBase, CachesTheResultWithOneReference) {
  Image* output = Testing::Evaluate(*this->node_, this->GetEnough());
  ASSERT_TRUE(HoldsSamples(output, this->GetExpected()));
  EXPECT_EQ(output->GetRefCount(), 1U);
  EXPECT_EQ(this->node_->GetState(), Node::State::kIdle);
  EXPECT_EQ(this->first_->GetRefCount(), 1U);
}

TYPED_TEST(OperationNodeBase, MakesOneOperationAndFreesIt) {
  Testing::Evaluate(*this->node_, this->GetEnough());
  EXPECT_EQ(this->node_->operations_made, 1);
  EXPECT_EQ(this->node_->received, this->node_->GetInplugs().size());
  EXPECT_EQ(Testing::GetTimesFreed(), 1);
}

TYPED_TEST(OperationNodeBase, ReleasesTheOldOutputBeforeItComputes) {
  const ImageRef old(Testing::Evaluate(*this->node_, this->GetEnough()));
  ASSERT_EQ(old->GetRefCount(), 2U);
  Image* output = Testing::Evaluate(*this->node_, this->GetEnough());
  EXPECT_TRUE(this->node_->output_was_released);
  EXPECT_EQ(old->GetRefCount(), 1U);
  EXPECT_NE(output, old.Get());
}

TYPED_TEST(OperationNodeBase, HasNoOutputWithoutAnImageAndSaysNothing) {
  Testing::Evaluate(*this->node_, this->GetEnough());
  EXPECT_EQ(Testing::Evaluate(*this->node_, {}), nullptr);
  EXPECT_EQ(this->node_->operations_made, 1);
  EXPECT_EQ(this->node_->GetState(), Node::State::kIdle);
  EXPECT_EQ(this->node_->GetStateMessage(), "");
}

TYPED_TEST(OperationNodeBase, TakesAnImagePlugThatHoldsNoImageForEmpty) {
  auto inputs = MakeInputs(*this->node_, {});
  inputs[0] = PlugValue(static_cast<const Image*>(nullptr));
  EXPECT_EQ(inputs[0].GetType(), 8U);
  this->node_->Evaluate(0, inputs);
  EXPECT_EQ(this->node_->GetOutputImage(0), nullptr);
  EXPECT_EQ(this->node_->operations_made, 0);
}

TYPED_TEST(OperationNodeBase, TakesAPlugOfAnotherKindForEmpty) {
  auto inputs = MakeInputs(*this->node_, {});
  inputs[0] = PlugValue(3.0);
  this->node_->Evaluate(0, inputs);
  EXPECT_EQ(this->node_->GetOutputImage(0), nullptr);
  EXPECT_EQ(this->node_->GetState(), Node::State::kIdle);
}

TYPED_TEST(OperationNodeBase, PassesACopyThroughWhileDisabled) {
  this->node_->SetEnabled(false);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    SCOPED_TRACE(mode);
    const ImageRef input = Testing::MakeMarked(mode);
    Image* output = Testing::Evaluate(*this->node_, {input.Get()});
    EXPECT_TRUE(IsCopyOf(output, *input));
    EXPECT_EQ(output->GetRefCount(), 1U);
  }
  EXPECT_EQ(this->node_->operations_made, 0);
}

TYPED_TEST(OperationNodeBase, ReleasesTheOutputAtTheEventForIt) {
  const ImageRef output(Testing::Evaluate(*this->node_, this->GetEnough()));
  for (const std::uint32_t kind : {0U, 1U, 10U, 12U, 11U + 256U}) {
    NodeEvent event;
    event.sender = 11;
    event.serial = 11;
    event.kind = kind;
    EXPECT_TRUE(this->node_->OnProcessEvent(event));
    EXPECT_EQ(this->node_->GetOutputImage(0), output.Get());
  }
  EXPECT_TRUE(Testing::DropCachedResults(*this->node_));
  EXPECT_EQ(this->node_->GetOutputImage(0), nullptr);
  EXPECT_EQ(output->GetRefCount(), 1U);
  EXPECT_TRUE(Testing::DropCachedResults(*this->node_));
}

TYPED_TEST(OperationNodeBase, ReleasesTheOutputInItsDestructor) {
  const ImageRef output(Testing::Evaluate(*this->node_, this->GetEnough()));
  this->node_.Reset();
  EXPECT_EQ(output->GetRefCount(), 1U);
}

TYPED_TEST(OperationNodeBase, HasOneOutput) {
  Testing::Evaluate(*this->node_, this->GetEnough());
  EXPECT_EQ(this->node_->GetOutputImage(1), nullptr);
  EXPECT_EQ(this->node_->GetOutputImage(0xFFFFFFFF), nullptr);
}

TYPED_TEST(OperationNodeBase, ReportsAnOversizeResultAndFreesTheOperation) {
  Testing::Evaluate(*this->node_, this->GetEnough());
  const Testing::MaxSizeScope scope(1, 1);
  EXPECT_EQ(Testing::Evaluate(*this->node_, this->GetEnough()), nullptr);
  EXPECT_TRUE(IsInErrorState(*this->node_, Testing::kOversize));
  EXPECT_EQ(this->node_->operations_made, 2);
  EXPECT_EQ(Testing::GetTimesFreed(), 1);
}

TYPED_TEST(OperationNodeBase, HandsAMissingOperationOnAndReportsTheMissingResult) {
  this->node_->makes = Makes::kNothing;
  EXPECT_EQ(Testing::Evaluate(*this->node_, this->GetEnough()), nullptr);
  EXPECT_TRUE(IsInErrorState(*this->node_, Testing::kOversize));
}

TYPED_TEST(OperationNodeBase, LeavesTheCacheEmptyAndFreesTheOperationWhenComputingThrows) {
  Testing::Evaluate(*this->node_, this->GetEnough());
  this->node_->makes = Makes::kThrowing;
  EXPECT_THROW(Testing::Evaluate(*this->node_, this->GetEnough()), std::runtime_error);
  EXPECT_EQ(this->node_->GetOutputImage(0), nullptr);
  EXPECT_EQ(Testing::GetTimesFreed(), 1);
}

// ---- What each does in its own way ----

TEST(OperationOneNode, MakesNoTestOfTheSize) {
  const auto node = MakeNode<OneNode>();
  const ImageRef empty(new Image(0, 3, ColorMode::kValue, nullptr));
  const Image* output = Testing::Evaluate(*node, {empty.Get()});
  ASSERT_NE(output, nullptr);
  EXPECT_EQ(output->GetSizeX(), 0);
  EXPECT_EQ(output->GetSizeY(), 3);
  EXPECT_EQ(node->operations_made, 1);
  EXPECT_EQ(node->GetState(), Node::State::kIdle);
}

TEST(OperationTwoNode, FoldsTheFirstInputWithTheSecond) {
  const auto node = MakeNode<TwoNode>();
  const ImageRef a = MakeRow({1.0F, 2.0F});
  const ImageRef b = MakeRow({3.0F, 4.0F});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {a.Get(), b.Get()}), {13.0F, 24.0F}));
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {b.Get(), a.Get()}), {31.0F, 42.0F}));
}

TEST(OperationTwoNode, CopiesASingleInputWithoutTheOperation) {
  const auto node = MakeNode<TwoNode>();
  const ImageRef image = Testing::MakeMarked(ColorMode::kColor);
  EXPECT_TRUE(IsCopyOf(Testing::Evaluate(*node, {image.Get(), nullptr}), *image));
  EXPECT_TRUE(IsCopyOf(Testing::Evaluate(*node, {nullptr, image.Get()}), *image));
  EXPECT_EQ(node->operations_made, 0);
}

TEST(OperationTwoNode, CopiesTheFirstPresentInputWhileDisabled) {
  const auto node = MakeNode<TwoNode>();
  node->SetEnabled(false);
  const ImageRef a = Testing::MakeMarked(ColorMode::kColor);
  const ImageRef b = Testing::MakeMarked(ColorMode::kValue);
  EXPECT_TRUE(IsCopyOf(Testing::Evaluate(*node, {a.Get(), b.Get()}), *a));
  EXPECT_TRUE(IsCopyOf(Testing::Evaluate(*node, {nullptr, b.Get()}), *b));
  EXPECT_EQ(node->operations_made, 0);
}

TEST(OperationTwoNode, CountsAnEmptyImageAsPresent) {
  const auto node = MakeNode<TwoNode>();
  const ImageRef empty(new Image(0, 0, ColorMode::kValue, nullptr));
  const ImageRef image = MakeRow({1.0F, 2.0F});
  EXPECT_NE(Testing::Evaluate(*node, {empty.Get(), image.Get()}), nullptr);
  EXPECT_EQ(node->operations_made, 1);
}

TEST(OperationManyNode, AppliesTheOperationToASingleImage) {
  const auto node = MakeNode<ManyNode>();
  const ImageRef image = MakeRow({1.0F, 2.0F});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), {1001.0F, 1002.0F}));
}

TEST(OperationManyNode, FoldsInConnectionOrder) {
  const auto node = MakeNode<ManyNode>();
  const ImageRef a = MakeRow({1.0F});
  const ImageRef b = MakeRow({2.0F});
  const ImageRef c = MakeRow({3.0F});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {a.Get(), b.Get(), c.Get()}), {123.0F}));
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {c.Get(), a.Get(), b.Get()}), {312.0F}));
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {b.Get(), b.Get()}), {22.0F}));
}

TEST(OperationManyNode, SkipsEmptyImagesAndEmptyConnections) {
  const auto node = MakeNode<ManyNode>();
  const ImageRef no_width(new Image(0, 2, ColorMode::kValue, nullptr));
  const ImageRef no_height(new Image(2, 0, ColorMode::kValue, nullptr));
  const ImageRef a = MakeRow({1.0F});
  const ImageRef b = MakeRow({2.0F});
  const auto both = {no_width.Get(), a.Get(), static_cast<Image*>(nullptr), no_height.Get(), b.Get()};
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {both.begin(), both.end()}), {12.0F}));
  // With one left it is combined with the constant.
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {no_width.Get(), a.Get()}), {1001.0F}));
  node->SetEnabled(false);
  EXPECT_TRUE(IsCopyOf(Testing::Evaluate(*node, {no_height.Get(), b.Get(), a.Get()}), *b));
}

TEST(OperationManyNode, HasNoOutputForEmptyImagesOnly) {
  const auto node = MakeNode<ManyNode>();
  const ImageRef no_width(new Image(0, 2, ColorMode::kValue, nullptr));
  const ImageRef no_height(new Image(2, 0, ColorMode::kValue, nullptr));
  EXPECT_EQ(Testing::Evaluate(*node, {no_width.Get(), no_height.Get()}), nullptr);
  EXPECT_EQ(node->operations_made, 0);
  EXPECT_EQ(node->GetState(), Node::State::kIdle);
}

TEST(OperationManyNode, ReportsImagesThatLieTooFarApart) {
  const auto node = MakeNode<ManyNode>();
  const ImageRef near = MakeRow({1.0F, 2.0F});
  const ImageRef far = MakeRow({3.0F, 4.0F});
  far->SetPin(10, 0);
  const Testing::MaxSizeScope scope(11, 11);
  EXPECT_EQ(Testing::Evaluate(*node, {near.Get(), far.Get()}), nullptr);
  EXPECT_TRUE(IsInErrorState(*node, Testing::kOversize));
  EXPECT_EQ(Testing::GetTimesFreed(), 1);
  Image::SetMaxSize(12, 1);
  EXPECT_NE(Testing::Evaluate(*node, {near.Get(), far.Get()}), nullptr);
}

RC_GTEST_PROP(OperationManyNodeProperties, SumsAnyNumberOfImagesOfWholeNumbers, ()) {
  const auto node = MakeNode<ImageValueAddNode>();
  Testing::SetNumber(*node, "constant", 0.5);
  const auto numbers = *rc::gen::nonEmpty(rc::gen::container<std::vector<int>>(rc::gen::inRange(-1000, 1000)));
  std::vector<ImageRef> images;
  std::vector<const Image*> pointers;
  int sum = 0;
  for (const int number : numbers) {
    images.push_back(MakeRow({static_cast<float>(number)}));
    pointers.push_back(images.back().Get());
    sum += number;
  }
  const float expected = static_cast<float>(sum) + (numbers.size() == 1 ? 0.5F : 0.0F);
  RC_ASSERT(HoldsSamples(Testing::Evaluate(*node, pointers), {expected}));
}

// ---- One request from the engine down to the operation and back, step by step ----

std::vector<std::string> trace;

std::string Show(float value) { return testing::PrintToString(value); }

/// The sum that tells which values it was given, in which form.
class TracedAddition : public AdditionOperation {
 public:
  using AdditionOperation::AdditionOperation;
  float Compute(float first, float second) override {
    trace.push_back("fold " + Show(first) + " with " + Show(second));
    return AdditionOperation::Compute(first, second);
  }
  float Compute(float value) override {
    trace.push_back("add to " + Show(value));
    return AdditionOperation::Compute(value);
  }
};

/// The Add node that tells what happens to it.
class TracedAddNode : public ImageValueAddNode {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return {99, 2, 1}; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    trace.push_back("evaluate " + std::to_string(evaluation) + " with " + std::to_string(inputs.size()) + " values");
    ImageValueAddNode::Evaluate(evaluation, inputs);
    trace.push_back("operation freed " + std::to_string(Testing::GetTimesFreed()) + " time(s)");
    const Image* output = GetOutputImage(0);
    trace.push_back(output == nullptr ? "no output"
                                      : "output with " + std::to_string(output->GetRefCount()) + " reference(s)");
  }
  ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override {
    const ValueOperationPtr made(ImageValueAddNode::CreateValueOperation(inputs));
    trace.push_back("operation with constant " + Show(made->a) + ", old output " +
                    (GetOutputImage(0) == nullptr ? "released" : "kept"));
    return Watch(new TracedAddition(made->a));
  }
  bool OnProcessEvent(NodeEvent event) override {
    trace.push_back("event " + std::to_string(event.kind));
    return ImageValueAddNode::OnProcessEvent(event);
  }
};

/// A node with one image that the test chooses.
class SourceNode : public Node {
 public:
  SourceNode() {
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return {99, 2, 2}; }
  [[nodiscard]] std::string GetName() const override { return "Source"; }
  void Evaluate(unsigned, const std::vector<PlugValue>&) override {}
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return image_.Get(); }
  void SetImage(const ImageRef& image) {
    image_ = image;
    NotifyChanged();
  }

 private:
  ImageRef image_;
};

template <class NodeClass>
class TestFactory : public NodeFactory {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return NodeClass().GetNodeType(); }
  [[nodiscard]] Node* CreateNode() const override { return new NodeClass; }
  [[nodiscard]] std::string GetTypeName() const override { return "Test" + GetNodeType().ToString(); }
};

template <class NodeClass>
class TestDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return NodeClass().GetName(); }
  [[nodiscard]] NodeType GetNodeType() const override { return factory_.GetNodeType(); }

 private:
  mutable TestFactory<NodeClass> factory_;
};

class TypicalRequest : public testing::Test {
 protected:
  TypicalRequest() {
    auto catalog = std::make_shared<ScEng::NodeCatalog>();
    EXPECT_FALSE(catalog->AddDescriptor(ScEng::RefPtr<NodeInterface>(new TestDescriptor<TracedAddNode>)).IsError());
    EXPECT_FALSE(catalog->AddDescriptor(ScEng::RefPtr<NodeInterface>(new TestDescriptor<SourceNode>)).IsError());
    engine_ = std::make_unique<Engine>(std::move(catalog));
    add_ = engine_->CreateNode({99, 2, 1});
    first_ = static_cast<SourceNode*>(engine_->CreateNode({99, 2, 2}));
    second_ = static_cast<SourceNode*>(engine_->CreateNode({99, 2, 2}));
    first_->SetImage(MakeRow({1.0F}));
    second_->SetImage(MakeRow({20.0F}));
    // The name under which older documents know the constant.
    EXPECT_TRUE(add_->GetAttribute(std::string("value"))->SetNumber(5.0, false));
    trace.clear();
  }

  std::unique_ptr<Engine> engine_;
  Node* add_ = nullptr;
  SourceNode* first_ = nullptr;
  SourceNode* second_ = nullptr;
};

TEST_F(TypicalRequest, GoesThroughItsSixSteps) {
  // Connected in the other order than the indices say, so that it is the indices that count.
  ASSERT_TRUE(engine_->ConnectNodes(second_, "image", 0, add_, "image", 1));
  ASSERT_TRUE(engine_->ConnectNodes(first_, "image", 0, add_, "image", 0));
  engine_->Evaluate({{add_, 0}});
  EXPECT_EQ(trace, (std::vector<std::string>{
                       // Two images and the constant.
                       "evaluate 0 with 3 values",
                       "operation with constant 5, old output released",
                       "fold 1 with 20",
                       // What lies outside both images.
                       "fold 0 with 0",
                       "operation freed 1 time(s)",
                       "output with 1 reference(s)",
                   }));
  EXPECT_TRUE(HoldsSamples(add_->GetOutputImage(0), {21.0F}));
  EXPECT_FALSE(add_->IsInError());

  // The next request releases the output before anything is computed.
  trace.clear();
  const ImageRef old(add_->GetOutputImage(0));
  first_->SetImage(MakeRow({2.0F}));
  engine_->Evaluate({{add_, 0}});
  ASSERT_GE(trace.size(), 3U);
  EXPECT_EQ(trace[1], "operation with constant 5, old output released");
  EXPECT_EQ(trace[2], "fold 2 with 20");
  EXPECT_EQ(old->GetRefCount(), 1U);
  EXPECT_TRUE(HoldsSamples(add_->GetOutputImage(0), {22.0F}));

  // And the event for it releases that one.
  trace.clear();
  const ImageRef output(add_->GetOutputImage(0));
  EXPECT_EQ(output->GetRefCount(), 2U);
  EXPECT_TRUE(Testing::DropCachedResults(*add_));
  EXPECT_EQ(trace, std::vector<std::string>{"event 11"});
  EXPECT_EQ(output->GetRefCount(), 1U);
  EXPECT_EQ(add_->GetOutputImage(0), nullptr);
}

TEST_F(TypicalRequest, WithOneImageAddsTheConstant) {
  ASSERT_TRUE(engine_->ConnectNodes(first_, "image", 0, add_, "image", 0));
  engine_->Evaluate({{add_, 0}});
  EXPECT_EQ(trace, (std::vector<std::string>{
                       "evaluate 0 with 2 values",
                       "operation with constant 5, old output released",
                       "add to 1",
                       "operation freed 1 time(s)",
                       "output with 1 reference(s)",
                   }));
  EXPECT_TRUE(HoldsSamples(add_->GetOutputImage(0), {6.0F}));
}

TEST_F(TypicalRequest, EndsInTheErrorStateWhenTheResultIsTooLarge) {
  ASSERT_TRUE(engine_->ConnectNodes(first_, "image", 0, add_, "image", 0));
  ASSERT_TRUE(engine_->ConnectNodes(second_, "image", 0, add_, "image", 1));
  const ImageRef far = MakeRow({1.0F});
  far->SetPin(40000, 0);
  second_->SetImage(far);
  engine_->Evaluate({{add_, 0}});
  EXPECT_EQ(trace, (std::vector<std::string>{
                       "evaluate 0 with 3 values",
                       "operation with constant 5, old output released",
                       "operation freed 1 time(s)",
                       "no output",
                   }));
  EXPECT_TRUE(IsInErrorState(*add_, Testing::kOversize));
}

}  // namespace
