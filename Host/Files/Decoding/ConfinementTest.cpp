// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Host/Files/Decoding/DecoderTesting.h"
#include "Tests/Support/Folders.h"

namespace {

using namespace ScEng;
using namespace Testing;

/// A folder with a picture in `inner`, and files beside, below and above it.
class ConfinedDecoder : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(folder_ / "inner/below");
    std::ofstream(folder_ / "above") << "above";
    std::ofstream(folder_ / "inner/sidecar") << "beside";
    std::ofstream(folder_ / "inner/below/sidecar") << "below";
    std::filesystem::create_symlink(folder_ / "above", folder_ / "inner/link-out");
    mkfifo((folder_ / "inner/pipe").c_str(), 0600);
  }

  /// What became of an attempt in the process that decodes.
  std::string Try(const std::string& what) {
    WritePicture(folder_ / "inner/picture", what);
    return TryWith(folder_ / "inner/picture", what);
  }

  static std::string TryWith(const std::filesystem::path& file, const std::string& what) {
    Status status;
    const auto decoder = OpenInHelper(kFaulty, file, "faulty", status);
    if (decoder == nullptr) return status.GetMessage();
    EXPECT_TRUE(decoder->IsConfined());
    const std::string start = what + ": ";
    const std::string note = decoder->GetDescription().notes.at(0);
    EXPECT_EQ(note.substr(0, start.size()), start);
    return note.substr(start.size());
  }

  TemporaryFolder folder_;
};

constexpr const char* kDenied = "Permission denied";
constexpr const char* kForbidden = "Operation not permitted";

TEST_F(ConfinedDecoder, ReadsNothingOutsideTheFolder) {
  EXPECT_EQ(Try("passwd"), kDenied);
  EXPECT_EQ(Try("passwd-status"), "No such file or directory");
  EXPECT_EQ(Try("memory-of-program"), kDenied);
  EXPECT_EQ(Try("above"), kDenied);
  EXPECT_EQ(Try("link-out"), kDenied);
}

TEST_F(ConfinedDecoder, ReadsTheFileAndItsFolder) {
  EXPECT_EQ(Try("own-status"), "25");
  EXPECT_EQ(Try("sidecar"), "beside");
  EXPECT_EQ(Try("below"), "below");
  EXPECT_EQ(Try("missing"), "No such file or directory");
  EXPECT_EQ(Try("list"), "worked");
}

TEST_F(ConfinedDecoder, FindsWhereTheFileLies) {
  const std::string found = Try("canonical");
  EXPECT_EQ(found, std::filesystem::canonical(folder_ / "inner/picture").string());
}

TEST_F(ConfinedDecoder, OpensNoPipes) { EXPECT_EQ(Try("pipe"), kDenied); }

TEST_F(ConfinedDecoder, ChangesNoFiles) {
  EXPECT_EQ(Try("write"), kDenied);
  EXPECT_EQ(Try("truncate"), kDenied);
  EXPECT_EQ(Try("delete"), kForbidden);
  EXPECT_EQ(Try("rename"), kForbidden);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "inner/written"));
  EXPECT_EQ(std::filesystem::file_size(folder_ / "inner/picture"), 21U);
}

TEST_F(ConfinedDecoder, ReachesNoNetworkAndNoOtherProcess) {
  EXPECT_EQ(Try("socket"), kForbidden);
  EXPECT_EQ(Try("fork"), kForbidden);
  EXPECT_EQ(Try("kill-parent"), kForbidden);
}

TEST_F(ConfinedDecoder, KeepsItsLimits) { EXPECT_EQ(Try("limit"), kForbidden); }

TEST_F(ConfinedDecoder, GetsNoNewCodeAndNoUncountedMemory) {
  EXPECT_EQ(Try("code"), kForbidden);
  EXPECT_EQ(Try("shared-memory"), kForbidden);
}

TEST_F(ConfinedDecoder, HasThreadsThatOpenFilesAtOnce) {
  EXPECT_EQ(Try("thread"), "worked");
  EXPECT_EQ(Try("threads-open"), "400");
}

TEST_F(ConfinedDecoder, StartsWithoutTheProgramsFilesAndEnvironment) {
  const int leaked = open("/dev/null", O_RDONLY);
  setenv("VALUE_TEST_SECRET", "1", 1);
  // Three that lead nowhere, two sockets, and the picture while it is read.
  EXPECT_EQ(Try("open-files"), "6");
  const std::string names = Try("environment");
  EXPECT_NE(names.find("LC_ALL"), std::string::npos);
  EXPECT_EQ(names.find("VALUE_TEST_SECRET"), std::string::npos);
  EXPECT_EQ(names.find("PATH "), std::string::npos);
  close(leaked);
}

TEST_F(ConfinedDecoder, FollowsALinkToTheFileItself) {
  std::filesystem::create_directories(folder_ / "links");
  WritePicture(folder_ / "inner/picture", "sidecar");
  std::filesystem::create_symlink(folder_ / "inner/picture", folder_ / "links/picture");
  std::ofstream(folder_ / "links/sidecar") << "beside the link";
  EXPECT_EQ(TryWith(folder_ / "links/picture", "sidecar"), "beside the link");
}

TEST_F(ConfinedDecoder, ReadsAFileInMemory) {
  const int memory = memfd_create("picture", MFD_CLOEXEC);
  const std::string text = "picture 3 2 2\npasswd\n";
  ASSERT_EQ(write(memory, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  EXPECT_EQ(TryWith("/proc/self/fd/" + std::to_string(memory), "passwd"), kDenied);
  close(memory);
}

TEST_F(ConfinedDecoder, ReadsAFileOfARelativePath) {
  WritePicture(folder_ / "inner/picture", "sidecar");
  const WorkingFolder working(folder_.Path());
  EXPECT_EQ(TryWith("inner/picture", "sidecar"), "beside");
}

TEST_F(ConfinedDecoder, ReadsAFileBehindDots) {
  WritePicture(folder_ / "inner/picture", "sidecar");
  EXPECT_EQ(TryWith(folder_ / "inner/below/../picture", "sidecar"), "beside");
}

}  // namespace
