// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ScEng {

/// The code point that starts at `at`, which moves behind it; nothing, and one byte further, where the bytes are no
/// UTF-8.
std::optional<char32_t> TakeCodePoint(std::string_view text, std::size_t& at);

bool IsUtf8(std::string_view text);
/// Counts bytes that are no UTF-8 as one each.
std::size_t CountCodePoints(std::string_view text);
bool HasControlCharacter(std::string_view text);

/// A piece of a document in quotes for a message, escaped like `MakeLine` and cut where it is long. Costs as much as
/// what is shown, however long the text is.
std::string Quote(std::string_view text);
/// The same of a path, of which the end is kept.
std::string QuotePath(const std::filesystem::path& path);

/// The end of a text that is too long, after three dots; escaped like `MakeLine`.
std::string KeepEnd(std::string_view text, std::size_t most);

/// "constant, image": a list for messages.
std::string JoinNames(const std::vector<std::string>& names);

}  // namespace ScEng
