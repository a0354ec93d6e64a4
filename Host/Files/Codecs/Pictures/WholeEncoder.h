// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/Pictures/PictureEncoder.h"
#include "Host/Files/Codecs/Pictures/WatchedFile.h"

namespace ScEng {

/// An encoder whose library takes the whole picture at once.
class WholeEncoder : public PictureEncoder {
 public:
  WholeEncoder(const std::filesystem::path& path, const WritePlan& plan, std::vector<int> channels,
               std::vector<std::string>& notes)
      : PictureEncoder(plan, std::move(channels), notes), file_(path) {
    samples_.reserve(static_cast<std::size_t>(plan.size_y) * GetRowBytes());
  }

  [[nodiscard]] bool PacksRows() const final { return false; }

 protected:
  /// The bytes of the file, or an error.
  virtual Status Encode(const std::vector<unsigned char>& samples, std::vector<unsigned char>& bytes) = 0;

 private:
  Status PutRows(int begin, int end, const void* samples) final {
    const auto* bytes = static_cast<const unsigned char*>(samples);
    samples_.insert(samples_.end(), bytes, bytes + static_cast<std::size_t>(end - begin) * GetRowBytes());
    return {};
  }

  Status Close() final {
    std::vector<unsigned char> bytes;
    const Status status = Encode(samples_, bytes);
    if (status.IsError()) return status;
    const bool is_written = file_.write(bytes.data(), bytes.size()) == bytes.size();
    return file_.Finish() && is_written ? Status() : Status::Error("it cannot be written");
  }

  CheckedFile file_;
  std::vector<unsigned char> samples_;
};

}  // namespace ScEng
