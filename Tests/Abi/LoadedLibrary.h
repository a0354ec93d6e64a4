// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

class LibraryInterface;
class NodeInterface;

namespace Abi {

/// The built node library in this process, as a host has it: by file and by the names of its three entry points. The
/// file is closed with the object, so everything that it returned must be gone by then.
class LoadedLibrary {
 public:
  LoadedLibrary();
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  [[nodiscard]] bool IsLoaded() const { return handle_ != nullptr; }
  /// Closes the file before the object goes.
  void Unload();

  [[nodiscard]] LibraryInterface* GetLibraryInterface() const;
  [[nodiscard]] std::int32_t GetNumNodeInterfaces() const;
  [[nodiscard]] NodeInterface* GetNodeInterface(std::uint64_t index) const;
  /// All descriptors, each with the host's one reference.
  [[nodiscard]] std::vector<NodeInterface*> TakeDescriptors() const;

 private:
  void* Find(const char* name) const;

  void* handle_ = nullptr;
};

/// Whether the file is in the process, without loading it.
bool IsInProcess();

}  // namespace Abi
