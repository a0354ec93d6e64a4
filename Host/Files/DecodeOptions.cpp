// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/DecodeOptions.h"

#include <atomic>
#include <utility>

#include "Host/Files/Decoding/HelperDecoder.h"

namespace ScEng {
namespace {

std::atomic<DecodePlace> decode_place{DecodePlace::kHelper};

}  // namespace

void SetDecodePlace(DecodePlace place) { decode_place = place; }
DecodePlace GetDecodePlace() { return decode_place; }

void ExpectImageFiles(std::vector<std::filesystem::path> files, std::size_t most) {
  if (GetDecodePlace() == DecodePlace::kHelper) ExpectInHelper(std::move(files), most);
}

}  // namespace ScEng
