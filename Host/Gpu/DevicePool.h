// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Host/Gpu/Api.h"
#include "Host/Gpu/Device.h"
#include "Host/Gpu/OpenClApi.h"
#include "Host/Util/Status.h"

namespace Gpu {

/// The devices of the system, each made ready when it is first computed on. May be used from several threads.
class HOST_GPU_API DevicePool {
 public:
  DevicePool(const OpenClApi& api, std::vector<DeviceRecord> records) : api_(api), records_(std::move(records)) {}

  [[nodiscard]] const std::vector<DeviceRecord>& GetRecords() const { return records_; }

  /// Something to compute; an error when the device fails.
  using Work = std::function<ScEng::Status(Device& device)>;

  /// Computes on the device at a place in `GetRecords`. A device that cannot be made ready or fails is made ready anew
  /// the next time, since it may be lost for good.
  ///
  /// Where it fails and `tries_other` is set, the work is tried once on the device that would be taken unasked if the
  /// failed one did not exist. Done there it ends in a warning that tells the fault and names the other device; where
  /// that fails too, or there is none, the first error stands.
  ScEng::Status Run(int place, bool tries_other, const Work& work);

 private:
  ScEng::Status RunOn(int place, const Work& work);
  std::shared_ptr<Device> Open(int place, ScEng::Status& status);
  void Drop(int place, const std::shared_ptr<Device>& device);
  [[nodiscard]] int ChooseOther(int failed) const;

  const OpenClApi& api_;
  std::vector<DeviceRecord> records_;
  std::mutex mutex_;
  std::map<int, std::shared_ptr<Device>> devices_;
};

}  // namespace Gpu
