// SPDX-License-Identifier: Apache-2.0
//
// A host and a node library that were built apart meet in the order of their virtual operations and of a few fields.
// Real objects of the built library are called here through the numbers of the slots, not through the headers.
//
// On this platform a virtual table has one entry per slot, and a virtual destructor two: one that destroys the object
// and one that frees it as well. So behind a destructor slot n is entry n + 1.
#include <cxxabi.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Image/ValueOperation.h"
#include "Host/Tools/LibraryInterface.h"
#include "Host/Tools/NodeInterface.h"
#include "Tests/Abi/LoadedLibrary.h"
#include "Tests/Support/FirstTwenty.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kFirstTwenty;
using Testing::KnownType;

// Entries of the destructors.
constexpr std::size_t kFreeDescriptor = 1;
constexpr std::size_t kFreeNode = 3;
// Slots before and behind a destructor.
constexpr std::size_t DescriptorSlot(std::size_t slot) { return slot + 1; }
constexpr std::size_t NodeSlot(std::size_t slot) { return slot < 2 ? slot : slot + 1; }
constexpr std::size_t FactorySlot(std::size_t slot) { return slot; }
constexpr std::size_t LibrarySlot(std::size_t slot) { return slot; }
constexpr std::size_t OperationSlot(std::size_t slot) { return slot; }

template <class Value>
Value Load(const void* object, std::size_t offset) {
  Value value;
  std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof(Value));
  return value;
}

/// Calls an entry of the object's virtual table. The argument types are those of the operation, given by hand.
template <class Result, class... Arguments>
Result Call(const void* object, std::size_t entry, Arguments... arguments) {
  const void* table = Load<const void*>(object, 0);
  const auto function = Load<Result (*)(const void*, Arguments...)>(table, entry * sizeof(void*));
  return function(object, arguments...);
}

// Catalogue indices.
constexpr std::size_t kToValue = 0;
constexpr std::size_t kAdd = 1;
constexpr std::size_t kMaximum = 7;
constexpr std::size_t kClamp = 8;
constexpr std::size_t kSteps = 9;
constexpr std::size_t kCondition = 10;
constexpr std::size_t kCompare = 11;
constexpr std::size_t kRange = 12;
constexpr std::size_t kFunction = 13;
constexpr std::size_t kRelief = 14;
constexpr std::size_t kGradient = 16;

// ---- The library object ----

TEST(LibraryTable, HasItsFiveSlots) {
  const Abi::LoadedLibrary loaded;
  LibraryInterface* library = loaded.GetLibraryInterface();
  EXPECT_EQ(Call<std::string>(library, LibrarySlot(0)), "Value");
  EXPECT_EQ(Call<std::string>(library, LibrarySlot(1)), "");
  for (const std::size_t slot : {2U, 3U, 4U}) Call<void>(library, LibrarySlot(slot));
  EXPECT_EQ(Call<std::string>(library, LibrarySlot(0)), "Value");
  // It holds nothing but its virtual table and has no destructor to call.
  operator delete(library);
}

// ---- Descriptors and factories ----

class DescriptorTable : public testing::Test {
 protected:
  ~DescriptorTable() override {
    // Slot 0: the factory goes with its descriptor.
    for (void* descriptor : descriptors_) Call<void>(descriptor, kFreeDescriptor);
  }

  const Abi::LoadedLibrary library_;
  const std::vector<void*> descriptors_ = [this] {
    std::vector<void*> descriptors;
    for (std::uint64_t index = 0; index < kFirstTwenty.size(); ++index) {
      descriptors.push_back(library_.GetNodeInterface(index));
    }
    return descriptors;
  }();
};

TEST_F(DescriptorTable, GivesWhatEachTypeIs) {
  for (std::size_t index = 0; index < kFirstTwenty.size(); ++index) {
    const KnownType& row = kFirstTwenty[index];
    const void* descriptor = descriptors_[index];
    SCOPED_TRACE(row.type_name);
    EXPECT_NE(Call<void*>(descriptor, DescriptorSlot(1)), nullptr);
    EXPECT_EQ(Call<std::string>(descriptor, DescriptorSlot(2)), row.name);
    EXPECT_EQ(Call<NodeType>(descriptor, DescriptorSlot(3)), row.type);
    EXPECT_EQ(Call<unsigned>(descriptor, DescriptorSlot(4)), 9U);
    EXPECT_EQ(Call<std::string>(descriptor, DescriptorSlot(11)), "Value");
    EXPECT_EQ(Call<unsigned>(descriptor, DescriptorSlot(12)), 0U);
    const std::string icon = std::string(":/Value/Resources/Icons/") + row.icon;
    EXPECT_EQ(Call<std::string>(descriptor, DescriptorSlot(13)), icon + ".png");
    EXPECT_EQ(Call<std::string>(descriptor, DescriptorSlot(14)), icon + "12.png");
    EXPECT_EQ(Call<std::string>(descriptor, DescriptorSlot(15)), "as_is");
  }
}

TEST_F(DescriptorTable, AnswersForTheTypesWithoutASelfTest) {
  EXPECT_TRUE(Call<bool>(descriptors_[kToValue], DescriptorSlot(5)));
  for (const std::size_t index : {8U, 11U, 12U, 13U, 15U, 16U, 17U, 18U, 19U}) {
    EXPECT_FALSE(Call<bool>(descriptors_[index], DescriptorSlot(5))) << kFirstTwenty[index].type_name;
  }
}

TEST_F(DescriptorTable, HasHooksThatDoNothing) {
  for (const void* descriptor : descriptors_) {
    const auto before = Load<std::array<char, 24>>(descriptor, 0);
    for (const std::size_t slot : {6U, 7U, 9U, 10U, 16U, 17U, 18U, 19U, 20U, 21U, 22U, 23U}) {
      Call<void>(descriptor, DescriptorSlot(slot));
    }
    EXPECT_EQ(before, (Load<std::array<char, 24>>(descriptor, 0)));
  }
}

TEST_F(DescriptorTable, OffersNoPanelForAnotherSelector) {
  for (const void* descriptor : descriptors_) {
    const void* factory = Call<void*>(descriptor, DescriptorSlot(1));
    void* node = Call<void*>(factory, FactorySlot(1));
    for (const std::uintptr_t selector : {std::uintptr_t{1}, ~std::uintptr_t{0}}) {
      EXPECT_EQ((Call<void*, void*, void*, std::uintptr_t>(descriptor, DescriptorSlot(8), node, nullptr, selector)),
                nullptr);
    }
    Call<void>(node, kFreeNode);
  }
}

TEST_F(DescriptorTable, OffersNoPanelWithoutAnApplication) {
  // Widgets cannot be made in this process, and slot 8 says so instead of ending it.
  for (const void* descriptor : descriptors_) {
    const void* factory = Call<void*>(descriptor, DescriptorSlot(1));
    void* node = Call<void*>(factory, FactorySlot(1));
    EXPECT_EQ((Call<void*, void*, void*, std::uintptr_t>(descriptor, DescriptorSlot(8), node, nullptr, 0)), nullptr);
    Call<void>(node, kFreeNode);
  }
}

TEST_F(DescriptorTable, HoldsCountFlagAndFactoryInThisOrder) {
  for (const void* descriptor : descriptors_) {
    EXPECT_EQ(Load<std::uint32_t>(descriptor, 8), 0U);
    EXPECT_EQ(Load<std::uint8_t>(descriptor, 12), 0U);
    EXPECT_EQ(Load<void*>(descriptor, 16), Call<void*>(descriptor, DescriptorSlot(1)));
    static_cast<const NodeInterface*>(descriptor)->AddRef();
    EXPECT_EQ(Load<std::uint32_t>(descriptor, 8), 1U);
  }
}

TEST_F(DescriptorTable, StoresAFactoryInItsLastSlotAndLeavesTheOldOneAlone) {
  const void* one = descriptors_[kAdd];
  void* const own = Call<void*>(one, DescriptorSlot(1));
  const void* other = descriptors_[kMaximum];
  void* const others = Call<void*>(other, DescriptorSlot(1));
  Call<void, void*>(one, DescriptorSlot(24), others);
  Call<void, void*>(other, DescriptorSlot(24), own);
  EXPECT_EQ(Call<void*>(one, DescriptorSlot(1)), others);
  EXPECT_EQ(Load<void*>(one, 16), others);
  EXPECT_EQ(Call<std::string>(own, FactorySlot(2)), "ImageValueAddNode");
  // Each is freed once, by whoever owns it now.
}

TEST_F(DescriptorTable, LeadsToFactoriesWithThreeSlots) {
  for (std::size_t index = 0; index < kFirstTwenty.size(); ++index) {
    const void* factory = Call<void*>(descriptors_[index], DescriptorSlot(1));
    EXPECT_EQ(Load<std::uint32_t>(factory, 8), 0U);
    EXPECT_EQ(Call<NodeType>(factory, FactorySlot(0)), kFirstTwenty[index].type);
    void* node = Call<void*>(factory, FactorySlot(1));
    EXPECT_EQ(Call<NodeType>(node, NodeSlot(4)), kFirstTwenty[index].type);
    Call<void>(node, kFreeNode);
    EXPECT_EQ(Call<std::string>(factory, FactorySlot(2)), kFirstTwenty[index].type_name);
  }
}

// ---- Nodes ----

/// A node of the library without a header: what the host's own functions do for it (its attributes, its state) goes
/// through `Get`, what the library does through `Slot`.
class ForeignNode {
 public:
  explicit ForeignNode(const void* descriptor)
      : node_(Call<Node*>(Call<void*>(descriptor, DescriptorSlot(1)), FactorySlot(1))) {}
  ~ForeignNode() { Free(); }
  ForeignNode(const ForeignNode&) = delete;
  ForeignNode& operator=(const ForeignNode&) = delete;

  [[nodiscard]] Node& Get() const { return *node_; }
  void Free() {
    if (node_ != nullptr) Call<void>(node_, kFreeNode);
    node_ = nullptr;
  }

  template <class Result, class... Arguments>
  Result Slot(std::size_t slot, Arguments... arguments) const {
    return Call<Result, Arguments...>(node_, NodeSlot(slot), arguments...);
  }
  void Evaluate(unsigned evaluation, const std::vector<const Image*>& images) const {
    const std::vector<PlugValue> inputs = Testing::MakeInputs(*node_, images);
    Slot<void, unsigned, const std::vector<PlugValue>&>(34, evaluation, inputs);
  }
  [[nodiscard]] Image* GetOutput(unsigned output) const { return Slot<Image*, unsigned>(40, output); }
  [[nodiscard]] std::string Translate(unsigned version, const std::string& name) const {
    return Slot<std::string, unsigned, const std::string&>(7, version, name);
  }

 private:
  Node* node_;
};

class NodeTableTest : public DescriptorTable {
 protected:
  /// Calls `check(index, node)` with a node of each type.
  template <class Check>
  void ForEachType(Check check) {
    for (std::size_t index = 0; index < kFirstTwenty.size(); ++index) {
      SCOPED_TRACE(kFirstTwenty[index].type_name);
      const ForeignNode node(descriptors_[index]);
      check(index, node);
    }
  }
};

TEST_F(NodeTableTest, TellsTypeAndName) {
  ForEachType([](std::size_t index, const ForeignNode& node) {
    EXPECT_EQ(node.Slot<NodeType>(4), kFirstTwenty[index].type);
    EXPECT_EQ(node.Slot<std::string>(5), kFirstTwenty[index].name);
  });
}

TEST_F(NodeTableTest, TellsTheAttributeVersion) {
  ForEachType([](std::size_t index, const ForeignNode& node) {
    EXPECT_EQ(node.Slot<unsigned>(6), index == kRelief ? 1U : 0U);
  });
}

TEST_F(NodeTableTest, TranslatesAttributeNames) {
  ForEachType([](std::size_t index, const ForeignNode& node) {
    const bool is_arithmetic = index >= kAdd && index <= kMaximum;
    const bool is_limited = index == kToValue || index == kClamp;
    EXPECT_EQ(node.Translate(0, "value"), is_arithmetic ? "constant" : "value");
    EXPECT_EQ(node.Translate(0, "min"), is_limited ? "low" : "min");
    EXPECT_EQ(node.Translate(1, "max"), is_limited ? "high" : "max");
    EXPECT_EQ(node.Translate(0, "saturate"), index == kToValue ? "auto_level" : "saturate");
    EXPECT_EQ(node.Translate(0, "height"), index == kRelief ? "multiplier" : "height");
    EXPECT_EQ(node.Translate(1, "height"), "height");
  });
}

TEST_F(NodeTableTest, DescribesItsPlugs) {
  ForEachType([](std::size_t index, const ForeignNode& node) {
    const std::string input = index == kCompare ? "image_a" : "image";
    const std::string output = index == kCompare ? "image_a_l_b" : index == kGradient ? "output_x" : "image";
    EXPECT_EQ((node.Slot<std::string, unsigned>(11, 0)), input);
    EXPECT_TRUE((node.Slot<bool, unsigned>(12, 0)));
    EXPECT_EQ((node.Slot<std::string, unsigned>(13, 0)), index == kCompare ? "a < b" : output);
    EXPECT_TRUE((node.Slot<bool, unsigned>(14, 0)));
    EXPECT_TRUE((node.Slot<bool, unsigned, unsigned>(15, 0, 0)));
    EXPECT_EQ((node.Slot<std::string, unsigned>(18, 0)), output);
    EXPECT_EQ((node.Slot<int, const std::string&>(19, output)), 0);
    EXPECT_EQ((node.Slot<int, const std::string&>(19, "no such plug")), -1);
    EXPECT_EQ((node.Slot<std::string, unsigned>(20, 0)), input);
    EXPECT_EQ((node.Slot<int, const std::string&>(21, input)), 0);
    EXPECT_EQ((node.Slot<int, const std::string&>(21, "no such plug")), -1);
  });
}

TEST_F(NodeTableTest, KnowsObsoleteAttributes) {
  ForEachType([](std::size_t index, const ForeignNode& node) {
    EXPECT_EQ((node.Slot<bool, unsigned, const char*>(16, 0, "mask_min")), index == kAdd);
    EXPECT_FALSE((node.Slot<bool, unsigned, const char*>(16, 0, "constant")));
  });
}

TEST_F(NodeTableTest, EvaluatesShowsAndDropsItsOutput) {
  const auto image = Testing::MakeRow({0.25F, 0.5F});
  ForEachType([&](std::size_t index, const ForeignNode& node) {
    // Disabled, every node but four shows a copy of its input; those show nothing, or zeros.
    node.Get().SetEnabled(false);
    node.Evaluate(0, {image.Get(), image.Get()});
    const Testing::ImageRef output(node.GetOutput(0));
    const bool shows_nothing = index == kClamp || index == kSteps || index == kCompare;
    ASSERT_EQ(static_cast<bool>(output), !shows_nothing);
    if (output && index != kGradient) {
      EXPECT_TRUE(Testing::IsCopyOf(output.Get(), *image));
    }
    NodeEvent event;
    event.kind = 10;
    EXPECT_TRUE((node.Slot<bool, NodeEvent>(23, event)));
    EXPECT_EQ(node.GetOutput(0), output.Get());
    event.kind = 11;
    EXPECT_TRUE((node.Slot<bool, NodeEvent>(23, event)));
    EXPECT_EQ(node.GetOutput(0), nullptr);
    if (output) {
      EXPECT_EQ(output->GetRefCount(), 1U);
    }
  });
}

TEST_F(NodeTableTest, ReleasesItsOutputInItsDestructor) {
  const auto image = Testing::MakeRow({0.25F, 0.5F});
  for (const std::size_t index : {kToValue, kAdd, kClamp, kSteps, kCondition, kCompare, kFunction}) {
    SCOPED_TRACE(kFirstTwenty[index].type_name);
    ForeignNode node(descriptors_[index]);
    node.Evaluate(0, {image.Get()});
    const Testing::ImageRef output(node.GetOutput(0));
    ASSERT_TRUE(output);
    // The count is the first thing in an image.
    EXPECT_EQ(Load<std::uint32_t>(output.Get(), 0), 2U);
    node.Free();
    EXPECT_EQ(Load<std::uint32_t>(output.Get(), 0), 1U);
  }
}

TEST_F(NodeTableTest, ComputesThroughTheSlots) {
  const auto first = Testing::MakeRow({0.25F, 0.5F});
  const auto second = Testing::MakeRow({2.0F, 4.0F});
  const ForeignNode node(descriptors_[kAdd]);
  node.Evaluate(0, {first.Get(), second.Get()});
  EXPECT_TRUE(Testing::HoldsSamples(node.GetOutput(0), {2.25F, 4.5F}));
  EXPECT_EQ(node.GetOutput(1), nullptr);
}

// ---- Operations, made by slot 62 ----

struct FreeOperation {
  void operator()(void* operation) const { operator delete(operation); }
};
using ForeignOperation = std::unique_ptr<void, FreeOperation>;

ForeignOperation MakeOperation(const ForeignNode& node) {
  const std::vector<PlugValue> inputs = Testing::MakeInputs(node.Get(), {});
  return ForeignOperation(node.Slot<void*, const std::vector<PlugValue>&>(62, inputs));
}

float ComputeTwo(const ForeignOperation& operation, float first, float second) {
  return Call<float, float, float>(operation.get(), OperationSlot(0), first, second);
}

float ComputeOne(const ForeignOperation& operation, float value) {
  return Call<float, float>(operation.get(), OperationSlot(1), value);
}

std::string GetClassName(const ForeignOperation& operation) {
  const ValueOperation& base = *static_cast<const ValueOperation*>(operation.get());
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(typeid(base).name(), nullptr, nullptr, &status),
                                                    std::free);
  return name.get();
}

// Where the fields stand, behind the pointer to the virtual table.
constexpr std::size_t kMin = 8;
constexpr std::size_t kMax = 12;
constexpr std::size_t kA = 16;
constexpr std::size_t kB = 20;
constexpr std::size_t kFalloff = 24;
constexpr std::size_t kOuter = 28;
constexpr std::size_t kInverseFalloff = 32;
constexpr std::size_t kProfile = 40;

TEST_F(NodeTableTest, MakesTheOperationsOfTheArithmeticNodes) {
  struct Row {
    const char* class_name;
    float a;
    float of_seven_and_two;
    float of_seven;
  };
  // With the constant 4; the exponent of Power is always 1.
  const std::vector<Row> rows{
      {"AdditionOperation", 4.0F, 9.0F, 11.0F},        {"SubtractionOperation", 4.0F, 5.0F, 3.0F},
      {"MultiplicationOperation", 4.0F, 14.0F, 28.0F}, {"DivideOperation", 4.0F, 3.5F, 1.75F},
      {"PowerOperation", 1.0F, 49.0F, 7.0F},           {"MinimumOperation", 4.0F, 2.0F, 4.0F},
      {"MaximumOperation", 4.0F, 7.0F, 7.0F}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(rows[i].class_name);
    const ForeignNode node(descriptors_[kAdd + i]);
    Testing::SetNumber(node.Get(), "constant", 4.0);
    const ForeignOperation operation = MakeOperation(node);
    EXPECT_EQ(GetClassName(operation), rows[i].class_name);
    EXPECT_EQ(Load<float>(operation.get(), kMin), 0.0F);
    EXPECT_EQ(Load<float>(operation.get(), kMax), 1.0F);
    EXPECT_EQ(Load<float>(operation.get(), kA), rows[i].a);
    EXPECT_EQ(ComputeTwo(operation, 7.0F, 2.0F), rows[i].of_seven_and_two);
    EXPECT_EQ(ComputeOne(operation, 7.0F), rows[i].of_seven);
  }
}

TEST_F(NodeTableTest, MakesTheOperationsOfTheConditionNode) {
  const ForeignNode node(descriptors_[kCondition]);
  Testing::SetNumber(node.Get(), "a", 0.25);
  Testing::SetNumber(node.Get(), "b", 0.75);
  Testing::SetChoice(node.Get(), "condition", "a_lte_v_lt_b");
  const ForeignOperation between = MakeOperation(node);
  EXPECT_EQ(GetClassName(between), "ConditionALteValLtBOperation");
  EXPECT_EQ(Load<float>(between.get(), kA), 0.25F);
  EXPECT_EQ(Load<float>(between.get(), kB), 0.75F);
  EXPECT_EQ(ComputeOne(between, 0.25F), 1.0F);
  EXPECT_EQ(ComputeOne(between, 0.75F), 0.0F);
  EXPECT_EQ(ComputeTwo(between, 0.25F, 0.75F), 1.0F);
  EXPECT_EQ(ComputeTwo(between, 0.75F, 0.25F), 0.0F);

  Testing::SetChoice(node.Get(), "condition", "v_eq_max");
  const ForeignOperation highest = MakeOperation(node);
  // The host writes the range of the input where the operation reads it.
  const float max = 8.0F;
  std::memcpy(static_cast<char*>(highest.get()) + kMax, &max, sizeof(max));
  EXPECT_EQ(ComputeOne(highest, 8.0F), 1.0F);
  EXPECT_EQ(ComputeOne(highest, 1.0F), 0.0F);
  Testing::SetChoice(node.Get(), "condition", "v_eq_min");
  const ForeignOperation lowest = MakeOperation(node);
  const float min = -8.0F;
  std::memcpy(static_cast<char*>(lowest.get()) + kMin, &min, sizeof(min));
  EXPECT_EQ(ComputeOne(lowest, -8.0F), 1.0F);
  EXPECT_EQ(ComputeOne(lowest, 0.0F), 0.0F);
}

TEST_F(NodeTableTest, MakesTheOperationOfTheRangeNode) {
  const ForeignNode node(descriptors_[kRange]);
  Testing::SetNumber(node.Get(), "center", 0.5);
  Testing::SetNumber(node.Get(), "size", 0.25);
  Testing::SetNumber(node.Get(), "falloff", 0.125);
  Testing::SetChoice(node.Get(), "profile", "smooth");
  const ForeignOperation operation = MakeOperation(node);
  EXPECT_EQ(GetClassName(operation), "ThresholdValueOperation");
  EXPECT_EQ(Load<float>(operation.get(), kMin), 0.0F);
  EXPECT_EQ(Load<float>(operation.get(), kMax), 1.0F);
  EXPECT_EQ(Load<float>(operation.get(), kA), 0.5F);
  EXPECT_EQ(Load<float>(operation.get(), kB), 0.25F);
  EXPECT_EQ(Load<float>(operation.get(), kFalloff), 0.125F);
  EXPECT_EQ(Load<float>(operation.get(), kOuter), 0.375F);
  EXPECT_EQ(Load<float>(operation.get(), kInverseFalloff), 8.0F);
  const auto profile = Load<float (*)(float)>(operation.get(), kProfile);
  EXPECT_EQ(profile(0.25F), 0.103515625F);
  EXPECT_EQ(ComputeOne(operation, 0.5F), 1.0F);
  EXPECT_EQ(ComputeTwo(operation, 0.84375F, 0.5F), 0.103515625F);
}

TEST_F(NodeTableTest, MakesTheOperationsOfTheFunctionNode) {
  const std::vector<std::pair<const char*, const char*>> rows{{"absolute", "AbsoluteValueOperation"},
                                                              {"sine", "SineValueOperation"},
                                                              {"cosine", "CosineValueOperation"},
                                                              {"tangent", "TangentValueOperation"},
                                                              {"arcsine", "ArcSineValueOperation"},
                                                              {"arccosine", "ArcCosineValueOperation"},
                                                              {"arctangent", "ArcTangentValueOperation"},
                                                              {"floor", "FloorValueOperation"},
                                                              {"ceil", "CeilValueOperation"},
                                                              {"inverse", "InverseValueOperation"},
                                                              {"log", "LogValueOperation"},
                                                              {"log2", "Log2ValueOperation"},
                                                              {"log10", "Log10ValueOperation"},
                                                              {"exponential", "ExponentialValueOperation"},
                                                              {"square_root", "SquareRootValueOperation"},
                                                              {"cubic_root", "CubicRootValueOperation"},
                                                              {"deg_to_rad", "DegToRadValueOperation"},
                                                              {"rad_to_deg", "RadToDegValueOperation"}};
  const ForeignNode node(descriptors_[kFunction]);
  for (const auto& [word, class_name] : rows) {
    SCOPED_TRACE(word);
    Testing::SetChoice(node.Get(), "function", word);
    const ForeignOperation operation = MakeOperation(node);
    EXPECT_EQ(GetClassName(operation), class_name);
    EXPECT_EQ(Load<float>(operation.get(), kMin), 0.0F);
    EXPECT_EQ(Load<float>(operation.get(), kMax), 1.0F);
    EXPECT_SAME(ComputeTwo(operation, 0.5F, 99.0F), ComputeOne(operation, 0.5F));
  }
  Testing::SetChoice(node.Get(), "function", "square_root");
  EXPECT_EQ(ComputeOne(MakeOperation(node), 64.0F), 8.0F);
}

}  // namespace
