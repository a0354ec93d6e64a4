// SPDX-License-Identifier: Apache-2.0
//
// What the self-tests say and answer where a node type is missing. What they render is tested with the command line.
#include "Value/SelfTests/SelfTests.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "Host/Nodes/HostNodes.h"
#include "Host/Testing/TestSession.h"
#include "Host/Tools/Engine.h"
#include "Tests/Support/HostTesting.h"
#include "Value/NodeTable.h"

namespace {

using ScEng::NodeCatalog;
using ScEng::RefPtr;
using ScEng::TestSession;

/// The library's own types.
std::shared_ptr<NodeCatalog> MakeLibraryCatalog() {
  auto catalog = std::make_shared<NodeCatalog>();
  for (std::uint64_t index = 0; index < 20; ++index) {
    catalog->AddDescriptor(RefPtr<NodeInterface>(NodeTable::CreateDescriptor(index)));
  }
  return catalog;
}

class SelfTestsTest : public testing::Test {
 protected:
  SelfTestsTest() { TestSession::Get().Start({}); }
  ~SelfTestsTest() override {
    Engine::Get()->SetCatalog(nullptr);
    TestSession::Get().Start({});
  }

  /// Runs a test with these node types and answers what it printed.
  std::string Run(bool (*test)(), std::shared_ptr<const NodeCatalog> catalog) {
    Engine::Get()->SetCatalog(std::move(catalog));
    testing::internal::CaptureStdout();
    passed_ = test();
    return testing::internal::GetCapturedStdout();
  }

  /// The same for a test that cannot create its nodes: it renders nothing and answers false.
  void ExpectFailure(bool (*test)(), const std::shared_ptr<const NodeCatalog>& catalog, const std::string& text) {
    EXPECT_EQ(Run(test, catalog), text);
    EXPECT_FALSE(passed_);
    for (const auto& report : TestSession::Get().GetReports()) EXPECT_TRUE(report.cases.empty()) << report.title;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Path())) {
      EXPECT_TRUE(entry.is_directory()) << entry.path();
    }
  }

  Testing::TemporaryFolder folder_;
  Testing::WorkingFolder working_folder_{folder_.Path()};
  bool passed_ = true;
};

TEST_F(SelfTestsTest, SayWhichNodesAreMissingWhenTheHostHasNone) {
  const auto library = MakeLibraryCatalog();
  ExpectFailure(SelfTests::RunAdd, library, "Value.DLL Add Value\nERROR: Failed to create input nodes\n");
  ExpectFailure(SelfTests::RunMultiply, library, "Value.DLL Multiply Value\nERROR: Failed to create input nodes\n");
  ExpectFailure(SelfTests::RunMinimum, library, "Value.DLL Min Value\nERROR: Failed to create input nodes\n");
  ExpectFailure(SelfTests::RunMaximum, library, "Value.DLL Max Value\nERROR: Failed to create input nodes\n");
  ExpectFailure(SelfTests::RunCondition, library, "Value.DLL Value Condition\nERROR: Failed to create checker node\n");
  ExpectFailure(SelfTests::RunAbsolute, library, "Value.DLL Value Absolute\nERROR: Failed to create waves node\n");
}

TEST_F(SelfTestsTest, RunBothTestsOfReliefAlthoughTheFirstFailed) {
  ExpectFailure(SelfTests::RunRelief, MakeLibraryCatalog(),
                "Value.DLL Relief Inner Bevel\nERROR: Failed to create reader node\n"
                "Value.DLL Relief Levels\nERROR: Failed to create reader node\n");
  ExpectFailure(SelfTests::RunRelief, ScEng::CreateHostCatalog(),
                "Value.DLL Relief Inner Bevel\nERROR: Failed to create Relief Inner Bevel node\n"
                "Value.DLL Relief Levels\nERROR: Failed to create Relief node\n");
}

TEST_F(SelfTestsTest, SayThatTheNodeUnderTestIsMissing) {
  const auto host = ScEng::CreateHostCatalog();
  ExpectFailure(SelfTests::RunAdd, host, "Value.DLL Add Value\nERROR: Failed to create input nodes\n");
  ExpectFailure(SelfTests::RunCondition, host, "Value.DLL Value Condition\nERROR: Failed to create checker node\n");
  ExpectFailure(SelfTests::RunAbsolute, host, "Value.DLL Value Absolute\nERROR: Failed to create waves node\n");
}

TEST_F(SelfTestsTest, AreRunByTheDescriptorsOfTheirNodeTypes) {
  const auto host = ScEng::CreateHostCatalog();
  const auto library = MakeLibraryCatalog();
  const auto title = [&](const char* type_name) {
    Engine::Get()->SetCatalog(host);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(library->FindTypeName(type_name)->RunTest()) << "a node type is missing";
    const std::string text = testing::internal::GetCapturedStdout();
    return text.substr(0, text.find('\n'));
  };
  EXPECT_EQ(title("ImageValueAddNode"), "Value.DLL Add Value");
  EXPECT_EQ(title("ImageValueSubtractNode"), "Value.DLL Add Value");
  EXPECT_EQ(title("ImageValueMultiplyNode"), "Value.DLL Multiply Value");
  EXPECT_EQ(title("ImageValueDivideNode"), "Value.DLL Multiply Value");
  EXPECT_EQ(title("ImageValuePowerNode"), "Value.DLL Multiply Value");
  EXPECT_EQ(title("ImageValueMinimumNode"), "Value.DLL Min Value");
  EXPECT_EQ(title("ImageValueMaximumNode"), "Value.DLL Max Value");
  EXPECT_EQ(title("ImageValueStepsNode"), "Value.DLL Value Absolute");
  EXPECT_EQ(title("ImageValueConditionNode"), "Value.DLL Value Condition");
  EXPECT_EQ(title("ImageReliefNode"), "Value.DLL Relief Inner Bevel");
}

}  // namespace
