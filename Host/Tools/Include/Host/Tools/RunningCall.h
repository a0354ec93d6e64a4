// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/Api.h"

class Node;

namespace ScEng {

/// What of a node library is running, for whoever has to say so when the library ends the program. A part that is not
/// known is null.
struct RunningCall {
  /// "GetName", for example.
  const char* operation = nullptr;
  /// The node's label.
  const char* node = nullptr;
  /// The file of the library.
  const char* library = nullptr;

  /// What runs on this thread; on a thread that helps others, what runs on the one thread of the process that evaluates
  /// a node, if it is one. May be called in a signal handler.
  HOST_TOOLS_API static RunningCall Find();
  /// Says that this thread never helps to evaluate a node, as that of a window: from now on it runs only what is said
  /// on it itself.
  HOST_TOOLS_API static void HelpNobody();
};

/// Says what runs on this thread while the scope lasts. A part that is null stays as the scope around it has it. The
/// texts outlive the scope.
class HOST_TOOLS_API RunningScope {
 public:
  explicit RunningScope(const RunningCall& call);
  ~RunningScope();
  RunningScope(const RunningScope&) = delete;
  RunningScope& operator=(const RunningScope&) = delete;

 private:
  RunningCall outer_;
  bool evaluates_;
};

/// The loaded node library whose code or data `address` is in; null where it is in none. May be called in a signal
/// handler.
HOST_TOOLS_API const char* FindLibraryOf(const void* address);
/// The loaded node library that defines the class of a node; null for a type of the host's own.
HOST_TOOLS_API const char* FindLibraryOf(const Node& node);

}  // namespace ScEng
