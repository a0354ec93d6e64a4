// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/Status.h"

/// Which node libraries a command loads, and how.
struct PluginOptions {
  std::vector<std::string> files;
  /// Leaves out the program's own library and the folders of VALUE_PLUGIN_PATH.
  bool no_defaults = false;
  /// Loads libraries without examining them first.
  bool trusts = false;
};

/// A node library that was looked for.
struct FoundPlugin {
  enum class Source { kOwn, kFolder, kOption };
  enum class Examination { kNone, kOwn, kTrusted, kPassed, kRemembered, kFailed };

  std::filesystem::path file;
  Source source = Source::kOption;
  Examination examination = Examination::kNone;
  /// Why it is left out, in one line that names it; empty where it is loaded.
  std::string problem;
  /// Whether it is left out because another library offers one of its types.
  bool is_clash = false;
  /// Null where it is left out.
  std::shared_ptr<ScEng::NodeLibrary> library;
};

/// A folder of VALUE_PLUGIN_PATH.
struct PluginFolder {
  std::filesystem::path folder;
  std::size_t num_libraries = 0;
  /// Why nothing is looked for in it.
  std::string problem;
};

/// Finds node libraries and loads them: the one beside the program, those in the folders of VALUE_PLUGIN_PATH, sorted
/// by name, and those that the command line names, in this order. One file counts once, wherever it is found.
///
/// A library in a folder that cannot be loaded is left out with a note, so that one bad file in a shared folder does
/// not stop all work. One that the command line names is an error, and so are two libraries that offer one node type.
class PluginSearch {
 public:
  explicit PluginSearch(const PluginOptions& options);

  /// Adds the types of all libraries to the catalogue. Goes on after an error, and answers the first.
  ScEng::Status LoadInto(ScEng::NodeCatalog& catalog);

  /// Whether a type is of a library that was asked for, by the command line or as the program's own, rather than found
  /// in a folder.
  [[nodiscard]] bool IsNamed(const NodeInterface& descriptor) const;
  [[nodiscard]] const std::vector<FoundPlugin>& GetPlugins() const { return plugins_; }
  [[nodiscard]] const std::vector<PluginFolder>& GetFolders() const { return folders_; }
  /// What was left out, and why, where that is no error.
  [[nodiscard]] const std::vector<std::string>& GetNotes() const { return notes_; }

 private:
  void FindInFolders(const std::string& folders);
  void FindIn(PluginFolder& folder);
  void Add(const std::filesystem::path& file, FoundPlugin::Source source);
  ScEng::Status Load(FoundPlugin& plugin, ScEng::NodeCatalog& catalog) const;

  bool trusts_;
  /// The places in the list, by file system and number of the file.
  std::map<std::pair<std::uint64_t, std::uint64_t>, std::size_t> known_;
  std::vector<FoundPlugin> plugins_;
  std::vector<PluginFolder> folders_;
  std::vector<std::string> notes_;
};
