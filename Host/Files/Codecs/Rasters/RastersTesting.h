// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <zlib.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/CodecTable.h"

namespace ScEng {

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

inline WritePlan MakePlan(int size_x, int size_y, StoredType type, std::vector<std::string> channels = {"Y"}) {
  WritePlan plan;
  plan.size_x = size_x;
  plan.size_y = size_y;
  plan.type = type;
  plan.channels = std::move(channels);
  return plan;
}

inline std::string Slurp(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Samples that are equal, or both NaN.
inline void ExpectSame(const std::vector<float>& found, const std::vector<float>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(found[i])) << "sample " << i << " is " << found[i];
    } else {
      EXPECT_EQ(found[i], expected[i]) << "sample " << i;
    }
  }
}

inline nlohmann::json RunGdalinfo(const fs::path& file) {
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
inline std::string Store(const std::string& bytes) {
  std::string out(bytes.size() + 64, '\0');
  uLongf size = out.size();
  EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                      bytes.size(), 0),
            Z_OK);
  out.resize(size);
  return out;
}

inline Georeference MakeUtm() {
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

}  // namespace ScEng
