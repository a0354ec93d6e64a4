# SPDX-License-Identifier: Apache-2.0
"""The exceptions and warnings of the package."""


class ValueNodesError(Exception):
    """The base of all errors of this package."""


class NodeError(ValueNodesError):
    """A node could not be evaluated; the message says why."""


class DocumentError(ValueNodesError):
    """A graph document is invalid.

    Attributes
    ----------
    problems : tuple of str
        All that is wrong with it, one line each.
    """

    def __init__(self, message, problems=None):
        super().__init__(message)
        self.problems = tuple(problems) if problems is not None else (message,)

    def __reduce__(self):
        return type(self), (self.args[0], self.problems)


class FileError(ValueNodesError, OSError):
    """A file could not be read or written; the message names it and the cause."""


class ValueNodesWarning(UserWarning):
    """A remark of a node or a file that does not stand in the way."""


for _class in (ValueNodesError, NodeError, DocumentError, FileError, ValueNodesWarning):
    _class.__module__ = "valuenodes"
del _class
