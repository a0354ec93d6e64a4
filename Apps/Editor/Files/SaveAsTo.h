// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "Host/Editing/EditSession.h"
#include "Host/Util/Status.h"

/// Saves a document under another name so that its relative paths mean the same files as before, also in another
/// folder: those of readers, writers and outputs are changed by one command first. Where saving fails, the document is
/// as it was.
///
/// A document without a file writes beside the file that it is given, so only what it reads is changed then. What a
/// placeholder says of paths cannot be told from other text and stays.
ScEng::Status SaveAsTo(ScEng::EditSession& session, const std::filesystem::path& file);
