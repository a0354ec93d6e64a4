// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tiffio.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/Pictures/SampleNumbers.h"
#include "Host/Files/Codecs/Pictures/TiffHandle.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// The samples of a page that the library of formats stretches, inverts or gets wrong: integers of unusual widths or of
/// which zero is white, and doubles.
struct TiffSamples {
  StoredType type = StoredType::kUint8;
  unsigned bits = 8;
  bool is_signed = false;
  bool is_inverted = false;
  std::size_t channels = 1;
  /// Those that are not colour come last.
  std::size_t extra_channels = 0;

  [[nodiscard]] SampleNumbers GetNumbers(std::size_t channel) const;
};

/// Nothing for the current page of a TIFF that the library of formats reads as it is, and for one of inks, a palette or
/// coded colour, which it turns into colours.
std::optional<TiffSamples> FindTiffSamples(TIFF* tiff);

/// Whether the current page is coded as a fax, whose damaged rows the TIFF library leaves as they were.
bool IsFax(TIFF* tiff);

/// Why samples of the current page cannot be read by anyone here, "samples of 64-bit integers are not supported"; empty
/// where they can.
std::string FindTypeProblem(TIFF* tiff);

/// Rows of such a page.
class TiffRows {
 public:
  /// Null where the page cannot be opened.
  static std::unique_ptr<TiffRows> Open(const std::filesystem::path& file, std::uint32_t page,
                                        const TiffSamples& samples);

  [[nodiscard]] bool HasSize(int size_x, int size_y) const {
    return std::cmp_equal(width_, size_x) && height_ == size_y;
  }
  /// Rows [begin, end), channels interleaved and rows dense, every number in its type.
  Status Read(int begin, int end, std::vector<unsigned char>& to);

 private:
  explicit TiffRows(const TiffSamples& samples) : samples_(samples) {}
  bool ReadStripRows(std::size_t plane, int begin, int end, unsigned char* to);
  bool ReadScanline(std::size_t plane, int row, std::size_t used_bits);
  bool ReadTile(TIFF* tiff, std::uint32_t x, std::uint32_t y, std::size_t plane);
  bool ReadTileRows(std::size_t plane, int begin, int end, unsigned char* to);
  /// Puts the numbers of a packed row into a row of pixels.
  void Unpack(const unsigned char* from, std::size_t plane, std::size_t pixels, unsigned char* to) const;
  [[nodiscard]] TIFF* GetHandle(std::size_t plane) const { return handles_[plane % handles_.size()].get(); }
  [[nodiscard]] std::size_t GetNumPlanes() const { return is_separate_ ? samples_.channels : 1; }
  [[nodiscard]] std::size_t GetPixelBytes() const { return samples_.channels * GetSize(samples_.type); }

  TiffSamples samples_;
  std::string problem_;
  // Several, because the rows of packed strips are only had in their order, and planes are read in turns.
  std::vector<TiffHandle> handles_;
  /// Decodes rows of a fax once more.
  std::vector<TiffHandle> twins_;
  std::vector<unsigned char> packed_;
  std::vector<unsigned char> twin_packed_;
  std::size_t width_ = 0;
  int height_ = 0;
  /// The last row that was asked of the TIFF library.
  int row_ = 0;
  bool is_fax_ = false;
  bool is_separate_ = false;
};

}  // namespace ScEng
