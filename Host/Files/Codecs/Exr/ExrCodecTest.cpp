// SPDX-License-Identifier: Apache-2.0
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfDeepFrameBuffer.h>
#include <OpenEXR/ImfDeepScanLineOutputFile.h>
#include <OpenEXR/ImfDoubleAttribute.h>
#include <OpenEXR/ImfFloatVectorAttribute.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfMultiPartOutputFile.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfOutputPart.h>
#include <OpenEXR/ImfPartType.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfTiledOutputFile.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "Host/Files/Codecs/CodecTesting.h"

namespace ScEng {
namespace {

using Testing::Bytes;
using Testing::GetProblem;
using Testing::LoadBytes;
using Testing::Pixels;
using Testing::ReadPart;
using Testing::ReadRows;
using Testing::TestFolder;
using Testing::WriteFile;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

const ImageCodec& GetExr() { return Testing::GetCodec("exr"); }

/// Worked out from the bits: a sign, five bits of exponent with a bias of 15, ten bits of fraction.
float FromHalf(unsigned bits) {
  const float sign = (bits & 0x8000U) != 0 ? -1.0F : 1.0F;
  const int exponent = static_cast<int>((bits >> 10) & 31U);
  const auto fraction = static_cast<float>(bits & 1023U);
  if (exponent == 31) return fraction != 0.0F ? std::nanf("") : sign * kInfinity;
  if (exponent == 0) return sign * std::ldexp(fraction, -24);
  return sign * std::ldexp(1024.0F + fraction, exponent - 25);
}

bool IsSame(float a, float b) {
  return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

WritePlan MakePlan(int size_x, int size_y, std::vector<std::string> channels) {
  WritePlan plan;
  plan.size_x = size_x;
  plan.size_y = size_y;
  plan.channels = std::move(channels);
  return plan;
}

class ExrCodecTest : public testing::Test {
 protected:
  std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file) {
    Status status;
    auto decoder = GetExr().Open(file, "openexr", status);
    EXPECT_NE(decoder, nullptr) << status.GetMessage();
    return decoder;
  }
  std::unique_ptr<ImageDecoder> Open() { return Open(file_); }

  std::vector<float> Read(std::size_t part = 0) {
    const auto decoder = Open();
    Pixels pixels = ReadPart(*decoder, part);
    EXPECT_EQ(pixels.status.GetMessage(), "");
    return pixels.samples;
  }

  std::string Write(const WritePlan& plan, const std::vector<float>& samples) {
    return WriteFile(GetExr(), file_, plan, samples.data());
  }

  FilePart Describe() { return Open()->GetDescription().parts.front(); }

  TestFolder folder_;
  std::filesystem::path file_ = folder_ / "file.exr";
};

// ---- Samples ----

TEST_F(ExrCodecTest, FloatsComeBackBitForBit) {
  std::mt19937 random(3);
  std::vector<float> samples(41 * 67 * 3);
  for (float& sample : samples) sample = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
  samples[0] = kInfinity;
  samples[1] = -kInfinity;
  samples[2] = std::numeric_limits<float>::denorm_min();
  samples[3] = -0.0F;
  samples[4] = std::nanf("");
  for (const char* compression : {"", "none", "rle", "zips", "zip", "piz"}) {
    WritePlan plan = MakePlan(41, 67, {"B", "G", "R"});
    plan.compression = compression;
    ASSERT_EQ(Write(plan, samples), "");
    const std::vector<float> read = Read();
    ASSERT_EQ(read.size(), samples.size());
    EXPECT_TRUE(std::equal(read.begin(), read.end(), samples.begin(), IsSame)) << compression;
  }
}

TEST_F(ExrCodecTest, AllHalvesComeBack) {
  std::vector<float> samples(65536);
  for (unsigned bits = 0; bits < 65536; ++bits) samples[bits] = FromHalf(bits);
  WritePlan plan = MakePlan(256, 256, {"Y"});
  plan.type = StoredType::kHalf;
  ASSERT_EQ(Write(plan, samples), "");
  EXPECT_EQ(Describe().channels[0].samples.type, StoredType::kHalf);
  const std::vector<float> read = Read();
  EXPECT_TRUE(std::equal(read.begin(), read.end(), samples.begin(), IsSame));
}

TEST_F(ExrCodecTest, RoundsToTheNearestHalf) {
  WritePlan plan = MakePlan(6, 1, {"Y"});
  plan.type = StoredType::kHalf;
  // Halfway cases go to the even neighbor; above 65519 there is only infinity.
  ASSERT_EQ(Write(plan, {1.0F + 1.0F / 2048, 1.0F + 3.0F / 2048, 1.0F + 1.01F / 2048, 65519.0F, 65520.0F, 1e-9F}), "");
  EXPECT_EQ(Read(), (std::vector<float>{1.0F, 1.0F + 2.0F / 1024, 1.0F + 1.0F / 1024, 65504.0F, kInfinity, 0.0F}));
}

TEST_F(ExrCodecTest, WritesLossyCompressionsWhenAsked) {
  for (const char* compression : {"pxr24", "b44", "b44a", "dwaa", "dwab"}) {
    for (const StoredType type : {StoredType::kHalf, StoredType::kFloat}) {
      WritePlan plan = MakePlan(64, 300, {"R"});
      plan.compression = compression;
      plan.type = type;
      std::vector<float> samples(64 * 300);
      for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i % 64) / 64.0F + 0.25F;
      ASSERT_EQ(Write(plan, samples), "");
      EXPECT_EQ(Describe().compression, compression);
      const std::vector<float> read = Read();
      for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_NEAR(read[i], samples[i], 0.05F) << compression << i;
    }
  }
}

TEST_F(ExrCodecTest, RefusesAnUnknownCompression) {
  WritePlan plan = MakePlan(1, 1, {"Y"});
  plan.compression = "lzw";
  EXPECT_EQ(Write(plan, {0.0F}),
            "OpenEXR has no compression \"lzw\"; there are none, rle, zips, zip, piz, pxr24, b44, b44a, dwaa, dwab");
}

TEST_F(ExrCodecTest, ReadsWholeNumbersExactly) {
  const std::vector<std::uint32_t> ids{0, 1, 16777217, 4294967295U};
  Imf::Header header(4, 1);
  header.channels().insert("id", Imf::Channel(Imf::UINT));
  header.channels().insert("Z", Imf::Channel(Imf::FLOAT));
  const float depths[] = {0.5F, 1.5F, 2.5F, 3.5F};
  {
    Imf::OutputFile file(file_.c_str(), header);
    Imf::FrameBuffer buffer;
    buffer.insert("id", Imf::Slice::Make(Imf::UINT, ids.data(), header.dataWindow()));
    buffer.insert("Z", Imf::Slice::Make(Imf::FLOAT, depths, header.dataWindow()));
    file.setFrameBuffer(buffer);
    file.writePixels(1);
  }
  const FilePart part = Describe();
  ASSERT_EQ(part.channels.size(), 2U);
  EXPECT_EQ(part.channels[1].name, "id");
  EXPECT_EQ(part.channels[1].samples.type, StoredType::kUint32);
  // A float holds 24 bits: the third number is a tie and goes to the even neighbor.
  EXPECT_EQ(Read(), (std::vector<float>{0.5F, 0, 1.5F, 1, 2.5F, 16777216, 3.5F, 4294967296.0F}));
  const auto decoder = Open();
  EXPECT_EQ(ReadPart(*decoder, 0, SampleScale::kUnit).samples[7], 1.0F);
}

TEST_F(ExrCodecTest, ReadsRegionsInAnyOrder) {
  std::vector<float> samples(10 * 100);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i);
  ASSERT_EQ(Write(MakePlan(10, 100, {"Y"}), samples), "");
  const auto decoder = Open();
  for (const int row : {37, 99, 0, 16, 15}) {
    const auto first = samples.begin() + row * 10;
    EXPECT_EQ(ReadRows(*decoder, 0, row, row + 1).samples, std::vector<float>(first, first + 10)) << row;
  }
  EXPECT_EQ(ReadRows(*decoder, 0, 5, 90).samples, std::vector<float>(samples.begin() + 50, samples.begin() + 900));
}

TEST_F(ExrCodecTest, ReadsColumnsAndChannelsAsAsked) {
  ASSERT_EQ(Write(MakePlan(3, 1, {"B", "G", "R"}), {1, 2, 3, 4, 5, 6, 7, 8, 9}), "");
  ReadRequest request;
  request.channels = {2, 0, 2};
  request.column_begin = 1;
  request.column_end = 3;
  request.row_end = 1;
  std::vector<float> samples(8, -1.0F);
  EXPECT_EQ(Open()->Read(request, {samples.data(), 4, 8}).GetMessage(), "");
  EXPECT_EQ(samples, (std::vector<float>{6, 4, 6, -1, 9, 7, 9, -1}));
}

// ---- Kinds of files ----

TEST_F(ExrCodecTest, ReadsTilesOfAllLevels) {
  for (const Imf::LevelMode mode : {Imf::ONE_LEVEL, Imf::MIPMAP_LEVELS, Imf::RIPMAP_LEVELS}) {
    for (const Imf::Compression compression : {Imf::NO_COMPRESSION, Imf::ZIP_COMPRESSION, Imf::PIZ_COMPRESSION}) {
      const Imath::Box2i window({-5, 3}, {64, 52});
      Imf::Header header(window, window);
      header.compression() = compression;
      header.setTileDescription(Imf::TileDescription(16, 8, mode));
      header.channels().insert("Y", Imf::Channel(Imf::FLOAT));
      std::vector<float> samples(70 * 50);
      for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i);
      {
        Imf::TiledOutputFile file(file_.c_str(), header);
        for (int y = 0; y < file.numYLevels(); ++y) {
          for (int x = 0; x < file.numXLevels(); ++x) {
            if (!file.isValidLevel(x, y)) continue;
            // The smaller levels hold the same samples, which is of no importance.
            Imf::FrameBuffer buffer;
            buffer.insert("Y", Imf::Slice::Make(Imf::FLOAT, samples.data(), window));
            file.setFrameBuffer(buffer);
            file.writeTiles(0, file.numXTiles(x) - 1, 0, file.numYTiles(y) - 1, x, y);
          }
        }
      }
      const auto decoder = Open();
      EXPECT_EQ(decoder->GetDescription().parts[0].corner_x, -5);
      EXPECT_EQ(decoder->GetDescription().parts[0].corner_y, 3);
      const Pixels all = ReadPart(*decoder);
      EXPECT_EQ(all.status.GetMessage(), "");
      EXPECT_EQ(all.samples, samples);
      EXPECT_EQ(ReadRows(*decoder, 0, 9, 33).samples,
                std::vector<float>(samples.begin() + 9 * 70, samples.begin() + 33 * 70));
    }
  }
}

TEST_F(ExrCodecTest, ReadsPartsByName) {
  std::vector<Imf::Header> headers;
  const std::vector<float> values{1, 2, 3, 4, 5, 6};
  for (const char* name : {"left", "right"}) {
    Imf::Header header(3, 2);
    header.setName(name);
    header.setType(Imf::SCANLINEIMAGE);
    header.channels().insert(std::string(name) + ".R", Imf::Channel(Imf::HALF));
    headers.push_back(header);
  }
  {
    Imf::MultiPartOutputFile file(file_.c_str(), headers.data(), 2);
    for (int i = 0; i < 2; ++i) {
      Imf::OutputPart part(file, i);
      std::vector<Imath::half> halves;
      for (const float value : values) halves.emplace_back(value * static_cast<float>(i + 1));
      Imf::FrameBuffer buffer;
      buffer.insert(i == 0 ? "left.R" : "right.R",
                    Imf::Slice::Make(Imf::HALF, halves.data(), headers[static_cast<std::size_t>(i)].dataWindow()));
      part.setFrameBuffer(buffer);
      part.writePixels(2);
    }
  }
  const auto decoder = Open();
  const auto& parts = decoder->GetDescription().parts;
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_EQ(parts[0].name, "left");
  EXPECT_EQ(parts[1].name, "right");
  EXPECT_EQ(parts[1].channels[0].name, "right.R");
  EXPECT_EQ(ReadPart(*decoder, 1).samples, (std::vector<float>{2, 4, 6, 8, 10, 12}));
  EXPECT_EQ(ReadPart(*decoder, 0).samples, values);
}

TEST_F(ExrCodecTest, LeavesSubsampledChannelsOut) {
  Imf::Header header(4, 2);
  header.channels().insert("Y", Imf::Channel(Imf::FLOAT));
  header.channels().insert("BY", Imf::Channel(Imf::FLOAT, 2, 2));
  header.channels().insert("RY", Imf::Channel(Imf::FLOAT, 2, 2));
  const std::vector<float> luminance{1, 2, 3, 4, 5, 6, 7, 8};
  const float color[] = {0.5F, 0.25F};
  {
    Imf::OutputFile file(file_.c_str(), header);
    Imf::FrameBuffer buffer;
    buffer.insert("Y", Imf::Slice::Make(Imf::FLOAT, luminance.data(), header.dataWindow()));
    for (const char* name : {"BY", "RY"}) {
      buffer.insert(name, Imf::Slice::Make(Imf::FLOAT, color, header.dataWindow(), 4, 8, 2, 2));
    }
    file.setFrameBuffer(buffer);
    file.writePixels(2);
  }
  EXPECT_EQ(Open()->GetDescription().notes,
            (std::vector<std::string>{"channels that are stored at a lower resolution are left out: BY, RY"}));
  EXPECT_EQ(Describe().channels.size(), 1U);
  EXPECT_EQ(Read(), luminance);
}

TEST_F(ExrCodecTest, SaysThatDeepPartsCannotBeRead) {
  Imf::Header header(2, 1);
  header.setType(Imf::DEEPSCANLINE);
  header.compression() = Imf::ZIPS_COMPRESSION;
  header.channels().insert("Z", Imf::Channel(Imf::FLOAT));
  {
    unsigned counts[] = {1, 0};
    float sample = 0.5F;
    float* pointers[] = {&sample, nullptr};
    Imf::DeepScanLineOutputFile file(file_.c_str(), header);
    Imf::DeepFrameBuffer buffer;
    buffer.insertSampleCountSlice(Imf::Slice(Imf::UINT, reinterpret_cast<char*>(counts), 4, 8));
    buffer.insert("Z", Imf::DeepSlice(Imf::FLOAT, reinterpret_cast<char*>(pointers), 8, 16, 4));
    file.setFrameBuffer(buffer);
    file.writePixels(1);
  }
  EXPECT_EQ(Describe().problem, "it holds deep samples, which have no single value per pixel");
}

TEST_F(ExrCodecTest, DataAndDisplayWindowComeBack) {
  WritePlan plan = MakePlan(3, 2, {"Y"});
  plan.corner_x = -7;
  plan.corner_y = 12;
  plan.metadata.display_window = Box2I{-10, 0, 1910, 1080};
  ASSERT_EQ(Write(plan, {1, 2, 3, 4, 5, 6}), "");
  const FilePart part = Describe();
  EXPECT_EQ(part.corner_x, -7);
  EXPECT_EQ(part.corner_y, 12);
  EXPECT_EQ(part.size_x, 3);
  EXPECT_EQ(part.metadata.display_window, plan.metadata.display_window);
  EXPECT_EQ(Read(), (std::vector<float>{1, 2, 3, 4, 5, 6}));
  plan.metadata.display_window.reset();
  ASSERT_EQ(Write(plan, {1, 2, 3, 4, 5, 6}), "");
  EXPECT_EQ(Describe().metadata.display_window, (Box2I{-7, 12, -4, 14}));
}

TEST_F(ExrCodecTest, ChannelsOfLayersComeBackInTheOrderOfTheirNames) {
  ASSERT_EQ(Write(MakePlan(1, 1, {"normal.Z", "R", "A", "diffuse.R"}), {4, 3, 1, 2}), "");
  const FilePart part = Describe();
  std::vector<std::string> names;
  for (const FileChannel& channel : part.channels) names.push_back(channel.name);
  EXPECT_EQ(names, (std::vector<std::string>{"A", "R", "diffuse.R", "normal.Z"}));
  EXPECT_TRUE(part.is_multiplied);
  EXPECT_EQ(Read(), (std::vector<float>{1, 3, 2, 4}));
}

// ---- Metadata ----

TEST_F(ExrCodecTest, StoredHeadersComeBack) {
  WritePlan plan = MakePlan(1, 1, {"Y"});
  StoredHeader whole;
  whole.mode = 2;
  whole.range = {-1.5F, 2.25F};
  whole.pin = {-3, 40000};
  whole.pivot = {0.5F, 1.0F};
  StoredHeader layer;
  layer.mode = 7;
  plan.stored_headers = {{"", whole}, {"height", layer}};
  ASSERT_EQ(Write(plan, {0.0F}), "");
  auto headers = Describe().stored_headers;
  std::sort(headers.begin(), headers.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  EXPECT_EQ(headers, plan.stored_headers);
  EXPECT_TRUE(Describe().metadata.entries.empty());
}

TEST_F(ExrCodecTest, StoredHeadersCountMoreThanEntriesOfTheirName) {
  WritePlan plan = MakePlan(1, 1, {"Y"});
  plan.metadata.entries = {{"value:mode", "two"}, {"xDensity", "high"}, {"xmp", std::vector{1.0}}};
  plan.metadata.xmp = "<x/>";
  plan.metadata.resolution = {72.0, 72.0};
  plan.metadata.resolution_unit = "in";
  StoredHeader stored;
  stored.mode = 2;
  plan.stored_headers = {{"", stored}};
  ASSERT_EQ(Write(plan, {0.0F}), "");
  const FilePart part = Describe();
  EXPECT_EQ(part.stored_headers, plan.stored_headers);
  EXPECT_EQ(part.metadata.resolution, plan.metadata.resolution);
  EXPECT_EQ(part.metadata.xmp, "<x/>");
  EXPECT_TRUE(part.metadata.entries.empty());
}

TEST_F(ExrCodecTest, ReadsStoredHeadersOfOtherTypes) {
  WritePlan plan = MakePlan(1, 1, {"Y"});
  // Pairs the other way round: whole numbers as floats and the other way.
  plan.metadata.entries = {{"value:pin", std::vector{3.0, -4.0}},
                           {"value:pivot", std::vector<std::int64_t>{1, 0}},
                           {"value:mode", std::vector{1.0}},
                           {"value:low", std::vector<std::int64_t>{-1}},
                           {"value:high", std::vector<std::int64_t>{5}}};
  ASSERT_EQ(Write(plan, {0.0F}), "");
  const auto headers = Describe().stored_headers;
  ASSERT_EQ(headers.size(), 1U);
  StoredHeader expected;
  expected.mode = 1;
  expected.range = {-1.0F, 5.0F};
  expected.pin = {3, -4};
  expected.pivot = {1.0F, 0.0F};
  EXPECT_EQ(headers[0].second, expected);
}

/// A header with attributes of many types.
Imf::Header MakeRichHeader() {
  Imf::Header header(1, 1, 2.0F);
  header.channels().insert("Y", Imf::Channel(Imf::FLOAT));
  header.insert("box", Imf::Box2fAttribute({{0.5F, 1.0F}, {2.0F, 3.0F}}));
  header.insert("double", Imf::DoubleAttribute(0.1));
  header.insert("float", Imf::FloatAttribute(0.75F));
  header.insert("int", Imf::IntAttribute(-5));
  header.insert("matrix", Imf::M44fAttribute(Imath::M44f(2.0F)));
  header.insert("numbers", Imf::FloatVectorAttribute(std::vector<float>{1, 2, 3, 4}));
  header.insert("strings", Imf::StringVectorAttribute(Imf::StringVector{"a", "bc"}));
  header.insert("text", Imf::StringAttribute("words"));
  header.insert("v2i", Imf::V2iAttribute({1, 2}));
  header.insert("v3d", Imf::V3dAttribute({1, 2, 3}));
  header.insert("xmp", Imf::StringAttribute("<x/>"));
  Imf::addChromaticities(header, Imf::Chromaticities());
  Imf::addOwner(header, "Ann");
  Imf::addComments(header, "a picture");
  Imf::addCapDate(header, "2020:01:02 03:04:05");
  Imf::addXDensity(header, 72.0F);
  Imf::addEnvmap(header, Imf::ENVMAP_CUBE);
  Imf::addTimeCode(header, Imf::TimeCode(1, 2, 3, 4));
  Imf::addFramesPerSecond(header, Imf::Rational(24000, 1001));
  return header;
}

void WriteWith(const std::filesystem::path& path, const Imf::Header& header) {
  const float sample = 1.0F;
  Imf::OutputFile file(path.c_str(), header);
  Imf::FrameBuffer buffer;
  buffer.insert("Y", Imf::Slice::Make(Imf::FLOAT, &sample, header.dataWindow()));
  file.setFrameBuffer(buffer);
  file.writePixels(1);
}

TEST_F(ExrCodecTest, ReadsAttributesOfAllTypes) {
  WriteWith(file_, MakeRichHeader());
  const ImageMetadata metadata = Describe().metadata;
  const auto expect_entry = [&](const char* name, const MetadataValue& value) {
    const MetadataEntry* entry = metadata.Find(name);
    ASSERT_NE(entry, nullptr) << name;
    EXPECT_EQ(entry->value, value) << name;
  };
  expect_entry("text", "words");
  expect_entry("Copyright", "Ann");
  expect_entry("ImageDescription", "a picture");
  expect_entry("DateTime", "2020:01:02 03:04:05");
  expect_entry("int", std::vector<std::int64_t>{-5});
  expect_entry("float", std::vector{0.75});
  expect_entry("pixelAspectRatio", std::vector{2.0});
  expect_entry("v2i", OpaqueValue{"exr:v2i", {1, 0, 0, 0, 2, 0, 0, 0}});
  expect_entry("envmap", OpaqueValue{"exr:envmap", {1}});
  expect_entry("framesPerSecond", OpaqueValue{"exr:rational", {0xC0, 0x5D, 0, 0, 0xE9, 3, 0, 0}});
  EXPECT_EQ(metadata.xmp, "<x/>");
  EXPECT_EQ(metadata.resolution, (std::array<double, 2>{72.0, 144.0}));
  EXPECT_EQ(metadata.resolution_unit, "in");
  for (const char* name : {"channels", "compression", "dataWindow", "lineOrder", "screenWindowWidth", "xDensity"}) {
    EXPECT_EQ(metadata.Find(name), nullptr) << name;
  }
}

TEST_F(ExrCodecTest, AttributesOfAllTypesComeBack) {
  WriteWith(file_, MakeRichHeader());
  WritePlan plan = MakePlan(1, 1, {"Y"});
  plan.metadata = Describe().metadata;
  plan.metadata.entries.push_back({"foreign", OpaqueValue{"exr:ownType", {1, 2, 3}}});
  file_ = folder_ / "second.exr";
  std::vector<std::string> notes;
  const float sample = 0.0F;
  ASSERT_EQ(WriteFile(GetExr(), file_, plan, &sample, &notes), "");
  EXPECT_TRUE(notes.empty());
  ImageMetadata read = Describe().metadata;
  const auto by_name = [](const MetadataEntry& a, const MetadataEntry& b) { return a.name < b.name; };
  std::sort(read.entries.begin(), read.entries.end(), by_name);
  std::sort(plan.metadata.entries.begin(), plan.metadata.entries.end(), by_name);
  EXPECT_EQ(read, plan.metadata);
}

TEST_F(ExrCodecTest, OtherProgramsSeeTheAttributes) {
  WritePlan plan = MakePlan(1, 1, {"Y"});
  plan.metadata.entries = {{"Copyright", "Ann"}, {"exposure", std::vector{0.5}}};
  plan.metadata.resolution = {100.0, 100.0};
  plan.metadata.resolution_unit = "cm";
  StoredHeader stored;
  stored.pin = {3, 4};
  plan.stored_headers = {{"", stored}};
  plan.corner_x = -2;
  ASSERT_EQ(Write(plan, {1.0F}), "");
  const std::string listed = Testing::Run("exrheader '" + file_.string() + "'");
  for (const char* line : {"owner (type string): \"Ann\"", "exposure (type float): 0.5", "xDensity (type float): 254",
                           "value:pin (type v2i): (3 4)", "dataWindow (type box2i): (-2 0) - (-2 0)"}) {
    EXPECT_NE(listed.find(line), std::string::npos) << line << " in " << listed;
  }
  EXPECT_EQ(listed.find("capDate"), std::string::npos);
}

TEST_F(ExrCodecTest, TellsWhatItCannotHold) {
  WritePlan plan = MakePlan(1, 1, {"Y"});
  plan.metadata.icc = {1};
  plan.metadata.iptc = {1};
  plan.metadata.nodata = 0.0;
  plan.metadata.entries = {{"gAMA", OpaqueValue{"png:gAMA", {1, 2, 3, 4}}},
                           {"chromaticities", OpaqueValue{"exr:chromaticities", {1, 2}}},
                           {"channels", "words"},
                           {"lineOrder", std::vector{1.0}}};
  std::vector<std::string> notes;
  const float sample = 0.0F;
  ASSERT_EQ(WriteFile(GetExr(), file_, plan, &sample, &notes), "");
  EXPECT_EQ(notes,
            (std::vector<std::string>{
                "OpenEXR holds no IPTC block, which is left out", "OpenEXR holds no color profile, which is left out",
                "OpenEXR holds no nodata value, which is left out",
                "OpenEXR cannot hold these entries of the metadata, which are left out: gAMA, chromaticities, "
                "channels, lineOrder"}));
  EXPECT_TRUE(Describe().metadata.entries.empty());
}

TEST_F(ExrCodecTest, TakesTheMainFieldsFromExif) {
  // Big-endian: the maker, a pointer to more fields, and there the time of exposure of 1/4 s.
  WritePlan plan = MakePlan(1, 1, {"Y"});
  plan.metadata.exif = {'M',  'M',  0, 42, 0, 0, 0, 8,  0, 2, 0x01, 0x0F, 0, 2, 0, 0, 0, 4, 'A',  'b',  'c', 0,
                        0x87, 0x69, 0, 4,  0, 0, 0, 1,  0, 0, 0,    38,   0, 0, 0, 0, 0, 1, 0x82, 0x9A, 0,   5,
                        0,    0,    0, 1,  0, 0, 0, 56, 0, 0, 0,    0,    0, 0, 0, 1, 0, 0, 0,    4};
  ASSERT_EQ(Write(plan, {1.0F}), "");
  const ImageMetadata metadata = Describe().metadata;
  EXPECT_EQ(metadata.entries, (std::vector<MetadataEntry>{{"cameraMake", "Abc"}, {"expTime", std::vector{0.25}}}));
}

// ---- Writing ----

TEST_F(ExrCodecTest, WritesTheSameFileEachTime) {
  const std::vector<float> samples(100 * 100, 0.5F);
  ASSERT_EQ(Write(MakePlan(100, 100, {"Y"}), samples), "");
  const Bytes first = LoadBytes(file_);
  ASSERT_EQ(Write(MakePlan(100, 100, {"Y"}), samples), "");
  EXPECT_EQ(LoadBytes(file_), first);
}

TEST_F(ExrCodecTest, WritesRowsInPieces) {
  std::vector<float> samples(5 * 50 * 2);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i);
  Status status;
  std::vector<std::string> notes;
  const auto encoder = GetExr().Create(file_, "openexr", MakePlan(5, 50, {"A", "Y"}), notes, status);
  for (int row = 0; row < 50; row += 7) {
    ASSERT_FALSE(encoder->WriteRows(row, std::min(row + 7, 50), samples.data() + row * 10).IsError());
  }
  EXPECT_EQ(encoder->Finish().GetMessage(), "");
  EXPECT_EQ(Read(), samples);
}

TEST_F(ExrCodecTest, AFullDiskIsAnError) {
  const std::vector<float> samples(10000, 0.5F);
  EXPECT_EQ(WriteFile(GetExr(), "/dev/full", MakePlan(100, 100, {"Y"}), samples.data()), "No space left on device");
}

TEST_F(ExrCodecTest, MissingRowsAreAnError) {
  Status status;
  std::vector<std::string> notes;
  const auto encoder = GetExr().Create(file_, "openexr", MakePlan(1, 3, {"Y"}), notes, status);
  const float sample = 0.0F;
  ASSERT_FALSE(encoder->WriteRows(0, 1, &sample).IsError());
  EXPECT_EQ(encoder->Finish().GetMessage(), "only 1 of 3 rows were written");
}

}  // namespace
}  // namespace ScEng
