// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The programs that draw a terrain, in the language that OpenGL 2.1 and its embedded edition 2.0 share.
namespace TerrainShaders {

/// The surface and its walls. Light is reckoned per vertex: quads are a few pixels wide.
inline constexpr char kSurfaceVertex[] = R"(
attribute vec3 a_place;
attribute vec2 a_slope;
attribute float a_relief;
attribute vec4 a_color;
attribute vec4 a_kind;
uniform mat4 u_matrix;
uniform float u_rise;
uniform float u_ground;
uniform vec3 u_light;
uniform vec3 u_eye;
uniform vec3 u_wall;
varying vec3 v_color;
void main() {
  bool is_wall = a_kind.x > 0.5;
  vec3 place = vec3(a_place.xy, mix(a_place.z * u_rise, u_ground, a_kind.y));
  vec3 normal = is_wall ? vec3(a_slope, 0.0) : normalize(vec3(-a_slope * u_rise, 1.0));
  // The inner side of a wall is seen through a hole.
  float inside = is_wall && dot(normal, u_eye - place) < 0.0 ? 1.0 : 0.0;
  normal *= 1.0 - 2.0 * inside;
  float relief = a_relief * u_rise;
  float openness = clamp(1.0 + 0.55 * relief / (1.0 + abs(relief)), 0.5, 1.35);
  float key = max(dot(normal, u_light), 0.0);
  float fill = max(dot(normal, normalize(vec3(-u_light.xy, 0.35))), 0.0);
  vec3 sky = mix(vec3(0.30, 0.27, 0.25), vec3(0.44, 0.47, 0.52), normal.z * 0.5 + 0.5);
  vec3 light = sky * openness + vec3(0.74, 0.70, 0.63) * key * mix(1.0, openness, 0.4) + vec3(0.07, 0.08, 0.10) * fill;
  // Walls darken toward the ground, which takes light away.
  float shade = is_wall ? mix(1.0, 0.72, a_kind.y) * (1.0 - 0.45 * inside) : 1.0;
  v_color = (is_wall ? u_wall : a_color.rgb) * light * shade;
  gl_Position = u_matrix * vec4(place, 1.0);
}
)";

inline constexpr char kSurfaceFragment[] = R"(
#ifdef GL_ES
precision mediump float;
#endif
varying vec3 v_color;
uniform float u_darkness;
void main() { gl_FragColor = vec4(min(v_color, 1.0) * (1.0 - u_darkness), 1.0); }
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
  float near_by = length(max(abs(v_place) - u_half, 0.0));
  float cast = length(max(abs(v_place - u_away) - u_half, 0.0));
  float alpha = 0.6 * exp(-near_by * near_by * 90.0) + 0.5 * exp(-cast * cast * 14.0);
  gl_FragColor = vec4(0.0, 0.0, 0.0, alpha * u_strength);
}
)";

}  // namespace TerrainShaders
