// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/TypeGuard.h"

#include <string>

namespace ScEng {

const char* FindLibraryOf(const NodeInterface& descriptor) {
  // The table of virtual operations lies in the library that defines the class.
  return FindLibraryOf(*reinterpret_cast<const void* const*>(&descriptor));
}

Status NameType(const NodeInterface& descriptor, const Status& error) {
  std::string name;
  const Status named = CallGuarded("GetName", [&] { name = descriptor.GetName(); });
  std::string start = named.IsError() || name.empty() ? "a node" : "node \"" + name + "\"";
  if (const char* const library = FindLibraryOf(descriptor)) start += " of plug-in \"" + std::string(library) + "\"";
  return Status::Error(start + ": " + error.GetMessage());
}

RefPtr<Node> CreateNode(const NodeInterface& descriptor, Status& status) {
  RefPtr<Node> node;
  const Status created =
      CallTypeGuarded(descriptor, "CreateNode", [&] { node.Reset(descriptor.GetNodeFactory()->CreateNode()); });
  if (created.IsError()) {
    status = created;
  } else if (!node) {
    status = NameType(descriptor, Status::Error("CreateNode answers null instead of a node"));
  }
  return node;
}

}  // namespace ScEng
