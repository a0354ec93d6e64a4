// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Resources/ResourceReader.h"

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QString>

extern "C" __attribute__((visibility("default"))) ScEng::PictureResult HostReadPicture(const char* path, int* width,
                                                                                       int* height) {
  QFile file(QString::fromUtf8(path));
  if (!file.open(QIODevice::ReadOnly)) return ScEng::PictureResult::kNoSuchResource;
  const QImage picture = QImage::fromData(file.readAll());
  if (picture.isNull()) return ScEng::PictureResult::kNoPicture;
  *width = picture.width();
  *height = picture.height();
  return ScEng::PictureResult::kDecoded;
}
