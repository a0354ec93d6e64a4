// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Texts and profiles as PNG keeps them.

namespace ScEng::Png {

using Bytes = std::vector<std::uint8_t>;

/// Unpacks a zlib stream; nothing where it is damaged or larger than `most` bytes.
std::optional<Bytes> Inflate(std::span<const std::uint8_t> packed, std::size_t most);
Bytes Deflate(std::span<const std::uint8_t> bytes);

/// The profile in the text of a "Raw profile type ..." entry: a name, a length and digits in pairs; nothing where it is
/// damaged.
std::optional<Bytes> DecodeRawProfile(std::string_view text);
/// The same the other way round.
std::string EncodeRawProfile(std::string_view name, std::span<const std::uint8_t> profile);

/// The IPTC records in a list of Photoshop's image resources, or the bytes themselves where they are records already.
Bytes FindIptc(std::span<const std::uint8_t> resources);
/// The list of image resources that holds nothing but these records.
Bytes WrapIptc(std::span<const std::uint8_t> records);

}  // namespace ScEng::Png
