// SPDX-License-Identifier: Apache-2.0
#include <zlib.h>

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
using Testing::WriteFile;

const ImageCodec& GetPng() { return Testing::GetCodec("png"); }

// ---- Files made by hand ----

enum ColorType : std::uint8_t { kGray = 0, kRgb = 2, kPalette = 3, kGrayAlpha = 4, kRgba = 6 };

void Append(Bytes& bytes, std::string_view more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void AppendNumber(Bytes& bytes, std::uint32_t number) {
  for (const unsigned shift : {24U, 16U, 8U, 0U}) bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

Bytes MakeChunk(std::string_view type, const Bytes& data) {
  Bytes chunk;
  AppendNumber(chunk, static_cast<std::uint32_t>(data.size()));
  Append(chunk, type);
  chunk.insert(chunk.end(), data.begin(), data.end());
  AppendNumber(chunk, static_cast<std::uint32_t>(crc32(0, chunk.data() + 4, static_cast<uInt>(data.size() + 4))));
  return chunk;
}

Bytes MakeChunk(std::string_view type, std::string_view data) {
  return MakeChunk(type, Bytes(data.begin(), data.end()));
}

Bytes Pack(const Bytes& bytes) {
  Bytes packed(compressBound(bytes.size()));
  uLongf size = packed.size();
  EXPECT_EQ(compress(packed.data(), &size, bytes.data(), bytes.size()), Z_OK);
  packed.resize(size);
  return packed;
}

struct PngFile {
  std::uint32_t size_x = 1;
  std::uint32_t size_y = 1;
  std::uint8_t bits = 8;
  ColorType color_type = kGray;
  bool is_interlaced = false;
  /// Chunks between the header and the pixels, and after the pixels.
  Bytes before;
  Bytes after;
  /// Rows with the filter's byte before each.
  Bytes rows;

  [[nodiscard]] Bytes Make() const {
    Bytes header;
    AppendNumber(header, size_x);
    AppendNumber(header, size_y);
    header.insert(header.end(), {bits, color_type, 0, 0, static_cast<std::uint8_t>(is_interlaced ? 1 : 0)});
    Bytes file;
    Append(file, "\x89PNG\r\n\x1a\n");
    for (const Bytes& part :
         {MakeChunk("IHDR", header), before, MakeChunk("IDAT", Pack(rows)), after, MakeChunk("IEND", Bytes())}) {
      file.insert(file.end(), part.begin(), part.end());
    }
    return file;
  }
};

/// A gray picture of 4 columns whose rows count up, with what stands around its pixels.
PngFile MakeRows(std::uint32_t rows, const Bytes& before = {}, const Bytes& after = {}) {
  PngFile file{.size_x = 4, .size_y = rows, .before = before, .after = after, .rows = {}};
  for (std::uint32_t y = 0; y < rows; ++y) {
    const auto value = static_cast<std::uint8_t>(y);
    file.rows.insert(file.rows.end(), {0, value, static_cast<std::uint8_t>(value + 1), 0, 255});
  }
  return file;
}

class PngCodecTest : public testing::Test {
 protected:
  /// Opens what must be fine.
  std::unique_ptr<ImageDecoder> Open(const Bytes& bytes) {
    Status status;
    auto decoder = GetPng().Open(folder_.Save("file.png", bytes), "png", status);
    EXPECT_NE(decoder, nullptr) << status.GetMessage();
    return decoder;
  }

  std::vector<float> ReadStored(const Bytes& bytes) {
    const auto decoder = Open(bytes);
    const Pixels pixels = ReadPart(*decoder);
    EXPECT_EQ(pixels.status.GetMessage(), "");
    return pixels.samples;
  }

  FilePart Describe(const Bytes& bytes) { return Open(bytes)->GetDescription().parts.front(); }

  ImageMetadata ReadMetadata(const Bytes& chunks) { return Describe(MakeRows(1, chunks).Make()).metadata; }

  std::string GetProblemOf(const Bytes& bytes) { return GetProblem(GetPng(), folder_.Save("file.png", bytes)); }

  TestFolder folder_;
};

// ---- Pixels ----

TEST_F(PngCodecTest, ScalesFewBitsToEight) {
  const PngFile one{.size_x = 8, .bits = 1, .before = {}, .after = {}, .rows = {0, 0b10100000}};
  EXPECT_EQ(ReadStored(one.Make()), (std::vector<float>{255, 0, 255, 0, 0, 0, 0, 0}));
  const PngFile two{.size_x = 4, .bits = 2, .before = {}, .after = {}, .rows = {0, 0b00011011}};
  EXPECT_EQ(ReadStored(two.Make()), (std::vector<float>{0, 85, 170, 255}));
  const PngFile four{.size_x = 3, .bits = 4, .before = {}, .after = {}, .rows = {0, 0x0F, 0x70}};
  EXPECT_EQ(ReadStored(four.Make()), (std::vector<float>{0, 255, 119}));
}

TEST_F(PngCodecTest, ReadsSixteenBits) {
  const PngFile file{.size_x = 2,
                     .bits = 16,
                     .color_type = kGrayAlpha,
                     .before = {},
                     .after = {},
                     .rows = {0, 0x12, 0x34, 0xFF, 0xFF, 0x00, 0x01, 0x80, 0x00}};
  const FilePart part = Describe(file.Make());
  EXPECT_EQ(part.channels.size(), 2U);
  EXPECT_EQ(part.channels[0].samples.type, StoredType::kUint16);
  EXPECT_EQ(part.channels[0].name, "");
  EXPECT_EQ(part.opacity_channel, 1);
  EXPECT_FALSE(part.is_multiplied);
  EXPECT_EQ(ReadStored(file.Make()), (std::vector<float>{0x1234, 0xFFFF, 1, 0x8000}));
}

TEST_F(PngCodecTest, DividesByTheLargestInteger) {
  const auto decoder =
      Open(PngFile{.size_x = 1, .color_type = kRgba, .before = {}, .after = {}, .rows = {0, 0, 51, 102, 255}}.Make());
  EXPECT_EQ(ReadPart(*decoder, 0, SampleScale::kAuto).samples, (std::vector<float>{0.0F, 0.2F, 0.4F, 1.0F}));
}

TEST_F(PngCodecTest, ReadsPaletteWithOpacity) {
  PngFile file{.size_x = 3,
               .bits = 8,
               .color_type = kPalette,
               .before = MakeChunk("PLTE", Bytes{1, 2, 3, 40, 50, 60, 7, 8, 9}),
               .after = {},
               .rows = {0, 2, 0, 1}};
  EXPECT_EQ(Describe(file.Make()).opacity_channel, -1);
  EXPECT_EQ(ReadStored(file.Make()), (std::vector<float>{7, 8, 9, 1, 2, 3, 40, 50, 60}));
  const Bytes opacity = MakeChunk("tRNS", Bytes{128, 0});
  file.before.insert(file.before.end(), opacity.begin(), opacity.end());
  EXPECT_EQ(Describe(file.Make()).opacity_channel, 3);
  EXPECT_EQ(ReadStored(file.Make()), (std::vector<float>{7, 8, 9, 255, 1, 2, 3, 128, 40, 50, 60, 0}));
}

TEST_F(PngCodecTest, MakesOpacityOfAColorKey) {
  const PngFile gray{
      .size_x = 4, .bits = 2, .before = MakeChunk("tRNS", Bytes{0, 2}), .after = {}, .rows = {0, 0b00011011}};
  EXPECT_EQ(ReadStored(gray.Make()), (std::vector<float>{0, 255, 85, 255, 170, 0, 255, 255}));
  const PngFile wide{.size_x = 2,
                     .bits = 16,
                     .color_type = kRgb,
                     .before = MakeChunk("tRNS", Bytes{0x12, 0x34, 0, 1, 0, 2}),
                     .after = {},
                     .rows = {0, 0x12, 0x34, 0, 1, 0, 2, 0x12, 0x34, 0, 1, 0, 3}};
  EXPECT_EQ(ReadStored(wide.Make()), (std::vector<float>{0x1234, 1, 2, 0, 0x1234, 1, 3, 65535}));
}

TEST_F(PngCodecTest, ReadsInterlacedRows) {
  // 3 x 3: passes of 1, 0, 0, 1, 1 + 1, ... pixels in the order of Adam7.
  const PngFile file{.size_x = 3,
                     .size_y = 3,
                     .is_interlaced = true,
                     .before = {},
                     .after = {},
                     .rows = {0, 1, 0, 3, 0, 7, 9, 0, 2, 0, 8, 0, 4, 5, 6}};
  const auto decoder = Open(file.Make());
  EXPECT_FALSE(decoder->GetDescription().parts[0].reads_regions);
  EXPECT_EQ(ReadRows(*decoder, 0, 1, 3).samples, (std::vector<float>{4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(ReadRows(*decoder, 0, 0, 1).samples, (std::vector<float>{1, 2, 3}));
}

TEST_F(PngCodecTest, ReadsRegionsInAnyOrder) {
  const auto decoder = Open(MakeRows(100).Make());
  EXPECT_EQ(ReadRows(*decoder, 0, 50, 51).samples, (std::vector<float>{50, 51, 0, 255}));
  EXPECT_EQ(ReadRows(*decoder, 0, 51, 53).samples, (std::vector<float>{51, 52, 0, 255, 52, 53, 0, 255}));
  EXPECT_EQ(ReadRows(*decoder, 0, 3, 4).samples, (std::vector<float>{3, 4, 0, 255}));
  EXPECT_EQ(ReadRows(*decoder, 0, 99, 100).samples, (std::vector<float>{99, 100, 0, 255}));
  EXPECT_EQ(ReadRows(*decoder, 0, 99, 100).samples, (std::vector<float>{99, 100, 0, 255}));
}

TEST_F(PngCodecTest, ReadsColumnsAndChannelsAsAsked) {
  const auto decoder =
      Open(PngFile{.size_x = 3, .color_type = kRgb, .before = {}, .after = {}, .rows = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}}
               .Make());
  const ReadRequest request{.part = 0,
                            .channels = {2, 0, 2},
                            .column_begin = 1,
                            .column_end = 3,
                            .row_begin = 0,
                            .row_end = 1,
                            .scale = SampleScale::kStored};
  std::vector<float> samples(8, -1);
  EXPECT_EQ(decoder->Read(request, {samples.data(), 4, 8}).GetMessage(), "");
  EXPECT_EQ(samples, (std::vector<float>{6, 4, 6, -1, 9, 7, 9, -1}));
}

// ---- Damage ----

TEST_F(PngCodecTest, TellsHowManyRowsAShortenedFileHas) {
  PngFile file{.size_x = 100, .size_y = 200, .before = {}, .after = {}, .rows = {}};
  std::mt19937 random(7);
  for (std::uint32_t y = 0; y < file.size_y; ++y) {
    file.rows.push_back(0);
    for (std::uint32_t x = 0; x < file.size_x; ++x) file.rows.push_back(static_cast<std::uint8_t>(random()));
  }
  Bytes bytes = file.Make();
  bytes.resize(bytes.size() / 2);
  const auto decoder = Open(bytes);
  EXPECT_EQ(ReadRows(*decoder, 0, 0, 10).status.GetMessage(), "");
  const std::string message = ReadPart(*decoder).status.GetMessage();
  EXPECT_TRUE(message.starts_with("the file is shortened: ")) << message;
  EXPECT_TRUE(message.ends_with(" of 200 rows are there")) << message;
  const int rows = std::stoi(message.substr(std::strlen("the file is shortened: ")));
  EXPECT_GT(rows, 80);
  EXPECT_LT(rows, 101);
}

TEST_F(PngCodecTest, RefusesAFileWithoutItsEnd) {
  Bytes bytes = MakeRows(4).Make();
  bytes.resize(bytes.size() - 12);
  EXPECT_EQ(GetProblemOf(bytes), "the file is shortened: its pixels are there, its end is not");
}

TEST_F(PngCodecTest, RefusesWrongChecksums) {
  const Bytes good = MakeRows(4).Make();
  // The last byte of the checksum of the pixels' chunk, before the 12 bytes of the end.
  Bytes chunk = good;
  chunk[chunk.size() - 13] ^= 1;
  EXPECT_EQ(GetProblemOf(chunk), "its checksum does not match: the file is damaged");
  // The sum within the packed pixels is wrong, that of the chunk is right.
  Bytes packed = Pack(MakeRows(4).rows);
  packed.back() ^= 1;
  Bytes sum(good.begin(), good.begin() + 33);
  for (const Bytes& part : {MakeChunk("IDAT", packed), MakeChunk("IEND", Bytes())})
    sum.insert(sum.end(), part.begin(), part.end());
  EXPECT_EQ(GetProblemOf(sum), "its checksum does not match: the file is damaged");
}

TEST_F(PngCodecTest, IgnoresDamagedMetadataWithANote) {
  Bytes text = MakeChunk("tEXt", "Title\0A picture"sv);
  text.back() ^= 1;
  const auto decoder = Open(MakeRows(1, text).Make());
  EXPECT_EQ(decoder->GetDescription().notes,
            (std::vector<std::string>{"the checksum of its chunk \"tEXt\" does not match, and the chunk is ignored"}));
  EXPECT_TRUE(decoder->GetDescription().parts[0].metadata.IsEmpty());
  EXPECT_EQ(ReadPart(*decoder).samples, (std::vector<float>{0, 1, 0, 255}));
}

TEST_F(PngCodecTest, RefusesManyPixelsInFewBytes) {
  PngFile file = MakeRows(1);
  file.size_x = 2000000000;
  file.size_y = 1000;
  const auto decoder = Open(file.Make());
  EXPECT_EQ(decoder->GetDescription().parts[0].size_x, 2000000000);
  float sample = 0.0F;
  const ReadRequest request{.part = 0,
                            .channels = {0},
                            .column_begin = 0,
                            .column_end = 1,
                            .row_begin = 0,
                            .row_end = 1,
                            .scale = SampleScale::kStored};
  EXPECT_EQ(decoder->Read(request, {&sample, 1, 1}).GetMessage(), "the file is shortened: 0 of 1000 rows are there");
}

TEST_F(PngCodecTest, LimitsWhatMetadataUnpacksTo) {
  const Bytes bomb = Pack(Bytes(std::size_t{70} << 20));
  Bytes data;
  Append(data, "Comment\0\0"sv);
  data.insert(data.end(), bomb.begin(), bomb.end());
  const auto decoder = Open(MakeRows(1, MakeChunk("zTXt", data)).Make());
  EXPECT_TRUE(decoder->GetDescription().parts[0].metadata.IsEmpty());
  EXPECT_EQ(decoder->GetDescription().notes,
            (std::vector<std::string>{"its chunk \"zTXt\" is damaged or too large, and is ignored"}));
}

TEST_F(PngCodecTest, SurvivesAnyDamage) {
  const Bytes texts = MakeChunk("tEXt", "Title\0A picture"sv);
  Testing::ExpectDamageIsHarmless(GetPng(), MakeRows(20, texts, texts).Make(), 400, 1);
  PngFile palette{.size_x = 5,
                  .size_y = 5,
                  .bits = 8,
                  .color_type = kPalette,
                  .is_interlaced = true,
                  .before = MakeChunk("PLTE", Bytes{1, 2, 3, 4, 5, 6}),
                  .after = {},
                  .rows = Bytes(41, 0)};
  Testing::ExpectDamageIsHarmless(GetPng(), palette.Make(), 300, 2);
  PngFile wide{
      .size_x = 6, .size_y = 9, .bits = 16, .color_type = kRgba, .before = {}, .after = {}, .rows = Bytes(441, 0)};
  Testing::ExpectDamageIsHarmless(GetPng(), wide.Make(), 300, 3);
}

// ---- Metadata ----

/// An EXIF block in either order of bytes whose only entry is the orientation.
Bytes MakeExif(bool is_big_endian, std::uint8_t orientation) {
  if (is_big_endian) {
    return {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, orientation, 0, 0, 0, 0, 0, 0};
  }
  return {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x12, 0x01, 3, 0, 1, 0, 0, 0, orientation, 0, 0, 0, 0, 0, 0, 0};
}

TEST_F(PngCodecTest, TakesTheOrientationOutOfExif) {
  for (const bool is_big_endian : {false, true}) {
    const FilePart part = Describe(MakeRows(1, MakeChunk("eXIf", MakeExif(is_big_endian, 6))).Make());
    EXPECT_EQ(part.orientation, 6);
    EXPECT_EQ(part.metadata.exif, MakeExif(is_big_endian, 1));
  }
}

TEST_F(PngCodecTest, ReadsTexts) {
  Bytes chunks;
  const auto add = [&](const Bytes& chunk) { chunks.insert(chunks.end(), chunk.begin(), chunk.end()); };
  add(MakeChunk("tEXt", "Title\0Gr\xFC\xDF"sv));
  Bytes packed;
  Append(packed, "Author\0\0"sv);
  const Bytes name = Pack({'A', 'n', 'n'});
  packed.insert(packed.end(), name.begin(), name.end());
  add(MakeChunk("zTXt", packed));
  add(MakeChunk("iTXt", "Creation Time\0\0\0en\0Zeit\0heute \xE2\x82\xAC"sv));
  add(MakeChunk("tEXt", "Lens\0wide"sv));
  add(MakeChunk("iTXt", "XML:com.adobe.xmp\0\0\0\0\0<x/>"sv));
  const ImageMetadata metadata = ReadMetadata(chunks);
  EXPECT_EQ(metadata.entries, (std::vector<MetadataEntry>{{"DocumentName", "Gr\xC3\xBC\xC3\x9F"},
                                                          {"Artist", "Ann"},
                                                          {"DateTime", "heute \xE2\x82\xAC"},
                                                          {"Lens", "wide"}}));
  EXPECT_EQ(metadata.xmp, "<x/>");
}

TEST_F(PngCodecTest, ReadsTextsBehindThePixels) {
  const FilePart part = Describe(MakeRows(1, {}, MakeChunk("tEXt", "Comment\0late"sv)).Make());
  EXPECT_EQ(part.metadata.entries, (std::vector<MetadataEntry>{{"Comment", "late"}}));
}

TEST_F(PngCodecTest, ReadsRawProfiles) {
  Bytes chunks = MakeChunk("tEXt", "Raw profile type xmp\0\nxmp\n       4\n3c782f\n3e\n"sv);
  const Bytes iptc =
      MakeChunk("tEXt", "Raw profile type iptc\0\niptc\n      18\n3842494d04040000000000051c0278000100\n"sv);
  chunks.insert(chunks.end(), iptc.begin(), iptc.end());
  const ImageMetadata metadata = ReadMetadata(chunks);
  EXPECT_EQ(metadata.xmp, "<x/>");
  EXPECT_EQ(metadata.iptc, (Bytes{0x1C, 0x02, 0x78, 0x00, 0x01}));
}

TEST_F(PngCodecTest, ReadsResolution) {
  const ImageMetadata metric = ReadMetadata(MakeChunk("pHYs", Bytes{0, 0, 0x0B, 0x13, 0, 0, 0x0B, 0x14, 1}));
  EXPECT_EQ(*metric.resolution, (std::array<double, 2>{28.35, 28.36}));
  EXPECT_EQ(metric.resolution_unit, "cm");
  const ImageMetadata ratio = ReadMetadata(MakeChunk("pHYs", Bytes{0, 0, 0, 2, 0, 0, 0, 1, 0}));
  EXPECT_EQ(*ratio.resolution, (std::array<double, 2>{2.0, 1.0}));
  EXPECT_EQ(ratio.resolution_unit, "");
}

ImageMetadata MakeMetadata() {
  ImageMetadata metadata;
  metadata.exif = MakeExif(true, 1);
  metadata.iptc = {0x1C, 0x02, 0x78, 0x00, 0x01, 'x'};
  metadata.xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
  // The length, the channels that it describes, and a table with a text as its only entry.
  metadata.icc.assign(128, 0);
  metadata.icc[3] = 156;
  std::memcpy(metadata.icc.data() + 16, "RGB ", 4);
  Append(metadata.icc, "\0\0\0\1cprt\0\0\0\x90\0\0\0\x0Ctext\0\0\0\0own\0"sv);
  metadata.resolution = {118.11, 59.0};
  metadata.resolution_unit = "cm";
  metadata.entries = {{"gAMA", OpaqueValue{"png:gAMA", {0, 0, 0xB1, 0x8F}}},
                      {"DocumentName", "Gr\xC3\xBC\xC3\x9F"},
                      {"DateTime", "heute \xE2\x82\xAC"},
                      {"Own key", "text"}};
  return metadata;
}

TEST_F(PngCodecTest, MetadataComesBack) {
  WritePlan plan{.size_x = 1,
                 .size_y = 1,
                 .channels = {"R", "G", "B"},
                 .type = StoredType::kUint8,
                 .compression = "",
                 .metadata = MakeMetadata(),
                 .stored_headers = {}};
  const std::uint8_t pixel[] = {1, 2, 3};
  std::vector<std::string> notes;
  ASSERT_EQ(WriteFile(GetPng(), folder_ / "file.png", plan, pixel, &notes), "");
  EXPECT_TRUE(notes.empty());
  const auto decoder = Open(LoadBytes(folder_ / "file.png"));
  ImageMetadata expected = MakeMetadata();
  EXPECT_EQ(decoder->GetDescription().parts[0].metadata, expected);
  EXPECT_TRUE(decoder->GetDescription().notes.empty());
}

TEST_F(PngCodecTest, OtherProgramsReadTheMetadata) {
  WritePlan plan{.size_x = 1,
                 .size_y = 1,
                 .channels = {"R", "G", "B"},
                 .type = StoredType::kUint8,
                 .compression = "",
                 .metadata = MakeMetadata(),
                 .stored_headers = {}};
  plan.metadata.iptc = {0x1C, 0x02, 0x78, 0x00, 0x03, 's', 'e', 'a'};
  plan.metadata.exif = MakeExif(false, 1);
  const std::uint8_t pixel[] = {1, 2, 3};
  ASSERT_EQ(WriteFile(GetPng(), folder_ / "file.png", plan, pixel), "");
  const std::string listed = Testing::Run("exiftool -s -n '" + (folder_ / "file.png").string() + "'");
  const auto has_line = [&](std::string_view name, std::string_view value) {
    const std::size_t at = listed.find("\n" + std::string(name) + " ");
    const std::size_t end = at == std::string::npos ? 0 : listed.find('\n', at + 1);
    return at != std::string::npos && listed.substr(at, end - at).ends_with(": " + std::string(value));
  };
  EXPECT_TRUE(has_line("Title", "Gr\xC3\xBC\xC3\x9F")) << listed;
  EXPECT_TRUE(has_line("Orientation", "1")) << listed;
  EXPECT_TRUE(has_line("Caption-Abstract", "sea")) << listed;
  EXPECT_TRUE(has_line("PixelsPerUnitX", "11811")) << listed;
  EXPECT_TRUE(has_line("Gamma", "2.2")) << listed;
  EXPECT_EQ(listed.find("Warning"), std::string::npos) << listed;
}

TEST_F(PngCodecTest, TellsWhatItCannotHold) {
  WritePlan plan{.size_x = 1,
                 .size_y = 1,
                 .channels = {"Y"},
                 .type = StoredType::kUint8,
                 .compression = "",
                 .metadata = MakeMetadata(),
                 .stored_headers = {}};
  plan.metadata.entries = {
      {"chromaticities", OpaqueValue{"exr:chromaticities", {1}}}, {" odd", "x"}, {"n", std::vector<double>{0.5, 2.0}}};
  plan.metadata.nodata = -1.0;
  plan.metadata.georeference.emplace();
  const std::uint8_t pixel[] = {9};
  std::vector<std::string> notes;
  ASSERT_EQ(WriteFile(GetPng(), folder_ / "file.png", plan, pixel, &notes), "");
  EXPECT_EQ(notes,
            (std::vector<std::string>{
                "the color profile does not describe gray samples and is left out",
                "PNG holds no coordinate system, which is left out", "PNG holds no nodata value, which is left out",
                "PNG cannot hold these entries of the metadata, which are left out: chromaticities,  odd"}));
  const ImageMetadata metadata = Describe(LoadBytes(folder_ / "file.png")).metadata;
  EXPECT_EQ(metadata.entries, (std::vector<MetadataEntry>{{"n", "0.5, 2"}}));
}

// ---- Writing ----

TEST_F(PngCodecTest, SamplesComeBackInEveryLayout) {
  for (const StoredType type : {StoredType::kUint8, StoredType::kUint16}) {
    for (int channels = 1; channels <= 4; ++channels) {
      const bool has_opacity = channels % 2 == 0;
      const WritePlan plan{.size_x = 37,
                           .size_y = 23,
                           .channels = std::vector<std::string>(static_cast<std::size_t>(channels)),
                           .type = type,
                           .opacity_channel = has_opacity ? channels - 1 : -1,
                           .compression = "",
                           .metadata = {},
                           .stored_headers = {}};
      const std::size_t count = 37U * 23U * static_cast<std::size_t>(channels);
      std::mt19937 random(5);
      std::vector<std::uint8_t> bytes(count);
      std::vector<std::uint16_t> words(count);
      std::vector<float> expected(count);
      for (std::size_t i = 0; i < count; ++i) {
        words[i] = static_cast<std::uint16_t>(random());
        bytes[i] = static_cast<std::uint8_t>(words[i]);
        expected[i] = type == StoredType::kUint8 ? bytes[i] : words[i];
      }
      const void* samples = type == StoredType::kUint8 ? static_cast<const void*>(bytes.data()) : words.data();
      ASSERT_EQ(WriteFile(GetPng(), folder_ / "out.png", plan, samples), "");
      EXPECT_EQ(Describe(LoadBytes(folder_ / "out.png")).opacity_channel, plan.opacity_channel);
      EXPECT_EQ(ReadStored(LoadBytes(folder_ / "out.png")), expected) << channels;
    }
  }
}

TEST_F(PngCodecTest, WritesTheSameFileEachTime) {
  const WritePlan plan{.size_x = 2,
                       .size_y = 1,
                       .channels = {"Y"},
                       .type = StoredType::kUint8,
                       .compression = "",
                       .metadata = MakeMetadata(),
                       .stored_headers = {}};
  const std::uint8_t pixels[] = {1, 2};
  ASSERT_EQ(WriteFile(GetPng(), folder_ / "a.png", plan, pixels), "");
  ASSERT_EQ(WriteFile(GetPng(), folder_ / "b.png", plan, pixels), "");
  EXPECT_EQ(LoadBytes(folder_ / "a.png"), LoadBytes(folder_ / "b.png"));
}

TEST_F(PngCodecTest, RefusesAnUnknownCompression) {
  const WritePlan plan{.size_x = 1,
                       .size_y = 1,
                       .channels = {"Y"},
                       .type = StoredType::kUint8,
                       .compression = "piz",
                       .metadata = {},
                       .stored_headers = {}};
  const std::uint8_t pixel = 0;
  EXPECT_EQ(WriteFile(GetPng(), folder_ / "a.png", plan, &pixel), "PNG has the compressions zip and none, not \"piz\"");
}

TEST_F(PngCodecTest, AFullDiskIsAnError) {
  const WritePlan plan{.size_x = 1,
                       .size_y = 1,
                       .channels = {"Y"},
                       .type = StoredType::kUint8,
                       .compression = "",
                       .metadata = {},
                       .stored_headers = {}};
  const std::uint8_t pixel = 0;
  EXPECT_EQ(WriteFile(GetPng(), "/dev/full", plan, &pixel), "No space left on device");
}

}  // namespace
}  // namespace ScEng
