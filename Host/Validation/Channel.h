// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace ScEng {

/// The child's end of the socket to the validating process: lines in both directions.
class Channel {
 public:
  /// The exit code of a child whose end of the socket was closed by the library.
  static constexpr int kClosedHere = 94;

  explicit Channel(int socket) : socket_(socket) {}

  /// False when the other side has closed it.
  bool ReadLine(std::string& line);
  /// Ends the process where nobody is there any more.
  void Write(const nlohmann::json& message) const;
  void Tell(const char* key, const std::string& text) const;
  /// The answer to a check.
  void Answer(const std::vector<std::string>& failures, const std::vector<std::string>& skips) const;

 private:
  int socket_;
  std::string received_;
};

}  // namespace ScEng
