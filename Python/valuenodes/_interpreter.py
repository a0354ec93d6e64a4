# SPDX-License-Identifier: Apache-2.0
"""Refuses interpreters beside the main one of a process.

What the process has once belongs to the main interpreter, such as node types that are classes of Python, and threads of
the host take its lock. In another one the compiled module would wait for that lock for ever, so this comes before it.
"""

try:
    import _xxsubinterpreters as _interpreters
except ImportError:
    try:
        import _interpreters
    except ImportError:
        # This Python has no others.
        _interpreters = None

if _interpreters is not None and _interpreters.get_current() != _interpreters.get_main():
    raise ImportError("valuenodes works in the main interpreter of a process alone, not in a subinterpreter")
