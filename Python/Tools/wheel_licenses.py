# SPDX-License-Identifier: Apache-2.0
"""The licenses of what a wheel takes along, as Debian's packages tell them."""

import pathlib
import re
import shutil
import subprocess

LICENSE = pathlib.Path(__file__).parents[2] / "LICENSE"
# Headers that become part of our own files.
COMPILED_IN = (
    "/usr/include/boost/version.hpp",
    "/usr/include/nlohmann/json.hpp",
    "/usr/include/pybind11/pybind11.h",
)


class Problem(Exception):
    pass


def _find_packages(files):
    """The packages of files: name, version and source by path."""
    asked = {}
    for file in files:
        real = str(pathlib.Path(file).resolve())
        # Debian's list of files may have them where they were before / and /usr became one.
        asked |= {real: file, real.removeprefix("/usr"): file}
    answer = subprocess.run(["dpkg-query", "-S", *sorted(asked)], capture_output=True, text=True, check=False)
    owners = {}
    for line in answer.stdout.splitlines():
        names, _, path = line.partition(": ")
        if path in asked:
            owners[asked[path]] = names.split(",")[0]
    for file in files:
        if file not in owners:
            raise Problem(f"{file} belongs to no Debian package, so that its license is unknown")
    form = "${binary:Package}\t${Package}\t${source:Package} ${source:Version}\n"
    command = ["dpkg-query", "-W", "-f", form, *sorted(set(owners.values()))]
    facts = {}
    for line in subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines():
        qualified, name, source = line.split("\t")
        facts[qualified] = facts[name] = (name, source)
    return {file: facts[owner] for file, owner in owners.items()}


def collect(folder, files):
    """Writes the licenses of this project and of the packages of files into a folder. Returns their names in it."""
    folder.mkdir(parents=True)
    shutil.copyfile(LICENSE, folder / "LICENSE")
    packages = _find_packages([*files, *COMPILED_IN])
    common = set()
    for name in sorted({name for name, _ in packages.values()}):
        copyright_file = pathlib.Path("/usr/share/doc", name, "copyright")
        if not copyright_file.is_file():
            raise Problem(f"there is no {copyright_file}, which the license of that package stands in")
        text = copyright_file.read_bytes()
        (folder / f"{name}.txt").write_bytes(text)
        common |= set(re.findall(rb"/usr/share/common-licenses/([A-Za-z][A-Za-z0-9.-]*[A-Za-z0-9])", text))
    # Those that Debian's files refer to, which other systems do not have there.
    for name in sorted(name.decode() for name in common):
        full = pathlib.Path("/usr/share/common-licenses", name)
        if full.is_file():
            shutil.copyfile(full, folder / f"common-{name}.txt")
    lines = [
        "What this wheel holds of others: the Debian package of each file, and the source package with its version.",
        "The license of a package is in the file of its name; those in /usr/share/common-licenses that it refers to",
        "are in common-NAME.txt.",
        "",
    ]
    lines += sorted(f"{pathlib.Path(file).name}  {name}  {source}" for file, (name, source) in packages.items())
    (folder / "BUNDLED.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    return sorted(file.name for file in folder.iterdir())
