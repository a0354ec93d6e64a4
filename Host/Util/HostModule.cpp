// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/HostModule.h"

#include <dlfcn.h>

#include <system_error>
#include <utility>

namespace ScEng {
namespace {

// An object of this library: its address tells the dynamic linker which file is asked for.
const char kOwnObject = 0;

/// The folder of modules in an installation, below that of the libraries.
constexpr const char* kModuleFolder = "value";

/// What follows "libHostUtil.so" in the name of this library: "" or, for example, ".0.2". Libraries of one release
/// share it, and an installation without headers has them under no other name.
std::string VersionOf(const std::filesystem::path& own_file) {
  const std::string name = own_file.filename().string();
  const std::string start = "libHostUtil.so";
  return name.compare(0, start.size(), start) == 0 ? name.substr(start.size()) : std::string();
}

/// Where the file lies. The dynamic linker may know the folder by a link, /lib for /usr/lib, from which what lies
/// beside the real one is not found.
std::filesystem::path FolderOf(const std::filesystem::path& file) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::canonical(file.parent_path(), error);
  return error ? file.parent_path() : folder;
}

/// The file of this library; empty where it is not known.
std::filesystem::path FindOwnFile() {
  Dl_info self{};
  if (dladdr(&kOwnObject, &self) == 0 || self.dli_fname == nullptr) return {};
  return self.dli_fname;
}

}  // namespace

HostModule::HostModule(const std::string& name, std::string title) : title_(std::move(title)) {
  const std::filesystem::path own_file = FindOwnFile();
  if (own_file.empty()) {
    problem_ = title_ + " cannot be loaded: the folder of the host's libraries is unknown";
    return;
  }
  const std::filesystem::path folder = FolderOf(own_file);
  const std::string file_name = "lib" + name + ".so";
  const std::filesystem::path places[] = {folder / (file_name + VersionOf(own_file)), folder / file_name,
                                          folder / kModuleFolder / file_name};
  for (const std::filesystem::path& place : places) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(place, error)) continue;
    file_ = place;
    return;
  }
  file_ = folder / file_name;
  problem_ = title_ + " cannot be loaded: there is no " + file_.string();
}

void* HostModule::LoadAddress(const char* entry_point) {
  if (!problem_.empty()) return nullptr;
  void* handle = dlopen(file_.c_str(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
  void* address = handle == nullptr ? nullptr : dlsym(handle, entry_point);
  if (address == nullptr) {
    const char* reason = dlerror();
    problem_ = title_ + " cannot be loaded: " + (reason != nullptr ? reason : "the reason is unknown");
  }
  return address;
}

std::filesystem::path FindHostProgram(const std::string& name, const std::filesystem::path& from_libraries) {
  const std::filesystem::path own_file = FindOwnFile();
  if (own_file.empty()) return {};
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::absolute(FolderOf(own_file), error);
  std::filesystem::path beside = folder / name;
  if (std::filesystem::exists(beside, error)) return beside;
  return (folder / from_libraries).lexically_normal();
}

}  // namespace ScEng
