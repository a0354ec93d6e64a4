// SPDX-License-Identifier: Apache-2.0
// A node library whose names have several lines, control characters and far too many characters, and whose attribute
// is wrong, so that there is a failure that speaks of it.

#include <string>

#include "Tests/Libraries/LibraryParts.h"

namespace {

std::string MakeName(const std::string& start) {
  return start + "\nok   forged (1 node type)\n\x1b[2J" + std::string(20000, 'x') + "\rend";
}

class Library : public LibraryInterface {
 public:
  [[nodiscard]] std::string GetName() const override { return MakeName("Library"); }
};

class BadNode : public PartsNode {
 public:
  BadNode() : PartsNode(NodeType(900, 1, 7)) {
    attributes_ = {ScEng::RefPtr<Attribute>(new Attribute(this, 0, MakeName("level"), 4.0, 0.0, 1.0, 0.1, 2))};
    UpdateInplugsAndOutplugs();
  }
};

class Factory : public PartsFactory {
 public:
  using PartsFactory::PartsFactory;
  [[nodiscard]] Node* CreateNode() const override { return new BadNode; }
  [[nodiscard]] std::string GetTypeName() const override { return MakeName("Type"); }
};

class Descriptor : public PartsDescriptor {
 public:
  Descriptor() : PartsDescriptor(NodeType(900, 1, 7)), own_factory_(NodeType(900, 1, 7)) {}
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &own_factory_; }
  [[nodiscard]] std::string GetName() const override { return MakeName("Display"); }

 private:
  mutable Factory own_factory_;
};

}  // namespace

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return new Library; }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) { return index == 0 ? new Descriptor : nullptr; }
