// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/HostModule.h"

#include <dlfcn.h>

#include <system_error>
#include <utility>

namespace ScEng {
namespace {

// An object of this library: its address tells the dynamic linker which file is asked for.
const char kOwnObject = 0;

}  // namespace

HostModule::HostModule(const std::string& name, std::string title) : title_(std::move(title)) {
  Dl_info self{};
  if (dladdr(&kOwnObject, &self) == 0 || self.dli_fname == nullptr) {
    problem_ = title_ + " cannot be loaded: the folder of the host's libraries is unknown";
    return;
  }
  file_ = std::filesystem::path(self.dli_fname).parent_path() / ("lib" + name + ".so");
  std::error_code error;
  if (!std::filesystem::is_regular_file(file_, error)) {
    problem_ = title_ + " cannot be loaded: there is no " + file_.string();
  }
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

}  // namespace ScEng
