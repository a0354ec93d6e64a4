// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/Api.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Util/RefCounter.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// The file of the loaded node library that defines a descriptor; null for a type of the host's own.
HOST_TOOLS_API const char* FindLibraryOf(const NodeInterface& descriptor);

/// The error of a call that was about a node type, with the type and its library in front of it:
/// `node "Soft Edge" of plug-in "/opt/Soft.so": CreateNode threw an exception: the shelf is bare`.
HOST_TOOLS_API Status NameType(const NodeInterface& descriptor, const Status& error);

/// `CallGuarded` for a call that is about a node type. The error names the type and its library.
template <class Function>
[[nodiscard]] Status CallTypeGuarded(const NodeInterface& descriptor, const char* operation, const Function& function) {
  const RunningScope running({nullptr, nullptr, FindLibraryOf(descriptor)});
  const Status called = CallGuarded(operation, function);
  return called.IsError() ? NameType(descriptor, called) : called;
}

/// Makes a node. Null, with an error that names the type and its library, where the factory throws or answers null.
[[nodiscard]] HOST_TOOLS_API RefPtr<Node> CreateNode(const NodeInterface& descriptor, Status& status);

}  // namespace ScEng
