// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// What the encoders of this module share: rows arrive in order, and channels that a format cannot hold as they are
/// become channels that it can.
class PictureEncoder : public ImageEncoder {
 public:
  /// `channels` are the numbers of channels that the format holds, in rising order.
  PictureEncoder(const WritePlan& plan, std::vector<int> channels, std::vector<std::string>& notes);
  Status WriteRows(int row_begin, int row_end, const void* samples) final;
  Status Finish() final;

 protected:
  [[nodiscard]] const WritePlan& GetPlan() const { return plan_; }
  /// As they are stored.
  [[nodiscard]] int GetNumChannels() const { return channels_; }
  /// The channel that is opacity as it is stored, -1 for none.
  [[nodiscard]] int GetOpacityChannel() const;
  [[nodiscard]] std::size_t GetRowBytes() const;

  virtual Status PutRows(int begin, int end, const void* samples) = 0;
  virtual Status Close() = 0;

 private:
  void Spread(const unsigned char* from, std::size_t pixels);

  WritePlan plan_;
  int channels_;
  /// Of a sample as it is handed over.
  std::size_t sample_bytes_;
  int next_row_ = 0;
  std::vector<unsigned char> spread_;
};

/// What a format holds of metadata; what it does not is told in one note.
ImageMetadata TakeWhatIsHeld(const ImageMetadata& metadata, std::string_view format, std::vector<std::string>& notes);

}  // namespace ScEng
