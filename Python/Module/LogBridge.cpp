// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/LogBridge.h"

#include <pybind11/pybind11.h>

#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Host/Util/Forks.h"
#include "Host/Util/Log.h"
#include "Host/Util/LogOutput.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

/// As the interpreter calls it between two steps.
int DeliverWaiting(void*) {
  try {
    DeliverLog();
  } catch (py::error_already_set& error) {
    error.restore();
    return -1;
  }
  return 0;
}

/// Lines that wait for the interpreter's lock. Whoever logs must not wait for it: who has it may wait for that thread.
class WaitingLines {
 public:
  using Line = std::pair<Log::Level, std::string>;

  static WaitingLines& Get() {
    static auto* const lines = new WaitingLines;
    return *lines;
  }

  void Add(Log::Level level, const std::string& text) {
    {
      const std::lock_guard lock(mutex_);
      // More would be a flood that nobody reads.
      if (lines_.size() >= kMost) return;
      lines_.emplace_back(level, text);
      is_empty_ = false;
    }
    if (Py_IsInitialized() != 0) Py_AddPendingCall(&DeliverWaiting, nullptr);
  }

  std::vector<Line> Take() {
    if (is_empty_) return {};
    const std::lock_guard lock(mutex_);
    is_empty_ = true;
    return std::exchange(lines_, {});
  }

 private:
  WaitingLines() { ScEng::HoldWhileForking(mutex_); }

  static constexpr std::size_t kMost = 10000;

  std::mutex mutex_;
  std::vector<Line> lines_;
  std::atomic<bool> is_empty_{true};
};

const char* NameOf(Log::Level level) {
  switch (level) {
    case Log::Level::kError: return "error";
    case Log::Level::kWarning: return "warning";
    default: return "info";
  }
}

}  // namespace

void BridgeLog() {
  Log::SetLevel(Log::Level::kInfo);
  ScEng::SetLogPrints(false);
  Log::SetSink([](Log::Level level, const std::string& text) { WaitingLines::Get().Add(level, text); });
}

void DeliverLog() {
  // What came while the host worked belongs to the caller, and not to the code of the log that would run into it.
  if (PyErr_Occurred() == nullptr && PyErr_CheckSignals() != 0) throw py::error_already_set();
  // What is imported and called here runs pending calls, and so this function once more. The interpreter's lock guards
  // it.
  static bool is_delivering = false;
  if (is_delivering) return;
  is_delivering = true;
  // An exception that is on its way stays the one that is told of.
  const py::error_scope scope;
  try {
    for (auto lines = WaitingLines::Get().Take(); !lines.empty(); lines = WaitingLines::Get().Take()) {
      const py::object logger = py::module_::import("logging").attr("getLogger")("valuenodes");
      for (const auto& [level, text] : lines) logger.attr(NameOf(level))("%s", text);
    }
  } catch (py::error_already_set& error) {
    is_delivering = false;
    // No error of the log: Ctrl-C for example.
    if (!error.matches(PyExc_Exception)) throw;
    error.discard_as_unraisable("the log of valuenodes");
  }
  is_delivering = false;
}

}  // namespace ValuePython
