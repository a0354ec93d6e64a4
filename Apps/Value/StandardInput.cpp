// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/StandardInput.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "Apps/Value/MemoryBudget.h"
#include "Apps/Value/WriteAll.h"
#include "Host/Files/ImageFile.h"

namespace {

using ScEng::Status;

constexpr const char* kName = "standard input";
constexpr const char* kPath = "/dev/stdin";
/// As long as a document may be.
constexpr std::size_t kLongestDocument = std::size_t{256} << 20U;

/// What is not a file yet has to be kept in memory.
constexpr std::uint64_t kLongestImage = std::uint64_t{4} << 30U;

bool is_taken = false;
bool has_failed = false;

Status MakeError(const std::string& reason) { return Status::Error(std::string(kName) + ": " + reason); }

Status MakeFileError(const std::string& reason) {
  has_failed = true;
  return MakeError(reason);
}

Status MakeSystemError() { return MakeFileError("cannot be read: " + std::generic_category().message(errno)); }

/// For those who read it: an error where there is nothing to read, or where somebody has.
Status Claim() {
  if (is_taken) return MakeError("can be read once only, and \"-\" is given twice");
  if (isatty(STDIN_FILENO) == 1) {
    return MakeError("is a terminal; \"-\" reads what another program writes, or what \"< FILE\" gives");
  }
  is_taken = true;
  return {};
}

/// Hands what there is to read to `take(bytes)` until it answers false.
template <typename Take>
Status ReadAll(Take take) {
  std::array<char, 1U << 16U> buffer;
  for (;;) {
    const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return MakeSystemError();
    if (count == 0 || !take(std::string_view(buffer.data(), static_cast<std::size_t>(count)))) return {};
  }
}

/// Whether standard input is a file that has not been read from, so that it can be read by its path.
bool IsWholeFile() {
  struct stat status {};
  return fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) && lseek(STDIN_FILENO, 0, SEEK_CUR) == 0;
}

/// Puts a file in memory in the place of standard input.
Status Spool() {
  if (IsWholeFile()) return {};
  const std::uint64_t most = std::min(kLongestImage, MemoryBudget::FindDefault());
  std::uint64_t taken = 0;
  const int memory = memfd_create("value-input", MFD_CLOEXEC);
  if (memory < 0) return MakeSystemError();
  bool is_written = true;
  Status status = ReadAll([&](std::string_view bytes) {
    taken += bytes.size();
    is_written = taken <= most && WriteAll(memory, bytes) == 0;
    return is_written;
  });
  if (taken > most) {
    status = MakeFileError("holds more than " + std::to_string(most >> 20U) + " MiB; store it in a file");
  } else if (!status.IsError() && (!is_written || dup2(memory, STDIN_FILENO) < 0))
    status = MakeSystemError();
  close(memory);
  return status;
}

/// The document, read at the first call.
const std::optional<std::string>& GetDocument(Status& status) {
  static std::optional<std::string> text;
  if (text) return text;
  status = Claim();
  if (status.IsError()) return text;
  std::string read;
  status = ReadAll([&](std::string_view bytes) {
    read.append(bytes);
    return read.size() <= kLongestDocument;
  });
  if (!status.IsError()) text = std::move(read);
  return text;
}

bool LoadFile(ScEng::GraphDocument& document, const std::filesystem::path& file, ScEng::Findings& findings,
              std::string* text) {
  if (text == nullptr) return document.Load(file, findings);
  if (text->empty()) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream read;
    std::error_code error;
    const bool is_readable = stream && std::filesystem::is_regular_file(file, error) &&
                             std::filesystem::file_size(file, error) <= kLongestDocument && read << stream.rdbuf();
    // What is wrong with the file is for the document to say.
    if (!is_readable) return document.Load(file, findings);
    *text = read.str();
  }
  document.LoadText(*text, file.parent_path(), file.string(), findings);
  return true;
}

}  // namespace

Status StandardInput::FindImage(const std::string& written, std::filesystem::path& path) {
  path = ScEng::MakeReadPath(written);
  if (written != kStandardStream) return {};
  path = kPath;
  const Status status = Claim();
  return status.IsError() ? status : Spool();
}

bool StandardInput::LoadDocument(ScEng::GraphDocument& document, const std::string& written, ScEng::Findings& findings,
                                 std::string* text) {
  if (written != kStandardStream) return LoadFile(document, ScEng::MakeReadPath(written), findings, text);
  Status status;
  const std::optional<std::string>& read = GetDocument(status);
  if (!read) {
    findings.AddError(status.GetMessage());
    return false;
  }
  std::error_code error;
  document.LoadText(*read, std::filesystem::current_path(error), kName, findings);
  return true;
}

ExitCode StandardInput::GetErrorCode() { return has_failed ? ExitCode::kFile : ExitCode::kUsage; }

std::string StandardInput::GetDocumentName(const std::string& written) {
  return written == kStandardStream ? kName : written;
}
