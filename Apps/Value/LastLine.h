// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// A line that is put together in a signal handler: no memory is allocated, and what is too long is cut. Control
/// characters of what is added, and characters that change the direction of text or end a line, become "?".
class LastLine {
 public:
  LastLine& Add(const char* text);
  LastLine& Add(int number);
  /// Adds at most `most` bytes of the text: its end, behind "...", where it is longer.
  LastLine& AddName(const char* text, std::size_t most);

  [[nodiscard]] const char* GetText() const { return text_; }
  [[nodiscard]] std::size_t GetLength() const { return length_; }

  /// Writes "value: ", the line and its end, in the place of a progress line on a terminal.
  void WriteTo(int descriptor) const;
  /// Writes {"error": "the line"}.
  void WriteAsJsonTo(int descriptor) const;

 private:
  void AddByte(char byte);

  char text_[600] = {};
  std::size_t length_ = 0;
};
