// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Exr/ExrHeader.h"

#include <sys/types.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <optional>
#include <system_error>

namespace ScEng::Exr {
namespace {

constexpr std::uint32_t kMagic = 20000630;
constexpr std::uint32_t kTiledFlag = 0x200;
constexpr std::uint32_t kDeepFlag = 0x800;
constexpr std::uint32_t kMultipartFlag = 0x1000;
constexpr std::uint32_t kKnownFlags = 0x1EFF;
constexpr std::size_t kMostName = 255;
constexpr std::size_t kMostAttributes = 4096;
constexpr std::size_t kMostParts = 1024;
constexpr std::size_t kMostHeaderBytes = std::size_t{64} << 20;

class HeaderReader {
 public:
  HeaderReader(std::FILE* file, FileHeader& header) : file_(file), header_(header) {}

  Status Read() {
    fseeko(file_, 0, SEEK_END);
    header_.size = static_cast<std::uint64_t>(std::max<off_t>(ftello(file_), 0));
    std::rewind(file_);
    const auto magic = ReadNumber();
    const auto version = ReadNumber();
    if (!magic || !version) return ShortHeader();
    if (*magic != kMagic) return Status::Error("it is not an OpenEXR file");
    if ((*version & 0xFFU) != 2 || (*version & ~kKnownFlags) != 0) {
      return Status::Error("it is of a version of OpenEXR that is not known here");
    }
    header_.is_multipart = (*version & kMultipartFlag) != 0;
    if (Status status = ReadParts(); status.IsError()) return status;
    for (PartHeader& part : header_.parts) {
      Status status = InterpretHeader((*version & kTiledFlag) != 0, (*version & kDeepFlag) != 0, part);
      if (status.IsError()) return status;
    }
    return PlaceTables();
  }

 private:
  static Status ShortHeader() { return Status::Error("the file is shortened: its header is not complete"); }

  std::optional<std::uint32_t> ReadNumber() {
    std::uint8_t bytes[4];
    if (std::fread(bytes, 1, sizeof bytes, file_) != sizeof bytes) return std::nullopt;
    return static_cast<std::uint32_t>(GetNumber(bytes, sizeof bytes));
  }

  /// Up to its NUL; nothing where the file ends or the text is too long for a name.
  std::optional<std::string> ReadName() {
    std::string name;
    for (;;) {
      const int c = std::getc(file_);
      if (c == 0) return name;
      if (c == EOF || name.size() == kMostName) return std::nullopt;
      name += static_cast<char>(c);
    }
  }

  Status ReadParts() {
    for (;;) {
      PartHeader part;
      if (Status status = ReadAttributes(part); status.IsError()) return status;
      // A header without attributes ends the headers of a file of several parts.
      if (header_.is_multipart && part.attributes.empty()) break;
      if (header_.parts.size() == kMostParts) {
        return Status::Error("it has more than " + std::to_string(kMostParts) + " parts");
      }
      header_.parts.push_back(std::move(part));
      if (!header_.is_multipart) break;
    }
    return header_.parts.empty() ? Status::Error("the file is damaged: it has no parts") : Status();
  }

  Status ReadAttributes(PartHeader& part) {
    for (;;) {
      auto name = ReadName();
      if (!name) return ShortHeader();
      if (name->empty()) return {};
      auto type = ReadName();
      const auto size = type ? ReadNumber() : std::nullopt;
      if (!size || *size > header_.size) return ShortHeader();
      read_ += *size;
      if (read_ > kMostHeaderBytes || part.attributes.size() == kMostAttributes) {
        return Status::Error("its header is larger than 64 MB or has more than " + std::to_string(kMostAttributes) +
                             " attributes");
      }
      HeaderAttribute attribute{std::move(*name), std::move(*type), Bytes(*size)};
      if (std::fread(attribute.bytes.data(), 1, *size, file_) != *size) return ShortHeader();
      if (part.Find(attribute.name) != nullptr) {
        return Status::Error("the file is damaged: its header has the attribute \"" + attribute.name + "\" twice");
      }
      part.attributes.push_back(std::move(attribute));
    }
  }

  Status PlaceTables() {
    auto position = static_cast<std::uint64_t>(std::max<off_t>(ftello(file_), 0));
    for (PartHeader& part : header_.parts) {
      part.table_position = position;
      if (part.chunk_count > (header_.size - position) / 8) {
        return Status::Error("the file is shortened: 0 of " + std::to_string(part.data_window.GetHeight()) +
                             " rows are there");
      }
      position += part.chunk_count * 8;
    }
    return {};
  }

  std::FILE* file_;
  FileHeader& header_;
  std::size_t read_ = 0;
};

}  // namespace

std::uint64_t GetNumber(const std::uint8_t* bytes, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i-- > 0;) number = (number << 8) | bytes[i];
  return number;
}

std::int32_t GetInt(const std::uint8_t* bytes) { return static_cast<std::int32_t>(GetNumber(bytes, 4)); }

float GetFloat(const std::uint8_t* bytes) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(GetNumber(bytes, 4)));
}

const HeaderAttribute* PartHeader::Find(std::string_view attribute_name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [&](const HeaderAttribute& attribute) { return attribute.name == attribute_name; });
  return found == attributes.end() ? nullptr : &*found;
}

Status ReadFileHeader(std::FILE* file, FileHeader& header) { return HeaderReader(file, header).Read(); }

}  // namespace ScEng::Exr
