// SPDX-License-Identifier: Apache-2.0
// A codec for tests, of files that say what it does: a first line "picture <columns> <rows> <channels>", then one word
// a line, each something that happens when the file is opened, or, after "read", when samples are asked for. Sample c
// of pixel (x, y) is 1000 y + x + c / 4.

#include <arpa/inet.h>
#include <fcntl.h>
#include <malloc.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Decoding/DescriptionBytes.h"
#include "Host/Files/Decoding/Messages.h"

namespace ScEng {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

struct Picture {
  std::filesystem::path file;
  FileDescription description;
  std::vector<std::string> on_read;
};

std::string Outcome(bool worked) { return worked ? "worked" : std::strerror(errno); }

std::string TryOpen(const std::filesystem::path& path, int flags) {
  const int descriptor = open(path.c_str(), flags, 0600);
  const std::string outcome = Outcome(descriptor >= 0);
  if (descriptor >= 0) close(descriptor);
  return outcome;
}

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream stream(path);
  std::string text;
  std::getline(stream, text);
  return text;
}

std::string TryFork() {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  const std::string outcome = Outcome(child > 0);
  if (child > 0) waitpid(child, nullptr, 0);
  return outcome;
}

std::string TryConnect() {
  const int handle = socket(AF_INET, SOCK_STREAM, 0);
  const std::string outcome = Outcome(handle >= 0);
  if (handle >= 0) close(handle);
  return outcome;
}

std::string TryLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_DATA, &limit) != 0) return "unknown";
  limit.rlim_cur = limit.rlim_max;
  return Outcome(setrlimit(RLIMIT_DATA, &limit) == 0);
}

std::string TryMapping(int protection, int flags) {
  void* const memory = mmap(nullptr, kMebibyte, protection, flags, -1, 0);
  const std::string outcome = Outcome(memory != MAP_FAILED);
  if (memory != MAP_FAILED) munmap(memory, kMebibyte);
  return outcome;
}

std::string TryStatus(const std::filesystem::path& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? std::to_string(status.st_size) : std::strerror(errno);
}

std::string TryThread() {
  int answer = 0;
  std::thread([&] { answer = 42; }).join();
  return answer == 42 ? "worked" : "did not run";
}

std::string CountOpenFiles() {
  int count = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) ++count;
  }
  return std::to_string(count);
}

std::string ListEnvironment() {
  std::string names;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    names += text.substr(0, text.find('=')) + " ";
  }
  return names;
}

/// Many threads open files at once.
std::string OpenFromThreads(const std::filesystem::path& file) {
  constexpr int kThreads = 8;
  constexpr int kTimes = 50;
  std::atomic<int> opened{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int j = 0; j < kTimes; ++j) {
        if (ReadText(file).starts_with("picture")) ++opened;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  return std::to_string(opened.load());
}

/// What can be tried, with a remark of how it went.
std::string Try(const std::string& what, const std::filesystem::path& file) {
  const std::filesystem::path folder = file.parent_path();
  if (what == "passwd") return TryOpen("/etc/passwd", O_RDONLY);
  if (what == "passwd-status") return TryStatus("/etc/passwd");
  if (what == "memory-of-program") return TryOpen("/proc/self/mem", O_RDONLY);
  if (what == "write") return TryOpen(folder / "written", O_WRONLY | O_CREAT);
  if (what == "truncate") return TryOpen(file, O_RDWR | O_TRUNC);
  if (what == "delete") return Outcome(unlink(file.c_str()) == 0);
  if (what == "rename") return Outcome(rename(file.c_str(), (folder / "renamed").c_str()) == 0);
  if (what == "socket") return TryConnect();
  if (what == "fork") return TryFork();
  if (what == "limit") return TryLimit();
  if (what == "kill-parent") return Outcome(kill(getppid(), 0) == 0);
  if (what == "code") return TryMapping(PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS);
  if (what == "shared-memory") return TryMapping(PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS);
  if (what == "thread") return TryThread();
  if (what == "own-status") return TryStatus(file);
  if (what == "canonical") return std::filesystem::canonical(file).string();
  if (what == "missing") return TryOpen(folder / "missing", O_RDONLY);
  if (what == "sidecar") return ReadText(folder / "sidecar");
  if (what == "below") return ReadText(folder / "below" / "sidecar");
  if (what == "above") return TryOpen(folder / ".." / "above", O_RDONLY);
  if (what == "link-out") return TryOpen(folder / "link-out", O_RDONLY);
  if (what == "pipe") return TryOpen(folder / "pipe", O_RDONLY | O_NONBLOCK);
  if (what == "list") return TryOpen(folder, O_RDONLY | O_DIRECTORY);
  if (what == "open-files") return CountOpenFiles();
  if (what == "environment") return ListEnvironment();
  if (what == "threads-open") return OpenFromThreads(file);
  return "unknown";
}

[[noreturn]] void FloodMemory() {
  for (;;) {
    constexpr std::size_t kPiece = 16 * kMebibyte;
    auto* const piece = new char[kPiece];
    std::memset(piece, 1, kPiece);
    // Memory that nobody reads may otherwise not be asked for at all.
    asm volatile("" : : "r"(piece) : "memory");
  }
}

void SendRaw(MessageKind kind, const Bytes& body) { static_cast<void>(SendMessage(kControlSocket, kind, body)); }

/// Announces more than is allowed, then sends without end.
void FloodAnswers() {
  MessageHeader header;
  header.kind = MessageKind::kOpened;
  header.body_bytes = std::uint64_t{1} << 40;
  const Bytes bytes(kMebibyte);
  static_cast<void>(SendWithDescriptor(kControlSocket, &header, sizeof header, -1, 0));
  while (SendWithDescriptor(kControlSocket, bytes.data(), bytes.size(), -1, 0) > 0) {
  }
}

void FloodQuestions() {
  FileQuestion question;
  std::strcpy(question.path, "/usr/share");
  while (SendWithDescriptor(kBrokerSocket, &question, offsetof(FileQuestion, path) + 11, -1, 0) > 0) {
  }
}

/// Faults, after which nothing is as it should be.
bool Fail(const std::string& fault, FileDescription& description) {
  static const std::map<std::string, std::function<void()>> faults = {
      {"segfault", [] { raise(SIGSEGV); }},
      {"null",
       [] {
         volatile int* volatile nothing = nullptr;
         *nothing = 1;
       }},
      {"abort", [] { std::abort(); }},
      {"exit", [] { _exit(3); }},
      {"throw", [] { throw std::runtime_error("it is\nbent"); }},
      {"throw-in-thread", [] { std::thread([] { throw std::runtime_error("nobody catches this"); }).join(); }},
      {"spin",
       [] {
         for (std::atomic<int> i{0};; ++i) {
         }
       }},
      {"sleep",
       [] {
         for (;;) sleep(1000);
       }},
      {"flood-memory", FloodMemory},
      {"flood-answers", FloodAnswers},
      {"flood-questions", FloodQuestions},
      {"close-sockets",
       [] {
         close(kControlSocket);
         for (;;) sleep(1000);
       }},
      {"nonsense", [] { SendRaw(static_cast<MessageKind>(77), {}); }},
      {"wrong-body", [] { SendRaw(MessageKind::kOpened, Bytes(100, 0xFF)); }},
      {"wrong-samples",
       [] {
         FileDescription other;
         FilePart& part = other.parts.emplace_back();
         part.size_x = 2;
         part.size_y = 2;
         part.channels.resize(1);
         SendRaw(MessageKind::kOpened, MakeBody(OpenAnswer{ToBytes(other), {1.0F, 2.0F, 3.0F}}));
       }},
      {"wrong-mark",
       [] {
         const Bytes bytes(64, 7);
         static_cast<void>(SendWithDescriptor(kControlSocket, bytes.data(), bytes.size(), -1, 0));
       }},
      {"early-done", [] { SendRaw(MessageKind::kDone, {}); }},
      {"long-done", [] { SendRaw(MessageKind::kDone, Bytes(100)); }},
      {"wrong-question",
       [] {
         const Bytes bytes(5, 7);
         static_cast<void>(SendWithDescriptor(kBrokerSocket, bytes.data(), bytes.size(), -1, 0));
       }},
      {"late-nonsense",
       [] {
         std::thread([] {
           usleep(100'000);
           SendRaw(static_cast<MessageKind>(77), {});
         }).detach();
       }},
      {"exec",
       [] {
         char program[] = "/bin/true";
         char* words[] = {program, nullptr};
         execv(program, words);
       }},
      {"ptrace", [] { ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); }},
  };
  if (fault == "huge-description") {
    description.notes.emplace_back(65 * kMebibyte, 'x');
  } else if (fault == "large-description") {
    description.parts[0].metadata.icc.assign(20 * kMebibyte, 7);
  } else if (fault == "negative-size") {
    description.parts[0].size_x = -5;
  } else if (fault == "opacity-elsewhere") {
    description.parts[0].opacity_channel = 9;
  } else if (fault == "odd-names") {
    description.notes.emplace_back("one\x1b[31mtwo\nthree\xff");
  } else if (const auto found = faults.find(fault); found != faults.end()) {
    found->second();
  } else {
    return false;
  }
  return true;
}

class FaultyDecoder final : public ImageDecoder {
 public:
  explicit FaultyDecoder(Picture picture) : picture_(std::move(picture)) {}
  [[nodiscard]] const FileDescription& GetDescription() const override { return picture_.description; }

  Status Read(const ReadRequest& request, const ReadTarget& target) override {
    for (const std::string& word : picture_.on_read) {
      if (word == "error") return Status::Error("the file is shortened");
      Fail(word, picture_.description);
    }
    for (int row = request.row_begin; row < request.row_end; ++row) {
      for (int column = request.column_begin; column < request.column_end; ++column) {
        float* const pixel = target.samples + static_cast<std::size_t>(row - request.row_begin) * target.row_stride +
                             static_cast<std::size_t>(column - request.column_begin) * target.pixel_stride;
        for (std::size_t i = 0; i < request.channels.size(); ++i) {
          pixel[i] = static_cast<float>(1000 * row + column) + static_cast<float>(request.channels[i]) / 4.0F;
        }
      }
    }
    return {};
  }

 private:
  Picture picture_;
};

class FaultyCodec final : public ImageCodec {
 public:
  [[nodiscard]] std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file, const std::string& format,
                                                   Status& status) const override {
    std::ifstream stream(file);
    std::string word;
    FilePart part;
    std::size_t channels = 0;
    if (!(stream >> word >> part.size_x >> part.size_y >> channels) || word != "picture") {
      status = Status::Error("it is no picture");
      return nullptr;
    }
    for (std::size_t i = 0; i < channels; ++i) part.channels.push_back({"c" + std::to_string(i), {}});
    Picture picture{file, {format, {part}, {}}, {}};
    bool is_on_read = false;
    while (stream >> word) {
      if (word == "read") {
        is_on_read = true;
      } else if (is_on_read) {
        picture.on_read.push_back(word);
      } else if (!Fail(word, picture.description)) {
        const std::string outcome = word + ": " + Try(word, file);
        picture.description.notes.push_back(outcome);
      }
    }
    return std::make_unique<FaultyDecoder>(std::move(picture));
  }

  [[nodiscard]] std::unique_ptr<ImageEncoder> Create(const std::filesystem::path& /*path*/,
                                                     const std::string& /*format*/, const WritePlan& /*plan*/,
                                                     std::vector<std::string>& /*notes*/,
                                                     Status& status) const override {
    status = Status::Error("it writes nothing");
    return nullptr;
  }

  [[nodiscard]] Status CheckCompression(const std::string& /*format*/,
                                        const std::string& /*compression*/) const override {
    return {};
  }
};

}  // namespace
}  // namespace ScEng

extern "C" __attribute__((visibility("default"))) const ScEng::ImageCodec* GetImageCodec() {
  static const ScEng::FaultyCodec codec;
  return &codec;
}
