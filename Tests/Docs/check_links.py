#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that every relative link of the project's Markdown files names a file that exists."""

import pathlib
import re
import subprocess
import sys

root = pathlib.Path(sys.argv[1])
names = subprocess.run(
    ["git", "-C", str(root), "ls-files", "-co", "--exclude-standard", "*.md"],
    capture_output=True, text=True, check=False,
).stdout.split("\n")
files = [root / name for name in names if name] or sorted(root.glob("*.md")) + sorted((root / "Docs").rglob("*.md"))
broken = []
links = 0
for file in files:
    for target in re.findall(r"\]\(([^)\s]+)\)", file.read_text("utf-8")):
        if re.match(r"[a-z]+:", target) or target.startswith("#"):
            continue
        links += 1
        if not (file.parent / target.split("#")[0]).exists():
            broken.append(f"{file.relative_to(root)}: {target} does not exist")
print("\n".join(broken) if broken else f"{links} links in {len(files)} files")
sys.exit(1 if broken or not files else 0)
