// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Sees to it that nothing ends the program without a word while a command runs: not a node library that calls `exit`,
/// `_exit`, `_Exit` or `quick_exit`, and not a crash.
///
/// Either leaves one line on standard error (with JSON also an object on standard output) that names the node and the
/// library that were running, as far as they are known, and no temporary files of saves. A call of `exit` and the like
/// ends the program with the code of a node's error, since what it was asked for is not done; a crash ends it by its
/// signal, as by default.
///
/// The line needs a stack that is not used up. The first thread has one for it, and so have those that hold a
/// `CrashStack`, which those of `RunJobs` do. On the other threads, those that help with a node's rows and those that a
/// library starts, a stack that is used up ends the program by its signal alone; all other crashes have their line.
///
/// There is one, made before anything else takes standard error and before there are threads.
class ExitGuard {
 public:
  explicit ExitGuard(bool answers_json);
  ~ExitGuard() { Disarm(); }
  ExitGuard(const ExitGuard&) = delete;
  ExitGuard& operator=(const ExitGuard&) = delete;

  /// To be called when libraries were loaded: at `exit`, the guard then speaks before their destructors run.
  static void Renew();
  /// For a process that is watched from outside.
  static void Disarm();
};
