#!/usr/bin/env python3
"""Runs the tests of the command line.

    /usr/bin/python3 Tests/Cli/run_cli_tests.py [-v] [-j N] [FILTER]...

The program under test is the one named by VALUE_PROGRAM, else build/release/bin/value. A filter
is a part of a test's name (test_apply, OversizeTest, one_source); a test runs when any filter is
in its name. A missing program or Python module is a failure, never a skip.
"""

import argparse
import io
import os
import sys
import time
import unittest
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

HERE = Path(__file__).resolve().parent


def missing_parts():
    """What the tests cannot do without and did not find, one line each."""
    problems = []
    for module in ("numpy", "OpenImageIO"):
        try:
            __import__(module)
        except ImportError as error:
            problems.append(f"Python module {module} cannot be imported: {error}")
    if not problems:
        import cli_support

        try:
            cli_support.find_program()
        except AssertionError as error:
            problems.append(str(error))
    return problems


def tests_of(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from tests_of(test)
        else:
            yield test


def run_class(names):
    """Runs the named tests of one class in this process; returns the figures and the reports."""
    suite = unittest.defaultTestLoader.loadTestsFromNames(names)
    stream = io.StringIO()
    result = unittest.TextTestRunner(stream=stream, verbosity=0).run(suite)
    reports = [
        (kind, str(test.id()), getattr(test, "params", None) and test._subDescription(), text)
        for kind, group in (("FAIL", result.failures), ("ERROR", result.errors))
        for test, text in group
    ]
    skipped = [(str(test.id()), reason) for test, reason in result.skipped]
    return names, result.testsRun, reports, skipped


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("-v", "--verbose", action="store_true", help="name every test class")
    parser.add_argument("-j", "--jobs", type=int, default=min(4, os.cpu_count() or 1))
    parser.add_argument("filters", nargs="*", metavar="FILTER")
    options = parser.parse_args()

    sys.path.insert(0, str(HERE))
    problems = missing_parts()
    if problems:
        for problem in problems:
            print(f"cannot test: {problem}", file=sys.stderr)
        return 1

    found = unittest.defaultTestLoader.discover(str(HERE), top_level_dir=str(HERE))
    broken = list(unittest.defaultTestLoader.errors)
    for text in broken:
        print(text)
    classes = {}
    for test in tests_of(found):
        name = test.id()
        if options.filters and not any(part in name for part in options.filters):
            continue
        classes.setdefault(name.rsplit(".", 1)[0], []).append(name)
    if broken or not classes:
        print("a test file cannot be loaded" if broken else "no test has such a name")
        return 1

    started = time.monotonic()
    count, failures, skips = 0, [], []
    with ProcessPoolExecutor(max_workers=max(1, options.jobs)) as pool:
        ordered = sorted(classes.values(), key=len, reverse=True)
        for names, ran, reports, skipped in pool.map(run_class, ordered):
            count += ran
            failures += reports
            skips += skipped
            if options.verbose or reports:
                state = f"{len(reports)} failed" if reports else "fine"
                print(f"{names[0].rsplit('.', 1)[0]}: {ran} tests, {state}")

    for kind, name, detail, text in failures:
        print("=" * 78)
        print(f"{kind}: {name} {detail or ''}")
        print(text)
    for name, reason in skips:
        print(f"SKIPPED: {name}: {reason}")
    failed_tests = sorted({name.split(" ")[0] for _, name, _, _ in failures})
    print("-" * 78)
    print(
        f"{count} tests in {time.monotonic() - started:.1f} s: "
        f"{count - len(failed_tests)} passed, {len(failed_tests)} failed"
        + (f" ({len(failures)} failures in all)" if failures else "")
    )
    for name in failed_tests:
        print(f"  failed: {name}")
    return 1 if failures or skips or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
