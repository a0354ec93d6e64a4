#!/usr/bin/env bash
# Runs every example graph into out/ and lays the results out on a contact sheet. Called by ./demo; needs the built
# programs, whose folder is the one argument.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
bin=$1
mkdir -p out
# Qt wants a folder of its own, which a plain shell may not have.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  XDG_RUNTIME_DIR=$(mktemp -d)
  export XDG_RUNTIME_DIR
  trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT
fi
for graph in Examples/*.json Examples/Editor/*.json; do
  echo "  value run $graph"
  "$bin/value" run "$graph" --quiet
done

# sheet NAME OPTION... CAPTION=FILE...: lays results out as out/NAME.png, all with 0 as black and 1 as white.
sheet() {
  local name=$1
  shift
  "$bin/value-sheet" -o "out/$name.png" --range 0 1 "$@"
  echo "  value-sheet: out/$name.png"
}
terrain="terrain.exr=Examples/Images/terrain.exr"
sheet contact_sheet --title "A terrain, a mask and a photograph through the nodes" --columns 4 \
  "$terrain" \
  "Value Add: raised by a quarter=out/raise_terrain.exr" \
  "mask.png=Examples/Images/mask.png" \
  "Value Multiply: terrain times mask=out/islands_masked.exr" \
  "Value Maximum, Value Minimum: sea and plateau=out/islands.exr" \
  "Value Power: terrain to the power 2.5=out/peaks.exr" \
  "Image Terrain: large forms=out/detail_large.exr" \
  "Value Add: with a fifth of fine forms=out/detail.exr" \
  "Value Steps: terraces=out/height_bands_terraces.png" \
  "Value Range: where rock shows=out/height_bands_rock.png" \
  "Value Range, Multiply, Add: height bands in colour=out/map_colors.png" \
  "Value Subtract: lit from the upper left=out/map.png" \
  "Value Condition: forest with clearings=out/masks_forest.png" \
  "To Value: metres brought to 0 to 1=out/normalise_levelled.png" \
  "Value Subtract: what changed between two versions=out/two_versions_change.png" \
  "Value Compare: where land was dug away=out/two_versions_dug.png" \
  "Relief: scree below ridges=out/scree_after.png" \
  "Distance: shoulders of roads=out/roads_shoulder.png" \
  "Distance: land levelled towards roads=out/roads_view.png" \
  "Value Gradient: slope=out/slope_shown.png" \
  "Ambient Occlusion: what sees the sky=out/occlusion_sky.png" \
  "Ambient Occlusion: height bands, shaded and lit=out/occlusion_sunny.png" \
  "Connected Components: every lake=out/basins_shades.png" \
  "Component Edges: shores=out/basins_map.png" \
  "lettering.png=Examples/Images/lettering.png" \
  "Relief: inner bevel, lit=out/bevel_inner_lit.png" \
  "Relief: pillow emboss, lit=out/bevel_pillow_lit.png" \
  "Relief: carved into stone=out/bevel_stone_lit.png" \
  "coast.png=Examples/Images/coast.png" \
  "Multiply, Subtract: toned=out/sunset.png" \
  "Multiply: lit unevenly=out/flat_field_uneven.exr" \
  "Value Divide: and evened out again=out/flat_field_even.exr"

# The pictures of Docs/Examples.md.
sheet example_height_bands --columns 3 \
  "$terrain" \
  "terraces=out/height_bands_terraces.png" \
  "shore=out/height_bands_shore.png" \
  "meadow=out/height_bands_meadow.png" \
  "rock=out/height_bands_rock.png" \
  "snow=out/height_bands_snow.png"
sheet example_map --columns 3 \
  "$terrain" \
  "colors: the bands in colour=out/map_colors.png" \
  "map: lit from the upper left=out/map.png"
sheet example_masks --columns 4 \
  "$terrain" \
  "snow=out/masks_snow.png" \
  "forest, less the painted clearings=out/masks_forest.png" \
  "lakes=out/masks_lakes.png"
sheet example_normalise --columns 3 \
  "metres: cut at 0 and 1=out/normalise_metres.exr" \
  "levelled: 0 to 1=out/normalise_levelled.png" \
  "half: 0.25 to 0.75=out/normalise_half.png"
sheet example_two_versions --columns 3 \
  "before=Examples/Images/terrain.exr" \
  "after=Examples/Images/terrain_edited.exr" \
  "shown: twice the change, grey is none=out/two_versions_change.png" \
  "changed: by more than 0.015=out/two_versions_changed.png" \
  "filled: changed and higher=out/two_versions_filled.png" \
  "dug: changed and lower=out/two_versions_dug.png"
sheet example_bevel --columns 2 --side 400 \
  "mask=Examples/Images/lettering.png" \
  "stone: the inner bevel carved in, lit=out/bevel_stone_lit.png" \
  "inner_bevel=out/bevel_inner.png" \
  "lit=out/bevel_inner_lit.png" \
  "outer_bevel=out/bevel_outer.png" \
  "lit=out/bevel_outer_lit.png" \
  "emboss=out/bevel_emboss.png" \
  "lit=out/bevel_emboss_lit.png" \
  "pillow_emboss=out/bevel_pillow.png" \
  "lit=out/bevel_pillow_lit.png"
sheet example_roads --columns 3 \
  "roads=Examples/Images/roads.png" \
  "distance: white is 128 pixels=out/roads_distance.png" \
  "shoulder=out/roads_shoulder.png" \
  "verge=out/roads_verge.png" \
  "before, lit=out/roads_before.png" \
  "graded, lit, with the roads=out/roads_view.png"
sheet example_slope --columns 3 \
  "$terrain" \
  "slope, 25 times as bright=out/slope_shown.png" \
  "cliffs=out/slope_cliffs.png" \
  "gentle=out/slope_gentle.png" \
  "high=out/slope_high.png" \
  "snow: gentle and high=out/slope_snow.png"
sheet example_occlusion --columns 3 \
  "$terrain" \
  "tones: bands of heights=out/occlusion_tones.png" \
  "occlusion=out/occlusion_sky.png" \
  "shaded: tones times occlusion=out/occlusion_shaded.png" \
  "sunny: lit on top=out/occlusion_sunny.png" \
  "wet: the hollows=out/occlusion_wet.png"
sheet example_basins --columns 3 \
  "height=out/basins_height.png" \
  "water: what lies below its level=out/basins_water.png" \
  "shades: one for every lake=out/basins_shades.png" \
  "one: the lake of one number=out/basins_one.png" \
  "outlines=out/basins_outlines.png" \
  "map: land, lakes and shores=out/basins_map.png"
sheet example_scree --columns 4 \
  "terrain.exr, lit=out/scree_before.png" \
  "filled, lit=out/scree_after.png" \
  "filled: heights=out/scree_filled.exr" \
  "scree: where it lies=out/scree_mask.png"

# The pictures of Docs/Editor.
sheet job_splat_masks --columns 4 \
  "$terrain" \
  "sand=out/editor_sand.png" \
  "grass=out/editor_grass.png" \
  "rock=out/editor_rock.png"
sheet job_lettering --columns 3 --side 400 \
  "mask=Examples/Images/lettering.png" \
  "lit=out/editor_lettering.png" \
  "stone_lit=out/editor_stone.png"
sheet job_two_versions --columns 4 \
  "before=Examples/Images/terrain.exr" \
  "after=Examples/Images/terrain_edited.exr" \
  "filled=out/editor_filled.png" \
  "dug=out/editor_dug.png"
sheet job_roads --columns 3 \
  "roads=Examples/Images/roads.png" \
  "height, lit=out/roads_before.png" \
  "graded, lit, with the roads=out/roads_view.png"
