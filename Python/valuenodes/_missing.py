# SPDX-License-Identifier: Apache-2.0
"""Says in one line why the module _valuenodes cannot be imported."""

import importlib.machinery
import os
import platform
import re


def explain(error):
    """The error itself where there is a module for this Python, else one that says what there is."""
    folder = os.path.dirname(os.path.abspath(__file__))
    names = sorted(name for name in os.listdir(folder) if name.startswith("_valuenodes.") and name.endswith(".so"))
    if any("_valuenodes" + ending in names for ending in importlib.machinery.EXTENSION_SUFFIXES):
        return error
    if not names:
        return ImportError(f"valuenodes is not built: {folder} has no module _valuenodes", name="valuenodes")
    found = re.match(r"_valuenodes\.cpython-(\d)(\d+)-", names[0])
    built_for = f"Python {found.group(1)}.{found.group(2)}" if found else names[0]
    running = f"{platform.python_implementation()} {platform.python_version()}".replace("CPython", "Python")
    return ImportError(f"valuenodes in {folder} is built for {built_for}, and this is {running}", name="valuenodes")
