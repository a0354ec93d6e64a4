// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>

#include "Host/Files/Codecs/Pictures/PictureTesting.h"

namespace ScEng {
namespace {

struct Case {
  const FormatRow* format;
  StoredType type;
  int channels;
};

std::vector<Case> ListCases() {
  std::vector<Case> cases;
  for (const FormatRow& row : GetFormatRows()) {
    if (!row.writes || std::string(row.codec) != "pictures") continue;
    for (const StoredType type : row.types) {
      for (int channels = 1; channels <= row.channels; ++channels) {
        if (row.channels != 3 || channels != 2) cases.push_back({&row, type, channels});
      }
    }
  }
  return cases;
}

std::string NameCase(const Case& of) {
  return std::string(of.format->name) + "_" + GetName(of.type) + "_" + std::to_string(of.channels);
}

/// The name of a test is no place for the bytes of its case, which are others in each run.
void PrintTo(const Case& of, std::ostream* out) { *out << NameCase(of); }

/// Numbers that a type holds; for HDR mantissas of eight bits under one exponent, which it keeps exactly.
std::vector<int> MakeNumbers(const Case& of, std::size_t count) {
  std::mt19937 random(20260101);
  const bool is_hdr = std::string(of.format->name) == "hdr";
  const int low = of.type == StoredType::kInt16 ? -32768 : 0;
  const int high = is_hdr || of.type == StoredType::kUint8 ? 255
                   : of.type == StoredType::kUint16        ? 65535
                   : of.type == StoredType::kInt16         ? 32767
                                                           : 2047;
  std::vector<int> numbers(count);
  for (int& number : numbers) number = low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
  if (is_hdr) {
    for (std::size_t i = 0; i < count; i += static_cast<std::size_t>(of.channels)) numbers[i] = 128 + numbers[i] / 2;
  }
  return numbers;
}

class WrittenPictures : public testing::TestWithParam<Case> {
 protected:
  static constexpr int kSizeX = 37;
  static constexpr int kSizeY = 150;

  WrittenPictures() : plan_(MakePlan(kSizeX, kSizeY, GetParam().channels, GetParam().type)) {
    if (!GetParam().format->opacity) plan_.opacity_channel = -1;
    numbers_ = MakeNumbers(GetParam(), std::size_t{kSizeX} * kSizeY * plan_.channels.size());
    samples_ = PackSamples(plan_, numbers_);
  }

  [[nodiscard]] std::string Write(const std::string& name) const {
    return WritePicture(folder_ / name, GetParam().format->name, plan_, samples_);
  }

  /// What the file says of channel `c` of pixel `i`, which formats without grey or without pairs spread over colours.
  [[nodiscard]] int Expect(std::size_t i, std::size_t c, std::size_t stored) const {
    const std::size_t given = plan_.channels.size();
    if (given == stored) return numbers_[i * given + c];
    if (given == 1) return numbers_[i];
    return numbers_[i * given + (c == 3 ? 1 : 0)];
  }

  TestFolder folder_;
  WritePlan plan_;
  std::vector<int> numbers_;
  std::vector<unsigned char> samples_;
};

TEST_P(WrittenPictures, ComeBackAsTheyWere) {
  ASSERT_EQ(Write("picture"), "");
  const ReadPicture read = ReadPart(folder_ / "picture", GetParam().format->name);
  ASSERT_EQ(read.problem, "");
  ASSERT_EQ(read.description.parts.size(), 1U);
  const FilePart& part = read.description.parts.front();
  ASSERT_EQ(part.size_x, kSizeX);
  ASSERT_EQ(part.size_y, kSizeY);
  EXPECT_EQ(part.channels.front().samples.type, GetParam().type);
  EXPECT_EQ(part.orientation, 1);
  EXPECT_FALSE(part.is_multiplied);
  const std::size_t stored = part.channels.size();
  if (plan_.opacity_channel == 3) {
    EXPECT_EQ(part.opacity_channel, 3);
  }
  const bool is_lossy = std::string(GetParam().format->name) == "jpeg";
  if (is_lossy) return;
  const float unit = IsInteger(GetParam().type) ? 1.0F : 8.0F;
  for (std::size_t i = 0; i < std::size_t{kSizeX} * kSizeY; ++i) {
    for (std::size_t c = 0; c < stored; ++c) {
      ASSERT_EQ(read.samples[i * stored + c], static_cast<float>(Expect(i, c, stored)) / unit) << i << " " << c;
    }
  }
}

TEST_P(WrittenPictures, AreTheSameBytesEveryTime) {
  ASSERT_EQ(Write("one"), "");
  ASSERT_EQ(Write("two"), "");
  EXPECT_TRUE(ReadFile(folder_ / "one") == ReadFile(folder_ / "two"));
}

TEST_P(WrittenPictures, AreErrorsWhereTheyAreShortened) {
  ASSERT_EQ(Write("whole"), "");
  const std::string whole = ReadFile(folder_ / "whole");
  const ReadPicture good = ReadPart(folder_ / "whole", GetParam().format->name);
  for (const double share : {0.02, 0.3, 0.5, 0.77, 0.9, 0.97}) {
    const auto size = static_cast<std::size_t>(static_cast<double>(whole.size()) * share);
    WriteFile(folder_ / "cut", whole.substr(0, size));
    const ReadPicture read = ReadPart(folder_ / "cut", GetParam().format->name);
    // A Targa ends with a table that is not needed for its samples.
    const bool is_whole = std::string(GetParam().format->name) == "targa" && read.problem.empty();
    EXPECT_TRUE(is_whole ? read.samples == good.samples : !read.problem.empty()) << size << " of " << whole.size();
    EXPECT_EQ(read.problem.find('\n'), std::string::npos);
    EXPECT_LT(read.problem.size(), 200U);
  }
}

TEST_P(WrittenPictures, AreErrorsWhereTheDiskIsFull) {
  EXPECT_NE(WritePicture("/dev/full", GetParam().format->name, plan_, samples_), "");
}

INSTANTIATE_TEST_SUITE_P(Table, WrittenPictures, testing::ValuesIn(ListCases()),
                         [](const auto& tested) { return NameCase(tested.param); });

TEST(PicturesCodec, ReadsRectanglesAndChannelsInAnyOrder) {
  const TestFolder folder;
  const WritePlan plan = MakePlan(5, 200, 3, StoredType::kUint8);
  std::vector<int> numbers(5 * 200 * 3);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i % 251);
  for (const char* format : {"tiff", "bmp", "targa", "pnm", "webp", "sgi", "dpx", "jpeg2000"}) {
    ASSERT_EQ(WritePicture(folder / "picture", format, plan, PackSamples(plan, numbers)), "") << format;
    Status status;
    const auto decoder = GetPictures().Open(folder / "picture", format, status);
    ASSERT_NE(decoder, nullptr) << format << status.GetMessage();
    // The second lies before the first.
    for (const int row : {130, 3}) {
      ReadRequest request;
      request.channels = {2, 0};
      request.column_begin = 1;
      request.column_end = 4;
      request.row_begin = row;
      request.row_end = row + 2;
      request.scale = SampleScale::kStored;
      std::vector<float> samples(2 * 3 * 2, kSentinel);
      ASSERT_EQ(decoder->Read(request, {samples.data(), 2, 6}).GetMessage(), "") << format;
      for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
          const auto pixel = static_cast<std::size_t>(((row + y) * 5 + x + 1) * 3);
          const auto at = static_cast<std::size_t>((y * 3 + x) * 2);
          EXPECT_EQ(samples[at], static_cast<float>(numbers[pixel + 2])) << format;
          EXPECT_EQ(samples[at + 1], static_cast<float>(numbers[pixel])) << format;
        }
      }
    }
  }
}

TEST(PicturesCodec, WritesJpegCloseToItsSamples) {
  const TestFolder folder;
  const WritePlan plan = MakePlan(64, 64, 3, StoredType::kUint8);
  std::vector<int> numbers;
  for (int i = 0; i < 64 * 64; ++i) {
    for (int c = 0; c < 3; ++c) numbers.push_back(i % 64 + (i / 64) * (c + 1) / 2);
  }
  ASSERT_EQ(WritePicture(folder / "picture", "jpeg", plan, PackSamples(plan, numbers)), "");
  const ReadPicture read = ReadPart(folder / "picture", "jpeg");
  ASSERT_EQ(read.problem, "");
  float largest = 0.0F;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    largest = std::max(largest, std::fabs(read.samples[i] - static_cast<float>(numbers[i])));
  }
  EXPECT_LE(largest, 6.0F);
}

TEST(PicturesCodec, NamesTheCompressionsOfTiff) {
  const TestFolder folder;
  WritePlan plan = MakePlan(40, 30, 1, StoredType::kFloat);
  std::vector<int> numbers(40 * 30);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i);
  const auto samples = PackSamples(plan, numbers);
  for (const char* name : {"none", "lzw", "zip", "packbits", "zstd"}) {
    plan.compression = name;
    ASSERT_EQ(WritePicture(folder / "picture", "tiff", plan, samples), "") << name;
    const ReadPicture read = ReadPart(folder / "picture", "tiff");
    ASSERT_EQ(read.problem, "") << name;
    EXPECT_EQ(read.samples[1199], 1199.0F / 8.0F);
  }
  plan.compression = "dwaa";
  EXPECT_EQ(WritePicture(folder / "picture", "tiff", plan, samples),
            "the compression \"dwaa\" is not one of TIFF's: zip, none, lzw, packbits, zstd");
}

TEST(PicturesCodec, FindsAChangedByteInPackedTiff) {
  const TestFolder folder;
  const WritePlan plan = MakePlan(100, 100, 3, StoredType::kUint8);
  std::vector<int> numbers(100 * 100 * 3);
  std::mt19937 random(1);
  for (int& number : numbers) number = static_cast<int>(random() % 256);
  ASSERT_EQ(WritePicture(folder / "whole", "tiff", plan, PackSamples(plan, numbers)), "");
  std::string bytes = ReadFile(folder / "whole");
  // Noise is stored as it is, so that only the checksum tells.
  bytes[15000] = static_cast<char>(bytes[15000] ^ 0x10);
  WriteFile(folder / "changed", bytes);
  EXPECT_EQ(ReadPart(folder / "changed", "tiff").problem, "its data are damaged: 0 of 100 rows are there");
}

TEST(PicturesCodec, ReadsWhatOthersWrote) {
  const TestFolder folder;
  WriteFile(
      folder / "script.py",
      "import numpy, sys, OpenImageIO as oiio\n"
      "def put(name, form, kind, array):\n"
      "    array = numpy.ascontiguousarray(array)\n"
      "    spec = oiio.ImageSpec(array.shape[1], array.shape[0], array.shape[2], kind)\n"
      "    if array.shape[2] == 4: spec.attribute('oiio:UnassociatedAlpha', 1)\n"
      "    out = oiio.ImageOutput.create(form)\n"
      "    assert out.open(name, spec), out.geterror()\n"
      "    assert out.write_image(array) and out.close(), out.geterror()\n"
      "n = numpy.arange(20 * 10 * 4).reshape(10, 20, 4)\n"
      "put('a.tif', 'tiff', 'int16', (n[..., :1] - 300).astype('int16'))\n"
      "import struct\n"
      "tags = [(256, 3, 1, 20), (257, 3, 1, 10), (258, 3, 1, 32), (259, 3, 1, 1), (262, 3, 1, 1), (273, 4, 1, 134),\n"
      "        (277, 3, 1, 1), (278, 3, 1, 10), (279, 4, 1, 800), (339, 3, 1, 1)]\n"
      "head = b'II*\\0' + struct.pack('<IH', 8, len(tags)) + b''.join(struct.pack('<HHII', *t) for t in tags)\n"
      "head += bytes(4)\n"
      "assert len(head) == 134\n"
      "open('b.tif', 'wb').write(head + (n[..., 0].astype('<u4') * 5000000).tobytes())\n"
      "put('c.tif', 'tiff', 'double', n[..., :3] / 3.0)\n"
      "put('d.fits', 'fits', 'int16', (n[..., :1] - 300).astype('int16'))\n"
      "put('e.iff', 'iff', 'uint8', (n % 256).astype('uint8'))\n"
      "put('f.rla', 'rla', 'uint16', (n * 80).astype('uint16'))\n"
      "put('g.ico', 'ico', 'uint8', (n % 256).astype('uint8'))\n");
  ASSERT_EQ(std::system(("cd " + (folder / "").string() + " && /usr/bin/python3 script.py").c_str()), 0);
  struct Expected {
    const char* file;
    const char* format;
    StoredType type;
    std::size_t channels;
    double factor;
    double offset;
    int modulus;
  };
  constexpr int kNone = 1 << 30;
  for (const Expected& e : {Expected{"a.tif", "tiff", StoredType::kInt16, 1, 1, -300, kNone},
                            Expected{"b.tif", "tiff", StoredType::kUint32, 1, 5e6, 0, kNone},
                            Expected{"c.tif", "tiff", StoredType::kDouble, 3, 1 / 3.0, 0, kNone},
                            Expected{"d.fits", "fits", StoredType::kInt16, 1, 1, -300, kNone},
                            Expected{"e.iff", "iff", StoredType::kUint8, 4, 1, 0, 256},
                            Expected{"f.rla", "rla", StoredType::kUint16, 4, 80, 0, kNone},
                            Expected{"g.ico", "ico", StoredType::kUint8, 4, 1, 0, 256}}) {
    const ReadPicture read = ReadPart(folder / e.file, e.format);
    ASSERT_EQ(read.problem, "") << e.file;
    const FilePart& part = read.description.parts.front();
    ASSERT_EQ(part.channels.size(), e.channels) << e.file;
    EXPECT_EQ(part.channels.front().samples.type, e.type) << e.file;
    for (std::size_t i = 0; i < read.samples.size(); ++i) {
      const auto number = static_cast<int>(i / e.channels * 4 + i % e.channels) % e.modulus;
      ASSERT_EQ(read.samples[i], static_cast<float>(number * e.factor + e.offset)) << e.file << " " << i;
    }
  }
}

TEST(PicturesCodec, SurvivesDamage) {
  const TestFolder folder;
  const WritePlan plan = MakePlan(24, 40, 3, StoredType::kUint8);
  std::vector<int> numbers(24 * 40 * 3);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i * 7 % 256);
  std::mt19937 random(4711);
  constexpr int kChanges = 125;
  int errors = 0;
  for (const char* format : {"tiff", "jpeg", "bmp", "targa", "pnm", "webp", "jpeg2000", "sgi"}) {
    ASSERT_EQ(WritePicture(folder / "whole", format, plan, PackSamples(plan, numbers)), "");
    const std::string whole = ReadFile(folder / "whole");
    for (int change = 0; change < kChanges; ++change) {
      std::string bytes = whole;
      const std::size_t spots = 1 + random() % 4;
      for (std::size_t i = 0; i < spots; ++i) {
        // Half of the changes hit the header.
        const std::size_t reach = random() % 2 == 0 ? std::min<std::size_t>(bytes.size(), 200) : bytes.size();
        bytes[random() % reach] = static_cast<char>(random() % 256);
      }
      WriteFile(folder / "changed", bytes);
      const ReadPicture read = ReadPart(folder / "changed", format);
      errors += read.problem.empty() ? 0 : 1;
      if (read.problem.empty()) {
        EXPECT_EQ(std::count(read.samples.begin(), read.samples.end(), kSentinel), 0) << format << " " << change;
      }
    }
  }
  EXPECT_GT(errors, 8 * kChanges / 4);
}

}  // namespace
}  // namespace ScEng
