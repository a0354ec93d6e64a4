// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/NodeText.h"

#include <charconv>
#include <initializer_list>
#include <sstream>

#include "Apps/Value/Common.h"
#include "Apps/Value/SafeText.h"
#include "Apps/Value/UsageText.h"
#include "Apps/Value/WrapText.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/NodeRecord.h"

namespace {

// How far what is said of an attribute is indented.
constexpr std::size_t kIndent = 18;
// How far what is said of a node in a list is.
constexpr std::size_t kSentenceIndent = 6;

/// What a library says, in one line that cannot pass for several.
std::string Plain(const std::string& text) {
  constexpr std::size_t kLongest = 1000;
  return EscapeLine(text, kLongest);
}

std::string FormatDouble(double number) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

std::string FormatNumbers(std::initializer_list<double> numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : ",") + FormatDouble(number);
  return text;
}

std::string FormatValue(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return value.GetFlag() ? "true" : "false";
    case PlugType::kNumber: return FormatDouble(value.GetNumber());
    case PlugType::kText: return value.GetText();
    case PlugType::kPoint: return FormatNumbers({value.GetPoint().x, value.GetPoint().y});
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return FormatNumbers({frame.x, frame.y, frame.width, frame.height});
    }
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return FormatNumbers({color.red, color.green, color.blue, color.opacity});
    }
    default: return {};
  }
}

std::string DescribeAttribute(const Attribute& attribute) {
  std::string form = Pad(attribute.GetKindName(), 10) + "default " + FormatValue(attribute.GetDefault());
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    form += ", " + FormatDouble(attribute.GetLowest()) + " to " + FormatDouble(attribute.GetHighest()) + ", step " +
            FormatFloat(static_cast<float>(attribute.GetStep())) + ", " + std::to_string(attribute.GetDecimals()) +
            " decimals";
  }
  if (attribute.GetKind() == Attribute::Kind::kChoice) form += ", one of " + JoinWords(attribute.GetChoices());
  const AttributeRow* row = attribute.GetRow();
  if (row == nullptr) return Wrap(Plain(form), kIndent);
  if (*row->unit != '\0') form += std::string(", in ") + row->unit;
  return Wrap(Plain(form), kIndent) + "\n" + std::string(kIndent, ' ') + Wrap(Plain(row->text), kIndent);
}

/// "-i FILE" for a node with one input, "-i image_a=FILE -i image_b=FILE" for one with several, and so for outputs.
std::string ShowFiles(const char* option, const std::vector<PlugRecord>& plugs, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    if (plugs[i].type != PlugType::kImage) continue;
    text += std::string(" ") + option + " " + (count > 1 ? plugs[i].name + "=" : "") + "FILE" +
            (plugs[i].connections == PlugRecord::kAnyNumber ? "..." : "");
  }
  return text;
}

/// How the node is put on files; empty for one that makes no image.
std::string ShowUse(const NodeInterface& descriptor, const Node& node) {
  const std::string outputs = ShowFiles("-o", node.GetOutplugs(), node.GetOutplugs().size());
  if (outputs.empty()) return {};
  std::string settings;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    const bool is_path =
        attribute.GetKind() == Attribute::Kind::kString && attribute.GetStringUse() == Attribute::StringUse::kReadPath;
    if (is_path) settings += " --set " + attribute.GetName() + "=FILE";
  }
  return "value apply " + QuoteForShell(descriptor.GetName()) + settings +
         ShowFiles("-i", node.GetInplugs(), node.GetNumRegularInputs()) + outputs;
}

void DescribePlugs(const Node& node, std::ostringstream& text) {
  text << "Inputs\n";
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) {
    const PlugRecord& plug = node.GetInplugs()[i];
    text << "  " << Pad(Plain(plug.name), 16) << PlugType::GetName(plug.type)
         << (plug.connections == PlugRecord::kAnyNumber ? ", any number of connections" : "") << "\n";
  }
  if (node.GetNumRegularInputs() == 0) text << "  (none)\n";
  text << "Outputs\n";
  for (unsigned i = 0; i < node.GetOutplugs().size(); ++i) {
    const PlugRecord& plug = node.GetOutplugs()[i];
    const std::string alias = node.GetOutplugAlias(i);
    text << "  " << Pad(Plain(plug.name), 16) << PlugType::GetName(plug.type)
         << (alias == plug.name ? "" : "  " + Plain(alias)) << "\n";
  }
  if (node.GetOutplugs().empty()) text << "  (none)\n";
}

}  // namespace

std::string DescribeBriefly(const NodeInterface& descriptor, const Node& node) {
  std::string text = "  " + Pad(Plain(descriptor.GetName()), 24) +
                     Pad(Plain(descriptor.GetNodeFactory()->GetTypeName()), 34) + descriptor.GetNodeType().ToString() +
                     "\n";
  if (const NodeRecord* record = node.GetRecord()) {
    text += std::string(kSentenceIndent, ' ') + Wrap(Plain(record->sentence), kSentenceIndent) + "\n";
  }
  return text;
}

std::string DescribeNode(const NodeInterface& descriptor, const Node& node) {
  constexpr std::size_t kFactIndent = 11;
  std::ostringstream text;
  text << Plain(descriptor.GetName()) << "\n";
  if (const NodeRecord* record = node.GetRecord()) text << "  " << Wrap(Plain(record->sentence), 2) << "\n";
  text << "  class    " << Plain(descriptor.GetNodeFactory()->GetTypeName()) << "\n";
  text << "  numbers  " << descriptor.GetNodeType().ToString() << "\n";
  text << "  library  " << (descriptor.GetLibraryName().empty() ? "(the host)" : Plain(descriptor.GetLibraryName()))
       << "\n";
  if (const std::string use = ShowUse(descriptor, node); !use.empty()) {
    text << "  use      " << Wrap(Plain(use), kFactIndent) << "\n";
  }
  DescribePlugs(node, text);
  text << "Attributes\n";
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    text << "  " << Pad(Plain(node.GetAttribute(i)->GetName()), 16) << DescribeAttribute(*node.GetAttribute(i)) << "\n";
  }
  if (node.GetNumAttributes() == 0) text << "  (none)\n";
  return text.str();
}
