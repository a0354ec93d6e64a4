// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/FormatTable.h"

#include <sstream>
#include <string_view>
#include <vector>

#include "Host/Files/ImageFile.h"

namespace {

constexpr std::string_view kBegin = "<!-- formats: begin -->\n";
constexpr std::string_view kEnd = "<!-- formats: end -->";

std::string Join(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "–" : text;
}

std::string DescribeChannels(const ScEng::FormatReport& format) {
  if (!format.writes) return "–";
  if (format.channels == 1) return "1";
  if (format.channels == 3) return "1 or 3";
  return format.has_layers ? "1 to 4 a layer" : "1 to 4";
}

}  // namespace

std::string AddFormatTable(const std::string& page) {
  const std::size_t begin = page.find(kBegin);
  const std::size_t end = page.find(kEnd);
  if (begin == std::string::npos || end == std::string::npos || end < begin) return {};
  std::ostringstream table;
  table << "\n| Format | Endings | Written | Types | Channels | Metadata that is written |\n"
        << "|---|---|---|---|---|---|\n";
  for (const ScEng::FormatReport& format : ScEng::ListFormats()) {
    table << "| " << format.title << " | " << Join(format.endings) << " | " << (format.writes ? "yes" : "no") << " | "
          << Join(format.types) << " | " << DescribeChannels(format) << " | " << Join(format.metadata) << " |\n";
  }
  table << "\n";
  return page.substr(0, begin + kBegin.size()) + table.str() + page.substr(end);
}
