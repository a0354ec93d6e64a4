// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/LastLine.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Apps/Value/WriteAll.h"

namespace {

unsigned ByteAt(const char* text, std::size_t i) { return static_cast<unsigned char>(text[i]); }

/// The length of a sequence of UTF-8 that a terminal must not get; 0 for any other text. `text` ends with a zero byte.
std::size_t MeasureUnsafe(const char* text) {
  const unsigned first = ByteAt(text, 0);
  if (first < 0x20 || first == 0x7F) return 1;
  if (first == 0xC2 && ByteAt(text, 1) >= 0x80 && ByteAt(text, 1) < 0xA0) return 2;
  if (first != 0xE2 || ByteAt(text, 1) == 0) return 0;
  const unsigned third = ByteAt(text, 2);
  // Marks of direction and ends of lines.
  const bool is_mark =
      ByteAt(text, 1) == 0x80 && ((third >= 0x8B && third <= 0x8F) || (third >= 0xA8 && third <= 0xAE));
  const bool is_isolate = ByteAt(text, 1) == 0x81 && third >= 0xA0 && third <= 0xAF;
  return is_mark || is_isolate ? 3 : 0;
}

}  // namespace

void LastLine::AddByte(char byte) {
  if (length_ + 1 < sizeof(text_)) text_[length_++] = byte;
}

LastLine& LastLine::Add(const char* text) {
  while (*text != '\0') {
    const std::size_t unsafe = MeasureUnsafe(text);
    AddByte(unsafe > 0 ? '?' : *text);
    text += std::max<std::size_t>(unsafe, 1);
  }
  return *this;
}

LastLine& LastLine::Add(int number) {
  char digits[16];
  std::size_t at = sizeof(digits);
  digits[--at] = '\0';
  // Without a sign, so that the lowest number has its digits, too.
  unsigned rest = number < 0 ? 0U - static_cast<unsigned>(number) : static_cast<unsigned>(number);
  do {
    digits[--at] = static_cast<char>('0' + rest % 10U);
    rest /= 10U;
  } while (rest > 0);
  if (number < 0) digits[--at] = '-';
  return Add(digits + at);
}

LastLine& LastLine::AddName(const char* text, std::size_t most) {
  const std::size_t length = std::strlen(text);
  if (length <= most) return Add(text);
  text += length - most;
  // Not within a character.
  while ((ByteAt(text, 0) & 0xC0U) == 0x80U) ++text;
  return Add("...").Add(text);
}

void LastLine::WriteTo(int descriptor) const {
  constexpr char kStart[] = "value: ";
  constexpr char kClear[] = "\r\033[K";
  const int error = errno;
  if (isatty(descriptor) == 1) WriteAll(descriptor, kClear);
  WriteAll(descriptor, kStart);
  WriteAll(descriptor, {text_, length_});
  WriteAll(descriptor, "\n");
  errno = error;
}

void LastLine::WriteAsJsonTo(int descriptor) const {
  constexpr char kStart[] = R"({"error": ")";
  constexpr char kEnd[] = "\"}\n";
  WriteAll(descriptor, kStart);
  for (std::size_t i = 0; i < length_; ++i) {
    if (text_[i] == '"' || text_[i] == '\\') WriteAll(descriptor, "\\");
    WriteAll(descriptor, {text_ + i, 1});
  }
  WriteAll(descriptor, kEnd);
}
