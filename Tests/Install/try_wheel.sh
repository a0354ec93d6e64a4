#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs a wheel in the system that it runs on, a root with nothing but Debian's smallest set of packages and Python,
# uses it as its owner would, and removes it. Run by cmake/check-packages:
#
#   try_wheel.sh WHEEL
set -euo pipefail
wheel=$(realpath "${1:?the wheel}")
work=/tmp/try
export DEBIAN_FRONTEND=noninteractive

fail() { echo "try_wheel: $1" >&2; exit 1; }
step() { echo "-- $1"; }
# What is tried is tried by a user without rights.
as_user() { (cd "$work/user" && setpriv --reuid=65534 --regid=65534 --clear-groups env HOME="$work/user" "$@"); }

rm -rf "$work"
mkdir -p "$work/user"
chown 65534:65534 "$work/user"
step "Python"
apt-get update -qq
apt-get install -qq -y --no-install-recommends python3-venv libstdc++6 > "$work/apt.log" 2>&1 ||
  { tail "$work/apt.log"; fail "Python cannot be installed"; }

step "installation"
as_user python3 -m venv venv
as_user venv/bin/pip --quiet --disable-pip-version-check install --no-index "$wheel"
as_user venv/bin/pip --disable-pip-version-check check

step "use, without numpy"
cat > "$work/user/use.py" <<'END_OF_PROGRAM'
import valuenodes as vn

grey = vn.apply("Image Rectangle", frame=(0, 0, 3, 2), color=(0.5, 0.5, 0.5, 1))
value = vn.to_value(grey)
assert vn.add(value, 0.25).range == (0.75, 0.75)
for name in ["value.exr", "value.tiff", "value.png", "value.asc", "value.jp2", "value.webp"]:
    vn.write(name, value)
    assert vn.read(name).size == (3, 2), name
graph = vn.Graph()
graph.add("Image Reader", "height", path="value.exr")
graph.add("Value Multiply", "doubled", constant=2)
graph.connect("height.image", "doubled.image")
assert graph.evaluate("doubled.image").range == (1, 1)
problems = [codec["problem"] for codec in vn.doctor()["codecs"] if codec["problem"]]
assert not problems, problems
END_OF_PROGRAM
as_user venv/bin/python -B use.py
answer=$(as_user venv/bin/python -B -c 'import valuenodes as vn; vn.Image([[1.0]])' 2>&1) && fail "an array is made without numpy"
[[ ${answer##*$'\n'} == *numpy* ]] || fail "without numpy the answer is: $answer"

step "removal"
as_user venv/bin/pip --quiet --disable-pip-version-check uninstall --yes valuenodes
find "$work/user/venv" -iname '*valuenodes*' | grep . && fail "the wheel leaves something behind"
rm -rf "$work"
