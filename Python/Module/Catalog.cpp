// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Catalog.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "Host/Nodes/HostNodes.h"
#include "Host/Util/HostModule.h"
#include "Python/Module/Errors.h"

namespace py = pybind11;
namespace fs = std::filesystem;

namespace ValuePython {
namespace {

using ScEng::NodeCatalog;
using ScEng::NodeLibrary;
using ScEng::Status;

Status AddLibrary(NodeCatalog& catalog, const fs::path& file) {
  Status status;
  auto library = NodeLibrary::Load(file, status);
  if (library) status = catalog.AddLibrary(std::move(library));
  return status;
}

std::vector<fs::path> FindLibraries(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (entry->path().extension() == ".so") files.push_back(entry->path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

fs::path FindOwnLibrary() {
  const fs::path library = ScEng::HostModule("HostTools", "the library of tools").GetFile();
  std::error_code error;
  const fs::path folder = fs::absolute(library, error).parent_path();
  // In an installation, and in a folder of builds.
  const fs::path places[] = {folder / "value" / "Value.so", folder.parent_path() / "bin" / "Value.so"};
  for (const fs::path& place : places) {
    if (fs::exists(place, error)) return place;
  }
  return places[0];
}

Catalog& Catalog::Get() {
  // Never destroyed: threads may evaluate nodes of its libraries until the process ends. The interpreter's lock guards
  // it, since the guard of a local static would be held while that lock is given away.
  static Catalog* catalog = nullptr;
  if (catalog != nullptr) return *catalog;
  catalog = new Catalog;
  if (const char* const folders = std::getenv("VALUE_PLUGIN_PATH")) catalog->LoadFolders(folders);
  return *catalog;
}

Catalog::Catalog() {
  auto types = ScEng::CreateHostCatalog();
  const Status status = AddLibrary(*types, FindOwnLibrary());
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  types_ = std::move(types);
}

void Catalog::LoadFolders(const std::string& folders) {
  const auto types = std::make_shared<NodeCatalog>(*types_);
  std::vector<std::string> notes;
  std::istringstream stream(folders);
  for (std::string folder; std::getline(stream, folder, ':');) {
    if (folder.empty()) continue;
    for (const fs::path& file : FindLibraries(folder)) {
      const Status status = AddLibrary(*types, file);
      // One bad file in a shared folder does not stop all work.
      if (status.IsError()) notes.push_back(status.GetMessage() + "; it is left out");
    }
  }
  types_ = types;
  Warn(notes);
}

const NodeInterface& Catalog::Find(const std::string& written) const {
  if (const NodeInterface* const found = types_->FindWritten(written)) return *found;
  const std::string closest = types_->Suggest(written);
  throw py::value_error("there is no node type \"" + written + "\"" +
                        (closest.empty() ? "; valuenodes.nodes() lists them" : "; the closest is \"" + closest + "\""));
}

void Catalog::Load(const fs::path& file) {
  const auto types = std::make_shared<NodeCatalog>(*types_);
  const Status status = AddLibrary(*types, file);
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  // Engines of other threads have the old one still, and descriptors count their references without regard to threads.
  old_types_.push_back(types_);
  types_ = types;
  ++generation_;
}

}  // namespace ValuePython
