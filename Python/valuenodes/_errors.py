# SPDX-License-Identifier: Apache-2.0
"""The exceptions and warnings of the package."""

import errno
import os


class ValueNodesError(Exception):
    """The base of all errors of this package.

    Attributes
    ----------
    problems : tuple of str
        All that is wrong, one line each. The message is the first of them, with the number of the others.
    """

    def __init__(self, message="", problems=None):
        super().__init__(message)
        self.problems = (str(message).split("\n", 1)[0],) if problems is None else tuple(problems)


class NodeError(ValueNodesError):
    """A node could not be evaluated; the message says why.

    Of a node that is a class of Python, the lines below the first are the traceback, and `__cause__` is the exception
    that came out of it in this call.
    """


class DocumentError(ValueNodesError):
    """A graph document is invalid; `problems` has all that is wrong with it."""


class FileError(ValueNodesError, OSError):
    """A file could not be read or written; the message names it and the cause.

    Attributes
    ----------
    errno : int or None
        The number of the system's error; None where the system had no part in it.
    filename : str or None
        The file; None where no path leads to it.
    """

    def __init__(self, message="", problems=None, errno=None, filename=None):
        super().__init__(message, problems)
        self.errno = errno
        self.strerror = None if errno is None else os.strerror(errno)
        self.filename = filename

    def __str__(self):
        return self.args[0]

    def __reduce__(self):
        return type(self), (self.args[0], self.problems, self.errno, self.filename), self.__dict__


class MissingFileError(FileError, FileNotFoundError):
    """A file, or the folder that it is to be written into, is not there."""


class FilePermissionError(FileError, PermissionError):
    """A file may not be read or written."""


_CLASSES = {
    errno.ENOENT: MissingFileError,
    errno.EACCES: FilePermissionError,
    errno.EPERM: FilePermissionError,
}


def _find_number(message, path, is_written):
    """The number of the system's error behind a message; None where there is none."""
    for number in errno.errorcode:
        if message.endswith(": " + os.strerror(number)):
            return number
    # Some are said in words of the host's own: they show themselves again.
    try:
        if is_written:
            os.stat(os.path.dirname(path) or b".")
            return errno.EISDIR if os.path.isdir(path) else None
        os.close(os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_NOCTTY))
        return errno.EISDIR if os.path.isdir(path) else None
    except OSError as error:
        return error.errno
    except ValueError:
        # No path holds a NUL character.
        return None


def make_file_error(message, problems, path, is_written):
    """A FileError about a file, whose path is bytes; empty where none leads to it."""
    if not path:
        return FileError(message, problems)
    # The number of further problems is at the end of the message.
    told = next((one for one in problems or () if message.startswith(one)), message)
    number = _find_number(told, path, is_written)
    return _CLASSES.get(number, FileError)(message, problems, number, os.fsdecode(path))


class ValueNodesWarning(UserWarning):
    """A remark of a node or a file that does not stand in the way."""


for _class in (ValueNodesError, NodeError, DocumentError, ValueNodesWarning, FileError, *_CLASSES.values()):
    _class.__module__ = "valuenodes"
del _class
