// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/AmbientOcclusion.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "Host/Gpu/OcclusionPlan.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"

namespace Gpu {
namespace {

using ScEng::Status;

/// Rises up to this may be left out: they darken a pixel by less than 1.5e-4, and with the rounding of single precision
/// the result stays within the 2e-4 that are promised.
constexpr const char* kLeastRise = "0.012f";
/// Rows of a tile on a processor, where one work-item computes a tile.
constexpr int kTileRows = 8;
/// Rows of a tile that share a window.
constexpr int kSharing = 4;
/// Where the evaluation may be stopped, a first slice of the work has about this many work-items.
constexpr std::size_t kFirstSlice = 256;
/// Rows whose windows one work-item finds.
constexpr int kColumn = 16;
/// A processor computes a band strip by strip, this many columns wide: what a tile looks at is then still in the cache
/// from the tiles beside and above it. A strip of 256 columns and 100 pixels around it is 0.8 MB with its windows.
constexpr int kStripPixels = 256;
/// A band of the image has about this many pixels: enough for every core, and little memory beside the image's own.
constexpr std::size_t kBandPixels = std::size_t{1} << 22;

/// The most heights of a band, which are addressed by numbers of 32 bits.
constexpr std::int64_t kMostHeights = (std::int64_t{1} << 30) - 64;

template <class Whole>
constexpr Whole RoundUp(Whole value, Whole multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

/// The buffers' shape. The image is computed band by band; each has its margin around it.
struct Layout {
  int lanes = 1;
  int rows = 1;
  int sharing = 1;
  int margin_x = 0;
  int margin_y = 0;
  int stride = 0;
  int band_size_y = 0;
  int padded_size_y = 0;

  /// Of a band with its margin, and some more behind the last row: a vector is read there, but nothing depends on it.
  [[nodiscard]] std::size_t GetNumHeights() const {
    return static_cast<std::size_t>(stride) * static_cast<std::size_t>(padded_size_y) + 64;
  }
};

/// Windows may reach farther than the steps, and steps no farther than the field is large.
std::int64_t FindMargin(int steps, int size) {
  return std::min<std::int64_t>(steps, std::int64_t{size} + 1) + 1 + OcclusionPlan::kWindow;
}

Layout MakeLayout(const DeviceRecord& device, const HeightField& field, int steps, std::size_t real_size) {
  Layout layout;
  layout.lanes = static_cast<int>(device.lanes);
  layout.rows = device.is_processor ? kTileRows : 1;
  layout.sharing = device.is_processor ? kSharing : 1;
  // Rows begin where a line of the cache does, so that steps up and down a column read whole lines.
  const std::int64_t margin_x = RoundUp<std::int64_t>(FindMargin(steps, field.size_x), 16);
  const std::int64_t margin_y = FindMargin(steps, field.size_y);
  const std::int64_t row = RoundUp<std::int64_t>(RoundUp<std::int64_t>(field.size_x, layout.lanes) + 2 * margin_x, 16);
  if (row * (2 * margin_y + layout.rows) > kMostHeights) throw std::bad_alloc();
  layout.margin_x = static_cast<int>(margin_x);
  layout.margin_y = static_cast<int>(margin_y);
  layout.stride = static_cast<int>(row);

  const auto stride = static_cast<std::size_t>(layout.stride);
  const auto around = 2 * static_cast<std::size_t>(layout.margin_y) + static_cast<std::size_t>(layout.rows) + 1;
  const auto rows_in = [&](std::size_t heights) {
    const std::size_t rows = heights / stride;
    return rows > around ? rows - around : 1;
  };
  std::size_t band = kBandPixels / stride;
  if (device.largest_buffer > 0) {
    band = std::min(band, rows_in(device.largest_buffer / real_size));
  }
  // A margin is copied for each band, so that bands are not made smaller than it.
  band = std::max(band, 2 * static_cast<std::size_t>(layout.margin_y));
  band = std::min(band, rows_in(static_cast<std::size_t>(kMostHeights)));
  band = std::min(RoundUp(band, static_cast<std::size_t>(layout.rows)),
                  static_cast<std::size_t>(RoundUp<std::int64_t>(field.size_y, layout.rows)));
  layout.band_size_y = static_cast<int>(band);
  layout.padded_size_y = layout.band_size_y + 2 * layout.margin_y;
  return layout;
}

/// Fills a band of heights with its margin, `first_row` being the image's row of the band's first.
template <class Real>
void FillHeights(const HeightField& field, const Layout& layout, int first_row, Real* heights) {
  const auto stride = static_cast<std::size_t>(layout.stride);
  std::vector<int> columns(stride);
  for (std::size_t i = 0; i < stride; ++i) {
    columns[i] = ScEng::BorderIndex(static_cast<int>(i) - layout.margin_x, field.size_x, field.border);
  }
  const auto make_height = [&](float value) {
    const double height = (static_cast<double>(value) - field.low) * field.scale;
    return static_cast<Real>(std::isnan(height) ? 0.0 : height);
  };
  const auto margin = static_cast<std::size_t>(layout.margin_x);
  const auto size_x = static_cast<std::size_t>(field.size_x);
  ScEng::ParallelRows(static_cast<std::size_t>(layout.padded_size_y), 8, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) {
      const int source =
          ScEng::BorderIndex(first_row - layout.margin_y + static_cast<int>(y), field.size_y, field.border);
      const float* values = field.values + static_cast<std::size_t>(source) * size_x;
      Real* row = heights + y * stride;
      for (std::size_t x = 0; x < size_x; ++x) row[margin + x] = make_height(values[x]);
      for (std::size_t x = 0; x < margin; ++x) row[x] = row[margin + static_cast<std::size_t>(columns[x])];
      for (std::size_t x = margin + size_x; x < stride; ++x) {
        row[x] = row[margin + static_cast<std::size_t>(columns[x])];
      }
    }
  });
}

FieldShape MakeShape(const HeightField& field) { return {field.size_x, field.size_y, field.border}; }

/// One run on a device. Every call that fails leaves an error behind, after which nothing more is tried.
class Run {
 public:
  Run(Device& device, const HeightField& field) : device_(device), api_(device.GetApi()), field_(field) {}

  template <class Real>
  Status Compute(int steps, bool is_finite, float* result);

 private:
  using Buffer = Owned<cl_mem>;
  using Kernel = Owned<cl_kernel>;

  [[nodiscard]] bool IsFine() const { return !status_.IsError(); }
  bool Check(cl_int error, const char* tried) {
    if (error != CL_SUCCESS && IsFine()) status_ = device_.MakeError(tried, error);
    return IsFine();
  }

  void OpenQueue() {
    cl_int error = CL_SUCCESS;
    queue_ = {api_.CreateCommandQueue(device_.GetContext(), device_.GetRecord().id, 0, &error),
              {api_.ReleaseCommandQueue}};
    Check(error, "no queue for commands could be made");
  }

  Kernel MakeKernel(cl_program program, const char* name) {
    if (!IsFine()) return {};
    cl_int error = CL_SUCCESS;
    Kernel kernel(api_.CreateKernel(program, name, &error), {api_.ReleaseKernel});
    Check(error, "its program cannot be used");
    return kernel;
  }

  Buffer MakeBuffer(cl_mem_flags flags, std::size_t bytes) {
    if (!IsFine()) return {};
    cl_int error = CL_SUCCESS;
    Buffer buffer(api_.CreateBuffer(device_.GetContext(), flags | CL_MEM_ALLOC_HOST_PTR, bytes, nullptr, &error),
                  {api_.ReleaseMemObject});
    Check(error, ("no buffer of " + std::to_string(bytes) + " bytes could be made").c_str());
    return buffer;
  }

  /// Calls `body` with the buffer's memory.
  template <class Entry, class Body>
  void Map(const Buffer& buffer, cl_map_flags flags, std::size_t bytes, const Body& body) {
    if (!IsFine()) return;
    cl_int error = CL_SUCCESS;
    void* memory =
        api_.EnqueueMapBuffer(queue_.get(), buffer.get(), CL_TRUE, flags, 0, bytes, 0, nullptr, nullptr, &error);
    if (!Check(error, "its memory cannot be reached")) return;
    try {
      body(static_cast<Entry*>(memory));
    } catch (...) {
      api_.EnqueueUnmapMemObject(queue_.get(), buffer.get(), memory, 0, nullptr, nullptr);
      api_.Finish(queue_.get());
      throw;
    }
    Check(api_.EnqueueUnmapMemObject(queue_.get(), buffer.get(), memory, 0, nullptr, nullptr),
          "its memory cannot be reached");
  }

  template <class Entry>
  Buffer MakeTable(const std::vector<Entry>& entries) {
    const std::size_t bytes = entries.size() * sizeof(Entry);
    Buffer buffer = MakeBuffer(CL_MEM_READ_ONLY, bytes);
    Map<Entry>(buffer, CL_MAP_WRITE_INVALIDATE_REGION, bytes,
               [&](Entry* to) { std::copy(entries.begin(), entries.end(), to); });
    return buffer;
  }

  void SetArgument(const Kernel& kernel, cl_uint index, const Buffer& buffer) {
    cl_mem memory = buffer.get();
    Check(api_.SetKernelArg(kernel.get(), index, sizeof(cl_mem), &memory), "its program refuses a buffer");
  }
  void SetArgument(const Kernel& kernel, cl_uint index, int number) {
    const cl_int argument = number;
    Check(api_.SetKernelArg(kernel.get(), index, sizeof(argument), &argument), "its program refuses a number");
  }

  /// Runs a kernel on `size_x` times `size_y` work-items, or some more. Where the evaluation may be stopped, it runs in
  /// slices of some hundredths of a second, and the request is looked for between them.
  void Enqueue(const Kernel& kernel, int size_x, int size_y) {
    const std::size_t group[2] = {device_.GetRecord().is_processor ? std::size_t{4} : std::size_t{16},
                                  device_.GetRecord().is_processor ? std::size_t{1} : std::size_t{4}};
    const std::size_t columns = RoundUp(static_cast<std::size_t>(size_x), group[0]);
    const std::size_t rows = RoundUp(static_cast<std::size_t>(size_y), group[1]);
    const bool in_slices = ScEng::IsCancellable();
    std::size_t slice = in_slices ? RoundUp(kFirstSlice / columns + 1, group[1]) : rows;
    for (std::size_t row = 0; row < rows;) {
      if (in_slices) ScEng::PollCancellation();
      const std::size_t offset[2] = {0, row};
      const std::size_t size[2] = {columns, std::min(slice, rows - row)};
      const auto begun = std::chrono::steady_clock::now();
      if (!Check(api_.EnqueueNDRangeKernel(queue_.get(), kernel.get(), 2, offset, size, group, 0, nullptr, nullptr),
                 "the computation could not be started")) {
        return;
      }
      row += size[1];
      if (!in_slices) continue;
      if (!Check(api_.Finish(queue_.get()), "the computation failed")) return;
      const auto taken = std::chrono::steady_clock::now() - begun;
      if (taken < std::chrono::milliseconds(15)) slice *= 2;
      if (taken > std::chrono::milliseconds(30)) slice = std::max(group[1], slice / 2 / group[1] * group[1]);
    }
  }

  /// Starts a kernel with these arguments on `size_x` times `size_y` work-items, or some more.
  template <class... Arguments>
  void Start(const Kernel& kernel, int size_x, int size_y, const Arguments&... arguments) {
    if (!IsFine()) return;
    cl_uint index = 0;
    (SetArgument(kernel, index++, arguments), ...);
    if (!IsFine()) return;
    Enqueue(kernel, size_x, size_y);
  }

  Device& device_;
  const OpenClApi& api_;
  const HeightField& field_;
  Status status_;
  Owned<cl_command_queue> queue_;
};

template <class Real>
Status Run::Compute(int steps, bool is_finite, float* result) {
  const Layout layout = MakeLayout(device_.GetRecord(), field_, steps, sizeof(Real));
  const bool is_double = sizeof(Real) == sizeof(double);
  cl_program program = device_.GetProgram(
      std::string(is_double ? "-DREAL=double -DUSES_DOUBLE" : "-DREAL=float -cl-single-precision-constant") +
          " -DLANES=" + std::to_string(layout.lanes) + " -DROWS=" + std::to_string(layout.rows) +
          " -DSHARING=" + std::to_string(layout.sharing) + " -DCOLUMN=" + std::to_string(kColumn) +
          " -DLEAST=" + kLeastRise + (is_finite ? "" : " -DINFINITE"),
      status_);
  if (!IsFine()) return status_;
  const Kernel find_highest = MakeKernel(program, "FindHighest");
  const Kernel occlude = MakeKernel(program, "Occlude");
  OpenQueue();

  const OcclusionPlan plan(steps, layout.sharing, MakeShape(field_));
  std::vector<cl_int> offsets;
  std::vector<Real> shares;
  for (const OcclusionPlan::Step& step : plan.steps) {
    offsets.push_back(step.y * layout.stride + step.x);
    for (const double share : {step.left, step.right, step.upper, step.lower}) {
      shares.push_back(static_cast<Real>(share));
    }
  }
  std::vector<Real> inverses;
  inverses.reserve(static_cast<std::size_t>(steps));
  for (int step = 0; step < steps; ++step) inverses.push_back(static_cast<Real>(1.0 / (step + 1)));
  const Buffer offset_table = MakeTable(offsets);
  const Buffer share_table = MakeTable(shares);
  const Buffer inverse_table = MakeTable(inverses);
  const Buffer start_table = MakeTable(plan.group_starts);
  std::vector<cl_int4> groups;
  for (const OcclusionPlan::Group& group : plan.groups) {
    groups.push_back({{group.first, group.end, group.y * layout.stride + group.x, 0}});
  }
  const Buffer group_table = MakeTable(groups);

  const std::size_t height_bytes = layout.GetNumHeights() * sizeof(Real);
  const auto size_x = static_cast<std::size_t>(field_.size_x);
  const std::size_t result_bytes = size_x * static_cast<std::size_t>(layout.band_size_y) * sizeof(float);
  const Buffer heights = MakeBuffer(CL_MEM_READ_ONLY, height_bytes);
  const Buffer windows = MakeBuffer(CL_MEM_READ_WRITE, height_bytes);
  const Buffer band_result = MakeBuffer(CL_MEM_WRITE_ONLY, result_bytes);

  const int columns = RoundUp(field_.size_x, layout.lanes) / layout.lanes;
  const int strip = device_.GetRecord().is_processor ? kStripPixels / layout.lanes : RoundUp(columns, 16);
  for (int row = 0; IsFine() && row < field_.size_y; row += layout.band_size_y) {
    const int band_size_y = std::min(layout.band_size_y, field_.size_y - row);
    Map<Real>(heights, CL_MAP_WRITE_INVALIDATE_REGION, height_bytes,
              [&](Real* to) { FillHeights(field_, layout, row, to); });
    Start(find_highest, layout.stride / layout.lanes, RoundUp(layout.padded_size_y, kColumn) / kColumn, heights,
          windows, layout.stride, layout.padded_size_y);
    const int num_strips = RoundUp(columns, strip) / strip;
    Start(occlude, strip, RoundUp(band_size_y, layout.rows) / layout.rows * num_strips, heights, windows, layout.stride,
          layout.margin_x, layout.margin_y, offset_table, share_table, inverse_table, steps, start_table, group_table,
          band_result, field_.size_x, band_size_y, strip);
    Map<float>(band_result, CL_MAP_READ, result_bytes, [&](const float* from) {
      const std::size_t count = size_x * static_cast<std::size_t>(band_size_y);
      std::copy_n(from, count, result + static_cast<std::size_t>(row) * size_x);
    });
  }
  if (IsFine()) Check(api_.Finish(queue_.get()), "the computation failed");
  return status_;
}

}  // namespace

Status RunAmbientOcclusion(Device& device, const HeightField& field, double radius, double largest_height,
                           float* result) {
  const int steps = CountSteps(radius, MakeShape(field));
  Run run(device, field);
  const bool is_finite = std::isfinite(largest_height);
  const bool needs_double = !(largest_height <= kHighestInSingle);
  if (needs_double && device.GetRecord().has_double) return run.Compute<double>(steps, is_finite, result);
  return run.Compute<float>(steps, is_finite, result);
}

}  // namespace Gpu
