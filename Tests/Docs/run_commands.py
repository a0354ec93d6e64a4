#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the commands that documents print, and fails when one of them does.

    run_commands.py ROOT FILE...    Markdown files, relative to the root; patterns are allowed

Every line of an "sh" block that starts the command line program is run, with VALUE_PROGRAM in its place, in a scratch
copy of what the commands read. Commands of one document run in order, so one may read what another has written. A JSON
block that the text says to save (Save this as `FILE`) is there as that file.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

PROGRAM = "build/release/bin/value"


def commands(text):
    for block in re.findall(r"^```sh\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        for line in block.replace("\\\n", " ").split("\n"):
            words = shlex.split(line, comments=True)
            if words and words[0] == PROGRAM:
                yield words[1:]


def documents(text):
    return re.findall(r"[Ss]ave this as `([^`]+)`[^`]*^```json\n(.*?)^```", text, re.MULTILINE | re.DOTALL)


def main():
    root, patterns = pathlib.Path(sys.argv[1]), sys.argv[2:]
    program = os.environ["VALUE_PROGRAM"]
    failures, runs = [], 0
    with tempfile.TemporaryDirectory() as scratch:
        shutil.copytree(root / "Examples", pathlib.Path(scratch) / "Examples")
        for graph in (root / "Value" / "Nodes").glob("*/*.json"):
            copy = pathlib.Path(scratch) / graph.relative_to(root)
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(graph, copy)
        (pathlib.Path(scratch) / "out").mkdir()
        for file in sorted(found for pattern in patterns for found in root.glob(pattern)):
            text = file.read_text("utf-8")
            for name, content in documents(text):
                (pathlib.Path(scratch) / name).write_text(content, "utf-8")
            for words in commands(text):
                run = subprocess.run([program, *words], cwd=scratch, capture_output=True, text=True, check=False)
                runs += 1
                if run.returncode != 0:
                    failures.append(f"{file.relative_to(root)}: value {shlex.join(words)}\n  {run.stderr.strip()}")
    print("\n".join(failures) if failures else f"{runs} commands")
    return 1 if failures or runs == 0 else 0


sys.exit(main())
