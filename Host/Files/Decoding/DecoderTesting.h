// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Decoding/HelperDecoder.h"
#include "Host/Files/Decoding/HelperLimits.h"

/// What the tests of decoding in a process of its own share.
namespace Testing {

/// A codec for tests whose files say what goes wrong.
inline constexpr ScEng::CodecRow kFaulty{"faulty", "HostCodecFaulty", ""};

/// Limits for one scope.
class LimitsForTest {
 public:
  explicit LimitsForTest(const ScEng::HelperLimits& limits) { ScEng::SetHelperLimits(limits); }
  ~LimitsForTest() { ScEng::SetHelperLimits({}); }
  LimitsForTest(const LimitsForTest&) = delete;
  LimitsForTest& operator=(const LimitsForTest&) = delete;
};

inline std::filesystem::path WritePicture(const std::filesystem::path& file, const std::string& words,
                                          const std::string& size = "3 2 2") {
  std::ofstream(file) << "picture " << size << "\n" << words << "\n";
  return file;
}

/// The processes that this one has started and that are still there, zombies included: numbers and states.
struct Child {
  pid_t id;
  char state;
};
inline std::vector<Child> ListChildren() {
  std::vector<Child> children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    std::ifstream stream(entry.path() / "stat");
    const std::string line((std::istreambuf_iterator<char>(stream)), {});
    const std::size_t end = line.rfind(") ");
    if (end == std::string::npos) continue;
    const pid_t parent = static_cast<pid_t>(std::strtol(line.c_str() + end + 4, nullptr, 10));
    if (parent == getpid()) children.push_back({static_cast<pid_t>(std::stoi(name)), line[end + 2]});
  }
  return children;
}

inline std::size_t CountOpenFiles() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

/// Waits up to ten seconds until it is so.
inline bool Becomes(const std::function<bool()>& is_so) {
  for (int i = 0; i < 1000; ++i) {
    if (is_so()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

/// The error of opening a picture, empty for none.
inline std::string OpenError(const std::filesystem::path& file) {
  ScEng::Status status;
  const auto decoder = ScEng::OpenInHelper(kFaulty, file, "faulty", status);
  return decoder == nullptr ? status.GetMessage() : "";
}

/// A request for all of a part.
inline ScEng::ReadRequest WholeOf(const ScEng::FilePart& part) {
  ScEng::ReadRequest request;
  for (std::size_t i = 0; i < part.channels.size(); ++i) request.channels.push_back(i);
  request.column_end = part.size_x;
  request.row_end = part.size_y;
  return request;
}

/// The samples of the first part, dense; the error where that fails.
inline std::vector<float> ReadAll(ScEng::ImageDecoder& decoder, std::string& error) {
  const ScEng::FilePart& part = decoder.GetDescription().parts[0];
  const auto row = static_cast<std::size_t>(part.size_x) * part.channels.size();
  std::vector<float> samples(row * static_cast<std::size_t>(part.size_y), -1.0F);
  error = decoder.Read(WholeOf(part), {samples.data(), part.channels.size(), row}).GetMessage();
  return samples;
}

}  // namespace Testing
