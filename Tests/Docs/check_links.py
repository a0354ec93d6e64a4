#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that every relative link of the project's Markdown files names a file that exists."""

import pathlib
import re
import shutil
import subprocess
import sys

root = pathlib.Path(sys.argv[1])


def list_files():
    """What git knows of, or every page where the sources came without git."""
    if shutil.which("git") is not None:
        answer = subprocess.run(
            ["git", "-C", str(root), "ls-files", "-co", "--exclude-standard", "*.md"],
            capture_output=True, text=True, check=False,
        )
        if answer.returncode == 0 and answer.stdout:
            return [root / name for name in answer.stdout.splitlines()]
    return sorted(root.glob("*.md")) + sorted((root / "Docs").rglob("*.md"))


files = list_files()
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
