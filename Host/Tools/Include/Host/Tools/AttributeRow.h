// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Effect.h"

/// Everything that is ever said of an attribute, in one row of its node's table: what the attribute is, and how a
/// panel, a page, a command line or a binding presents it.
///
/// Rows are constants. They are made by the functions below and completed by the `With` functions, each of which
/// returns a changed copy:
///
///     constexpr AttributeRow kRadius =
///         NumberRow("radius", 1.0, 0.0, 250.0, 1.0, 0, "How far the slope reaches.").WithUnit("px");
///
/// The place of a row in the table is the attribute's id. A node keeps pointers to its rows, which live as long as the
/// library that holds them.
struct AttributeRow {
  Attribute::Kind kind = Attribute::Kind::kFlag;
  const char* name = "";
  /// One or two plain sentences: what the attribute does to the picture.
  const char* text = "";

  /// The default of a number (first entry), point (two), frame or colour (four).
  double numbers[4] = {};
  double lowest = 0.0;
  double highest = 0.0;
  double step = 0.0;
  int decimals = 0;
  /// The default of a flag.
  bool flag = false;
  /// The words of a choice, comma-separated, and the index of the default.
  const char* words = "";
  int index = 0;
  /// The default of a string, and what the string is for.
  const char* string = "";
  Attribute::StringUse string_use = Attribute::StringUse::kText;

  /// What is shown for the words of a choice: comma-separated, in their order; empty to show the words.
  const char* labels = "";
  /// The unit of a number, "px" for example; empty for none.
  const char* unit = "";
  /// The exponent of a slider's response; 0 is linear. 2 gives fine control around zero over a wide range.
  double slider_exponent = 0.0;

  /// When the attribute has an effect.
  Effect effect = {};

  [[nodiscard]] constexpr AttributeRow WithLabels(const char* comma_separated) const {
    AttributeRow row = *this;
    row.labels = comma_separated;
    return row;
  }
  [[nodiscard]] constexpr AttributeRow WithUnit(const char* name_of_unit) const {
    AttributeRow row = *this;
    row.unit = name_of_unit;
    return row;
  }
  [[nodiscard]] constexpr AttributeRow WithSliderExponent(double exponent) const {
    AttributeRow row = *this;
    row.slider_exponent = exponent;
    return row;
  }
  /// The attribute never has an effect. `reason` is a clause: what the node does instead.
  [[nodiscard]] constexpr AttributeRow WithoutEffect(const char* reason) const {
    return With({.kind = Effect::Kind::kNever, .reason = reason});
  }
  /// It has one with so many images connected, all inputs of the node together.
  [[nodiscard]] constexpr AttributeRow OnlyWithImages(std::size_t least, std::size_t most = Effect::kAnyNumber) const {
    return With({.kind = Effect::Kind::kWithImages, .least_images = least, .most_images = most});
  }
  /// It has one while the choice of that name is one of these words, comma-separated.
  [[nodiscard]] constexpr AttributeRow OnlyWithWords(const char* choice, const char* comma_separated) const {
    return With({.kind = Effect::Kind::kWithWords, .attribute = choice, .words = comma_separated});
  }
  /// It has one while the number of that name is greater than `bound`.
  [[nodiscard]] constexpr AttributeRow OnlyAbove(const char* number, double bound) const {
    return With({.kind = Effect::Kind::kAbove, .attribute = number, .bound = bound});
  }
  /// It has one while the string of that name is empty.
  [[nodiscard]] constexpr AttributeRow OnlyWithoutText(const char* text_attribute) const {
    return With({.kind = Effect::Kind::kWithoutText, .attribute = text_attribute});
  }

 private:
  [[nodiscard]] constexpr AttributeRow With(const Effect& when) const {
    AttributeRow row = *this;
    row.effect = when;
    return row;
  }
};

constexpr AttributeRow FlagRow(const char* name, bool value, const char* text) {
  AttributeRow row;
  row.kind = Attribute::Kind::kFlag;
  row.name = name;
  row.text = text;
  row.flag = value;
  return row;
}

/// `step` is that of a spin box, `decimals` how many are shown.
constexpr AttributeRow NumberRow(const char* name, double value, double lowest, double highest, double step,
                                 int decimals, const char* text) {
  AttributeRow row;
  row.kind = Attribute::Kind::kNumber;
  row.name = name;
  row.text = text;
  row.numbers[0] = value;
  row.lowest = lowest;
  row.highest = highest;
  row.step = step;
  row.decimals = decimals;
  return row;
}

constexpr AttributeRow ChoiceRow(const char* name, int default_index, const char* words, const char* text) {
  AttributeRow row;
  row.kind = Attribute::Kind::kChoice;
  row.name = name;
  row.text = text;
  row.index = default_index;
  row.words = words;
  return row;
}

constexpr AttributeRow StringRow(const char* name, const char* value, const char* text) {
  AttributeRow row;
  row.kind = Attribute::Kind::kString;
  row.name = name;
  row.text = text;
  row.string = value;
  return row;
}

/// A string that names a file, which the node reads or writes.
constexpr AttributeRow PathRow(const char* name, Attribute::StringUse use, const char* text) {
  AttributeRow row = StringRow(name, "", text);
  row.string_use = use;
  return row;
}

constexpr AttributeRow PointRow(const char* name, double x, double y, const char* text) {
  AttributeRow row;
  row.kind = Attribute::Kind::kPoint;
  row.name = name;
  row.text = text;
  row.numbers[0] = x;
  row.numbers[1] = y;
  return row;
}

/// Of a frame x, y, width and height; of a colour red, green, blue and opacity.
constexpr AttributeRow FourNumbersRow(Attribute::Kind kind, const char* name, const double (&numbers)[4],
                                      const char* text) {
  AttributeRow row;
  row.kind = kind;
  row.name = name;
  row.text = text;
  for (int i = 0; i < 4; ++i) row.numbers[i] = numbers[i];
  return row;
}
constexpr AttributeRow FrameRow(const char* name, const double (&frame)[4], const char* text) {
  return FourNumbersRow(Attribute::Kind::kFrame, name, frame, text);
}
constexpr AttributeRow ColorRow(const char* name, const double (&color)[4], const char* text) {
  return FourNumbersRow(Attribute::Kind::kColor, name, color, text);
}
