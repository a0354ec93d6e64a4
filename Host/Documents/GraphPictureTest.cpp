// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/GraphPicture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::DrawSvg;
using ScEng::GraphDocument;
using ScEng::Status;
using ScEng::WriteDot;
using Testing::GetCatalog;
using Testing::TemporaryFolder;

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

class GraphPictureTest : public testing::Test {
 protected:
  GraphPictureTest() : document_(GetCatalog()) {}

  void Add(const std::string& id, const NodeType& type = ScEng::kImageWavesType) {
    Status status;
    ASSERT_NE(document_.AddNode(id, type, status), nullptr) << status.GetMessage();
  }
  void Set(const std::string& name, const std::string& value) {
    std::vector<std::string> notes;
    const Status status = document_.SetAttribute(name, value, notes);
    ASSERT_FALSE(status.IsError()) << status.GetMessage();
  }
  [[nodiscard]] std::string Draw(const std::vector<std::string>& problems = {}) const {
    return WriteDot(document_, problems);
  }

  GraphDocument document_;
};

TEST_F(GraphPictureTest, OfNothingIsAGraphWithoutNodes) {
  const std::string dot = Draw();
  EXPECT_TRUE(dot.starts_with("digraph"));
  EXPECT_EQ(Count(dot, "label=<"), 0U);
}

TEST_F(GraphPictureTest, NumbersNodesInTheirOrderWhateverTheirIds) {
  Add("b\"1\"");
  Add("a->c; }");
  const std::string dot = Draw();
  EXPECT_EQ(Count(dot, "\n  n0 ["), 1U);
  EXPECT_EQ(Count(dot, "\n  n1 ["), 1U);
  EXPECT_EQ(Count(dot, " -> "), 0U);
  EXPECT_NE(dot.find("b&#34;1&#34;"), std::string::npos);
  EXPECT_NE(dot.find("a-&#62;c"), std::string::npos);
}

TEST_F(GraphPictureTest, ShowsAttributesThatAreNotDefault) {
  Add("waves");
  EXPECT_EQ(Draw().find("height"), std::string::npos);
  Set("waves.height", "2.5");
  EXPECT_NE(Draw().find("height"), std::string::npos);
  EXPECT_NE(Draw().find("2.5"), std::string::npos);
}

TEST_F(GraphPictureTest, MarksDisabledNodes) {
  Add("waves");
  EXPECT_EQ(Draw().find("disabled"), std::string::npos);
  ASSERT_FALSE(document_.SetEnabled("waves", false).IsError());
  EXPECT_NE(Draw().find("disabled"), std::string::npos);
}

TEST_F(GraphPictureTest, DrawsAWireForEachConnectionAndEachFile) {
  Add("waves");
  Add("sum", ScEng::kImageWavesType);
  const TemporaryFolder folder;
  ASSERT_FALSE(document_.AddOutput("waves.image", folder / "one.exr").IsError());
  ASSERT_FALSE(document_.AddOutput("waves.image", folder / "two.exr").IsError());
  const std::string dot = Draw();
  EXPECT_EQ(Count(dot, "n0:t:e -> f0:w"), 1U);
  EXPECT_EQ(Count(dot, "n0:t:e -> f1:w"), 1U);
  EXPECT_EQ(Count(dot, " -> "), 2U);
}

TEST_F(GraphPictureTest, PutsAProblemAtTheNodeThatItNames) {
  Add("waves");
  Add("other");
  const std::string dot = Draw({"\"other.image\" goes nowhere", "the document has no version"});
  const std::size_t other = dot.find("\n  n1 [");
  const std::size_t end = dot.find("\n", other + 1);
  const std::size_t at_node = dot.find("goes nowhere");
  EXPECT_GT(at_node, other);
  EXPECT_LT(at_node, end);
  // What names no node stands below the graph.
  EXPECT_GT(dot.find("the document has no version"), dot.find("labelloc=b"));
}

TEST_F(GraphPictureTest, SaysHowManyProblemsAreNotShown) {
  std::vector<std::string> problems;
  for (int i = 0; i < 15; ++i) problems.push_back("problem " + std::to_string(i));
  const std::string dot = Draw(problems);
  EXPECT_NE(dot.find("problem 11"), std::string::npos);
  EXPECT_EQ(dot.find("problem 12"), std::string::npos);
  EXPECT_NE(dot.find("and 3 more problems"), std::string::npos);
}

TEST_F(GraphPictureTest, IsLaidOutAsSvg) {
  Add("waves");
  std::string svg;
  const Status status = DrawSvg(document_, {}, svg);
  ASSERT_FALSE(status.IsError()) << status.GetMessage();
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("waves"), std::string::npos);
  EXPECT_TRUE(svg.ends_with("</svg>\n"));
}

TEST_F(GraphPictureTest, NamesThePackageWhereTheProgramIsMissing) {
  const TemporaryFolder folder;
  const char* const path = std::getenv("PATH");
  const std::string kept = path == nullptr ? "" : path;
  setenv("PATH", folder.Path().c_str(), 1);
  std::string svg = "as before";
  const Status status = DrawSvg(document_, {}, svg);
  setenv("PATH", kept.c_str(), 1);
  EXPECT_TRUE(status.IsError());
  EXPECT_NE(status.GetMessage().find("\"graphviz\""), std::string::npos);
  EXPECT_EQ(svg, "as before");
}

TEST_F(GraphPictureTest, RefusesMoreNodesThanAnybodyReads) {
  for (int i = 0; i < 3001; ++i) Add("n" + std::to_string(i));
  std::string svg;
  const Status status = DrawSvg(document_, {}, svg);
  EXPECT_TRUE(status.IsError());
  EXPECT_NE(status.GetMessage().find("3000"), std::string::npos);
  EXPECT_NE(status.GetMessage().find("3001"), std::string::npos);
}

}  // namespace
