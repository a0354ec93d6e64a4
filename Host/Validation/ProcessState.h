// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ScEng {

/// How the processor computes with floating-point numbers: rounding, what becomes of denormals, which exceptions trap.
struct FloatingPointMode {
  int rounding = 0;
  int trapped = 0;
  /// The control bits of the unit that computes with floats.
  std::uint64_t control = 0;

  static FloatingPointMode Get();
  /// Goes back to this mode.
  void Restore() const;
  /// What is otherwise in `later`: "it rounds upwards"; empty where nothing is.
  [[nodiscard]] std::string FindChange(const FloatingPointMode& later) const;
};

/// What all parts of a process share and a library must leave alone: descriptors, the working directory, the handlers
/// of signals, the locale, the mask of new files.
struct ProcessState {
  /// Which file each descriptor is.
  std::map<int, std::pair<dev_t, ino_t>> descriptors;
  std::string folder;
  std::array<struct sigaction, NSIG> handlers{};
  std::string locale;
  mode_t mask = 0;

  static ProcessState Get();
  /// Goes back to this folder, these handlers, this locale and this mask; a descriptor that is closed stays so.
  void Restore() const;
  /// What is otherwise in `later`, one text each: "the working directory is \"/\" and was \"/home\"". Descriptors that
  /// came up are no change.
  [[nodiscard]] std::vector<std::string> FindChanges(const ProcessState& later) const;
};

/// Catches what is written to standard output, in whatever way, while it lasts.
class OutputCatcher {
 public:
  OutputCatcher();
  ~OutputCatcher();
  OutputCatcher(const OutputCatcher&) = delete;
  OutputCatcher& operator=(const OutputCatcher&) = delete;

  /// The first line of what was written since the last call, cut where it is long; empty where nothing was.
  [[nodiscard]] std::string Take();

 private:
  int caught_ = -1;
  int own_ = -1;
  off_t taken_ = 0;
};

}  // namespace ScEng
