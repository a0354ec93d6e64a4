// SPDX-License-Identifier: Apache-2.0
#include <bit>

#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// The PNM family and what is like it, made byte by byte.

namespace ScEng {
namespace {

using namespace std::string_literals;
using Values = std::vector<float>;

class PnmValues : public testing::Test {
 protected:
  ReadPicture Read(const std::string& bytes, SampleScale scale = SampleScale::kAuto) {
    WriteFile(folder_ / "file", bytes);
    return ReadPart(folder_ / "file", "pnm", 0, scale);
  }
  Values ReadValues(const std::string& bytes, SampleScale scale = SampleScale::kAuto) {
    const ReadPicture read = Read(bytes, scale);
    EXPECT_EQ(read.problem, "");
    return read.samples;
  }
  std::string GetProblem(const std::string& bytes) { return Read(bytes).problem; }

  TestFolder folder_;
};

std::string PutFloat(float number, bool is_big_endian) {
  const auto bits = std::bit_cast<std::uint32_t>(number);
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(bits >> (8 * (is_big_endian ? 3 - i : i)));
  return bytes;
}

TEST_F(PnmValues, NumbersAreDividedByTheLargestOfTheHeader) {
  EXPECT_EQ(ReadValues("P5 3 1 100\n\0\x32\x64"s), (Values{0.0F, 0.5F, 1.0F}));
  EXPECT_EQ(ReadValues("P5 3 1 100\n\0\x32\x64"s, SampleScale::kUnit), (Values{0.0F, 0.5F, 1.0F}));
  EXPECT_EQ(ReadValues("P5 3 1 100\n\0\x32\x64"s, SampleScale::kStored), (Values{0.0F, 50.0F, 100.0F}));
  EXPECT_EQ(ReadValues("P5 3 1 1023\n\0\0\x01\x55\x03\xFF"s), (Values{0.0F, 1.0F / 3.0F, 1.0F}));
  EXPECT_EQ(ReadValues("P5 3 1 1023\n\0\0\x01\x55\x03\xFF"s, SampleScale::kStored), (Values{0.0F, 341.0F, 1023.0F}));
  EXPECT_EQ(ReadValues("P6\n#x\n2 1\n255\n\0\x33\x66\x99\xCC\xFF"s), (Values{0.0F, 0.2F, 0.4F, 0.6F, 0.8F, 1.0F}));
}

TEST_F(PnmValues, TextIsReadLikeBytes) {
  EXPECT_EQ(ReadValues("P2\n# c\n4 1\n15\n0 5 10 15\n"), (Values{0.0F, 1.0F / 3.0F, 2.0F / 3.0F, 1.0F}));
  EXPECT_EQ(ReadValues("P2\n4 1\n15\n0 5 10 15", SampleScale::kStored), (Values{0.0F, 5.0F, 10.0F, 15.0F}));
  EXPECT_EQ(ReadValues("P3 1 1 1000 250 500 1000\n"), (Values{0.25F, 0.5F, 1.0F}));
}

TEST_F(PnmValues, OneIsBlackInBitmaps) {
  EXPECT_EQ(ReadValues("P1\n3 1\n1 0 1\n"), (Values{0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(ReadValues("P1\n3 1\n101"), (Values{0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(ReadValues("P4\n3 2\n\xA0\x40"s), (Values{0.0F, 1.0F, 0.0F, 1.0F, 0.0F, 1.0F}));
  EXPECT_EQ(ReadValues("P4\n9 1\n\x80\x80"s, SampleScale::kStored), (Values{1, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST_F(PnmValues, FloatsAreNotMultipliedAndComeFromTheLowestRow) {
  const std::string little = PutFloat(1.5F, false) + PutFloat(-2.0F, false);
  EXPECT_EQ(ReadValues("Pf\n2 1\n-2.0\n" + little), (Values{1.5F, -2.0F}));
  EXPECT_EQ(ReadValues("Pf\n1 2\n-1.0\n" + little), (Values{-2.0F, 1.5F}));
  const std::string big = PutFloat(1.0F, true) + PutFloat(2.0F, true) + PutFloat(3.0F, true);
  EXPECT_EQ(ReadValues("PF\n1 1\n1.0\n" + big), (Values{1.0F, 2.0F, 3.0F}));
}

TEST_F(PnmValues, DamageIsNamed) {
  EXPECT_EQ(GetProblem("P5 4 4 255\n\0\1\2\3\4"s), "the file is shortened: 1 of 4 rows are there");
  EXPECT_EQ(GetProblem("P2 4 4 255\n0 1 2 3 4 5"), "the file is shortened: 2 of 4 rows are there");
  EXPECT_EQ(GetProblem("P2 2 2 255\n0 1 255 "), "the file is shortened: 1 of 2 rows are there");
  EXPECT_EQ(GetProblem("P2 2 1 15\n0 99"), "its data are damaged: a sample is 99, and the largest is 15");
  EXPECT_EQ(GetProblem("P5 2 1 15\n\0\x63"s), "its data are damaged: a sample is 99, and the largest is 15");
  EXPECT_EQ(GetProblem("P2 2 1 15\n0 x"), "its data are damaged: 0 of 1 rows can be read");
  EXPECT_EQ(GetProblem("P5 0 1 255\n\0"s), "its header is damaged");
  EXPECT_EQ(GetProblem("P5 1 1 70000\n\0\0"s), "its largest number is 70000; up to 65535 is read");
  EXPECT_EQ(GetProblem("Pf 1 1 0\n\0\0\0\0"s), "its header is damaged");
  EXPECT_EQ(GetProblem("P5 99999 99999 255\n\0\1\2"s), "the file is shortened: 0 of 99999 rows are there");
}

TEST_F(PnmValues, FormatsThatAreNotReadAreNamed) {
  EXPECT_EQ(GetProblem("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\n\1\2"),
            "the PAM format is not supported; PBM, PGM, PPM and PFM are read");
  WriteFile(folder_ / "file", "#?RADIANCE\nFORMAT=32-bit_rle_xyze\n\n-Y 1 +X 1\n\x80\x40\x20\x81");
  EXPECT_EQ(ReadPart(folder_ / "file", "hdr").problem, "its colors are XYZ, which is not supported; RGB is read");
}

}  // namespace
}  // namespace ScEng
