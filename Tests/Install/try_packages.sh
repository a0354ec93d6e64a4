#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the packages of a folder in the system that it runs on, a root with nothing but Debian's smallest set, uses
# them as their owner would, and purges them. Nothing may be left. Run by cmake/check-packages:
#
#   try_packages.sh FOLDER
set -euo pipefail
packages=$(realpath "${1:?the folder of the packages}")
ours=(value libvaluehost libvaluehost-dev python3-valuenodes value-doc)
work=/tmp/try
documents=/usr/share/doc/value-doc
export DEBIAN_FRONTEND=noninteractive

fail() { echo "try_packages: $1" >&2; exit 1; }
step() { echo "-- $1"; }
install() { apt-get install -qq -y --no-install-recommends "$@" > "$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "$* cannot be installed"; }; }
# What is tried is tried by a user without rights.
as_user() { (cd "$work/user" && setpriv --reuid=65534 --regid=65534 --clear-groups env HOME="$work/user" "$@"); }
expect() {
  local text=$1 answer
  shift
  answer=$(as_user "$@" 2>&1) || fail "$* ends with $?: $answer"
  [[ $answer == *"$text"* ]] || fail "$* does not say \"$text\": $answer"
}

# Every file with its kind, mode, owner and link, but for what dpkg and apt note, logs, and a cache of ldconfig. What
# programs write, below /etc and /var and where the types of files are, has its content besides; the rest, which is large,
# its size and time.
list_files() {
  local folder left_out=()
  for folder in proc sys dev run tmp packages var/log var/lib/dpkg var/lib/apt var/cache/apt var/cache/ldconfig; do
    left_out+=(-path "/$folder" -prune -o)
  done
  {
    find / -xdev "${left_out[@]}" -printf '%p %y %m %U %G %l\n'
    find /etc /var /usr/share/mime -xdev "${left_out[@]}" -type f -print0 | xargs -0 sha256sum
    find / -xdev "${left_out[@]}" -path /etc -prune -o -path /var -prune -o -path /usr/share/mime -prune -o \
      -type f -printf '%p %s %T@\n'
  } | LC_ALL=C sort
}

# The dependencies of the packages that are not among them, with what building against them takes.
needed() {
  local file
  for file in "$packages"/*.deb; do
    dpkg-deb --field "$file" Depends Recommends | sed 's/^[A-Za-z]*: *//' | tr ',' '\n'
  done | sed 's/^ *//; /^libvaluehost/d; /^value/d; /^$/d' | sort -u | paste -sd,
}

rm -rf "$work"
mkdir -p "$work/user"
chown 65534:65534 "$work/user"
step "dependencies"
apt-get update -qq
apt-get satisfy -qq -y --no-install-recommends "$(needed), g++, cmake, make, pkg-config" > "$work/apt.log" 2>&1 ||
  { tail "$work/apt.log"; fail "what the packages depend on cannot be installed"; }
list_files > "$work/before"
dpkg-query -W -f '${Package} ${Status}\n' > "$work/packages_before"

step "installation"
install "$packages"/*.deb
dpkg-query -W -f '${Package}\n' | grep -vxF -e "$(printf '%s\n' "${ours[@]}")" > "$work/others"
cut -d' ' -f1 "$work/packages_before" | diff - "$work/others" || fail "the packages depend on more than they say"
dpkg --verify "${ours[@]}" | grep . && fail "installed files differ from the packages"
ldconfig -p | grep -q libHostFiles.so.0 || fail "ldconfig has not seen the libraries"

step "the program"
expect ImageValueAddNode value nodes
expect "Value Add" value nodes "Value Add"
expect "" value doctor
as_user value doctor | grep -i "cannot be loaded" && fail "a part of the program cannot be loaded"
as_user value apply "Value Add" -i "$documents/Examples/Images/terrain.exr" --set constant=0.25 -o raised.exr
expect '"measured":[0.25' bash -c 'value stats raised.exr --json | tr -d " \n"'
for ending in png tif jpg jp2 webp asc bmp; do
  as_user value apply "Value Clamp" -i "$documents/Examples/Images/terrain.exr" -o "clamped.$ending" --quiet
  expect 512 value stats "clamped.$ending"
done
expect value value stats "$documents/Examples/Images/elevation.tif"
as_user value panel "Value Clamp" --screenshot panel.png
[ -s "$work/user/panel.png" ] || fail "the panel is not drawn"
(cd "$work/user" && value selftest "Value Add" > /dev/null) || fail "the self-test of a node fails"
rm -rf "$work/user/output"

step "the examples"
cp -r "$documents/Examples" "$work/user/Examples"
mkdir "$work/user/out"
chown -R 65534:65534 "$work/user"
for graph in "$work"/user/Examples/*.json; do as_user value run "$graph" --quiet; done
[ -s "$work/user/out/occlusion_sky.png" ] || fail "the node that computes on OpenCL devices has no result"

step "manual"
for page in $(dpkg -L value | grep '/man1/.*\.gz$'); do gzip -t "$page"; done

step "the Python package"
cat > "$work/user/use.py" <<'END'
import importlib.metadata
import numpy as np
import valuenodes as vn

assert vn.__file__ == "/usr/lib/python3/dist-packages/valuenodes/__init__.py", vn.__file__
assert importlib.metadata.version("valuenodes") == vn.__version__
half = np.full((2, 3), 0.5, np.float32)
assert np.asarray(vn.add(half, 0.25)).tolist() == [[0.75] * 3] * 2
for name in ["half.exr", "half.png", "half.tif"]:
    vn.write(name, half)
    assert vn.read(name).size == (3, 2), name
graph = vn.Graph.load("Examples/map.json")
assert len(graph.run()) == len(graph.outputs) > 0
problems = [codec["problem"] for codec in vn.doctor()["codecs"] if codec["problem"]]
assert not problems, problems
END
as_user /usr/bin/python3 use.py
for file in /usr/lib/python3/dist-packages/valuenodes/*.py; do
  find "$(dirname "$file")/__pycache__" -name "$(basename "$file" .py).*.pyc" | grep -q . || fail "$file has no bytecode"
done
answer=$(as_user /usr/bin/python3 -c 'import valuenodes; valuenodes.Graph().to_svg()' 2>&1) &&
  fail "a picture of a graph is drawn without Graphviz"
[[ ${answer##*$'\n'} == *graphviz* ]] || fail "without Graphviz the answer is: $answer"

step "a node library and a host of one's own, with CMake"
as_user cmake -S Examples/HelloNode -B hello -DCMAKE_BUILD_TYPE=Release > "$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; exit 1; }
as_user cmake --build hello > "$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; exit 1; }
expect "Hello Contrast" value nodes "Hello Contrast" --plugin hello/HelloNode.so
expect " 0 failed, 0 skipped" value validate hello/HelloNode.so
as_user cmake -S Examples/HostProgram -B host -DCMAKE_BUILD_TYPE=Release > "$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; exit 1; }
as_user cmake --build host > "$work/cmake.log" 2>&1 || { cat "$work/cmake.log"; exit 1; }
library=$(pkg-config --variable=moduledir valuehost)/Value.so
raised="512 x 512, value, declared 0.25 to 1.25"
expect "$raised" host/host-program "$library" Examples/Images/terrain.exr host.exr

step "the same host, with pkg-config"
as_user bash -c 'g++ -std=c++20 -o plain Examples/HostProgram/HostProgram.cpp $(pkg-config --cflags --libs valuehost)'
expect "$raised" ./plain "$library" Examples/Images/terrain.exr plain.exr
cmp "$work/user/host.exr" "$work/user/plain.exr" || fail "the two builds of the host write different images"
cat > "$work/user/widgets.cpp" <<'END'
#include <Host/Widgets/QNodeAttributesWidget.h>
int main() { return QNodeAttributesWidget::staticMetaObject.className()[0] == 'Q' ? 0 : 1; }
END
as_user bash -c 'g++ -std=c++20 -fPIC -o widgets widgets.cpp $(pkg-config --cflags --libs valuehost-widgets)'
as_user ./widgets

step "purge"
apt-get purge -qq -y "${ours[@]}" > "$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "the packages cannot be removed"; }
dpkg-query -W -f '${Package} ${Status}\n' | diff "$work/packages_before" - || fail "dpkg's list differs after the purge"
list_files > "$work/after"
diff "$work/before" "$work/after" || fail "the packages leave something behind"
rm -rf "$work"
