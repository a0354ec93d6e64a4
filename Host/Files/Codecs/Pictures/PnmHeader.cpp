// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PnmHeader.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace ScEng {
namespace {

/// The first character after white space and comments.
int SkipBlanks(std::istream& stream) {
  int c = stream.get();
  while (c == '#' || std::isspace(c) != 0) {
    if (c == '#') {
      while (c != '\n' && c != EOF) c = stream.get();
    } else {
      c = stream.get();
    }
  }
  return c;
}

/// The scale of floats, whose sign tells the order of their bytes.
std::optional<double> ReadScale(std::istream& stream) {
  constexpr std::size_t kMost = 64;
  std::string word;
  int c = SkipBlanks(stream);
  for (; c != EOF && std::isspace(c) == 0 && word.size() < kMost; c = stream.get()) word += static_cast<char>(c);
  char* end = nullptr;
  const double scale = std::strtod(word.c_str(), &end);
  const bool is_good = !word.empty() && *end == '\0' && std::isfinite(scale) && scale != 0.0 && std::isspace(c) != 0;
  return is_good ? std::optional(scale) : std::nullopt;
}

}  // namespace

std::optional<int> ReadPnmNumber(std::istream& stream) {
  constexpr int kMost = 1 << 29;
  int c = SkipBlanks(stream);
  if (std::isdigit(c) == 0) return std::nullopt;
  int number = 0;
  while (std::isdigit(c) != 0) {
    if (number > kMost / 10) return std::nullopt;
    number = number * 10 + (c - '0');
    c = stream.get();
  }
  // The last number of a text may end with the file.
  return std::isspace(c) != 0 || c == EOF ? std::optional(number) : std::nullopt;
}

PnmHeader ReadPnmHeader(const std::filesystem::path& file, std::string& problem) {
  constexpr int kMostLargest = 65535;
  PnmHeader header;
  std::ifstream stream(file, std::ios::binary);
  stream.get();
  header.kind = static_cast<char>(stream.get());
  if (header.kind == '7') {
    problem = "the PAM format is not supported; PBM, PGM, PPM and PFM are read";
    return header;
  }
  header.channels = header.kind == '3' || header.kind == '6' || header.kind == 'F' ? 3 : 1;
  const auto size_x = ReadPnmNumber(stream);
  const auto size_y = size_x ? ReadPnmNumber(stream) : std::nullopt;
  bool is_good = size_y && *size_x > 0 && *size_y > 0;
  if (is_good && header.IsFloat()) {
    const auto scale = ReadScale(stream);
    is_good = scale.has_value();
    header.is_big_endian = scale.value_or(1.0) > 0.0;
  } else if (is_good && !header.IsBitmap()) {
    const auto largest = ReadPnmNumber(stream);
    is_good = largest && *largest > 0;
    header.largest = largest.value_or(1);
  }
  header.data = stream.tellg();
  if (!is_good || header.data < 0) {
    problem = stream ? "its header is damaged" : "the file is shortened: it ends within its header";
  } else if (header.largest > kMostLargest) {
    problem = "its largest number is " + std::to_string(header.largest) + "; up to 65535 is read";
  }
  header.size_x = size_x.value_or(0);
  header.size_y = size_y.value_or(0);
  return header;
}

}  // namespace ScEng
