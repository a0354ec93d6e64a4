// SPDX-License-Identifier: Apache-2.0
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfMultiPartOutputFile.h>
#include <OpenEXR/ImfOutputPart.h>
#include <OpenEXR/ImfPartType.h>
#include <OpenEXR/ImfTiledOutputFile.h>
#include <zlib.h>

#include <chrono>
#include <cstring>
#include <string_view>

#include "Host/Files/Codecs/CodecTesting.h"

namespace ScEng {
namespace {

using namespace std::string_view_literals;
using Testing::Bytes;
using Testing::GetProblem;
using Testing::LoadBytes;
using Testing::Pixels;
using Testing::ReadPart;
using Testing::ReadRows;
using Testing::TestFolder;

const ImageCodec& GetExr() { return Testing::GetCodec("exr"); }

void AppendNumber(Bytes& bytes, std::uint64_t number, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

std::uint64_t GetNumber(const Bytes& bytes, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i-- > 0;) number = (number << 8) | bytes[at + i];
  return number;
}

void PutNumber(Bytes& bytes, std::size_t at, std::uint64_t number, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<std::uint8_t>(number >> (8 * i));
}

/// Where the value of an attribute of this name and type begins.
std::size_t FindValue(const Bytes& bytes, std::string_view name_and_type) {
  const auto found = std::search(bytes.begin(), bytes.end(), name_and_type.begin(), name_and_type.end());
  EXPECT_NE(found, bytes.end());
  return static_cast<std::size_t>(found - bytes.begin()) + name_and_type.size() + 4;
}

class ExrDamageTest : public testing::Test {
 protected:
  /// A file of one channel whose samples count up, with 16 rows in a chunk.
  Bytes MakeFile(int size_x, int size_y, const char* compression) {
    std::vector<float> samples(static_cast<std::size_t>(size_x) * static_cast<std::size_t>(size_y));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i);
    WritePlan plan;
    plan.size_x = size_x;
    plan.size_y = size_y;
    plan.channels = {"Y"};
    plan.compression = compression;
    EXPECT_EQ(Testing::WriteFile(GetExr(), folder_ / "made.exr", plan, samples.data()), "");
    return LoadBytes(folder_ / "made.exr");
  }

  std::string GetProblemOf(const Bytes& bytes) { return GetProblem(GetExr(), folder_.Save("file.exr", bytes)); }

  /// Where the offsets of the chunks begin: right after the header, which ends with an empty name.
  static std::size_t FindTable(const Bytes& bytes, std::size_t chunks) {
    // The first chunk follows the table.
    for (std::size_t at = 8; at + 8 * chunks < bytes.size(); ++at) {
      if (GetNumber(bytes, at, 8) == at + 8 * chunks) return at;
    }
    ADD_FAILURE() << "no table";
    return 0;
  }

  TestFolder folder_;
};

TEST_F(ExrDamageTest, TellsHowManyRowsAShortenedFileHas) {
  Bytes bytes = MakeFile(50, 100, "zip");
  const std::size_t table = FindTable(bytes, 7);
  // Into the fourth chunk: three of 16 rows are whole.
  bytes.resize(GetNumber(bytes, table + 3 * 8, 8) + 20);
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: 48 of 100 rows are there");
  Status status;
  const auto decoder = GetExr().Open(folder_ / "file.exr", "openexr", status);
  const Pixels there = ReadRows(*decoder, 0, 10, 48);
  EXPECT_EQ(there.status.GetMessage(), "");
  EXPECT_EQ(there.samples[0], 500.0F);
}

TEST_F(ExrDamageTest, RefusesAFileThatIsShorterThanItsTable) {
  Bytes bytes = MakeFile(50, 100, "zip");
  bytes.resize(FindTable(bytes, 7) + 10);
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: 0 of 100 rows are there");
  bytes.resize(100);
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: its header is not complete");
}

TEST_F(ExrDamageTest, ReadsTheRowsOfAFileThatWasNotFinished) {
  Bytes bytes = MakeFile(50, 100, "zip");
  const std::size_t table = FindTable(bytes, 7);
  bytes.resize(GetNumber(bytes, table + 5 * 8, 8));
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(table), 7 * 8, std::uint8_t{0});
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: 80 of 100 rows are there");
  Status status;
  const auto decoder = GetExr().Open(folder_ / "file.exr", "openexr", status);
  const Pixels there = ReadRows(*decoder, 0, 0, 80);
  EXPECT_EQ(there.status.GetMessage(), "");
  EXPECT_EQ(there.samples[3999], 3999.0F);
}

TEST_F(ExrDamageTest, NamesTheRowsThatCannotBeUnpacked) {
  for (const char* compression : {"zip", "pxr24"}) {
    Bytes bytes = MakeFile(50, 40, compression);
    const std::size_t chunk = GetNumber(bytes, FindTable(bytes, 3) + 8, 8);
    const std::size_t size = GetNumber(bytes, chunk + 4, 4);
    // The checksum at the end of what is packed.
    bytes[chunk + 8 + size - 1] ^= 1;
    const std::string problem = GetProblemOf(bytes);
    EXPECT_TRUE(problem.starts_with("the file is damaged: rows ")) << problem;
    EXPECT_TRUE(problem.ends_with(" cannot be unpacked")) << problem;
    if (compression == "zip"sv) {
      EXPECT_EQ(problem, "the file is damaged: rows 16 to 31 cannot be unpacked");
    }
  }
}

TEST_F(ExrDamageTest, RefusesChunksThatUnpackToTooLittle) {
  for (const char* compression : {"zip", "rle"}) {
    Bytes bytes = MakeFile(1000, 1, compression);
    const std::size_t chunk = FindTable(bytes, 1) + 8;
    bytes.resize(chunk + 4);
    Bytes packed{127, 0};
    if (compression == "zip"sv) {
      const Bytes short_row(100, 7);
      uLongf size = compressBound(short_row.size());
      packed.resize(size);
      ASSERT_EQ(compress(packed.data(), &size, short_row.data(), short_row.size()), Z_OK);
      packed.resize(size);
    }
    AppendNumber(bytes, packed.size(), 4);
    bytes.insert(bytes.end(), packed.begin(), packed.end());
    EXPECT_EQ(GetProblemOf(bytes), "the file is damaged: rows 0 to 0 cannot be unpacked") << compression;
  }
}

TEST_F(ExrDamageTest, RefusesUnpackedRowsThatAreTooShort) {
  Bytes bytes = MakeFile(1000, 1, "none");
  const std::size_t chunk = FindTable(bytes, 1) + 8;
  PutNumber(bytes, chunk + 4, 3000, 4);
  EXPECT_EQ(GetProblemOf(bytes), "the file is damaged: rows 0 to 0 cannot be unpacked");
}

TEST_F(ExrDamageTest, RefusesHugeImagesInSmallFilesAtOnce) {
  Bytes bytes = MakeFile(1, 1, "zip");
  const std::size_t window = FindValue(bytes, "dataWindow\0box2i\0"sv);
  PutNumber(bytes, window + 12, 999999999, 4);
  ASSERT_LT(bytes.size(), 500U);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: 0 of 1000000000 rows are there");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(ExrDamageTest, RefusesHeadersThatMakeNoSense) {
  const Bytes good = MakeFile(1, 1, "zip");
  const std::size_t window = FindValue(good, "dataWindow\0box2i\0"sv);
  const std::size_t compression = FindValue(good, "compression\0compression\0"sv);
  Bytes bytes = good;
  PutNumber(bytes, window, 5, 4);
  EXPECT_EQ(GetProblemOf(bytes), "the file is damaged: its data window makes no sense");
  bytes = good;
  PutNumber(bytes, window, 0x80000000U, 4);
  EXPECT_EQ(GetProblemOf(bytes), "the file is damaged: its data window makes no sense");
  bytes = good;
  bytes[compression] = 77;
  EXPECT_EQ(GetProblemOf(bytes), "it is packed in a way that is not known here");
  bytes = good;
  PutNumber(bytes, window - 4, 0x7FFFFFFF, 4);
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: its header is not complete");
  bytes = good;
  bytes[4] = 9;
  EXPECT_EQ(GetProblemOf(bytes), "it is of a version of OpenEXR that is not known here");
}

TEST_F(ExrDamageTest, RefusesTooManyChannels) {
  Bytes bytes = MakeFile(1, 1, "zip");
  const std::size_t channels = FindValue(bytes, "channels\0chlist\0"sv);
  const std::size_t old_size = GetNumber(bytes, channels - 4, 4);
  Bytes list;
  for (int i = 0; i < 1025; ++i) {
    const std::string name = std::to_string(10000 + i);
    list.insert(list.end(), name.begin(), name.end());
    list.push_back(0);
    for (const unsigned number : {2U, 0U, 1U, 1U}) AppendNumber(list, number, 4);
  }
  list.push_back(0);
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(channels);
  bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(old_size));
  bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(channels), list.begin(), list.end());
  PutNumber(bytes, channels - 4, list.size(), 4);
  EXPECT_EQ(GetProblemOf(bytes), "it has more than 1024 channels");
}

TEST_F(ExrDamageTest, SurvivesAnyDamageToRows) {
  std::uint32_t seed = 10;
  for (const char* compression : {"none", "rle", "zips", "zip", "piz", "pxr24", "b44", "b44a", "dwaa", "dwab"}) {
    Testing::ExpectDamageIsHarmless(GetExr(), MakeFile(20, 40, compression), 60, ++seed);
  }
}

TEST_F(ExrDamageTest, SurvivesAnyDamageToTiles) {
  Imf::Header header(40, 30);
  header.setTileDescription(Imf::TileDescription(16, 16, Imf::MIPMAP_LEVELS));
  header.channels().insert("Y", Imf::Channel(Imf::HALF));
  const std::vector<Imath::half> samples(40 * 30, Imath::half(0.5F));
  {
    Imf::TiledOutputFile file((folder_ / "tiles.exr").c_str(), header);
    Imf::FrameBuffer buffer;
    buffer.insert("Y", Imf::Slice::Make(Imf::HALF, samples.data(), header.dataWindow()));
    file.setFrameBuffer(buffer);
    for (int level = 0; level < file.numLevels(); ++level) {
      file.writeTiles(0, file.numXTiles(level) - 1, 0, file.numYTiles(level) - 1, level);
    }
  }
  Testing::ExpectDamageIsHarmless(GetExr(), LoadBytes(folder_ / "tiles.exr"), 250, 40);
}

TEST_F(ExrDamageTest, RefusesHugeTiles) {
  Imf::Header header(2, 2);
  header.setTileDescription(Imf::TileDescription(16, 16, Imf::ONE_LEVEL));
  header.channels().insert("Y", Imf::Channel(Imf::FLOAT));
  { const Imf::TiledOutputFile file((folder_ / "tiles.exr").c_str(), header); }
  Bytes bytes = LoadBytes(folder_ / "tiles.exr");
  const std::size_t tiles = FindValue(bytes, "tiles\0tiledesc\0"sv);
  PutNumber(bytes, tiles, 60000, 4);
  PutNumber(bytes, tiles + 4, 60000, 4);
  EXPECT_EQ(GetProblemOf(bytes), "it has tiles of more than 512 MB");
}

TEST_F(ExrDamageTest, SurvivesAnyDamageToParts) {
  std::vector<Imf::Header> headers;
  for (const char* name : {"a", "b"}) {
    Imf::Header header(8, 20);
    header.setName(name);
    header.setType(Imf::SCANLINEIMAGE);
    header.channels().insert("Y", Imf::Channel(Imf::FLOAT));
    headers.push_back(header);
  }
  {
    const std::vector<float> samples(160, 0.5F);
    Imf::MultiPartOutputFile file((folder_ / "parts.exr").c_str(), headers.data(), 2);
    for (int i = 0; i < 2; ++i) {
      Imf::OutputPart part(file, i);
      Imf::FrameBuffer buffer;
      buffer.insert("Y", Imf::Slice::Make(Imf::FLOAT, samples.data(), headers[0].dataWindow()));
      part.setFrameBuffer(buffer);
      part.writePixels(20);
    }
  }
  Testing::ExpectDamageIsHarmless(GetExr(), LoadBytes(folder_ / "parts.exr"), 250, 50);
}

}  // namespace
}  // namespace ScEng
