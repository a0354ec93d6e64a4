"""What ./bench runs after the build: python3 -m report BUILD [options]."""

import argparse
import difflib
import json
import sys
from pathlib import Path

from report import compare, figures, page
from report.measure import FORMAT, PLANS, VERSION, measure


#: What each file has.
NEEDED = {"version", "date", "side", "threads", "machine", "versions", "rows", "growth", "small", "seconds", "load"}


def fail(text):
    print(f"bench: {text}", file=sys.stderr)
    raise SystemExit(2)


def read_run(path):
    try:
        run = json.loads(Path(path).read_text(encoding="utf-8"))
    except OSError as error:
        fail(f"{path} cannot be read: {error.strerror}")
    except ValueError:
        fail(f"{path} is not a file of ./bench")
    if not isinstance(run, dict) or run.get("format") != "value-bench" or not NEEDED <= run.keys():
        fail(f"{path} is not a file of ./bench, or not all of one")
    return run


def keys_with(text, plan):
    """The names of the rows that have all words of a text in them."""
    words = text.lower().split()
    keys = [key for key in PLANS[plan].keys if all(word in key.lower() for word in words)]
    if words and keys:
        return keys
    parts = {part.lower(): part for key in PLANS[plan].keys for part in key.replace(",", "/").split("/")}
    near = [parts[one] for word in words for one in difflib.get_close_matches(word, parts, 2, 0.6)]
    hint = f"; there is {' and '.join(dict.fromkeys(near))}" if near else ""
    fail(f'no row has "{text}" in its name{hint}; see ./bench --list')


def with_rows(run, keys):
    return {**run, "rows": [row for row in run["rows"] if row["key"] in keys]}


def check(now, before, path):
    try:
        compare.check(now, before)
    except compare.NotComparable as error:
        fail(f"{path} {error}")


class Parser(argparse.ArgumentParser):
    """Says in one line what is wrong."""

    def error(self, message):
        fail(f"{message}; see ./bench --help")


def options_of(arguments):
    parser = Parser(prog="bench")
    parser.add_argument("build", type=Path)
    parser.add_argument("--plan", choices=PLANS, default="full")
    parser.add_argument("--against", metavar="FILE")
    parser.add_argument("--from", dest="given", metavar="FILE")
    parser.add_argument("--out", type=Path, default=Path("out"))
    parser.add_argument("--only", metavar="TEXT")
    parser.add_argument("--check", action="store_true", help="only say what is wrong with the options")
    parser.add_argument("--list", action="store_true", help="only name the rows")
    return parser.parse_args(arguments)


def main(arguments=None):
    options = options_of(arguments)
    if options.list:
        print("\n".join(PLANS[options.plan].keys))
        return
    keys = keys_with(options.only, options.plan) if options.only else None
    before = read_run(options.against) if options.against else None
    run = read_run(options.given) if options.given else None
    if before is not None:
        # Before half an hour is spent on what cannot be compared.
        check(run or {"format": FORMAT, "version": VERSION, "side": PLANS[options.plan].side}, before, options.against)
    if options.check:
        return
    options.out.mkdir(parents=True, exist_ok=True)
    if run is None:
        with (options.out / "bench.log").open("w", encoding="utf-8") as log:
            run = measure(options.plan, options.build.resolve(), log, keys)
        written = options.out / "bench.json"
        if written.exists():
            written.replace(options.out / "bench-before.json")
        written.write_text(json.dumps(run, separators=(",", ":")) + "\n", encoding="utf-8")
    found = None
    if before is not None:
        found = compare.compare(run, before if keys is None else with_rows(before, keys))
        print("\n".join(compare.lines(found, before)))
    (options.out / "bench.html").write_text(page.make(run, found, before), encoding="utf-8")
    if figures.busy_text(run):
        print(figures.busy_text(run))
    print(f"Results are in {options.out}/; look at {options.out}/bench.html.")


if __name__ == "__main__":
    try:
        main()
    except KeyboardInterrupt:
        print("\nbench: interrupted; nothing was written", file=sys.stderr)
        sys.exit(130)
