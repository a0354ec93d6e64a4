// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/NodeLibrary.h"

#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <exception>
#include <limits>
#include <numeric>
#include <sstream>
#include <system_error>
#include <utility>

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

std::size_t GetEditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row[b.size()];
}

}  // namespace

std::shared_ptr<NodeLibrary> NodeLibrary::Load(const std::filesystem::path& file, Status& status) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::weakly_canonical(file, error);
  if (error) absolute = std::filesystem::absolute(file, error);
  if (!std::filesystem::is_regular_file(absolute, error)) {
    status = Status::Error("plug-in \"" + file.string() + "\": there is no such file");
    return nullptr;
  }
  std::shared_ptr<NodeLibrary> library(new NodeLibrary);
  library->file_ = absolute;
  library->handle_ = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library->handle_ == nullptr) {
    const char* reason = dlerror();
    status = Status::Error("plug-in \"" + file.string() + "\" cannot be loaded: " + (reason ? reason : "unknown"));
    return nullptr;
  }
  try {
    status = library->ReadCatalog();
  } catch (const std::exception& thrown) {
    status = Status::Error(std::string("an entry point threw an exception: ") + thrown.what());
  } catch (...) {
    status = Status::Error("an entry point threw an exception");
  }
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

  LibraryInterface* const interface = get_library();
  if (interface == nullptr) return Status::Error("GetLibraryInterface answers null instead of a library object");
  KeepForever(interface);
  name_ = interface->GetName();

  const std::int32_t count = get_count();
  if (count < 0 || count > kMostNodeTypes) {
    return Status::Error("GetNumNodeInterfaces answers " + std::to_string(count) + ", which is no count of node types");
  }
  for (std::int32_t index = 0; index < count; ++index) {
    const RefPtr<NodeInterface> descriptor(get_descriptor(static_cast<std::uint64_t>(index)));
    const std::string which = "GetNodeInterface(" + std::to_string(index) + ")";
    if (!descriptor) {
      return Status::Error(which + " answers null although GetNumNodeInterfaces answers " + std::to_string(count));
    }
    const NodeFactory* factory = descriptor->GetNodeFactory();
    if (factory == nullptr) return Status::Error(which + " answers a descriptor without a factory");
    if (factory->GetNodeType() != descriptor->GetNodeType()) {
      return Status::Error(which + " answers a descriptor of type " + descriptor->GetNodeType().ToString() +
                           " with a factory of type " + factory->GetNodeType().ToString());
    }
    descriptors_.push_back(descriptor);
  }
  return {};
}

NodeLibrary::~NodeLibrary() {
  descriptors_.clear();
  if (handle_ != nullptr) dlclose(handle_);
}

Status NodeCatalog::Check(const NodeInterface& descriptor) const {
  const std::string type_name = descriptor.GetNodeFactory()->GetTypeName();
  if (const NodeInterface* other = Find(descriptor.GetNodeType())) {
    return Status::Error("node type " + type_name + " has the numbers " + descriptor.GetNodeType().ToString() +
                         ", which " + other->GetNodeFactory()->GetTypeName() + " has already");
  }
  if (FindTypeName(type_name) != nullptr) {
    return Status::Error("node type " + type_name + " is in the catalogue already");
  }
  return {};
}

Status NodeCatalog::AddDescriptor(RefPtr<NodeInterface> descriptor) {
  Status status = Check(*descriptor);
  if (!status.IsError()) descriptors_.push_back(std::move(descriptor));
  return status;
}

Status NodeCatalog::AddLibrary(std::shared_ptr<NodeLibrary> library) {
  for (const auto& loaded : libraries_) {
    if (loaded->GetFile() == library->GetFile()) return {};
  }
  const std::size_t before = descriptors_.size();
  for (const auto& descriptor : library->GetDescriptors()) {
    const Status status = AddDescriptor(descriptor);
    if (status.IsError()) {
      descriptors_.resize(before);
      return Status::Error("plug-in \"" + library->GetFile().string() + "\": " + status.GetMessage());
    }
  }
  libraries_.push_back(std::move(library));
  return {};
}

std::vector<NodeInterface*> NodeCatalog::GetDescriptors() const {
  std::vector<NodeInterface*> descriptors;
  for (const auto& descriptor : descriptors_) descriptors.push_back(descriptor.Get());
  return descriptors;
}

NodeInterface* NodeCatalog::Find(const NodeType& type) const {
  for (const auto& descriptor : descriptors_) {
    if (descriptor->GetNodeType() == type) return descriptor.Get();
  }
  return nullptr;
}

NodeInterface* NodeCatalog::FindTypeName(const std::string& type_name) const {
  for (const auto& descriptor : descriptors_) {
    if (descriptor->GetNodeFactory()->GetTypeName() == type_name) return descriptor.Get();
  }
  return nullptr;
}

NodeInterface* NodeCatalog::FindWritten(const std::string& text) const {
  NodeType type;
  if (ReadNumbers(text, type)) return Find(type);
  const std::string lower = ToLower(text);
  for (const auto& descriptor : descriptors_) {
    if (ToLower(descriptor->GetNodeFactory()->GetTypeName()) == lower || ToLower(descriptor->GetName()) == lower) {
      return descriptor.Get();
    }
  }
  return nullptr;
}

std::string NodeCatalog::Suggest(const std::string& text) const {
  std::vector<std::string> names;
  for (const auto& descriptor : descriptors_) {
    names.push_back(descriptor->GetName());
    names.push_back(descriptor->GetNodeFactory()->GetTypeName());
  }
  return FindClosest(text, names);
}

std::string FindClosest(const std::string& word, const std::vector<std::string>& words) {
  std::string closest;
  std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : words) {
    const std::size_t distance = GetEditDistance(ToLower(word), ToLower(candidate));
    if (distance < least) {
      least = distance;
      closest = candidate;
    }
  }
  return closest;
}

}  // namespace ScEng
