// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileStore.h"

#include <algorithm>

namespace {

// About 30 MB.
constexpr std::size_t kMostTiles = 512;

}  // namespace

GLuint TileStore::Upload(GLenum target, const void* bytes, std::size_t count) {
  GLuint buffer = 0;
  gl_.glGenBuffers(1, &buffer);
  gl_.glBindBuffer(target, buffer);
  gl_.glBufferData(target, static_cast<qopengl_GLsizeiptr>(count), bytes, GL_STATIC_DRAW);
  return buffer;
}

const TileStore::Tile* TileStore::Find(const TileKey& key) {
  const auto found = tiles_.find(key);
  if (found == tiles_.end()) return nullptr;
  found->second.last_use = ++uses_;
  return &found->second;
}

const TileStore::Tile& TileStore::Add(const TileKey& key, const TileMesh& mesh) {
  Tile tile;
  tile.vertices = Upload(GL_ARRAY_BUFFER, mesh.vertices.data(), mesh.vertices.size() * sizeof(TerrainVertex));
  tile.triangles =
      Upload(GL_ELEMENT_ARRAY_BUFFER, mesh.triangles.data(), mesh.triangles.size() * sizeof(std::uint16_t));
  tile.lines = Upload(GL_ELEMENT_ARRAY_BUFFER, mesh.lines.data(), mesh.lines.size() * sizeof(std::uint16_t));
  tile.num_triangle_indices = static_cast<GLsizei>(mesh.triangles.size());
  tile.num_line_indices = static_cast<GLsizei>(mesh.lines.size());
  tile.last_use = ++uses_;
  return tiles_[key] = tile;
}

void TileStore::Delete(const Tile& tile) {
  for (const GLuint buffer : {tile.vertices, tile.triangles, tile.lines}) gl_.glDeleteBuffers(1, &buffer);
}

void TileStore::Trim() {
  if (tiles_.size() <= kMostTiles) return;
  std::vector<std::uint64_t> last_uses;
  for (const auto& [key, tile] : tiles_) last_uses.push_back(tile.last_use);
  const auto oldest = static_cast<std::ptrdiff_t>(tiles_.size() - kMostTiles / 2);
  std::nth_element(last_uses.begin(), last_uses.begin() + oldest, last_uses.end());
  const std::uint64_t first_kept = last_uses[static_cast<std::size_t>(oldest)];
  std::erase_if(tiles_, [&](const auto& entry) {
    if (entry.second.last_use >= first_kept) return false;
    Delete(entry.second);
    return true;
  });
}

void TileStore::Clear() {
  for (const auto& [key, tile] : tiles_) Delete(tile);
  tiles_.clear();
}
