// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Png/PngReader.h"

namespace ScEng::Png {

/// A PNG file that is read row by row. Rows that are asked for in order are decoded once; an interlaced file is decoded
/// as a whole.
class PngDecoder final : public ImageDecoder {
 public:
  explicit PngDecoder(std::filesystem::path file) : file_(std::move(file)) {}

  /// To be called once, before all others.
  Status Open();

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }
  Status Read(const ReadRequest& request, const ReadTarget& target) override;

 private:
  void Describe();
  [[nodiscard]] Status CheckSize() const;
  Status Restart();
  Status ReadRows(const ReadRequest& request, const ReadTarget& target);
  Status ReadInterlaced(const ReadRequest& request, const ReadTarget& target);
  void Deliver(const std::uint8_t* row, int y, const ReadRequest& request, const ReadTarget& target) const;

  std::filesystem::path file_;
  FileDescription description_;
  /// Null after an error, when what follows cannot be decoded.
  std::unique_ptr<PixelReader> reader_;
  Header header_;
  std::uint64_t packed_size_ = 0;
  /// One row, or all rows of an interlaced file once they are decoded.
  std::vector<std::uint8_t> pixels_;
  bool has_all_rows_ = false;
};

}  // namespace ScEng::Png
