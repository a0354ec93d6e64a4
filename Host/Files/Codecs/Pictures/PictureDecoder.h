// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Pictures/PictureInput.h"
#include "Host/Files/Codecs/Pictures/TiffSamples.h"

namespace ScEng {

/// Reads what the library of formats reads.
class PictureDecoder final : public ImageDecoder {
 public:
  /// An empty format is to be found out. Null, and an error, where the file cannot be read.
  static std::unique_ptr<PictureDecoder> Open(const std::filesystem::path& file, const std::string& format,
                                              Status& status);

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }
  Status Read(const ReadRequest& request, const ReadTarget& target) override;

 private:
  PictureDecoder() = default;
  void ListParts();
  Status Begin(std::size_t part);
  Status ReadChunk(std::size_t part, int begin, int end);
  [[nodiscard]] int RowsAtOnce() const;

  std::filesystem::path file_;
  FileDescription description_;
  /// The library's number of every part.
  std::vector<int> subimages_;
  /// One, or two of a format whose reader is not trusted to write every sample.
  std::vector<std::unique_ptr<PictureInput>> inputs_;
  std::vector<std::vector<unsigned char>> rows_;
  std::vector<bool> is_checked_;
  /// Of every part whose samples the library of formats does not read as they are.
  std::vector<std::optional<TiffSamples>> own_samples_;
  /// The rows of one of them, which is the part `own_part_`.
  std::unique_ptr<TiffRows> own_rows_;
  std::size_t own_part_ = 0;
};

}  // namespace ScEng
