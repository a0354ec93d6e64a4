// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Catalog.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "Host/Nodes/HostNodes.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/HostModule.h"
#include "Host/Validation/Examination.h"
#include "Host/Validation/ExaminedLibrary.h"
#include "Python/Module/Errors.h"
#include "Python/Module/Interruption.h"

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

/// The SHA-256 of a file's content in hexadecimal digits; empty where it cannot be read.
std::string HashOf(const fs::path& file) {
  try {
    const py::object content = py::module_::import("io").attr("open")(py::bytes(file.string()), "rb");
    const py::object hash = py::module_::import("hashlib").attr("file_digest")(content, "sha256").attr("hexdigest")();
    content.attr("close")();
    return hash.cast<std::string>();
  } catch (const py::error_already_set& error) {
    if (error.matches(PyExc_OSError)) return {};
    throw;
  }
}

/// Examines a library in a process of its own, unless one with the same content has passed before.
Status Examine(const fs::path& file) {
  std::error_code error;
  // Loading says better what is wrong with what is no file.
  if (!fs::is_regular_file(file, error)) return {};
  const ScEng::ExaminedLibrary examined(HashOf(file));
  if (examined.HasPassed()) return {};
  ScEng::ExaminationOptions options;
  options.library = file;
  Status status;
  Interruption interruption;
  interruption.Run([&] { status = ScEng::ExamineLibrary(options); });
  if (!status.IsError()) examined.NotePassed();
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
  if (catalog == nullptr) catalog = new Catalog;
  if (catalog->folders_ != Folders::kLoaded) catalog->LoadFolders();
  return *catalog;
}

Catalog::Catalog() {
  auto types = ScEng::CreateHostCatalog();
  const Status status = AddLibrary(*types, FindOwnLibrary());
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  types_ = std::move(types);
}

void Catalog::LoadFolders() {
  // A handler of a signal that comes while this thread loads them does with what there is.
  if (folders_ == Folders::kLoading && loader_ == std::this_thread::get_id()) return;
  while (folders_ == Folders::kLoading) {
    Interruption interruption;
    interruption.Run([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      ScEng::PollCancellation();
    });
  }
  if (folders_ == Folders::kLoaded) return;
  const char* const folders = std::getenv("VALUE_PLUGIN_PATH");
  folders_ = Folders::kLoading;
  loader_ = std::this_thread::get_id();
  std::vector<std::string> notes;
  try {
    if (folders != nullptr) notes = AddFolders(folders);
  } catch (...) {
    // Ctrl-C, for example: the next call begins again.
    folders_ = Folders::kNotLoaded;
    throw;
  }
  folders_ = Folders::kLoaded;
  Warn(notes);
}

std::vector<std::string> Catalog::AddFolders(const std::string& folders) {
  std::vector<fs::path> passed;
  std::vector<std::string> notes;
  // One bad file in a shared folder does not stop all work.
  const auto leave_out = [&](const Status& status) { notes.push_back(status.GetMessage() + "; it is left out"); };
  std::istringstream stream(folders);
  for (std::string folder; std::getline(stream, folder, ':');) {
    if (folder.empty()) continue;
    std::error_code error;
    static_cast<void>(fs::directory_iterator(folder, error));
    if (error) {
      notes.push_back("VALUE_PLUGIN_PATH: the folder \"" + folder + "\" cannot be read: " + error.message());
    }
    for (const fs::path& file : FindLibraries(folder)) {
      const Status status = Examine(file);
      if (status.IsError()) leave_out(status);
      if (!status.IsError()) passed.push_back(file);
    }
  }
  // Only now, as a handler of a signal may have added types in the meantime.
  const auto types = std::make_shared<NodeCatalog>(*types_);
  for (const fs::path& file : passed) {
    const Status status = AddLibrary(*types, file);
    if (status.IsError()) leave_out(status);
  }
  Exchange(types);
  return notes;
}

const NodeInterface& Catalog::Find(const std::string& written) const {
  if (const NodeInterface* const found = types_->FindWritten(written)) return *found;
  const std::string closest = types_->Suggest(written);
  const std::string hint = closest.empty() ? "valuenodes.nodes() lists them, and valuenodes.register adds a class"
                                           : "the closest is \"" + closest + "\"";
  throw py::value_error("there is no node type \"" + written + "\"; " + hint);
}

void Catalog::Load(const fs::path& file, bool is_trusted) {
  Status status = is_trusted ? Status() : Examine(file);
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  const auto types = std::make_shared<NodeCatalog>(*types_);
  status = AddLibrary(*types, file);
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  Exchange(types);
}

void Catalog::Exchange(std::shared_ptr<const NodeCatalog> types) {
  // Engines of other threads have the old one still, and descriptors count their references without regard to threads.
  old_types_.push_back(std::exchange(types_, std::move(types)));
  ++generation_;
}

void Catalog::CheckNames(const NodeInterface& descriptor, const NodeInterface* replaced) const {
  for (const std::string& name : {descriptor.GetNodeFactory()->GetTypeName(), descriptor.GetName()}) {
    const NodeInterface* const found = types_->FindWritten(name);
    if (found == nullptr || found == replaced) continue;
    const std::string library = found->GetLibraryName();
    const bool is_of_python = std::any_of(registered_.begin(), registered_.end(),
                                          [&](const auto& registered) { return registered.Get() == found; });
    throw py::value_error("the name \"" + name + "\" is taken by the node type " +
                          found->GetNodeFactory()->GetTypeName() +
                          (is_of_python      ? " of another class; register with replace=True, or choose another name"
                           : library.empty() ? " of the host; choose another name"
                                             : " of the library " + library + "; choose another name"));
  }
}

void Catalog::Register(ScEng::RefPtr<NodeInterface> descriptor, bool replaces) {
  const std::string name = descriptor->GetNodeFactory()->GetTypeName();
  const auto same = std::find_if(registered_.begin(), registered_.end(), [&](const auto& registered) {
    return replaces && registered->GetNodeFactory()->GetTypeName() == name;
  });
  const bool makes_room = same != registered_.end();
  CheckNames(*descriptor, makes_room ? same->Get() : nullptr);
  auto registered = registered_;
  if (makes_room) registered.erase(registered.begin() + (same - registered_.begin()));
  registered.push_back(descriptor);

  Status status;
  auto types = makes_room ? ScEng::CreateHostCatalog() : std::make_shared<NodeCatalog>(*types_);
  if (makes_room) {
    for (const auto& library : types_->GetLibraries()) {
      if (!status.IsError()) status = types->AddLibrary(library);
    }
  }
  for (auto added = makes_room ? registered.begin() : registered.end() - 1; added != registered.end(); ++added) {
    if (!status.IsError()) status = types->AddDescriptor(*added);
  }
  if (status.IsError()) throw py::value_error(status.GetMessage());
  registered_ = std::move(registered);
  Exchange(types);
}

}  // namespace ValuePython
