"""Builds the node of Docs/AddANode.md from the page's own code, inside the library and outside of it, and tries it.

    add_a_node.py ROOT BUILD WORK CMAKE [FLAGS]

ROOT is the repository, BUILD its build folder, from which the host is installed, WORK a folder for everything that is
made here, and FLAGS are options of the compiler. The page names each block of code by the line before it: "`FILE`:" for
a new file, "Add to `FILE`:" for lines that are added to one that is there.
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

MOST_FILES_TOUCHED = 3
OUTSIDE = "Outside/"

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(AddANode LANGUAGES CXX)
list(APPEND CMAKE_MODULE_PATH "@ROOT@/cmake")
include(GNUInstallDirs)
include(ValueTargets)
find_package(ValueHost REQUIRED)
find_package(hwy REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(GTest REQUIRED)
add_subdirectory(Value)
file(GLOB tests "${PROJECT_SOURCE_DIR}/Value/Nodes/Wrap/*Test.cpp")
add_executable(WrapTests ${tests})
target_include_directories(WrapTests PRIVATE "${PROJECT_SOURCE_DIR}")
target_link_libraries(WrapTests PRIVATE ValueObjects ValueBuild hwy::hwy GTest::gtest_main)
"""


def run(*command, **options):
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True, **options)
    if result.returncode != 0:
        sys.exit(f"{' '.join(str(part) for part in command)}\nended with {result.returncode}:\n"
                 f"{result.stdout}{result.stderr}")
    return result.stdout + result.stderr


def read_page(page):
    """The new files with their texts, and the lines that are added to files that are there."""
    blocks = re.findall(r"^(Add to )?`([^`]+)`:\n\n```\w+\n(.*?)^```", page, re.M | re.S)
    new = {file: text for add, file, text in blocks if not add}
    added = {file: text.splitlines() for add, file, text in blocks if add}
    return new, added


def insert(text, line):
    """Puts a line of the page where a person would: an include with the others, a row at the end of its list."""
    lines = text.splitlines()
    if line.startswith("#include"):
        place = max(i for i, old in enumerate(lines) if old.startswith('#include "Value/')) + 1
    elif line.lstrip().startswith("<file>"):
        place = max(i for i, old in enumerate(lines) if "<file>" in old) + 1
    elif line.rstrip().endswith(","):
        place = max(i for i, old in enumerate(lines) if "CreateNodeDescriptor<" in old) + 1
    else:
        place = max(i for i, old in enumerate(lines) if re.match(r"  Nodes/.*\.cpp$", old)) + 1
    lines.insert(place, line)
    return "\n".join(lines) + "\n"


def configure_and_build(cmake, source, build, prefix, flags, *options):
    run(cmake, "-S", source, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}",
        f"-DCMAKE_CXX_FLAGS={flags}", *options)
    run(cmake, "--build", build)


def try_node(value, library, folder):
    """Whether the program finds the node in the library, folds a value with it, and has nothing to object."""
    about = run(value, "nodes", "Value Wrap", "--no-default-plugins", "--plugin", library)
    for part in ("ImageValueWrapNode", "repeat", "mirror"):
        if part not in about:
            sys.exit(f"value nodes does not show {part}:\n{about}")
    image = folder / "folded.exr"
    run(value, "apply", "ImageRectangleNode", "--set", "frame=0,0,2,2", "--set", "color=1.25,0,0,1", "-o",
        folder / "source.exr")
    run(value, "apply", "Value Wrap", "--no-default-plugins", "--plugin", library, "-i",
        folder / "source.exr", "--set", "mode=mirror",
        "-o", image)
    stats = run(value, "stats", image, "--json")
    # 1.25 runs back to 0.75.
    if not re.search(r'"measured":\s*\[\s*0\.75,\s*0\.75\s*\]', stats):
        sys.exit(f"Value Wrap does not fold 1.25 to 0.75:\n{stats}")
    checks = run(value, "validate", library)
    if " 0 failed" not in checks:
        sys.exit(f"the library does not pass every check:\n{checks}")


def main():
    root, build, work, cmake = (Path(part) for part in sys.argv[1:5])
    flags = sys.argv[5] if len(sys.argv) > 5 else ""
    new, added = read_page((root / "Docs" / "AddANode.md").read_text(encoding="utf-8"))
    shutil.rmtree(work, ignore_errors=True)
    prefix = work / "prefix"
    run(cmake, "--install", build, "--prefix", prefix)
    value = prefix / "bin" / "value"

    # What a node takes, by the page's own list.
    if len(added) > MOST_FILES_TOUCHED:
        sys.exit(f"adding a node touches {len(added)} files: {', '.join(added)}")
    inside = work / "inside"
    shutil.copytree(root / "Value", inside / "Value")
    shutil.copytree(root / "Tests" / "Support", inside / "Tests" / "Support")
    for file, lines in added.items():
        text = (inside / file).read_text(encoding="utf-8")
        for line in lines:
            text = insert(text, line)
        (inside / file).write_text(text, encoding="utf-8")
    for file, text in new.items():
        place = work / "outside" / file[len(OUTSIDE):] if file.startswith(OUTSIDE) else inside / file
        if (root / file).exists():
            sys.exit(f"{file} is there already")
        place.parent.mkdir(parents=True, exist_ok=True)
        place.write_text(text, encoding="utf-8")
    # The page has no pictures of its icons, so those of another node stand in.
    icons = root / "Value" / "Resources" / "Icons"
    for folder in (inside / "Value" / "Resources" / "Icons", work / "outside" / "Icons"):
        folder.mkdir(parents=True, exist_ok=True)
        for ending in (".png", "12.png"):
            shutil.copy(icons / f"Clamp{ending}", folder / f"Wrap{ending}")

    (inside / "CMakeLists.txt").write_text(PROJECT.replace("@ROOT@", str(root)), encoding="utf-8")
    configure_and_build(cmake, inside, work / "build-inside", prefix, flags)
    tests = next((work / "build-inside").rglob("WrapTests"))
    environment = dict(os.environ, LD_LIBRARY_PATH=str(next(prefix.glob("lib*"))))
    answer = run(tests, env=environment)
    if "[  PASSED  ] 8 tests." not in answer:
        sys.exit(f"not all tests of the page ran:\n{answer}")
    try_node(value, next((work / "build-inside").rglob("Value.so")), work)

    shutil.copytree(inside / "Value" / "Nodes" / "Wrap", work / "outside" / "Value" / "Nodes" / "Wrap",
                    dirs_exist_ok=True)
    configure_and_build(cmake, work / "outside", work / "build-outside", prefix, flags)
    try_node(value, work / "build-outside" / "WrapLibrary.so", work)
    print(f"the node was built inside and outside; {len(added)} existing files were touched")


main()
