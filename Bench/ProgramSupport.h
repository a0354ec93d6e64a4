// SPDX-License-Identifier: Apache-2.0
//
// What the programs of times share beside the benchmark program.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/Status.h"

namespace Bench {

/// Throws an error with its message.
void Check(const ScEng::Status& status);

/// What all processors together have spent on this process.
double GetProcessorSeconds();

/// The host's own node types and those of a library. Throws where it cannot be loaded.
std::shared_ptr<ScEng::NodeCatalog> LoadCatalog(const std::filesystem::path& library);

/// What `main` returns: 2 where `run` says that its arguments are wrong, with how the program is used, else 0; an
/// exception becomes a message and 1. `usage` begins with the program's name.
int RunProgram(const char* usage, const std::function<bool()>& run);

}  // namespace Bench
