// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Examination.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <system_error>

#include "Host/Util/Cancellation.h"
#include "Host/Util/HostModule.h"
#include "Host/Validation/Channel.h"
#include "Host/Validation/ChildProcess.h"
#include "Host/Validation/Protocol.h"
#include "Host/Validation/Wording.h"

namespace ScEng {
namespace {

using nlohmann::json;

/// How the child ended that did not come to the end of the examination.
std::string DescribeEnd(const ChildProcess& child, const std::string& at) {
  const std::string end = child.GetEnd();
  if (end == "ended with exit code " + std::to_string(Channel::kClosedHere)) {
    return "it closes descriptors that are not its own" + While(at);
  }
  const std::string words = child.GetLastWords();
  return "the process " + end + While(at) + (words.empty() ? "" : ", and printed last: \"" + words + "\"") +
         "; a library must never end its host";
}

std::vector<std::string> MakeCommand(const std::filesystem::path& library) {
  std::error_code error;
  return {FindHostProgram("value-examiner", VALUE_EXAMINER_FROM_LIBRARIES).string(),
          std::filesystem::absolute(library, error).string()};
}

}  // namespace

Status ExamineLibrary(const ExaminationOptions& options) {
  const std::string start = "plug-in \"" + options.library.string() + "\"";
  ChildProcess child;
  const Status started =
      child.Start(options.child_command.empty() ? MakeCommand(options.library) : options.child_command);
  if (started.IsError()) return Status::Error(start + " cannot be examined: " + started.GetMessage());
  child.Send(json({{Protocol::kCheck, Protocol::kExamine}}).dump());
  const auto deadline = ChildProcess::Clock::now() + options.timeout;
  std::string at;
  for (std::string line;;) {
    constexpr auto kTick = std::chrono::milliseconds(50);
    PollCancellation();
    switch (child.ReadLine(line, std::min(deadline, ChildProcess::Clock::now() + kTick))) {
      case ChildProcess::Event::kTimeout:
        if (ChildProcess::Clock::now() < deadline) continue;
        return Status::Error(start + ": it does not come back within " + FormatSeconds(options.timeout) + While(at));
      case ChildProcess::Event::kEnded: return Status::Error(start + ": " + DescribeEnd(child, at));
      case ChildProcess::Event::kLine: break;
    }
    // What is no such line is not from the child's own code.
    const json message = json::parse(line, nullptr, false);
    if (!message.is_object()) continue;
    try {
      at = message.value(Protocol::kAt, at);
      if (message.contains(Protocol::kRefused)) return Status::Error(message.value(Protocol::kRefused, ""));
      if (!message.value(Protocol::kDone, false)) continue;
      const auto failures = message.value(Protocol::kFailures, std::vector<std::string>());
      return failures.empty() ? Status() : Status::Error(start + ": " + failures.front());
    } catch (const json::exception&) {
      continue;
    }
  }
}

}  // namespace ScEng
