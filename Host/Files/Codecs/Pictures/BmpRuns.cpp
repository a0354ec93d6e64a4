// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/BmpRuns.h"

#include <algorithm>
#include <string>

namespace ScEng {
namespace {

class Unpacker {
 public:
  Unpacker(const std::vector<std::uint8_t>& packed, const BmpHeader& header, std::vector<std::uint8_t>& indices)
      : packed_(packed),
        width_(static_cast<std::size_t>(header.size_x)),
        height_(static_cast<std::size_t>(header.size_y)),
        is_narrow_(header.packing == BmpPacking::kRuns4),
        indices_(indices) {
    indices_.assign(width_ * height_, 0);
  }

  Status Run() {
    while (at_ + 2 <= packed_.size()) {
      const std::size_t count = packed_[at_];
      const std::uint8_t code = packed_[at_ + 1];
      at_ += 2;
      bool ok = true;
      if (count > 0) {
        ok = PutRun(count, code);
      } else if (code == kEndOfRow) {
        column_ = 0;
        ++row_;
      } else if (code == kEndOfPicture) {
        return {};
      } else {
        ok = code == kMove ? Move() : PutLiterals(code);
      }
      if (!ok) return Status::Error(is_short_ ? SayRows("the file is shortened: ") : SayRows("its data are damaged: "));
    }
    // The last code may be missing after the last pixel.
    const bool is_whole = row_ >= height_ || (row_ + 1 == height_ && column_ == width_);
    return is_whole ? Status() : Status::Error(SayRows("the file is shortened: "));
  }

 private:
  enum Code : std::uint8_t { kEndOfRow = 0, kEndOfPicture = 1, kMove = 2 };

  [[nodiscard]] std::string SayRows(const char* what) const {
    return what + std::to_string(std::min(row_, height_)) + " of " + std::to_string(height_) + " rows are there";
  }

  [[nodiscard]] bool HasRoom(std::size_t count) const { return row_ < height_ && count <= width_ - column_; }

  bool PutRun(std::size_t count, std::uint8_t code) {
    if (!HasRoom(count)) return false;
    std::uint8_t* to = indices_.data() + row_ * width_ + column_;
    for (std::size_t i = 0; i < count; ++i) to[i] = Pick(code, i);
    column_ += count;
    return true;
  }

  /// Literals are filled up to two bytes.
  bool PutLiterals(std::size_t count) {
    const std::size_t size = is_narrow_ ? (count + 1) / 2 : count;
    is_short_ = size > packed_.size() - at_;
    if (is_short_ || !HasRoom(count)) return false;
    std::uint8_t* to = indices_.data() + row_ * width_ + column_;
    for (std::size_t i = 0; i < count; ++i) to[i] = Pick(packed_[at_ + (is_narrow_ ? i / 2 : i)], i);
    column_ += count;
    at_ = std::min(at_ + size + size % 2, packed_.size());
    return true;
  }

  bool Move() {
    is_short_ = packed_.size() - at_ < 2;
    if (is_short_) return false;
    column_ += packed_[at_];
    row_ += packed_[at_ + 1];
    at_ += 2;
    return column_ <= width_ && row_ <= height_;
  }

  /// Of two indices in a byte the upper comes first.
  [[nodiscard]] std::uint8_t Pick(std::uint8_t byte, std::size_t i) const {
    if (!is_narrow_) return byte;
    return i % 2 == 0 ? byte >> 4 : byte & 0xF;
  }

  const std::vector<std::uint8_t>& packed_;
  std::size_t width_;
  std::size_t height_;
  bool is_narrow_;
  std::vector<std::uint8_t>& indices_;
  std::size_t at_ = 0;
  std::size_t row_ = 0;
  std::size_t column_ = 0;
  bool is_short_ = false;
};

}  // namespace

Status UnpackBmpRuns(const std::vector<std::uint8_t>& packed, const BmpHeader& header,
                     std::vector<std::uint8_t>& indices) {
  return Unpacker(packed, header, indices).Run();
}

}  // namespace ScEng
