// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Decoding/SharedSamples.h"

namespace ScEng {

class HelperProcess;

/// A file that is open in a process of its own, which can read nothing but this file and its folder, cannot write or
/// reach a network, and is bounded in time and memory. A file that crashes, hangs or floods it is an error of that
/// file, and the next one is decoded by a new process.
class HOST_FILES_API HelperDecoder final : public ImageDecoder {
 public:
  /// `samples` are those of the first part that came with the description, or none.
  HelperDecoder(const CodecRow& codec, std::unique_ptr<HelperProcess> process, FileDescription description,
                std::vector<float> samples, std::uint64_t file_bytes);
  /// Keeps the process for the next file.
  ~HelperDecoder() override;

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }
  Status Read(const ReadRequest& request, const ReadTarget& target) override;
  [[nodiscard]] bool SharesMemory() const override { return true; }
  SampleBuffer ReadShared(const ReadRequest& request, std::size_t pixel_stride, Status& status) override;

  /// Where in shared memory samples go: as `ReadTarget`, from `offset` floats after its begin.
  struct SharedTarget {
    std::size_t offset = 0;
    std::size_t pixel_stride = 1;
    std::size_t row_stride = 0;
  };
  /// As `Read`, without a copy. Strides that lead out of the memory are an error.
  Status Read(const ReadRequest& request, SharedSamples& memory, const SharedTarget& target);

  /// Whether the system keeps the process from files and networks; its time and memory are limited in any case.
  [[nodiscard]] bool IsConfined() const;

 private:
  Status Ask(const ReadRequest& request, const SharedTarget& target, std::uint64_t memory_bytes, int descriptor,
             std::uint64_t inline_bytes, std::vector<std::uint8_t>& samples);
  Status ReadInline(const ReadRequest& request, const ReadTarget& target);
  /// Takes a rectangle from the samples that came with the description; false where they are not enough.
  bool TakeFromAhead(const ReadRequest& request, const ReadTarget& target) const;

  const CodecRow& codec_;
  std::unique_ptr<HelperProcess> process_;
  FileDescription description_;
  /// All channels of the first part, or none.
  std::vector<float> ahead_;
  std::uint64_t file_bytes_;
};

/// Opens a file in a process of its own, as `ImageCodec::Open` does in this one. `codec` must stay. From any thread.
HOST_FILES_API std::unique_ptr<HelperDecoder> OpenInHelper(const CodecRow& codec, const std::filesystem::path& file,
                                                           const std::string& format, Status& status);

/// Tells which files `OpenInHelper` is asked for next, about in this order; none ends it. Processes that have nothing
/// to do open up to `most` of them ahead where they are small. From any thread.
HOST_FILES_API void ExpectInHelper(std::vector<std::filesystem::path> files, std::size_t most);

/// How decoding in a process of its own is set up here.
struct HelperReport {
  /// The program that decodes.
  std::filesystem::path program;
  /// Why no process can be started, in one line; empty where one can.
  std::string problem;
  /// As `HelperDecoder::IsConfined`.
  bool is_confined = false;
};

/// Starts a process for a codec, unless one waits already, and tells. From any thread.
HOST_FILES_API HelperReport CheckHelper(const CodecRow& codec);

/// Ends all processes that wait for files, which otherwise end with the program. From any thread.
HOST_FILES_API void EndIdleHelpers();

}  // namespace ScEng
