// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/ImageFormats.h"

#include <algorithm>
#include <sstream>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Writing/WriteImage.h"

namespace ScEng {

void LoadFormatsToWrite(const std::vector<std::filesystem::path>& files) {
  for (const FormatRow& row : GetFormatRows()) {
    const bool is_written =
        row.writes && std::any_of(files.begin(), files.end(), [&](const auto& file) { return HasEnding(row, file); });
    std::string problem;
    if (is_written) static_cast<void>(LoadCodec(*FindCodecRow(row.codec), problem));
  }
}

std::string FindEndingProblem(const std::filesystem::path& file) {
  std::string problem;
  return ChooseFormat(file, {}, problem) == nullptr ? problem : std::string();
}

std::string FindCompressionProblem(const std::filesystem::path& file, const std::string& compression) {
  std::string unused;
  const FormatRow* const usual = ChooseFormat(file, {}, unused);
  if (usual == nullptr || compression.empty()) return {};
  std::string problem;
  const auto takes = [&](const FormatRow& row) {
    const ImageCodec* codec = LoadCodec(*FindCodecRow(row.codec), unused);
    if (codec == nullptr) return false;
    const Status status = codec->CheckCompression(row.name, compression);
    if (problem.empty()) problem = status.GetMessage();
    return !status.IsError();
  };
  if (takes(*usual)) return {};
  // Of formats with one ending, the image chooses.
  for (const FormatRow& row : GetFormatRows()) {
    if (row.writes && &row != usual && HasEnding(row, file) && takes(row)) return {};
  }
  return problem;
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
