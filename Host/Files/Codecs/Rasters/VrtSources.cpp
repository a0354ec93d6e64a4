// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/VrtSources.h"

#include <cpl_conv.h>
#include <cpl_minixml.h>
#include <cpl_string.h>
#include <strings.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ScEng {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kStart = 4096;
constexpr std::uintmax_t kMostBytes = std::uintmax_t{256} << 20;
constexpr std::size_t kMostSources = 1'000'000;

struct TreeDeleter {
  void operator()(CPLXMLNode* node) const { CPLDestroyXMLNode(node); }
};
using TreePtr = std::unique_ptr<CPLXMLNode, TreeDeleter>;

std::string ReadStart(const fs::path& file, std::size_t most) {
  std::ifstream stream(file, std::ios::binary);
  std::string text(most, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(most));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  return text;
}

/// The name as far as a message can show it.
std::string Show(std::string_view name) {
  constexpr std::size_t kMost = 80;
  std::string shown(name.substr(0, kMost));
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return "\"" + shown + "\"";
}

/// Walks through one VRT after the other and remembers which were seen, so that VRTs that name each other end.
class SourceCheck {
 public:
  explicit SourceCheck(const fs::path& file) : folder_(fs::weakly_canonical(file).parent_path()) {
    Add(fs::weakly_canonical(file));
  }

  Status Run() {
    while (!pending_.empty()) {
      const fs::path file = pending_.back();
      pending_.pop_back();
      Status status = CheckFile(file);
      if (status.IsError()) return status;
    }
    return CheckDepth();
  }

 private:
  void Add(const fs::path& canonical) {
    if (seen_.insert(canonical.native()).second && (seen_.size() == 1 || IsVrt(canonical))) {
      pending_.push_back(canonical);
      users_[canonical.native()];
    }
  }

  /// Takes away the VRTs that no other uses, time and again: those that name each other stay.
  [[nodiscard]] Status CheckDepth() const {
    // Newer versions of GDAL read 31, and older ones keep not many more files open.
    constexpr int kMostDepth = 30;
    auto left = users_;
    for (int depth = 0; depth < kMostDepth && !left.empty(); ++depth) {
      std::set<std::string> gone;
      for (const auto& [name, users] : left) {
        if (users.empty()) gone.insert(name);
      }
      if (gone.empty()) return Status::Error("the VRT names itself, or one below it does");
      for (const std::string& name : gone) left.erase(name);
      for (auto& [name, users] : left) {
        std::erase_if(users, [&](const std::string& user) { return gone.count(user) != 0; });
      }
    }
    return left.empty() ? Status() : Status::Error("VRTs name each other more than 30 deep");
  }

  Status CheckFile(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size > kMostBytes) return Status::Error("the VRT is larger than 256 MiB");
    const std::string text = ReadStart(file, static_cast<std::size_t>(size));
    const TreePtr tree(CPLParseXMLString(text.c_str()));
    if (tree == nullptr) return Status::Error("the XML of the VRT is damaged");
    // Not by recursion: what is read may be nested as deep as it likes.
    std::vector<const CPLXMLNode*> nodes{tree.get()};
    while (!nodes.empty()) {
      const CPLXMLNode* node = nodes.back();
      nodes.pop_back();
      Status status = CheckNode(*node, file);
      if (status.IsError()) return status;
      if (node->psNext != nullptr) nodes.push_back(node->psNext);
      if (node->psChild != nullptr) nodes.push_back(node->psChild);
    }
    return {};
  }

  Status CheckNode(const CPLXMLNode& node, const fs::path& file) {
    const std::string_view value = node.pszValue == nullptr ? "" : node.pszValue;
    if (node.eType == CXT_Text && value.find("/vsi") != std::string_view::npos) {
      return Status::Error("the VRT names " + Show(value) + ", which is no plain file");
    }
    if (node.eType != CXT_Element) return {};
    // GDAL takes the names of elements in any case of letters.
    const auto is_named = [&](const char* name) { return strcasecmp(node.pszValue, name) == 0; };
    if (is_named("PixelFunctionCode")) return Status::Error("the VRT holds code, which is not run");
    const bool names_source = is_named("SourceFilename") || is_named("SourceDataset") || is_named("IndexDataset");
    return names_source ? CheckSource(node, file) : Status();
  }

  Status CheckSource(const CPLXMLNode& node, const fs::path& file) {
    const std::string name = CPLGetXMLValue(&node, "", "");
    if (name.empty()) return {};
    if (seen_.size() > kMostSources) return Status::Error("the VRT names more than a million files");
    const bool is_relative = CPLTestBool(CPLGetXMLValue(&node, "relativeToVRT", "0"));
    const fs::path source = is_relative ? file.parent_path() / name : fs::absolute(name);
    if (!IsBelow(source, folder_)) {
      return Status::Error("the VRT names " + Show(name) + ", which is not in its folder or below");
    }
    std::error_code error;
    const fs::path canonical = fs::canonical(source, error);
    if (error || !fs::is_regular_file(canonical, error)) {
      return Status::Error("the VRT names " + Show(name) + ", which is not there or no plain file");
    }
    Add(canonical);
    if (const auto known = users_.find(canonical.native()); known != users_.end()) known->second.insert(file.native());
    return {};
  }

  fs::path folder_;
  std::set<std::string> seen_;
  std::vector<fs::path> pending_;
  /// Of every VRT those that name it.
  std::map<std::string, std::set<std::string>> users_;
};

}  // namespace

bool IsVrt(const fs::path& file) { return ReadStart(file, kStart).find("<VRTDataset") != std::string::npos; }

bool IsBelow(const fs::path& file, const fs::path& folder) {
  // A link to where nothing may be looked at leads out.
  std::error_code error;
  const fs::path inner = fs::weakly_canonical(file, error);
  if (error) return false;
  const fs::path outer = fs::weakly_canonical(folder, error);
  if (error) return false;
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

Status CheckVrtSources(const fs::path& file) { return SourceCheck(file).Run(); }

}  // namespace ScEng
