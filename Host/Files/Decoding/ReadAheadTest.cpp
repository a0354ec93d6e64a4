// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/ReadAhead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Host/Files/DecodeOptions.h"
#include "Host/Files/Decoding/DecoderTesting.h"
#include "Host/Files/ImageFile.h"
#include "Host/Image/ColorMode.h"
#include "Tests/Support/Folders.h"

namespace {

using namespace ScEng;
using namespace Testing;

/// A file with one row of `size` equal values.
std::filesystem::path WriteValue(const std::filesystem::path& file, float value, int size = 3) {
  auto image = MakeRef<Image>(ImageHeader::Fresh(size, 1, ColorMode::kValue), nullptr);
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) image->GetArray()[i] = value;
  std::vector<std::string> notes;
  const Status status = WriteImageFile(*image, file, {}, notes);
  EXPECT_FALSE(status.IsError()) << status.GetMessage();
  return file;
}

/// The first sample of a file; its error where it has none.
std::string ReadFirst(const std::filesystem::path& file) {
  Status status;
  std::vector<std::string> notes;
  const ImagePtr image = ReadImageFile(file, {}, status, notes);
  return image ? std::to_string(image->GetConstArray()[0]) : status.GetMessage();
}

/// Files that have just been written may change without a trace in their times.
void LetSettle() { std::this_thread::sleep_for(std::chrono::milliseconds(150)); }

class ReadAheadTest : public testing::Test {
 protected:
  void SetUp() override { EndIdleHelpers(); }
  void TearDown() override { EndIdleHelpers(); }

  static std::unique_ptr<FileOpening> Take(const std::filesystem::path& file) {
    return ReadAhead::Get().Take(*FindCodecRow("png"), file, "png");
  }

  TemporaryFolder folder_;
};

TEST_F(ReadAheadTest, BeginsAsManyFilesAsWereAskedFor) {
  std::vector<std::filesystem::path> files;
  for (int i = 0; i < 4; ++i) files.push_back(WriteValue(folder_ / (std::to_string(i) + ".png"), 0.0F));
  LetSettle();
  ExpectImageFiles(files, 1);
  EXPECT_EQ(ReadFirst(files[0]), "0.000000");
  EXPECT_EQ(Take(files[2]), nullptr);
  const auto begun = Take(files[1]);
  ASSERT_NE(begun, nullptr);
  Status status;
  const auto decoder = begun->Finish(status);
  ASSERT_NE(decoder, nullptr) << status.GetMessage();
  EXPECT_EQ(decoder->GetDescription().parts.front().size_x, 3);
}

TEST_F(ReadAheadTest, AFileThatWasBegunGivesWhatItHolds) {
  const auto first = WriteValue(folder_ / "a.png", 0.0F);
  const auto second = WriteValue(folder_ / "b.png", 1.0F);
  // Too large to come along with its description.
  const auto third = WriteValue(folder_ / "c.png", 1.0F, 30000);
  LetSettle();
  ExpectImageFiles({first, second, third}, 1);
  EXPECT_EQ(ReadFirst(first), "0.000000");
  EXPECT_EQ(ReadFirst(second), "1.000000");
  EXPECT_EQ(ReadFirst(third), "1.000000");
  EXPECT_EQ(ListChildren().size(), 1U);
}

TEST_F(ReadAheadTest, AFileThatChangesIsReadAnew) {
  const auto first = WriteValue(folder_ / "a.png", 0.0F);
  for (const bool in_place : {false, true}) {
    SCOPED_TRACE(in_place);
    const auto second = WriteValue(folder_ / "b.png", 0.0F);
    const auto other = WriteValue(folder_ / "other.png", 1.0F);
    LetSettle();
    ExpectImageFiles({first, second}, 1);
    EXPECT_EQ(ReadFirst(first), "0.000000");
    if (in_place) {
      std::ofstream(second, std::ios::binary) << std::ifstream(other, std::ios::binary).rdbuf();
    } else {
      std::filesystem::rename(other, second);
    }
    EXPECT_EQ(ReadFirst(second), "1.000000");
  }
}

TEST_F(ReadAheadTest, AFileThatHasJustBeenWrittenIsNotBegun) {
  const auto first = WriteValue(folder_ / "a.png", 0.0F);
  const auto second = WriteValue(folder_ / "b.png", 1.0F);
  LetSettle();
  // As if it had been written this very moment, however long the rest takes.
  std::filesystem::last_write_time(second, std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
  ExpectImageFiles({first, second}, 1);
  EXPECT_EQ(ReadFirst(first), "0.000000");
  EXPECT_EQ(Take(second), nullptr);
}

TEST_F(ReadAheadTest, FilesThatAreMissingOrDamagedAreErrorsOfTheirOwn) {
  const auto first = WriteValue(folder_ / "a.png", 0.0F);
  const auto damaged = WriteValue(folder_ / "b.png", 0.0F);
  std::filesystem::resize_file(damaged, 60);
  const auto last = WriteValue(folder_ / "d.png", 1.0F);
  LetSettle();
  const std::string alone = ReadFirst(damaged);
  ASSERT_NE(alone, "0.000000");
  ExpectImageFiles({first, damaged, folder_ / "missing.png", last}, 2);
  EXPECT_EQ(ReadFirst(first), "0.000000");
  EXPECT_EQ(ReadFirst(damaged), alone);
  EXPECT_NE(ReadFirst(folder_ / "missing.png").find("there is no such file"), std::string::npos);
  EXPECT_EQ(ReadFirst(last), "1.000000");
}

TEST_F(ReadAheadTest, FilesThatAreNotReadAfterAllEndWithTheExpectation) {
  const auto first = WriteValue(folder_ / "a.png", 0.0F);
  const auto second = WriteValue(folder_ / "b.png", 1.0F);
  LetSettle();
  ExpectImageFiles({first, second}, 1);
  EXPECT_EQ(ReadFirst(first), "0.000000");
  ExpectImageFiles({}, 0);
  EXPECT_EQ(Take(second), nullptr);
  EXPECT_EQ(ListChildren().size(), 0U);
  EXPECT_EQ(ReadFirst(second), "1.000000");
}

TEST_F(ReadAheadTest, SeveralThreadsReadFromOneQueue) {
  constexpr std::size_t kFiles = 120;
  std::vector<std::filesystem::path> files;
  for (std::size_t i = 0; i < kFiles; ++i) {
    files.push_back(WriteValue(folder_ / (std::to_string(i) + ".png"), i % 3 == 0 ? 1.0F : 0.0F));
  }
  LetSettle();
  ExpectImageFiles(files, 3);
  std::atomic<std::size_t> next{0};
  std::atomic<int> wrong{0};
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (std::size_t i = next++; i < kFiles; i = next++) {
        if (ReadFirst(files[i]) != (i % 3 == 0 ? "1.000000" : "0.000000")) ++wrong;
      }
    });
  }
  threads.clear();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
