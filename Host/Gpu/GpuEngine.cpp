// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/GpuEngine.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Host/Gpu/AmbientOcclusion.h"
#include "Host/Gpu/Device.h"
#include "Host/Gpu/DevicePool.h"
#include "Host/Gpu/DriverCache.h"
#include "Host/Gpu/OpenClApi.h"
#include "Host/Image/Placement.h"
#include "Host/Math/Border.h"
#include "Host/Util/Log.h"
#include "Host/Util/ParallelReduce.h"

namespace {

using ScEng::Status;

constexpr const char* kLoader = "libOpenCL.so.1";
constexpr const char* kVariable = "VALUE_DEVICE";
constexpr std::size_t kGrain = std::size_t{1} << 16;

/// The largest |z| of a field; infinite where a height is.
double FindLargestHeight(const Image& image, double low, double scale) {
  const auto measure = [&] {
    return ScEng::ParallelReduce<ScEng::SampleRange>(
        image.GetNumSamples(), kGrain,
        [&](std::size_t from, std::size_t to) { return ScEng::MeasureRange(image.GetConstArray() + from, to - from); });
  };
  const std::optional<ScEng::SampleRange> known = image.GetKnownSampleRange();
  const ScEng::SampleRange range = known ? *known : measure();
  if (range.IsEmpty()) return 0.0;
  return std::max(std::abs((static_cast<double>(range.low) - low) * scale),
                  std::abs((static_cast<double>(range.high) - low) * scale));
}

}  // namespace

/// OpenCL, the devices and the one in use, each found when it is first asked for.
class GpuEngine::State {
 public:
  /// Runs `work` on the device to compute on; an error when there is none.
  Status Run(const Gpu::DevicePool::Work& work) {
    std::unique_lock lock(mutex_);
    Status status;
    const int chosen = Choose(status);
    if (chosen < 0) return status;
    const bool tries_other = tries_other_;
    lock.unlock();
    return pool_->Run(chosen, tries_other, work);
  }

  Status Select(const std::string& word) {
    const std::lock_guard lock(mutex_);
    Status status;
    if (!word.empty() && (!List(status) || Gpu::ChooseDevice(pool_->GetRecords(), word, "--device", status) < 0)) {
      return status;
    }
    word_ = word;
    return status;
  }

  void SetTriesOtherDevice(bool tries) {
    const std::lock_guard lock(mutex_);
    tries_other_ = tries;
  }

  std::vector<GpuDevice> GetDevices(Status& status) {
    const std::lock_guard lock(mutex_);
    const int chosen = Choose(status);
    std::vector<GpuDevice> infos;
    if (!pool_) return infos;
    for (const Gpu::DeviceRecord& device : pool_->GetRecords()) infos.push_back(device.info);
    if (chosen >= 0) infos[static_cast<std::size_t>(chosen)].is_chosen = true;
    return infos;
  }

 private:
  /// Lists the devices once; false and an error when OpenCL cannot be loaded or has none, which is tried again at the
  /// next call.
  bool List(Status& status) {
    if (pool_ && process_ == getpid()) return true;
    if (pool_) {
      // Their threads are gone, and whoever asked would wait for ever.
      status = Status::Error(
          "OpenCL devices work in the process that has opened them, and not in one that is forked from it; start a "
          "process of its own for this");
      return false;
    }
    Gpu::ForgetEmptyCacheFolder();
    if (Gpu::LoadOpenCl(kLoader, api_, status) == nullptr) return false;
    std::vector<Gpu::DeviceRecord> records = Gpu::ListDevices(api_);
    if (records.empty()) {
      status = Gpu::ExplainNoDevice(api_);
      return false;
    }
    pool_.emplace(api_, std::move(records));
    process_ = getpid();
    return true;
  }

  int Choose(Status& status) {
    if (!List(status)) return -1;
    if (!word_.empty()) return Gpu::ChooseDevice(pool_->GetRecords(), word_, "--device", status);
    const char* named = std::getenv(kVariable);
    const int chosen = Gpu::ChooseDevice(pool_->GetRecords(), named == nullptr ? "" : named, kVariable, status);
    // Without any device, another word would be of no help.
    const bool is_word_wrong = chosen < 0 && named != nullptr && *named != '\0' && !pool_->GetRecords().empty();
    if (is_word_wrong) status = Status::Error(status.GetMessage() + "; set it to one that can be used, or unset it");
    return chosen;
  }

  std::mutex mutex_;
  Gpu::OpenClApi api_;
  /// Set once and never taken back.
  std::optional<Gpu::DevicePool> pool_;
  /// The one that has set it.
  pid_t process_ = 0;
  std::string word_;
  bool tries_other_ = false;
};

GpuEngine::GpuEngine() : state_(std::make_unique<State>()) {}
GpuEngine::~GpuEngine() = default;

GpuEngine* GpuEngine::Get() {
  // Never destroyed: at the end of the process drivers may be gone before it.
  static auto* const engine = new GpuEngine;
  return engine;
}

void GpuEngine::SetTriesOtherDevice(bool tries) { state_->SetTriesOtherDevice(tries); }

Status GpuEngine::SelectDevice(const std::string& word) { return state_->Select(word); }

std::vector<GpuDevice> GpuEngine::GetDevices(Status& status) { return state_->GetDevices(status); }

Image* GpuEngine::ExecuteAmbientOcclusion(const Image* image, float radius, char border, Status& status) {
  if (image == nullptr) {
    status = Status::Error("ambient occlusion: there is no image");
    return nullptr;
  }
  if (!std::isfinite(radius)) {
    status =
        Status::Error("ambient occlusion: the radius is " + std::to_string(radius) + "; it must be a number of pixels");
    return nullptr;
  }
  if (border != 'p' && border != 'b') {
    status = Status::Error(std::string("ambient occlusion: there is no border mode '") + border +
                           "'; there are 'p' (repeats the image) and 'b' (repeats border pixels)");
    return nullptr;
  }
  try {
    std::optional<Image> converted;
    if (image->GetColorMode() != ColorMode::kValue) image = &converted.emplace(*image, ColorMode::kValue);
    Gpu::HeightField field;
    field.values = image->GetConstArray();
    field.size_x = image->GetSizeX();
    field.size_y = image->GetSizeY();
    field.low = static_cast<double>(image->GetValueLow());
    const double span = static_cast<double>(image->GetValueHigh()) - field.low;
    field.scale = static_cast<double>(radius) / span;
    field.border = ScEng::BorderOf(border == 'p');

    auto result = std::make_unique<Image>(field.size_x, field.size_y, ColorMode::kValue, nullptr);
    ScEng::PlaceLike(*image, *result);
    // Without steps, on flat ground and where no height is a number, every point is open.
    const bool is_open = radius < 1.0F || span == 0.0 || std::isnan(field.scale) || image->GetNumSamples() == 0;
    const double largest = is_open ? 0.0 : FindLargestHeight(*image, field.low, field.scale);
    float* const samples = result->GetArray();
    const Status run = state_->Run([&](Gpu::Device& device) {
      if (!is_open) return Gpu::RunAmbientOcclusion(device, field, static_cast<double>(radius), largest, samples);
      std::fill_n(samples, result->GetNumSamples(), 1.0F);
      return Status();
    });
    if (run.GetCode() == Status::kWarning) Log::Warning("%s", run.GetMessage().c_str());
    if (run.GetCode() != Status::kFine) status = run;
    if (!run.IsError()) return result.release();
  } catch (const std::bad_alloc&) {
    status = Status::Error("ambient occlusion: there is not enough memory for an image of " +
                           std::to_string(image->GetSizeX()) + " x " + std::to_string(image->GetSizeY()) +
                           " pixels and a radius of " + std::to_string(radius));
  } catch (const std::length_error& error) {
    status = Status::Error(std::string("ambient occlusion: ") + error.what());
  }
  return nullptr;
}
