// SPDX-License-Identifier: Apache-2.0
#include <sys/resource.h>

#include <chrono>

#include "Host/Files/Codecs/Rasters/RastersTesting.h"

namespace ScEng {
namespace {

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

TEST_F(RastersCodec, RefusesBlocksThatAreSmallerThanTheirPlaces) {
  // A JPEG as far as its size, which is 48 x 40.
  const std::string jpeg{'\xFF', '\xD8', '\xFF', '\xC0', 0, 11, 8, 0, 40, 0, 48, 1, 1, 0x11, 0, '\xFF', '\xD9'};
  ReadFile(Put("a.tif", HandmadeTiff::Make(48, 400, 400, 7, {jpeg})), "geotiff");
  EXPECT_EQ(status_.GetMessage(), "its strip 0 holds 48 x 40 pixels and should hold 48 x 400");
  // An error stays one, however often it is asked for.
  const auto decoder = Open(At("a.tif"), "geotiff");
  ASSERT_NE(decoder, nullptr);
  for (int i = 0; i < 2; ++i) {
    ReadRows(*decoder, 0, 10);
    EXPECT_EQ(status_.GetMessage(), "its strip 0 holds 48 x 40 pixels and should hold 48 x 400");
  }
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
