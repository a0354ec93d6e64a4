#!/usr/bin/env bash
# Renders the node icons: every Sources/<Name>.svg to <Name>.png (48x48) and
# every Sources/<Name>12.svg to <Name>12.png (12x12), RGBA on a clear ground.
#
# Needs:  rsvg-convert (Debian package librsvg2-bin)
#         python3, standard library only, and only for --sheet
#
# Usage:  render.sh [--out DIR] [--sheet FILE]
#   --out DIR     write the icons to DIR (made if missing) instead of beside
#                 this script
#   --sheet FILE  also write a contact sheet (PNG) of all icons, on a light and
#                 on a dark ground; the small ones at 1x and enlarged 4x
#   -h, --help    print this text
#
# The same sources and the same librsvg give the same bytes.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
sources=$here/Sources
out=$here
sheet=

fail() { printf 'render.sh: %s\n' "$1" >&2; exit "${2:-1}"; }

while [ $# -gt 0 ]; do
    case $1 in
        --out)   [ $# -ge 2 ] || fail "--out needs a directory" 2;  out=$2;   shift 2 ;;
        --sheet) [ $# -ge 2 ] || fail "--sheet needs a file name" 2; sheet=$2; shift 2 ;;
        -h|--help) sed -n '2,/^set /{/^set /d;s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}"; exit 0 ;;
        *) fail "unknown argument '$1' (try --help)" 2 ;;
    esac
done

missing=
command -v rsvg-convert >/dev/null || missing="rsvg-convert (Debian package librsvg2-bin)"
if [ -n "$sheet" ]; then
    command -v python3 >/dev/null || missing="${missing:+$missing, }python3 (Debian package python3)"
fi
[ -z "$missing" ] || fail "missing: $missing"

names=()
for svg in "$sources"/*.svg; do
    [ -e "$svg" ] || fail "no sources in $sources"
    name=$(basename -- "$svg" .svg)
    case $name in
        *12) [ -e "$sources/${name%12}.svg" ] || fail "$name.svg has no large one beside it" ;;
        *)   [ -e "$sources/${name}12.svg" ]  || fail "$name.svg has no small one beside it"
             names+=("$name") ;;
    esac
done

mkdir -p -- "$out"
out=$(cd -- "$out" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT

for name in "${names[@]}"; do
    rsvg-convert -w 48 -h 48 -f png -o "$scratch/$name.png"     "$sources/$name.svg"
    rsvg-convert -w 12 -h 12 -f png -o "$scratch/${name}12.png" "$sources/${name}12.svg"
done
for name in "${names[@]}"; do
    install -m 644 -- "$scratch/$name.png" "$scratch/${name}12.png" "$out/"
done
printf 'render.sh: %d icons in %s\n' "$((2 * ${#names[@]}))" "$out"

[ -n "$sheet" ] || exit 0

# librsvg smooths enlarged pictures, so the sheet draws the pixels of the small
# icons as squares.
python3 - "$out" "$scratch/sheet.svg" "${names[@]}" <<'PY'
import base64, struct, sys, zlib

folder, target, names = sys.argv[1], sys.argv[2], sys.argv[3:]


def pixels(path):
    """Rows of (r, g, b, a) of an 8 bit RGBA PNG."""
    data = open(path, "rb").read()
    at, packed = 8, b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, lace = struct.unpack(">IIBBBBB", body)
            if (depth, colour, lace) != (8, 6, 0):
                sys.exit("render.sh: %s is not 8 bit RGBA" % path)
        elif kind == b"IDAT":
            packed += body
        at += 12 + size
    raw, stride = zlib.decompress(packed), 4 * width
    above, rows = bytearray(stride), []
    for y in range(height):
        kind = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - 4] if i >= 4 else 0
            b = above[i]
            c = above[i - 4] if i >= 4 else 0
            if kind == 1:
                add = a
            elif kind == 2:
                add = b
            elif kind == 3:
                add = (a + b) // 2
            elif kind == 4:
                add = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            else:
                add = 0
            line[i] = (line[i] + add) & 255
        rows.append([tuple(line[4 * x:4 * x + 4]) for x in range(width)])
        above = line
    return rows


columns, cell_w, cell_h, margin = 5, 148, 88, 16
lines = (len(names) + columns - 1) // columns
block = 2 * margin + lines * cell_h
width = 2 * margin + columns * cell_w
svg = ['<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d">' % (width, 2 * block)]
for number, (ground, ink) in enumerate((("#F4F4F4", "#222222"), ("#262626", "#DDDDDD"))):
    svg.append('<rect y="%d" width="%d" height="%d" fill="%s"/>' % (number * block, width, block, ground))
    for i, name in enumerate(names):
        x = margin + i % columns * cell_w
        y = number * block + margin + i // columns * cell_h
        for suffix, side, dx, dy in (("", 48, 0, 0), ("12", 12, 58, 18)):
            with open("%s/%s%s.png" % (folder, name, suffix), "rb") as file:
                code = base64.b64encode(file.read()).decode()
            svg.append('<image x="%d" y="%d" width="%d" height="%d" href="data:image/png;base64,%s"/>'
                       % (x + dx, y + dy, side, side, code))
        svg.append('<g shape-rendering="crispEdges">')
        for row, line in enumerate(pixels("%s/%s12.png" % (folder, name))):
            for column, (r, g, b, a) in enumerate(line):
                if a:
                    svg.append('<rect x="%d" y="%d" width="4" height="4" fill="rgb(%d,%d,%d)" fill-opacity="%.4f"/>'
                               % (x + 80 + 4 * column, y + 4 * row, r, g, b, a / 255))
        svg.append('</g><text x="%d" y="%d" font-family="sans-serif" font-size="11" fill="%s">%s</text>'
                   % (x, y + 63, ink, name))
svg.append('</svg>')
with open(target, "w") as file:
    file.write("\n".join(svg))
PY
mkdir -p -- "$(dirname -- "$sheet")"
rsvg-convert -f png -o "$sheet" "$scratch/sheet.svg"
printf 'render.sh: contact sheet in %s\n' "$sheet"
