// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// TIFFs whose strips hold less than the directory says, made byte by byte.

namespace ScEng {
namespace {

constexpr unsigned kGroup3 = 3;
constexpr unsigned kGroup4 = 4;
constexpr unsigned kJpeg = 7;
constexpr unsigned kWebp = 50001;

struct Page {
  unsigned width;
  unsigned height;
  unsigned compression;
  unsigned bits = 8;
  unsigned channels = 1;
  unsigned meaning = 1;
};

std::string Little(std::uint64_t number, std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
  return bytes;
}

constexpr unsigned kPalette = 3;

/// A TIFF of one strip and of the same number of bits in every channel. A palette is of black and white.
std::string MakeTiff(const Page& page, const std::string& strip) {
  constexpr unsigned kHeader = 8;
  const bool has_palette = page.meaning == kPalette;
  const unsigned entries = has_palette ? 11 : 10;
  const unsigned data = kHeader + 2 + entries * 12 + 4;
  const std::string bits = Little(page.bits, 2) + Little(page.bits, 2) + Little(page.bits, 2);
  const std::string color = Little(0, 2) + Little(0xFFFF, 2);
  const unsigned colors_at = data + static_cast<unsigned>(bits.size());
  const unsigned strip_at = colors_at + 3 * static_cast<unsigned>(color.size());
  std::string file = "II*" + std::string(1, '\0') + Little(kHeader, 4) + Little(entries, 2);
  const auto put = [&](unsigned tag, unsigned type, unsigned count, unsigned number) {
    file += Little(tag, 2) + Little(type, 2) + Little(count, 4) + Little(number, 4);
  };
  put(256, 4, 1, page.width);
  put(257, 4, 1, page.height);
  put(258, 3, page.channels, page.channels == 1 ? page.bits : data);
  put(259, 3, 1, page.compression);
  put(262, 3, 1, page.meaning);
  put(273, 4, 1, strip_at);
  put(277, 3, 1, page.channels);
  put(278, 4, 1, page.height);
  put(279, 4, 1, static_cast<unsigned>(strip.size()));
  put(284, 3, 1, 1);
  if (has_palette) put(320, 3, 6, colors_at);
  return file + Little(0, 4) + bits + color + color + color + strip;
}

class TiffDamage : public testing::Test {
 protected:
  ReadPicture Read(const Page& page, const std::string& strip) {
    WriteFile(folder_ / "a.tif", MakeTiff(page, strip));
    return ReadPart(folder_ / "a.tif", "tiff", 0, page.bits == 1 ? SampleScale::kAuto : SampleScale::kStored);
  }

  /// A grey picture of a size in another format.
  std::string MakePicture(const std::string& format, int size_x, int size_y, int channels) {
    const WritePlan plan = MakePlan(size_x, size_y, channels, StoredType::kUint8);
    const std::vector<int> numbers(static_cast<std::size_t>(size_x * size_y * channels), 128);
    EXPECT_EQ(WritePicture(folder_ / "picture", format, plan, PackSamples(plan, numbers)), "");
    return ReadFile(folder_ / "picture");
  }

  TestFolder folder_;
};

TEST_F(TiffDamage, RefusesAJpegThatIsSmallerThanItsStrip) {
  const std::string jpeg = MakePicture("jpeg", 48, 40, 1);
  const ReadPicture whole = Read({48, 40, kJpeg}, jpeg);
  ASSERT_EQ(whole.problem, "");
  EXPECT_EQ(whole.samples, std::vector<float>(48 * 40, 128.0F));
  EXPECT_EQ(Read({48, 400, kJpeg}, jpeg).problem, "its strip 0 holds 48 x 40 pixels and should hold 48 x 400");
  EXPECT_EQ(Read({96, 40, kJpeg}, jpeg).problem, "its strip 0 holds 48 x 40 pixels and should hold 96 x 40");
  // The last strip of a picture is often as high as the others.
  EXPECT_EQ(Read({48, 37, kJpeg}, jpeg).problem, "");
}

TEST_F(TiffDamage, RefusesAJpegWithoutASize) {
  const std::string jpeg{'\xFF', '\xD8', '\xFF', '\xFE', 0, 2, '\xFF', '\xD9'};
  EXPECT_EQ(Read({48, 40, kJpeg}, jpeg).problem, "its strip 0 does not tell its size");
}

TEST_F(TiffDamage, RefusesAWebpThatIsSmallerThanItsStrip) {
  const std::string webp = MakePicture("webp", 48, 40, 3);
  const ReadPicture whole = Read({48, 40, kWebp, 8, 3, 2}, webp);
  ASSERT_EQ(whole.problem, "");
  EXPECT_EQ(whole.samples, std::vector<float>(48 * 40 * 3, 128.0F));
  EXPECT_EQ(Read({48, 400, kWebp, 8, 3, 2}, webp).problem, "its strip 0 holds 48 x 40 pixels and should hold 48 x 400");
  EXPECT_EQ(Read({96, 40, kWebp, 8, 3, 2}, webp).problem, "its strip 0 holds 48 x 40 pixels and should hold 96 x 40");
}

TEST_F(TiffDamage, RefusesAStripOfNoBytes) {
  EXPECT_EQ(Read({4, 4, 1}, "").problem, "the file is shortened: 0 of 4 rows are there");
  EXPECT_EQ(Read({4, 4, kJpeg}, "").problem, "a piece of it is missing: 0 of 4 rows are there");
}

// In two dimensions a row like the one above, which is white for the first, is the bit 1, and the end of the block is
// 000000000001 twice.
TEST_F(TiffDamage, RefusesAFaxOfTooFewRows) {
  const std::string end{0, 0x10, 1};
  const ReadPicture whole = Read({16, 8, kGroup4, 1, 1, 0}, "\xFF" + end);
  ASSERT_EQ(whole.problem, "");
  EXPECT_EQ(whole.samples, std::vector<float>(16 * 8, 1.0F));
  EXPECT_EQ(Read({16, 40, kGroup4, 1, 1, 0}, "\xFF" + end).problem, "its data are damaged: 8 of 40 rows can be read");
  EXPECT_EQ(Read({16, 40, kGroup4, 1, 1, 0}, "\xFF").problem, "its data are damaged: 8 of 40 rows can be read");
  // The same with zero as black, and with a palette, whose colours are made elsewhere.
  EXPECT_EQ(Read({16, 40, kGroup4, 1, 1, 1}, "\xFF" + end).problem, "its data are damaged: 8 of 40 rows can be read");
  EXPECT_EQ(Read({16, 8, kGroup4, 1, 1, kPalette}, "\xFF" + end).samples, std::vector<float>(16 * 8 * 3, 0.0F));
  EXPECT_EQ(Read({16, 40, kGroup4, 1, 1, kPalette}, "\xFF" + end).problem,
            "its data are damaged: 8 of 40 rows can be read");
}

TEST_F(TiffDamage, RefusesAFaxWhoseRowsAreShorterThanThePicture) {
  // Rows of 16 white pixels in one dimension, 101010, each after an end of line and filled up to bytes.
  const std::string row{0, 0x1A, static_cast<char>(0x80)};
  const ReadPicture whole = Read({16, 2, kGroup3, 1, 1, 0}, row + row);
  ASSERT_EQ(whole.problem, "");
  EXPECT_EQ(whole.samples, std::vector<float>(16 * 2, 1.0F));
  EXPECT_EQ(Read({32, 2, kGroup3, 1, 1, 0}, row + row).problem, "its data are damaged: 0 of 2 rows can be read");
}

}  // namespace
}  // namespace ScEng
