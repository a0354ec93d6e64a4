// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Ramps.h"

#include <algorithm>
#include <cmath>

namespace ScEng {
namespace {

/// A color of CIE 1976 L*a*b* under the white of sRGB (IEC 61966-2-1).
struct LabColor {
  double lightness = 0.0;
  double a = 0.0;
  double b = 0.0;
};

constexpr std::array<double, 3> kWhite = {0.9504559, 1.0, 1.0890578};

double ToLinear(std::uint32_t byte) {
  const double share = byte / 255.0;
  return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

std::uint32_t ToByte(double linear) {
  const double cut = std::clamp(linear, 0.0, 1.0);
  const double share = cut <= 0.0031308 ? cut * 12.92 : 1.055 * std::pow(cut, 1.0 / 2.4) - 0.055;
  return static_cast<std::uint32_t>(std::lround(share * 255.0));
}

LabColor ToLab(std::uint32_t color) {
  const double red = ToLinear(color >> 16U & 0xFFU);
  const double green = ToLinear(color >> 8U & 0xFFU);
  const double blue = ToLinear(color & 0xFFU);
  const auto response = [](double share) {
    return share > 216.0 / 24389.0 ? std::cbrt(share) : (24389.0 / 27.0 * share + 16.0) / 116.0;
  };
  const double x = response((0.4124564 * red + 0.3575761 * green + 0.1804375 * blue) / kWhite[0]);
  const double y = response(0.2126729 * red + 0.7151522 * green + 0.0721750 * blue);
  const double z = response((0.0193339 * red + 0.1191920 * green + 0.9503041 * blue) / kWhite[2]);
  return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

std::uint32_t ToColor(const LabColor& lab) {
  const auto share = [](double response) {
    const double cube = response * response * response;
    return cube > 216.0 / 24389.0 ? cube : (116.0 * response - 16.0) * 27.0 / 24389.0;
  };
  const double middle = (lab.lightness + 16.0) / 116.0;
  const double x = share(middle + lab.a / 500.0) * kWhite[0];
  const double y = share(middle);
  const double z = share(middle - lab.b / 200.0) * kWhite[2];
  return ToByte(3.2404542 * x - 1.5371385 * y - 0.4985314 * z) << 16U |
         ToByte(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z) << 8U |
         ToByte(0.0556434 * x - 0.2040259 * y + 1.0572252 * z);
}

/// A ramp by colors at even distances.
struct RampPoints {
  const char* name;
  /// Whether lightness grows by equal steps from the first color to the last, whatever that of the colors between is:
  /// equal differences of value are then equal differences to the eye, also to one that tells no red from green.
  bool is_even;
  std::vector<std::uint32_t> colors;
};

const std::vector<RampPoints>& GetPoints() {
  static const std::vector<RampPoints> points = {
      {"viridis", true, {0x440154, 0x46307D, 0x39548C, 0x2B748E, 0x20938C, 0x2FB27C, 0x6CCD59, 0xB3DC30, 0xFDE725}},
      {"cividis", true, {0x00204D, 0x1F3A6D, 0x4B536C, 0x68696F, 0x7D7C78, 0x989076, 0xB5A56B, 0xD3BE58, 0xFFE945}},
      {"magma", true, {0x000004, 0x1C1044, 0x4F127B, 0x812581, 0xB5367A, 0xE8616A, 0xF99B7C, 0xFDCB9B, 0xFCFDBF}},
      {"terrain", true, {0x1C3D2E, 0x2F5B39, 0x55783F, 0x84914D, 0xACA260, 0xC9B484, 0xD9C6A9, 0xE9DFD2, 0xFFFFFF}},
      {"heat", true, {0x000000, 0x3D0606, 0x760F07, 0xB01D07, 0xDF4206, 0xF57A0C, 0xFBAC2C, 0xFCD871, 0xFFFFFF}},
      {"gray", true, {0x000000, 0xFFFFFF}},
      {"blue_red", false, {0x1F3B8C, 0x3F70BD, 0x85AEDC, 0xC9DAEA, 0xF4F2EF, 0xF2CDBC, 0xE0957A, 0xC2513F, 0x8C1226}},
  };
  return points;
}

/// Gray steps are those of the plain view rather than equal ones of lightness.
RampTable MakeGray() {
  RampTable table;
  for (std::size_t i = 0; i < kRampColors; ++i) table[i] = static_cast<std::uint32_t>(i) * 0x010101U;
  return table;
}

RampTable MakeTable(const RampPoints& points) {
  if (points.colors.size() == 2) return MakeGray();
  std::vector<LabColor> path;
  for (const std::uint32_t color : points.colors) path.push_back(ToLab(color));
  RampTable table;
  for (std::size_t i = 0; i < kRampColors; ++i) {
    const double share = static_cast<double>(i) / static_cast<double>(kRampColors - 1);
    const double place = share * static_cast<double>(path.size() - 1);
    const auto first = std::min(static_cast<std::size_t>(place), path.size() - 2);
    const double weight = place - static_cast<double>(first);
    const auto blend = [&](double LabColor::*part) {
      return path[first].*part + (path[first + 1].*part - path[first].*part) * weight;
    };
    const double lightness = points.is_even
                                 ? path.front().lightness + (path.back().lightness - path.front().lightness) * share
                                 : blend(&LabColor::lightness);
    table[i] = ToColor({lightness, blend(&LabColor::a), blend(&LabColor::b)});
  }
  return table;
}

const std::vector<RampTable>& GetTables() {
  static const std::vector<RampTable> tables = [] {
    std::vector<RampTable> made;
    for (const RampPoints& points : GetPoints()) made.push_back(MakeTable(points));
    return made;
  }();
  return tables;
}

}  // namespace

const std::vector<std::string>& ListRamps() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> listed;
    for (const RampPoints& points : GetPoints()) listed.emplace_back(points.name);
    return listed;
  }();
  return names;
}

const RampTable& FindRamp(const std::string& name) {
  const auto& names = ListRamps();
  auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) found = std::find(names.begin(), names.end(), "gray");
  return GetTables()[static_cast<std::size_t>(found - names.begin())];
}

}  // namespace ScEng
