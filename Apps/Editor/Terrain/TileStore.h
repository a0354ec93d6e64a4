// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QOpenGLFunctions>
#include <cstdint>
#include <map>
#include <vector>

#include "Apps/Editor/Terrain/TileMesh.h"

/// The tiles that the graphics processor holds. Used with the context current that it was made with.
class TileStore {
 public:
  struct Tile {
    GLuint vertices = 0;
    GLuint triangles = 0;
    GLuint lines = 0;
    GLsizei num_triangle_indices = 0;
    GLsizei num_line_indices = 0;
    std::uint64_t last_use = 0;
  };

  explicit TileStore(QOpenGLFunctions& gl) : gl_(gl) {}
  ~TileStore() { Clear(); }
  TileStore(const TileStore&) = delete;
  TileStore& operator=(const TileStore&) = delete;

  /// Null for a tile that it does not hold.
  const Tile* Find(const TileKey& key);
  const Tile& Add(const TileKey& key, const TileMesh& mesh);
  /// Lets go of what has not been used for longest, down to a number that is enough for several pictures.
  void Trim();
  void Clear();

 private:
  GLuint Upload(GLenum target, const void* bytes, std::size_t count);
  void Delete(const Tile& tile);

  QOpenGLFunctions& gl_;
  std::map<TileKey, Tile> tiles_;
  std::uint64_t uses_ = 0;
};
