// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>

#include "Host/Viewing/ViewImage.h"

/// A small image as a picture, in the range that it declares. Larger ones are drawn from their smaller copies.
QImage DrawThumbnail(const ScEng::ViewImage& image);
