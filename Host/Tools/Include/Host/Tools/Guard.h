// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

#include "Host/Tools/Api.h"
#include "Host/Tools/RunningCall.h"
#include "Host/Util/Log.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// What an exception says that is being handled, in one line.
HOST_TOOLS_API std::string DescribeHandledException();

/// Calls into a node library, which is not trusted to keep its exceptions to itself. An exception that comes out
/// becomes the error "<operation> threw an exception: <its text>", for example "GetName threw an exception: the shelf
/// is bare".
///
/// The text is copied and the exception is gone when this returns, so that the library that it came from may be
/// unloaded after that. What `function` answers, it stores itself.
template <class Function>
[[nodiscard]] Status CallGuarded(const char* operation, const Function& function) {
  const RunningScope running({operation, nullptr, nullptr});
  try {
    function();
    return {};
  } catch (...) {
    return Status::Error(std::string(operation) + " threw an exception: " + DescribeHandledException());
  }
}

/// The same for a function that answers something: `fallback` where it throws, with the error in `status`, which is
/// otherwise left alone.
template <class Result, class Function>
[[nodiscard]] Result CallGuarded(const char* operation, Status& status, Result fallback, const Function& function) {
  const Status called = CallGuarded(operation, [&] { fallback = function(); });
  if (called.IsError()) status = called;
  return fallback;
}

/// The same where no one waits for an error: it goes to the log, and `fallback` is the answer.
template <class Result, class Function>
[[nodiscard]] Result AskGuarded(const char* operation, Result fallback, const Function& function) {
  Status status;
  Result answer = CallGuarded(operation, status, std::move(fallback), function);
  if (status.IsError()) Log::Error("%s", status.GetMessage().c_str());
  return answer;
}

}  // namespace ScEng
