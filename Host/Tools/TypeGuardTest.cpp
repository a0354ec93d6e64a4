// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/TypeGuard.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "Host/Tools/NodeLibrary.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::NodeLibrary;
using ScEng::RefPtr;
using ScEng::RunningCall;
using ScEng::Status;

class TypeGuard : public testing::Test {
 protected:
  void SetUp() override {
    const std::string file = VALUE_TEST_LIBRARIES "/ThrowsInCreateNode.so";
    Status status;
    library_ = NodeLibrary::Load(file, status);
    ASSERT_NE(library_, nullptr) << status.GetMessage();
    ASSERT_EQ(library_->GetDescriptors().size(), 2U);
    file_ = std::filesystem::canonical(file).string();
  }

  [[nodiscard]] const NodeInterface& GetGood() const { return *library_->GetDescriptors()[0]; }
  [[nodiscard]] const NodeInterface& GetBad() const { return *library_->GetDescriptors()[1]; }

  std::string file_;
  std::shared_ptr<NodeLibrary> library_;
};

TEST_F(TypeGuard, MakesNodes) {
  Status status;
  const RefPtr<Node> node = ScEng::CreateNode(GetGood(), status);
  ASSERT_TRUE(node);
  EXPECT_EQ(node->GetRefCount(), 1U);
  EXPECT_FALSE(status.IsError());
}

TEST_F(TypeGuard, NamesTypeAndLibraryOfANodeThatCannotBeMade) {
  Status status;
  EXPECT_FALSE(ScEng::CreateNode(GetBad(), status));
  EXPECT_EQ(status.GetMessage(), "node \"Parts Node 2\" of plug-in \"" + file_ +
                                     "\": CreateNode threw an exception: the shelf is bare and the door is shut");
}

TEST_F(TypeGuard, NamesTheLibraryToWhoeverHasToSayWhatRan) {
  RunningCall running;
  ASSERT_FALSE(ScEng::CallTypeGuarded(GetGood(), "GetName", [&] { running = RunningCall::Find(); }).IsError());
  EXPECT_STREQ(running.operation, "GetName");
  EXPECT_EQ(running.library, file_);
}

class NoNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{10, 16, 10};
  static constexpr const char* kName = "NoNode";
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "None"; }
};

TEST(TypeGuardOfTheHost, NamesNoLibrary) {
  const RefPtr<NodeInterface> descriptor(new Testing::TestDescriptor<NoNode>);
  const Status status =
      ScEng::CallTypeGuarded(*descriptor, "GetIconPath", [] { throw std::runtime_error("no ink is left"); });
  EXPECT_EQ(status.GetMessage(), "node \"Test NoNode\": GetIconPath threw an exception: no ink is left");
}

}  // namespace
