// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/FileWatch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::FileWatch;
using ScEng::FileWork;

class FileWatchTest : public testing::Test {
 protected:
  void Write(const std::filesystem::path& file) const {
    std::vector<std::string> notes;
    EXPECT_FALSE(ScEng::WriteImageFile(*image_, file, {}, notes).IsError());
  }
  static void Read(const std::filesystem::path& file) {
    ScEng::Status status;
    std::vector<std::string> notes;
    static_cast<void>(ScEng::ReadImageFile(file, {}, status, notes));
  }
  FileWatch::Listener Collect() {
    return [this](const FileWatch::Event& event) { events_.push_back(event); };
  }

  Testing::TemporaryFolder folder_;
  std::filesystem::path file_ = folder_.Path() / "a.exr";
  /// 12 samples.
  ImagePtr image_ = ScEng::MakeRef<Image>(4, 3, ColorMode::kValue, nullptr);
  std::vector<FileWatch::Event> events_;
};

TEST_F(FileWatchTest, TellsTheStagesOfWritingAndReadingInOrder) {
  std::fill_n(image_->GetArray(), image_->GetNumSamples(), 0.5F);
  const auto before = FileWatch::Clock::now();
  {
    const FileWatch watch(Collect());
    Write(file_);
    Read(file_);
  }
  const auto after = FileWatch::Clock::now();
  ASSERT_EQ(events_.size(), 4U);
  const FileWork stages[] = {FileWork::kEncode, FileWork::kSave, FileWork::kOpen, FileWork::kDecode};
  const std::size_t samples[] = {12 * sizeof(float), 0, 0, 12 * sizeof(float)};
  const std::uintmax_t size = std::filesystem::file_size(file_);
  const std::uintmax_t sizes[] = {0, size, size, size};
  auto last = before;
  for (std::size_t i = 0; i < events_.size(); ++i) {
    EXPECT_EQ(events_[i].work, stages[i]);
    EXPECT_EQ(events_[i].file, file_);
    EXPECT_EQ(events_[i].sample_bytes, samples[i]);
    EXPECT_EQ(events_[i].file_bytes, sizes[i]);
    EXPECT_LE(last, events_[i].begin);
    EXPECT_LE(events_[i].begin, events_[i].end);
    last = events_[i].end;
  }
  EXPECT_LE(last, after);
}

TEST_F(FileWatchTest, AStageThatFailsIsNotTold) {
  const FileWatch watch(Collect());
  Read(folder_.Path() / "missing.exr");
  EXPECT_TRUE(events_.empty());
}

TEST_F(FileWatchTest, AllWatchesOfTheThreadAreTold) {
  std::fill_n(image_->GetArray(), image_->GetNumSamples(), 0.5F);
  std::size_t inner = 0;
  const FileWatch watch(Collect());
  {
    const FileWatch nested([&](const FileWatch::Event&) { ++inner; });
    Write(file_);
  }
  EXPECT_EQ(inner, 2U);
  EXPECT_EQ(events_.size(), 2U);
  std::thread([&] { Write(file_); }).join();
  EXPECT_EQ(events_.size(), 2U);
  Write(file_);
  EXPECT_EQ(events_.size(), 4U);
  EXPECT_EQ(inner, 2U);
}

}  // namespace
