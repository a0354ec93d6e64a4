// SPDX-License-Identifier: Apache-2.0
//
// value-sheet: a contact sheet of image files with captions, as a PNG. Each image is shown with its declared range from
// black to white, colour over a pattern that shows through where it is transparent.

#include <CLI/CLI.hpp>
#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Files/FileSizeLimit.h"
#include "Host/Files/ImageFile.h"
#include "Host/Files/SignalCleanup.h"
#include "Host/Image/DisplayImage.h"
#include "Host/Image/Image.h"

namespace {

constexpr int kMargin = 16;
constexpr int kCaptionLines = 2;

struct Tile {
  std::string caption;
  QImage picture;
};

/// The range of values that is shown from black to white.
struct Shown {
  float low = 0.0F;
  float high = 1.0F;
};

int ToByte(float sample) { return static_cast<int>(std::lround(sample * 255.0F)); }

QImage ToPicture(const Image& image, const std::optional<Shown>& shown) {
  QImage picture(image.GetSizeX(), image.GetSizeY(), QImage::Format_ARGB32);
  const int channels = image.GetNumChannels();
  const bool own_range = !shown || channels == 4;
  const auto display = ScEng::MakeDisplayImage(image, own_range ? image.GetValueLow() : shown->low,
                                               own_range ? image.GetValueHigh() : shown->high);
  const bool is_color = display->GetNumChannels() == 4;
  const float* pixel = display->GetConstArray();
  for (int y = 0; y < image.GetSizeY(); ++y) {
    for (int x = 0; x < image.GetSizeX(); ++x, pixel += is_color ? 4 : 1) {
      const int red = ToByte(pixel[0]);
      picture.setPixel(
          x, y, is_color ? qRgba(red, ToByte(pixel[1]), ToByte(pixel[2]), ToByte(pixel[3])) : qRgb(red, red, red));
    }
  }
  return picture;
}

/// Reads "caption=file" into a tile of at most `side` pixels.
bool ReadTile(const std::string& argument, int side, const std::optional<Shown>& shown, Tile& tile) {
  const std::size_t equals = argument.rfind('=');
  if (equals == std::string::npos) {
    std::cerr << "value-sheet: \"" << argument << "\" is not of the form CAPTION=FILE\n";
    return false;
  }
  ScEng::Status status;
  std::vector<std::string> notes;
  const auto image = ScEng::ReadImageFile(argument.substr(equals + 1), {}, status, notes);
  if (!image) {
    std::cerr << "value-sheet: " << status.GetMessage() << "\n";
    return false;
  }
  tile.caption = argument.substr(0, equals);
  tile.picture = ToPicture(*image, shown).scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return true;
}

void DrawTile(QPainter& painter, const Tile& tile, const QRect& place, int caption_height) {
  const QRect frame(place.x() + (place.width() - tile.picture.width()) / 2,
                    place.y() + place.height() - caption_height - tile.picture.height(), tile.picture.width(),
                    tile.picture.height());
  painter.fillRect(frame, QColor(150, 150, 150));
  painter.fillRect(frame, QBrush(QColor(190, 190, 190), Qt::Dense4Pattern));
  painter.drawImage(frame, tile.picture);
  painter.setPen(QColor(40, 42, 46));
  const QRect caption(place.x(), place.bottom() - caption_height + 6, place.width(), caption_height - 6);
  painter.drawText(caption, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, QString::fromStdString(tile.caption));
}

QImage DrawSheet(const std::vector<Tile>& tiles, const std::string& title, int columns, int side) {
  QFont font("DejaVu Sans");
  font.setPixelSize(15);
  QFont title_font = font;
  title_font.setPixelSize(22);
  title_font.setBold(true);
  const int caption_height = QFontMetrics(font).lineSpacing() * kCaptionLines + 8;
  const int title_height = title.empty() ? 0 : QFontMetrics(title_font).lineSpacing() + kMargin;
  const int count = static_cast<int>(tiles.size());
  columns = std::min(columns, count);
  // A row is as high as its highest image.
  std::vector<QRect> places;
  int top = kMargin + title_height;
  for (int first = 0; first < count; first += columns) {
    const int end = std::min(first + columns, count);
    int height = 0;
    for (int i = first; i < end; ++i) height = std::max(height, tiles[static_cast<std::size_t>(i)].picture.height());
    height += caption_height;
    for (int i = first; i < end; ++i) places.emplace_back(kMargin + (i - first) * (side + kMargin), top, side, height);
    top += height + kMargin;
  }

  QImage sheet(columns * (side + kMargin) + kMargin, top, QImage::Format_RGB32);
  sheet.fill(QColor(236, 237, 239));
  QPainter painter(&sheet);
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.setFont(title_font);
  painter.setPen(QColor(20, 22, 26));
  painter.drawText(QRect(kMargin, kMargin / 2, sheet.width() - 2 * kMargin, title_height),
                   Qt::AlignLeft | Qt::AlignVCenter, QString::fromStdString(title));
  painter.setFont(font);
  for (std::size_t i = 0; i < tiles.size(); ++i) DrawTile(painter, tiles[i], places[i], caption_height);
  return sheet;
}

}  // namespace

int main(int argc, char** argv) {
  ScEng::CatchFileSizeSignal();
  ScEng::CleanUpOnSignals();
  std::vector<std::string> arguments;
  std::string output;
  std::string title;
  int columns = 4;
  int side = 256;
  CLI::App app{"Lays image files out on one sheet with captions."};
  app.name("value-sheet");
  app.add_option("TILES", arguments, "Images with captions")->type_name("CAPTION=FILE")->required();
  app.add_option("-o,--output", output, "The sheet, a PNG file")->type_name("FILE")->required();
  app.add_option("--title", title, "A line over the sheet");
  app.add_option("--columns", columns, "Images in a row")->check(CLI::Range(1, 100));
  app.add_option("--side", side, "Width and height of an image in pixels")->check(CLI::Range(16, 4096));
  std::pair<float, float> range;
  auto* range_option =
      app.add_option("--range", range, "Shows this range of values from black to white, in place of the declared one");
  range_option->type_name("LOW HIGH");
  app.footer("Example:\n  value-sheet -o sheet.png \"terrain=terrain.exr\" \"raised by a quarter=raised.exr\"");
  CLI11_PARSE(app, argc, argv);

  // No display is needed.
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const QGuiApplication gui(argc, argv);
  std::optional<Shown> shown;
  if (range_option->count() > 0) shown = Shown{range.first, range.second};
  std::vector<Tile> tiles;
  for (const std::string& argument : arguments) {
    Tile tile;
    if (!ReadTile(argument, side, shown, tile)) return 4;
    tiles.push_back(std::move(tile));
  }
  QByteArray bytes;
  QBuffer buffer(&bytes);
  if (!DrawSheet(tiles, title, columns, side).save(&buffer, "PNG")) {
    std::cerr << "value-sheet: the sheet could not be encoded\n";
    return 4;
  }
  const auto status =
      ScEng::WriteWholeFile(output, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  if (status.IsError()) {
    std::cerr << "value-sheet: " << status.GetMessage() << "\n";
    return 4;
  }
  return 0;
}
