#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes a wheel of the Python package of a build folder, with everything that the package loads.

    make_wheel.py [--cmake CMAKE] [--level LEVEL] BUILD_FOLDER OUTPUT_FOLDER

The wheel holds the package with its module, and in its folder _host the host's libraries, the nodes, the codecs, the
program that decodes and, in _host/bundled, the libraries of others. A system needs no more than glibc, libstdc++ and
the Python that the module is for. One build folder gives the same bytes each time.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import wheel_archive
import wheel_libraries
import wheel_licenses

PROJ_DATA = (pathlib.Path("/usr/share/proj/proj.db"), pathlib.Path("/usr/share/proj/proj.ini"))


def fail(message):
    sys.exit(f"make_wheel: {message}")


def run(*command, **options):
    answer = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    if answer.returncode != 0:
        fail(f"{command[0]} ended with {answer.returncode}: {(answer.stderr or answer.stdout).strip()}")
    return answer.stdout


def find_epoch(source):
    """The date of all files in the wheel, in seconds since 1970."""
    epoch = os.environ.get("SOURCE_DATE_EPOCH")
    if epoch is None and shutil.which("git") is not None:
        log = subprocess.run(
            ["git", "-C", str(source), "log", "-1", "--format=%ct"], capture_output=True, text=True, check=False
        )
        epoch = log.stdout.strip() or None
    if epoch is None:
        fail("this folder has no history to take a date from; set SOURCE_DATE_EPOCH to the seconds since 1970")
    if not re.fullmatch(r"\d{1,10}", epoch):
        fail(f'SOURCE_DATE_EPOCH is "{epoch}", and must be seconds since 1970')
    return int(epoch)


def only(paths, what):
    paths = sorted(paths)
    if len(paths) != 1:
        fail(f"the installation has {len(paths)} of {what}, and one is expected")
    return paths[0]


def install(cmake, build, tree):
    """The parts of the build, where the wheel has them. The host finds them by where its libraries are."""
    if not (build / "CMakeCache.txt").is_file():
        fail(f"{build} is no build folder")
    if not (build / "python/valuenodes/_functions.py").is_file():
        fail(f"{build} has no Python package; build the target ValuePythonPackage, with VALUE_BUILD_PYTHON on")
    run(cmake, "--install", build, "--prefix", tree, "--component", "wheel", "--strip")
    # A wheel has no links: a library bears the one name by which others ask for it.
    for link in sorted(path for path in tree.rglob("*") if path.is_symlink()):
        link.resolve().replace(link)
    # PROJ looks for its database in ../share/proj from its own folder.
    data = tree / "valuenodes/_host/share/proj"
    data.mkdir(parents=True)
    for file in PROJ_DATA:
        if not file.is_file():
            fail(f"there is no {file}, which coordinates of the ground need (Debian package proj-data)")
        shutil.copyfile(file, data / file.name)


def find_tag(module):
    """The tag of _valuenodes.cpython-311-x86_64-linux-gnu.so: cp311-cp311-linux_x86_64."""
    found = re.fullmatch(r"_valuenodes\.cpython-(\d+)-(\w+)-linux-gnu\.so", module.name)
    if not found:
        fail(f"{module.name} is of no Python that wheels are made for")
    python = f"cp{found.group(1)}"
    return f"{python}-{python}-linux_{found.group(2)}"


def complete_metadata(folder, tag, license_files):
    """Adds what pip reads to the description of the package."""
    version = folder.name.removesuffix(".dist-info").removeprefix("valuenodes-")
    licenses = ["License: Apache-2.0; libraries in valuenodes/_host/bundled have licenses of their own, in licenses"]
    licenses += [f"License-File: {name}" for name in license_files]
    text = (folder / "METADATA").read_text(encoding="utf-8")
    text = text.replace("License-Expression: Apache-2.0", "\n".join(licenses))
    (folder / "METADATA").write_text(text, encoding="utf-8")
    (folder / "WHEEL").write_text(
        f"Wheel-Version: 1.0\nGenerator: make_wheel ({version})\nRoot-Is-Purelib: false\nTag: {tag}\n", encoding="utf-8"
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--cmake", default="cmake", help="the program cmake")
    parser.add_argument("--level", type=int, default=6, choices=range(10), help="how hard to compress, 6 by default")
    parser.add_argument("build", type=pathlib.Path, help="the build folder")
    parser.add_argument("output", type=pathlib.Path, help="the folder of the wheel")
    arguments = parser.parse_args()
    for program in ("patchelf", "readelf", "ldd", "dpkg-query"):
        if shutil.which(program) is None:
            fail(f"{program} is missing; ./install-packages --with-packaging installs it")
    epoch = find_epoch(pathlib.Path(__file__).parent)

    with tempfile.TemporaryDirectory(prefix="value-wheel-") as folder:
        tree = pathlib.Path(folder)
        install(arguments.cmake, arguments.build, tree)
        tag = find_tag(only((tree / "valuenodes").glob("_valuenodes.*.so"), "the module"))
        info = only(tree.glob("*.dist-info"), "the description")
        try:
            bundled = wheel_libraries.bundle(tree / "valuenodes")
            license_files = wheel_licenses.collect(info / "licenses", [*bundled.values(), *PROJ_DATA])
        except (wheel_libraries.Problem, wheel_licenses.Problem) as problem:
            fail(str(problem))
        complete_metadata(info, tag, license_files)
        wheel = arguments.output / f"{info.stem}-{tag}.whl"
        arguments.output.mkdir(parents=True, exist_ok=True)
        wheel_archive.write(wheel, tree, info.name, epoch, arguments.level)
        size = sum(file.stat().st_size for file in tree.rglob("*") if file.is_file())
    print(
        f"{wheel}: {wheel.stat().st_size / 1e6:.0f} MB, {size / 1e6:.0f} MB installed,"
        f" with {len(bundled)} libraries of others"
    )


if __name__ == "__main__":
    main()
