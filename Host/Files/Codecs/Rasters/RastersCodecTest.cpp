// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Host/Files/Codecs/CodecTable.h"

namespace ScEng {
namespace {

namespace fs = std::filesystem;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

class RastersCodec : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string problem;
    codec_ = LoadCodec(*FindCodecRow("rasters"), problem);
    ASSERT_NE(codec_, nullptr) << problem;
    std::string folder = (fs::temp_directory_path() / "rasters-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    folder_ = folder;
  }
  void TearDown() override { fs::remove_all(folder_); }

  [[nodiscard]] fs::path At(const std::string& name) const { return folder_ / name; }

  fs::path Put(const std::string& name, const std::string& bytes) const {
    std::ofstream(At(name), std::ios::binary) << bytes;
    return At(name);
  }

  std::unique_ptr<ImageDecoder> Open(const fs::path& file, const std::string& format = "") {
    status_ = Status();
    return codec_->Open(file, format, status_);
  }

  /// All channels of all rows, interleaved.
  std::vector<float> ReadAll(ImageDecoder& decoder, SampleScale scale = SampleScale::kAuto, std::size_t index = 0) {
    const FilePart& part = decoder.GetDescription().parts.at(index);
    return ReadRows(decoder, 0, part.size_y, scale, index);
  }

  std::vector<float> ReadRows(ImageDecoder& decoder, int row_begin, int row_end, SampleScale scale = SampleScale::kAuto,
                              std::size_t index = 0) {
    const FilePart& part = decoder.GetDescription().parts.at(index);
    ReadRequest request;
    request.part = index;
    for (std::size_t i = 0; i < part.channels.size(); ++i) request.channels.push_back(i);
    request.column_end = part.size_x;
    request.row_begin = row_begin;
    request.row_end = row_end;
    request.scale = scale;
    const std::size_t row = static_cast<std::size_t>(part.size_x) * part.channels.size();
    // A value that no test expects stands where nothing is written.
    std::vector<float> samples(row * static_cast<std::size_t>(row_end - row_begin), -12345.0F);
    status_ = decoder.Read(request, {samples.data(), part.channels.size(), row});
    return samples;
  }

  /// Opens and reads a file; empty where either fails, with the error in `status_`.
  std::vector<float> ReadFile(const fs::path& file, const std::string& format = "") {
    const auto decoder = Open(file, format);
    if (decoder == nullptr) return {};
    part_ = decoder->GetDescription().parts.at(0);
    auto samples = ReadAll(*decoder);
    if (status_.IsError()) samples.clear();
    return samples;
  }

  std::vector<std::string> Write(const fs::path& file, const WritePlan& plan, const void* samples,
                                 const std::string& format = "geotiff") {
    std::vector<std::string> notes;
    status_ = Status();
    const auto encoder = codec_->Create(file, format, plan, notes, status_);
    if (encoder == nullptr) return notes;
    const std::size_t row_bytes = static_cast<std::size_t>(plan.size_x) * plan.channels.size() * GetSize(plan.type);
    for (int row = 0; row < plan.size_y && !status_.IsError(); ++row) {
      status_ = encoder->WriteRows(row, row + 1,
                                   static_cast<const char*>(samples) + static_cast<std::size_t>(row) * row_bytes);
    }
    if (!status_.IsError()) status_ = encoder->Finish();
    return notes;
  }

  const ImageCodec* codec_ = nullptr;
  fs::path folder_;
  Status status_;
  FilePart part_;
};

WritePlan MakePlan(int size_x, int size_y, StoredType type, std::vector<std::string> channels = {"Y"}) {
  WritePlan plan;
  plan.size_x = size_x;
  plan.size_y = size_y;
  plan.type = type;
  plan.channels = std::move(channels);
  return plan;
}

std::string Slurp(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

template <class Number>
std::string ToBytes(const std::vector<Number>& numbers) {
  return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}

/// Samples that are equal, or both NaN.
void ExpectSame(const std::vector<float>& found, const std::vector<float>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(found[i])) << "sample " << i << " is " << found[i];
    } else {
      EXPECT_EQ(found[i], expected[i]) << "sample " << i;
    }
  }
}

nlohmann::json RunGdalinfo(const fs::path& file) {
  FILE* pipe = popen(("gdalinfo -json -mdd all '" + file.string() + "'").c_str(), "r");
  std::string text;
  std::array<char, 4096> piece{};
  for (std::size_t got = 1; got > 0; text.append(piece.data(), got)) got = fread(piece.data(), 1, piece.size(), pipe);
  EXPECT_EQ(pclose(pipe), 0);
  return nlohmann::json::parse(text);
}

/// A small TIFF made by hand, little-endian, of unsigned bytes unless it says something else.
struct HandmadeTiff {
  struct Tag {
    int number;
    int type;
    std::string bytes;
  };

  static std::string Number(std::uint64_t number, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> (8 * i));
    return text;
  }
  static Tag Short(int number, int value) { return {number, 3, Number(static_cast<std::uint64_t>(value), 2)}; }
  static Tag Long(int number, std::uint64_t value) { return {number, 4, Number(value, 4)}; }

  /// Strips, then the directory. Tags 256 to 278 and those given, in ascending order.
  static std::string Make(int width, int height, int rows_per_strip, int compression,
                          const std::vector<std::string>& strips, const std::vector<Tag>& further = {}, int bits = 8) {
    std::string file = "II*" + std::string(1, '\0') + "????";
    std::string offsets;
    std::string sizes;
    for (const std::string& strip : strips) {
      offsets += Number(file.size(), 4);
      sizes += Number(strip.size(), 4);
      file += strip;
    }
    std::vector<Tag> tags{Short(256, width), Short(257, height), Short(258, bits), Short(259, compression),
                          Short(262, 1),     {273, 4, offsets},  Short(277, 1),    Short(278, rows_per_strip),
                          {279, 4, sizes}};
    tags.insert(tags.end(), further.begin(), further.end());
    for (Tag& tag : tags) {
      if (tag.bytes.size() <= 4) continue;
      const std::string at = Number(file.size(), 4);
      file += tag.bytes + std::string(tag.bytes.size() % 2, '\0');
      tag.bytes = at + tag.bytes;
    }
    file.replace(4, 4, Number(file.size(), 4));
    file += Number(tags.size(), 2);
    for (const Tag& tag : tags) {
      const std::size_t size = tag.bytes.size() > 4 ? tag.bytes.size() - 4 : tag.bytes.size();
      const std::size_t of_type = tag.type == 2 || tag.type == 1 ? 1 : tag.type == 3 ? 2 : tag.type == 4 ? 4 : 8;
      file += Number(static_cast<std::uint64_t>(tag.number), 2) + Number(static_cast<std::uint64_t>(tag.type), 2) +
              Number(size / of_type, 4) + (tag.bytes + std::string(4, '\0')).substr(0, 4);
    }
    return file + Number(0, 4);
  }
};

/// As deflate blocks that are stored, so that each byte of the samples is one of the file.
std::string Store(const std::string& bytes) {
  std::string out(bytes.size() + 64, '\0');
  uLongf size = out.size();
  EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                      bytes.size(), 0),
            Z_OK);
  out.resize(size);
  return out;
}

Georeference MakeUtm() {
  Georeference georeference;
  georeference.coordinate_system =
      R"wkt(PROJCRS["WGS 84 / UTM zone 32N",BASEGEOGCRS["WGS 84",DATUM["World Geodetic System 1984",)wkt"
      R"wkt(ELLIPSOID["WGS 84",6378137,298.257223563,LENGTHUNIT["metre",1]]],)wkt"
      R"wkt(PRIMEM["Greenwich",0,ANGLEUNIT["degree",0.0174532925199433]],ID["EPSG",4326]],)wkt"
      R"wkt(CONVERSION["UTM zone 32N",METHOD["Transverse Mercator",ID["EPSG",9807]],)wkt"
      R"wkt(PARAMETER["Latitude of natural origin",0,ANGLEUNIT["degree",0.0174532925199433],ID["EPSG",8801]],)wkt"
      R"wkt(PARAMETER["Longitude of natural origin",9,ANGLEUNIT["degree",0.0174532925199433],ID["EPSG",8802]],)wkt"
      R"wkt(PARAMETER["Scale factor at natural origin",0.9996,SCALEUNIT["unity",1],ID["EPSG",8805]],)wkt"
      R"wkt(PARAMETER["False easting",500000,LENGTHUNIT["metre",1],ID["EPSG",8806]],)wkt"
      R"wkt(PARAMETER["False northing",0,LENGTHUNIT["metre",1],ID["EPSG",8807]]],)wkt"
      R"wkt(CS[Cartesian,2],AXIS["(E)",east,ORDER[1],LENGTHUNIT["metre",1]],)wkt"
      R"wkt(AXIS["(N)",north,ORDER[2],LENGTHUNIT["metre",1]],ID["EPSG",32632]])wkt";
  georeference.transform = {399960, 25, 0, 5300040, 0, -25};
  return georeference;
}

// ---- What is written is read again ----

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

// ---- Values ----

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

// ---- Formats ----

TEST_F(RastersCodec, ReadsAnSrtmTile) {
  constexpr int kSide = 1201;
  std::string bytes(static_cast<std::size_t>(kSide) * kSide * 2, '\0');
  const auto set = [&](int column, int row, int meters) {
    const std::size_t at = (static_cast<std::size_t>(row) * kSide + static_cast<std::size_t>(column)) * 2;
    bytes[at] = static_cast<char>(meters >> 8);
    bytes[at + 1] = static_cast<char>(meters);
  };
  set(0, 0, 4810);
  set(1, 0, -430);
  set(1200, 1200, -32768);
  const auto samples = ReadFile(Put("N46E007.hgt", bytes));
  ASSERT_EQ(samples.size(), static_cast<std::size_t>(kSide) * kSide) << status_.GetMessage();
  EXPECT_EQ(samples[0], 4810.0F);
  EXPECT_EQ(samples[1], -430.0F);
  EXPECT_EQ(samples[2], 0.0F);
  EXPECT_TRUE(std::isnan(samples.back()));
  // Samples lie on the corners of the degree, so that the pixels reach half a sample beyond it.
  const auto transform = part_.metadata.georeference->transform.value();
  EXPECT_NEAR(transform[0], 7 - 0.5 / 1200, 1e-12);
  EXPECT_NEAR(transform[3], 47 + 0.5 / 1200, 1e-12);
  EXPECT_NEAR(transform[1], 1.0 / 1200, 1e-15);
  EXPECT_EQ(part_.metadata.nodata, -32768);
  EXPECT_NE(part_.metadata.georeference->coordinate_system.find("WGS 84"), std::string::npos);

  Put("N46E008.hgt", bytes.substr(0, 5000));
  ReadFile(At("N46E008.hgt"));
  EXPECT_EQ(status_.GetMessage(),
            "it has 5000 bytes; an SRTM file is named like N46E007.hgt and has 1201 x 1201 or 3601 x 3601 samples of "
            "2 bytes");
}

constexpr const char* kGrid =
    "ncols 3\nnrows 3\nxllcorner 600000\nyllcorner 200000.5\ncellsize 2\nNODATA_value -9999\n"
    "1 2.5 -9999\n4 1e-45 inf\n7,5 8 nan\n";

TEST_F(RastersCodec, ReadsAnAsciiGrid) {
  const float infinity = std::numeric_limits<float>::infinity();
  ExpectSame(ReadFile(Put("a.asc", kGrid), "ascii-grid"), {1, 2.5F, kNan, 4, 1e-45F, infinity, 7.5F, 8, kNan});
  const std::array<double, 6> transform{600000, 2, 0, 200006.5, 0, -2};
  EXPECT_EQ(part_.metadata.georeference->transform, transform);
  EXPECT_EQ(part_.metadata.nodata, -9999);
}

TEST_F(RastersCodec, ReadsRowsOfAnAsciiGridInAnyOrder) {
  std::string text = "ncols 2\nnrows 300\nxllcorner 0\nyllcorner 0\ncellsize 1\n";
  for (int row = 0; row < 300; ++row) text += std::to_string(row) + ' ' + std::to_string(-row) + '\n';
  const auto decoder = Open(Put("a.asc", text), "ascii-grid");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  ExpectSame(ReadRows(*decoder, 298, 300), {298, -298, 299, -299});
  ExpectSame(ReadRows(*decoder, 100, 101), {100, -100});
  ExpectSame(ReadRows(*decoder, 0, 1), {0, 0});
  ExpectSame(ReadRows(*decoder, 129, 130), {129, -129});
}

TEST_F(RastersCodec, TellsWhatIsWrongInAnAsciiGrid) {
  const std::string header = "ncols 2\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 1\n";
  ReadFile(Put("a.asc", header + "1 2\n3\n"), "ascii-grid");
  EXPECT_EQ(status_.GetMessage(), "the file is shortened: 1 of 3 rows are there");
  ReadFile(Put("b.asc", header + "1 2\n3 x4\n5 6\n"), "ascii-grid");
  EXPECT_EQ(status_.GetMessage(), "\"x4\" at column 1, row 1 is no number");
}

TEST_F(RastersCodec, WritesAnAsciiGrid) {
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.nodata = -1;
  const std::vector<float> samples{1, 0.1F, kNan, -2.5e10F};
  const auto notes = Write(At("a.asc"), plan, samples.data(), "ascii-grid");
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  EXPECT_EQ(Slurp(At("a.asc")),
            "ncols 2\nnrows 2\nxllcorner 399960\nyllcorner 5299990\ncellsize 25\nNODATA_value -1\n"
            "1.0 0.1\n-1 -2.5e+10\n");
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0], "the coordinate system is left out: an ASCII grid does not hold it");
  ExpectSame(ReadFile(At("a.asc")), samples);
  EXPECT_EQ(part_.metadata.georeference->transform, plan.metadata.georeference->transform);
}

TEST_F(RastersCodec, ReadsBilWithItsHeaderAndProjection) {
  Put("a.hdr",
      "NROWS 2\nNCOLS 3\nNBANDS 1\nNBITS 16\nBYTEORDER M\nLAYOUT BIL\nPIXELTYPE SIGNEDINT\nULXMAP 7.05\nULYMAP 46.95\n"
      "XDIM 0.1\nYDIM 0.1\nNODATA -32768\n");
  Put("a.prj",
      "GEOGCS[\"GCS_WGS_1984\",DATUM[\"D_WGS_1984\",SPHEROID[\"WGS_1984\",6378137,298.257223563]],"
      "PRIMEM[\"Greenwich\",0],UNIT[\"Degree\",0.017453292519943295]]");
  const std::string bytes("\x12\xca\x00\x00\xff\xff\x80\x00\x00\x01\x00\x02", 12);
  ExpectSame(ReadFile(Put("a.bil", bytes)), {4810, 0, -1, kNan, 1, 2});
  const auto georeference = part_.metadata.georeference.value();
  EXPECT_NEAR((*georeference.transform)[0], 7.0, 1e-12);
  EXPECT_NEAR((*georeference.transform)[3], 47.0, 1e-12);
  EXPECT_NE(georeference.coordinate_system.find("WGS"), std::string::npos);

  Put("a.bil", bytes.substr(0, 8));
  ReadFile(At("a.bil"));
  EXPECT_EQ(status_.GetMessage(), "the file is shortened: 1 of 2 rows are there");
}

std::string MakeMosaic(const std::string& left, const std::string& right) {
  const auto source = [](const std::string& file, int column) {
    return "<SimpleSource><SourceFilename relativeToVRT=\"1\">" + file +
           "</SourceFilename><SourceBand>1</SourceBand><SrcRect xOff=\"0\" yOff=\"0\" xSize=\"2\" ySize=\"2\"/>"
           "<DstRect xOff=\"" +
           std::to_string(column) + "\" yOff=\"0\" xSize=\"2\" ySize=\"2\"/></SimpleSource>";
  };
  return "<VRTDataset rasterXSize=\"4\" rasterYSize=\"2\"><VRTRasterBand dataType=\"Float32\" band=\"1\">" +
         source(left, 0) + source(right, 2) + "</VRTRasterBand></VRTDataset>";
}

TEST_F(RastersCodec, ReadsAVrtOfTwoTilesInAFolderBelow) {
  fs::create_directory(At("tiles"));
  const std::vector<float> left{1, 2, 5, 6};
  const std::vector<float> right{3, 4, 7, 8};
  Write(At("tiles/l.tif"), MakePlan(2, 2, StoredType::kFloat), left.data());
  Write(At("tiles/r.tif"), MakePlan(2, 2, StoredType::kFloat), right.data());
  const fs::path mosaic = Put("m.vrt", MakeMosaic("tiles/l.tif", "tiles/r.tif"));
  ExpectSame(ReadFile(mosaic, "vrt"), {1, 2, 3, 4, 5, 6, 7, 8});

  fs::resize_file(At("tiles/r.tif"), fs::file_size(At("tiles/r.tif")) - 4);
  ReadFile(mosaic, "vrt");
  EXPECT_TRUE(status_.IsError());
  fs::remove(At("tiles/r.tif"));
  ReadFile(mosaic, "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"tiles/r.tif\", which is not there or no plain file");
}

TEST_F(RastersCodec, ReadsNothingOutsideTheFolderOfAVrt) {
  fs::create_directory(At("inner"));
  const std::vector<float> samples{1, 2, 3, 4};
  Write(At("a.tif"), MakePlan(2, 2, StoredType::kFloat), samples.data());
  const std::vector<std::string> names{
      "../a.tif",      At("a.tif").string(), "NETCDF:a.nc:v", "/vsicurl/http://localhost/a", "&lt;VRTDataset/&gt;",
      "/proc/self/mem"};
  for (const std::string& name : names) {
    std::string vrt = MakeMosaic(name, name);
    ReadFile(Put("inner/a.vrt", vrt), "vrt");
    EXPECT_TRUE(status_.GetMessage().starts_with("the VRT names ")) << name << ": " << status_.GetMessage();
    for (std::size_t at = 0; (at = vrt.find("relativeToVRT=\"1\"", at)) != std::string::npos;) vrt.erase(at, 17);
    ReadFile(Put("inner/b.vrt", vrt), "vrt");
    EXPECT_TRUE(status_.GetMessage().starts_with("the VRT names ")) << name << ": " << status_.GetMessage();
  }
  fs::create_symlink(At("a.tif"), At("inner/link.tif"));
  ReadFile(Put("inner/c.vrt", MakeMosaic("link.tif", "link.tif")), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"link.tif\", which is not in its folder or below");
  // One VRT hides what it names behind another.
  Put("inner/d.vrt", MakeMosaic("../a.tif", "../a.tif"));
  ReadFile(Put("inner/e.vrt", MakeMosaic("d.vrt", "d.vrt")), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"../a.tif\", which is not in its folder or below");
}

TEST_F(RastersCodec, EndsWithAVrtThatNamesItself) {
  ReadFile(Put("a.vrt", MakeMosaic("a.vrt", "a.vrt")), "vrt");
  EXPECT_TRUE(status_.IsError());
}

TEST_F(RastersCodec, RunsNoCodeOfAVrt) {
  std::string vrt = MakeMosaic("a.tif", "a.tif");
  vrt.insert(vrt.find("<SimpleSource>"), "<PixelFunctionCode>import os</PixelFunctionCode>");
  ReadFile(Put("a.vrt", vrt), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT holds code, which is not run");
}

TEST_F(RastersCodec, ReadsThePagesOfATiffAsParts) {
  // Two directories: the second is the first file's with its offsets moved behind it.
  const std::string first = HandmadeTiff::Make(2, 1, 1, 1, {std::string("\x00\xff", 2)});
  const std::string second = HandmadeTiff::Make(1, 1, 1, 1, {std::string("\x33", 1)});
  std::string file = first + second;
  const auto at = [&](std::size_t position) {
    std::uint32_t number = 0;
    std::memcpy(&number, file.data() + position, 4);
    return number;
  };
  const auto moved = [&](std::size_t position) {
    file.replace(position, 4, HandmadeTiff::Number(at(position) + first.size(), 4));
  };
  file.replace(first.size() - 4, 4, HandmadeTiff::Number(at(first.size() + 4) + first.size(), 4));
  // The sixth tag of the second directory holds where its only strip is.
  moved(first.size() + at(first.size() + 4) + 2 + 5 * 12 + 8);
  const auto decoder = Open(Put("pages.tif", file), "geotiff");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  ASSERT_EQ(decoder->GetDescription().parts.size(), 2U);
  ExpectSame(ReadAll(*decoder, SampleScale::kAuto, 1), {0.2F});
  ExpectSame(ReadAll(*decoder, SampleScale::kStored, 0), {0, 255});
}

TEST_F(RastersCodec, TakesFoldersOfAnyName) {
  fs::create_directories(At("NETCDF:x"));
  const std::vector<float> samples{1, 2};
  Write(At("NETCDF:x/a.tif"), MakePlan(2, 1, StoredType::kFloat), samples.data());
  ExpectSame(ReadFile(At("NETCDF:x/a.tif")), samples);
  const fs::path before = fs::current_path();
  fs::current_path(folder_);
  ExpectSame(ReadFile("NETCDF:x/a.tif"), samples);
  ReadFile("GTIFF_DIR:1:NETCDF:x/a.tif");
  EXPECT_EQ(status_.GetMessage(), "it is no plain file");
  fs::current_path(before);
}

// ---- Metadata ----

TEST_F(RastersCodec, KeepsTheCornersThatGdalinfoSees) {
  const std::vector<float> samples(4 * 3, 1.0F);
  auto plan = MakePlan(4, 3, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.value_unit = "metre";
  const auto notes = Write(At("a.tif"), plan, samples.data());
  EXPECT_EQ(notes, std::vector<std::string>());
  const auto info = RunGdalinfo(At("a.tif"));
  EXPECT_EQ(info["cornerCoordinates"]["upperLeft"], (nlohmann::json{399960.0, 5300040.0}));
  EXPECT_EQ(info["cornerCoordinates"]["lowerRight"], (nlohmann::json{400060.0, 5299965.0}));
  EXPECT_NE(info["coordinateSystem"]["wkt"].get<std::string>().find("32632"), std::string::npos);
  EXPECT_EQ(info["bands"][0]["unit"], "metre");
  ReadFile(At("a.tif"));
  ASSERT_TRUE(part_.metadata.georeference);
  EXPECT_EQ(part_.metadata.georeference->transform, plan.metadata.georeference->transform);
  EXPECT_EQ(part_.metadata.georeference->coordinate_system.substr(0, 32), "PROJCRS[\"WGS 84 / UTM zone 32N\",");
  EXPECT_EQ(part_.metadata.value_unit, "metre");
  // What was read is written again as it is.
  plan.metadata.georeference = part_.metadata.georeference;
  Write(At("b.tif"), plan, samples.data());
  ReadFile(At("b.tif"));
  EXPECT_EQ(part_.metadata.georeference, plan.metadata.georeference);
}

TEST_F(RastersCodec, TellsOfACoordinateSystemThatIsNone) {
  const float sample = 1;
  auto plan = MakePlan(1, 1, StoredType::kFloat);
  plan.metadata.georeference = Georeference{"north of here", std::nullopt};
  const auto notes = Write(At("a.tif"), plan, &sample);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0], "the coordinate system is left out, for it is no WKT that is understood");
  EXPECT_FALSE(status_.IsError());
}

TEST_F(RastersCodec, KeepsTextsResolutionBlocksAndHeaders) {
  const std::vector<float> samples{1, 2, 3, 4};
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  ImageMetadata& metadata = plan.metadata;
  metadata.entries = {{"ImageDescription", std::string("Ridge <north> & \"south\"")},
                      {"Artist", std::string("A. Surveyor")},
                      {"DateTime", std::string("2001:02:03 04:05:06")},
                      {"AREA_OR_POINT", std::string("Area")},
                      {"Weather", std::string("snow = much")},
                      {"dc:title", std::string("Matterhorn")},
                      {"Flight", std::vector<std::int64_t>{3, -4}}};
  metadata.resolution = {300, 72.5};
  metadata.resolution_unit = "cm";
  metadata.xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
  metadata.icc = {0, 1, 2, 0, 255, 61};
  StoredHeader header;
  header.mode = 2;
  header.range = {0.1F, 1234.5F};
  header.pin = {-3, 7};
  header.pivot = {0.25F, -1e-30F};
  plan.stored_headers = {{"", header}};
  Write(At("a.tif"), plan, samples.data());
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  ReadFile(At("a.tif"));
  EXPECT_EQ(part_.metadata.resolution, metadata.resolution);
  EXPECT_EQ(part_.metadata.resolution_unit, "cm");
  EXPECT_EQ(part_.metadata.xmp, metadata.xmp);
  EXPECT_EQ(part_.metadata.icc, metadata.icc);
  EXPECT_EQ(part_.stored_headers, plan.stored_headers);
  metadata.entries.back().value = std::string("3, -4");
  for (const MetadataEntry& entry : metadata.entries) {
    // Where the image lies nowhere on the ground there is nothing for this to say.
    if (entry.name == "AREA_OR_POINT") continue;
    const MetadataEntry* found = part_.metadata.Find(entry.name);
    ASSERT_NE(found, nullptr) << entry.name;
    EXPECT_EQ(found->value, entry.value) << entry.name;
  }
  const auto info = RunGdalinfo(At("a.tif"));
  EXPECT_EQ(info["metadata"][""]["TIFFTAG_ARTIST"], "A. Surveyor");
  EXPECT_EQ(info["metadata"]["value"]["mode"], "2");
  EXPECT_EQ(info["metadata"]["value"]["pin"], "-3, 7");
}

TEST_F(RastersCodec, KeepsWhereInAPixelItsSampleLies) {
  const std::vector<float> samples{1, 2, 3, 4};
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.entries = {{"AREA_OR_POINT", std::string("Point")}};
  Write(At("a.tif"), plan, samples.data());
  ReadFile(At("a.tif"));
  ASSERT_NE(part_.metadata.Find("AREA_OR_POINT"), nullptr);
  EXPECT_EQ(std::get<std::string>(part_.metadata.Find("AREA_OR_POINT")->value), "Point");
  EXPECT_EQ(part_.metadata.georeference->transform, plan.metadata.georeference->transform);
}

// ---- Damage ----

TEST_F(RastersCodec, NoticesAFlippedByteThatStillInflates) {
  std::string rows(64 * 64, '\x20');
  std::string strip = Store(rows);
  const std::string whole = HandmadeTiff::Make(64, 128, 64, 8, {strip, strip});
  EXPECT_EQ(ReadFile(Put("a.tif", whole), "geotiff").size(), 64U * 128U) << status_.GetMessage();
  strip[2000] = '\x21';
  const std::string flipped = HandmadeTiff::Make(64, 128, 64, 8, {Store(rows), strip});
  ReadFile(Put("b.tif", flipped), "geotiff");
  EXPECT_EQ(status_.GetMessage(),
            "the file is damaged: the block of samples at column 0, row 64 cannot be decompressed or has a wrong "
            "checksum");
  // What lies before the damage can still be had.
  const auto decoder = Open(At("b.tif"), "geotiff");
  ASSERT_NE(decoder, nullptr);
  EXPECT_EQ(ReadRows(*decoder, 0, 64).size(), 64U * 64U);
  EXPECT_FALSE(status_.IsError());
  ReadRows(*decoder, 63, 65);
  EXPECT_TRUE(status_.IsError());
}

TEST_F(RastersCodec, NoticesDamageInEveryByteOfDeflatedSamples) {
  std::vector<float> samples(40 * 40);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = std::cos(static_cast<float>(i));
  Write(At("a.tif"), MakePlan(40, 40, StoredType::kFloat), samples.data());
  const std::string whole = Slurp(At("a.tif"));
  const auto expected = ReadFile(At("a.tif"));
  int errors = 0;
  for (std::size_t at = whole.size() / 2; at < whole.size(); at += 61) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
    const auto found = ReadFile(Put("b.tif", damaged));
    if (found.empty()) ++errors;
    if (!found.empty()) {
      EXPECT_EQ(found, expected) << "byte " << at << " was changed without a word";
    }
  }
  EXPECT_GT(errors, 20);
}

TEST_F(RastersCodec, TellsHowManyRowsOfAShortenedFileAreThere) {
  // Strips of 16 rows of 64 bytes; the directory stands behind the samples and is moved before them here.
  const std::string strip(16 * 64, '\x40');
  std::vector<HandmadeTiff::Tag> tags{HandmadeTiff::Short(256, 64), HandmadeTiff::Short(257, 64)};
  std::string file = HandmadeTiff::Make(64, 64, 16, 1, {"", "", "", ""});
  const std::size_t at = file.find(HandmadeTiff::Number(8, 4) + HandmadeTiff::Number(8, 4));
  ASSERT_NE(at, std::string::npos);
  std::string offsets;
  std::string sizes;
  for (std::size_t i = 0; i < 4; ++i) {
    offsets += HandmadeTiff::Number(file.size() + i * strip.size(), 4);
    sizes += HandmadeTiff::Number(strip.size(), 4);
  }
  file.replace(at, 32, offsets + sizes);
  EXPECT_EQ(ReadFile(Put("a.tif", file + strip + strip + strip + strip), "geotiff").size(), 64U * 64U)
      << status_.GetMessage();
  const auto decoder = Open(Put("b.tif", file + strip + strip + strip.substr(5)), "geotiff");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  ReadAll(*decoder);
  EXPECT_EQ(status_.GetMessage(), "the file is shortened: 32 of 64 rows are there");
  ExpectSame(ReadRows(*decoder, 30, 31, SampleScale::kStored), std::vector<float>(64, 64.0F));
  EXPECT_FALSE(status_.IsError());
}

TEST_F(RastersCodec, EndsInAnErrorWhereverAFileIsCut) {
  std::vector<std::uint16_t> samples(50 * 50, 7);
  auto plan = MakePlan(50, 50, StoredType::kUint16);
  plan.metadata.georeference = MakeUtm();
  Write(At("a.tif"), plan, samples.data());
  const std::string whole = Slurp(At("a.tif"));
  const auto expected = ReadFile(At("a.tif"));
  for (std::size_t size = 0; size < whole.size(); size += 23) {
    const auto found = ReadFile(Put("b.tif", whole.substr(0, size)));
    if (found.empty()) {
      EXPECT_FALSE(status_.GetMessage().empty());
    } else {
      EXPECT_EQ(found, expected) << size << " bytes of " << whole.size();
    }
  }
}

TEST_F(RastersCodec, OpensAHugeSparseFileAtOnce) {
  // Tiles of 256 x 256 floats that were never written: 391 x 391 places of 0 in a list that lies in a hole.
  constexpr std::uint64_t kTiles = 391 * 391;
  const auto tag = [](int number, int type, std::uint64_t count, std::uint64_t value) {
    return HandmadeTiff::Number(static_cast<std::uint64_t>(number), 2) +
           HandmadeTiff::Number(static_cast<std::uint64_t>(type), 2) + HandmadeTiff::Number(count, 4) +
           HandmadeTiff::Number(value, 4);
  };
  std::string file = "II*" + std::string(1, '\0') + HandmadeTiff::Number(8, 4) + HandmadeTiff::Number(11, 2);
  file += tag(256, 4, 1, 100000) + tag(257, 4, 1, 100000) + tag(258, 3, 1, 32) + tag(259, 3, 1, 8) + tag(262, 3, 1, 1) +
          tag(277, 3, 1, 1) + tag(322, 3, 1, 256) + tag(323, 3, 1, 256) + tag(324, 4, kTiles, 1000) +
          tag(325, 4, kTiles, 1000 + kTiles * 4) + tag(339, 3, 1, 3);
  Put("s.tif", file + std::string(4, '\0'));
  fs::resize_file(At("s.tif"), 1000 + kTiles * 8);
  const auto start = std::chrono::steady_clock::now();
  const auto decoder = Open(At("s.tif"), "geotiff");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  EXPECT_EQ(decoder->GetDescription().parts[0].size_x, 100000);
  EXPECT_TRUE(decoder->GetDescription().parts[0].reads_regions);
  ExpectSame(ReadRows(*decoder, 99998, 99999), std::vector<float>(100000, 0.0F));
  EXPECT_FALSE(status_.IsError()) << status_.GetMessage();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  EXPECT_LT(usage.ru_maxrss, 600 * 1024);
}

TEST_F(RastersCodec, SaysThatAFileOfNoFormatIsNone) {
  ReadFile(Put("a.dat", "This is a letter."));
  EXPECT_EQ(status_.GetMessage(), "it is damaged or in no format that is read");
  ReadFile(Put("b.dat", ""));
  EXPECT_TRUE(status_.IsError());
  ReadFile(folder_);
  EXPECT_EQ(status_.GetMessage(), "it is no plain file");
}

}  // namespace
}  // namespace ScEng
