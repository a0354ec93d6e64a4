// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Pictures/JpegErrors.h"

namespace ScEng {

/// Reads JPEG by its own library, so that every damage that the library notices is an error.
class JpegDecoder final : public ImageDecoder {
 public:
  static std::unique_ptr<JpegDecoder> Open(const std::filesystem::path& file, Status& status);
  ~JpegDecoder() override;
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }
  Status Read(const ReadRequest& request, const ReadTarget& target) override;

 private:
  JpegDecoder() = default;
  /// The steps that call the library. They answer whether it did not escape and hold nothing to destroy.
  bool ReadHeader();
  bool Start();
  bool ReadRow(JSAMPROW row);
  bool Finish();

  Status Restart();
  void Describe();
  void ConvertInk();
  [[nodiscard]] std::string Explain() const;

  std::filesystem::path file_;
  FileDescription description_;
  JpegErrors errors_{};
  jpeg_decompress_struct jpeg_{};
  jpeg_progress_mgr progress_{};
  std::FILE* stream_ = nullptr;
  bool is_started_ = false;
  int next_row_ = 0;
  std::vector<JSAMPLE> row_;
};

}  // namespace ScEng
