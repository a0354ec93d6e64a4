// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Apps/Value/Glob.h"
#include "Host/Util/Status.h"

/// How the files of several readers are put together.
enum class PairRule { kOrder, kStem };

/// The files of one run of a batch, one per reader and in the order of the readers; the first names the outputs.
using FileSet = std::vector<GlobFile>;

/// What one reader of a batch reads in turn.
struct ReaderFiles {
  /// "NODE=GLOB", as it was written.
  std::string written;
  std::vector<GlobFile> files;
};

/// Puts the files of all readers together: the first of each, the second of each and so on, or those of one stem.
///
/// By order, all readers need equally many files. By stem, one that lacks a partner is left out, with a note in
/// `notes`, and two files of one reader with one stem are an error. Errors and notes name the readers as they were
/// written.
ScEng::Status PairFiles(const std::vector<ReaderFiles>& readers, PairRule rule, std::vector<FileSet>& sets,
                        std::vector<std::string>& notes);
