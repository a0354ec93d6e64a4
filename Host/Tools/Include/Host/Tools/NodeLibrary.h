// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Host/Tools/Api.h"
#include "Host/Tools/LibraryInterface.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Util/RefCounter.h"
#include "Host/Util/Status.h"

namespace ScEng {

class LoadedCode;

/// A node library that is loaded in this process: its library object, its descriptors, and the file that holds them.
///
/// A library exports three functions with C linkage: `LibraryInterface* GetLibraryInterface()`,
/// `int GetNumNodeInterfaces()` and `NodeInterface* GetNodeInterface(std::uint64_t index)`, the last of which answers
/// null from the count on. Everything they return is new and belongs to the host. The file is unloaded when the last
/// reference to the `NodeLibrary` goes, so nodes and descriptors must be gone by then.
class HOST_TOOLS_API NodeLibrary {
 public:
  using GetLibraryInterfaceFunction = LibraryInterface* (*)();
  using GetNumNodeInterfacesFunction = std::int32_t (*)();
  using GetNodeInterfaceFunction = NodeInterface* (*)(std::uint64_t);

  /// Loads a library and reads its whole catalogue. Null, and an error in `status` that names the file and what is
  /// wrong with it, when the file cannot be loaded, does not export the three functions, does not keep their rules, or
  /// throws.
  static std::shared_ptr<NodeLibrary> Load(const std::filesystem::path& file, Status& status);

  ~NodeLibrary();
  NodeLibrary(const NodeLibrary&) = delete;
  NodeLibrary& operator=(const NodeLibrary&) = delete;

  [[nodiscard]] const std::filesystem::path& GetFile() const { return file_; }
  [[nodiscard]] const std::string& GetName() const { return name_; }
  [[nodiscard]] const std::vector<RefPtr<NodeInterface>>& GetDescriptors() const { return descriptors_; }

 private:
  NodeLibrary() = default;
  Status ReadCatalog();
  Status ReadDescriptor(std::int32_t index, std::int32_t count, GetNodeInterfaceFunction get_descriptor);

  std::filesystem::path file_;
  std::string name_;
  void* handle_ = nullptr;
  std::unique_ptr<LoadedCode> code_;
  std::vector<RefPtr<NodeInterface>> descriptors_;
};

/// The node types that a host offers: its own and those of the libraries it has loaded. Read-only once it is complete,
/// and then usable from several threads.
///
/// The names of a type are read once, when it is added: looking for one takes no time that grows with the catalogue and
/// calls no library.
class HOST_TOOLS_API NodeCatalog {
 public:
  /// Adds a descriptor of the host's own. Refused, with an error, when its numbers or its type name are taken, or it
  /// throws when it is asked for them. Whatever goes wrong, an exception of this function included, leaves the
  /// catalogue as it was.
  Status AddDescriptor(RefPtr<NodeInterface> descriptor);
  /// Adds all types of a library, or none and an error that names the library, the type that is taken, and the library
  /// that has it. A file that is in the catalogue already is ignored. `is_taken`, where it is given, tells an error
  /// that is due to a type of another library, or of the host's own, from one that is due to this library alone.
  Status AddLibrary(std::shared_ptr<NodeLibrary> library, bool* is_taken = nullptr);

  /// All descriptors, the host's own first, then library by library in index order.
  [[nodiscard]] std::vector<NodeInterface*> GetDescriptors() const;
  [[nodiscard]] const std::vector<std::shared_ptr<NodeLibrary>>& GetLibraries() const { return libraries_; }

  /// The descriptor of a type; null when the catalogue does not have it.
  [[nodiscard]] NodeInterface* Find(const NodeType& type) const;
  /// By the class name of its nodes.
  [[nodiscard]] NodeInterface* FindTypeName(const std::string& type_name) const;
  /// By what a person may write: class name, display name (either in any case) or the three numbers, separated by
  /// commas or blanks.
  [[nodiscard]] NodeInterface* FindWritten(const std::string& text) const;
  /// The class name or display name closest to a misspelt one, for messages; empty when nothing is close.
  [[nodiscard]] std::string Suggest(const std::string& text) const;

 private:
  struct Entry {
    RefPtr<NodeInterface> descriptor;
    std::string type_name;
    std::string name;
    /// Empty for a type of the host's own.
    std::string library;
  };

  /// The types and where to find each by what.
  struct Index {
    Status Add(const RefPtr<NodeInterface>& descriptor, const std::string& library, bool* is_taken = nullptr);
    /// Refuses a type whose numbers or name are taken.
    [[nodiscard]] Status CheckFree(const NodeType& type, const Entry& entry, bool* is_taken) const;
    [[nodiscard]] const Entry& FindEntry(const NodeInterface* descriptor) const;

    std::vector<Entry> entries;
    std::map<NodeType, NodeInterface*> by_type;
    std::unordered_map<std::string, NodeInterface*> by_type_name;
    // By class name and display name in small letters; of two types with one name, the earlier.
    std::unordered_map<std::string, NodeInterface*> by_written;
  };

  // The libraries are declared first, so that they are destroyed last.
  std::vector<std::shared_ptr<NodeLibrary>> libraries_;
  Index index_;
};

/// The entry of `words` that a misspelt word most likely means; empty when none is close.
HOST_TOOLS_API std::string FindClosest(const std::string& word, const std::vector<std::string>& words);

}  // namespace ScEng
