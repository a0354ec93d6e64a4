// SPDX-License-Identifier: Apache-2.0
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <limits>

#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// Numbers of TIFFs that are made byte by byte.

namespace ScEng {
namespace {

constexpr std::uint16_t kUnsigned = 1;
constexpr std::uint16_t kSigned = 2;
constexpr std::uint16_t kFloating = 3;

/// A TIFF of one strip, or of one for each plane.
struct TiffFile {
  std::uint32_t size_x = 1;
  std::uint32_t size_y = 1;
  std::uint16_t channels = 1;
  std::uint16_t bits = 8;
  std::uint16_t format = kUnsigned;
  std::uint16_t meaning = 1;
  bool is_big_endian = false;
  bool is_packed = false;
  std::vector<std::string> planes = {};
  /// Zero for strips.
  std::uint32_t tile = 0;
  std::uint16_t extra_channels = 0;
};

std::string PutNumber(std::uint64_t number, std::size_t size, bool is_big_endian) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * (is_big_endian ? size - 1 - i : i)));
  return bytes;
}

std::string Deflate(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  packed.resize(size);
  return packed;
}

std::string MakeTiff(const TiffFile& file) {
  const auto put = [&](std::uint64_t number, std::size_t size) { return PutNumber(number, size, file.is_big_endian); };
  std::string data;
  std::vector<std::uint32_t> offsets;
  std::vector<std::uint32_t> sizes;
  constexpr std::uint32_t kHeader = 8;
  for (const std::string& plane : file.planes) {
    const std::string stored = file.is_packed ? Deflate(plane) : plane;
    offsets.push_back(kHeader + static_cast<std::uint32_t>(data.size()));
    sizes.push_back(static_cast<std::uint32_t>(stored.size()));
    data += stored;
    if (data.size() % 2 != 0) data += '\0';
  }
  struct Entry {
    std::uint16_t tag;
    std::uint16_t type;
    std::vector<std::uint32_t> numbers;
  };
  constexpr std::uint16_t kShort = 3;
  constexpr std::uint16_t kLong = 4;
  const auto repeat = [&](std::uint16_t number) { return std::vector<std::uint32_t>(file.channels, number); };
  const bool is_tiled = file.tile != 0;
  const auto is_separate = static_cast<std::uint32_t>(!is_tiled && file.planes.size() > 1 ? 2 : 1);
  std::vector<Entry> entries{{256, kLong, {file.size_x}},      {257, kLong, {file.size_y}},
                             {258, kShort, repeat(file.bits)}, {259, kShort, {file.is_packed ? 8U : 1U}},
                             {262, kShort, {file.meaning}},    {277, kShort, {file.channels}},
                             {284, kShort, {is_separate}},     {339, kShort, repeat(file.format)}};
  if (is_tiled) {
    entries.insert(entries.end(), {{322, kLong, {file.tile}}, {323, kLong, {file.tile}}});
  } else {
    entries.push_back({278, kLong, {file.size_y}});
  }
  entries.push_back({static_cast<std::uint16_t>(is_tiled ? 324 : 273), kLong, offsets});
  entries.push_back({static_cast<std::uint16_t>(is_tiled ? 325 : 279), kLong, sizes});
  if (file.extra_channels != 0) entries.push_back({338, kShort, std::vector<std::uint32_t>(file.extra_channels, 2)});
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.tag < b.tag; });

  const std::size_t directory = kHeader + data.size();
  const std::size_t further = directory + 2 + entries.size() * 12 + 4;
  std::string table = put(entries.size(), 2);
  std::string lists;
  for (const Entry& entry : entries) {
    std::string numbers;
    for (const std::uint32_t number : entry.numbers) numbers += put(number, entry.type == kShort ? 2 : 4);
    table += put(entry.tag, 2) + put(entry.type, 2) + put(entry.numbers.size(), 4);
    if (numbers.size() > 4) {
      table += put(further + lists.size(), 4);
      lists += numbers;
    } else {
      table += numbers + std::string(4 - numbers.size(), '\0');
    }
  }
  return (file.is_big_endian ? "MM" : "II") + put(42, 2) + put(directory, 4) + data + table + put(0, 4) + lists;
}

/// The bytes of numbers of a width, the highest bit first, each row filled up to whole bytes.
std::string PackBits(const std::vector<std::uint32_t>& numbers, unsigned bits) {
  std::string bytes;
  unsigned held = 0;
  unsigned count = 0;
  for (const std::uint32_t number : numbers) {
    for (unsigned bit = bits; bit > 0; --bit) {
      held = held << 1 | (number >> (bit - 1) & 1U);
      if (++count % 8 == 0) bytes += static_cast<char>(held);
    }
  }
  for (; count % 8 != 0; ++count) {
    held <<= 1;
    if (count % 8 == 7) bytes += static_cast<char>(held);
  }
  return bytes;
}

using Values = std::vector<float>;

class TiffSampleValues : public testing::Test {
 protected:
  ReadPicture Read(const std::string& bytes, SampleScale scale = SampleScale::kAuto, const char* format = "tiff") {
    WriteFile(folder_ / "file", bytes);
    ReadPicture read = ReadPart(folder_ / "file", format, 0, scale);
    EXPECT_EQ(read.problem, "");
    return read;
  }
  Values ReadValues(const std::string& bytes, SampleScale scale = SampleScale::kAuto, const char* format = "tiff") {
    return Read(bytes, scale, format).samples;
  }
  std::string GetProblem(const std::string& bytes, const char* format = "tiff") {
    WriteFile(folder_ / "file", bytes);
    return ReadPart(folder_ / "file", format).problem;
  }

  TestFolder folder_;
};

TEST_F(TiffSampleValues, DoublesAreExactWhateverTheNumberOfRows) {
  for (const std::uint32_t rows : {1U, 2U, 129U}) {
    for (const std::uint16_t channels : {std::uint16_t{1}, std::uint16_t{3}}) {
      for (int kind = 0; kind < 4; ++kind) {
        TiffFile file{.size_x = 8, .size_y = rows, .channels = channels, .bits = 64, .format = kFloating};
        file.meaning = channels == 3 ? 2 : 1;
        file.is_big_endian = kind % 2 != 0;
        file.is_packed = kind / 2 != 0;
        std::string plane;
        Values expected;
        for (std::size_t i = 0; i < std::size_t{8} * rows * channels; ++i) {
          const double number = 0.1 + static_cast<double>(i) / 7.0;
          plane += PutNumber(std::bit_cast<std::uint64_t>(number), 8, file.is_big_endian);
          expected.push_back(static_cast<float>(number));
        }
        file.planes = {plane};
        EXPECT_EQ(ReadValues(MakeTiff(file)), expected) << rows << " " << channels << " " << kind;
      }
    }
  }
}

TEST_F(TiffSampleValues, DoublesOfPlanesAndTilesAreExact) {
  std::vector<std::string> planes(3);
  Values expected(8 * 5 * 3);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double number = static_cast<double>(i) / 3.0;
    planes[i % 3] += PutNumber(std::bit_cast<std::uint64_t>(number), 8, false);
    expected[i] = static_cast<float>(number);
  }
  TiffFile file{.size_x = 8, .size_y = 5, .channels = 3, .bits = 64, .format = kFloating, .meaning = 2};
  file.planes = planes;
  EXPECT_EQ(ReadValues(MakeTiff(file)), expected);
  file.is_packed = true;
  EXPECT_EQ(ReadValues(MakeTiff(file)), expected);

  // Two tiles of 16 x 16 for 20 x 3 pixels.
  TiffFile tiled{.size_x = 20, .size_y = 3, .bits = 64, .format = kFloating, .tile = 16};
  tiled.planes.resize(2);
  for (std::size_t i = 0; i < 2 * 16 * 16; ++i) {
    const std::size_t column = i / 256 * 16 + i % 16;
    const std::size_t row = i % 256 / 16;
    const double number = static_cast<double>(row * 20 + column) / 3.0;
    tiled.planes[i / 256] += PutNumber(std::bit_cast<std::uint64_t>(number), 8, false);
  }
  expected.resize(60);
  EXPECT_EQ(ReadValues(MakeTiff(tiled)), expected);
}

TEST_F(TiffSampleValues, DoublesKeepWhatIsNotFinite) {
  TiffFile file{.size_x = 3, .bits = 64, .format = kFloating};
  const double infinity = std::numeric_limits<double>::infinity();
  std::string plane;
  for (const double number : {infinity, -1e300, 1e-300}) {
    plane += PutNumber(std::bit_cast<std::uint64_t>(number), 8, false);
  }
  file.planes = {plane};
  const float wide = std::numeric_limits<float>::infinity();
  EXPECT_EQ(ReadValues(MakeTiff(file)), (Values{wide, -wide, 0.0F}));
}

TEST_F(TiffSampleValues, NumbersOfFewBitsAreThoseOfTheFileOrSharesOfTheirLargest) {
  struct Case {
    unsigned bits;
    std::vector<std::uint32_t> numbers;
    StoredType type;
  };
  const auto u8 = StoredType::kUint8;
  const auto u16 = StoredType::kUint16;
  for (const Case& c :
       {Case{1, {1, 0, 1, 1}, u8}, Case{2, {0, 1, 2, 3}, u8}, Case{4, {0, 5, 10, 15}, u8}, Case{6, {0, 21, 42, 63}, u8},
        Case{10, {0, 341, 682, 1023}, u16}, Case{12, {0, 1365, 2730, 4095}, u16}, Case{14, {0, 1, 8192, 16383}, u16}}) {
    for (const bool is_big_endian : {false, true}) {
      TiffFile file{.size_x = 4, .bits = static_cast<std::uint16_t>(c.bits), .is_big_endian = is_big_endian};
      file.planes = {PackBits(c.numbers, c.bits)};
      const std::string bytes = MakeTiff(file);
      Values numbers;
      Values shares;
      const double largest = static_cast<double>((1U << c.bits) - 1);
      for (const std::uint32_t number : c.numbers) {
        numbers.push_back(static_cast<float>(number));
        shares.push_back(static_cast<float>(number / largest));
      }
      const ReadPicture stored = Read(bytes, SampleScale::kStored);
      EXPECT_EQ(stored.samples, numbers) << c.bits;
      EXPECT_EQ(stored.description.parts.front().channels.front().samples.type, c.type) << c.bits;
      EXPECT_EQ(ReadValues(bytes, SampleScale::kUnit), shares) << c.bits;
      EXPECT_EQ(ReadValues(bytes, SampleScale::kAuto), shares) << c.bits;
    }
  }
}

TEST_F(TiffSampleValues, NumbersOf24BitsAreInTheOrderOfTheFile) {
  for (const bool is_big_endian : {false, true}) {
    TiffFile file{.size_x = 3, .bits = 24, .is_big_endian = is_big_endian};
    file.planes = {PutNumber(16777215, 3, is_big_endian) + PutNumber(8388608, 3, is_big_endian) +
                   PutNumber(1, 3, is_big_endian)};
    const std::string bytes = MakeTiff(file);
    EXPECT_EQ(ReadValues(bytes), (Values{16777215.0F, 8388608.0F, 1.0F}));
    EXPECT_EQ(ReadValues(bytes, SampleScale::kStored), (Values{16777215.0F, 8388608.0F, 1.0F}));
    EXPECT_EQ(ReadValues(bytes, SampleScale::kUnit).front(), 1.0F);
  }
}

TEST_F(TiffSampleValues, SignedNumbersOfFewBitsKeepTheirSign) {
  TiffFile file{.size_x = 4, .bits = 12, .format = kSigned};
  file.planes = {PackBits({0x800, 0xFFF, 0, 0x7FF}, 12)};
  EXPECT_EQ(ReadValues(MakeTiff(file)), (Values{-2048.0F, -1.0F, 0.0F, 2047.0F}));
  EXPECT_EQ(ReadValues(MakeTiff(file), SampleScale::kUnit).back(), 1.0F);
}

TEST_F(TiffSampleValues, WhiteIsZeroIsTurnedAtEveryDepthButNotWhereNumbersAreAskedFor) {
  for (const unsigned bits : {1U, 2U, 4U, 8U, 10U, 12U, 16U}) {
    const std::uint32_t largest = (1U << bits) - 1;
    for (const bool is_packed : {false, true}) {
      TiffFile file{.size_x = 3, .bits = static_cast<std::uint16_t>(bits), .meaning = 0, .is_big_endian = true};
      file.is_packed = is_packed;
      file.planes = {PackBits({0, 1, largest}, bits)};
      const std::string bytes = MakeTiff(file);
      const auto middle = static_cast<float>((largest - 1) / static_cast<double>(largest));
      EXPECT_EQ(ReadValues(bytes), (Values{1.0F, middle, 0.0F})) << bits;
      EXPECT_EQ(ReadValues(bytes, SampleScale::kUnit), (Values{1.0F, middle, 0.0F})) << bits;
      EXPECT_EQ(ReadValues(bytes, SampleScale::kStored), (Values{0.0F, 1.0F, static_cast<float>(largest)})) << bits;
    }
  }
}

TEST_F(TiffSampleValues, WhiteIsZeroLeavesOpacityAndSignedNumbersAsTheyAre) {
  TiffFile pair{.size_x = 1, .channels = 2, .meaning = 0, .extra_channels = 1};
  pair.planes = {std::string("\x33\xCC", 2)};
  EXPECT_EQ(ReadValues(MakeTiff(pair)), (Values{0.8F, 0.8F}));
  for (const std::uint16_t bits : {std::uint16_t{8}, std::uint16_t{16}, std::uint16_t{32}}) {
    TiffFile file{.size_x = 2, .bits = bits, .format = kSigned, .meaning = 0};
    file.planes = {PutNumber(5, bits / 8, false) + PutNumber(~std::uint64_t{0}, bits / 8, false)};
    EXPECT_EQ(ReadValues(MakeTiff(file)), (Values{5.0F, -1.0F})) << bits;
  }
  TiffFile floats{.size_x = 1, .bits = 32, .format = kFloating, .meaning = 0};
  floats.planes = {PutNumber(std::bit_cast<std::uint32_t>(0.25F), 4, false)};
  EXPECT_EQ(ReadValues(MakeTiff(floats)), (Values{0.25F}));
}

TEST_F(TiffSampleValues, TypesOfTiffThatAreNotReadAreNamed) {
  TiffFile file{.size_x = 1, .bits = 64, .format = kUnsigned};
  file.planes = {std::string(8, '\1')};
  EXPECT_EQ(GetProblem(MakeTiff(file)), "samples of 64-bit integers are not supported");
  file.format = kSigned;
  EXPECT_EQ(GetProblem(MakeTiff(file)), "samples of 64-bit integers are not supported");
  file.bits = 20;
  EXPECT_EQ(GetProblem(MakeTiff(file)), "samples of 20-bit integers are not supported");
  file.bits = 64;
  file.format = 6;
  EXPECT_EQ(GetProblem(MakeTiff(file)), "complex samples are not supported");
}

}  // namespace
}  // namespace ScEng
