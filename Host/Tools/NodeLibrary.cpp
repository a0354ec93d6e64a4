// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/NodeLibrary.h"

#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <limits>
#include <sstream>
#include <system_error>
#include <utility>

#include "Host/Tools/Guard.h"
#include "Host/Tools/LoadProblem.h"
#include "Host/Tools/LoadedCode.h"
#include "Host/Tools/RunningCall.h"
#include "Host/Util/ClosestName.h"

namespace ScEng {
namespace {

// More types than any library has: beyond it the count is taken for garbage.
constexpr std::int32_t kMostNodeTypes = 100000;

template <class Function>
Function FindExport(void* handle, const char* name) {
  return reinterpret_cast<Function>(dlsym(handle, name));
}

/// Keeps a library object for the rest of the process. It has no virtual destructor, so the host cannot destroy it.
void KeepForever(LibraryInterface* library) {
  static auto& kept = *new std::vector<LibraryInterface*>;
  kept.push_back(library);
}

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

/// Reads "10, 320, 5", "10 320 5" or "[10,320,5]".
bool ReadNumbers(const std::string& text, NodeType& type) {
  std::string spaced = text;
  std::replace_if(
      spaced.begin(), spaced.end(), [](char letter) { return letter == ',' || letter == '[' || letter == ']'; }, ' ');
  if (spaced.find_first_not_of("0123456789 ") != std::string::npos) return false;
  std::istringstream stream(spaced);
  unsigned numbers[3];
  std::string rest;
  if (!(stream >> numbers[0] >> numbers[1] >> numbers[2]) || stream >> rest) return false;
  type = NodeType(numbers[0], numbers[1], numbers[2]);
  return true;
}

/// Where the type that is in the way comes from.
std::string WhereOf(const std::string& library) { return library.empty() ? "" : " of \"" + library + "\""; }

}  // namespace

std::shared_ptr<NodeLibrary> NodeLibrary::Load(const std::filesystem::path& file, Status& status) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::weakly_canonical(file, error);
  if (error) absolute = std::filesystem::absolute(file, error);
  if (!std::filesystem::is_regular_file(absolute, error)) {
    status = Status::Error("plug-in \"" + file.string() + "\": " +
                           (std::filesystem::exists(absolute, error) ? "it is not a file" : "there is no such file"));
    return nullptr;
  }
  std::shared_ptr<NodeLibrary> library(new NodeLibrary);
  library->file_ = absolute;
  const RunningScope running({"its loading", nullptr, library->file_.c_str()});
  library->handle_ = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library->handle_ == nullptr) {
    status = Status::Error("plug-in \"" + file.string() + "\" cannot be loaded: " + DescribeLoadProblem(absolute));
    return nullptr;
  }
  library->code_ = std::make_unique<LoadedCode>();
  library->code_->Note(library->handle_, absolute);
  status = library->ReadCatalog();
  if (status.IsError()) {
    status = Status::Error("plug-in \"" + file.string() + "\": " + status.GetMessage());
    return nullptr;
  }
  return library;
}

Status NodeLibrary::ReadCatalog() {
  const auto get_library = FindExport<GetLibraryInterfaceFunction>(handle_, "GetLibraryInterface");
  const auto get_count = FindExport<GetNumNodeInterfacesFunction>(handle_, "GetNumNodeInterfaces");
  const auto get_descriptor = FindExport<GetNodeInterfaceFunction>(handle_, "GetNodeInterface");
  if (get_library == nullptr || get_count == nullptr || get_descriptor == nullptr) {
    const char* missing = get_library == nullptr ? "GetLibraryInterface"
                          : get_count == nullptr ? "GetNumNodeInterfaces"
                                                 : "GetNodeInterface";
    return Status::Error(std::string("it does not export ") + missing + ", so it is not a node library");
  }

  // Each call into the library is guarded, and the first that throws ends the reading.
  Status status;
  LibraryInterface* const interface =
      CallGuarded<LibraryInterface*>("GetLibraryInterface", status, nullptr, [&] { return get_library(); });
  if (status.IsError()) return status;
  if (interface == nullptr) return Status::Error("GetLibraryInterface answers null instead of a library object");
  KeepForever(interface);
  status = CallGuarded("the library object's GetName", [&] { name_ = interface->GetName(); });
  if (status.IsError()) return status;

  const auto count = CallGuarded<std::int32_t>("GetNumNodeInterfaces", status, 0, [&] { return get_count(); });
  if (status.IsError()) return status;
  if (count < 0 || count > kMostNodeTypes) {
    return Status::Error("GetNumNodeInterfaces answers " + std::to_string(count) +
                         ", which cannot be a number of node types");
  }
  for (std::int32_t index = 0; index < count; ++index) {
    status = ReadDescriptor(index, count, get_descriptor);
    if (status.IsError()) return status;
  }
  return {};
}

Status NodeLibrary::ReadDescriptor(std::int32_t index, std::int32_t count, GetNodeInterfaceFunction get_descriptor) {
  const std::string which = "GetNodeInterface(" + std::to_string(index) + ")";
  Status status;
  const RefPtr<NodeInterface> descriptor(CallGuarded<NodeInterface*>(
      which.c_str(), status, nullptr, [&] { return get_descriptor(static_cast<std::uint64_t>(index)); }));
  if (status.IsError()) return status;
  if (!descriptor) {
    return Status::Error(which + " answers null although GetNumNodeInterfaces answers " + std::to_string(count));
  }
  const NodeFactory* const factory =
      CallGuarded<const NodeFactory*>("GetNodeFactory", status, nullptr, [&] { return descriptor->GetNodeFactory(); });
  if (!status.IsError() && factory == nullptr) return Status::Error(which + " answers a descriptor without a factory");
  NodeType of_factory;
  NodeType of_descriptor;
  if (!status.IsError()) {
    status = CallGuarded("GetNodeType", [&] {
      of_factory = factory->GetNodeType();
      of_descriptor = descriptor->GetNodeType();
    });
  }
  if (status.IsError()) return Status::Error(which + ": " + status.GetMessage());
  if (of_factory != of_descriptor) {
    return Status::Error(which + " answers a descriptor of type " + of_descriptor.ToString() +
                         " with a factory of type " + of_factory.ToString());
  }
  descriptors_.push_back(descriptor);
  return {};
}

NodeLibrary::~NodeLibrary() {
  const RunningScope running({"its unloading", nullptr, file_.c_str()});
  descriptors_.clear();
  if (handle_ != nullptr) dlclose(handle_);
}

const NodeCatalog::Entry& NodeCatalog::Index::FindEntry(const NodeInterface* descriptor) const {
  return *std::find_if(entries.begin(), entries.end(),
                       [&](const Entry& candidate) { return candidate.descriptor.Get() == descriptor; });
}

Status NodeCatalog::Index::CheckFree(const NodeType& type, const Entry& entry, bool* is_taken) const {
  const auto same_numbers = by_type.find(type);
  const auto same_name = by_type_name.find(entry.type_name);
  if (same_numbers == by_type.end() && same_name == by_type_name.end()) return {};
  const bool has_same_numbers = same_numbers != by_type.end();
  const Entry& owner = FindEntry(has_same_numbers ? same_numbers->second : same_name->second);
  if (is_taken != nullptr) *is_taken = owner.library != entry.library;
  return Status::Error("node type " + entry.type_name +
                       (has_same_numbers ? " has the numbers " + type.ToString() + ", which " + owner.type_name +
                                               WhereOf(owner.library) + " has already"
                                         : " is in the catalogue already" + WhereOf(owner.library)));
}

Status NodeCatalog::Index::Add(const RefPtr<NodeInterface>& descriptor, const std::string& library, bool* is_taken) {
  Entry entry;
  entry.descriptor = descriptor;
  entry.library = library;
  NodeType type;
  Status status = CallGuarded("GetNodeType", [&] { type = descriptor->GetNodeType(); });
  if (!status.IsError()) status = CallGuarded("GetName", [&] { entry.name = descriptor->GetName(); });
  if (!status.IsError()) {
    status = CallGuarded("GetTypeName", [&] { entry.type_name = descriptor->GetNodeFactory()->GetTypeName(); });
  }
  if (status.IsError()) return Status::Error("node type " + type.ToString() + ": " + status.GetMessage());

  status = CheckFree(type, entry, is_taken);
  if (status.IsError()) return status;
  by_type_name.emplace(entry.type_name, descriptor.Get());
  by_type.emplace(type, descriptor.Get());
  by_written.emplace(ToLower(entry.type_name), descriptor.Get());
  by_written.emplace(ToLower(entry.name), descriptor.Get());
  entries.push_back(std::move(entry));
  return {};
}

Status NodeCatalog::AddDescriptor(RefPtr<NodeInterface> descriptor) {
  Index next = index_;
  Status status = next.Add(descriptor, {});
  if (!status.IsError()) std::swap(index_, next);
  return status;
}

Status NodeCatalog::AddLibrary(std::shared_ptr<NodeLibrary> library, bool* is_taken) {
  if (is_taken != nullptr) *is_taken = false;
  for (const auto& loaded : libraries_) {
    if (loaded->GetFile() == library->GetFile()) return {};
  }
  Index next = index_;
  for (const auto& descriptor : library->GetDescriptors()) {
    const Status status = next.Add(descriptor, library->GetFile().string(), is_taken);
    if (status.IsError()) {
      return Status::Error("plug-in \"" + library->GetFile().string() + "\": " + status.GetMessage());
    }
  }
  libraries_.push_back(std::move(library));
  std::swap(index_, next);
  return {};
}

std::vector<NodeInterface*> NodeCatalog::GetDescriptors() const {
  std::vector<NodeInterface*> descriptors;
  descriptors.reserve(index_.entries.size());
  for (const Entry& entry : index_.entries) descriptors.push_back(entry.descriptor.Get());
  return descriptors;
}

NodeInterface* NodeCatalog::Find(const NodeType& type) const {
  const auto found = index_.by_type.find(type);
  return found == index_.by_type.end() ? nullptr : found->second;
}

NodeInterface* NodeCatalog::FindTypeName(const std::string& type_name) const {
  const auto found = index_.by_type_name.find(type_name);
  return found == index_.by_type_name.end() ? nullptr : found->second;
}

NodeInterface* NodeCatalog::FindWritten(const std::string& text) const {
  NodeType type;
  if (ReadNumbers(text, type)) return Find(type);
  const auto found = index_.by_written.find(ToLower(text));
  return found == index_.by_written.end() ? nullptr : found->second;
}

std::string NodeCatalog::Suggest(const std::string& text) const {
  std::vector<std::string> names;
  for (const Entry& entry : index_.entries) {
    names.push_back(entry.name);
    names.push_back(entry.type_name);
  }
  return FindClosest(text, names);
}

std::string FindClosest(const std::string& word, const std::vector<std::string>& words) {
  std::vector<std::string> closest = FindClosestNames(word, words, 1);
  return closest.empty() ? std::string() : std::move(closest.front());
}

}  // namespace ScEng
