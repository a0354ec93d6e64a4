// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/GraphPicture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "Host/Documents/AttributeText.h"
#include "Host/Documents/DotProgram.h"
#include "Host/Documents/DotText.h"
#include "Host/Documents/Findings.h"
#include "Host/Documents/MessageText.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/Node.h"

namespace ScEng {
namespace {

// Larger graphs take dot minutes, and nobody reads the picture.
constexpr std::size_t kMostNodes = 3000;
constexpr std::size_t kMostProblems = 12;
constexpr std::size_t kLongestId = 40;
constexpr std::size_t kLongestValue = 36;

/// How a wire is drawn. The colours can be seen on white and on black.
struct WireLook {
  unsigned type;
  const char* color;
  const char* style;
  double width;
  const char* arrow;
};
constexpr WireLook kLooks[] = {
    {PlugType::kImage, "#2f7fd1", "solid", 2.0, "normal"},   {PlugType::kNumber, "#b7791f", "dashed", 1.6, "vee"},
    {PlugType::kFlag, "#2f9e57", "dotted", 2.2, "dot"},      {PlugType::kText, "#9a5fd0", "dashed", 1.6, "diamond"},
    {PlugType::kColor, "#d1477a", "solid", 1.2, "odot"},     {PlugType::kPoint, "#0e8f9b", "dotted", 2.2, "box"},
    {PlugType::kFrame, "#8a7440", "dashed", 1.6, "odiamond"}};
constexpr WireLook kUnknownLook = {PlugType::kNone, "#808080", "dashed", 1.2, "normal"};

const WireLook& FindLook(unsigned type) {
  const auto* const found =
      std::find_if(std::begin(kLooks), std::end(kLooks), [&](const auto& look) { return look.type == type; });
  return found == std::end(kLooks) ? kUnknownLook : *found;
}

/// The colours of a node's card.
struct CardLook {
  const char* background;
  const char* border;
  const char* text;
  const char* faint;
};
constexpr CardLook kCard{"#f6f8fa", "#57606a", "#1f2328", "#57606a"};
constexpr CardLook kDisabledCard{"#e4e7eb", "#8b949e", "#59616b", "#59616b"};
constexpr CardLook kFileCard{"#fdf6e3", "#a07a1f", "#3a2d08", "#6b5515"};
constexpr const char* kProblem = "#c22626";
constexpr const char* kProblemText = "#8c1515";
constexpr const char* kProblemBackground = "#fde4e1";

/// "id.plug" in its parts.
std::pair<std::string, std::string> SplitPlug(const std::string& plug) {
  const std::size_t dot = plug.rfind('.');
  return {plug.substr(0, dot), dot == std::string::npos ? std::string() : plug.substr(dot + 1)};
}

std::string FindTypeName(const Node& node) {
  return AskGuarded("GetName", std::string("a node"), [&] { return node.GetName(); });
}

std::string ShowValue(const Attribute& attribute) {
  JsonValue value;
  const bool is_word = attribute.GetKind() == Attribute::Kind::kChoice;
  if (is_word || GetAttributeAsJson(attribute, value).IsError())
    return MakeLine(attribute.GetValue().GetText(), kLongestValue);
  // The end of a path says more than its start.
  const bool is_path =
      attribute.GetKind() == Attribute::Kind::kString && attribute.GetStringUse() != Attribute::StringUse::kText;
  if (is_path) return KeepEnd(attribute.GetValue().GetText(), kLongestValue);
  return MakeLine(FormatJsonLine(value, kLongestValue + 1), kLongestValue);
}

std::string MakeProblemRow(const std::string& problem, std::size_t columns) {
  return DotRow({DotCell(DotLines(problem, kProblemText)).Span(columns).Background(kProblemBackground).Left()});
}

class Picture {
 public:
  Picture(const GraphDocument& document, const std::vector<std::string>& problems) : document_(document) {
    const auto& ids = document.GetIds();
    for (std::size_t i = 0; i < ids.size(); ++i) {
      numbers_.emplace(ids[i], i);
      quoted_.emplace(Quote(ids[i]), i);
    }
    cards_.resize(ids.size());
    for (const DocumentConnection& connection : document.GetConnections()) AddWire(connection);
    for (std::size_t i = 0; i < cards_.size(); ++i) AddRows(i);
    for (const std::string& problem : problems) AddProblem(problem);
  }

  std::string Write() {
    std::string text =
        "digraph \"graph\" {\n"
        "  graph [rankdir=LR, bgcolor=transparent, nodesep=0.3, ranksep=0.8, pad=0.2, " +
        std::string(kDotFont) + "]\n  node [shape=plain, " + kDotFont + "]\n  edge [arrowsize=0.7, " + kDotFont +
        ", fontsize=10, fontcolor=\"#767676\"]\n";
    for (std::size_t i = 0; i < cards_.size(); ++i) WriteNode(i, text);
    for (const DocumentConnection& connection : document_.GetConnections()) WriteWire(connection, text);
    for (std::size_t i = 0; i < document_.GetOutputs().size(); ++i) WriteOutput(i, text);
    if (!problems_.empty()) WriteProblems(text);
    return text + "}\n";
  }

 private:
  /// What is known of a node beside what it says itself.
  struct Card {
    std::vector<std::string> problems;
    /// The indices of the connections to each input or attribute, by name.
    std::map<std::string, std::set<unsigned>> fed;
    /// What stands in the rows of its inputs, and the row of each connection.
    std::vector<std::string> rows;
    std::map<std::pair<std::string, unsigned>, std::size_t> places;
    /// For a placeholder: the plugs that connections name.
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
  };

  static void AddName(std::vector<std::string>& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }

  void AddWire(const DocumentConnection& connection) {
    const auto [from, outplug] = SplitPlug(connection.from);
    const auto [to, inplug] = SplitPlug(connection.to);
    AddName(cards_[numbers_.at(from)].outputs, outplug);
    AddName(cards_[numbers_.at(to)].inputs, inplug);
    cards_[numbers_.at(to)].fed[inplug].insert(connection.index);
  }

  void AddProblem(const std::string& problem) {
    for (std::size_t from = problem.find('"'); from != std::string::npos;) {
      const std::size_t to = problem.find('"', from + 1);
      if (to == std::string::npos) break;
      if (const auto node = FindQuoted(problem.substr(from + 1, to - from - 1))) {
        cards_[*node].problems.push_back(problem);
        return;
      }
      from = problem.find('"', to + 1);
    }
    if (const auto node = FindWithin(problem)) {
      cards_[*node].problems.push_back(problem);
    } else {
      problems_.push_back(problem);
    }
  }

  /// The node whose quoted id, which may hold quotes itself, comes first in a problem.
  [[nodiscard]] std::optional<std::size_t> FindWithin(const std::string& problem) const {
    if (problems_.size() > kMostProblems) return std::nullopt;
    std::optional<std::size_t> first;
    std::size_t place = std::string::npos;
    for (const auto& [quoted, number] : quoted_) {
      const std::string_view lead = std::string_view(quoted).substr(0, quoted.size() - 1);
      const std::size_t at = problem.find(lead);
      const std::size_t end = at + lead.size();
      const bool is_whole =
          at != std::string::npos && end < problem.size() && (problem[end] == '"' || problem[end] == '.');
      if (!is_whole || at >= place) continue;
      place = at;
      first = number;
    }
    return first;
  }

  /// The node that a quoted piece of a problem names, as an id or as "id.plug".
  [[nodiscard]] std::optional<std::size_t> FindQuoted(const std::string& piece) const {
    for (const std::string& name : {piece, SplitPlug(piece).first}) {
      const auto found = quoted_.find("\"" + name + "\"");
      if (found != quoted_.end()) return found->second;
    }
    return std::nullopt;
  }

  /// The rows of a node's inputs. An input with several images has a row for each, since their order matters.
  void AddRows(std::size_t number) {
    Card& card = cards_[number];
    const Node* const node = document_.FindNode(document_.GetIds()[number]);
    for (const std::string& name : node == nullptr ? card.inputs : NamePlugs(*node, true)) {
      const std::set<unsigned>& indices = card.fed[name];
      if (indices.size() < 2) {
        card.places[{name, indices.empty() ? 0 : *indices.begin()}] = card.rows.size();
        card.rows.push_back(name);
        continue;
      }
      for (const unsigned index : indices) {
        card.places[{name, index}] = card.rows.size();
        card.rows.push_back(name + " " + std::to_string(index));
      }
    }
  }

  /// Where a wire ends. That of an only input or output is at the title.
  [[nodiscard]] std::string FindInput(std::size_t number, const std::string& plug, unsigned index) const {
    const std::string lead = "n" + std::to_string(number);
    const Card& card = cards_[number];
    const auto place = card.places.find({plug, index});
    if (place != card.places.end()) {
      return lead + (card.rows.size() == 1 ? ":t:w" : ":i" + std::to_string(place->second) + ":w");
    }
    const Node& node = *document_.FindNode(document_.GetIds()[number]);
    return lead + ":a" +
           std::to_string(static_cast<std::size_t>(node.GetInplugIndex(plug)) - node.GetNumRegularInputs()) + ":w";
  }

  [[nodiscard]] std::string FindOutput(std::size_t number, const std::string& plug) const {
    const Node* const node = document_.FindNode(document_.GetIds()[number]);
    const auto names = node == nullptr ? cards_[number].outputs : NamePlugs(*node, false);
    const auto place = std::find(names.begin(), names.end(), plug) - names.begin();
    return "n" + std::to_string(number) + (names.size() == 1 ? ":t:e" : ":o" + std::to_string(place) + ":e");
  }

  static std::vector<std::string> NamePlugs(const Node& node, bool is_input) {
    std::vector<std::string> names;
    const std::size_t count = is_input ? node.GetNumRegularInputs() : node.GetOutplugs().size();
    for (unsigned i = 0; i < count; ++i) names.push_back(is_input ? node.GetInplugName(i) : node.GetOutplugName(i));
    return names;
  }

  void WriteNode(std::size_t number, std::string& text) const {
    const std::string& id = document_.GetIds()[number];
    const Card& card = cards_[number];
    const Node* const node = document_.FindNode(id);
    const bool is_enabled = document_.IsEnabled(id);
    const CardLook& look = is_enabled ? kCard : kDisabledCard;
    const std::string name = node == nullptr ? "unknown type" : FindTypeName(*node);
    std::string rows =
        DotRow({DotCell(DotBold(name, look.text) + (is_enabled ? "" : "&#160;" + DotSmall("disabled", look.faint)))
                    .Span(2)
                    .Port("t")});
    rows += DotRow({DotCell(DotSmall(MakeLine(id, kLongestId), look.faint)).Span(2)});
    WritePlugs(card.rows, node == nullptr ? card.outputs : NamePlugs(*node, false), look, rows);
    if (node != nullptr) WriteAttributes(*node, card, look, rows);
    if (!document_.GetNote(id).empty()) {
      rows += "<HR/>" + DotRow({DotCell(DotLines(document_.GetNote(id), look.faint)).Span(2).Left()});
    }
    const bool has_problem = !card.problems.empty() || node == nullptr;
    for (std::size_t i = 0; i < std::min(card.problems.size(), kMostProblems); ++i) {
      rows += MakeProblemRow(card.problems[i], 2);
    }
    const std::string style = is_enabled && node != nullptr ? "rounded" : "rounded,dashed";
    text += "  n" + std::to_string(number) + " [tooltip=" + DotQuote(name + " " + MakeLine(id)) + ", label=<" +
            DotTable(rows, look.background, has_problem ? kProblem : look.border, has_problem ? 3 : 1, style) + ">]\n";
  }

  static void WritePlugs(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs,
                         const CardLook& look, std::string& rows) {
    const bool shows_inputs = inputs.size() > 1;
    const bool shows_outputs = outputs.size() > 1;
    const std::size_t count = std::max(shows_inputs ? inputs.size() : 0, shows_outputs ? outputs.size() : 0);
    for (std::size_t i = 0; i < count; ++i) {
      const bool has_input = shows_inputs && i < inputs.size();
      const bool has_output = shows_outputs && i < outputs.size();
      DotCell left(has_input ? DotSmall(inputs[i], look.text) : std::string());
      DotCell right(has_output ? DotSmall(outputs[i], look.text) : std::string());
      if (has_input) left.Port("i" + std::to_string(i));
      if (has_output) right.Port("o" + std::to_string(i));
      rows += (i == 0 ? "<HR/>" : "") + DotRow({left.Left(), right.Right()});
    }
  }

  static void WriteAttributes(const Node& node, const Card& card, const CardLook& look, std::string& rows) {
    bool is_first = true;
    for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
      const Attribute& attribute = *node.GetAttribute(i);
      const bool is_fed = card.fed.contains(attribute.GetName());
      if (!is_fed && attribute.GetValue() == attribute.GetDefault()) continue;
      const std::string value = is_fed ? std::string("connected") : ShowValue(attribute);
      rows += (std::exchange(is_first, false) ? "<HR/>" : "") +
              DotRow({DotCell(DotSmall(attribute.GetName(), look.faint)).Left().Port("a" + std::to_string(i)),
                      DotCell(is_fed ? DotItalic(value, look.faint) : DotSmall(value, look.text)).Right()});
    }
  }

  [[nodiscard]] unsigned FindKind(const std::string& id, const std::string& outplug) const {
    const Node* const node = document_.FindNode(id);
    const int index = node == nullptr ? -1 : node->GetOutplugIndex(outplug);
    return index < 0 ? PlugType::kNone : node->GetOutplugs()[static_cast<std::size_t>(index)].type;
  }

  static std::string MakeStyle(const WireLook& look) {
    return std::string("color=\"") + look.color + "\", style=" + look.style +
           ", penwidth=" + FormatJsonNumber(look.width) + ", arrowhead=" + look.arrow;
  }

  void WriteWire(const DocumentConnection& connection, std::string& text) const {
    const auto [from, outplug] = SplitPlug(connection.from);
    const auto [to, inplug] = SplitPlug(connection.to);
    const std::size_t source = numbers_.at(from);
    const std::size_t target = numbers_.at(to);
    const WireLook& look = FindLook(FindKind(from, outplug));
    text += "  " + FindOutput(source, outplug) + " -> " + FindInput(target, inplug, connection.index) + " [" +
            MakeStyle(look) + ", tooltip=" +
            DotQuote(MakeLine(connection.from) + " to " + MakeLine(connection.to) + " (" +
                     (look.type == PlugType::kNone ? "unknown" : PlugType::GetName(look.type)) + ")");
    text += "]\n";
  }

  void WriteOutput(std::size_t index, std::string& text) const {
    const DocumentOutput& output = document_.GetOutputs()[index];
    const auto [from, outplug] = SplitPlug(output.from);
    std::string rows = DotRow({DotCell(DotBold(KeepEnd(output.path, kLongestId), kFileCard.text))});
    std::string words = output.type;
    for (const std::string& word : {output.samples, output.opacity, output.metadata, output.layer}) {
      if (!word.empty()) words += (words.empty() ? "" : ", ") + word;
    }
    if (!words.empty()) rows += DotRow({DotCell(DotSmall(MakeLine(words, kLongestId), kFileCard.faint))});
    const std::string name = "f" + std::to_string(index);
    text += "  " + name + " [tooltip=" + DotQuote("writes " + MakeLine(output.path)) + ", label=<" +
            DotTable(rows, kFileCard.background, kFileCard.border, 1, "") + ">]\n";
    text += "  " + FindOutput(numbers_.at(from), outplug) + " -> " + name + ":w [" +
            MakeStyle(FindLook(FindKind(from, outplug))) +
            ", tooltip=" + DotQuote(MakeLine(output.from) + " to the file " + MakeLine(output.path)) + "]\n";
  }

  void WriteProblems(std::string& text) const {
    std::string rows;
    for (std::size_t i = 0; i < std::min(problems_.size(), kMostProblems); ++i) rows += MakeProblemRow(problems_[i], 1);
    if (problems_.size() > kMostProblems) {
      rows += MakeProblemRow("and " + std::to_string(problems_.size() - kMostProblems) + " more problems", 1);
    }
    text += "  labelloc=b\n  label=<" + DotTable(rows, kProblemBackground, kProblem, 1, "") + ">\n";
  }

  const GraphDocument& document_;
  std::unordered_map<std::string, std::size_t> numbers_;
  std::unordered_map<std::string, std::size_t> quoted_;
  std::vector<Card> cards_;
  std::vector<std::string> problems_;
};

}  // namespace

std::string WriteDot(const GraphDocument& document, const std::vector<std::string>& problems) {
  return Picture(document, problems).Write();
}

Status DrawSvg(const GraphDocument& document, const std::vector<std::string>& problems, std::string& svg) {
  if (document.GetIds().size() > kMostNodes) {
    return Status::Error("a picture shows at most " + std::to_string(kMostNodes) + " nodes, and the graph has " +
                         std::to_string(document.GetIds().size()));
  }
  return RunDot(WriteDot(document, problems), svg);
}

}  // namespace ScEng
