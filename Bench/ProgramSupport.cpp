// SPDX-License-Identifier: Apache-2.0
#include "Bench/ProgramSupport.h"

#include <ctime>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>

#include "Host/Nodes/HostNodes.h"

namespace Bench {

void Check(const ScEng::Status& status) {
  if (status.IsError()) throw std::runtime_error(status.GetMessage());
}

double GetProcessorSeconds() {
  std::timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::shared_ptr<ScEng::NodeCatalog> LoadCatalog(const std::filesystem::path& library) {
  auto catalog = ScEng::CreateHostCatalog();
  ScEng::Status status;
  auto loaded = ScEng::NodeLibrary::Load(library, status);
  Check(status);
  Check(catalog->AddLibrary(std::move(loaded)));
  return catalog;
}

int RunProgram(const char* usage, const std::function<bool()>& run) {
  try {
    if (run()) return 0;
    std::cerr << "usage: " << usage << "\n";
    return 2;
  } catch (const std::exception& error) {
    const std::string words = usage;
    std::cerr << words.substr(0, words.find(' ')) << ": " << error.what() << "\n";
    return 1;
  }
}

}  // namespace Bench
