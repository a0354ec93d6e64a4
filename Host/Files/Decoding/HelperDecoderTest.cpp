// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/HelperDecoder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <atomic>
#include <ostream>
#include <thread>

#include "Host/Files/Decoding/DecoderTesting.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/EvaluationScope.h"
#include "Tests/Support/Folders.h"

namespace {

using namespace ScEng;
using namespace Testing;

std::unique_ptr<HelperDecoder> Open(const std::filesystem::path& file) {
  Status status;
  auto decoder = OpenInHelper(kFaulty, file, "faulty", status);
  EXPECT_NE(decoder, nullptr) << status.GetMessage();
  return decoder;
}

/// The picture of three columns, two rows and two channels.
const std::vector<float> kSmall = {0, 0.25F, 1, 1.25F, 2, 2.25F, 1000, 1000.25F, 1001, 1001.25F, 1002, 1002.25F};

/// Begins without processes of other tests.
class HelperDecoderTest : public testing::Test {
 protected:
  void SetUp() override { EndIdleHelpers(); }
};

void ExpectNextFileWorks(const TemporaryFolder& folder) {
  const auto decoder = Open(WritePicture(folder / "next", ""));
  ASSERT_NE(decoder, nullptr);
  std::string error;
  EXPECT_EQ(ReadAll(*decoder, error), kSmall);
  EXPECT_EQ(error, "");
}

TEST_F(HelperDecoderTest, GivesDescriptionAndSamples) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", ""));
  ASSERT_NE(decoder, nullptr);
  ASSERT_EQ(decoder->GetDescription().parts.size(), 1U);
  const FilePart& part = decoder->GetDescription().parts[0];
  EXPECT_EQ(decoder->GetDescription().format, "faulty");
  EXPECT_EQ(part.size_x, 3);
  EXPECT_EQ(part.size_y, 2);
  ASSERT_EQ(part.channels.size(), 2U);
  EXPECT_EQ(part.channels[1].name, "c1");
  std::string error;
  EXPECT_EQ(ReadAll(*decoder, error), kSmall);
}

/// The samples of a small picture come along with its description, those of a large one on request.
constexpr const char* kSizes[] = {"10 10 3", "200 100 3"};

class HelperDecoderOfSize : public HelperDecoderTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(FewAndManySamples, HelperDecoderOfSize, testing::ValuesIn(kSizes));

TEST_P(HelperDecoderOfSize, ReadsRectanglesAndChannelsIntoStrides) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "", GetParam()));
  ASSERT_NE(decoder, nullptr);
  ReadRequest request;
  request.channels = {2, 0};
  request.column_begin = 4;
  request.column_end = 6;
  request.row_begin = 7;
  request.row_end = 9;
  std::vector<float> samples(16, -1.0F);
  ASSERT_FALSE(decoder->Read(request, {samples.data() + 1, 3, 8}).IsError());
  const std::vector<float> expected = {-1, 7004.5F, 7004, -1, 7005.5F, 7005, -1, -1,
                                       -1, 8004.5F, 8004, -1, 8005.5F, 8005, -1, -1};
  EXPECT_EQ(samples, expected);
}

TEST_F(HelperDecoderTest, ReadsLargeImagesThroughSharedMemory) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "", "300 200 4"));
  ASSERT_NE(decoder, nullptr);
  std::string error;
  const std::vector<float> samples = ReadAll(*decoder, error);
  ASSERT_EQ(error, "");
  for (std::size_t y = 0; y < 200; ++y) {
    for (std::size_t x = 0; x < 300; ++x) {
      for (std::size_t c = 0; c < 4; ++c) {
        const auto expected = static_cast<float>(1000 * y + x) + 0.25F * static_cast<float>(c);
        ASSERT_EQ(samples[(y * 300 + x) * 4 + c], expected) << x << ", " << y << ", " << c;
      }
    }
  }
}

TEST_F(HelperDecoderTest, DecodesIntoSharedSamplesInPlace) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", ""));
  ASSERT_NE(decoder, nullptr);
  SharedSamples memory(20 * sizeof(float));
  const Status read = decoder->Read(WholeOf(decoder->GetDescription().parts[0]), memory, {1, 3, 10});
  ASSERT_FALSE(read.IsError()) << read.GetMessage();
  const std::vector<float> expected = {0, 0,    0.25F,    0, 1,    1.25F,    0, 2,    2.25F,    0,
                                       0, 1000, 1000.25F, 0, 1001, 1001.25F, 0, 1002, 1002.25F, 0};
  EXPECT_EQ(std::vector<float>(memory.GetSamples(), memory.GetSamples() + 20), expected);
}

TEST_F(HelperDecoderTest, RefusesStridesThatLeadOutOfTheMemory) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", ""));
  ASSERT_NE(decoder, nullptr);
  const ReadRequest request = WholeOf(decoder->GetDescription().parts[0]);
  SharedSamples memory(12 * sizeof(float));
  EXPECT_FALSE(decoder->Read(request, memory, {0, 2, 6}).IsError());
  EXPECT_EQ(decoder->Read(request, memory, {1, 2, 6}).GetMessage(), "the memory for its samples is too small");
  EXPECT_TRUE(decoder->Read(request, memory, {SIZE_MAX, 2, 6}).IsError());
  EXPECT_TRUE(decoder->Read(request, memory, {0, 2, SIZE_MAX}).IsError());
}

TEST_F(HelperDecoderTest, RefusesWhatTheFileDoesNotHave) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", ""));
  ASSERT_NE(decoder, nullptr);
  std::vector<float> samples(100);
  const ReadTarget target{samples.data(), 2, 6};
  ReadRequest request = WholeOf(decoder->GetDescription().parts[0]);
  request.part = 1;
  EXPECT_EQ(decoder->Read(request, target).GetMessage(), "it has no such part");
  request.part = 0;
  request.channels = {0, 2};
  EXPECT_EQ(decoder->Read(request, target).GetMessage(), "it has no such channel");
  request.channels = {0, 1};
  request.row_end = 3;
  EXPECT_EQ(decoder->Read(request, target).GetMessage(), "it has no such rows and columns");
  request.row_end = 2;
  request.column_begin = -1;
  EXPECT_EQ(decoder->Read(request, target).GetMessage(), "it has no such rows and columns");
}

TEST_F(HelperDecoderTest, KeepsItsProcessBetweenFiles) {
  const TemporaryFolder folder;
  ExpectNextFileWorks(folder);
  const auto before = ListChildren();
  ExpectNextFileWorks(folder);
  const auto after = ListChildren();
  ASSERT_EQ(before.size(), 1U);
  ASSERT_EQ(after.size(), 1U);
  EXPECT_EQ(before[0].id, after[0].id);
}

TEST_F(HelperDecoderTest, PassesOnWhatTheCodecSays) {
  const TemporaryFolder folder;
  std::ofstream(folder / "text") << "something else";
  EXPECT_EQ(OpenError(folder / "text"), "it is no picture");
  EXPECT_EQ(OpenError(folder / "missing"), "it is no picture");
  EXPECT_EQ(OpenError(WritePicture(folder / "bent", "throw")), "it is?bent");
  const auto decoder = Open(WritePicture(folder / "short", "read error"));
  ASSERT_NE(decoder, nullptr);
  std::string error;
  ReadAll(*decoder, error);
  EXPECT_EQ(error, "the file is shortened");
}

TEST_F(HelperDecoderTest, SaysWhyItCannotBeStarted) {
  const TemporaryFolder folder;
  const CodecRow missing{"missing", "HostCodecMissing", "libmissing1"};
  Status status;
  EXPECT_EQ(OpenInHelper(missing, WritePicture(folder / "a", ""), "", status), nullptr);
  const std::string start = "its decoder could not be started: the module of the codec \"missing\" cannot be loaded: ";
  EXPECT_EQ(status.GetMessage().substr(0, start.size()), start);
  EXPECT_NE(status.GetMessage().find("libmissing1"), std::string::npos);
  EXPECT_TRUE(ListChildren().empty());
}

TEST_F(HelperDecoderTest, ReportsHowItIsSetUp) {
  const HelperReport report = CheckHelper(kFaulty);
  EXPECT_EQ(report.problem, "");
  EXPECT_EQ(report.program.filename(), "value-decoder");
  EXPECT_TRUE(std::filesystem::exists(report.program));
  EXPECT_TRUE(report.is_confined);
  EXPECT_EQ(ListChildren().size(), 1U);
  EXPECT_NE(CheckHelper({"missing", "HostCodecMissing", ""}).problem, "");
}

TEST_F(HelperDecoderTest, GivesAnInnocentFileASecondProcess) {
  const TemporaryFolder folder;
  // An answer too many stays behind, as if this file had been one that takes over its process.
  { EXPECT_NE(Open(WritePicture(folder / "a", "late-nonsense")), nullptr); }
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  ExpectNextFileWorks(folder);
}

/// What happens in the process, and the error that it is.
struct Fault {
  const char* words;
  const char* error;
};

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.words; }

class FaultyFile : public HelperDecoderTest, public testing::WithParamInterface<Fault> {};

TEST_P(FaultyFile, IsAnErrorAndTheNextOneIsRead) {
  const LimitsForTest limits({.time = std::chrono::milliseconds(1000),
                              .most_memory = std::uint64_t{1} << 30,
                              .memory = std::uint64_t{192} << 20});
  const TemporaryFolder folder;
  ExpectNextFileWorks(folder);
  const std::size_t open_files = CountOpenFiles();

  for (const char* size : kSizes) {
    const std::filesystem::path file = WritePicture(folder / "faulty", GetParam().words, size);
    Status status;
    auto decoder = OpenInHelper(kFaulty, file, "faulty", status);
    std::string error = status.GetMessage();
    if (decoder != nullptr) {
      ReadAll(*decoder, error);
      decoder.reset();
    }
    EXPECT_EQ(error, GetParam().error) << size;
  }
  ExpectNextFileWorks(folder);
  EXPECT_EQ(CountOpenFiles(), open_files);
  const auto children = ListChildren();
  ASSERT_EQ(children.size(), 1U);
  EXPECT_NE(children[0].state, 'Z');
}

constexpr const char* kNonsense = "its decoder gave an answer that makes no sense";
constexpr const char* kSlow = "decoding took longer than 1 s; --in-process reads it without limits";
constexpr const char* kStopped = "its decoder was stopped because it tried what reading a file never needs";

INSTANTIATE_TEST_SUITE_P(
    All, FaultyFile,
    testing::Values(Fault{"exit", "its decoder ended without an answer (exit code 3)"}, Fault{"spin", kSlow},
                    Fault{"read spin", kSlow}, Fault{"sleep", kSlow}, Fault{"read sleep", kSlow},
                    Fault{"flood-answers", "its decoder answered far more than it was asked for"},
                    Fault{"flood-questions", kNonsense}, Fault{"nonsense", kNonsense}, Fault{"wrong-body", kNonsense},
                    Fault{"wrong-samples", kNonsense}, Fault{"wrong-mark", kNonsense},
                    Fault{"wrong-question", kNonsense}, Fault{"read long-done", kNonsense},
                    Fault{"read wrong-body", kNonsense}, Fault{"negative-size", kNonsense},
                    Fault{"opacity-elsewhere", kNonsense}, Fault{"exec", kStopped}, Fault{"ptrace", kStopped},
                    Fault{"read exec", kStopped},
                    Fault{"huge-description", "what it says beside its samples takes more than 64 MiB"}));

// The sanitizer turns these signals into an exit of its own and has memory of its own.
#if !defined(__SANITIZE_ADDRESS__)
INSTANTIATE_TEST_SUITE_P(Plain, FaultyFile,
                         testing::Values(Fault{"segfault", "its decoder crashed (signal 11)"},
                                         Fault{"null", "its decoder crashed (signal 11)"},
                                         Fault{"read null", "its decoder crashed (signal 11)"},
                                         Fault{"abort", "its decoder crashed (signal 6)"},
                                         Fault{"throw-in-thread", "its decoder crashed (signal 6)"},
                                         Fault{"flood-memory",
                                               "it needs more memory than such a file should (limit 192 MiB); "
                                               "--in-process reads it without limits"},
                                         Fault{"read flood-memory",
                                               "it needs more memory than such a file should (limit 192 MiB); "
                                               "--in-process reads it without limits"}));
#endif

TEST_F(HelperDecoderTest, EndsAProcessThatClosesItsSocket) {
  const LimitsForTest limits({.time = std::chrono::milliseconds(1000)});
  const TemporaryFolder folder;
  // The system keeps the socket open while a thread of the process waits at it, which is a matter of moments.
  const std::string error = OpenError(WritePicture(folder / "a", "close-sockets"));
  EXPECT_TRUE(error == kSlow || error == "its decoder ended without an answer") << error;
  ExpectNextFileWorks(folder);
}

TEST_F(HelperDecoderTest, TakesADoneWithoutSamplesForNonsense) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "read early-done", kSizes[1]));
  ASSERT_NE(decoder, nullptr);
  ReadRequest request = WholeOf(decoder->GetDescription().parts[0]);
  request.row_end = 1;
  std::vector<float> samples(600);
  EXPECT_EQ(decoder->Read(request, {samples.data(), 3, 600}).GetMessage(), kNonsense);
  ExpectNextFileWorks(folder);
}

TEST_F(HelperDecoderTest, ShowsOddNamesAsPlainText) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "odd-names"));
  ASSERT_NE(decoder, nullptr);
  ASSERT_EQ(decoder->GetDescription().notes.size(), 1U);
  EXPECT_EQ(decoder->GetDescription().notes[0], "one?[31mtwo?three?");
}

TEST_F(HelperDecoderTest, CarriesLargeProfiles) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "large-description"));
  ASSERT_NE(decoder, nullptr);
  EXPECT_EQ(decoder->GetDescription().parts[0].metadata.icc, std::vector<std::uint8_t>(20U << 20, 7));
}

TEST_F(HelperDecoderTest, ReplacesAProcessThatWasKilledBetweenFiles) {
  const TemporaryFolder folder;
  ExpectNextFileWorks(folder);
  const auto children = ListChildren();
  ASSERT_EQ(children.size(), 1U);
  ASSERT_EQ(kill(children[0].id, SIGKILL), 0);
  ASSERT_TRUE(Becomes([] { return ListChildren()[0].state == 'Z'; }));
  ExpectNextFileWorks(folder);
  const auto after = ListChildren();
  ASSERT_EQ(after.size(), 1U);
  EXPECT_NE(after[0].id, children[0].id);
}

TEST_F(HelperDecoderTest, ReadsFewSamplesWithTheDescription) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", ""));
  ASSERT_NE(decoder, nullptr);
  ASSERT_EQ(kill(ListChildren()[0].id, SIGKILL), 0);
  std::string error;
  EXPECT_EQ(ReadAll(*decoder, error), kSmall);
  EXPECT_EQ(error, "");
  // They are no answer to a question for other numbers.
  ReadRequest request = WholeOf(decoder->GetDescription().parts[0]);
  request.scale = SampleScale::kStored;
  std::vector<float> samples(12);
  EXPECT_TRUE(decoder->Read(request, {samples.data(), 2, 6}).IsError());
}

TEST_F(HelperDecoderTest, SaysThatAProcessWasKilledBetweenQuestions) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "", kSizes[1]));
  ASSERT_NE(decoder, nullptr);
  ASSERT_EQ(kill(ListChildren()[0].id, SIGKILL), 0);
  std::string error;
  ReadAll(*decoder, error);
  EXPECT_EQ(error, "its decoder was killed (signal 9), perhaps because the system ran out of memory");
  ReadAll(*decoder, error);
  EXPECT_EQ(error, "its decoder has ended");
  ExpectNextFileWorks(folder);
}

TEST_F(HelperDecoderTest, ServesManyThreadsAtOnce) {
  const TemporaryFolder folder;
  WritePicture(folder / "good", "");
  WritePicture(folder / "bad", "exit");
  constexpr int kThreads = 6;
  constexpr int kFiles = 20;
  std::atomic<int> good{0};
  std::atomic<int> bad{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < kFiles; ++j) {
        Status status;
        const auto decoder = OpenInHelper(kFaulty, folder / ((i + j) % 5 == 0 ? "bad" : "good"), "faulty", status);
        std::string error;
        if (decoder == nullptr) {
          bad += status.GetMessage() == "its decoder ended without an answer (exit code 3)" ? 1 : 0;
        } else {
          good += ReadAll(*decoder, error) == kSmall ? 1 : 0;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, kThreads * kFiles * 4 / 5);
  EXPECT_EQ(bad, kThreads * kFiles / 5);
  EXPECT_LE(ListChildren().size(), static_cast<std::size_t>(kThreads));
}

TEST_F(HelperDecoderTest, OutlivesTheThreadThatStartedIt) {
  const TemporaryFolder folder;
  std::thread([&] { ExpectNextFileWorks(folder); }).join();
  const auto before = ListChildren();
  ASSERT_EQ(before.size(), 1U);
  ExpectNextFileWorks(folder);
  EXPECT_EQ(ListChildren()[0].id, before[0].id);
}

TEST_F(HelperDecoderTest, ReadsWhereThisProcessMayWriteNoFiles) {
  const TemporaryFolder folder;
  const auto decoder = Open(WritePicture(folder / "a", "", "300 200 2"));
  ASSERT_NE(decoder, nullptr);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, SIG_IGN);
  const rlimit small{1024, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  std::string error;
  const std::vector<float> samples = ReadAll(*decoder, error);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(error, "");
  EXPECT_EQ(samples.back(), 199299.25F);
}

TEST_F(HelperDecoderTest, EndsWithTheProgramEvenInTheMiddleOfAFile) {
  const TemporaryFolder folder;
  WritePicture(folder / "slow", "spin");
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t program = fork();
  if (program == 0) {
    // The process that decodes is found by its parent from outside; this one waits for an answer that does not come.
    std::thread([&] {
      for (;;) {
        const auto children = ListChildren();
        if (!children.empty() && write(ends[1], &children[0].id, sizeof children[0].id) > 0) return;
      }
    }).detach();
    OpenError(folder / "slow");
    _exit(0);
  }
  close(ends[1]);
  pid_t decoder = 0;
  ASSERT_EQ(read(ends[0], &decoder, sizeof decoder), static_cast<ssize_t>(sizeof decoder));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_EQ(kill(decoder, 0), 0);
  kill(program, SIGKILL);
  waitpid(program, nullptr, 0);
  EXPECT_TRUE(Becomes([&] {
    std::ifstream stream("/proc/" + std::to_string(decoder) + "/stat");
    const std::string line((std::istreambuf_iterator<char>(stream)), {});
    return line.empty() || line.find(") Z") != std::string::npos;
  }));
  close(ends[0]);
}

/// Runs a function for an evaluation that another thread stops.
void ExpectStopped(const std::function<void()>& function) {
  Cancellation cancellation;
  const EvaluationScope scope(&cancellation);
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    cancellation.Request();
  });
  EXPECT_THROW(function(), Canceled);
  other.join();
  // What was being decoded is of no use to anybody.
  EXPECT_TRUE(ListChildren().empty());
}

TEST_F(HelperDecoderTest, EndsWithTheEvaluationThatOpensAFile) {
  const TemporaryFolder folder;
  WritePicture(folder / "a", "sleep");
  ExpectStopped([&] { OpenError(folder / "a"); });
  ExpectNextFileWorks(folder);
}

TEST_F(HelperDecoderTest, EndsWithTheEvaluationThatReadsSamples) {
  const TemporaryFolder folder;
  auto decoder = Open(WritePicture(folder / "a", "read sleep", "200 100 3"));
  ASSERT_NE(decoder, nullptr);
  std::string error;
  ExpectStopped([&] { ReadAll(*decoder, error); });
  decoder.reset();
  ExpectNextFileWorks(folder);
}

}  // namespace
