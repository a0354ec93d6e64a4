// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace ScEng {

/// How the reading of a picture among the Qt resources ended.
enum class PictureResult : int { kDecoded = 0, kNoSuchResource = 1, kNoPicture = 2 };

}  // namespace ScEng

/// The one entry point of the module: decodes the picture at the Qt resource path `path` and tells its size in pixels.
extern "C" ScEng::PictureResult HostReadPicture(const char* path, int* width, int* height);
