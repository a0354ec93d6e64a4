// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Host/Files/Api.h"

namespace ScEng {

/// An EXIF block, which has the form of a TIFF file, for looking things up. It trusts nothing in the block: what does
/// not lie within it is not there.
class HOST_FILES_API ExifBlock {
 public:
  enum class Directory : std::uint8_t { kImage, kPhoto, kPosition };

  /// The bytes must outlive the object.
  explicit ExifBlock(std::span<const std::uint8_t> bytes);

  /// Whether the block begins as a TIFF file does.
  [[nodiscard]] bool IsValid() const { return is_valid_; }

  /// A text without what follows its first NUL; nothing where the tag is absent or of another type.
  [[nodiscard]] std::optional<std::string> GetText(Directory directory, unsigned tag) const;
  /// Whole numbers and fractions; empty where the tag is absent, of another type, or a fraction has no value.
  [[nodiscard]] std::vector<double> GetNumbers(Directory directory, unsigned tag) const;

  /// How the rows lie, 1 to 8; 1 where the block does not say.
  [[nodiscard]] int GetOrientation() const;
  /// Where the two bytes of the orientation are, if there are any.
  [[nodiscard]] std::optional<std::size_t> FindOrientation() const;

  /// A directory whose entries all lie within the block.
  struct Table {
    /// Where the number of its entries stands. The entries follow it, and then where the next directory is.
    std::size_t position;
    std::size_t entries;
    /// Where it ends, its reference to the next one included as far as that is there.
    std::size_t end;
  };
  [[nodiscard]] std::optional<Table> FindTable(Directory directory) const;

 private:
  struct Field {
    unsigned type;
    std::size_t count;
    /// Where its value lies, all of it within the block.
    std::size_t position;
  };

  [[nodiscard]] std::uint32_t GetNumber(std::size_t position, std::size_t size) const;
  [[nodiscard]] std::optional<std::size_t> FindDirectory(Directory directory) const;
  [[nodiscard]] std::optional<Field> Find(std::size_t directory, unsigned tag) const;
  [[nodiscard]] std::vector<double> ReadNumbers(const Field& field) const;

  std::span<const std::uint8_t> bytes_;
  bool is_big_endian_ = false;
  bool is_valid_ = false;
};

/// Takes the orientation out of a block: answers what it says and sets it to 1 there.
HOST_FILES_API int TakeOrientation(std::vector<std::uint8_t>& block);

/// Takes out of a block what describes the stored samples beside the orientation: size, layout and thumbnail.
HOST_FILES_API void RemoveSampleDescription(std::vector<std::uint8_t>& block);

}  // namespace ScEng
