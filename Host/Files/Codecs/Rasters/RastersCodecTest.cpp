// SPDX-License-Identifier: Apache-2.0
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "Host/Files/Codecs/Rasters/RastersTesting.h"

namespace ScEng {
namespace {

TEST_F(RastersCodec, KeepsFloatsToTheBitWithNanAndInfinity) {
  const std::vector<float> samples{0.0F, -1.5F, 1e-45F, 3.4e38F, kNan, std::numeric_limits<float>::infinity()};
  Write(At("a.tif"), MakePlan(3, 2, StoredType::kFloat), samples.data());
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  ExpectSame(ReadFile(At("a.tif"), "geotiff"), samples);
  EXPECT_EQ(part_.channels[0].samples.type, StoredType::kFloat);
  EXPECT_EQ(part_.compression, "deflate");
}

TEST_F(RastersCodec, KeepsEveryTypeThatItWrites) {
  const std::vector<std::uint8_t> bytes{0, 51, 255, 102};
  Write(At("b.tif"), MakePlan(2, 2, StoredType::kUint8), bytes.data());
  ExpectSame(ReadFile(At("b.tif")), {0.0F, 0.2F, 1.0F, 0.4F});
  const std::vector<std::uint16_t> words{0, 13107, 65535, 26214};
  Write(At("w.tif"), MakePlan(2, 2, StoredType::kUint16), words.data());
  ExpectSame(ReadFile(At("w.tif")), {0.0F, 0.2F, 1.0F, 0.4F});
  const std::vector<std::int16_t> meters{-430, 0, 4810, 32767};
  Write(At("i.tif"), MakePlan(2, 2, StoredType::kInt16), meters.data());
  ExpectSame(ReadFile(At("i.tif")), {-430.0F, 0.0F, 4810.0F, 32767.0F});
}

TEST_F(RastersCodec, RefusesATypeThatItDoesNotWrite) {
  const double sample = 1;
  Write(At("a.tif"), MakePlan(1, 1, StoredType::kDouble), &sample);
  EXPECT_EQ(status_.GetMessage(), "a GeoTIFF is written with samples of the types float, uint16, int16 and uint8");
}

TEST_F(RastersCodec, KeepsColorAndOpacity) {
  auto plan = MakePlan(2, 1, StoredType::kUint8, {"R", "G", "B", "A"});
  plan.opacity_channel = 3;
  const std::vector<std::uint8_t> bytes{255, 0, 51, 0, 0, 255, 102, 255};
  Write(At("a.tif"), plan, bytes.data());
  ExpectSame(ReadFile(At("a.tif")), {1.0F, 0.0F, 0.2F, 0.0F, 0.0F, 1.0F, 0.4F, 1.0F});
  EXPECT_EQ(part_.opacity_channel, 3);
  EXPECT_FALSE(part_.is_multiplied);
}

TEST_F(RastersCodec, KeepsAPairWithItsNamesAndWithoutOpacity) {
  const std::vector<float> samples{1, 2, 3, 4};
  Write(At("a.tif"), MakePlan(2, 1, StoredType::kFloat, {"slope", "aspect"}), samples.data());
  ExpectSame(ReadFile(At("a.tif")), samples);
  EXPECT_EQ(part_.opacity_channel, -1);
  EXPECT_EQ(part_.channels[0].name, "slope");
  EXPECT_EQ(part_.channels[1].name, "aspect");
}

TEST_F(RastersCodec, WritesEveryCompressionThatIsAskedFor) {
  std::vector<float> samples(300 * 7);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = std::sin(static_cast<float>(i));
  const std::vector<std::string> names{"deflate", "zip", "lzw", "zstd", "packbits", "none"};
  for (const std::string& name : names) {
    auto plan = MakePlan(300, 7, StoredType::kFloat);
    plan.compression = name;
    Write(At(name + ".tif"), plan, samples.data());
    ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
    ExpectSame(ReadFile(At(name + ".tif")), samples);
    EXPECT_EQ(part_.compression, name == "zip" ? "deflate" : name == "none" ? "" : name);
  }
  auto plan = MakePlan(300, 7, StoredType::kFloat);
  plan.compression = "jpeg";
  Write(At("j.tif"), plan, samples.data());
  EXPECT_EQ(status_.GetMessage(),
            "a GeoTIFF is not compressed by \"jpeg\"; there are deflate, lzw, zstd, packbits and none");
}

TEST_F(RastersCodec, WritesTheSameBytesEachTimeIntoAFileWithoutAnEnding) {
  std::vector<float> samples(1000 * 400 * 3);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i % 997);
  auto plan = MakePlan(1000, 400, StoredType::kFloat, {"R", "G", "B"});
  plan.metadata.georeference = MakeUtm();
  Put("a", "");
  Put("b", "");
  Write(At("a"), plan, samples.data());
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  Write(At("b"), plan, samples.data());
  EXPECT_EQ(Slurp(At("a")), Slurp(At("b")));
  EXPECT_GT(fs::file_size(At("a")), 1000U);
  ExpectSame(ReadFile(At("a")), samples);
}

TEST_F(RastersCodec, WritesIntoAFileInMemory) {
  const int descriptor = memfd_create("raster", 0);
  const std::vector<std::uint16_t> words{1, 2, 3, 65535};
  Write("/proc/self/fd/" + std::to_string(descriptor), MakePlan(4, 1, StoredType::kUint16), words.data());
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  std::string bytes(4096, '\0');
  bytes.resize(static_cast<std::size_t>(pread(descriptor, bytes.data(), bytes.size(), 0)));
  close(descriptor);
  ExpectSame(ReadFile(Put("a.tif", bytes)), {1 / 65535.0F, 2 / 65535.0F, 3 / 65535.0F, 1.0F});
}

TEST_F(RastersCodec, LeavesNoOtherFileBeside) {
  const std::vector<float> samples{1, 2, 3, 4};
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.entries.push_back({"Weather", std::string("fine")});
  Write(At("a.tif"), plan, samples.data());
  ReadFile(At("a.tif"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
}

TEST_F(RastersCodec, TellsThatADiskIsFull) {
  std::vector<float> samples(512 * 512);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = std::sin(static_cast<float>(i));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{100'000, before.rlim_max};
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  Write(At("a.tif"), MakePlan(512, 512, StoredType::kFloat), samples.data());
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, handler);
  EXPECT_TRUE(status_.IsError());
}

TEST_F(RastersCodec, MakesNodataNanAndWritesNanAsNodata) {
  const std::vector<float> samples{-9999, 1, kNan, 4};
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  plan.metadata.nodata = -9999;
  Write(At("a.tif"), plan, samples.data());
  ExpectSame(ReadFile(At("a.tif")), {kNan, 1, kNan, 4});
  EXPECT_EQ(part_.metadata.nodata, -9999);
  EXPECT_EQ(part_.channels[0].samples.nodata, -9999);
  EXPECT_EQ(RunGdalinfo(At("a.tif"))["bands"][0]["noDataValue"], -9999.0);
}

TEST_F(RastersCodec, LeavesOutANodataValueThatNoSampleHas) {
  const std::vector<std::uint8_t> bytes{1, 2};
  auto plan = MakePlan(2, 1, StoredType::kUint8);
  plan.metadata.nodata = -9999;
  const auto notes = Write(At("a.tif"), plan, bytes.data());
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0], "the nodata value is left out: it is no number that a sample of the type uint8 has");
  ReadFile(At("a.tif"));
  EXPECT_EQ(part_.metadata.nodata, std::nullopt);
}

TEST_F(RastersCodec, AppliesScaleAndOffsetOfABandButNotToNodata) {
  const std::string vrt = R"(<VRTDataset rasterXSize="2" rasterYSize="1"><VRTRasterBand dataType="Byte" band="1">
    <NoDataValue>255</NoDataValue><Scale>0.5</Scale><Offset>-10</Offset><UnitType>metre</UnitType>
    <SimpleSource><SourceFilename relativeToVRT="1">a.tif</SourceFilename><SourceBand>1</SourceBand></SimpleSource>
    </VRTRasterBand></VRTDataset>)";
  const std::vector<std::uint8_t> bytes{100, 255};
  Write(At("a.tif"), MakePlan(2, 1, StoredType::kUint8), bytes.data());
  ExpectSame(ReadFile(Put("a.vrt", vrt), "vrt"), {40.0F, kNan});
  EXPECT_EQ(part_.metadata.value_unit, "metre");
}

TEST_F(RastersCodec, ExpandsAPalette) {
  // Entries of the colour map: reds, then greens, then blues, 256 each, of 16 bits.
  std::string map(256 * 3 * 2, '\0');
  const auto set = [&](std::size_t plane, std::size_t index, int value) {
    map.replace((plane * 256 + index) * 2, 2, HandmadeTiff::Number(static_cast<std::uint64_t>(value) * 257, 2));
  };
  set(0, 1, 255);
  set(1, 1, 51);
  set(2, 2, 102);
  std::string file = HandmadeTiff::Make(3, 1, 1, 1, {std::string("\0\1\2", 3)}, {{320, 3, map}});
  // The photometric interpretation: the fifth tag's value.
  const std::size_t at = file.find(HandmadeTiff::Number(262, 2) + HandmadeTiff::Number(3, 2));
  ASSERT_NE(at, std::string::npos);
  file[at + 8] = 3;
  ExpectSame(ReadFile(Put("p.tif", file), "geotiff"), {0, 0, 0, 1, 0.2F, 0, 0, 0, 0.4F});
  EXPECT_EQ(part_.channels.size(), 3U);
  EXPECT_EQ(part_.opacity_channel, -1);
}

TEST_F(RastersCodec, ReadsSignedBytesAsTheyAre) {
  const std::string file = HandmadeTiff::Make(3, 1, 1, 1, {"\xff\x80\x7f"}, {HandmadeTiff::Short(339, 2)});
  ExpectSame(ReadFile(Put("s.tif", file), "geotiff"), {-1, -128, 127});
  EXPECT_EQ(part_.channels[0].samples.type, StoredType::kInt8);
}

TEST_F(RastersCodec, SaysThatComplexSamplesAreNotRead) {
  const std::string file = HandmadeTiff::Make(1, 1, 1, 1, {std::string(8, '\0')}, {HandmadeTiff::Short(339, 6)}, 64);
  const auto decoder = Open(Put("c.tif", file), "geotiff");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  EXPECT_EQ(decoder->GetDescription().parts[0].problem,
            "its samples are complex numbers, which have no single value per pixel");
}

}  // namespace
}  // namespace ScEng
