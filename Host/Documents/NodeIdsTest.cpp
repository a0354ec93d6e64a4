// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/NodeIds.h"

#include <gtest/gtest.h>

#include <string>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::GraphDocument;
using ScEng::MakeIdFromName;
using ScEng::Status;
using ScEng::UniqueIds;
using Testing::GetCatalog;

void Add(GraphDocument& document, const std::string& id) {
  Status status;
  ASSERT_NE(document.AddNode(id, ScEng::kImageWavesType, status), nullptr) << status.GetMessage();
}

TEST(MakeIdFromNameTest, KeepsLettersAndDigitsInLowerCase) {
  EXPECT_EQ(MakeIdFromName("Value Clamp"), "value_clamp");
  EXPECT_EQ(MakeIdFromName("Log2"), "log2");
}

TEST(MakeIdFromNameTest, WritesOneUnderscoreForAllElseAndNoneAtTheEnds) {
  EXPECT_EQ(MakeIdFromName("  Blur -- (fast)  "), "blur_fast");
  EXPECT_EQ(MakeIdFromName("H\xC3\xB6he"), "h_he");
}

TEST(MakeIdFromNameTest, IsANodeWhereNothingIsLeft) {
  EXPECT_EQ(MakeIdFromName(""), "node");
  EXPECT_EQ(MakeIdFromName("\xE5\xB1\xB1"), "node");
}

TEST(MakeIdFromNameTest, IsNeverLongerThanFortyCharacters) {
  EXPECT_EQ(MakeIdFromName(std::string(100, 'x')), std::string(40, 'x'));
}

TEST(UniqueIdsTest, LeavesAnIdThatIsFree) {
  GraphDocument document(GetCatalog());
  EXPECT_EQ(UniqueIds(document).Make("blur"), "blur");
  EXPECT_EQ(UniqueIds(document).Make("blur7"), "blur7");
}

TEST(UniqueIdsTest, CountsFromTwo) {
  GraphDocument document(GetCatalog());
  UniqueIds ids(document);
  for (const char* const expected : {"blur", "blur2", "blur3"}) {
    const std::string id = ids.Make("blur");
    EXPECT_EQ(id, expected);
    Add(document, id);
  }
}

TEST(UniqueIdsTest, CountsOnFromTheNameWithoutItsNumber) {
  GraphDocument document(GetCatalog());
  Add(document, "blur7");
  Add(document, "blur2");
  EXPECT_EQ(UniqueIds(document).Make("blur7"), "blur3");
}

TEST(UniqueIdsTest, CallsANumberANode) {
  GraphDocument document(GetCatalog());
  Add(document, "12");
  EXPECT_EQ(UniqueIds(document).Make("12"), "node2");
}

TEST(UniqueIdsTest, CutsALongNameAtAWholeCharacter) {
  GraphDocument document(GetCatalog());
  std::string mountains;
  for (int i = 0; i < 200; ++i) mountains += "\xE5\xB1\xB1";
  Add(document, mountains);
  EXPECT_EQ(UniqueIds(document).Make(mountains), mountains.substr(0, std::size_t{180} * 3) + "2");
}

}  // namespace
