// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/SampleNumbers.h"

#include <cstring>
#include <limits>
#include <type_traits>

namespace ScEng {
namespace {

struct Samples {
  const unsigned char* from;
  std::size_t from_stride;
  float* to;
  std::size_t to_stride;
  std::size_t count;
};

template <class Number>
void Divide(const Samples& samples, const SampleNumbers& numbers) {
  const double largest = numbers.largest != 0 ? static_cast<double>(numbers.largest)
                                              : static_cast<double>(std::numeric_limits<Number>::max());
  for (std::size_t i = 0; i < samples.count; ++i) {
    Number number;
    std::memcpy(&number, samples.from + i * samples.from_stride, sizeof number);
    const double share = numbers.is_inverted ? largest - static_cast<double>(number) : static_cast<double>(number);
    samples.to[i * samples.to_stride] = static_cast<float>(share / largest);
  }
}

bool IsDivided(StoredType type, SampleScale scale) {
  if (scale != SampleScale::kAuto) return scale == SampleScale::kUnit && IsInteger(type);
  return type == StoredType::kUint8 || type == StoredType::kUint16;
}

}  // namespace

void DecodeSamples(const void* from, std::size_t from_stride, const StoredSamples& stored, const SampleNumbers& numbers,
                   SampleScale scale, float* to, std::size_t to_stride, std::size_t count) {
  if (numbers == SampleNumbers{} || !IsDivided(stored.type, scale)) {
    DecodeSamples(from, from_stride, stored, scale, to, to_stride, count);
    return;
  }
  const Samples samples{static_cast<const unsigned char*>(from), from_stride, to, to_stride, count};
  switch (stored.type) {
    case StoredType::kUint8: return Divide<std::uint8_t>(samples, numbers);
    case StoredType::kInt8: return Divide<std::int8_t>(samples, numbers);
    case StoredType::kUint16: return Divide<std::uint16_t>(samples, numbers);
    case StoredType::kInt16: return Divide<std::int16_t>(samples, numbers);
    case StoredType::kUint32: return Divide<std::uint32_t>(samples, numbers);
    case StoredType::kInt32: return Divide<std::int32_t>(samples, numbers);
    case StoredType::kUint64: return Divide<std::uint64_t>(samples, numbers);
    case StoredType::kInt64: return Divide<std::int64_t>(samples, numbers);
    default: return;
  }
}

}  // namespace ScEng
