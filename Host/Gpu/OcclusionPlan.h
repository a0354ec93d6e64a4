// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <vector>

#include "Host/Gpu/Api.h"
#include "Host/Math/Border.h"

namespace Gpu {

inline constexpr int kDirections = 16;

/// The field that is looked over, and what lies beyond its border. By default steps never come to one.
struct FieldShape {
  int size_x = std::numeric_limits<int>::max() - 1;
  int size_y = std::numeric_limits<int>::max() - 1;
  ScEng::Border border = ScEng::Border::kWrap;
};

/// How many steps are taken for a radius, at least 1: all of them, or as many as lead beyond the border from every
/// pixel and in every direction where border pixels go on. There the same height comes again and again, farther and
/// farther away. Throws `std::bad_alloc` for more steps than tables can hold.
HOST_GPU_API int CountSteps(double radius, const FieldShape& shape);

/// The steps of ambient occlusion, worked out once per run: where each step's four pixels lie and what they share, and
/// the groups in which steps are taken or left out together.
struct HOST_GPU_API OcclusionPlan {
  /// A step along one direction: its first pixel, relative to the pixel that looks, and the bilinear shares of left
  /// and right, upper and lower pixels; `upper` and `lower` are divided by the step's length. A pixel farther away than
  /// the field is large is replaced by one that is not and stands for the same, so that margins need not be larger.
  struct Step {
    int x = 0;
    int y = 0;
    double left = 0.0;
    double right = 0.0;
    double upper = 0.0;
    double lower = 0.0;
  };
  /// Steps from `first` to before `end` (step n is n + 1 pixels long), and the upper left pixel, relative to the pixel
  /// that looks, of the window that holds all pixels that they read.
  struct Group {
    int first = 0;
    int end = 0;
    int x = 0;
    int y = 0;
  };
  /// Pixels along each side of a window.
  static constexpr int kWindow = 8;

  /// `sharing` rows of pixels, one below the other, share the windows of the first.
  OcclusionPlan(int steps, int sharing, const FieldShape& shape = {});

  /// Directions 0, 4, 8 and 12 run along rows and columns: their steps meet pixels exactly and read one.
  static bool MeetsPixels(int direction) { return direction % 4 == 0; }

  int num_steps = 0;
  /// `num_steps` for each direction.
  std::vector<Step> steps;
  /// Direction by direction; `group_starts` has the first of each, and at its end the number of all.
  std::vector<Group> groups;
  std::vector<int> group_starts;
};

}  // namespace Gpu
