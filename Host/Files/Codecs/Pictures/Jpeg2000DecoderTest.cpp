// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <openjpeg.h>
#include <unistd.h>

#include <memory>

#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// JPEG 2000 whose components are packed by the library of that format alone.

namespace ScEng {
namespace {

using Values = std::vector<float>;

/// A picture one row high, of components one after the other.
void WriteJpeg2000(const std::filesystem::path& file, OPJ_CODEC_FORMAT kind, unsigned bits, bool is_signed,
                   const std::vector<std::vector<int>>& components, int opacity = -1) {
  std::vector<opj_image_cmptparm_t> parameters(components.size());
  for (auto& parameter : parameters) {
    parameter = {};
    parameter.dx = parameter.dy = 1;
    parameter.w = static_cast<OPJ_UINT32>(components.front().size());
    parameter.h = 1;
    parameter.prec = bits;
    parameter.sgnd = is_signed ? 1 : 0;
  }
  const auto count = static_cast<OPJ_UINT32>(components.size());
  const std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)> image(
      opj_image_create(count, parameters.data(), count < 3 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB), opj_image_destroy);
  image->x1 = parameters.front().w;
  image->y1 = 1;
  for (std::size_t c = 0; c < components.size(); ++c) {
    std::copy(components[c].begin(), components[c].end(), image->comps[c].data);
    image->comps[c].alpha = static_cast<int>(c) == opacity ? 1 : 0;
  }
  opj_cparameters_t settings;
  opj_set_default_encoder_parameters(&settings);
  settings.numresolution = 1;
  settings.tcp_numlayers = 1;
  settings.cp_disto_alloc = 1;
  const std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)> codec(opj_create_compress(kind), opj_destroy_codec);
  const std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)> stream(
      opj_stream_create_default_file_stream(file.c_str(), OPJ_FALSE), opj_stream_destroy);
  ASSERT_TRUE(opj_setup_encoder(codec.get(), &settings, image.get()));
  ASSERT_TRUE(opj_start_compress(codec.get(), image.get(), stream.get()));
  ASSERT_TRUE(opj_encode(codec.get(), stream.get()));
  ASSERT_TRUE(opj_end_compress(codec.get(), stream.get()));
}

std::string NameCodec(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  const auto recognitions = Recognize(file, descriptor);
  close(descriptor);
  return recognitions.front().codec->name;
}

/// Puts a box of coordinates in front of the data.
void PlaceOnGround(const std::filesystem::path& file) {
  using namespace std::string_literals;
  std::string bytes = ReadFile(file);
  bytes.insert(bytes.find("jp2c") - 4,
               "\0\0\0\x20uuid\xb1\x4b\xf8\xbd\x08\x3d\x4b\x43\xa5\xae\x8c\xd7\xd5\xa6\xce\x03II*\0\0\0\0\0"s);
  WriteFile(file, bytes);
}

TEST(Jpeg2000Decoder, KeepsNumbersBelowZero) {
  const TestFolder folder;
  for (const auto kind : {OPJ_CODEC_JP2, OPJ_CODEC_J2K}) {
    WriteJpeg2000(folder / "file", kind, 16, true, {{-32768, -2000, -1, 0, 7, 32767}});
    const ReadPicture read = ReadPart(folder / "file", "jpeg2000", 0, SampleScale::kAuto);
    EXPECT_EQ(read.problem, "");
    EXPECT_EQ(read.samples, (Values{-32768.0F, -2000.0F, -1.0F, 0.0F, 7.0F, 32767.0F}));
    EXPECT_EQ(read.description.parts.front().channels.front().samples.type, StoredType::kInt16);
    EXPECT_EQ(ReadPart(folder / "file", "jpeg2000", 0, SampleScale::kUnit).samples[5], 1.0F);

    WriteJpeg2000(folder / "file", kind, 8, true, {{-128, -5, 0, 127}});
    const ReadPicture small = ReadPart(folder / "file", "jpeg2000", 0, SampleScale::kAuto);
    EXPECT_EQ(small.samples, (Values{-128.0F, -5.0F, 0.0F, 127.0F}));
    EXPECT_EQ(small.description.parts.front().channels.front().samples.type, StoredType::kInt8);
  }
}

TEST(Jpeg2000Decoder, DividesByTheLargestNumberOfItsBits) {
  const TestFolder folder;
  struct Case {
    unsigned bits;
    std::vector<int> numbers;
    StoredType type;
  };
  for (const Case& c : {Case{1, {0, 1, 1, 0}, StoredType::kUint8}, Case{4, {0, 5, 10, 15}, StoredType::kUint8},
                        Case{12, {0, 1, 2048, 4095}, StoredType::kUint16}}) {
    WriteJpeg2000(folder / "file", OPJ_CODEC_JP2, c.bits, false, {c.numbers});
    const ReadPicture stored = ReadPart(folder / "file", "jpeg2000");
    EXPECT_EQ(stored.problem, "");
    EXPECT_EQ(stored.description.parts.front().channels.front().samples.type, c.type);
    const ReadPicture shares = ReadPart(folder / "file", "jpeg2000", 0, SampleScale::kAuto);
    const double largest = (1 << c.bits) - 1;
    for (std::size_t i = 0; i < c.numbers.size(); ++i) {
      EXPECT_EQ(stored.samples[i], static_cast<float>(c.numbers[i]));
      EXPECT_EQ(shares.samples[i], static_cast<float>(c.numbers[i] / largest));
    }
  }
}

TEST(Jpeg2000Decoder, FindsOpacityWhereTheFileNamesIt) {
  const TestFolder folder;
  WriteJpeg2000(folder / "file", OPJ_CODEC_JP2, 12, false, {{1, 2}, {3, 4}, {5, 6}, {7, 8}}, 3);
  const ReadPicture read = ReadPart(folder / "file", "jpeg2000");
  EXPECT_EQ(read.samples, (Values{1.0F, 3.0F, 5.0F, 7.0F, 2.0F, 4.0F, 6.0F, 8.0F}));
  EXPECT_EQ(read.description.parts.front().opacity_channel, 3);
  WriteJpeg2000(folder / "file", OPJ_CODEC_JP2, 16, true, {{1, 2}, {-3, 4}});
  const ReadPicture pair = ReadPart(folder / "file", "jpeg2000");
  EXPECT_EQ(pair.samples, (Values{1.0F, -3.0F, 2.0F, 4.0F}));
  EXPECT_EQ(pair.description.parts.front().opacity_channel, -1);
}

TEST(Jpeg2000Decoder, SaysWhereAFileIsShortened) {
  const TestFolder folder;
  std::vector<int> numbers(4000);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i * 7919 % 4096) - 2048;
  for (const auto kind : {OPJ_CODEC_JP2, OPJ_CODEC_J2K}) {
    WriteJpeg2000(folder / "file", kind, 12, true, {numbers});
    const std::string whole = ReadFile(folder / "file");
    for (const double share : {0.3, 0.6, 0.9, 0.999}) {
      WriteFile(folder / "cut", whole.substr(0, static_cast<std::size_t>(static_cast<double>(whole.size()) * share)));
      EXPECT_EQ(ReadPart(folder / "cut", "jpeg2000").problem, "the file is shortened: the end of its data is missing");
    }
  }
}

TEST(Jpeg2000Decoder, SurvivesDamage) {
  const TestFolder folder;
  std::vector<int> numbers(600);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i * 31 % 4096) - 2048;
  WriteJpeg2000(folder / "whole", OPJ_CODEC_JP2, 12, true, {numbers});
  const std::string whole = ReadFile(folder / "whole");
  std::uint32_t state = 1;
  const auto random = [&] { return (state = state * 1664525U + 1013904223U) >> 8; };
  for (int change = 0; change < 200; ++change) {
    std::string bytes = whole;
    for (int i = 0; i < 2; ++i) bytes[random() % (i == 0 ? 160 : bytes.size())] = static_cast<char>(random());
    WriteFile(folder / "changed", bytes);
    const ReadPicture read = ReadPart(folder / "changed", "jpeg2000");
    EXPECT_EQ(read.problem.find('\n'), std::string::npos);
    if (read.problem.empty()) {
      EXPECT_EQ(std::count(read.samples.begin(), read.samples.end(), kSentinel), 0);
    }
  }
}

TEST(Jpeg2000Decoder, LeavesCoordinatesToTheCodecOfRasters) {
  const TestFolder folder;
  WriteJpeg2000(folder / "file", OPJ_CODEC_JP2, 16, true, {{-1, 2, 3, 4}});
  EXPECT_EQ(NameCodec(folder / "file"), "pictures");
  PlaceOnGround(folder / "file");
  EXPECT_EQ(NameCodec(folder / "file"), "rasters");
  // Of other widths that codec does not know the largest number.
  WriteJpeg2000(folder / "file", OPJ_CODEC_JP2, 12, false, {{1, 2, 3, 4095}});
  PlaceOnGround(folder / "file");
  EXPECT_EQ(NameCodec(folder / "file"), "pictures");
  const ReadPicture read = ReadPart(folder / "file", "jpeg2000", 0, SampleScale::kAuto);
  EXPECT_EQ(read.samples.back(), 1.0F);
  EXPECT_EQ(read.description.notes, std::vector<std::string>{"its place on the ground is not read"});
}

}  // namespace
}  // namespace ScEng
