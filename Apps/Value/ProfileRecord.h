// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/FileWatch.h"

/// A stretch of time.
struct ProfileSpan {
  using Clock = std::chrono::steady_clock;

  Clock::time_point begin;
  Clock::time_point end;

  [[nodiscard]] double GetSeconds() const { return std::chrono::duration<double>(end - begin).count(); }
};

/// A stage of reading or writing a file.
struct FileRecord {
  ScEng::FileWork work = ScEng::FileWork::kOpen;
  std::filesystem::path file;
  ProfileSpan span;
  std::uintmax_t file_bytes = 0;
  std::size_t sample_bytes = 0;
};

/// An evaluation of a node.
struct NodeStep {
  std::string id;
  /// The display name of its type.
  std::string type;
  ProfileSpan span;
  std::size_t bytes_read = 0;
  std::size_t bytes_made = 0;
  /// Of its first image output; 0 where it has no image.
  int size_x = 0;
  int size_y = 0;
  /// What it read and wrote itself.
  std::vector<FileRecord> files;
};

/// A file that the run wrote for its outputs.
struct WriteStep {
  /// Whose image it holds, "node.plug"; several with commas. Empty for what a writer had to leave for the end.
  std::string sources;
  std::filesystem::path file;
  ProfileSpan span;
  std::vector<FileRecord> stages;
};

/// One run of a document, on one thread.
struct RunRecord {
  /// The document, or in a batch its input.
  std::string name;
  ProfileSpan span;
  std::vector<NodeStep> nodes;
  std::vector<WriteStep> writes;
};
