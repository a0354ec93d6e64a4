// SPDX-License-Identifier: Apache-2.0
//
// What Bench/report calls in its own process, in turns with other libraries and on the same memory: plain copies, the
// host's image operations, and chains of nodes in an engine. Images are handles; an error is a null handle or false,
// and the text of the last one is kept.

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bench/ProgramSupport.h"
#include "Host/Image/ComputeValue.h"
#include "Host/Image/EuclideanDistance.h"
#include "Host/Image/Filter.h"
#include "Host/Image/Gradient.h"
#include "Host/Image/Image.h"
#include "Host/Image/ImageRegion.h"
#include "Host/Image/Paste.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Operations/ArithmeticOperations.h"

#define BENCH_API extern "C" __attribute__((visibility("default")))

namespace {

std::string last_error;  // NOLINT(cert-err58-cpp)

/// An operation of a class that nobody registered loops for.
class UnknownOperation : public ValueOperation {
 public:
  explicit UnknownOperation(float constant) { a = constant; }
  float Compute(float first, float second) override { return first + second; }
  float Compute(float value) override { return value + a; }
};

Image* Compute(const std::vector<const Image*>& images, ValueOperation&& operation) {
  return ComputeValue(images, &operation);
}

Image* ComputeByName(const std::string& name, float constant, const std::vector<const Image*>& images) {
  if (name == "add") return Compute(images, AdditionOperation(constant));
  if (name == "subtract") return Compute(images, SubtractionOperation(constant));
  if (name == "multiply") return Compute(images, MultiplicationOperation(constant));
  if (name == "divide") return Compute(images, DivideOperation(constant));
  if (name == "minimum") return Compute(images, MinimumOperation(constant));
  if (name == "maximum") return Compute(images, MaximumOperation(constant));
  if (name == "power") return Compute(images, PowerOperation(constant));
  if (name == "unknown") return Compute(images, UnknownOperation(constant));
  throw std::runtime_error("there is no operation " + name);
}

template <class Result>
Result Guard(const std::function<Result()>& body) {
  try {
    return body();
  } catch (const std::exception& error) {
    last_error = error.what();
    return Result{};
  }
}

/// Hands an image with one reference to the caller, who gives it back with `bench_release`.
Image* Hand(const ImagePtr& image) {
  if (!image) throw std::runtime_error("the operation made no image");
  image->AddRef();
  return image.Get();
}

namespace hn = hwy::HWY_NAMESPACE;

/// Streams past the caches where the address allows it; the few samples before and after are copied plainly.
void StreamCopy(float* to, const float* from, std::size_t count) {
  const hn::ScalableTag<float> tag;
  const std::size_t lanes = hn::Lanes(tag);
  while (count > 0 && reinterpret_cast<std::uintptr_t>(to) % (lanes * sizeof(float)) != 0) {
    *to++ = *from++;
    --count;
  }
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) hn::Stream(hn::LoadU(tag, from + i), tag, to + i);
  hwy::FlushStream();
  std::memcpy(to + i, from + i, (count - i) * sizeof(float));
}

void OnThreads(std::size_t count, const std::function<void(std::size_t from, std::size_t to)>& body) {
  const std::size_t threads = ScEng::GetNumThreads();
  ScEng::ParallelRows(count, (count + threads - 1) / threads, body);
}

/// Nodes one behind the other, the first behind an image.
class Chain {
 public:
  /// `words` has a line for each node: its type, then attributes as NAME=VALUE.
  Chain(const char* library_file, const char* words, ImagePtr image) : image_(std::move(image)) {
    const auto catalog = Bench::LoadCatalog(library_file);
    engine_.SetCatalog(catalog);
    source_ = engine_.CreateNode(ScEng::kImageRerouteType);
    last_ = source_;
    std::istringstream lines(words);
    for (std::string line; std::getline(lines, line);) Append(*catalog, line);
    options_.release_results = true;
  }

  void Evaluate() {
    // The range is found anew, as for an image that was just made.
    static_cast<void>(image_->GetArray());
    engine_.SetOutputOverride(source_, 0, image_);
    engine_.Evaluate({{last_, 0}}, options_);
    if (last_->IsInError()) throw std::runtime_error(last_->GetStateMessage());
  }

 private:
  void Append(const ScEng::NodeCatalog& catalog, const std::string& line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    const NodeInterface* const type = catalog.FindTypeName(word);
    if (type == nullptr) throw std::runtime_error("there is no node type " + word);
    Node* const node = engine_.CreateNode(type->GetNodeType());
    while (words >> word) {
      const auto equals = word.find('=');
      auto* const attribute = node->GetAttribute(word.substr(0, equals));
      const std::string value = word.substr(equals + 1);
      char* end = nullptr;
      const double number = std::strtod(value.c_str(), &end);
      const bool is_number = *end == '\0';
      const bool done = is_number ? attribute->SetNumber(number, false) : attribute->SetChoice(value.c_str(), false);
      if (!done) throw std::runtime_error("cannot set " + word);
    }
    Bench::Check(engine_.Connect(last_, last_->GetOutplugName(0), 0, node, node->GetInplugName(0), 0));
    last_ = node;
  }

  Engine engine_;
  ImagePtr image_;
  Node* source_ = nullptr;
  Node* last_ = nullptr;
  Engine::Options options_;
};

}  // namespace

BENCH_API const char* bench_error() { return last_error.c_str(); }

BENCH_API void bench_copy(float* to, const float* from, std::size_t count) {
  OnThreads(count, [&](std::size_t begin, std::size_t end) {
    std::memcpy(to + begin, from + begin, (end - begin) * sizeof(float));
  });
}

BENCH_API void bench_stream_copy(float* to, const float* from, std::size_t count) {
  OnThreads(count, [&](std::size_t begin, std::size_t end) { StreamCopy(to + begin, from + begin, end - begin); });
}

// ---- Images ----

BENCH_API Image* bench_image(const float* samples, int size_x, int size_y, unsigned color_mode) {
  return Guard<Image*>([&] {
    const auto image = ScEng::MakeRef<Image>(size_x, size_y, color_mode, nullptr);
    if (samples != nullptr) std::memcpy(image->GetArray(), samples, image->GetNumSamples() * sizeof(float));
    return Hand(image);
  });
}

BENCH_API void bench_release(Image* image) { image->Release(); }

BENCH_API const float* bench_samples(const Image* image) { return image->GetConstArray(); }

BENCH_API int bench_size(const Image* image, int which) {
  return which == 0 ? image->GetSizeX() : which == 1 ? image->GetSizeY() : image->GetNumChannels();
}

/// Forgets what is known of the range, as for an image that was just made.
BENCH_API void bench_touch(Image* image) { static_cast<void>(image->GetArray()); }

// ---- Operations ----

BENCH_API bool bench_blur(const Image* in, Image* out, float sigma, char mode) {
  return Guard<bool>([&] { return Filter::ApplyGaussianBlur(*in, *out, sigma, sigma, mode), true; });
}

BENCH_API bool bench_fill(Image* image, const Image* mask, float value) {
  return Guard<bool>([&] { return Filter::Fill(*image, mask, &value, 0), true; });
}

BENCH_API bool bench_gradient(const Image* in, Image* x, Image* y, bool seamless) {
  return Guard<bool>([&] { return ImageValue::Gradient(*in, *x, *y, seamless); });
}

BENCH_API Image* bench_distance(const Image* in, bool normalize, bool wrap) {
  return Guard<Image*>([&] { return Hand(ImagePtr(EuclideanDistance(*in, 0.5F, normalize, wrap))); });
}

/// Grows a copy, made in `out`; the copy is part of it.
BENCH_API bool bench_grow(const Image* in, Image* out, float radius, bool wrap, bool shrink) {
  return Guard<bool>([&] {
    bench_copy(out->GetArray(), in->GetConstArray(), in->GetNumSamples());
    ImageRegion region;
    region.Init(out, 0, 0, out->GetSizeX(), out->GetSizeY(), -1);
    shrink ? region.Shrink(radius, radius, wrap) : region.Grow(radius, radius, wrap);
    return true;
  });
}

BENCH_API Image* bench_paste(const Image* in, int left, int top, int right, int bottom, int color_mode) {
  return Guard<Image*>([&] { return Hand(ImagePtr(Paste(in, ScEng::Box2I{left, top, right, bottom}, color_mode))); });
}

BENCH_API Image* bench_compute(const char* operation, float constant, const Image* first, const Image* second) {
  return Guard<Image*>([&] {
    std::vector<const Image*> images{first};
    if (second != nullptr) images.push_back(second);
    return Hand(ImagePtr(ComputeByName(operation, constant, images)));
  });
}

// ---- Chains ----

BENCH_API Chain* bench_chain(const char* library, const char* words, Image* image) {
  return Guard<Chain*>([&] { return new Chain(library, words, ImagePtr(image)); });
}

BENCH_API bool bench_chain_evaluate(Chain* chain) {
  return Guard<bool>([&] { return chain->Evaluate(), true; });
}

BENCH_API void bench_chain_release(Chain* chain) { delete chain; }
