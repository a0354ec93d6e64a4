// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Decoding/ByteArchive.h"

namespace ScEng {

/// A description as bytes for another process.
Bytes ToBytes(const FileDescription& description);

/// The description in bytes of unknown origin. Nothing where they are none, or where it holds what no file has:
/// negative sizes, a channel that is not there, an orientation or a type of samples that does not exist. Names and
/// remarks, which end up in messages, are made printable.
std::optional<FileDescription> ToDescription(std::span<const std::uint8_t> bytes);

/// The text in one line of at most `most` bytes, without control characters and as valid UTF-8: what is neither becomes
/// a question mark.
std::string MakePrintable(std::string_view text, std::size_t most);

}  // namespace ScEng
