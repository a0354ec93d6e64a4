// SPDX-License-Identifier: Apache-2.0
#include "Tests/Abi/LoadedLibrary.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "Host/Tools/NodeInterface.h"

namespace Abi {

LoadedLibrary::LoadedLibrary() : handle_(dlopen(VALUE_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL)) {
  EXPECT_NE(handle_, nullptr) << dlerror();
}

LoadedLibrary::~LoadedLibrary() { Unload(); }

void LoadedLibrary::Unload() {
  if (handle_ != nullptr) {
    EXPECT_EQ(dlclose(handle_), 0);
  }
  handle_ = nullptr;
}

void* LoadedLibrary::Find(const char* name) const { return dlsym(handle_, name); }

LibraryInterface* LoadedLibrary::GetLibraryInterface() const {
  return reinterpret_cast<LibraryInterface* (*)()>(Find("GetLibraryInterface"))();
}

std::int32_t LoadedLibrary::GetNumNodeInterfaces() const {
  return reinterpret_cast<std::int32_t (*)()>(Find("GetNumNodeInterfaces"))();
}

NodeInterface* LoadedLibrary::GetNodeInterface(std::uint64_t index) const {
  return reinterpret_cast<NodeInterface* (*)(std::uint64_t)>(Find("GetNodeInterface"))(index);
}

std::vector<NodeInterface*> LoadedLibrary::TakeDescriptors() const {
  std::vector<NodeInterface*> descriptors;
  for (std::int32_t index = 0; index < GetNumNodeInterfaces(); ++index) {
    descriptors.push_back(GetNodeInterface(static_cast<std::uint64_t>(index)));
    descriptors.back()->AddRef();
  }
  return descriptors;
}

bool IsInProcess() {
  void* handle = dlopen(VALUE_LIBRARY_FILE, RTLD_NOW | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

}  // namespace Abi
