# SPDX-License-Identifier: Apache-2.0
"""What graphs answer."""

from collections import namedtuple


class Connection(namedtuple("Connection", "source target index")):
    """A connection between two plugs, each "id.plug"; `index` is its place at an input that takes many."""

    __slots__ = ()


class Output(namedtuple("Output", "source path type samples opacity metadata layer")):
    """A file that the image of a plug is written to. What is empty is left to the format."""

    __slots__ = ()


class WrittenFile(namedtuple("WrittenFile", "path size type")):
    """A file that a run has written: its path, its size (columns, rows), and what its samples are stored as."""

    __slots__ = ()


class Findings(namedtuple("Findings", "problems notes")):
    """What checking a graph has found, one line each.

    `problems` stand in the way of a run; `notes` do not.
    """

    __slots__ = ()

    @property
    def is_valid(self):
        """Whether there are no problems."""
        return not self.problems


for _class in (Connection, Output, WrittenFile, Findings):
    _class.__module__ = "valuenodes"
del _class
