// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"

namespace {

using ScEng::GraphDocument;

constexpr const char* kGraph =
    "{'id': 'height', 'type': 'ImageReaderNode'}, {'id': 'raised', 'type': 'ImageValueAddNode'},"
    "{'id': 'bent', 'type': 'ImageReliefNode'}";

class UnknownNamesTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(Testing::LoadText(document_, Testing::MakeText(kGraph)).errors.empty()); }

  std::string Set(const std::string& attribute, const std::string& text) {
    std::vector<std::string> notes;
    return document_.SetAttribute(attribute, text, notes).GetMessage();
  }

  GraphDocument document_{Testing::GetCatalog()};
};

TEST_F(UnknownNamesTest, OffersIds) {
  EXPECT_EQ(Set("rasied.constant", "1"), "there is no node \"rasied\"; the closest is \"raised\"");
  EXPECT_EQ(Set("Value Add.constant", "1"), "there is no node \"Value Add\"; the closest is \"raised\"");
  EXPECT_EQ(Set("zebra.constant", "1"), "there is no node \"zebra\"; there are \"height\", \"raised\", \"bent\"");
}

TEST_F(UnknownNamesTest, OffersAttributes) {
  EXPECT_EQ(
      Set("raised.constnat", "1"),
      "\"raised.constnat\": Value Add has no attribute \"constnat\"; the closest is \"constant\"; it has constant");
  EXPECT_EQ(
      Set("raised.image", "1"),
      "\"raised.image\": Value Add has no attribute \"image\"; it has constant; \"image\" is an input, which takes "
      "an image");
}

TEST_F(UnknownNamesTest, OffersWhatAWordAloneMayMean) {
  EXPECT_EQ(Set("constant", "1"), "\"constant\" is not of the form NODE.NAME; the closest is \"raised.constant\"");
  EXPECT_EQ(Set("raised", "1"), "\"raised\" is not of the form NODE.NAME; the closest is \"raised.constant\"");
  EXPECT_EQ(document_.AddOutput("raised", "a.exr").GetMessage(),
            "\"raised\" is not of the form NODE.NAME; the closest is \"raised.image\"");
}

TEST_F(UnknownNamesTest, OffersOutputsAndReaders) {
  EXPECT_EQ(document_.AddOutput("raised.imgae", "a.exr").GetMessage(),
            "\"raised.imgae\": Value Add has no output \"imgae\"; the closest is \"image\"; it has image");
  EXPECT_EQ(document_.SetInput("raised", "a.exr").GetMessage(),
            "node \"raised\" is not a reader: Value Add reads no file; the reader is \"height\"");
  EXPECT_EQ(document_.SetInput("height.path", "a.exr").GetMessage(),
            "there is no node \"height.path\"; a reader is named without its plug: \"height\"");
}

TEST_F(UnknownNamesTest, OffersValues) {
  EXPECT_EQ(Set("raised.constant", "1,5"), "\"raised.constant\": it takes a number, not \"1,5\"; write 1.5");
  EXPECT_EQ(Set("bent.radius", "12px"), "\"bent.radius\": it takes a number, not \"12px\"; write 12");
  EXPECT_EQ(Set("bent.radius", "50%"), "\"bent.radius\": it takes a number, not \"50%\"");
  EXPECT_EQ(Set("raised.constant", "1,000"), "\"raised.constant\": it takes a number, not \"1,000\"");
  EXPECT_EQ(Set("bent.grow", "Yes"), "\"bent.grow\": it takes true or false, not \"Yes\"; write true");
  EXPECT_EQ(Set("bent.grow", "perhaps"), "\"bent.grow\": it takes true or false, not \"perhaps\"");
  EXPECT_EQ(Set("height.pin", "3 4"), "\"height.pin\": it takes 2 numbers (x, y), not \"3 4\"; write 3,4");
  EXPECT_EQ(Set("height.pin", "(3, 4)"), "\"height.pin\": it takes 2 numbers (x, y), not \"(3, 4)\"; write 3,4");
  EXPECT_EQ(Set("bent.profile", "smoth"),
            "\"bent.profile\": \"smoth\" is not one of its words: linear, smooth, arc_out, arc_in; the closest is "
            "\"smooth\"");
}

TEST_F(UnknownNamesTest, OffersNothingOnceADocumentHasAskedTooOften) {
  const std::string first = Set("raised.constnat", "1");
  EXPECT_NE(first.find("the closest is \"constant\""), std::string::npos) << first;
  std::string last = first;
  for (int i = 0; i < 200'000 && last == first; ++i) last = Set("raised.constnat", "1");
  EXPECT_NE(last.find("constnat"), std::string::npos) << last;
  EXPECT_EQ(last.find("the closest is"), std::string::npos) << last;
}

}  // namespace
