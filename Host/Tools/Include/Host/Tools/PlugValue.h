// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <variant>

#include "Host/Math/Geometry.h"

class Image;

/// Data-type codes of plugs. An image plug has code 8; the others are the host's.
namespace PlugType {
inline constexpr unsigned kNone = 0;
inline constexpr unsigned kFlag = 1;
inline constexpr unsigned kNumber = 2;
/// Strings and choice words.
inline constexpr unsigned kText = 3;
inline constexpr unsigned kColor = 4;
inline constexpr unsigned kPoint = 5;
inline constexpr unsigned kFrame = 6;
inline constexpr unsigned kImage = 8;

/// The word for a code in messages: "image", "number", ...
constexpr const char* GetName(unsigned type) {
  switch (type) {
    case kFlag: return "flag";
    case kNumber: return "number";
    case kText: return "text";
    case kColor: return "color";
    case kPoint: return "point";
    case kFrame: return "frame";
    case kImage: return "image";
    default: return "nothing";
  }
}
}  // namespace PlugType

/// What a plug carries while a node is evaluated: nothing, or a value of one kind.
///
/// An image is carried by pointer, without a reference of its own; it stays valid during the evaluation.
class PlugValue {
 public:
  PlugValue() = default;
  PlugValue(const Image* image) : value_(image) {}
  PlugValue(bool flag) : value_(flag) {}
  PlugValue(double number) : value_(number) {}
  PlugValue(std::string text) : value_(std::move(text)) {}
  PlugValue(const ScEng::Rgbo& color) : value_(color) {}
  PlugValue(const ScEng::Point& point) : value_(point) {}
  PlugValue(const ScEng::Frame& frame) : value_(frame) {}

  /// The data-type code of what is carried; `PlugType::kNone` for nothing.
  [[nodiscard]] unsigned GetType() const {
    constexpr unsigned kCodes[] = {PlugType::kNone, PlugType::kImage, PlugType::kFlag,  PlugType::kNumber,
                                   PlugType::kText, PlugType::kColor, PlugType::kPoint, PlugType::kFrame};
    return kCodes[value_.index()];
  }
  /// Of the same kind and equal; images by their address.
  friend bool operator==(const PlugValue&, const PlugValue&) = default;
  [[nodiscard]] bool HasValue() const { return value_.index() != 0; }

  /// What is carried where it is of the asked kind, else a neutral value: null, false, 0, the empty string and so on.
  [[nodiscard]] const Image* GetImage() const { return Get<const Image*>(); }
  [[nodiscard]] bool GetFlag() const { return Get<bool>(); }
  [[nodiscard]] double GetNumber() const { return Get<double>(); }
  [[nodiscard]] std::string GetText() const { return Get<std::string>(); }
  [[nodiscard]] ScEng::Rgbo GetColor() const { return Get<ScEng::Rgbo>(); }
  [[nodiscard]] ScEng::Point GetPoint() const { return Get<ScEng::Point>(); }
  [[nodiscard]] ScEng::Frame GetFrame() const { return Get<ScEng::Frame>(); }

 private:
  template <class Kind>
  [[nodiscard]] Kind Get() const {
    const Kind* held = std::get_if<Kind>(&value_);
    return held != nullptr ? *held : Kind{};
  }

  std::variant<std::monostate, const Image*, bool, double, std::string, ScEng::Rgbo, ScEng::Point, ScEng::Frame> value_;
};
