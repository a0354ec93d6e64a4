// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Host/Tools/NodeLibrary.h"

namespace ValuePython {

/// The node types that there are: the host's own, those of the library that comes with it, those of the libraries in
/// the folders of VALUE_PLUGIN_PATH, and of those that were loaded since. Used with the interpreter's lock.
class Catalog {
 public:
  /// Loads the libraries at the first call. Other threads wait until those of the folders are there.
  static Catalog& Get();

  [[nodiscard]] const std::shared_ptr<const ScEng::NodeCatalog>& GetTypes() const { return types_; }
  /// Another number whenever types have been added.
  [[nodiscard]] std::uint64_t GetGeneration() const { return generation_; }

  /// The type of that class name, display name or three numbers; a ValueError that names the closest where there is
  /// none.
  [[nodiscard]] const NodeInterface& Find(const std::string& written) const;
  /// Adds the types of a library, which is examined first unless it is trusted.
  void Load(const std::filesystem::path& file, bool is_trusted);
  /// Adds a type that a class of Python is. A ValueError where its class name, display name or numbers are taken; with
  /// `replaces`, an earlier class of Python with that class name makes room. What exists already keeps it.
  void Register(ScEng::RefPtr<NodeInterface> descriptor, bool replaces);

 private:
  Catalog();
  enum class Folders { kNotLoaded, kLoading, kLoaded };

  void LoadFolders();
  /// Answers what there is to say of libraries that are left out.
  std::vector<std::string> AddFolders(const std::string& folders);
  void CheckNames(const NodeInterface& descriptor, const NodeInterface* replaced) const;
  void Exchange(std::shared_ptr<const ScEng::NodeCatalog> types);

  std::shared_ptr<const ScEng::NodeCatalog> types_;
  std::vector<std::shared_ptr<const ScEng::NodeCatalog>> old_types_;
  /// The types that classes of Python are.
  std::vector<ScEng::RefPtr<NodeInterface>> registered_;
  std::uint64_t generation_ = 0;
  Folders folders_ = Folders::kNotLoaded;
  /// The one that loads them.
  std::thread::id loader_;
};

/// The node library that comes with the host; where it would be, if there is none.
std::filesystem::path FindOwnLibrary();

}  // namespace ValuePython
