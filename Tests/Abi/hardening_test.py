#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reads built programs and libraries and finds the hardening that they are built with.

    hardening_test.py [--fortified] [--marked-targets] [--guarded NAME]... FOLDER...

Every ELF file in the folders, but for test programs, must have read-only relocations, all resolved
at load time, no executable stack, and an address that changes from start to start.
--fortified: at least one file calls functions of the C library that check the destination's size.
--marked-targets: every exported function begins with the mark of a target of indirect calls.
--guarded: the file of that name has guarded stack frames. Small files may have none.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

# endbr64
MARK = bytes.fromhex("f30f1efa")


def readelf(path, *options):
    return subprocess.run(["readelf", "-W", *options, str(path)], capture_output=True, text=True, check=True).stdout


def base_name(name):
    """libHostUtil of libHostUtil.so.0.2.0."""
    return name.split(".so")[0]


def elf_files(folders):
    for folder in folders:
        for path in sorted(Path(folder).iterdir()):
            if path.is_file() and not path.is_symlink() and not path.name.endswith("Tests"):
                with open(path, "rb") as file:
                    if file.read(4) == b"\x7fELF":
                        yield path


def exported_functions(path):
    """Name and address of every function that the file itself defines and exports."""
    for line in readelf(path, "--dyn-syms").splitlines():
        match = re.match(r"\s*\d+: ([0-9a-f]+)\s+\S+\s+FUNC\s+(?:GLOBAL|WEAK)\s+DEFAULT\s+(\d+)\s+(\S+)", line)
        if match:
            yield match.group(3), int(match.group(1), 16)


def loaded_parts(path):
    """Offset, address and size of what the file has mapped."""
    for line in readelf(path, "-l").splitlines():
        match = re.match(r"\s*LOAD\s+0x([0-9a-f]+)\s+0x([0-9a-f]+)\s+0x[0-9a-f]+\s+0x([0-9a-f]+)", line)
        if match:
            yield tuple(int(group, 16) for group in match.groups())


def unmarked(path):
    """The exported functions that begin without the mark."""
    parts = list(loaded_parts(path))
    content = path.read_bytes()
    names = []
    for name, address in exported_functions(path):
        for offset, start, size in parts:
            if start <= address < start + size:
                place = offset + address - start
                if content[place : place + 4] != MARK:
                    names.append(name)
    return names


def faults_of(path, options):
    """What is wrong with one file, a line each."""
    headers = readelf(path, "-h", "-l")
    dynamic = readelf(path, "-d")
    kind = re.search(r"Type:\s+(\w+)", headers).group(1)
    if kind != "DYN":
        yield f"is of type {kind}, at a fixed address"
    if "GNU_RELRO" not in headers:
        yield "has no read-only relocations (-z relro)"
    if "BIND_NOW" not in dynamic and not re.search(r"FLAGS_1\).*\bNOW\b", dynamic):
        yield "resolves symbols late (-z now)"
    stack = re.search(r"GNU_STACK.*?\s([RWE ]+)\s+0x", headers)
    if not stack or "E" in stack.group(1):
        yield "has an executable stack"
    if base_name(path.name) in options.guarded and "__stack_chk_fail" not in readelf(path, "--dyn-syms"):
        yield "has no guarded stack frame (-fstack-protector-strong)"
    if options.marked_targets:
        names = unmarked(path)
        if names:
            yield f"has {len(names)} exported functions without a mark, first {names[0]} (-fcf-protection)"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--fortified", action="store_true")
    parser.add_argument("--marked-targets", action="store_true")
    parser.add_argument("--guarded", action="append", default=[], type=base_name, metavar="NAME")
    parser.add_argument("folders", nargs="+", metavar="FOLDER")
    options = parser.parse_args()

    files = list(elf_files(options.folders))
    found = {base_name(path.name) for path in files}
    faults = [f"{name} is not among the files" for name in options.guarded if name not in found]
    exported = 0
    fortified = set()
    for path in files:
        faults += [f"{path.name} {fault}" for fault in faults_of(path, options)]
        exported += sum(1 for _ in exported_functions(path))
        fortified.update(re.findall(r"UND (__\w+_chk)\b", readelf(path, "--dyn-syms")))
    fortified.discard("__stack_chk_fail")
    if options.fortified and not fortified:
        faults.append("no file calls a checked function of the C library (_FORTIFY_SOURCE)")
    for fault in faults or ([] if files else ["there is no program and no library in the folders"]):
        print(fault)
    if faults or not files:
        return 1
    print(f"{len(files)} files, {exported} exported functions; checked calls: {', '.join(sorted(fortified)) or 'none'}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
