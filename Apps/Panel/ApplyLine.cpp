// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/ApplyLine.h"

#include <array>
#include <charconv>
#include <initializer_list>
#include <string_view>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"

namespace {

std::string Quote(const std::string& word) {
  constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,/:@%";
  if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) return word;
  std::string quoted = "'";
  for (const char letter : word) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
  return quoted + "'";
}

std::string ToText(double number) {
  std::array<char, 40> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

std::string Join(std::initializer_list<double> numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : ",") + ToText(number);
  return text;
}

/// In the form that --set takes.
std::string ToText(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return value.GetFlag() ? "true" : "false";
    case PlugType::kNumber: return ToText(value.GetNumber());
    case PlugType::kText: return value.GetText();
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return Join({color.red, color.green, color.blue, color.opacity});
    }
    case PlugType::kPoint: return Join({value.GetPoint().x, value.GetPoint().y});
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return Join({frame.x, frame.y, frame.width, frame.height});
    }
    default: return {};
  }
}

}  // namespace

std::string MakeApplyLine(const ApplyLine& line, const Node& node) {
  std::string text = "value apply " + Quote(line.name);
  for (const std::string& input : line.inputs) text += " -i " + Quote(input);
  if (!line.range.empty()) text += " --range " + Quote(line.range);
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    if (attribute.GetValue() == attribute.GetDefault()) continue;
    text += " --set " + Quote(attribute.GetName() + "=" + ToText(attribute.GetValue()));
  }
  return text + " -o " + Quote(line.outplug.empty() ? "out.exr" : line.outplug + "=out.exr");
}
