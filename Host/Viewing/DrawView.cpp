// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/DrawView.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "Host/Util/ParallelRows.h"
#include "Host/Viewing/ContourLines.h"
#include "Host/Viewing/DrawnPlaces.h"
#include "Host/Viewing/LevelRows.h"
#include "Host/Viewing/PixelShades.h"
#include "Host/Viewing/ReliefRows.h"
#include "Host/Viewing/RowBlend.h"
#include "Host/Viewing/ShownChannels.h"

namespace ScEng {
namespace {

/// The level of which a drawn pixel covers one to two pixels each way.
int ChooseLevel(const ViewImage& image, double zoom) {
  const double first = image.GetFirstLevel();
  const double last = image.GetNumLevels() - 1;
  return static_cast<int>(zoom > 0.0 ? std::clamp(std::floor(-std::log2(zoom)), first, last) : first);
}

/// The columns and rows of a view.
struct DrawnGrid {
  DrawnGrid(const ViewImage& image, const Look& look, const ViewTransform& transform, const DrawTarget& target,
            bool is_smooth)
      : level(ChooseLevel(image, transform.zoom)),
        blends(is_smooth),
        columns(MakeSide(image, look, transform, transform.left, target.width, true)),
        rows(MakeSide(image, look, transform, transform.top, target.height, false)) {}

  [[nodiscard]] DrawnSide MakeSide(const ViewImage& image, const Look& look, const ViewTransform& transform,
                                   double start, int count, bool is_x) const {
    const ViewImage::Level from = image.GetLevel(level);
    DrawnSide side;
    side.size = is_x ? image.GetHeader().size_x : image.GetHeader().size_y;
    side.level_size = is_x ? from.size_x : from.size_y;
    side.level = level;
    side.start = start;
    side.zoom = transform.zoom;
    side.count = count;
    side.repeats = look.tiled;
    side.blends = blends;
    return side;
  }

  int level;
  bool blends;
  DrawnPlaces columns;
  DrawnPlaces rows;
};

/// The rows of a level under a grid, in one place for each number that is shown.
LevelPart ChoosePart(const ViewImage& image, const Look& look, const DrawnGrid& grid, const ShownSamples& samples) {
  return {image.GetLevel(grid.level),
          image.GetImage().GetColorMode(),
          samples,
          grid.columns.low,
          grid.columns.high,
          look.tiled};
}

double ChooseContourStep(const Look& look, const ValueRange& range) {
  if (look.contour_step > 0.0 && std::isfinite(look.contour_step)) return look.contour_step;
  return (static_cast<double>(range.high) - static_cast<double>(range.low)) / 10.0;
}

/// Contours have a grid of their own, since they run smoothly where pixels are squares too.
struct Contours {
  DrawnGrid grid;
  ContourLines lines;
};

/// What all rows of a view have in common.
class ViewPainter {
 public:
  ViewPainter(const ViewImage& image, const Look& look, const ViewTransform& transform, const DrawTarget& target)
      : image_(image),
        look_(look),
        target_(target),
        range_(GetShownRange(image, look)),
        samples_(ChooseSamples(image.GetImage().GetColorMode(), look)),
        is_relief_(look.shading == Shading::kHillshade || look.shading == Shading::kSlope),
        // A preview has no pixels to tell from each other.
        grid_(image, look, transform, target, transform.zoom < 1.0 || image.IsPreview()),
        shades_(look, range_) {
    const double step = ChooseContourStep(look, range_);
    if (!look.contours || !(step > 0.0) || grid_.columns.IsEmpty()) return;
    contours_ =
        std::make_unique<const Contours>(Contours{DrawnGrid(image, look, transform, target, true),
                                                  ContourLines(step, std::ldexp(1.0 / transform.zoom, -grid_.level))});
  }

  void DrawRows(int from, int to) const;

 private:
  class RowMaker;

  const ViewImage& image_;
  const Look& look_;
  const DrawTarget& target_;
  ValueRange range_;
  ShownSamples samples_;
  bool is_relief_;
  DrawnGrid grid_;
  PixelShades shades_;
  std::unique_ptr<const Contours> contours_;
};

/// Makes one row after the other, on one thread.
class ViewPainter::RowMaker {
 public:
  explicit RowMaker(const ViewPainter& painter)
      : painter_(painter),
        rows_(ChoosePart(painter.image_, painter.look_, painter.grid_, painter.samples_)),
        relief_(rows_, static_cast<std::size_t>(painter.grid_.columns.high - painter.grid_.columns.low),
                std::ldexp(1.0, painter.grid_.level)),
        pixels_(painter.grid_.columns.places.size()) {
    if (painter.contours_) {
      const ShownSamples value = ChooseValue(painter.image_.GetImage().GetColorMode(), painter.look_);
      contour_rows_.emplace(ChoosePart(painter.image_, painter.look_, painter.contours_->grid, value));
    }
  }

  /// The pixels of a drawn row that lie in the image.
  const std::vector<std::uint32_t>& Make(int row) {
    const DrawnGrid& grid = painter_.grid_;
    const DrawnPlace& place = grid.rows.places[static_cast<std::size_t>(row - grid.rows.begin)];
    const bool is_same = has_pixels_ && !grid.blends && place.first == last_row_ && !painter_.contours_;
    if (is_same) return pixels_;
    Shade(place);
    has_pixels_ = true;
    last_row_ = place.first;
    if (painter_.contours_) DrawContours(row);
    return pixels_;
  }

 private:
  void Shade(const DrawnPlace& place) {
    const std::size_t count = pixels_.size();
    const int planes = painter_.samples_.count;
    numbers_.resize(count * static_cast<std::size_t>(planes + 2));
    DrawnNumbers numbers;
    numbers.count = count;
    numbers.num_planes = planes;
    float* to = numbers_.data();
    for (int plane = 0; plane < planes; ++plane, to += count) {
      Blend({rows_.Get(place.first, plane) + 1, rows_.Get(place.second, plane) + 1, place.weight}, to);
      numbers.planes[static_cast<std::size_t>(plane)] = to;
    }
    if (painter_.is_relief_) {
      using Plane = ReliefRows::Plane;
      Blend({relief_.Get(place.first, Plane::kAlongX), relief_.Get(place.second, Plane::kAlongX), place.weight}, to);
      numbers.along_x = to;
      to += count;
      Blend({relief_.Get(place.first, Plane::kAlongY), relief_.Get(place.second, Plane::kAlongY), place.weight}, to);
      numbers.along_y = to;
    }
    painter_.shades_.Shade(numbers, pixels_.data());
  }

  void Blend(const RowPair& rows, float* to) {
    BlendRow(rows, painter_.grid_.columns, painter_.grid_.blends, scratch_, to);
  }

  void DrawContours(int row) {
    const DrawnGrid& grid = painter_.contours_->grid;
    const DrawnPlace& place = grid.rows.places[static_cast<std::size_t>(row - grid.rows.begin)];
    painter_.contours_->lines.DrawRow(
        {contour_rows_->Get(place.first, 0) + 1, contour_rows_->Get(place.second, 0) + 1, place.weight}, grid.columns,
        pixels_.data());
  }

  const ViewPainter& painter_;
  LevelRows rows_;
  ReliefRows relief_;
  std::optional<LevelRows> contour_rows_;
  std::vector<std::uint32_t> pixels_;
  std::vector<float> numbers_;
  std::vector<float> scratch_;
  bool has_pixels_ = false;
  int last_row_ = 0;
};

void ViewPainter::DrawRows(int from, int to) const {
  constexpr std::size_t kPixelBytes = 4;
  const auto width = static_cast<std::size_t>(target_.width);
  std::optional<RowMaker> maker;
  for (int y = from; y < to; ++y) {
    std::uint8_t* const bytes = target_.bytes + static_cast<std::size_t>(y) * target_.bytes_per_row;
    if (grid_.columns.IsEmpty() || y < grid_.rows.begin || y >= grid_.rows.GetEnd()) {
      std::memset(bytes, 0, width * kPixelBytes);
      continue;
    }
    if (!maker) maker.emplace(*this);
    const std::vector<std::uint32_t>& pixels = maker->Make(y);
    const auto begin = static_cast<std::size_t>(grid_.columns.begin);
    const auto end = static_cast<std::size_t>(grid_.columns.GetEnd());
    std::memset(bytes, 0, begin * kPixelBytes);
    std::memcpy(bytes + begin * kPixelBytes, pixels.data(), pixels.size() * kPixelBytes);
    std::memset(bytes + end * kPixelBytes, 0, (width - end) * kPixelBytes);
  }
}

}  // namespace

void DrawView(const ViewImage& image, const Look& look, const ViewTransform& transform, const DrawTarget& target) {
  if (target.bytes == nullptr || target.width <= 0 || target.height <= 0) return;
  constexpr std::size_t kRowsPerPiece = 16;
  const ViewPainter painter(image, look, transform, target);
  ParallelRows(static_cast<std::size_t>(target.height), kRowsPerPiece, [&](std::size_t from, std::size_t to) {
    painter.DrawRows(static_cast<int>(from), static_cast<int>(to));
  });
}

}  // namespace ScEng
