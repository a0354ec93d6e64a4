// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainWorker.h"

#include <new>
#include <utility>

#include "Host/Tools/RunningCall.h"

TerrainWorker::~TerrainWorker() = default;

void TerrainWorker::Ask(const TerrainFrame& frame) {
  ++num_asked_;
  bool is_first = false;
  {
    const std::lock_guard lock(mutex_);
    is_first = !waiting_;
    waiting_ = frame;
  }
  if (is_first) QMetaObject::invokeMethod(this, &TerrainWorker::DrawWaiting, Qt::QueuedConnection);
}

const QString& TerrainWorker::GetProblem() {
  if (!problem_) {
    // No node is evaluated here, so that no crash of the display's drivers is one's doing.
    ScEng::RunningCall::HelpNobody();
    renderer_ = std::make_unique<TerrainRenderer>();
    problem_ = renderer_->Start(surface_);
    if (!problem_->isEmpty()) renderer_.reset();
  }
  return *problem_;
}

void TerrainWorker::DrawWaiting() {
  std::optional<TerrainFrame> frame;
  {
    const std::lock_guard lock(mutex_);
    frame = std::exchange(waiting_, std::nullopt);
  }
  if (!frame || has_ended_) return;
  const unsigned number = num_asked_;
  const TerrainPicture picture = Draw(*frame, [&] { return has_ended_ || (frame->is_fine && num_asked_ != number); });
  if (!picture.image.isNull() || !picture.problem.isEmpty()) emit Drawn(picture);
}

TerrainPicture TerrainWorker::Draw(const TerrainFrame& frame) { return Draw(frame, {}); }

TerrainPicture TerrainWorker::Draw(const TerrainFrame& frame, const std::function<bool()>& should_stop) {
  TerrainPicture picture;
  picture.problem = GetProblem();
  if (!picture.problem.isEmpty()) return picture;
  try {
    picture = renderer_->Draw(frame, should_stop);
  } catch (const std::bad_alloc&) {
    picture.problem = tr("there is not enough memory for this image");
  }
  return picture;
}

void TerrainWorker::End() {
  renderer_.reset();
  problem_ = QString();
  has_ended_ = true;
}
