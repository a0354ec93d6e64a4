// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/JournalText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <vector>

namespace ScEng {
namespace {

constexpr const char* kFormat = "value-journal";
constexpr int kVersion = 1;
constexpr std::size_t kMostHeadBytes = std::size_t{64} << 10;
constexpr std::size_t kMostBytes = (std::size_t{256} << 20) + kMostHeadBytes;

/// The 64-bit hash of Fowler, Noll and Vo, variant 1a, in hexadecimal digits: enough to notice damage.
std::string MakeChecksum(std::string_view text) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  std::ostringstream digits;
  digits << std::hex << hash;
  return digits.str();
}

/// A path may hold any bytes, and JSON only UTF-8: bytes beyond ASCII are written as %XX, like "%" itself.
std::string EncodePath(const std::filesystem::path& path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char letter : path.string()) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte > ' ' && byte < 127 && letter != '%') {
      encoded += letter;
    } else {
      encoded += {'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
  }
  return encoded;
}

std::filesystem::path DecodePath(const std::string& encoded) {
  std::string path;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    const bool is_escape = encoded[i] == '%' && i + 2 < encoded.size();
    path += is_escape ? static_cast<char>(std::strtol(encoded.substr(i + 1, 2).c_str(), nullptr, 16)) : encoded[i];
    if (is_escape) i += 2;
  }
  return path;
}

std::string ReadSmallFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::array<char, 4096> text{};
  stream.read(text.data(), text.size());
  return {text.data(), static_cast<std::size_t>(stream.gcount())};
}

/// When a process started; empty where there is none, or one that has ended and waits for its parent.
std::string ReadStart(int process) {
  const std::string text = ReadSmallFile("/proc/" + std::to_string(process) + "/stat");
  // The name of the program, in parentheses, may hold anything. The state follows as the third field, and the start as
  // the twenty-second.
  const std::size_t name_end = text.rfind(')');
  if (name_end == std::string::npos) return {};
  std::istringstream fields(text.substr(name_end + 1));
  const std::vector<std::string> words{std::istream_iterator<std::string>(fields),
                                       std::istream_iterator<std::string>()};
  constexpr std::size_t kStart = 22 - 3;
  if (words.size() <= kStart || words[0] == "Z" || words[0] == "X") return {};
  return words[kStart];
}

std::string ReadBoot() {
  std::string boot = ReadSmallFile("/proc/sys/kernel/random/boot_id");
  while (!boot.empty() && boot.back() == '\n') boot.pop_back();
  return boot;
}

std::string ReadMachine() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

}  // namespace

ProcessIdentity GetOwnIdentity() { return {ReadMachine(), ReadBoot(), getpid(), ReadStart(getpid())}; }

bool IsRunning(const ProcessIdentity& identity) {
  if (identity.machine != ReadMachine() || identity.boot != ReadBoot()) return false;
  return !identity.start.empty() && ReadStart(identity.process) == identity.start;
}

std::string MakeJournalText(const JournalHead& head, std::string_view document) {
  const auto since = head.time.time_since_epoch();
  const nlohmann::ordered_json json{
      {"format", kFormat},
      {"version", kVersion},
      {"document", EncodePath(head.document)},
      {"folder", EncodePath(head.folder)},
      {"machine", EncodePath(head.writer.machine)},
      {"boot", head.writer.boot},
      {"process", head.writer.process},
      {"start", head.writer.start},
      {"milliseconds", std::chrono::duration_cast<std::chrono::milliseconds>(since).count()},
      {"bytes", document.size()},
      {"checksum", MakeChecksum(document)}};
  std::string text = json.dump();
  text += '\n';
  text += document;
  return text;
}

Status ParseJournalText(std::string_view text, JournalHead& head, std::string_view& document) {
  const Status damaged = Status::Error("it is no journal, or a damaged one");
  const std::size_t end = text.substr(0, kMostHeadBytes).find('\n');
  if (end == std::string_view::npos) return damaged;
  // A head is flat; whoever nests deeper wants to use up the stack.
  bool is_flat = true;
  const auto check = [&](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
    is_flat = is_flat && depth <= 1;
    return is_flat;
  };
  const std::string_view line = text.substr(0, end);
  const nlohmann::json json = nlohmann::json::parse(line.begin(), line.end(), check, false);
  if (!is_flat || !json.is_object()) return damaged;
  const auto get_text = [&](const char* key) -> std::optional<std::string> {
    const auto found = json.find(key);
    if (found == json.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
  };
  const auto get_number = [&](const char* key) -> std::optional<std::int64_t> {
    const auto found = json.find(key);
    if (found == json.end() || !found->is_number_integer()) return std::nullopt;
    return found->get<std::int64_t>();
  };
  if (get_text("format") != kFormat) return damaged;
  const auto version = get_number("version");
  if (!version) return damaged;
  if (*version != kVersion) {
    return Status::Error("it is of version " + std::to_string(*version) + "; this program reads version " +
                         std::to_string(kVersion));
  }
  document = text.substr(end + 1);
  const auto path = get_text("document");
  const auto folder = get_text("folder");
  const auto process = get_number("process");
  const auto milliseconds = get_number("milliseconds");
  constexpr std::int64_t kLatest = std::int64_t{1} << 43;  // Some centuries from now; more would not fit a time.
  const bool is_whole = path && folder && process && *process > 0 && *process <= INT32_MAX && milliseconds &&
                        *milliseconds >= 0 && *milliseconds < kLatest &&
                        get_number("bytes") == static_cast<std::int64_t>(document.size()) &&
                        get_text("checksum") == MakeChecksum(document);
  if (!is_whole) return damaged;
  head.document = DecodePath(*path);
  head.folder = DecodePath(*folder);
  head.writer = {DecodePath(get_text("machine").value_or("")).string(), get_text("boot").value_or(""),
                 static_cast<int>(*process), get_text("start").value_or("")};
  head.time = std::chrono::system_clock::time_point(std::chrono::milliseconds(*milliseconds));
  return {};
}

Status ReadJournalFile(const std::filesystem::path& file, std::string& text) {
  // What is no regular file, a pipe for example, may never end, or not even open.
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  Status result;
  if (descriptor < 0) return Status::Error("it cannot be opened");
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    result = Status::Error("it is no file");
  } else if (static_cast<std::uint64_t>(status.st_size) > kMostBytes) {
    result = Status::Error("it is larger than " + std::to_string(kMostBytes >> 20U) + " MiB");
  } else {
    text.resize(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < text.size()) {
      const ssize_t count = read(descriptor, text.data() + done, text.size() - done);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) break;
      done += static_cast<std::size_t>(count);
    }
    if (done < text.size()) result = Status::Error("reading it failed");
  }
  close(descriptor);
  return result;
}

}  // namespace ScEng
