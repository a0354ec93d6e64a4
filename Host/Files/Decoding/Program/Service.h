// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// Answers questions on the control socket with a codec, until the other side has gone.
void ServeFiles(const ImageCodec& codec);

}  // namespace ScEng
