// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainRenderer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

#include "Apps/Editor/Terrain/TerrainShaders.h"
#include "Apps/Editor/Terrain/TileSelection.h"

namespace {

enum Attribute : GLuint { kPlace, kSlope, kRelief, kColor, kKind, kNumAttributes };

// Smaller quads would not be seen, and smaller ones with lines would be all lines.
constexpr double kPixelsPerQuad = 1.5;
constexpr double kPixelsPerWire = 7.0;
// Beyond this a picture is not smoothed by drawing it at twice its size.
constexpr qint64 kMostSmoothPixels = 3'000'000;
// Between these times of coarse pictures their size stays as it is.
constexpr double kFastMilliseconds = 25.0;
constexpr double kSlowMilliseconds = 60.0;
constexpr double kLeastScale = 0.5;
// After so many tiles of a fine picture it is asked whether to stop.
constexpr std::size_t kTilesAtOnce = 16;

QString Tell(const char* text) { return QCoreApplication::translate("TerrainRenderer", text); }

QVector3D ToVector(const QColor& color) { return {color.redF(), color.greenF(), color.blueF()}; }

QVector3D ToLight(const TerrainSettings& settings) {
  const double azimuth = settings.azimuth_degrees * std::numbers::pi / 180.0;
  const double altitude = settings.altitude_degrees * std::numbers::pi / 180.0;
  return {static_cast<float>(std::sin(azimuth) * std::cos(altitude)),
          static_cast<float>(std::cos(azimuth) * std::cos(altitude)), static_cast<float>(std::sin(altitude))};
}

const void* AtOffset(std::size_t offset) { return reinterpret_cast<const void*>(offset); }

}  // namespace

TerrainRenderer::TerrainRenderer() = default;

TerrainRenderer::~TerrainRenderer() {
  if (gl_ == nullptr || !context_.makeCurrent(surface_)) return;
  if (square_ != 0) gl_->glDeleteBuffers(1, &square_);
  slopes_.reset();
  tiles_.reset();
  target_.reset();
  shade_program_.reset();
  sky_program_.reset();
  surface_program_.reset();
  context_.doneCurrent();
}

QString TerrainRenderer::Start(QSurface& surface) {
  surface_ = &surface;
  context_.setFormat(surface.format());
  if (!context_.create()) return Tell(QT_TRANSLATE_NOOP("TerrainRenderer", "this display offers no OpenGL context"));
  if (!context_.makeCurrent(surface_)) {
    return Tell(QT_TRANSLATE_NOOP("TerrainRenderer", "OpenGL cannot draw off the screen here"));
  }
  gl_ = context_.functions();
  QString problem;
  if (!gl_->hasOpenGLFeature(QOpenGLFunctions::Shaders) || !gl_->hasOpenGLFeature(QOpenGLFunctions::Framebuffers)) {
    problem = Tell(QT_TRANSLATE_NOOP("TerrainRenderer", "this OpenGL is older than 2.1"));
  } else {
    problem = MakePrograms();
  }
  context_.doneCurrent();
  return problem;
}

QString TerrainRenderer::MakePrograms() {
  using namespace TerrainShaders;
  surface_program_ = std::make_unique<GlProgram>(*gl_);
  sky_program_ = std::make_unique<GlProgram>(*gl_);
  shade_program_ = std::make_unique<GlProgram>(*gl_);
  QString problem =
      surface_program_->Make(kSurfaceVertex, kSurfaceFragment, {"a_place", "a_slope", "a_relief", "a_color", "a_kind"});
  if (problem.isEmpty()) problem = sky_program_->Make(kSkyVertex, kSkyFragment, {"a_place"});
  if (problem.isEmpty()) problem = shade_program_->Make(kShadeVertex, kShadeFragment, {"a_place"});
  target_ = std::make_unique<GlTarget>(*gl_, context_.isOpenGLES());
  tiles_ = std::make_unique<TileStore>(*gl_);
  slopes_ = std::make_unique<GlTexture>(*gl_);
  gl_->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most_pixels_);
  gl_->glGenBuffers(1, &square_);
  return problem;
}

QSize TerrainRenderer::FindSize(const TerrainFrame& frame) const {
  const QSize size = frame.pixels.boundedTo(QSize(most_pixels_, most_pixels_));
  if (!frame.is_fine) return (QSizeF(size) * coarse_scale_).toSize().expandedTo(QSize(1, 1));
  const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
  const bool fits = 2 * std::max(size.width(), size.height()) <= most_pixels_;
  return pixels <= kMostSmoothPixels && fits ? size * 2 : size;
}

void TerrainRenderer::AdaptScale(double milliseconds) {
  if (milliseconds > kSlowMilliseconds) coarse_scale_ = std::max(coarse_scale_ * 0.8, kLeastScale);
  if (milliseconds < kFastMilliseconds) coarse_scale_ = std::min(coarse_scale_ * 1.25, 1.0);
}

TerrainPicture TerrainRenderer::Draw(const TerrainFrame& frame, const std::function<bool()>& should_stop) {
  QElapsedTimer timer;
  timer.start();
  TerrainPicture picture;
  picture.is_fine = frame.is_fine;
  if (!context_.makeCurrent(surface_)) {
    picture.problem = Tell(QT_TRANSLATE_NOOP("TerrainRenderer", "the display took its OpenGL context back"));
    return picture;
  }
  if (Prepare(frame, should_stop)) {
    QElapsedTimer drawing;
    drawing.start();
    DrawCurrent(frame, should_stop, picture);
    if (!frame.is_fine) AdaptScale(static_cast<double>(drawing.nsecsElapsed()) * 1e-6);
  }
  context_.doneCurrent();
  if (picture.image.isNull()) return picture;
  if (picture.image.size() != frame.pixels) {
    picture.image = picture.image.scaled(frame.pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  }
  // What windows are made of.
  picture.image = std::move(picture.image).convertToFormat(QImage::Format_RGB32);
  picture.milliseconds = static_cast<double>(timer.nsecsElapsed()) * 1e-6;
  return picture;
}

void TerrainRenderer::DrawCurrent(const TerrainFrame& frame, const std::function<bool()>& should_stop,
                                  TerrainPicture& picture) {
  const QSize size = FindSize(frame);
  TerrainEye eye = frame.GetEye(size);
  const double samples = static_cast<double>(size.width()) / frame.pixels.width();
  const double pixels_per_quad = frame.settings.wireframe ? kPixelsPerWire * samples : kPixelsPerQuad;
  const std::vector<TileKey> tiles =
      SelectTiles(*tree_, eye, frame.is_fine ? TerrainFrame::kFineTriangles : TerrainFrame::kCoarseTriangles,
                  static_cast<float>(pixels_per_quad));
  if (!PrepareTiles(frame, tiles, should_stop)) return;
  if (!target_->Bind(size)) {
    picture.problem = Tell(QT_TRANSLATE_NOOP("TerrainRenderer", "OpenGL has no memory for a picture of this size"));
    return;
  }
  // Pictures of Qt start with their top row, those of OpenGL with the bottom one.
  QMatrix4x4 flip;
  flip.scale(1.0F, -1.0F, 1.0F);
  eye.matrix = flip * eye.matrix;
  gl_->glViewport(0, 0, size.width(), size.height());
  gl_->glClear(GL_DEPTH_BUFFER_BIT);
  DrawSky(frame.background);
  DrawShade(frame, eye);
  picture.triangles = DrawSurface(frame, eye, tiles, should_stop);
  if (picture.triangles > 0 || tiles.empty()) picture.image = target_->Read();
  tiles_->Trim();
}

bool TerrainRenderer::Prepare(const TerrainFrame& frame, const std::function<bool()>& should_stop) {
  const bool is_other_field = frame.field != field_ || tree_ == nullptr;
  if (is_other_field || frame.colors != colors_) tiles_->Clear();
  colors_ = frame.colors;
  if (!is_other_field) return true;
  field_ = frame.field;
  tree_ = TileTree::Make(*field_, should_stop);
  if (tree_ == nullptr) return false;
  const SlopeMap map = MakeSlopeMap(*field_);
  slopes_level_ = map.level;
  slopes_size_x_ = map.size_x;
  slopes_size_y_ = map.size_y;
  slopes_->Upload(map);
  return true;
}

bool TerrainRenderer::PrepareTiles(const TerrainFrame& frame, const std::vector<TileKey>& tiles,
                                   const std::function<bool()>& should_stop) {
  for (const TileKey& key : tiles) {
    if (tiles_->Find(key) != nullptr) continue;
    if (should_stop && should_stop()) return false;
    tiles_->Add(key, BuildTile(*frame.field, *frame.colors, key, tree_->GetBox(key)));
  }
  return true;
}

void TerrainRenderer::DrawSquare() {
  static constexpr std::array<float, 12> kCorners{-1, -1, 0, 1, -1, 0, -1, 1, 0, 1, 1, 0};
  gl_->glBindBuffer(GL_ARRAY_BUFFER, square_);
  gl_->glBufferData(GL_ARRAY_BUFFER, sizeof kCorners, kCorners.data(), GL_STATIC_DRAW);
  gl_->glEnableVertexAttribArray(kPlace);
  gl_->glVertexAttribPointer(kPlace, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
  gl_->glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
  gl_->glDisableVertexAttribArray(kPlace);
}

void TerrainRenderer::DrawSky(const TerrainBackground& background) {
  gl_->glDisable(GL_DEPTH_TEST);
  gl_->glDisable(GL_BLEND);
  sky_program_->Use();
  sky_program_->Set("u_top", ToVector(background.top));
  sky_program_->Set("u_bottom", ToVector(background.bottom));
  DrawSquare();
}

void TerrainRenderer::DrawShade(const TerrainFrame& frame, const TerrainEye& eye) {
  const QVector3D light = ToLight(frame.settings);
  const float depth = frame.field->GetHighest() * eye.rise - eye.ground;
  const float reach = std::min(depth * 0.5F / std::max(light.z(), 0.3F), 0.3F);
  gl_->glEnable(GL_BLEND);
  gl_->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  shade_program_->Use();
  shade_program_->Set("u_matrix", eye.matrix);
  shade_program_->Set("u_scale", 3.0F);
  shade_program_->Set("u_ground", eye.ground);
  shade_program_->Set("u_half", static_cast<float>((frame.field->GetSizeX() - 1) * frame.field->GetSpacing() * 0.5),
                      static_cast<float>((frame.field->GetSizeY() - 1) * frame.field->GetSpacing() * 0.5));
  shade_program_->Set("u_away", -light.x() * reach, -light.y() * reach);
  shade_program_->Set("u_strength", frame.background.bottom.lightnessF() < 0.5F ? 0.65F : 0.4F);
  DrawSquare();
  gl_->glDisable(GL_BLEND);
}

void TerrainRenderer::BindVertices(const TileStore::Tile& tile) {
  const auto bind = [this](GLuint attribute, GLint numbers, GLenum type, std::size_t offset) {
    gl_->glVertexAttribPointer(attribute, numbers, type, type == GL_FLOAT ? GL_FALSE : GL_TRUE, sizeof(TerrainVertex),
                               AtOffset(offset));
  };
  gl_->glBindBuffer(GL_ARRAY_BUFFER, tile.vertices);
  bind(kPlace, 3, GL_FLOAT, offsetof(TerrainVertex, x));
  bind(kSlope, 2, GL_FLOAT, offsetof(TerrainVertex, slope_x));
  bind(kRelief, 1, GL_FLOAT, offsetof(TerrainVertex, relief));
  bind(kColor, 4, GL_UNSIGNED_BYTE, offsetof(TerrainVertex, color));
  bind(kKind, 4, GL_UNSIGNED_BYTE, offsetof(TerrainVertex, kind));
}

void TerrainRenderer::SetLight(const TerrainFrame& frame, const TerrainEye& eye) {
  GlProgram& program = *surface_program_;
  program.Use();
  program.Set("u_matrix", eye.matrix);
  program.Set("u_rise", eye.rise);
  program.Set("u_ground", eye.ground);
  program.Set("u_light", ToLight(frame.settings));
  program.Set("u_eye", eye.place);
  program.Set("u_wall", QVector3D(0.66F, 0.62F, 0.58F));
  program.Set("u_darkness", 0.0F);
  program.Set("u_map_rise", static_cast<float>(frame.settings.exaggeration));
  // From a place in space to one in the map, whose pixels have their heights in their middles.
  const HeightField& field = *frame.field;
  const double width = std::ldexp(slopes_size_x_, slopes_level_);
  const double height = std::ldexp(slopes_size_y_, slopes_level_);
  program.Set("u_map", QVector4D(static_cast<float>(1.0 / (field.GetSpacing() * width)),
                                 static_cast<float>(-1.0 / (field.GetSpacing() * height)),
                                 static_cast<float>(field.GetSizeX() * 0.5 / width),
                                 static_cast<float>(field.GetSizeY() * 0.5 / height)));
  slopes_->Bind(frame.is_fine);
}

int TerrainRenderer::DrawSurface(const TerrainFrame& frame, const TerrainEye& eye, const std::vector<TileKey>& tiles,
                                 const std::function<bool()>& should_stop) {
  GlProgram& program = *surface_program_;
  gl_->glEnable(GL_DEPTH_TEST);
  gl_->glDepthFunc(GL_LEQUAL);
  SetLight(frame, eye);
  for (GLuint attribute = 0; attribute < kNumAttributes; ++attribute) gl_->glEnableVertexAttribArray(attribute);
  GLsizei indices = 0;
  std::size_t num_drawn = 0;
  const bool has_lines = frame.settings.wireframe;
  // Lines lie on the triangles, which make way for them.
  if (has_lines) gl_->glEnable(GL_POLYGON_OFFSET_FILL);
  gl_->glPolygonOffset(1.0F, 1.0F);
  for (const TileKey& key : tiles) {
    const TileStore::Tile& tile = *tiles_->Find(key);
    program.Set("u_detail", key.level < slopes_level_ ? 0.0F : 1.0F);
    BindVertices(tile);
    gl_->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, tile.triangles);
    gl_->glDrawElements(GL_TRIANGLES, tile.num_triangle_indices, GL_UNSIGNED_SHORT, nullptr);
    indices += tile.num_triangle_indices;
    if (!frame.is_fine || ++num_drawn % kTilesAtOnce != 0) continue;
    // What has been asked for is drawn now, so that the answer is of use.
    gl_->glFinish();
    if (should_stop && should_stop()) return 0;
  }
  gl_->glDisable(GL_POLYGON_OFFSET_FILL);
  if (has_lines) program.Set("u_darkness", 0.6F);
  for (const TileKey& key : has_lines ? tiles : std::vector<TileKey>()) {
    const TileStore::Tile& tile = *tiles_->Find(key);
    BindVertices(tile);
    gl_->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, tile.lines);
    gl_->glDrawElements(GL_LINES, tile.num_line_indices, GL_UNSIGNED_SHORT, nullptr);
  }
  for (GLuint attribute = 0; attribute < kNumAttributes; ++attribute) gl_->glDisableVertexAttribArray(attribute);
  return indices / 3;
}
