// SPDX-License-Identifier: Apache-2.0
// A node library that throws an exception of its own type, whose text is gone with the library, in the one operation of
// its catalogue that the build names by VALUE_THROWS_IN.

#include <exception>
#include <string_view>

#include "Tests/Libraries/LibraryParts.h"

namespace {

class OwnException : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "the shelf is bare\nand the door is shut"; }
};

constexpr std::string_view kThrowsIn = VALUE_THROWS_IN;

void Arrive(std::string_view operation) {
  if (operation == kThrowsIn) throw OwnException();
}

class Library : public LibraryInterface {
 public:
  [[nodiscard]] std::string GetName() const override {
    Arrive("LibraryName");
    return "Parts";
  }
};

class Factory : public PartsFactory {
 public:
  using PartsFactory::PartsFactory;
  [[nodiscard]] NodeType GetNodeType() const override {
    Arrive("FactoryType");
    return PartsFactory::GetNodeType();
  }
  [[nodiscard]] Node* CreateNode() const override {
    Arrive("CreateNode");
    return PartsFactory::CreateNode();
  }
  [[nodiscard]] std::string GetTypeName() const override {
    Arrive("TypeName");
    return PartsFactory::GetTypeName();
  }
};

class Descriptor : public PartsDescriptor {
 public:
  explicit Descriptor(NodeType type) : PartsDescriptor(type), own_factory_(type) {}
  [[nodiscard]] NodeFactory* GetNodeFactory() const override {
    Arrive("Factory");
    return &own_factory_;
  }
  [[nodiscard]] std::string GetName() const override {
    Arrive("Name");
    return PartsDescriptor::GetName();
  }
  [[nodiscard]] unsigned GetGroupCode() const override {
    Arrive("GroupCode");
    return PartsDescriptor::GetGroupCode();
  }
  [[nodiscard]] std::string GetIconPath() const override {
    Arrive("IconPath");
    return PartsDescriptor::GetIconPath();
  }

 private:
  mutable Factory own_factory_;
};

}  // namespace

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() {
  Arrive("Library");
  return new Library;
}
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() {
  Arrive("Count");
  return 2;
}
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  if (index == 0) return new PartsDescriptor(NodeType(900, 2, 1));
  return index == 1 ? new Descriptor(NodeType(900, 2, 2)) : nullptr;
}
