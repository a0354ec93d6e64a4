// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/OutputName.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Host/Tools/NodeLibrary.h"

namespace {

using ScEng::Status;

/// More digits than any count needs.
constexpr std::size_t kMostDigits = 18;

/// A part of the name of a file that is there. A backslash in the name of a result is a separator, so that it cannot be
/// kept.
std::string TakePart(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '_');
  return name;
}

}  // namespace

Status OutputName::Parse(const std::string& written) {
  pieces_.clear();
  std::string text = written;
  std::replace(text.begin(), text.end(), '\\', '/');
  std::string plain;
  const auto end_text = [&] {
    if (!plain.empty()) pieces_.push_back({Piece::Kind::kText, std::exchange(plain, {}), 1});
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_brace = text[i] == '{' || text[i] == '}';
    if (!is_brace) {
      plain += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == text[i]) {
      plain += text[i++];
    } else if (text[i] == '}') {
      return Status::Error("a \"}\" has no \"{\"; \"}}\" stands for a brace");
    } else {
      const std::size_t end = text.find('}', i);
      if (end == std::string::npos) return Status::Error("a \"{\" is not closed; \"{{\" stands for a brace");
      end_text();
      const Status status = ParseWord(text.substr(i + 1, end - i - 1));
      if (status.IsError()) return status;
      i = end;
    }
  }
  end_text();
  if (text.empty()) return Status::Error("it is empty; the default is " + std::string(kDefault));
  const std::filesystem::path sample = Make({"a.b", "c", 1}, "d.e");
  if (text.front() == '/' || *sample.begin() == "..") {
    return Status::Error("it leads out of the output folder; it must be relative to it");
  }
  if (text.back() == '/' || !sample.has_filename()) return Status::Error("it names a folder; a file name must follow");
  return {};
}

Status OutputName::ParseWord(const std::string& word) {
  static const std::array<std::pair<const char*, Piece::Kind>, 5> kWords{{{"stem", Piece::Kind::kStem},
                                                                          {"folder", Piece::Kind::kFolder},
                                                                          {"output", Piece::Kind::kOutput},
                                                                          {"ending", Piece::Kind::kEnding},
                                                                          {"index", Piece::Kind::kIndex}}};
  const std::size_t colon = std::min(word.find(':'), word.size());
  const std::string name = word.substr(0, colon);
  const auto* known =
      std::find_if(kWords.begin(), kWords.end(), [&](const auto& entry) { return entry.first == name; });
  if (known == kWords.end()) {
    std::vector<std::string> names;
    for (const auto& entry : kWords) names.emplace_back(entry.first);
    const std::string closest = ScEng::FindClosest(name, names);
    return Status::Error("there is no {" + word + "}; " +
                         (closest.empty() ? "there are {stem}, {folder}, {output}, {ending} and {index}"
                                          : "the closest is {" + closest + "}"));
  }
  Piece piece{known->second, {}, 1};
  if (colon < word.size()) {
    const std::string digits = word.substr(colon + 1);
    const bool is_number = !digits.empty() && digits.size() <= 2 &&
                           std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
    const std::size_t count = is_number ? std::stoul(digits) : 0;
    if (piece.kind != Piece::Kind::kIndex || count < 1 || count > kMostDigits) {
      return Status::Error("{" + word +
                           "} is not understood; a number of digits belongs to the index, as in {index:04}");
    }
    piece.digits = count;
  }
  pieces_.push_back(piece);
  return {};
}

std::filesystem::path OutputName::Make(const Source& source, const std::filesystem::path& output) const {
  std::string name;
  for (const Piece& piece : pieces_) {
    switch (piece.kind) {
      case Piece::Kind::kText: name += piece.text; break;
      case Piece::Kind::kStem: name += TakePart(source.file.stem().string()); break;
      case Piece::Kind::kFolder: name += TakePart(source.folder.string()); break;
      case Piece::Kind::kOutput: name += output.stem().string(); break;
      case Piece::Kind::kEnding: name += output.extension().string(); break;
      case Piece::Kind::kIndex: {
        const std::string digits = std::to_string(source.index);
        name.append(piece.digits > digits.size() ? piece.digits - digits.size() : 0, '0');
        name += digits;
        break;
      }
    }
  }
  // A folder without a name leaves a slash in front of what follows it.
  const std::size_t start = std::min(name.find_first_not_of('/'), name.size());
  return std::filesystem::path(name.substr(start)).lexically_normal();
}
