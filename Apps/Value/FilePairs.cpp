// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/FilePairs.h"

#include <algorithm>
#include <cstddef>
#include <map>

namespace {

using ScEng::Status;

std::string Quote(const std::filesystem::path& file) { return "\"" + file.string() + "\""; }

std::string CountFiles(std::size_t count) { return std::to_string(count) + (count == 1 ? " file" : " files"); }

Status PairInOrder(const std::vector<ReaderFiles>& readers, std::vector<FileSet>& sets) {
  const ReaderFiles& first = readers.front();
  for (const ReaderFiles& reader : readers) {
    if (reader.files.size() == first.files.size()) continue;
    return Status::Error("--each " + first.written + " matches " + CountFiles(first.files.size()) + " and --each " +
                         reader.written + " " + std::to_string(reader.files.size()) +
                         "; they are paired in order, so they must be equally many (--pair stem pairs equal names)");
  }
  for (std::size_t i = 0; i < first.files.size(); ++i) {
    FileSet& set = sets.emplace_back();
    for (const ReaderFiles& reader : readers) set.push_back(reader.files[i]);
  }
  return {};
}

Status PairByStem(const std::vector<ReaderFiles>& readers, std::vector<FileSet>& sets,
                  std::vector<std::string>& notes) {
  std::vector<std::map<std::string, const GlobFile*>> by_stem(readers.size());
  for (std::size_t i = 0; i < readers.size(); ++i) {
    for (const GlobFile& file : readers[i].files) {
      const auto [other, is_new] = by_stem[i].emplace(file.file.stem().string(), &file);
      if (is_new) continue;
      return Status::Error("--each " + readers[i].written + ": " + Quote(other->second->file) + " and " +
                           Quote(file.file) + " have one stem, so neither has a partner of its own");
    }
  }
  const auto find_lacking = [&](const std::string& stem) {
    std::size_t reader = 0;
    while (reader < readers.size() && by_stem[reader].contains(stem)) ++reader;
    return reader;
  };
  for (std::size_t i = 0; i < readers.size(); ++i) {
    for (const GlobFile& file : readers[i].files) {
      const std::string stem = file.file.stem().string();
      const std::size_t lacking = find_lacking(stem);
      if (lacking < readers.size()) {
        notes.push_back(Quote(file.file) + " is left out: --each " + readers[lacking].written +
                        " matches no file of the stem \"" + stem + "\"");
      } else if (i == 0) {
        FileSet& set = sets.emplace_back();
        for (const auto& files : by_stem) set.push_back(*files.at(stem));
      }
    }
  }
  return {};
}

}  // namespace

Status PairFiles(const std::vector<ReaderFiles>& readers, PairRule rule, std::vector<FileSet>& sets,
                 std::vector<std::string>& notes) {
  return rule == PairRule::kOrder ? PairInOrder(readers, sets) : PairByStem(readers, sets, notes);
}
