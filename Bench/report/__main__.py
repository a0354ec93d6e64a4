"""What ./bench runs after the build: python3 -m report BUILD [options]."""

import argparse
import json
import sys
from pathlib import Path

from report import compare, figures, page
from report.measure import FORMAT, PLANS, VERSION, measure


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
    if not isinstance(run, dict) or run.get("format") != "value-bench":
        fail(f"{path} is not a file of ./bench")
    return run


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
    return parser.parse_args(arguments)


def main(arguments=None):
    options = options_of(arguments)
    before = read_run(options.against) if options.against else None
    run = read_run(options.given) if options.given else None
    if before is not None:
        # Before half an hour is spent on what cannot be compared.
        check(run or {"format": FORMAT, "version": VERSION, "side": PLANS[options.plan].side}, before, options.against)
    options.out.mkdir(parents=True, exist_ok=True)
    if run is None:
        keys = None
        if options.only:
            keys = [key for key in PLANS[options.plan].keys if options.only.lower() in key.lower()]
            if not keys:
                fail(f"no row has {options.only} in its name")
        with (options.out / "bench.log").open("w", encoding="utf-8") as log:
            run = measure(options.plan, options.build.resolve(), log, keys)
        (options.out / "bench.json").write_text(json.dumps(run, separators=(",", ":")) + "\n", encoding="utf-8")
    found = None
    if before is not None:
        found = compare.compare(run, before)
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
