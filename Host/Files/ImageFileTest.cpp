// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/ImageFile.h"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/ImageFormats.h"
#include "Tests/Support/HostTesting.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {
/// Lets flushing to disk fail as on a full one.
std::atomic<bool> disk_is_full = false;
}  // namespace

// Stands in for the system's function of this name.
extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
  if (disk_is_full) {
    errno = ENOSPC;
    return -1;
  }
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace {

using ScEng::ReadMode;
using ScEng::SampleType;
using ScEng::Status;
using Testing::Contains;
using Testing::GetSamples;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeImage;
using Testing::MaxSizeScope;
using Testing::SameSamples;
using Testing::TemporaryFolder;
using Testing::ThreadsScope;

using Notes = std::vector<std::string>;

void Write(const Image& image, const std::filesystem::path& file, SampleType type, Notes* notes = nullptr) {
  Notes own;
  const Status status = ScEng::WriteImageFile(image, file, {.type = type}, own);
  EXPECT_FALSE(status.IsError()) << status.GetMessage();
  if (notes != nullptr) *notes = own;
}

ImagePtr Read(const std::filesystem::path& file, ReadMode mode = ReadMode::kAuto, Notes* notes = nullptr) {
  Notes own;
  Status status;
  auto image = ScEng::ReadImageFile(file, {.mode = mode}, status, own);
  EXPECT_NE(image, nullptr) << status.GetMessage();
  if (notes != nullptr) *notes = own;
  return image;
}

/// The message with which reading fails.
std::string ReadFailure(const std::filesystem::path& file) {
  Notes notes;
  Status status;
  EXPECT_EQ(ScEng::ReadImageFile(file, {}, status, notes), nullptr);
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), file.filename().string()));
  EXPECT_EQ(status.GetMessage().find('\n'), std::string::npos);
  return status.GetMessage();
}

std::string WriteFailure(const Image& image, const std::filesystem::path& file, SampleType type = SampleType::kFloat) {
  Notes notes;
  const Status status = ScEng::WriteImageFile(image, file, {.type = type}, notes);
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), file.filename().string()));
  EXPECT_EQ(status.GetMessage().find('\n'), std::string::npos);
  return status.GetMessage();
}

/// Writes a file as another program would, with the samples as they stand.
void WriteForeign(const std::filesystem::path& file, OIIO::ImageSpec layout, const std::vector<float>& samples) {
  const auto output = OIIO::ImageOutput::create(file.string());
  ASSERT_TRUE(output);
  ASSERT_TRUE(output->open(file.string(), layout)) << output->geterror();
  ASSERT_TRUE(output->write_image(OIIO::TypeDesc::FLOAT, samples.data())) << output->geterror();
  ASSERT_TRUE(output->close());
}

OIIO::ImageSpec ForeignLayout(int size_x, int size_y, int channels, OIIO::TypeDesc type) {
  return {size_x, size_y, channels, type};
}

/// The samples that a file really holds.
std::vector<float> StoredSamples(const std::filesystem::path& file, int* channels = nullptr) {
  OIIO::ImageSpec config;
  config.attribute("oiio:UnassociatedAlpha", 1);
  const auto input = OIIO::ImageInput::open(file.string(), &config);
  if (!input) return {};
  const OIIO::ImageSpec layout = input->spec();
  std::vector<float> samples(layout.image_pixels() * static_cast<std::size_t>(layout.nchannels));
  EXPECT_TRUE(input->read_image(0, 0, 0, layout.nchannels, OIIO::TypeDesc::FLOAT, samples.data()));
  if (channels != nullptr) *channels = layout.nchannels;
  return samples;
}

std::string StoredFormat(const std::filesystem::path& file) {
  const auto input = OIIO::ImageInput::open(file.string());
  return input ? input->spec().format.c_str() : "none";
}

/// Samples that a half holds exactly, and opacities that divide without rounding.
ImagePtr MakeMarked(unsigned mode) {
  std::vector<float> samples;
  const int channels = ColorMode::GetNumChannels(mode);
  for (int i = 0; i < 6 * channels; ++i) {
    const bool opacity = channels == 4 && i % 4 == 3;
    samples.push_back(opacity ? 0.5F : static_cast<float>(i) * 0.25F - 2.0F);
  }
  auto image = MakeImage(3, 2, mode, samples);
  image->SetPin(-70, 41);
  image->SetPivot(0.25F, -1.5F);
  image->SetValueLowHigh(-2.5F, 9.25F);
  return image;
}

// ---- Round trips ----

TEST(ImageFileRoundTrip, FloatAndHalfKeepSamplesAndHeaderInEveryMode) {
  const TemporaryFolder folder;
  for (const unsigned mode : {0U, 1U, 2U, 3U}) {
    for (const SampleType type : {SampleType::kFloat, SampleType::kHalf}) {
      SCOPED_TRACE(std::string(ScEng::GetName(type)) + ", mode " + std::to_string(mode));
      const auto image = MakeMarked(mode);
      Notes notes;
      Write(*image, folder / "a.exr", type, &notes);
      EXPECT_TRUE(notes.empty());
      const auto read = Read(folder / "a.exr", ReadMode::kAuto, &notes);
      EXPECT_TRUE(notes.empty());
      ASSERT_NE(read, nullptr);
      EXPECT_EQ(read->GetColorMode(), mode);
      EXPECT_EQ(read->GetSizeX(), 3);
      EXPECT_EQ(read->GetSizeY(), 2);
      EXPECT_EQ(read->GetRefCount(), 1U);
      EXPECT_TRUE(SameSamples(GetSamples(*image), GetSamples(*read)));
      EXPECT_EQ(read->GetPinX(), -70);
      EXPECT_EQ(read->GetPinY(), 41);
      EXPECT_EQ(read->GetPivotX(), 0.25F);
      EXPECT_EQ(read->GetPivotY(), -1.5F);
      EXPECT_EQ(read->GetValueLow(), -2.5F);
      EXPECT_EQ(read->GetValueHigh(), 9.25F);
    }
  }
}

TEST(ImageFileRoundTrip, TiffKeepsTheChannels) {
  const TemporaryFolder folder;
  const std::pair<unsigned, ReadMode> kModes[] = {
      {0U, ReadMode::kAuto}, {1U, ReadMode::kSigned}, {2U, ReadMode::kAuto}};
  for (const auto& [mode, read_mode] : kModes) {
    const auto image = MakeMarked(mode);
    Write(*image, folder / "a.tif", SampleType::kFloat);
    const auto read = Read(folder / "a.tif", read_mode);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetColorMode(), mode);
    EXPECT_TRUE(SameSamples(GetSamples(*image), GetSamples(*read)));
  }
  const auto pair = MakeMarked(ColorMode::kPair);
  Write(*pair, folder / "b.tif", SampleType::kFloat);
  int channels = 0;
  EXPECT_TRUE(SameSamples(GetSamples(*pair), StoredSamples(folder / "b.tif", &channels)));
  EXPECT_EQ(channels, 2);
}

TEST(ImageFileRoundTrip, FloatsOfEveryKindSurvive) {
  const TemporaryFolder folder;
  const std::vector<float> samples{kNan,   kInfinity, -kInfinity, 0.0F,        -0.0F,
                                   1e-42F, 3.4e38F,   0.1F,       16777217.0F, -7.25F};
  const auto image = MakeImage(5, 2, ColorMode::kValue, samples);
  for (const char* name : {"a.exr", "a.tif"}) {
    Write(*image, folder / name, SampleType::kFloat);
    EXPECT_TRUE(SameSamples(samples, GetSamples(*Read(folder / name)))) << name;
  }
}

TEST(ImageFileRoundTrip, HalfIsTheNearest) {
  const TemporaryFolder folder;
  // Halves between 1 and 2 lie 1/1024 apart; ties go to the even one.
  const auto image =
      MakeImage(6, 1, ColorMode::kValue,
                {1.0F + 0.4F / 1024, 1.0F + 0.6F / 1024, 1.0F + 0.5F / 1024, 1.0F + 1.5F / 1024, -kInfinity, 65504.0F});
  Write(*image, folder / "a.exr", SampleType::kHalf);
  EXPECT_EQ(StoredFormat(folder / "a.exr"), "half");
  EXPECT_TRUE(SameSamples({1.0F, 1.0F + 1.0F / 1024, 1.0F, 1.0F + 2.0F / 1024, -kInfinity, 65504.0F},
                          GetSamples(*Read(folder / "a.exr"))));
}

TEST(ImageFileRoundTrip, IntegersAreZeroToOne) {
  const TemporaryFolder folder;
  const auto bytes = MakeImage(4, 1, ColorMode::kValue, {0.0F, 51.0F / 255, 254.0F / 255, 1.0F});
  const auto words = MakeImage(4, 1, ColorMode::kValue, {0.0F, 257.0F / 65535, 65534.0F / 65535, 1.0F});
  for (const char* name : {"a.png", "a.tif"}) {
    Notes notes;
    Write(*bytes, folder / name, SampleType::kUint8, &notes);
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(StoredFormat(folder / name), "uint8");
    EXPECT_TRUE(SameSamples(GetSamples(*bytes), GetSamples(*Read(folder / name)))) << name;
    Write(*words, folder / name, SampleType::kUint16, &notes);
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(StoredFormat(folder / name), "uint16");
    EXPECT_TRUE(SameSamples(GetSamples(*words), GetSamples(*Read(folder / name)))) << name;
  }
}

TEST(ImageFileRoundTrip, IntegersAreRoundedToNearest) {
  const TemporaryFolder folder;
  const auto image =
      MakeImage(5, 1, ColorMode::kValue, {10.4F / 255, 10.6F / 255, 0.49F / 255, 0.51F / 255, 254.6F / 255});
  Write(*image, folder / "a.png", SampleType::kUint8);
  EXPECT_TRUE(SameSamples({10.0F / 255, 11.0F / 255, 0.0F, 1.0F / 255, 1.0F}, GetSamples(*Read(folder / "a.png"))));
}

TEST(ImageFileRoundTrip, ValuesOutsideAreCutWithANote) {
  const TemporaryFolder folder;
  const auto image = MakeImage(7, 1, ColorMode::kValue, {-0.25F, 0.5F, 1.5F, kInfinity, -kInfinity, kNan, 1.0F});
  Notes notes;
  Write(*image, folder / "a.png", SampleType::kUint16, &notes);
  ASSERT_EQ(notes.size(), 2U);
  EXPECT_TRUE(Contains(notes[0], "4 samples"));
  EXPECT_TRUE(Contains(notes[0], "a.png"));
  EXPECT_TRUE(Contains(notes[1], "1 sample that is not a number"));
  EXPECT_TRUE(SameSamples({0.0F, 32768.0F / 65535, 1.0F, 1.0F, 0.0F, 0.0F, 1.0F}, GetSamples(*Read(folder / "a.png"))));
  Write(*MakeImage(2, 1, ColorMode::kValue, {2.0F, 1.0F}), folder / "b.png", SampleType::kUint8, &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "1 sample "));
}

TEST(ImageFileRoundTrip, CutsAreCountedOnAnyNumberOfThreads) {
  const TemporaryFolder folder;
  const float fill[] = {2.0F};
  const Image image(150, 131, ColorMode::kValue, fill);
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    Notes notes;
    Write(image, folder / "a.tif", SampleType::kUint8, &notes);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_TRUE(Contains(notes[0], "19650 samples"));
  }
}

TEST(ImageFileRoundTrip, TypesThatAFormatLacksAreReplacedWithANote) {
  const TemporaryFolder folder;
  const auto image = MakeImage(1, 1, ColorMode::kValue, {0.5F});
  Notes notes;
  Write(*image, folder / "a.png", SampleType::kFloat, &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "float"));
  Write(*image, folder / "a.exr", SampleType::kUint8, &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "uint8"));
}

TEST(ImageFileRoundTrip, RadianceStoresThreeChannels) {
  const TemporaryFolder folder;
  // Powers of two share one exponent without loss.
  const auto color = MakeImage(2, 1, ColorMode::kColor, {1.0F, 0.5F, 0.25F, 0.5F, 8.0F, 2.0F, 4.0F, 1.0F});
  Notes notes;
  Write(*color, folder / "a.hdr", SampleType::kFloat, &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "opacity"));
  const auto read = Read(folder / "a.hdr");
  EXPECT_EQ(read->GetColorMode(), ColorMode::kColor);
  EXPECT_TRUE(SameSamples({1.0F, 0.5F, 0.25F, 1.0F, 8.0F, 2.0F, 4.0F, 1.0F}, GetSamples(*read)));

  Write(*MakeImage(2, 1, ColorMode::kValue, {0.5F, 4.0F}), folder / "b.hdr", SampleType::kFloat, &notes);
  EXPECT_TRUE(notes.empty());
  EXPECT_TRUE(SameSamples({0.5F, 0.5F, 0.5F, 1.0F, 4.0F, 4.0F, 4.0F, 1.0F}, GetSamples(*Read(folder / "b.hdr"))));
}

TEST(ImageFileRoundTrip, RadianceHoldsNeitherNegativeNorInfiniteNumbers) {
  const TemporaryFolder folder;
  Notes notes;
  Write(*MakeImage(6, 1, ColorMode::kColor,
                   {-0.5F,
                    0.5F,
                    0.25F,
                    1.0F,
                    kNan,
                    0.5F,
                    0.5F,
                    1.0F,  //
                    kInfinity,
                    0.0F,
                    0.0F,
                    1.0F,
                    -kInfinity,
                    1.0F,
                    1.0F,
                    1.0F,  //
                    Testing::kLargest,
                    0,
                    0,
                    1.0F,
                    1.0F,
                    1.0F,
                    1.0F,
                    1.0F}),
        folder / "a.hdr", SampleType::kFloat, &notes);
  ASSERT_EQ(notes.size(), 2U);
  EXPECT_TRUE(Contains(notes[0], "4 samples outside the numbers that the format holds were cut")) << notes[0];
  EXPECT_TRUE(Contains(notes[1], "1 sample that is not a number was written as 0")) << notes[1];
  const float most = 0x1.FEp126F;
  EXPECT_TRUE(SameSamples({0.0F, 0.5F, 0.25F, 1.0F, 0.0F, 0.5F, 0.5F, 1.0F,  //
                           most, 0.0F, 0.0F,  1.0F, 0.0F, 1.0F, 1.0F, 1.0F,  //
                           most, 0.0F, 0.0F,  1.0F, 1.0F, 1.0F, 1.0F, 1.0F},
                          GetSamples(*Read(folder / "a.hdr"))));
}

TEST(ImageFileRoundTrip, HalvesThatBecomeInfiniteAreCounted) {
  const TemporaryFolder folder;
  // Up to 65520, the middle between 65504 and the 65536 that would come next, the largest half is nearest.
  const auto image =
      MakeImage(7, 1, ColorMode::kValue, {65504.0F, 65519.996F, -65519.996F, 65520.0F, -70000.0F, kInfinity, kNan});
  Notes notes;
  Write(*image, folder / "a.exr", SampleType::kHalf, &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "2 samples beyond the largest half, 65504, were written as infinity")) << notes[0];
  EXPECT_TRUE(SameSamples({65504.0F, 65504.0F, -65504.0F, kInfinity, -kInfinity, kInfinity, kNan},
                          GetSamples(*Read(folder / "a.exr"))));
  notes.clear();
  Write(*image, folder / "b.exr", SampleType::kFloat, &notes);
  EXPECT_TRUE(notes.empty());
}

TEST(ImageFileRoundTrip, HalfBecomesFloatWhereAFormatHasIt) {
  const TemporaryFolder folder;
  const auto image = MakeImage(2, 1, ColorMode::kValue, {0.1F, -2.5F});
  auto metadata = std::make_shared<ScEng::ImageMetadata>();
  metadata->nodata = -9999.0;
  image->SetMetadata(metadata);
  Notes notes;
  Write(*image, folder / "ground.tif", SampleType::kHalf, &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "float is written"));
  EXPECT_TRUE(SameSamples({0.1F, -2.5F}, GetSamples(*Read(folder / "ground.tif"))));
}

TEST(ImageFileLayers, TogetherAreNoLargerThanAnImage) {
  const TemporaryFolder folder;
  const auto near = MakeImage(1, 1, ColorMode::kValue, {1.0F});
  const auto far = MakeImage(1, 1, ColorMode::kValue, {2.0F});
  far->SetPin(40000, 0);
  Notes notes;
  const Status status = ScEng::WriteImageLayers({{"a", near.Get(), {}}, {"b", far.Get(), {}}}, folder / "a.exr", notes);
  EXPECT_TRUE(Contains(status.GetMessage(), "40001 x 1"));
  EXPECT_TRUE(Contains(status.GetMessage(), "--max-size"));
  EXPECT_TRUE(folder.List().empty());
}

TEST(ImageFileRoundTrip, LargeImagesComeBackTheSameOnAnyNumberOfThreads) {
  const TemporaryFolder folder;
  Image image(331, 257, ColorMode::kColor, nullptr);
  float* samples = image.GetArray();
  for (std::size_t i = 0; i < image.GetNumSamples(); ++i) {
    samples[i] = i % 4 == 3 ? 1.0F : static_cast<float>(i % 1021) * 0.125F;
  }
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    for (const char* name : {"a.exr", "a.tif"}) {
      Write(image, folder / name, SampleType::kFloat);
      EXPECT_TRUE(SameSamples(GetSamples(image), GetSamples(*Read(folder / name)))) << name;
    }
  }
}

// ---- Opacity ----

TEST(ImageFileOpacity, ExrStoresMultipliedColor) {
  const TemporaryFolder folder;
  const auto image = MakeImage(2, 1, ColorMode::kColor, {0.5F, 1.0F, 2.0F, 0.25F, 3.0F, 3.0F, 3.0F, 1.0F});
  Write(*image, folder / "a.exr", SampleType::kFloat);
  EXPECT_TRUE(SameSamples({0.125F, 0.25F, 0.5F, 0.25F, 3.0F, 3.0F, 3.0F, 1.0F}, StoredSamples(folder / "a.exr")));
  EXPECT_TRUE(SameSamples(GetSamples(*image), GetSamples(*Read(folder / "a.exr"))));
}

TEST(ImageFileOpacity, ColorWithoutOpacityStaysAsStored) {
  const TemporaryFolder folder;
  WriteForeign(folder / "a.exr", ForeignLayout(2, 1, 4, OIIO::TypeDesc::FLOAT),
               {0.5F, 1.0F, 2.0F, 0.0F, 1.0F, 2.0F, 3.0F, 0.5F});
  EXPECT_TRUE(SameSamples({0.5F, 1.0F, 2.0F, 0.0F, 2.0F, 4.0F, 6.0F, 0.5F}, GetSamples(*Read(folder / "a.exr"))));
}

TEST(ImageFileOpacity, SignedAndPairAreStoredPlain) {
  const TemporaryFolder folder;
  const std::vector<float> normal{0.5F, -1.0F, 1.0F, 0.25F};
  Write(*MakeImage(1, 1, ColorMode::kSigned, normal), folder / "a.exr", SampleType::kFloat);
  EXPECT_TRUE(SameSamples(normal, StoredSamples(folder / "a.exr")));
  const std::vector<float> pair{3.0F, 0.5F};
  Write(*MakeImage(1, 1, ColorMode::kPair, pair), folder / "b.exr", SampleType::kFloat);
  EXPECT_TRUE(SameSamples(pair, StoredSamples(folder / "b.exr")));
}

TEST(ImageFileOpacity, TiffKeepsStraightColorAndReadsMultipliedColor) {
  const TemporaryFolder folder;
  const std::vector<float> straight{0.5F, 1.0F, 2.0F, 0.25F};
  Write(*MakeImage(1, 1, ColorMode::kColor, straight), folder / "a.tif", SampleType::kFloat);
  EXPECT_TRUE(SameSamples(straight, StoredSamples(folder / "a.tif")));
  // A file of another program, marked as multiplied.
  WriteForeign(folder / "b.tif", ForeignLayout(1, 1, 4, OIIO::TypeDesc::FLOAT), {0.125F, 0.25F, 0.5F, 0.25F});
  EXPECT_TRUE(SameSamples(straight, GetSamples(*Read(folder / "b.tif"))));
}

TEST(ImageFileOpacity, PngIsStraight) {
  const TemporaryFolder folder;
  const std::vector<float> samples{1.0F, 51.0F / 255, 0.0F, 102.0F / 255, 0.6F, 0.8F, 1.0F, 0.0F};
  Write(*MakeImage(2, 1, ColorMode::kColor, samples), folder / "a.png", SampleType::kUint8);
  EXPECT_TRUE(SameSamples({1.0F, 51.0F / 255, 0.0F, 102.0F / 255, 153.0F / 255, 204.0F / 255, 1.0F, 0.0F},
                          GetSamples(*Read(folder / "a.png"))));
}

// ---- Channels and modes ----

TEST(ImageFileModes, ChannelsDecideTheMode) {
  const TemporaryFolder folder;
  WriteForeign(folder / "1.tif", ForeignLayout(1, 1, 1, OIIO::TypeDesc::FLOAT), {0.5F});
  WriteForeign(folder / "3.tif", ForeignLayout(1, 1, 3, OIIO::TypeDesc::FLOAT), {0.5F, 0.25F, 0.75F});
  OIIO::ImageSpec gray = ForeignLayout(1, 1, 2, OIIO::TypeDesc::FLOAT);
  gray.channelnames = {"Y", "A"};
  gray.alpha_channel = 1;
  WriteForeign(folder / "2.exr", gray, {0.25F, 0.5F});

  const auto one = Read(folder / "1.tif");
  EXPECT_EQ(one->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(GetSamples(*one), (std::vector<float>{0.5F}));
  EXPECT_EQ(one->GetValueLow(), 0.0F);
  EXPECT_EQ(one->GetValueHigh(), 1.0F);
  EXPECT_EQ(one->GetPinX(), 0);
  const auto two = Read(folder / "2.exr");
  EXPECT_EQ(two->GetColorMode(), ColorMode::kColor);
  EXPECT_EQ(GetSamples(*two), (std::vector<float>{0.5F, 0.5F, 0.5F, 0.5F}));
  const auto three = Read(folder / "3.tif");
  EXPECT_EQ(three->GetColorMode(), ColorMode::kColor);
  EXPECT_EQ(GetSamples(*three), (std::vector<float>{0.5F, 0.25F, 0.75F, 1.0F}));
}

TEST(ImageFileModes, AskedModeDecides) {
  const TemporaryFolder folder;
  WriteForeign(folder / "1.tif", ForeignLayout(1, 1, 1, OIIO::TypeDesc::FLOAT), {0.5F});
  WriteForeign(folder / "3.tif", ForeignLayout(1, 1, 3, OIIO::TypeDesc::FLOAT), {0.25F, 0.5F, 0.75F});
  WriteForeign(folder / "4.exr", ForeignLayout(1, 1, 4, OIIO::TypeDesc::FLOAT), {0.25F, 0.5F, 0.75F, 0.5F});

  const auto gray = Read(folder / "1.tif", ReadMode::kColor);
  EXPECT_EQ(gray->GetColorMode(), ColorMode::kColor);
  EXPECT_EQ(GetSamples(*gray), (std::vector<float>{0.5F, 0.5F, 0.5F, 1.0F}));
  const auto plain = Read(folder / "4.exr", ReadMode::kSigned);
  EXPECT_EQ(plain->GetColorMode(), ColorMode::kSigned);
  EXPECT_EQ(GetSamples(*plain), (std::vector<float>{0.25F, 0.5F, 0.75F, 0.5F}));
  EXPECT_EQ(plain->GetValueLow(), -1.0F);
  const auto value = Read(folder / "3.tif", ReadMode::kValue);
  EXPECT_EQ(value->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(GetSamples(*value), (std::vector<float>{0.5F}));
  // (1 + 0.5 + 1.5) halves, each times the opacity of a half.
  const auto weighted = Read(folder / "4.exr", ReadMode::kValue);
  EXPECT_EQ(GetSamples(*weighted), (std::vector<float>{0.5F}));
}

TEST(ImageFileModes, StoredRangeGoesWithTheSamplesInEveryMode) {
  const TemporaryFolder folder;
  Write(*MakeMarked(ColorMode::kValue), folder / "a.exr", SampleType::kFloat);
  for (const ReadMode mode : {ReadMode::kAuto, ReadMode::kColor, ReadMode::kSigned, ReadMode::kValue}) {
    const auto read = Read(folder / "a.exr", mode);
    EXPECT_EQ(read->GetValueLow(), -2.5F);
    EXPECT_EQ(read->GetValueHigh(), 9.25F);
    EXPECT_EQ(read->GetPinX(), -70);
  }
}

TEST(ImageFileModes, StoredModeThatDoesNotSuitIsIgnoredWithANote) {
  const TemporaryFolder folder;
  OIIO::ImageSpec layout = ForeignLayout(1, 1, 3, OIIO::TypeDesc::FLOAT);
  for (const int stored : {2, 3, 9, -1}) {
    layout.attribute("value:mode", stored);
    WriteForeign(folder / "a.exr", layout, {1.0F, 2.0F, 3.0F});
    Notes notes;
    const auto read = Read(folder / "a.exr", ReadMode::kAuto, &notes);
    EXPECT_EQ(read->GetColorMode(), ColorMode::kColor);
    ASSERT_EQ(notes.size(), 1U) << stored;
    EXPECT_TRUE(Contains(notes[0], std::to_string(stored)));
    EXPECT_TRUE(Contains(notes[0], "a.exr"));
  }
}

TEST(ImageFileModes, TiledFilesAreRead) {
  const TemporaryFolder folder;
  OIIO::ImageSpec layout = ForeignLayout(40, 35, 1, OIIO::TypeDesc::UINT8);
  layout.tile_width = layout.tile_height = 16;
  std::vector<float> samples(40 * 35);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i % 256) / 255.0F;
  const auto output = OIIO::ImageOutput::create((folder / "a.tif").string());
  ASSERT_TRUE(output->open((folder / "a.tif").string(), layout));
  ASSERT_TRUE(output->write_image(OIIO::TypeDesc::FLOAT, samples.data()));
  ASSERT_TRUE(output->close());
  EXPECT_TRUE(SameSamples(samples, GetSamples(*Read(folder / "a.tif"))));
}

// ---- Files that cannot be read ----

TEST(ImageFileErrors, AreOfOneLineOfBoundedLengthThatEndsInWholeCharacters) {
  std::filesystem::path file = "/";
  for (int i = 0; i < 20; ++i) file /= "ein Ordner für Höhen";
  file /= "last.exr";
  const std::string message = ReadFailure(file);
  EXPECT_LE(message.size(), 260U);
  EXPECT_TRUE(Contains(message, "last.exr\": there is no such file"));
  const std::size_t dots = message.find("...");
  ASSERT_NE(dots, std::string::npos);
  EXPECT_NE(static_cast<unsigned char>(message[dots + 3]) & 0xC0U, 0x80U);
}

TEST(ImageFileErrors, MissingFilesAndFolders) {
  const TemporaryFolder folder;
  EXPECT_TRUE(Contains(ReadFailure(folder / "a.exr"), "no such file"));
  std::filesystem::create_directory(folder / "b.exr");
  EXPECT_TRUE(Contains(ReadFailure(folder / "b.exr"), "folder"));
}

TEST(ImageFileErrors, DamagedFiles) {
  const TemporaryFolder folder;
  for (const char* name : {"a.exr", "a.png", "a.tif", "a.hdr", "a.jpg"}) {
    Testing::WriteText(folder / name, "this is a letter and no image at all, whatever its name says\n");
    ReadFailure(folder / name);
    Testing::WriteText(folder / name, "");
    ReadFailure(folder / name);
  }
  Testing::WriteText(folder / "a.txt", "a letter");
  ReadFailure(folder / "a.txt");
}

/// The PNG library jumps over the destructor of a string where a file ends early, which a leak check would report.
class LeakCheckPause {
 public:
#if defined(__SANITIZE_ADDRESS__)
  LeakCheckPause() { __lsan_disable(); }
  ~LeakCheckPause() { __lsan_enable(); }
#else
  LeakCheckPause() = default;
#endif
  LeakCheckPause(const LeakCheckPause&) = delete;
  LeakCheckPause& operator=(const LeakCheckPause&) = delete;
};

TEST(ImageFileErrors, ShortenedFiles) {
  [[maybe_unused]] const LeakCheckPause pause;
  const TemporaryFolder folder;
  Image image(120, 90, ColorMode::kValue, nullptr);
  for (std::size_t i = 0; i < image.GetNumSamples(); ++i)
    image.GetArray()[i] = std::fmod(static_cast<float>(i) * 0.37F, 1.0F);
  for (const auto& [name, type] : {std::pair{"a.exr", SampleType::kFloat},
                                   {"a.tif", SampleType::kFloat},
                                   {"a.tif", SampleType::kUint8},
                                   {"a.png", SampleType::kUint8}}) {
    Write(image, folder / name, type);
    const std::string whole = Testing::ReadText(folder / name);
    for (const std::size_t parts : {1U, 2U, 3U}) {
      Testing::WriteText(folder / name, std::string_view(whole).substr(0, whole.size() * parts / 4));
      ReadFailure(folder / name);
    }
  }
}

TEST(ImageFileErrors, MoreThanFourChannelsWithoutNames) {
  const TemporaryFolder folder;
  WriteForeign(folder / "a.tif", ForeignLayout(1, 1, 5, OIIO::TypeDesc::FLOAT), {1, 2, 3, 4, 5});
  EXPECT_TRUE(Contains(ReadFailure(folder / "a.tif"), "5 channels"));
}

TEST(ImageFileErrors, BeyondTheMaximumSize) {
  const TemporaryFolder folder;
  const float fill[] = {0.5F};
  Write(Image(20, 10, ColorMode::kValue, fill), folder / "a.exr", SampleType::kFloat);
  {
    const MaxSizeScope scope(19, 100);
    const std::string message = ReadFailure(folder / "a.exr");
    EXPECT_TRUE(Contains(message, "20 x 10"));
    EXPECT_TRUE(Contains(message, "19 x 100"));
  }
  {
    const MaxSizeScope scope(100, 9);
    ReadFailure(folder / "a.exr");
  }
  const MaxSizeScope scope(20, 10);
  EXPECT_NE(Read(folder / "a.exr"), nullptr);
}

// ---- Files that cannot be written ----

class ImageFileWrite : public testing::Test {
 protected:
  void TearDown() override { disk_is_full = false; }
  TemporaryFolder folder_;
  ImagePtr image_ = MakeImage(2, 1, ColorMode::kValue, {0.25F, 0.5F});
};

TEST_F(ImageFileWrite, LeavesOneFileAndNothingElse) {
  Write(*image_, folder_ / "a.exr", SampleType::kFloat);
  Write(*image_, folder_ / "a.exr", SampleType::kHalf);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr"}));
}

TEST_F(ImageFileWrite, RefusesWhatItCannotName) {
  EXPECT_TRUE(Contains(WriteFailure(*image_, folder_ / "a.letter"), ".exr"));
  WriteFailure(*image_, folder_ / "noending");
  WriteFailure(Image(0, 4, ColorMode::kValue, nullptr), folder_ / "a.exr");
  EXPECT_TRUE(folder_.List().empty());
}

TEST_F(ImageFileWrite, RefusesFoldersAndMissingFolders) {
  std::filesystem::create_directory(folder_ / "a.exr");
  EXPECT_TRUE(Contains(WriteFailure(*image_, folder_ / "a.exr"), "folder"));
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "a.exr"));
  EXPECT_TRUE(Contains(WriteFailure(*image_, folder_ / "none" / "b.exr"), "none"));
  Testing::WriteText(folder_ / "letter", "text");
  WriteFailure(*image_, folder_ / "letter" / "b.exr");
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr", "letter"}));
}

TEST_F(ImageFileWrite, RefusesWhatIsNoRegularFile) {
  ASSERT_EQ(mkfifo((folder_ / "a.exr").c_str(), 0600), 0);
  WriteFailure(*image_, folder_ / "a.exr");
  EXPECT_TRUE(std::filesystem::is_fifo(folder_ / "a.exr"));
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr"}));
}

TEST_F(ImageFileWrite, UnwritableFolder) {
  // Whoever may write everywhere finds no folder unwritable.
  if (geteuid() == 0) return;
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0500), 0);
  WriteFailure(*image_, folder_ / "a.exr");
  EXPECT_TRUE(folder_.List().empty());
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0700), 0);
}

TEST_F(ImageFileWrite, FollowsASymbolicLink) {
  std::filesystem::create_directory(folder_ / "real");
  Write(*MakeImage(1, 1, ColorMode::kValue, {1.0F}), folder_ / "real" / "a.exr", SampleType::kFloat);
  std::filesystem::create_symlink("real/a.exr", folder_ / "link.exr");
  Write(*image_, folder_ / "link.exr", SampleType::kFloat);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.exr"));
  EXPECT_FALSE(std::filesystem::is_symlink(folder_ / "real" / "a.exr"));
  EXPECT_EQ(GetSamples(*Read(folder_ / "real" / "a.exr")), GetSamples(*image_));
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"link.exr", "real"}));
}

TEST_F(ImageFileWrite, FollowsASymbolicLinkToAFileThatIsNotThereYet) {
  std::filesystem::create_directory(folder_ / "real");
  std::filesystem::create_symlink("real/b.exr", folder_ / "near.exr");
  std::filesystem::create_symlink(folder_ / "near.exr", folder_ / "new.exr");
  Write(*image_, folder_ / "new.exr", SampleType::kFloat);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "new.exr"));
  EXPECT_TRUE(std::filesystem::is_regular_file(folder_ / "real" / "b.exr"));
}

TEST_F(ImageFileWrite, KeepsTheOldFileWhenTheDiskIsFull) {
  Write(*image_, folder_ / "old.exr", SampleType::kFloat);
  const std::string before = Testing::ReadText(folder_ / "old.exr");
  disk_is_full = true;
  EXPECT_TRUE(Contains(WriteFailure(Image(64, 64, ColorMode::kValue, image_->GetConstArray()), folder_ / "old.exr"),
                       "No space left"));
  WriteFailure(*image_, folder_ / "new.png", SampleType::kUint8);
  EXPECT_TRUE(ScEng::WriteWholeFile(folder_ / "text.txt", "text").IsError());
  disk_is_full = false;
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"old.exr"}));
  EXPECT_EQ(Testing::ReadText(folder_ / "old.exr"), before);
}

TEST_F(ImageFileWrite, FillsADiskThatIsReallyTooSmall) {
  // In a process of its own, which mounts a disk of 64 KiB over the folder where it may.
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    enum Outcome { kFine, kNoMount, kNoError, kLeftBehind, kOldFileGone };
    const auto run = [&] {
      const std::string user = "0 " + std::to_string(geteuid()) + " 1";
      const std::string group = "0 " + std::to_string(getegid()) + " 1";
      if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return kNoMount;
      Testing::WriteText("/proc/self/setgroups", "deny");
      Testing::WriteText("/proc/self/uid_map", user);
      Testing::WriteText("/proc/self/gid_map", group);
      if (geteuid() != 0 || getegid() != 0) return kNoMount;
      if (mount("none", folder_.Path().c_str(), "tmpfs", 0, "size=64k") != 0) return kNoMount;
      if (ScEng::WriteWholeFile(folder_ / "a.txt", "old").IsError()) return kNoError;
      const std::string large(1 << 20, 'x');
      if (!ScEng::WriteWholeFile(folder_ / "a.txt", large).IsError()) return kNoError;
      if (folder_.List() != std::vector<std::string>{"a.txt"}) return kLeftBehind;
      return Testing::ReadText(folder_ / "a.txt") == "old" ? kFine : kOldFileGone;
    };
    _exit(run());
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  const bool mounted = WEXITSTATUS(status) != 1;
  if (mounted) {
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }
}

TEST_F(ImageFileWrite, KeepsWhoMayReadTheFile) {
  const auto file = folder_ / "private.txt";
  ASSERT_FALSE(ScEng::WriteWholeFile(file, "old").IsError());
  constexpr auto kOwnerOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
  std::filesystem::permissions(file, kOwnerOnly);
  ASSERT_FALSE(ScEng::WriteWholeFile(file, "new").IsError());
  EXPECT_EQ(std::filesystem::status(file).permissions(), kOwnerOnly);
}

TEST_F(ImageFileWrite, WholeFilesAreReplaced) {
  EXPECT_FALSE(ScEng::WriteWholeFile(folder_ / "a.txt", "first and longer").IsError());
  EXPECT_FALSE(ScEng::WriteWholeFile(folder_ / "a.txt", "second").IsError());
  EXPECT_EQ(Testing::ReadText(folder_ / "a.txt"), "second");
  EXPECT_FALSE(ScEng::WriteWholeFile(folder_ / "a.txt", "").IsError());
  EXPECT_EQ(Testing::ReadText(folder_ / "a.txt"), "");
  EXPECT_TRUE(ScEng::WriteWholeFile(folder_.Path(), "text").IsError());
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.txt"}));
}

TEST_F(ImageFileWrite, RelativeNamesStandInTheWorkingFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  Write(*image_, "a.exr", SampleType::kFloat);
  EXPECT_EQ(GetSamples(*Read("a.exr")), GetSamples(*image_));
  std::filesystem::current_path(before);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr"}));
}

TEST(ImageFileNames, SampleTypesHaveWords) {
  EXPECT_STREQ(ScEng::GetName(SampleType::kHalf), "half");
  EXPECT_EQ(ScEng::FindSampleType("float"), SampleType::kFloat);
  EXPECT_EQ(ScEng::FindSampleType("uint16"), SampleType::kUint16);
  EXPECT_EQ(ScEng::FindSampleType("uint8"), SampleType::kUint8);
  EXPECT_EQ(ScEng::FindSampleType("double"), std::nullopt);
  EXPECT_EQ(ScEng::FindSampleType(""), std::nullopt);
}

TEST(ImageFileNames, BackslashesAreSeparators) {
  EXPECT_EQ(ScEng::MakePath("input\\sub\\a.png", "/data"), "/data/input/sub/a.png");
  EXPECT_EQ(ScEng::MakePath("a.png"), "a.png");
  EXPECT_EQ(ScEng::MakePath("/b/a.png", "/data"), "/b/a.png");
}

TEST(ImageFileNames, AFileThatIsReadMayHaveABackslashInItsName) {
  const TemporaryFolder folder;
  EXPECT_EQ(ScEng::MakeReadPath("a\\b.png", folder.Path()), folder.Path() / "a/b.png");
  ASSERT_FALSE(ScEng::WriteWholeFile(folder.Path() / "a\\b.png", "x").IsError());
  EXPECT_EQ(ScEng::MakeReadPath("a\\b.png", folder.Path()), folder.Path() / "a\\b.png");
  EXPECT_EQ(ScEng::MakePath("a\\b.png", folder.Path()), folder.Path() / "a/b.png");
}

TEST(ImageFileNames, PlacesAreTriedWithoutATrace) {
  const TemporaryFolder folder;
  EXPECT_EQ(ScEng::TryPlace(folder.Path() / "a.json"), "");
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
  EXPECT_TRUE(Contains(ScEng::TryPlace(folder.Path() / "no" / "a.json"), "does not exist"));
  EXPECT_NE(ScEng::TryPlace("/proc/a.json"), "");
}

TEST(ImageFileNames, EndingsAndCompressionsAreKnownAhead) {
  EXPECT_EQ(ScEng::FindEndingProblem("a.PNG"), "");
  EXPECT_TRUE(Contains(ScEng::FindEndingProblem("a.pgn"), "\".png\""));
  EXPECT_EQ(ScEng::FindCompressionProblem("a.png", "zap"), "PNG has the compressions zip and none, not \"zap\"");
  for (const char* file : {"a.png", "a.exr", "a.tif", "a.xyz"}) {
    EXPECT_EQ(ScEng::FindCompressionProblem(file, ""), "") << file;
    EXPECT_EQ(ScEng::FindCompressionProblem(file, "zip"), "") << file;
  }
}

}  // namespace
