// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The programs that draw a terrain, in the language that OpenGL 2.1 and its embedded edition 2.0 share.
namespace TerrainShaders {

/// The surface and its walls. The light of the surface is reckoned per pixel, with slopes of the slope map, but for
/// tiles that are finer than it.
inline constexpr char kSurfaceVertex[] = R"(
attribute vec3 a_place;
attribute vec2 a_slope;
attribute float a_relief;
attribute vec4 a_color;
attribute vec4 a_kind;
uniform mat4 u_matrix;
uniform float u_rise;
uniform float u_ground;
uniform vec3 u_eye;
uniform vec3 u_wall;
uniform vec4 u_map;
varying vec3 v_color;
varying vec2 v_slope;
varying vec2 v_map;
varying float v_openness;
varying float v_wall;
void main() {
  vec3 place = vec3(a_place.xy, mix(a_place.z * u_rise, u_ground, a_kind.y));
  bool is_wall = a_kind.x > 0.5;
  // The inner side of a wall is seen through a hole.
  float inside = is_wall && dot(a_slope, u_eye.xy - place.xy) < 0.0 ? 1.0 : 0.0;
  v_slope = a_slope * (1.0 - 2.0 * inside);
  // Walls darken toward the ground, which takes light away.
  v_color = is_wall ? u_wall * mix(1.0, 0.74, a_kind.y) * (1.0 - 0.4 * inside) : a_color.rgb;
  float relief = a_relief * u_rise;
  v_openness = clamp(1.0 + 0.5 * relief / (1.0 + abs(relief)), 0.55, 1.3);
  v_map = a_place.xy * u_map.xy + u_map.zw;
  v_wall = is_wall ? 1.0 : 0.0;
  gl_Position = u_matrix * vec4(place, 1.0);
}
)";

inline constexpr char kSurfaceFragment[] = R"(
#ifdef GL_ES
precision mediump float;
#endif
uniform sampler2D u_slopes;
uniform float u_detail;
uniform float u_rise;
uniform float u_map_rise;
uniform vec3 u_light;
uniform float u_darkness;
varying vec3 v_color;
varying vec2 v_slope;
varying vec2 v_map;
varying float v_openness;
varying float v_wall;
void main() {
  vec2 coded = (texture2D(u_slopes, v_map).xy * 255.0 - 127.0) / 127.0;
  vec2 mapped = coded / max(1.0 - abs(coded), 0.004) * u_map_rise;
  vec2 slope = mix(v_slope * u_rise, mapped, u_detail);
  vec3 normal = normalize(mix(vec3(-slope, 1.0), vec3(v_slope, 0.0), v_wall));
  // Light goes a little around the corner, as it does in clay.
  float facing = max(dot(normal, u_light) * 0.72 + 0.28, 0.0);
  float key = facing * mix(facing, 1.0, 0.4);
  float fill = max(dot(normal, normalize(vec3(-u_light.xy, 0.4))), 0.0);
  vec3 sky = mix(vec3(0.35, 0.33, 0.32), vec3(0.45, 0.46, 0.48), normal.z * 0.5 + 0.5);
  vec3 light = sky * v_openness + vec3(0.76, 0.72, 0.66) * key * mix(1.0, v_openness, 0.4) + vec3(0.10) * fill;
  gl_FragColor = vec4(min(v_color * light, 1.0) * (1.0 - u_darkness), 1.0);
}
)";

/// The sky: two triangles over the whole picture.
inline constexpr char kSkyVertex[] = R"(
attribute vec3 a_place;
varying float v_up;
void main() {
  v_up = a_place.y * 0.5 + 0.5;
  gl_Position = vec4(a_place.xy, 1.0, 1.0);
}
)";

inline constexpr char kSkyFragment[] = R"(
#ifdef GL_ES
precision mediump float;
#endif
varying float v_up;
uniform vec3 u_top;
uniform vec3 u_bottom;
void main() { gl_FragColor = vec4(mix(u_top, u_bottom, smoothstep(0.0, 1.0, v_up)), 1.0); }
)";

/// The shade on the ground below and around the block.
inline constexpr char kShadeVertex[] = R"(
attribute vec3 a_place;
uniform mat4 u_matrix;
uniform float u_ground;
uniform float u_scale;
varying vec2 v_place;
void main() {
  v_place = a_place.xy * u_scale;
  gl_Position = u_matrix * vec4(v_place, u_ground, 1.0);
}
)";

inline constexpr char kShadeFragment[] = R"(
#ifdef GL_ES
precision mediump float;
#endif
varying vec2 v_place;
uniform vec2 u_half;
uniform vec2 u_away;
uniform float u_strength;
void main() {
  float near_by = clamp(1.0 - length(max(abs(v_place) - u_half, 0.0)) * 5.0, 0.0, 1.0);
  float thrown = clamp(1.0 - length(max(abs(v_place - u_away) - u_half, 0.0)) * 1.9, 0.0, 1.0);
  float alpha = 0.55 * near_by * near_by * near_by + 0.5 * thrown * thrown * thrown;
  gl_FragColor = vec4(0.0, 0.0, 0.0, alpha * u_strength);
}
)";

}  // namespace TerrainShaders
