// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/DecodeOptions.h"

#include <atomic>

namespace ScEng {
namespace {

std::atomic<DecodePlace> decode_place{DecodePlace::kHelper};

}  // namespace

void SetDecodePlace(DecodePlace place) { decode_place = place; }
DecodePlace GetDecodePlace() { return decode_place; }

}  // namespace ScEng
