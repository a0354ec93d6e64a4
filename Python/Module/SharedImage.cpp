// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/SharedImage.h"

#include <utility>

namespace ValuePython {

std::size_t SharedImage::GetNumSamples() const {
  return static_cast<std::size_t>(header.size_x) * static_cast<std::size_t>(header.size_y) * GetNumChannels();
}

ImagePtr SharedImage::Lend() const {
  auto image = ScEng::MakeRef<Image>(header, ValuePython::Lend(samples, GetNumSamples() * sizeof(float)));
  image->SetMetadata(metadata);
  if (sample_range) image->RememberSampleRange(*sample_range);
  return image;
}

SharedImage SharedImage::Take(ImagePtr image) {
  if (image->GetRefCount() > 1) image = ScEng::MakeRef<Image>(*image);
  SharedImage shared;
  shared.header = image->GetImageHeader();
  shared.metadata = image->GetMetadata();
  shared.sample_range = image->GetKnownSampleRange();
  const float* const samples = image->GetConstArray();
  // The one reference to the image goes with its samples, on whatever thread that is.
  const auto owner = std::make_shared<const ImagePtr>(std::move(image));
  shared.samples = Samples(owner, samples);
  return shared;
}

SharedImage SharedImage::Keep(const Image& image) {
  Samples owner = FindOwner(image);
  if (!owner) return Take(ScEng::MakeRef<Image>(image));
  SharedImage shared;
  shared.header = image.GetImageHeader();
  shared.metadata = image.GetMetadata();
  shared.sample_range = image.GetKnownSampleRange();
  shared.samples = std::move(owner);
  return shared;
}

}  // namespace ValuePython
