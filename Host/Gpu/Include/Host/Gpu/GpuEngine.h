// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Host/Gpu/Api.h"
#include "Host/Image/Image.h"
#include "Host/Util/Status.h"

/// What is known of a device that computes for the host.
struct GpuDevice {
  std::string platform;
  std::string name;
  /// "gpu", "cpu" or "accelerator".
  std::string type;
  std::string driver;
  /// The version of OpenCL that it offers, for example "OpenCL 1.2 pocl".
  std::string version;
  unsigned compute_units = 0;
  std::uint64_t memory_bytes = 0;
  /// Why the host cannot compute on it; empty where it can.
  std::string problem;
  /// Whether the host computes on it.
  bool is_chosen = false;
};

/// Computes images on a device of OpenCL 1.2 or newer; a driver for the processor will do.
///
/// OpenCL is loaded, and a device chosen, at the first call that needs one: the device that `SelectDevice` named, else
/// the one that the environment variable VALUE_DEVICE names, else the first GPU, else the first processor. Programs for
/// the device are compiled once per process. Every function may be called from any thread.
class HOST_GPU_API GpuEngine {
 public:
  /// The one engine of the process.
  static GpuEngine* Get();
  GpuEngine(const GpuEngine&) = delete;
  GpuEngine& operator=(const GpuEngine&) = delete;

  /// How open to light each point of a height field is: 1 on open ground, towards 0 in narrow pits.
  ///
  /// A pixel's height is z = (value - low) * (radius / (high - low)), `low` and `high` being the declared range; images
  /// of other modes are read as values. z is 0 where it is NaN, and everywhere when high equals low. For 16 directions
  /// at equal angles, beginning along the row, and steps s = 1, 2, ... floor(radius) pixels, T is the largest
  /// (z(s) - z) / s, at least 0, with z(s) bilinear between pixels. The result is the mean over the directions of
  /// 1 / (1 + T * T). Beyond the border the image repeats itself (`border` 'p') or its border pixels ('b').
  ///
  /// Every pixel is within 2e-4 of the same in double precision (on a device without double precision: where
  /// |z| <= 128). Infinite heights follow the arithmetic of IEEE 754, where a NaN is no rise: an infinitely high pixel
  /// is open, one that sees such a pixel in some directions is dark in those.
  ///
  /// Returns a new image without references: value mode, size, pin and pivot of the input, range (0, 1). Null and an
  /// error in `status`, which says what can be done, when `image` is null, `radius` is NaN or infinite, `border` is
  /// another letter, there is no device, memory runs out, or the device fails. A large radius takes memory only for as
  /// many pixels beyond the border as the image is large, and, where the image repeats itself, for its steps. Where the
  /// result comes from another device than the chosen one (`SetTriesOtherDevice`), `status` is a warning.
  ///
  /// Groups of steps that cannot matter are left out (Docs/decisions/0009 and 0022): on terrain the cost grows far less
  /// than the radius, on white noise nearly with it. The horizon search follows L. Bavoil, M. Sainz, R. Dimitrov,
  /// "Image-Space Horizon-Based Ambient Occlusion" (2008), with the share of open sky 1 / (1 + T * T) = cos^2 of the
  /// horizon's angle.
  Image* ExecuteAmbientOcclusion(const Image* image, float radius, char border, ScEng::Status& status);

  /// Computes from now on, on the device of that place in `GetDevices`, of that type, or with that word in its name
  /// (any case); the empty word restores the default. An error that names the devices there are, when none is meant.
  ScEng::Status SelectDevice(const std::string& word);

  /// Whether a computation whose device fails is tried once on another: the one that would be taken unasked if the
  /// first did not exist. Where that helps, the computation ends in a warning, which is logged as well. Off at the
  /// start.
  void SetTriesOtherDevice(bool tries);

  /// All devices of the system. When none is chosen, `status` becomes the error that a computation would end in.
  std::vector<GpuDevice> GetDevices(ScEng::Status& status);

 private:
  GpuEngine();
  ~GpuEngine();

  class State;
  std::unique_ptr<State> state_;
};
