// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

namespace ScEng {

/// How an operation ended: a code (0 fine, 1 warning, 2 error) and, unless it is fine, one line of text that names
/// what it is about and what would be right.
class Status {
 public:
  static constexpr unsigned kFine = 0;
  static constexpr unsigned kWarning = 1;
  static constexpr unsigned kError = 2;

  Status() = default;
  Status(unsigned code, std::string message) : code_(code), message_(std::move(message)) {}

  [[nodiscard]] static Status Error(std::string message) { return {kError, std::move(message)}; }

  [[nodiscard]] unsigned GetCode() const { return code_; }
  [[nodiscard]] const std::string& GetMessage() const { return message_; }
  [[nodiscard]] bool IsError() const { return code_ == kError; }

 private:
  unsigned code_ = kFine;
  std::string message_;
};

}  // namespace ScEng
