// SPDX-License-Identifier: Apache-2.0
//
// Ambient occlusion of a field of heights: for each pixel the mean over 16 directions of 1 / (1 + T * T), T being the
// steepest rise, at least 0, to one of the steps along that direction.
//
// Built with these definitions:
//
//   REAL       float or double, the type of heights
//   LANES      neighbouring pixels of a row that one vector holds: 1, 2, 4, 8 or 16
//   ROWS       rows of such vectors that one work-item computes: a tile is LANES x ROWS pixels
//   SHARING    rows of a tile that share a window; ROWS is a multiple of it
//   COLUMN     rows whose windows one work-item finds
//   LEAST      rises up to this count as none
//   INFINITE   where heights may be infinite
//
// What keeps the cost from growing with the number of steps: a group of steps is taken only if the highest height of
// the 8 x 8 window that holds its pixels, as near as the group's nearest step, is a steeper rise than some pixel of the
// tile has met. Nothing is lost by that, whatever the heights. A group left out costs about as much as one step.
//
// Heights have a margin on each side that holds what lies beyond the border, so that no step asks for borders.

#ifdef USES_DOUBLE
#pragma OPENCL EXTENSION cl_khr_fp64 : enable
#endif

#define JOIN_(a, b) a##b
#define JOIN(a, b) JOIN_(a, b)

#if LANES == 1
typedef REAL Vector;
typedef float FloatVector;
typedef int Flags;
#define LOAD(from) (*(from))
#define STORE(values, to) (*(to) = (values))
#define TO_FLOAT(values) ((float)(values))
#define ANY(flags) (flags)
#else
typedef JOIN(REAL, LANES) Vector;
typedef JOIN(float, LANES) FloatVector;
#ifdef __clang__
// `vload` may read halves and join them, which gets in the way of `MoveLanes`.
typedef Vector Anywhere __attribute__((aligned(sizeof(REAL))));
#define LOAD(from) (*(const global Anywhere*)(from))
#else
#define LOAD(from) JOIN(vload, LANES)(0, from)
#endif
#define STORE(values, to) JOIN(vstore, LANES)(values, 0, to)
#define TO_FLOAT(values) JOIN(convert_float, LANES)(values)
#ifdef USES_DOUBLE
typedef JOIN(long, LANES) Flags;
#else
typedef JOIN(int, LANES) Flags;
#endif
#if LANES == 2
#define ANY(flags) (as_ushort(convert_char2(flags)) != 0)
#elif LANES == 4
#define ANY(flags) (as_uint(convert_char4(flags)) != 0)
#elif LANES == 8
#define ANY(flags) (as_ulong(convert_char8(flags)) != 0)
#else
// Compilers make `any` a test of each lane in turn.
bool AnyOf16(char16 flags) {
  const ulong2 halves = as_ulong2(flags);
  return (halves.x | halves.y) != 0;
}
#define ANY(flags) AnyOf16(convert_char16(flags))
#endif
#endif

// The vector one pixel to the right of `here`, which was read at `from`. One of 16 lanes fills a line of the cache, so
// that another read nearly always straddles two; there its lanes are moved, which is one instruction in this form.
#if LANES == 16
Vector MoveLanes(Vector here, REAL next) {
  here = here.s123456789abcdef0;
  here.sf = next;
  return here;
}
#define LOAD_NEXT(here, from) MoveLanes(here, (from)[LANES])
#else
#define LOAD_NEXT(here, from) LOAD((from) + 1)
#endif

// Compilers may fuse products and sums, which is faster and at least as exact.
#pragma OPENCL FP_CONTRACT ON

#define UNROLL _Pragma("unroll")
#define DIRECTIONS 16

/// The highest of the 8 x 8 heights of each window, which is named by its upper left pixel and is cut off at the last
/// row. A work-item finds those of `COLUMN` rows.
kernel void FindHighest(global const REAL* heights, global REAL* windows, int stride, int size_y) {
  const int x = get_global_id(0) * LANES;
  const int y = get_global_id(1) * COLUMN;
  if (x >= stride || y >= size_y) return;
  Vector highest[COLUMN + 7];
  UNROLL for (int row = 0; row < COLUMN + 7; ++row) {
    const global REAL* from = heights + (size_t)min(y + row, size_y - 1) * stride + x;
    const Vector left = max(max(LOAD(from), LOAD(from + 1)), max(LOAD(from + 2), LOAD(from + 3)));
    const Vector right = max(max(LOAD(from + 4), LOAD(from + 5)), max(LOAD(from + 6), LOAD(from + 7)));
    highest[row] = max(left, right);
  }
  UNROLL for (int row = 0; row < COLUMN + 6; ++row) highest[row] = max(highest[row], highest[row + 1]);
  UNROLL for (int row = 0; row < COLUMN + 4; ++row) highest[row] = max(highest[row], highest[row + 2]);
  UNROLL for (int row = 0; row < COLUMN; ++row) {
    if (y + row < size_y) STORE(max(highest[row], highest[row + 4]), windows + (size_t)(y + row) * stride + x);
  }
}

/// `offsets`, `shares` and `inverses` have one entry per direction and step: where the step's first pixel lies, the
/// bilinear shares of its left and right, upper and lower pixels, the latter two divided by the step's length, and that
/// length's inverse. The directions along rows and columns meet pixels exactly and use the first pixel alone.
///
/// Steps are taken in `groups`: the first step, one past the last, and the place of the window that holds all pixels
/// that they read, relative to the place of the pixel that looks in `windows`. Those of a direction begin at its entry
/// in `group_starts`. `margin_x` is the place of the first pixel in a row of heights, `margin_y` in a column.
///
/// The image is computed in strips of `strip` vectors, which follow each other along the second dimension.
kernel void Occlude(global const REAL* heights, global const REAL* windows, int stride, int margin_x, int margin_y,
                    global const int* offsets, global const REAL* shares, global const REAL* inverses, int steps,
                    global const int* group_starts, global const int4* groups, global float* result, int size_x,
                    int size_y, int strip) {
  const int rows = (size_y + ROWS - 1) / ROWS;
  const int x = ((int)get_global_id(1) / rows * strip + (int)get_global_id(0)) * LANES;
  const int y = (int)get_global_id(1) % rows * ROWS;
  if (x >= size_x || y >= size_y) return;
  const size_t place = (size_t)(y + margin_y) * stride + (x + margin_x);
  const global REAL* first = heights + place;

  Vector openness[ROWS];
  // Minus the heights of the tile.
  Vector depth[ROWS];
  UNROLL for (int row = 0; row < ROWS; ++row) {
    openness[row] = (Vector)0;
    depth[row] = -LOAD(first + (size_t)row * stride);
  }
  for (int direction = 0; direction < DIRECTIONS; ++direction) {
    const bool meets_pixels = (direction & 3) == 0;
    Vector steepest[ROWS];
    UNROLL for (int row = 0; row < ROWS; ++row) steepest[row] = (Vector)LEAST;
    for (int group = group_starts[direction]; group < group_starts[direction + 1]; ++group) {
      const int begin = groups[group].x;
      const int end = groups[group].y;
      const global REAL* window = windows + place + groups[group].z;
      const Vector nearest = (Vector)(REAL)(begin + 1);
      Flags is_higher = (Flags)0;
      UNROLL for (int row = 0; row < ROWS; row += SHARING) {
        // Only what is above `lowest` might, as near as the nearest step, be a steeper rise in one of these rows. A
        // pixel at minus infinity that has met an infinite rise makes a NaN here, which is less than nothing.
        Vector lowest = steepest[row] * nearest - depth[row];
#ifdef INFINITE
        lowest = lowest < (Vector)INFINITY ? lowest : (Vector)INFINITY;
#endif
        UNROLL for (int next = row + 1; next < row + SHARING; ++next) {
          const Vector needed = steepest[next] * nearest - depth[next];
          lowest = needed < lowest ? needed : lowest;
        }
        is_higher |= LOAD(window + (size_t)row * stride) > lowest;
      }
      if (!ANY(is_higher)) continue;

      for (int step = begin; step < end; ++step) {
        const int at = direction * steps + step;
        const global REAL* there = first + offsets[at];
        const Vector inverse = (Vector)inverses[step];
        if (meets_pixels) {
          UNROLL for (int row = 0; row < ROWS; ++row) {
            const Vector rise = (LOAD(there + (size_t)row * stride) + depth[row]) * inverse;
            steepest[row] = rise > steepest[row] ? rise : steepest[row];
          }
          continue;
        }
        const Vector left = (Vector)shares[4 * at];
        const Vector right = (Vector)shares[4 * at + 1];
        const Vector upper = (Vector)shares[4 * at + 2];
        const Vector lower = (Vector)shares[4 * at + 3];
        Vector here = LOAD(there);
        Vector above = LOAD_NEXT(here, there) * right + here * left;
        UNROLL for (int row = 0; row < ROWS; ++row) {
          there += stride;
          here = LOAD(there);
          const Vector below = LOAD_NEXT(here, there) * right + here * left;
          const Vector rise = below * lower + (above * upper + depth[row] * inverse);
          steepest[row] = rise > steepest[row] ? rise : steepest[row];
          above = below;
        }
      }
    }
    UNROLL for (int row = 0; row < ROWS; ++row) {
      const Vector share = (Vector)1 / (steepest[row] * steepest[row] + (Vector)1);
      openness[row] += steepest[row] > (Vector)LEAST ? share : (Vector)1;
    }
  }

  for (int row = 0; row < ROWS && y + row < size_y; ++row) {
    const FloatVector mean = TO_FLOAT(openness[row] * (Vector)((REAL)1 / DIRECTIONS));
    global float* to = result + (size_t)(y + row) * size_x + x;
    if (x + LANES <= size_x) {
      STORE(mean, to);
      continue;
    }
#if LANES > 1
    float lanes[LANES];
    STORE(mean, lanes);
    for (int lane = 0; x + lane < size_x; ++lane) to[lane] = lanes[lane];
#endif
  }
}
