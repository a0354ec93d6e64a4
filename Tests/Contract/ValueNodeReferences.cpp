// SPDX-License-Identifier: Apache-2.0
#include "Tests/Contract/ValueNodeReferences.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>

#include "Host/Math/Constants.h"
#include "Value/Nodes/Clamp/ClampReference.h"
#include "Value/Nodes/Compare/CompareReference.h"
#include "Value/Nodes/Steps/StepsReference.h"
#include "Value/Nodes/ToValue/ToValueReference.h"

namespace Testing {
namespace {

using Constants = ScEng::Math<float>;
using Samples = std::vector<float>;

float GetNumber(const AttributeValues& attributes, const char* name) {
  return static_cast<float>(attributes.at(name).GetNumber());
}

/// The place of a choice's word in its list; -1 for a word that is not in it.
int GetIndex(const AttributeValues& attributes, const char* name, const std::vector<std::string>& words) {
  const auto found = std::find(words.begin(), words.end(), attributes.at(name).GetText());
  return found == words.end() ? -1 : static_cast<int>(found - words.begin());
}

Samples Map(const Image& image, const std::function<float(float)>& formula) {
  Samples result(image.GetNumSamples());
  std::transform(image.GetConstArray(), image.GetConstArray() + result.size(), result.begin(), formula);
  return result;
}

template <class Function>
std::function<float(float)> InDouble(Function function) {
  return [function](float v) { return static_cast<float>(function(static_cast<double>(v))); };
}

/// Lowest and highest sample, NaN ignored; (0, 1) where no sample is left.
std::pair<float, float> GetSampleRange(const Image& image) {
  float low = std::numeric_limits<float>::infinity();
  float high = -low;
  for (std::size_t i = 0; i < image.GetNumSamples(); ++i) {
    const float v = image.GetConstArray()[i];
    if (v < low) low = v;
    if (v > high) high = v;
  }
  if (low > high) return {0.0F, 1.0F};
  return {low, high};
}

struct Arithmetic {
  std::function<float(float, float)> fold;
  /// With the constant.
  std::function<float(float, float)> single;
};

std::optional<Arithmetic> GetArithmetic(const std::string& type_name) {
  const auto both = [](auto formula) { return Arithmetic{formula, formula}; };
  if (type_name == "ImageValueAddNode") return both([](float a, float b) { return a + b; });
  if (type_name == "ImageValueSubtractNode") return both([](float a, float b) { return a - b; });
  if (type_name == "ImageValueMultiplyNode") return both([](float a, float b) { return a * b; });
  if (type_name == "ImageValueDivideNode") return both([](float a, float b) { return a / b; });
  if (type_name == "ImageValuePowerNode") {
    return Arithmetic{
        [](float a, float b) { return static_cast<float>(std::pow(static_cast<double>(a), static_cast<double>(b))); },
        [](float v, float) { return v; }};
  }
  if (type_name == "ImageValueMinimumNode") {
    return Arithmetic{[](float a, float b) { return b < a ? b : a; }, [](float v, float a) { return a < v ? a : v; }};
  }
  if (type_name == "ImageValueMaximumNode") {
    return Arithmetic{[](float a, float b) { return b > a ? b : a; }, [](float v, float a) { return a > v ? a : v; }};
  }
  return std::nullopt;
}

Samples RunArithmetic(const Arithmetic& arithmetic, const std::vector<const Image*>& images, float constant) {
  if (images.size() == 1) return Map(*images[0], [&](float v) { return arithmetic.single(v, constant); });
  Samples folded(images[0]->GetConstArray(), images[0]->GetConstArray() + images[0]->GetNumSamples());
  for (std::size_t image = 1; image < images.size(); ++image) {
    for (std::size_t i = 0; i < folded.size(); ++i) {
      folded[i] = arithmetic.fold(folded[i], images[image]->GetConstArray()[i]);
    }
  }
  return folded;
}

Samples RunCondition(const Image& image, const AttributeValues& attributes) {
  const float a = GetNumber(attributes, "a");
  const float b = GetNumber(attributes, "b");
  const auto [low, high] = GetSampleRange(image);
  const std::vector<std::pair<std::string, std::function<bool(float)>>> tests{
      {"v_eq_min", [low = low](float v) { return v == low; }},
      {"v_df_min", [low = low](float v) { return !(v == low); }},
      {"v_eq_max", [high = high](float v) { return v == high; }},
      {"v_df_max", [high = high](float v) { return !(v == high); }},
      {"v_lt_a", [a](float v) { return v < a; }},
      {"v_lte_a", [a](float v) { return v <= a; }},
      {"v_eq_a", [a](float v) { return v == a; }},
      {"v_gte_a", [a](float v) { return v >= a; }},
      {"v_gt_a", [a](float v) { return v > a; }},
      {"a_lt_v_lt_b", [a, b](float v) { return a < v && v < b; }},
      {"a_lte_v_lt_b", [a, b](float v) { return a <= v && v < b; }},
      {"a_lt_v_lte_b", [a, b](float v) { return a < v && v <= b; }},
      {"a_lte_v_lte_b", [a, b](float v) { return a <= v && v <= b; }},
  };
  const std::string word = attributes.at("condition").GetText();
  for (const auto& [name, test] : tests) {
    if (name == word) return Map(image, [&, &holds = test](float v) { return holds(v) ? 1.0F : 0.0F; });
  }
  return {};
}

Samples RunRange(const Image& image, const AttributeValues& attributes) {
  const float center = GetNumber(attributes, "center");
  const float size = GetNumber(attributes, "size");
  const float falloff = GetNumber(attributes, "falloff");
  const float inverse = 1.0F / falloff;
  const int profile = GetIndex(attributes, "profile", {"linear", "smooth", "arc_out", "arc_in"});
  const auto root = InDouble([](double x) { return std::sqrt(x); });
  const auto shape = [&](float t) {
    if (profile == 1) return t * t * t * (t * (t * 6.0F - 15.0F) + 10.0F);
    if (profile == 2) return root(1.0F - (t - 1.0F) * (t - 1.0F));
    if (profile == 3) return 1.0F - root(1.0F - t * t);
    return t;
  };
  return Map(image, [&](float v) {
    const float distance = std::fabs(v - center);
    if (size > distance) return 1.0F;
    if (size + falloff > distance) return shape(1.0F - (distance - size) * inverse);
    return 0.0F;
  });
}

/// The value where a test that is false for NaN holds, else what lies below or above the domain.
float Guard(float v, float below, float above, double (*function)(double)) {
  if (!(v > -1.0F)) return below;
  if (!(v < 1.0F)) return above;
  return static_cast<float>(function(static_cast<double>(v)));
}

Samples RunFunction(const Image& image, const AttributeValues& attributes) {
  const auto logarithm = InDouble([](double x) { return std::log(x); });
  const std::map<std::string, std::function<float(float)>> functions{
      {"absolute", [](float v) { return std::copysign(v, 1.0F); }},
      {"sine", InDouble([](double x) { return std::sin(x); })},
      {"cosine", InDouble([](double x) { return std::cos(x); })},
      {"tangent", InDouble([](double x) { return std::tan(x); })},
      {"arcsine", [](float v) { return Guard(v, -Constants::HALF_PI, Constants::HALF_PI, std::asin); }},
      {"arccosine", [](float v) { return Guard(v, Constants::PI, 0.0F, std::acos); }},
      {"arctangent", InDouble([](double x) { return std::atan(x); })},
      {"floor", InDouble([](double x) { return std::floor(x); })},
      {"ceil", InDouble([](double x) { return std::ceil(x); })},
      {"inverse", [](float v) { return 1.0F / v; }},
      {"log", logarithm},
      {"log2", [&](float v) { return logarithm(v) * Constants::INV_LN_2; }},
      {"log10", [&](float v) { return logarithm(v) * Constants::INV_LN_10; }},
      {"exponential", InDouble([](double x) { return std::exp(x); })},
      {"square_root", InDouble([](double x) { return std::sqrt(x); })},
      {"cubic_root", InDouble([](double x) { return std::cbrt(x); })},
      {"deg_to_rad", [](float v) { return v * Constants::DEG_TO_RAD; }},
      {"rad_to_deg", [](float v) { return v * Constants::RAD_TO_DEG; }},
  };
  const auto found = functions.find(attributes.at("function").GetText());
  return found == functions.end() ? Samples() : Map(image, found->second);
}

Samples RunToValue(const Image& image, const AttributeValues& attributes) {
  const float low = GetNumber(attributes, "low");
  const float high = GetNumber(attributes, "high");
  const unsigned mode = image.GetColorMode();
  const auto pixels = static_cast<std::size_t>(image.GetSizeX()) * static_cast<std::size_t>(image.GetSizeY());
  Samples values(pixels, low);
  const ValueRange measured = ToValue::Reference::Reduce(image.GetConstArray(), mode, values.data(), pixels);
  ValueRange source = measured;
  const bool auto_level = attributes.at("auto_level").GetFlag();
  if (!auto_level || measured.high - measured.low < 0.0001F) {
    ValueRange nominal = measured;
    if (mode == ColorMode::kColor) nominal = {0.0F, 1.0F};
    if (mode == ColorMode::kSigned) nominal = {-1.0F, 1.0F};
    if (mode == ColorMode::kValue) nominal = {image.GetValueLow(), image.GetValueHigh()};
    source = auto_level ? ValueRange{nominal.low, measured.high} : nominal;
  }
  ToValue::Reference::Remap(values.data(), pixels, source, low, high);
  return values;
}

Samples RunSteps(const Image& image, const AttributeValues& attributes) {
  const auto pixels = static_cast<std::size_t>(image.GetSizeX()) * static_cast<std::size_t>(image.GetSizeY());
  Samples values(pixels);
  const float steps = GetNumber(attributes, "steps");
  const std::int32_t count = steps < 2.0F || std::isnan(steps) ? 2
                             : steps >= 2147483648.0F          ? INT32_MAX
                                                               : static_cast<std::int32_t>(steps);
  Steps::Reference::Quantize(image.GetConstArray(), static_cast<std::size_t>(image.GetNumChannels()), values.data(),
                             pixels, count, image.GetValueLow(), image.GetValueHigh());
  return values;
}

Samples RunClamp(const Image& image, const AttributeValues& attributes) {
  const auto pixels = static_cast<std::size_t>(image.GetSizeX()) * static_cast<std::size_t>(image.GetSizeY());
  const auto stride = static_cast<std::size_t>(image.GetNumChannels());
  const auto sides = Clamp::GetSides(GetIndex(attributes, "clamp", {"both", "low", "high"}));
  const auto profile =
      Clamp::GetProfile(GetIndex(attributes, "profile", {"linear", "smooth", "perlin", "arc_out", "arc_in"}));
  const Clamp::Limits limits = Clamp::Reference::OpenSide({GetNumber(attributes, "low"), GetNumber(attributes, "high")},
                                                          sides, image.GetConstArray(), stride, pixels);
  Samples values(pixels);
  Clamp::Reference::Apply(image.GetConstArray(), stride, values.data(), pixels, limits, profile);
  return values;
}

Samples RunCompare(unsigned output, const std::vector<const Image*>& images, const AttributeValues& attributes) {
  const auto pixels = static_cast<std::size_t>(images[0]->GetSizeX()) * static_cast<std::size_t>(images[0]->GetSizeY());
  Samples results(pixels, 0.0F);
  if (images.size() < 2) return results;
  static const std::vector<std::string> precisions{
      "0.0000000001", "0.000000001", "0.00000001", "0.0000001",   "0.000001",    "0.0001", "0.001",
      "0.01",         "0.1",         "1.0",        "10.0",        "100.0",       "1000.0", "10000.0",
      "100000.0",     "1000000.0",   "10000000.0", "100000000.0", "1000000000.0"};
  const Compare::Rounding rounding(GetIndex(attributes, "precision", precisions));
  Compare::Reference::Apply(*images[0], *images[1], rounding, static_cast<Compare::Relation>(output),
                            images[0]->GetBox(), results.data());
  return results;
}

}  // namespace

std::optional<Samples> GetExpectedSamples(const std::string& type_name, unsigned output,
                                          const std::vector<const Image*>& images, const AttributeValues& attributes) {
  if (const auto arithmetic = GetArithmetic(type_name)) {
    return RunArithmetic(*arithmetic, images, GetNumber(attributes, "constant"));
  }
  if (type_name == "ImageValueConditionNode") return RunCondition(*images[0], attributes);
  if (type_name == "ImageValueRangeNode") return RunRange(*images[0], attributes);
  if (type_name == "ImageValueFunctionNode") return RunFunction(*images[0], attributes);
  if (type_name == "ImageToValueNode") return RunToValue(*images[0], attributes);
  if (type_name == "ImageValueStepsNode") return RunSteps(*images[0], attributes);
  if (type_name == "ImageValueClampNode") return RunClamp(*images[0], attributes);
  if (type_name == "ImageValueCompareNode") return RunCompare(output, images, attributes);
  return std::nullopt;
}

}  // namespace Testing
