# SPDX-License-Identifier: Apache-2.0
"""The libraries of others that a wheel takes along."""

import concurrent.futures
import hashlib
import itertools
import os
import pathlib
import re
import shutil
import subprocess

# What every system that a wheel is for has. Two copies of these in one process would not work.
SYSTEM = frozenset(
    "ld-linux-x86-64.so.2 libc.so.6 libdl.so.2 libgcc_s.so.1 libm.so.6 libmvec.so.1 libpthread.so.0 libresolv.so.2"
    " librt.so.1 libstdc++.so.6 libutil.so.1".split()
)


class Problem(Exception):
    pass


def _run(*command, **options):
    answer = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    if answer.returncode != 0:
        raise Problem(f"{command[0]} {command[-1]} ended with {answer.returncode}: {answer.stderr.strip()}")
    return answer.stdout


def read_needed(file):
    """The names of the libraries that a file links."""
    return re.findall(r"\(NEEDED\).*\[(.*)\]", _run("readelf", "-dW", file))


def _resolve(files, host):
    """Where the linker finds what files link, directly or not: paths by the names that are asked for."""
    environment = {**os.environ, "LD_LIBRARY_PATH": str(host), "LC_ALL": "C"}
    found = {}
    for file in files:
        for line in _run("ldd", file, env=environment).splitlines():
            missing = re.match(r"\s*(\S+) => not found", line)
            if missing:
                raise Problem(f"{file.name} needs {missing.group(1)}, which this system does not have")
            place = re.match(r"\s*(\S+) => (/.*) \(0x", line)
            if place and place.group(1) not in SYSTEM:
                found[place.group(1)] = pathlib.Path(place.group(2))
    return {name: path for name, path in sorted(found.items()) if host not in path.parents}


def _rename(name, path):
    """A name that no other copy of the library has. In one process the linker tells libraries apart by their names
    alone, so that other packages would get this copy, or this one theirs."""
    mark = hashlib.sha256(path.read_bytes()).hexdigest()[:8]
    start, ending = name.split(".so", 1)
    return f"{start}-{mark}.so{ending}"


def _patch(file, names, search_path, soname=None):
    """One run for each kind of change: patchelf mixes up names that it changes together."""
    needed = [["--replace-needed", name, names[name]] for name in read_needed(file) if name in names]
    if needed:
        _run("patchelf", *itertools.chain(*needed), file)
    if soname is not None:
        _run("patchelf", "--set-soname", soname, file)
    _run("patchelf", "--set-rpath", search_path, file)


def _check(files):
    """Whatever a file links is beside it or on every system."""
    present = {file.name for file in files} | SYSTEM
    for file in files:
        for needed in read_needed(file):
            if needed not in present:
                raise Problem(f"{file.name} needs {needed}, which would not be found")


def bundle(package):
    """Copies what a package links into _host/bundled, and lets everything find it there. Returns the files that were
    copied, by their names in the wheel."""
    host = package / "_host"
    own = {file: "$ORIGIN/_host:$ORIGIN/_host/bundled" for file in sorted(package.glob("*.so"))}
    own |= {file: "$ORIGIN:$ORIGIN/bundled" for file in sorted(host.glob("*")) if file.is_file()}
    own |= {file: "$ORIGIN/..:$ORIGIN/../bundled" for file in sorted((host / "value").glob("*.so"))}
    found = _resolve(own, host)
    (host / "bundled").mkdir()
    names = {name: _rename(name, path) for name, path in found.items()}
    copies = {name: host / "bundled" / names[name] for name in found}
    for name, path in found.items():
        shutil.copyfile(path, copies[name])
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        work = [pool.submit(_patch, file, names, search_path) for file, search_path in own.items()]
        work += [pool.submit(_patch, file, names, "$ORIGIN", names[name]) for name, file in copies.items()]
        for patched in work:
            patched.result()
    _check([*own, *copies.values()])
    return {names[name]: path for name, path in found.items()}
