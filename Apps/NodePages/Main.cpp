// SPDX-License-Identifier: Apache-2.0
//
// value-pages: the pages of the node library, Docs/Nodes. Each is written from the node itself, a text by hand and the
// outputs of an example graph. The hints in the schema of graph documents come from the nodes as well. With --check
// nothing is written, and what is stale is named.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Apps/NodePages/FormatTable.h"
#include "Apps/NodePages/Page.h"
#include "Apps/NodePages/SchemaHints.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Files/ImageFile.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/NodeLibrary.h"

namespace {

namespace fs = std::filesystem;
using ScEng::Status;

// The schema of graph documents, from the root of the repository, and with hints, from the folder of the pages.
constexpr const char* kSchemaSource = "Host/Documents/graph.schema.in.json";
constexpr const char* kSchema = "../../Host/Documents/graph.schema.json";

// The page of the file formats, from the folder of the pages.
constexpr const char* kFormats = "../Files.md";

/// A folder for intermediate files, removed with its content.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (fs::temp_directory_path() / "value-pages-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code error;
    if (!path_.empty()) fs::remove_all(path_, error);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  [[nodiscard]] const fs::path& GetPath() const { return path_; }

 private:
  fs::path path_;
};

std::string ReadWhole(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

/// Everything under Docs/Nodes that the program writes, and whether it is so already.
class Pages {
 public:
  Pages(const fs::path& root, std::shared_ptr<const ScEng::NodeCatalog> catalog)
      : root_(root), folder_(root / "Docs" / "Nodes"), catalog_(std::move(catalog)) {}

  [[nodiscard]] const std::vector<std::string>& GetErrors() const { return errors_; }
  [[nodiscard]] const std::vector<std::string>& GetNotes() const { return notes_; }
  [[nodiscard]] std::size_t GetNumPages() const { return pages_.size(); }

  /// Reads the texts, runs the examples and writes all pages in memory. Errors are left in `GetErrors`.
  void Make() {
    ReadTexts();
    if (!errors_.empty()) return;
    for (NodePage& page : candidates_) {
      if (RunExample(page)) pages_.push_back(std::move(page));
    }
    const auto get_name = [&](const std::string& class_name) {
      const NodeInterface* descriptor = catalog_->FindTypeName(class_name);
      return descriptor == nullptr ? std::string() : descriptor->GetName();
    };
    for (const NodePage& page : pages_) {
      std::vector<std::string> unknown;
      files_[page.GetClass() + ".md"] = WritePage(page, get_name, unknown);
      for (const std::string& name : unknown) Fail(page.GetTextFile() + ": there is no node {" + name + "}");
    }
    files_["README.md"] = WriteIndex(pages_);
    const std::string schema = AddSchemaHints(ReadWhole(root_ / kSchemaSource), catalog_->GetDescriptors());
    if (schema.empty()) Fail(std::string(kSchemaSource) + " is missing, or has no place for hints");
    files_[kSchema] = schema;
    const std::string formats = AddFormatTable(ReadWhole(folder_ / kFormats));
    if (formats.empty()) Fail("Docs/Files.md is missing, or has no place for the table of formats");
    files_[kFormats] = formats;
    // After an error, what would have been made is not all known.
    if (errors_.empty()) FindStrangers();
  }

  /// The files that are not as `Make` made them.
  [[nodiscard]] std::vector<std::string> FindStale() const {
    std::vector<std::string> stale;
    for (const auto& [file, text] : files_) {
      if (!fs::exists(folder_ / file) || ReadWhole(folder_ / file) != text) stale.push_back(file);
    }
    for (const auto& [file, picture] : pictures_) {
      if (IsStale(file, *picture)) stale.push_back(file);
    }
    return stale;
  }

  Status Write(const std::vector<std::string>& stale) const {
    std::error_code error;
    fs::create_directories(folder_ / "Images", error);
    for (const std::string& file : stale) {
      const auto picture = pictures_.find(file);
      std::vector<std::string> notes;
      Status status = picture == pictures_.end()
                          ? ScEng::WriteWholeFile(folder_ / file, files_.at(file))
                          : ScEng::WriteImageFile(*picture->second, folder_ / file,
                                                  {.type = ScEng::SampleType::kUint8, .strips_metadata = true}, notes);
      if (status.IsError()) return status;
    }
    return {};
  }

 private:
  void Fail(const std::string& message) { errors_.push_back(message); }

  /// The folder of each node class, by the class's name: where its text is.
  [[nodiscard]] std::map<std::string, std::string> FindFolders() const {
    std::map<std::string, std::string> folders;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root_ / "Value" / "Nodes", error)) {
      if (entry.path().extension() != ".md") continue;
      folders[entry.path().stem()] = fs::relative(entry.path().parent_path(), root_, error).string();
    }
    return folders;
  }

  void ReadTexts() {
    const std::map<std::string, std::string> folders = FindFolders();
    std::set<std::string> classes;
    std::set<std::string> old_names;
    for (const NodeInterface* descriptor : catalog_->GetDescriptors()) {
      // The host's own types come from no library.
      if (descriptor->GetLibraryName().empty()) continue;
      NodePage page;
      page.descriptor = descriptor;
      page.node.Reset(descriptor->GetNodeFactory()->CreateNode());
      classes.insert(page.GetClass());
      const auto folder = folders.find(page.GetClass());
      if (folder == folders.end() || page.node->GetRecord() == nullptr) {
        Fail(page.GetClass() + (folder == folders.end()
                                    ? " has no text in a folder of Value/Nodes; Docs/AddANode.md says "
                                      "what it holds"
                                    : " has no record"));
        continue;
      }
      page.folder = folder->second;
      page.text = ReadNodeText(root_ / page.GetTextFile(), page.GetTextFile(), errors_);
      for (const auto& [old_name, current] : page.text.old_names) old_names.insert(old_name);
      old_names.insert(page.text.gone_names.begin(), page.text.gone_names.end());
      candidates_.push_back(std::move(page));
    }
    for (const auto& [name, folder] : folders) {
      if (!classes.contains(name)) Fail(folder + "/" + name + ".md belongs to no node; remove it");
    }
    if (!errors_.empty()) return;
    const std::vector<std::string> known(old_names.begin(), old_names.end());
    for (const NodePage& page : candidates_) {
      CheckNodeText(page.text, *page.node, known, page.GetTextFile(), errors_);
    }
  }

  /// Runs a node's graph and draws its pictures. A graph that cannot run is an error where the node has a page; a node
  /// without one that reports an error of its own has nothing to show yet and gets none.
  bool RunExample(const NodePage& page) {
    const std::string name = page.GetExampleFile();
    ScEng::GraphDocument document(catalog_);
    ScEng::Findings findings;
    document.Load(root_ / name, findings);
    const auto is_shown = [&](const std::string& id) {
      return document.FindNode(id)->GetNodeType() == page.descriptor->GetNodeType();
    };
    if (findings.errors.empty() && std::none_of(document.GetIds().begin(), document.GetIds().end(), is_shown)) {
      findings.errors.push_back("the graph has no " + page.GetClass());
    }
    std::map<std::string, fs::path> results;
    for (const PictureText& picture : page.text.pictures) {
      if (!findings.errors.empty() || results.contains(picture.source)) continue;
      const fs::path file = scratch_.GetPath() / (std::to_string(results.size()) + ".exr");
      document.RemoveOutputs(picture.source);
      const Status status = document.AddOutput(picture.source, file, ScEng::SampleType::kFloat);
      if (status.IsError()) findings.errors.push_back("show: " + status.GetMessage());
      results[picture.source] = file;
    }
    if (findings.errors.empty()) document.CheckComplete(findings);
    if (findings.errors.empty() && document.GetOutputFiles().size() != results.size()) {
      findings.errors.emplace_back("an output of the graph is not among the pictures of the text");
    }
    if (!findings.errors.empty()) {
      Fail(name + ": " + findings.errors.front());
      return false;
    }
    const ScEng::RunReport report = document.Run({});
    if (!report.findings.errors.empty()) {
      const std::string& error = report.findings.errors.front();
      if (report.failure == ScEng::RunFailure::kNode && !fs::exists(folder_ / (page.GetClass() + ".md"))) {
        notes_.push_back(page.GetClass() + " has no page: " + error);
      } else {
        Fail(name + ": " + error);
      }
      return false;
    }
    for (const PictureText& picture : page.text.pictures) {
      Status status;
      std::vector<std::string> notes;
      const auto image = ScEng::ReadImageFile(results[picture.source], {}, status, notes);
      if (!image) {
        Fail(name + ": " + picture.source + " has no image");
        return false;
      }
      pictures_[page.GetPictureFile(picture)] = DrawPicture(*image, picture.look);
    }
    return true;
  }

  /// Pages and pictures that belong to no node or are shown nowhere.
  void FindStrangers() {
    std::set<std::string> expected;
    for (const auto& [file, text] : files_) expected.insert(file);
    for (const auto& [file, picture] : pictures_) expected.insert(file);
    std::error_code error;
    for (const char* part : {"", "Images"}) {
      for (const fs::directory_entry& entry : fs::directory_iterator(folder_ / part, error)) {
        const std::string file = (part / entry.path().filename()).string();
        const std::string ending = entry.path().extension().string();
        const bool known_kind = ending == ".md" || ending == ".json" || ending == ".png";
        if (entry.is_regular_file(error) && known_kind && !expected.contains(file)) {
          Fail("Docs/Nodes/" + file + " belongs to no page of the library's nodes; remove it");
        }
      }
    }
  }

  [[nodiscard]] bool IsStale(const std::string& file, const Image& picture) const {
    if (!fs::exists(folder_ / file)) return true;
    Status status;
    std::vector<std::string> notes;
    const auto stored = ScEng::ReadImageFile(folder_ / file, {}, status, notes);
    return !stored || !LookAlike(*stored, picture);
  }

  fs::path root_;
  fs::path folder_;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  ScratchFolder scratch_;
  std::vector<NodePage> candidates_;
  std::vector<NodePage> pages_;
  std::map<std::string, std::string> files_;
  std::map<std::string, ImagePtr> pictures_;
  std::vector<std::string> errors_;
  std::vector<std::string> notes_;
};

std::shared_ptr<const ScEng::NodeCatalog> LoadCatalog(const fs::path& plugin, Status& status) {
  auto catalog = ScEng::CreateHostCatalog();
  auto library = ScEng::NodeLibrary::Load(plugin, status);
  if (library) status = catalog->AddLibrary(std::move(library));
  return catalog;
}

int Report(const std::string& message) {
  std::cerr << "value-pages: " << message << "\n";
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::string root = ".";
  std::error_code error;
  std::string plugin = (fs::read_symlink("/proc/self/exe", error).parent_path() / "Value.so").string();
  bool check = false;
  CLI::App app{"Writes the pages of the nodes, Docs/Nodes, with their pictures."};
  app.name("value-pages");
  app.add_option("--root", root, "The root of the repository (default: the working directory)")->type_name("DIR");
  app.add_option("--plugin", plugin, "The node library (default: the one beside the program)")->type_name("FILE");
  app.add_flag("--check", check, "Writes nothing; fails when a page or picture is stale");
  CLI11_PARSE(app, argc, argv);

  Status status;
  const auto catalog = LoadCatalog(plugin, status);
  if (status.IsError()) return Report(status.GetMessage());
  Pages pages(root, catalog);
  pages.Make();
  for (const std::string& note : pages.GetNotes()) std::cerr << "value-pages: note: " << note << "\n";
  for (const std::string& message : pages.GetErrors()) Report(message);
  if (!pages.GetErrors().empty()) return 1;

  const std::vector<std::string> stale = pages.FindStale();
  if (check && !stale.empty()) {
    const std::string others = stale.size() == 1 ? "" : " (and " + std::to_string(stale.size() - 1) + " more)";
    const std::string first = (fs::path("Docs/Nodes") / stale.front()).lexically_normal().string();
    return Report(first + " is missing or stale" + others + "; Docs/Nodes/make_pages renews it");
  }
  if (!check) status = pages.Write(stale);
  if (status.IsError()) return Report(status.GetMessage());
  std::cout << pages.GetNumPages() << " pages, " << stale.size() << " files written\n";
  return 0;
}
