// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/StandardInput.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

#include "Host/Files/ImageFile.h"

namespace {

using ScEng::Status;

constexpr const char* kName = "standard input";
constexpr const char* kPath = "/dev/stdin";
/// As long as a document may be.
constexpr std::size_t kLongestDocument = std::size_t{256} << 20U;

bool is_taken = false;

Status MakeError(const std::string& reason) { return Status::Error(std::string(kName) + ": " + reason); }

Status MakeSystemError() { return MakeError("cannot be read: " + std::generic_category().message(errno)); }

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

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// Puts a file in memory in the place of standard input.
Status Spool() {
  const int memory = memfd_create("value-input", MFD_CLOEXEC);
  if (memory < 0) return MakeSystemError();
  bool is_written = true;
  Status status = ReadAll([&](std::string_view bytes) { return is_written = WriteAll(memory, bytes); });
  if (!status.IsError() && (!is_written || dup2(memory, STDIN_FILENO) < 0)) status = MakeSystemError();
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

}  // namespace

Status StandardInput::FindImage(const std::string& written, std::filesystem::path& path) {
  path = ScEng::MakePath(written);
  if (written != kStandardStream) return {};
  path = kPath;
  const Status status = Claim();
  return status.IsError() ? status : Spool();
}

bool StandardInput::LoadDocument(ScEng::GraphDocument& document, const std::string& written,
                                 ScEng::Findings& findings) {
  if (written != kStandardStream) return document.Load(ScEng::MakePath(written), findings);
  Status status;
  const std::optional<std::string>& text = GetDocument(status);
  if (!text) {
    findings.AddError(status.GetMessage());
    return false;
  }
  std::error_code error;
  document.LoadText(*text, std::filesystem::current_path(error), kName, findings);
  return true;
}

std::string StandardInput::GetDocumentName(const std::string& written) {
  return written == kStandardStream ? kName : written;
}
