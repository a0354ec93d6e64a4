// SPDX-License-Identifier: Apache-2.0
#include "Apps/Desktop/Screenshot.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QPixmap>
#include <string_view>

#include "Host/Files/ImageFile.h"

ScEng::Status WriteScreenshot(const QPixmap& picture, const std::string& file) {
  const QByteArray format = QFileInfo(QString::fromStdString(file)).suffix().toLower().toLatin1();
  if (!QImageWriter::supportedImageFormats().contains(format)) {
    return ScEng::Status::Error("cannot write " + file + ": there is no picture format \"" + format.toStdString() +
                                "\"; use .png");
  }
  QByteArray bytes;
  QBuffer buffer(&bytes);
  if (!buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, format.constData())) {
    return ScEng::Status::Error("cannot write " + file + ": the picture cannot be encoded");
  }
  return ScEng::WriteWholeFile(file, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}
