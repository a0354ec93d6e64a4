// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Util/Status.h"

class QPixmap;

/// Writes a picture in the format that the file's ending names, whole or not at all.
ScEng::Status WriteScreenshot(const QPixmap& picture, const std::string& file);
