// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/GpuEngine.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>

#include "Host/Gpu/AmbientOcclusion.h"
#include "Host/Gpu/Device.h"
#include "Host/Gpu/OpenClApi.h"
#include "Host/Util/ParallelRows.h"

namespace {

using ScEng::Status;

constexpr const char* kLoader = "libOpenCL.so.1";
constexpr const char* kVariable = "VALUE_DEVICE";
constexpr float kLargestRadius = 1024.0F;
constexpr std::size_t kGrain = std::size_t{1} << 16;

/// The largest |z| of a field; infinite where a height is.
double FindLargestHeight(const Image& image, double low, double scale) {
  std::optional<ScEng::SampleRange> range = image.GetKnownSampleRange();
  if (!range) {
    range.emplace();
    std::mutex mutex;
    ScEng::ParallelRows(image.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
      const ScEng::SampleRange piece = ScEng::MeasureRange(image.GetConstArray() + from, to - from);
      const std::lock_guard lock(mutex);
      range->Include(piece);
    });
  }
  if (range->IsEmpty()) return 0.0;
  return std::max(std::abs((static_cast<double>(range->low) - low) * scale),
                  std::abs((static_cast<double>(range->high) - low) * scale));
}

}  // namespace

/// OpenCL, the devices and the one in use, each found when it is first asked for.
class GpuEngine::State {
 public:
  /// The device to compute on; null and an error when there is none.
  std::shared_ptr<Gpu::Device> GetDevice(Status& status) {
    const std::lock_guard lock(mutex_);
    if (device_) return device_;
    const int chosen = Choose(status);
    if (chosen < 0) return nullptr;
    device_ = Gpu::Device::Open(api_, (*devices_)[static_cast<std::size_t>(chosen)], status);
    return device_;
  }

  /// Makes the device ready anew at the next request: one that failed may be lost for good.
  void Drop(const std::shared_ptr<Gpu::Device>& device) {
    const std::lock_guard lock(mutex_);
    if (device_ == device) device_.reset();
  }

  Status Select(const std::string& word) {
    const std::lock_guard lock(mutex_);
    Status status;
    if (!word.empty() && (!List(status) || Gpu::ChooseDevice(*devices_, word, "--device", status) < 0)) return status;
    word_ = word;
    device_.reset();
    return status;
  }

  std::vector<GpuDevice> GetDevices(Status& status) {
    const std::lock_guard lock(mutex_);
    const int chosen = Choose(status);
    std::vector<GpuDevice> infos;
    if (!devices_) return infos;
    for (const Gpu::DeviceRecord& device : *devices_) infos.push_back(device.info);
    if (chosen >= 0) infos[static_cast<std::size_t>(chosen)].is_chosen = true;
    return infos;
  }

 private:
  /// Lists the devices once; false and an error when OpenCL cannot be loaded, which is tried again at the next call.
  bool List(Status& status) {
    if (devices_) return true;
    if (Gpu::LoadOpenCl(kLoader, api_, status) == nullptr) return false;
    devices_ = Gpu::ListDevices(api_);
    return true;
  }

  int Choose(Status& status) {
    if (!List(status)) return -1;
    if (!word_.empty()) return Gpu::ChooseDevice(*devices_, word_, "--device", status);
    const char* named = std::getenv(kVariable);
    return Gpu::ChooseDevice(*devices_, named == nullptr ? "" : named, kVariable, status);
  }

  std::mutex mutex_;
  Gpu::OpenClApi api_;
  std::optional<std::vector<Gpu::DeviceRecord>> devices_;
  std::string word_;
  std::shared_ptr<Gpu::Device> device_;
};

GpuEngine::GpuEngine() : state_(std::make_unique<State>()) {}
GpuEngine::~GpuEngine() = default;

GpuEngine* GpuEngine::Get() {
  // Never destroyed: at the end of the process drivers may be gone before it.
  static auto* const engine = new GpuEngine;
  return engine;
}

Status GpuEngine::SelectDevice(const std::string& word) { return state_->Select(word); }

std::vector<GpuDevice> GpuEngine::GetDevices(Status& status) { return state_->GetDevices(status); }

Image* GpuEngine::ExecuteAmbientOcclusion(const Image* image, float radius, char border, Status& status) {
  if (image == nullptr) {
    status = Status::Error("ambient occlusion: there is no image");
    return nullptr;
  }
  if (!(radius <= kLargestRadius)) {
    status = Status::Error("ambient occlusion: the radius is " + std::to_string(radius) + "; it must be 1024 at most");
    return nullptr;
  }
  if (border != 'p' && border != 'b') {
    status = Status::Error(std::string("ambient occlusion: there is no border mode '") + border +
                           "'; there are 'p' (repeats the image) and 'b' (repeats border pixels)");
    return nullptr;
  }
  const std::shared_ptr<Gpu::Device> device = state_->GetDevice(status);
  if (!device) return nullptr;

  try {
    std::optional<Image> converted;
    if (image->GetColorMode() != ColorMode::kValue) image = &converted.emplace(*image, ColorMode::kValue);
    const ImageHeader& header = image->GetImageHeader();
    ImageHeader result_header = ImageHeader::Fresh(header.size_x, header.size_y, ColorMode::kValue);
    result_header.pin_x = header.pin_x;
    result_header.pin_y = header.pin_y;
    result_header.pivot_x = header.pivot_x;
    result_header.pivot_y = header.pivot_y;

    Gpu::HeightField field;
    field.values = image->GetConstArray();
    field.size_x = header.size_x;
    field.size_y = header.size_y;
    field.low = static_cast<double>(header.value_low);
    const double span = static_cast<double>(header.value_high) - field.low;
    field.scale = static_cast<double>(radius) / span;
    field.wraps = border == 'p';
    const int steps = static_cast<int>(std::floor(std::max(radius, 0.0F)));

    // Without steps, on flat ground and where no height is a number, every point is open.
    const bool is_open = steps == 0 || span == 0.0 || std::isnan(field.scale) || image->GetNumSamples() == 0;
    const float open = 1.0F;
    auto result = std::make_unique<Image>(result_header, is_open ? &open : nullptr);
    if (is_open) return result.release();
    const double largest = FindLargestHeight(*image, field.low, field.scale);
    const Status run = Gpu::RunAmbientOcclusion(*device, field, steps, largest, result->GetArray());
    if (!run.IsError()) return result.release();
    state_->Drop(device);
    status = run;
  } catch (const std::bad_alloc&) {
    status = Status::Error("ambient occlusion: memory does not suffice for an image of " +
                           std::to_string(image->GetSizeX()) + " x " + std::to_string(image->GetSizeY()) + " pixels");
  } catch (const std::length_error& error) {
    status = Status::Error(std::string("ambient occlusion: ") + error.what());
  }
  return nullptr;
}
