// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/DescriptionBytes.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <limits>
#include <new>

#include "Host/Files/Decoding/HelperLimits.h"
#include "Host/Files/Decoding/ReadBounds.h"
#include "Host/Files/Decoding/SharedSamples.h"

namespace {

using namespace ScEng;

/// Every field with a value of its own.
FileDescription MakeFullDescription() {
  FilePart part;
  part.name = "left";
  part.size_x = 640;
  part.size_y = 480;
  part.corner_x = -10;
  part.corner_y = 20;
  part.channels = {{"diffuse.R", {StoredType::kHalf, -9999.0, 0.1, 5.0}}, {"A", {StoredType::kDouble, {}, {}, {}}}};
  part.opacity_channel = 1;
  part.is_multiplied = true;
  part.orientation = 6;
  part.reads_regions = false;
  part.compression = "piz";
  part.problem = "it holds deep samples";
  part.stored_headers = {{"", {2, std::pair(0.5F, 1.5F), std::pair(3, -4), std::pair(0.25F, 0.75F)}},
                         {"diffuse", {std::nullopt, std::nullopt, std::nullopt, std::nullopt}}};
  part.metadata.exif = {1, 2, 3};
  part.metadata.iptc = {4};
  part.metadata.xmp = "<x/>";
  part.metadata.icc = {5, 6};
  part.metadata.resolution = std::array<double, 2>{300.0, 150.0};
  part.metadata.resolution_unit = "in";
  part.metadata.georeference = Georeference{"PROJCS[]", std::array<double, 6>{1, 2, 3, 4, 5, 6}};
  part.metadata.nodata = -32768.0;
  part.metadata.value_unit = "metre";
  part.metadata.display_window = Box2I{-1, -2, 3, 4};
  part.metadata.entries = {{"Artist", std::string("one\ntwo")},
                           {"numbers", std::vector<std::int64_t>{-1, std::numeric_limits<std::int64_t>::max()}},
                           {"reals", std::vector<double>{0.1, -2.5}},
                           {"chromaticities", OpaqueValue{"chromaticities", {7, 8, 9}}}};
  part.metadata.had_opacity = true;
  FilePart other;
  other.metadata.georeference = Georeference{};
  other.metadata.had_opacity = false;
  return {"openexr", {part, other}, {"a note", "another"}};
}

TEST(DescriptionBytes, KeepEveryField) {
  const FileDescription description = MakeFullDescription();
  const auto again = ToDescription(ToBytes(description));
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(*again, description);
}

TEST(DescriptionBytes, KeepAnEmptyDescription) { EXPECT_EQ(ToDescription(ToBytes({})), FileDescription{}); }

TEST(DescriptionBytes, AreRefusedWhereTheyEndEarlyOrLate) {
  Bytes bytes = ToBytes(MakeFullDescription());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    ASSERT_FALSE(ToDescription(std::span(bytes).first(size)).has_value()) << size;
  }
  bytes.push_back(0);
  EXPECT_FALSE(ToDescription(bytes).has_value());
}

TEST(DescriptionBytes, NeverDoHarmWithOneByteChanged) {
  const Bytes bytes = ToBytes(MakeFullDescription());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const int byte : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
      Bytes changed = bytes;
      changed[i] = static_cast<std::uint8_t>(byte);
      const auto description = ToDescription(changed);
      if (!description) continue;
      for (const FilePart& part : description->parts) {
        ASSERT_GE(part.size_x, 0);
        ASSERT_LT(part.opacity_channel, static_cast<int>(part.channels.size()));
      }
    }
  }
}

TEST(DescriptionBytes, BelieveNoCountWithoutItsBytes) {
  // An empty format, then 2^60 parts.
  Bytes bytes(16, 0);
  bytes[15] = 0x10;
  EXPECT_FALSE(ToDescription(bytes).has_value());
}

template <class Change>
bool IsAccepted(Change change) {
  FileDescription description = MakeFullDescription();
  change(description.parts[0]);
  return ToDescription(ToBytes(description)).has_value();
}

TEST(DescriptionBytes, RefuseWhatNoFileHas) {
  EXPECT_TRUE(IsAccepted([](FilePart& part) { part.size_x = 0; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.size_x = -1; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.size_y = -1; }));
  EXPECT_TRUE(IsAccepted([](FilePart& part) { part.opacity_channel = -1; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.opacity_channel = -2; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.opacity_channel = 2; }));
  EXPECT_TRUE(IsAccepted([](FilePart& part) { part.orientation = 8; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.orientation = 9; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.orientation = 0; }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.channels[0].samples.type = static_cast<StoredType>(11); }));
  EXPECT_FALSE(IsAccepted([](FilePart& part) { part.corner_x = std::numeric_limits<int>::max(); }));
}

TEST(MakePrintable, KeepsTextAndReplacesTheRest) {
  EXPECT_EQ(MakePrintable("caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80", 100),
            "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80");
  EXPECT_EQ(MakePrintable("a\tb\nc\x7f", 100), "a?b?c?");
  EXPECT_EQ(MakePrintable("\xff\xc3(\xc0\xaf", 100),
            "?"
            "?(?"
            "?");
  // A control character of the second block, and one that turns the direction of writing.
  EXPECT_EQ(MakePrintable("\xc2\x9b|\xe2\x80\xae|", 100), "??|???|");
}

TEST(MakePrintable, CutsBetweenCharacters) {
  EXPECT_EQ(MakePrintable("abcd", 3), "abc");
  EXPECT_EQ(MakePrintable("ab\xe2\x82\xac", 4), "ab");
}

TEST(ReadBounds, CountWhatStridesReach) {
  ReadRequest request;
  request.channels = {0, 1};
  request.column_end = 3;
  request.row_end = 2;
  // The last pixel begins at 1 * 10 + 2 * 2 and has two samples.
  EXPECT_TRUE(FitsInto(request, 0, 2, 10, 16));
  EXPECT_FALSE(FitsInto(request, 0, 2, 10, 15));
  EXPECT_FALSE(FitsInto(request, 1, 2, 10, 16));
  EXPECT_FALSE(FitsInto(request, 0, SIZE_MAX, 10, 16));
  EXPECT_EQ(CountFloats(request), 12U);
  request.row_end = 0;
  EXPECT_TRUE(FitsInto(request, 0, 2, 10, 0));
}

TEST(HelperLimits, GrowWithTheFileUpToTheMost) {
  constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;
  const HelperLimits limits;
  EXPECT_EQ(GetAllowedMemory(limits, 0, 0), 768 * kMebibyte);
  EXPECT_EQ(GetAllowedMemory(limits, 10 * kMebibyte, 64 * kMebibyte), (768 + 4 * 74) * kMebibyte);
  EXPECT_EQ(GetAllowedMemory(limits, 0, 4096 * kMebibyte), 8192 * kMebibyte);
  EXPECT_EQ(GetAllowedMemory(limits, UINT64_MAX, UINT64_MAX), 8192 * kMebibyte);
}

TEST(SharedSamples, BeginWithZerosAndOutliveTheirObject) {
  SharedSamples memory(5 * sizeof(float));
  ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory.GetSamples()) % 64, 0U);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(memory.GetSamples()[i], 0.0F);
  const std::size_t bytes = memory.GetBytes();
  EXPECT_EQ(bytes, 20U);
  float* const samples = memory.Release();
  EXPECT_EQ(memory.GetSamples(), nullptr);
  EXPECT_EQ(memory.GetDescriptor(), -1);
  samples[4] = 2.5F;
  EXPECT_EQ(samples[4], 2.5F);
  SharedSamples::Unmap(samples, bytes);
}

TEST(SharedSamples, KeepTheirSize) {
  const SharedSamples memory(4096);
  EXPECT_NE(ftruncate(memory.GetDescriptor(), 10), 0);
  EXPECT_NE(ftruncate(memory.GetDescriptor(), 10'000), 0);
}

TEST(SharedSamples, ThatNoMemoryHoldsThrow) { EXPECT_THROW(SharedSamples(SIZE_MAX), std::bad_alloc); }

}  // namespace
