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
for graph in Examples/*.json; do
  echo "  value run $graph"
  "$bin/value" run "$graph" --quiet
done
"$bin/value-sheet" -o out/contact_sheet.png --title "Arithmetic nodes over a terrain and a photograph" --columns 4 --range 0 1 \
  "terrain.exr=Examples/Images/terrain.exr" \
  "Value Add: raised by a quarter=out/raise_terrain.exr" \
  "mask.png=Examples/Images/mask.png" \
  "Value Multiply: terrain times mask=out/islands_masked.exr" \
  "Value Maximum, Value Minimum: sea and plateau=out/islands.exr" \
  "Value Power: terrain to the power 2.5=out/peaks.exr" \
  "Image Terrain: large forms=out/detail_large.exr" \
  "Value Add: with a fifth of fine forms=out/detail.exr" \
  "coast.png=Examples/Images/coast.png" \
  "Multiply, Subtract: toned=out/sunset.png" \
  "Multiply: lit unevenly=out/flat_field_uneven.exr" \
  "Value Divide: and evened out again=out/flat_field_even.exr"
echo "  value-sheet: out/contact_sheet.png"
