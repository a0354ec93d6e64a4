// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/DevicePool.h"

#include <cstddef>
#include <string>

namespace Gpu {

using ScEng::Status;

Status DevicePool::Run(int place, bool tries_other, const Work& work) {
  const Status status = RunOn(place, work);
  if (!status.IsError() || !tries_other) return status;
  const int other = ChooseOther(place);
  if (other < 0 || RunOn(other, work).IsError()) return status;
  return {Status::kWarning, status.GetMessage() + "; computed on device " + std::to_string(other) + " \"" +
                                records_[static_cast<std::size_t>(other)].info.name + "\" instead"};
}

Status DevicePool::RunOn(int place, const Work& work) {
  Status status;
  const std::shared_ptr<Device> device = Open(place, status);
  if (!device) return status;
  status = work(*device);
  if (status.IsError()) Drop(place, device);
  return status;
}

std::shared_ptr<Device> DevicePool::Open(int place, Status& status) {
  const std::lock_guard lock(mutex_);
  std::shared_ptr<Device>& device = devices_[place];
  if (!device) device = Device::Open(api_, records_[static_cast<std::size_t>(place)], status);
  return device;
}

void DevicePool::Drop(int place, const std::shared_ptr<Device>& device) {
  const std::lock_guard lock(mutex_);
  if (devices_[place] == device) devices_[place].reset();
}

int DevicePool::ChooseOther(int failed) const {
  std::vector<DeviceRecord> others = records_;
  others[static_cast<std::size_t>(failed)].info.problem = "it has failed";
  Status ignored;
  return ChooseDevice(others, "", "", ignored);
}

}  // namespace Gpu
