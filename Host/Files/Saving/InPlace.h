// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Files/Saving/TargetFile.h"

namespace ScEng {

/// Gives an existing file new content without putting another file in its place: for a file with several names (hard
/// links), all of which are to show the new content, and for one that cannot be renamed over, such as one that is
/// mounted into a container.
///
/// This cannot be done at one instant. A flushed copy of the old content lies beside the file meanwhile, from which it
/// is restored when something fails; where that fails too, or the process is killed, the copy stays. Locks keep two
/// such writers apart. Returns why the file has its old content still, or nothing.
std::string RewriteInPlace(const TargetFile& target, int source);

}  // namespace ScEng
