// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "Apps/Editor/Docks/OutputRun.h"

namespace {

class BackgroundOutputRun : public OutputRun {
 public:
  BackgroundOutputRun(const ScEng::EditSession& session, std::function<void()> notify)
      : run_(session, std::move(notify)) {}

  void Cancel() override { run_.Cancel(); }
  [[nodiscard]] ScEng::BackgroundRun::Progress GetProgress() const override { return run_.GetProgress(); }
  [[nodiscard]] const ScEng::RunReport& GetReport() const override { return run_.GetReport(); }

 private:
  ScEng::BackgroundRun run_;
};

}  // namespace

std::unique_ptr<OutputRun> StartBackgroundRun(const ScEng::EditSession& session, std::function<void()> notify) {
  return std::make_unique<BackgroundOutputRun>(session, std::move(notify));
}
