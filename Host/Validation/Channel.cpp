// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Channel.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <nlohmann/json.hpp>

#include "Host/Validation/Protocol.h"

namespace ScEng {

using nlohmann::json;

bool Channel::ReadLine(std::string& line) {
  for (;;) {
    if (const std::size_t end = received_.find('\n'); end != std::string::npos) {
      line = received_.substr(0, end);
      received_.erase(0, end + 1);
      return true;
    }
    char buffer[4096];
    const ssize_t got = read(socket_, buffer, sizeof(buffer));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    received_.append(buffer, static_cast<std::size_t>(got));
  }
}

void Channel::Write(const json& message) const {
  const std::string text = message.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
  for (std::size_t sent = 0; sent < text.size();) {
    const ssize_t put = write(socket_, text.data() + sent, text.size() - sent);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) _exit(errno == EBADF || errno == ENOTSOCK ? kClosedHere : 0);
    sent += static_cast<std::size_t>(put);
  }
}

void Channel::Tell(const char* key, const std::string& text) const { Write({{key, text}}); }

void Channel::Answer(const std::vector<std::string>& failures, const std::vector<std::string>& skips) const {
  Write({{Protocol::kDone, true}, {Protocol::kFailures, failures}, {Protocol::kSkips, skips}});
}

}  // namespace ScEng
