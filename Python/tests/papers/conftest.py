# SPDX-License-Identifier: Apache-2.0
"""The tools that write the papers can be imported."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "Tools"))
