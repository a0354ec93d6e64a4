// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Pictures/SampleNumbers.h"

namespace ScEng {

/// A file of one picture that is decoded at once when its samples are first asked for.
class WholeDecoder final : public ImageDecoder {
 public:
  /// Gives all samples, channels interleaved and rows dense in the order of bytes of the processor, or an error.
  using Decode = std::function<Status(std::vector<unsigned char>& samples)>;
  /// `numbers` are those of the channels, of which missing ones use the whole of their type.
  WholeDecoder(FileDescription description, Decode decode, std::vector<SampleNumbers> numbers = {})
      : description_(std::move(description)), decode_(std::move(decode)), numbers_(std::move(numbers)) {}

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }
  Status Read(const ReadRequest& request, const ReadTarget& target) override;

 private:
  FileDescription description_;
  Decode decode_;
  std::vector<SampleNumbers> numbers_;
  std::vector<unsigned char> samples_;
};

/// Bitmaps, grey, colour and floats of the PNM family, whose numbers the library of formats stretches.
std::unique_ptr<ImageDecoder> OpenPnm(const std::filesystem::path& file, Status& status);
/// WebP of a single picture, which the library of formats multiplies by its opacity; null for films.
std::unique_ptr<ImageDecoder> OpenWebp(const std::filesystem::path& file, Status& status);
/// JPEG 2000 whose numbers may be negative or are of other widths than 8 and 16 bits, which the library of formats
/// moves and stretches; null for all others.
std::unique_ptr<ImageDecoder> OpenJpeg2000(const std::filesystem::path& file, Status& status);
/// BMP, of which the library of formats takes padding for opacity and does not read all packed ones.
std::unique_ptr<ImageDecoder> OpenBmp(const std::filesystem::path& file, Status& status);

}  // namespace ScEng
