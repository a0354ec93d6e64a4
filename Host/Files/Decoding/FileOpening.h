// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Decoding/HelperDecoder.h"
#include "Host/Files/Decoding/HelperProcess.h"

namespace ScEng {

/// The opening of a file by a process that decodes, in two halves, so that this process may do something else between
/// them. Not for two threads at once.
class HOST_FILES_API FileOpening {
 public:
  /// `codec` must stay; `file` is an absolute path without "..".
  FileOpening(const CodecRow& codec, std::unique_ptr<HelperProcess> process, std::filesystem::path file,
              std::string format);
  /// Ends a process that nobody has waited for.
  ~FileOpening();
  FileOpening(const FileOpening&) = delete;
  FileOpening& operator=(const FileOpening&) = delete;

  /// Asks the process.
  [[nodiscard]] Status Begin();
  /// Waits for its answer. The process is then the decoder's, or back in the pool after an answer that was no, or has
  /// ended.
  [[nodiscard]] std::unique_ptr<HelperDecoder> Finish(Status& status);
  /// As `HelperProcess` has it, after an error.
  [[nodiscard]] bool MayHaveEndedForAnEarlierFile() const;

 private:
  const CodecRow& codec_;
  std::unique_ptr<HelperProcess> process_;
  std::filesystem::path file_;
  std::string format_;
  HelperProcess::Question question_;
  std::uint64_t file_bytes_ = 0;
};

/// Gives a process back to the pool where it has answered without harm.
void GiveBack(const CodecRow& codec, std::unique_ptr<HelperProcess> process);

/// What a process said of a failure, in one line.
std::string TextOf(const Message& message);

}  // namespace ScEng
