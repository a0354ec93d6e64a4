// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Api.h"

namespace ScEng {

/// Takes out of an XMP packet what describes the stored samples of the file that it was in: orientation, size, layout
/// and thumbnails. Everything else stays to the byte.
HOST_FILES_API void RemoveSampleDescription(std::string& packet);

/// Texts with the names that their file gave them.
using NamedTexts = std::vector<std::pair<std::string, std::string>>;

/// Adds texts to an XMP packet, or makes one of them where it is empty: each name is a property, and a name that is
/// there several times a list. False, and no change, where the packet cannot take them.
HOST_FILES_API bool AddTexts(const NamedTexts& texts, std::string& packet);

/// The most bytes that a text takes in a packet, and that a packet takes without texts.
HOST_FILES_API std::size_t BoundSize(const std::pair<std::string, std::string>& text);
inline constexpr std::size_t kEmptyPacketSize = 512;

}  // namespace ScEng
