// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// BMP and Targa that are made byte by byte.

namespace ScEng {
namespace {

using namespace std::string_literals;
using Values = std::vector<float>;

std::string Put(std::uint32_t number, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
  return bytes;
}

struct BmpFile {
  int size_x = 1;
  int size_y = 1;
  std::uint32_t bits = 24;
  std::uint32_t compression = 0;
  std::string palette = {};
  /// Red, green, blue and, of longer headers, opacity.
  std::vector<std::uint32_t> masks = {};
  std::string data = {};
  std::uint32_t header = 40;
};

std::string MakeBmp(const BmpFile& file) {
  std::string masks;
  for (const std::uint32_t mask : file.masks) masks += Put(mask, 4);
  std::string header = Put(file.header, 4) + Put(static_cast<std::uint32_t>(file.size_x), 4) +
                       Put(static_cast<std::uint32_t>(file.size_y), 4) + Put(1, 2) + Put(file.bits, 2) +
                       Put(file.compression, 4) + Put(static_cast<std::uint32_t>(file.data.size()), 4) + Put(2835, 4) +
                       Put(2835, 4) + Put(static_cast<std::uint32_t>(file.palette.size() / 4), 4) + Put(0, 4) + masks;
  if (header.size() < file.header) header.resize(file.header);
  const std::string rest = header + file.palette;
  const auto offset = static_cast<std::uint32_t>(14 + rest.size());
  return "BM" + Put(offset + static_cast<std::uint32_t>(file.data.size()), 4) + Put(0, 4) + Put(offset, 4) + rest +
         file.data;
}

std::string MakeTarga(unsigned kind, int size_x, int size_y, unsigned bits, unsigned flags, const std::string& data) {
  return Put(0, 2) + Put(kind, 1) + std::string(9, '\0') + Put(static_cast<std::uint32_t>(size_x), 2) +
         Put(static_cast<std::uint32_t>(size_y), 2) + Put(bits, 1) + Put(flags, 1) + data;
}

class BmpValues : public testing::Test {
 protected:
  ReadPicture Read(const std::string& bytes, SampleScale scale = SampleScale::kStored, const char* format = "bmp") {
    WriteFile(folder_ / "file", bytes);
    return ReadPart(folder_ / "file", format, 0, scale);
  }
  Values ReadValues(const BmpFile& file, SampleScale scale = SampleScale::kStored) {
    const ReadPicture read = Read(MakeBmp(file), scale);
    EXPECT_EQ(read.problem, "");
    return read.samples;
  }

  TestFolder folder_;
};

TEST_F(BmpValues, RowsComeFromEitherEnd) {
  const std::string data = "\1\2\3\4\5\6\0\0\7\x8\x9\xA\xB\xC\0\0"s;
  EXPECT_EQ(ReadValues({.size_x = 2, .size_y = -2, .data = data}), (Values{3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10}));
  EXPECT_EQ(ReadValues({.size_x = 2, .size_y = 2, .data = data}), (Values{9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4}));
}

TEST_F(BmpValues, PaddingIsNoOpacity) {
  const ReadPicture read = Read(MakeBmp({.size_x = 2, .bits = 32, .data = "\1\2\3\0\4\5\6\x80"s}));
  EXPECT_EQ(read.samples, (Values{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(read.description.parts.front().opacity_channel, -1);
}

TEST_F(BmpValues, MasksTellWhereChannelsAre) {
  const std::string data = "\1\2\3\4"s;
  EXPECT_EQ(ReadValues({.bits = 32, .compression = 3, .masks = {0xFF, 0xFF00, 0xFF0000}, .data = data}),
            (Values{1, 2, 3}));
  EXPECT_EQ(ReadValues({.bits = 32, .compression = 3, .masks = {0xFF000000, 0xFF0000, 0xFF00}, .data = data}),
            (Values{4, 3, 2}));
  const BmpFile with_opacity{
      .bits = 32, .compression = 3, .masks = {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, .data = data, .header = 108};
  const ReadPicture read = Read(MakeBmp(with_opacity));
  EXPECT_EQ(read.samples, (Values{1, 2, 3, 4}));
  EXPECT_EQ(read.description.parts.front().opacity_channel, 3);
  // The longer header may say that there is none.
  BmpFile without = with_opacity;
  without.masks[3] = 0;
  EXPECT_EQ(ReadValues(without), (Values{1, 2, 3}));
}

TEST_F(BmpValues, ChannelsOfFewBitsAreDividedByTheirOwnLargest) {
  const BmpFile narrow{.size_x = 2, .bits = 16, .data = Put(31U << 10 | 1, 2) + Put(31U << 5, 2)};
  EXPECT_EQ(ReadValues(narrow), (Values{31, 0, 1, 0, 31, 0}));
  EXPECT_EQ(ReadValues(narrow, SampleScale::kAuto), (Values{1, 0, 1.0F / 31.0F, 0, 1, 0}));
  const BmpFile wide_green{
      .bits = 16, .compression = 3, .masks = {0xF800, 0x7E0, 0x1F}, .data = Put(31U << 11 | 63U << 5 | 3U, 4)};
  EXPECT_EQ(ReadValues(wide_green), (Values{31, 63, 3}));
  EXPECT_EQ(ReadValues(wide_green, SampleScale::kAuto), (Values{1, 1, 3.0F / 31.0F}));
  const BmpFile ten{.bits = 32,
                    .compression = 3,
                    .masks = {0x3FF00000, 0xFFC00, 0x3FF},
                    .data = Put(1023U << 20 | 512U << 10 | 1U, 4)};
  EXPECT_EQ(ReadValues(ten), (Values{1023, 512, 1}));
  EXPECT_EQ(ReadValues(ten, SampleScale::kAuto).front(), 1.0F);
}

TEST_F(BmpValues, IndicesBecomeColors) {
  const std::string colors = "\1\2\3\0\4\5\6\0"s;
  EXPECT_EQ(ReadValues({.size_x = 2, .bits = 8, .palette = colors, .data = "\0\1\0\0"s}), (Values{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(ReadValues({.size_x = 3, .bits = 4, .palette = colors, .data = "\x10\x10\0\0"s}),
            (Values{6, 5, 4, 3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(ReadValues({.size_x = 3, .bits = 1, .palette = "\0\0\0\0\xFF\xFF\xFF\0"s, .data = "\xA0\0\0\0"s}),
            (Values{255, 0, 255}));
  EXPECT_EQ(Read(MakeBmp({.size_x = 1, .bits = 8, .palette = colors, .data = "\2\0\0\0"s})).problem,
            "its data are damaged: a pixel has color 2 of 2");
}

TEST_F(BmpValues, RunsEndWithTheirCodes) {
  const std::string grays = "\0\0\0\0\x9\x9\x9\0\x7\x7\x7\0"s;
  BmpFile file{.size_x = 4, .size_y = 2, .bits = 8, .compression = 1, .palette = grays};
  // The lower row comes first.
  file.data = "\4\1\0\0\4\2\0\0\0\1"s;
  EXPECT_EQ(ReadValues(file), (Values{7, 7, 7, 7, 9, 9, 9, 9}));
  file.data = "\4\1\0\0\1\1\0\3\2\0\2\0\0\1"s;
  EXPECT_EQ(ReadValues(file), (Values{9, 7, 0, 7, 9, 9, 9, 9}));
  // Without the last codes, and with a move over one column and one row.
  file.data = "\4\1\0\0\4\2"s;
  EXPECT_EQ(ReadValues(file), (Values{7, 7, 7, 7, 9, 9, 9, 9}));
  file.data = "\2\1\0\2\1\1\1\1\0\1"s;
  EXPECT_EQ(ReadValues(file), (Values{0, 0, 0, 9, 9, 9, 0, 0}));
  const BmpFile narrow{.size_x = 5, .size_y = 1, .bits = 4, .compression = 2, .palette = grays, .data = "\5\x12\0\1"s};
  EXPECT_EQ(ReadValues(narrow), (Values{9, 7, 9, 7, 9}));
}

TEST_F(BmpValues, RunsBeyondTheRowAndMissingOnesAreErrors) {
  BmpFile file{.size_x = 4, .size_y = 2, .bits = 8, .compression = 1, .palette = "\0\0\0\0\x9\x9\x9\0"s};
  file.data = "\5\1\0\1"s;
  EXPECT_EQ(Read(MakeBmp(file)).problem, "its data are damaged: 0 of 2 rows are there");
  file.data = "\4\1\0\0\2\1"s;
  EXPECT_EQ(Read(MakeBmp(file)).problem, "the file is shortened: 1 of 2 rows are there");
  file.data = "\4\1\0\0\0\4\1"s;
  EXPECT_EQ(Read(MakeBmp(file)).problem, "the file is shortened: 1 of 2 rows are there");
  file.data = "\4\1\0\2\0\3"s;
  EXPECT_EQ(Read(MakeBmp(file)).problem, "its data are damaged: 2 of 2 rows are there");
}

TEST_F(BmpValues, WhatIsNotReadIsNamed) {
  EXPECT_EQ(Read(MakeBmp({.bits = 24, .compression = 4, .data = "1234"})).problem,
            "it holds a JPEG, which is not supported in a BMP");
  EXPECT_EQ(Read(MakeBmp({.bits = 12, .data = "1234"})).problem,
            "its pixels are of 12 bits; 1, 2, 4, 8, 16, 24 and 32 are read");
  EXPECT_EQ(Read(MakeBmp({.size_x = 100, .size_y = 20, .data = std::string(700, 'x')})).problem,
            "the file is shortened: 2 of 20 rows are there");
}

TEST_F(BmpValues, RunsSurviveDamage) {
  BmpFile file{.size_x = 40, .size_y = 20, .bits = 8, .compression = 1, .palette = std::string(1024, '\5')};
  for (int row = 0; row < 20; ++row) file.data += "\x10\1\0\5"s + "abcde\0"s + "\x13\2\0\0"s;
  file.data += "\0\1"s;
  const std::string whole = MakeBmp(file);
  ASSERT_EQ(Read(whole).problem, "");
  std::uint32_t state = 1;
  const auto random = [&] { return (state = state * 1664525U + 1013904223U) >> 8; };
  for (int change = 0; change < 500; ++change) {
    std::string bytes = whole;
    for (int i = 0; i < 3; ++i) bytes[random() % (i == 0 ? 54 : bytes.size())] = static_cast<char>(random());
    const ReadPicture read = Read(bytes);
    EXPECT_EQ(read.problem.find('\n'), std::string::npos);
    if (read.problem.empty()) {
      EXPECT_EQ(std::count(read.samples.begin(), read.samples.end(), kSentinel), 0);
    }
  }
}

TEST_F(BmpValues, TargaHasOpacityWhereItsHeaderCountsItsBits) {
  const std::string data = "\1\2\3\4\5\6\7\x8"s;
  const ReadPicture with = Read(MakeTarga(2, 2, 1, 32, 0x28, data), SampleScale::kStored, "targa");
  EXPECT_EQ(with.problem, "");
  EXPECT_EQ(with.samples, (Values{3, 2, 1, 4, 7, 6, 5, 8}));
  EXPECT_EQ(with.description.parts.front().opacity_channel, 3);
  const ReadPicture without = Read(MakeTarga(2, 2, 1, 32, 0x20, data), SampleScale::kStored, "targa");
  EXPECT_EQ(without.problem, "");
  EXPECT_EQ(without.samples, (Values{3, 2, 1, 7, 6, 5}));
  EXPECT_EQ(without.description.parts.front().opacity_channel, -1);
}

}  // namespace
}  // namespace ScEng
