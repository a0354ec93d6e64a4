// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainPainter.h"

#include <QSurfaceFormat>

TerrainPainter::TerrainPainter() {
  // Surfaces are made in the thread of the interface.
  surface_.setFormat(QSurfaceFormat::defaultFormat());
  surface_.create();
  worker_ = std::make_unique<TerrainWorker>(surface_);
  if (!QOpenGLContext::supportsThreadedOpenGL()) return;
  worker_->moveToThread(&thread_);
  thread_.start();
}

TerrainPainter::~TerrainPainter() {
  worker_->Stop();
  Run([this] { worker_->End(); });
  thread_.quit();
  thread_.wait();
}

void TerrainPainter::Run(const std::function<void()>& work) {
  if (worker_->thread() == QThread::currentThread()) {
    work();
  } else {
    QMetaObject::invokeMethod(worker_.get(), work, Qt::BlockingQueuedConnection);
  }
}

QString TerrainPainter::GetProblem() {
  QString problem;
  Run([&] { problem = worker_->GetProblem(); });
  return problem;
}

TerrainPicture TerrainPainter::Draw(const TerrainFrame& frame) {
  TerrainPicture picture;
  Run([&] { picture = worker_->Draw(frame); });
  return picture;
}
