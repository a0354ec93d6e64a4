// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Reading/ChannelSelection.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "Host/Files/Layers.h"
#include "Host/Image/ColorMode.h"

namespace ScEng {
namespace {

std::string_view LayerOf(std::string_view channel) {
  const std::size_t dot = channel.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : channel.substr(0, dot);
}

std::string_view BaseOf(std::string_view channel) {
  const std::size_t dot = channel.rfind('.');
  return dot == std::string_view::npos ? channel : channel.substr(dot + 1);
}

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

/// "\"a\", \"b\" and 7 more".
std::string List(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 12;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i) text += (i == 0 ? "" : ", ") + Quote(names[i]);
  if (names.size() > kMost) text += " and " + std::to_string(names.size() - kMost) + " more";
  return text;
}

std::optional<std::size_t> ParseIndex(std::string_view text) {
  std::size_t index = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return index;
}

bool HasNames(const FilePart& part) {
  return std::any_of(part.channels.begin(), part.channels.end(), [](const FileChannel& c) { return !c.name.empty(); });
}

std::string NameOf(const FilePart& part, std::size_t channel) {
  const std::string& name = part.channels[channel].name;
  return name.empty() ? std::to_string(channel) : name;
}

std::vector<std::string> SplitNames(const std::string& text) {
  std::vector<std::string> names;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t comma = std::min(text.find(',', from), text.size());
    std::string name = text.substr(from, comma - from);
    name.erase(0, name.find_first_not_of(' '));
    name.erase(name.find_last_not_of(' ') + 1);
    names.push_back(std::move(name));
    from = comma + 1;
  }
  return names;
}

/// The index of a channel by the name that the file gives it, or by its number where it has none.
std::optional<std::size_t> FindChannel(const FilePart& part, const std::string& name) {
  for (std::size_t i = 0; i < part.channels.size(); ++i) {
    if (NameOf(part, i) == name) return i;
  }
  return std::nullopt;
}

/// The channels of a layer, in the order of the file.
std::vector<std::size_t> FindLayer(const FilePart& part, const std::string& layer) {
  std::vector<std::size_t> channels;
  for (std::size_t i = 0; i < part.channels.size(); ++i) {
    if (LayerOf(part.channels[i].name) == layer) channels.push_back(i);
  }
  return channels;
}

bool SuitsChannels(int mode, std::size_t channels) {
  switch (mode) {
    case ColorMode::kColor: return channels >= 2 && channels <= 4;
    case ColorMode::kSigned: return channels == 3 || channels == 4;
    case ColorMode::kValue: return channels == 1;
    case ColorMode::kPair: return channels == 2;
    default: return false;
  }
}

class Selector {
 public:
  Selector(const FileDescription& file, const ReadOptions& options) : file_(file), options_(options) {}

  std::optional<ChannelSelection> Select(std::string& problem) {
    if (file_.parts.empty()) problem_ = "it holds no image";
    if (problem_.empty() && ChoosePart() && ChooseChannels()) {
      ChooseMode();
      TellOtherParts();
      return std::move(selection_);
    }
    problem = problem_;
    return std::nullopt;
  }

 private:
  [[nodiscard]] const FilePart& Part() const { return file_.parts[selection_.part]; }
  [[nodiscard]] std::string Name(std::size_t channel) const { return NameOf(Part(), channel); }

  // ---- The part ----

  bool ChoosePart() {
    if (!options_.part.empty()) {
      for (std::size_t i = 0; i < file_.parts.size(); ++i) {
        if (file_.parts[i].name == options_.part) return Take(i);
      }
      const auto index = ParseIndex(options_.part);
      if (index && *index < file_.parts.size()) return Take(*index);
      problem_ = "there is no part " + Quote(options_.part) + "; " + DescribeParts();
      return false;
    }
    for (std::size_t i = 0; i < file_.parts.size(); ++i) {
      if (HasWhatIsAsked(file_.parts[i])) return Take(i);
    }
    // The channels of the first part are what the message is about.
    return Take(0);
  }

  bool Take(std::size_t part) {
    selection_.part = part;
    if (file_.parts[part].problem.empty()) return true;
    problem_ = file_.parts[part].problem;
    if (file_.parts.size() > 1) problem_ += "; " + DescribeParts();
    return false;
  }

  [[nodiscard]] bool HasWhatIsAsked(const FilePart& part) const {
    if (!options_.channels.empty()) {
      const auto names = SplitNames(options_.channels);
      return std::all_of(names.begin(), names.end(), [&](const auto& name) { return FindChannel(part, name); });
    }
    return options_.layer.empty() || !FindLayer(part, options_.layer).empty() || IsWholeLayer(part);
  }

  /// Parts of a multi-part file are often layers whose channels do without the name.
  [[nodiscard]] bool IsWholeLayer(const FilePart& part) const {
    return part.name == options_.layer && !FindLayer(part, "").empty();
  }

  [[nodiscard]] std::string DescribeParts() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < file_.parts.size(); ++i) {
      names.push_back(file_.parts[i].name.empty() ? std::to_string(i) : file_.parts[i].name);
    }
    return names.size() == 1 ? "its only part is " + List(names) : "its parts are " + List(names);
  }

  [[nodiscard]] std::string DescribeChannels() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < Part().channels.size(); ++i) names.push_back(Name(i));
    std::string text = (names.size() == 1 ? "its only channel is " : "its channels are ") + List(names);
    if (file_.parts.size() > 1) text += "; " + DescribeParts();
    return text;
  }

  void TellOtherParts() {
    const std::size_t others = file_.parts.size() - 1;
    if (others == 0 || !options_.part.empty() || !options_.layer.empty() || !options_.channels.empty()) return;
    selection_.notes.push_back(std::to_string(others) + (others == 1 ? " other part is" : " other parts are") +
                               " left out; \"part\" chooses another");
  }

  // ---- The channels ----

  bool ChooseChannels() {
    if (!options_.channels.empty()) return TakeNamed();
    if (!HasNames(Part())) return options_.layer.empty() ? TakeNameless() : RefuseLayer();
    std::vector<std::size_t> layer = FindLayer(Part(), options_.layer);
    selection_.layer = options_.layer;
    if (layer.empty() && !options_.layer.empty() && IsWholeLayer(Part())) {
      layer = FindLayer(Part(), "");
      selection_.layer.clear();
    }
    if (layer.empty()) return RefuseLayer();
    return TakeByRole(layer);
  }

  bool RefuseLayer() {
    if (options_.layer.empty()) {
      problem_ = "all its channels belong to layers, name one: " + List(ListLayers(Part())) + "; " + DescribeChannels();
      return false;
    }
    const auto layers = ListLayers(Part());
    problem_ = "there is no layer " + Quote(options_.layer) + "; " +
               (layers.empty() ? DescribeChannels() : "its layers are " + List(layers));
    if (!layers.empty() && file_.parts.size() > 1) problem_ += "; " + DescribeParts();
    return false;
  }

  bool TakeNamed() {
    const auto names = SplitNames(options_.channels);
    if (names.size() > 4) {
      problem_ = std::to_string(names.size()) + " channels are asked for, and an image has one to four";
      return false;
    }
    for (const std::string& name : names) {
      const auto channel = FindChannel(Part(), name);
      if (!channel) {
        problem_ = "there is no channel " + Quote(name) + "; " + DescribeChannels();
        // One that is there may be left out for a reason.
        for (const std::string& note : file_.notes) {
          if (note.find(name) != std::string::npos) problem_ += "; " + note;
        }
        return false;
      }
      selection_.channels.push_back(*channel);
    }
    selection_.layer = LayerOf(Name(selection_.channels.front()));
    const std::string_view first = BaseOf(names.front());
    const bool is_gray = names.size() == 2 && (first == "Y" || first == "L") && BaseOf(names[1]) == "A";
    selection_.has_opacity = is_gray || (names.size() == 4 && BaseOf(names[3]) == "A");
    role_ = names.size() == 2 && !is_gray ? Role::kPair : RoleOfCount(names.size());
    return true;
  }

  bool TakeNameless() {
    const std::size_t count = Part().channels.size();
    if (count < 1 || count > 4) {
      problem_ = "it has " + std::to_string(count) + " channels; choose one to four of them with \"channels\", " +
                 "numbered from 0";
      return false;
    }
    for (std::size_t i = 0; i < count; ++i) selection_.channels.push_back(i);
    selection_.has_opacity = count == 2 || count == 4;
    role_ = RoleOfCount(count);
    return true;
  }

  bool TakeByRole(const std::vector<std::size_t>& layer) {
    const auto find = [&](std::string_view base) {
      const auto found = std::find_if(layer.begin(), layer.end(),
                                      [&](std::size_t c) { return BaseOf(Part().channels[c].name) == base; });
      return found == layer.end() ? std::optional<std::size_t>() : *found;
    };
    const auto take_any = [&](std::initializer_list<const char*> bases) {
      std::size_t position = 0;
      for (const char* base : bases) {
        const auto channel = find(base);
        roles_[position++] = channel ? static_cast<int>(selection_.channels.size()) : kConstantZero;
        if (channel) selection_.channels.push_back(*channel);
      }
    };
    const auto opacity = find("A");
    if (find("R") || find("G") || find("B")) {
      take_any({"R", "G", "B"});
      role_ = Role::kColor;
    } else if (find("X")) {
      take_any({"X", "Y", "Z"});
      role_ = Role::kSigned;
    } else if (find("Y") || find("L")) {
      selection_.channels.push_back(find("Y") ? *find("Y") : *find("L"));
      role_ = opacity ? Role::kGray : Role::kValue;
    } else if (find("Z")) {
      selection_.channels.push_back(*find("Z"));
      role_ = Role::kValue;
    } else if (layer.size() == 1) {
      selection_.channels.push_back(layer.front());
      role_ = Role::kValue;
    } else {
      problem_ =
          "there is no telling which of its channels make an image, name them with \"channels\": " + DescribeChannels();
      return false;
    }
    if (opacity && role_ != Role::kValue) {
      selection_.has_opacity = true;
      roles_[3] = static_cast<int>(selection_.channels.size());
      selection_.channels.push_back(*opacity);
    }
    const std::size_t others = Part().channels.size() - selection_.channels.size();
    if (others > 0) {
      selection_.notes.push_back(std::to_string(others) + (others == 1 ? " other channel is" : " other channels are") +
                                 " left out; \"layer\" and \"channels\" choose others");
    }
    return true;
  }

  // ---- The mode ----

  enum class Role { kValue, kGray, kPair, kColor, kSigned };

  static Role RoleOfCount(std::size_t count) {
    return count == 1 ? Role::kValue : count == 2 ? Role::kGray : Role::kColor;
  }

  void ChooseMode() {
    const std::size_t count = selection_.channels.size();
    const StoredHeader* stored = FindStoredHeader(Part(), selection_.layer);
    const bool is_stored = stored != nullptr && stored->mode.has_value();
    const bool suits = is_stored && SuitsChannels(*stored->mode, count);
    if (is_stored && !suits && options_.mode != ReadMode::kSigned) {
      selection_.notes.push_back("the stored colour mode " + std::to_string(*stored->mode) + " does not suit " +
                                 std::to_string(count) + (count == 1 ? " channel" : " channels") + " and is ignored");
    }
    const auto plain = [&](unsigned mode, int missing_opacity) {
      selection_.color_mode = mode;
      for (std::size_t i = 0; i < 4; ++i) selection_.sources[i] = i < count ? static_cast<int>(i) : kConstantZero;
      if (count < 4) selection_.sources[3] = missing_opacity;
      selection_.has_opacity = mode != ColorMode::kPair && mode != ColorMode::kValue && count == 4;
    };
    if (options_.mode == ReadMode::kSigned) {
      plain(ColorMode::kSigned, kConstantOne);
      if (count == 1) selection_.sources = {kConstantZero, kConstantZero, 0, kConstantOne};
      return;
    }
    if (suits) {
      switch (static_cast<unsigned>(*stored->mode)) {
        case ColorMode::kSigned: return plain(ColorMode::kSigned, kConstantOne);
        case ColorMode::kPair:
          plain(options_.mode == ReadMode::kColor ? ColorMode::kColor : ColorMode::kPair, kConstantOne);
          return;
        default: break;
      }
    }
    switch (role_) {
      case Role::kValue:
        if (options_.mode != ReadMode::kColor) return plain(ColorMode::kValue, kConstantOne);
        selection_.color_mode = ColorMode::kColor;
        selection_.sources = {0, 0, 0, kConstantOne};
        return;
      case Role::kGray:
        selection_.color_mode = ColorMode::kColor;
        selection_.sources = {0, 0, 0, 1};
        return;
      case Role::kPair:
        plain(options_.mode == ReadMode::kColor ? ColorMode::kColor : ColorMode::kPair, kConstantOne);
        return;
      case Role::kSigned:
      case Role::kColor: break;
    }
    selection_.color_mode =
        role_ == Role::kSigned && options_.mode != ReadMode::kColor ? ColorMode::kSigned : ColorMode::kColor;
    if (roles_[0] == kConstantZero && roles_[1] == kConstantZero && roles_[2] == kConstantZero) {
      roles_ = {0, 1, 2, count == 4 ? 3 : kConstantOne};
    }
    selection_.sources = roles_;
  }

  const FileDescription& file_;
  const ReadOptions& options_;
  ChannelSelection selection_;
  std::string problem_;
  Role role_ = Role::kValue;
  std::array<int, 4> roles_{kConstantZero, kConstantZero, kConstantZero, kConstantOne};
};

}  // namespace

std::optional<ChannelSelection> SelectChannels(const FileDescription& file, const ReadOptions& options,
                                               std::string& problem) {
  return Selector(file, options).Select(problem);
}

std::vector<std::string> ListLayers(const FilePart& part) {
  std::vector<std::string> layers;
  for (const FileChannel& channel : part.channels) {
    const std::string layer(LayerOf(channel.name));
    if (!layer.empty() && std::find(layers.begin(), layers.end(), layer) == layers.end()) layers.push_back(layer);
  }
  return layers;
}

const StoredHeader* FindStoredHeader(const FilePart& part, const std::string& layer) {
  const StoredHeader* of_part = nullptr;
  for (const auto& [name, header] : part.stored_headers) {
    if (name == layer) return &header;
    if (name.empty()) of_part = &header;
  }
  return of_part;
}

}  // namespace ScEng
