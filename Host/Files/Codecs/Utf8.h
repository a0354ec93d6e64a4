// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Host/Files/Api.h"

namespace ScEng {

HOST_FILES_API bool IsUtf8(std::string_view text);
HOST_FILES_API std::string FromLatin1(std::string_view text);
/// Nothing where the text has characters that Latin-1 lacks.
HOST_FILES_API std::optional<std::string> ToLatin1(std::string_view utf8);

}  // namespace ScEng
