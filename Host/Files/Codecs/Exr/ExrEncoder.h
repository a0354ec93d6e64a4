// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <Imath/half.h>
#include <OpenEXR/ImfOutputFile.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Exr/ExrStream.h"

namespace ScEng::Exr {

/// See `ImageCodec::CheckCompression`.
Status CheckCompression(const std::string& compression);

/// Writes an EXR file of one part in rows.
class ExrEncoder final : public ImageEncoder {
 public:
  ExrEncoder() = default;

  /// Writes the header. To be called once, before all others.
  Status Begin(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes);

  Status WriteRows(int row_begin, int row_end, const void* samples) override;
  Status Finish() override;

 private:
  Status MakeError(const std::exception& exception) const;

  /// Declared before the file that writes to it when it is destroyed.
  std::unique_ptr<OutputStream> stream_;
  std::unique_ptr<Imf::OutputFile> file_;
  std::vector<std::string> channels_;
  bool is_half_ = false;
  int size_x_ = 0;
  int size_y_ = 0;
  int corner_x_ = 0;
  int corner_y_ = 0;
  int rows_written_ = 0;
  std::vector<Imath::half> halves_;
};

}  // namespace ScEng::Exr
