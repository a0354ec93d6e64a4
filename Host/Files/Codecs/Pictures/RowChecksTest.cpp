// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// Pixels and packed rows that name or give more or less than there is, in files that are made byte by byte.

namespace ScEng {
namespace {

std::string Little16(unsigned number) { return {static_cast<char>(number), static_cast<char>(number >> 8)}; }
std::string Big16(unsigned number) { return {static_cast<char>(number >> 8), static_cast<char>(number)}; }

/// A Targa of 4 x 2 pixels with a palette of blue, green and red bytes: 0 black, 1 (1, 2, 3), 2 (4, 5, 6).
std::string MakePaletteTarga(char kind, char flags, const std::string& data, unsigned first = 0) {
  const std::string palette{0, 0, 0, 3, 2, 1, 6, 5, 4};
  return std::string{0, 1, kind} + Little16(first) + Little16(3) + std::string{24, 0, 0, 0, 0} + Little16(4) +
         Little16(2) + std::string{8, flags} + palette + data;
}

constexpr char kRaw = 1;
constexpr char kPacked = 9;
constexpr char kFromTop = 0x20;

TEST(RowChecks, ReadsAPaletteTargaWhosePixelsAreInIt) {
  const TestFolder folder;
  const std::vector<float> expected{1, 2, 3, 4, 5, 6, 0, 0, 0, 1, 2, 3, 4, 5, 6, 4, 5, 6, 4, 5, 6, 0, 0, 0};
  WriteFile(folder / "raw.tga", MakePaletteTarga(kRaw, kFromTop, std::string{1, 2, 0, 1, 2, 2, 2, 0}));
  ReadPicture read = ReadPart(folder / "raw.tga", "targa");
  ASSERT_EQ(read.problem, "");
  EXPECT_EQ(read.samples, expected);
  // Four pixels as they are, a run of three, one pixel.
  const std::string packed{3, 1, 2, 0, 1, static_cast<char>(0x82), 2, 0, 0};
  WriteFile(folder / "packed.tga", MakePaletteTarga(kPacked, kFromTop, packed));
  read = ReadPart(folder / "packed.tga", "targa");
  ASSERT_EQ(read.problem, "");
  EXPECT_EQ(read.samples, expected);
}

TEST(RowChecks, NamesThePixelBeyondThePaletteOfATarga) {
  const TestFolder folder;
  const std::string data{1, 2, 0, 1, 2, 2, static_cast<char>(200), 0};
  WriteFile(folder / "a.tga", MakePaletteTarga(kRaw, kFromTop, data));
  EXPECT_EQ(ReadPart(folder / "a.tga", "targa").problem, "its pixel at (2, 1) is 200, beyond its palette of 3 colors");
  WriteFile(folder / "b.tga", MakePaletteTarga(kRaw, 0, data));
  EXPECT_EQ(ReadPart(folder / "b.tga", "targa").problem, "its pixel at (2, 0) is 200, beyond its palette of 3 colors");
  const std::string packed{3, 1, 2, 0, 1, static_cast<char>(0x83), 3};
  WriteFile(folder / "c.tga", MakePaletteTarga(kPacked, kFromTop, packed));
  EXPECT_EQ(ReadPart(folder / "c.tga", "targa").problem, "its pixel at (0, 1) is 3, beyond its palette of 3 colors");
  // Also where the format is not named.
  EXPECT_NE(ReadPart(folder / "c.tga", "").problem, "");
}

TEST(RowChecks, RefusesPalettesOfTargasThatAreNotWhole) {
  const TestFolder folder;
  const std::string data(8, 1);
  WriteFile(folder / "a.tga", MakePaletteTarga(kRaw, 0, data, 300));
  EXPECT_EQ(ReadPart(folder / "a.tga", "targa").problem,
            "its palette begins at color 300; only palettes that begin at 0 are read");
  std::string none = MakePaletteTarga(kRaw, 0, data);
  none[1] = 0;
  WriteFile(folder / "b.tga", none);
  EXPECT_EQ(ReadPart(folder / "b.tga", "targa").problem, "its pixels are colors of a palette, but it has none");
}

/// A PSD of three channels of 8 bits and 4 x 2 pixels, of packed rows.
std::string MakePsd(const std::vector<std::string>& rows) {
  std::string file = "8BPS" + Big16(1) + std::string(6, '\0') + Big16(3) + Big16(0) + Big16(2) + Big16(0) + Big16(4) +
                     Big16(8) + Big16(3) + std::string(12, '\0') + Big16(1);
  for (const std::string& row : rows) file += Big16(static_cast<unsigned>(row.size()));
  for (const std::string& row : rows) file += row;
  return file;
}

TEST(RowChecks, FindsAPackedRowOfAPsdThatGivesTooLittle) {
  const TestFolder folder;
  const std::string run{static_cast<char>(-3), 7};
  const std::string literal{3, 1, 2, 3, 4};
  const std::string mixed{1, 5, 6, static_cast<char>(-1), 8};
  WriteFile(folder / "a.psd", MakePsd({run, literal, run, mixed, run, run}));
  const ReadPicture read = ReadPart(folder / "a.psd", "psd");
  ASSERT_EQ(read.problem, "");
  EXPECT_EQ(read.samples, (std::vector<float>{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7,  //
                                              1, 5, 7, 2, 6, 7, 3, 8, 7, 4, 8, 7}));
  const std::string short_run{static_cast<char>(-2), 7};
  WriteFile(folder / "b.psd", MakePsd({run, run, run, short_run, run, run}));
  EXPECT_EQ(ReadPart(folder / "b.psd", "psd").problem, "row 1 of channel 1 is shortened: it has 3 of 4 bytes");
  // A row of literals that ends before they do.
  WriteFile(folder / "c.psd", MakePsd({run, run, run, run, literal.substr(0, 4), run}));
  EXPECT_EQ(ReadPart(folder / "c.psd", "psd").problem, "row 0 of channel 2 is shortened: it has 3 of 4 bytes");
}

}  // namespace
}  // namespace ScEng
