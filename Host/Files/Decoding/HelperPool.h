// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Host/Files/Decoding/HelperProcess.h"

namespace ScEng {

/// The processes that decode and have nothing to do. There are as many of each codec as were needed at once. From any
/// thread.
class HelperPool {
 public:
  /// The one pool. It is never destroyed; its processes end when this one does, since they lose their sockets.
  static HelperPool& Get();

  /// One that is ready, or a new one; null and the reason where none can be started.
  [[nodiscard]] std::unique_ptr<HelperProcess> Take(const CodecRow& codec, std::string& problem);
  /// Takes back one that can be asked again.
  void Keep(const CodecRow& codec, std::unique_ptr<HelperProcess> process);
  /// Ends all of them.
  void Clear();

 private:
  std::mutex mutex_;
  std::map<std::string, std::vector<std::unique_ptr<HelperProcess>>> idle_;
};

}  // namespace ScEng
