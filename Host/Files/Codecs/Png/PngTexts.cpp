// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Png/PngTexts.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <new>

namespace ScEng::Png {
namespace {

int FromHexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  const int lower = std::tolower(static_cast<unsigned char>(digit));
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

constexpr std::string_view kResourceMark = "8BIM";
constexpr unsigned kIptcResource = 0x0404;

}  // namespace

std::optional<Bytes> Inflate(std::span<const std::uint8_t> packed, std::size_t most) {
  std::array<std::uint8_t, 32768> piece;
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) throw std::bad_alloc();
  stream.next_in = const_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  Bytes bytes;
  int state = Z_OK;
  while (state == Z_OK && bytes.size() <= most) {
    stream.next_out = piece.data();
    stream.avail_out = static_cast<uInt>(piece.size());
    state = inflate(&stream, Z_NO_FLUSH);
    bytes.insert(bytes.end(), piece.data(), stream.next_out);
  }
  inflateEnd(&stream);
  if (state != Z_STREAM_END || bytes.size() > most) return std::nullopt;
  return bytes;
}

Bytes Deflate(std::span<const std::uint8_t> bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  Bytes packed(size);
  if (compress2(packed.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), Z_BEST_COMPRESSION) != Z_OK) {
    throw std::bad_alloc();
  }
  packed.resize(size);
  return packed;
}

std::optional<Bytes> DecodeRawProfile(std::string_view text) {
  const auto skip_space = [&] {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text[0])) != 0) text.remove_prefix(1);
  };
  skip_space();
  text.remove_prefix(std::min(text.find('\n'), text.size()));
  skip_space();
  std::size_t size = 0;
  while (!text.empty() && text[0] >= '0' && text[0] <= '9') {
    size = size * 10 + static_cast<std::size_t>(text[0] - '0');
    text.remove_prefix(1);
    // Two digits make a byte; this also keeps the number from running over.
    if (size > text.size() / 2) return std::nullopt;
  }
  Bytes bytes;
  bytes.reserve(size);
  while (bytes.size() < size) {
    skip_space();
    if (text.size() < 2) return std::nullopt;
    const int high = FromHexDigit(text[0]);
    const int low = FromHexDigit(text[1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
    text.remove_prefix(2);
  }
  return bytes;
}

std::string EncodeRawProfile(std::string_view name, std::span<const std::uint8_t> profile) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kBytesInLine = 36;
  // The length takes eight places, as readers of these entries are used to.
  constexpr std::size_t kPlaces = 8;
  const std::string size = std::to_string(profile.size());
  std::string text =
      "\n" + std::string(name) + "\n" + std::string(kPlaces - std::min(kPlaces, size.size()), ' ') + size;
  for (std::size_t i = 0; i < profile.size(); ++i) {
    if (i % kBytesInLine == 0) text += '\n';
    text += kDigits[profile[i] >> 4];
    text += kDigits[profile[i] & 0xF];
  }
  return text + "\n";
}

Bytes FindIptc(std::span<const std::uint8_t> resources) {
  const auto number = [&](std::size_t at, std::size_t size) {
    std::size_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = (value << 8) | resources[at + i];
    return value;
  };
  if (resources.size() >= 3 && resources[0] == 0x1C) return {resources.begin(), resources.end()};
  std::size_t at = 0;
  while (at + 12 <= resources.size()) {
    if (!std::equal(kResourceMark.begin(), kResourceMark.end(), resources.begin() + static_cast<std::ptrdiff_t>(at))) {
      break;
    }
    const std::size_t id = number(at + 4, 2);
    // The name with its length, and the data, are padded to an even number of bytes.
    const std::size_t name_size = (resources[at + 6] + 2U) & ~1U;
    if (at + 6 + name_size + 4 > resources.size()) break;
    const std::size_t size = number(at + 6 + name_size, 4);
    const std::size_t data = at + 6 + name_size + 4;
    if (size > resources.size() - data) break;
    if (id == kIptcResource) {
      const auto found = resources.subspan(data, size);
      return {found.begin(), found.end()};
    }
    at = data + ((size + 1) & ~std::size_t{1});
  }
  return {};
}

Bytes WrapIptc(std::span<const std::uint8_t> records) {
  // The mark, the number of the resource, and an empty name.
  Bytes resources{'8', 'B', 'I', 'M', kIptcResource >> 8, kIptcResource & 0xFF, 0, 0};
  for (int shift = 24; shift >= 0; shift -= 8) {
    resources.push_back(static_cast<std::uint8_t>(records.size() >> static_cast<unsigned>(shift)));
  }
  resources.insert(resources.end(), records.begin(), records.end());
  if (records.size() % 2 != 0) resources.push_back(0);
  return resources;
}

}  // namespace ScEng::Png
