// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/ImageFormats.h"

#include <algorithm>
#include <sstream>

#include "Host/Files/Codecs/CodecTable.h"

namespace ScEng {

void LoadFormatsToWrite(const std::vector<std::filesystem::path>& files) {
  for (const FormatRow& row : GetFormatRows()) {
    const bool is_written =
        row.writes && std::any_of(files.begin(), files.end(), [&](const auto& file) { return HasEnding(row, file); });
    std::string problem;
    if (is_written) static_cast<void>(LoadCodec(*FindCodecRow(row.codec), problem));
  }
}

bool HasImageEnding(const std::filesystem::path& file) {
  const auto rows = GetFormatRows();
  return std::any_of(rows.begin(), rows.end(), [&](const FormatRow& row) { return HasEnding(row, file); });
}

std::vector<std::string> ListWrittenEndings() {
  std::vector<std::string> endings;
  for (const FormatRow& row : GetFormatRows()) {
    if (!row.writes) continue;
    std::istringstream stream(row.endings);
    for (std::string ending; std::getline(stream, ending, ',');) {
      if (std::find(endings.begin(), endings.end(), ending) == endings.end()) endings.push_back(ending);
    }
  }
  return endings;
}

}  // namespace ScEng
