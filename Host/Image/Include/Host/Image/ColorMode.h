// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What the samples of a pixel mean. The numbers are part of the host's interface and of stored files.
namespace ColorMode {
/// Four channels: red, green, blue, opacity; colour is straight (not multiplied by opacity).
inline constexpr unsigned kColor = 0;
/// Four channels: x, y, z, opacity; nominal range -1 to 1.
inline constexpr unsigned kSigned = 1;
/// One channel: a value (height, intensity, mask strength).
inline constexpr unsigned kValue = 2;
/// Two channels, two numbers per pixel. The host's own; no node of the Value library knows it.
inline constexpr unsigned kPair = 3;
inline constexpr unsigned kCount = 4;

/// Channels of a mode; 0 for a number that is not a mode.
constexpr int GetNumChannels(unsigned mode) {
  constexpr int kChannels[kCount] = {4, 4, 1, 2};
  return mode < kCount ? kChannels[mode] : 0;
}

/// The word that names the mode: "color", "signed", "value", "pair".
constexpr const char* GetName(unsigned mode) {
  constexpr const char* kNames[kCount] = {"color", "signed", "value", "pair"};
  return mode < kCount ? kNames[mode] : "unknown";
}
}  // namespace ColorMode
