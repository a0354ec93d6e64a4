# SPDX-License-Identifier: Apache-2.0
"""What ./bench writes: a tiny run is whole, a slower version is found, and noise is not called a difference."""

import copy
import dataclasses
import html.parser
import json
import os
import random
import subprocess
import sys
from pathlib import Path

import pytest

BENCH = Path(__file__).resolve().parents[1]
BUILD = os.environ["VALUE_BENCH_BUILD"]
sys.path.insert(0, str(BENCH))

from report import __main__ as main_module  # noqa: E402
from report import compare, figures, measure, page, rows_table, spread, svg  # noqa: E402


def run_bench(*words):
    command = [sys.executable, "-m", "report", BUILD, *map(str, words)]
    environment = {**os.environ, "PYTHONPATH": str(BENCH)}
    return subprocess.run(command, env=environment, capture_output=True, text=True, check=False)


@pytest.fixture(scope="module")
def out(tmp_path_factory):
    """A tiny run, measured once."""
    folder = tmp_path_factory.mktemp("bench")
    done = run_bench("--plan", "tiny", "--out", folder)
    assert done.returncode == 0, done.stderr
    return folder


@pytest.fixture
def run(out):
    return json.loads((out / "bench.json").read_text())


class Page(html.parser.HTMLParser):
    """Elements that are open, and what was met."""

    VOID = {"meta", "input", "br"}

    def __init__(self):
        super().__init__()
        self.open, self.met, self.ids, self.links, self.elsewhere = [], [], set(), [], []

    def handle_starttag(self, tag, attributes):
        self.met.append(tag)
        known = dict(attributes)
        if "id" in known:
            assert known["id"] not in self.ids
            self.ids.add(known["id"])
        if known.get("href", "").startswith("#"):
            self.links.append(known["href"][1:])
        self.elsewhere += [value for key, value in attributes if key in ("src", "href") and not value.startswith("#")]
        if tag not in self.VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.met.append(tag)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag


def read_page(folder):
    text = (folder / "bench.html").read_text(encoding="utf-8")
    page = Page()
    page.feed(text)
    return text, page


# ---- A run ----


def test_every_row_has_times_of_ours_and_of_both_copies_with_each_number_of_threads(run):
    assert run["threads"] == [1, 2]
    assert len(run["rows"]) == 7
    for row in run["rows"]:
        assert "valuenodes" not in row["problems"]
        for threads in ("1", "2"):
            times = row["threads"][threads]["times"]
            assert {"copy", "stream", "valuenodes"} <= times.keys()
            for values in times.values():
                assert len(values) == 5
                assert all(0 < value < 60 for value in values)


def test_results_of_ours_are_close_to_the_definitions(run):
    for row in run["rows"]:
        found = row["differences"]["valuenodes"]
        assert found.get("same", True)
        assert found.get("largest", 0) < 1e-6
        assert found.get("off", 0) == 0


def test_peers_are_measured_or_say_why_not(run):
    row = run["rows"][0]
    assert row["key"] == "Arithmetic/add"
    for peer in ("numpy", "opencv", "numexpr", "libvips", "gegl"):
        assert (peer in row["threads"]["1"]["times"]) != (peer in row["problems"])
    assert row["threads"]["1"]["times"]["numpy"]


def test_the_run_says_what_it_was_measured_on(run):
    assert run["machine"]["processors"] >= 1
    assert run["versions"]["valuenodes"][0].isdigit()
    assert run["versions"]["NumPy"][0].isdigit()
    assert run["side"] == 64
    assert run["load"]["highest"] >= run["load"]["lowest"] >= 0


def test_growth_has_all_places_of_the_plan_and_what_is_small_is_there(run):
    places = {plot: {one["at"] for one in run["growth"] if one["plot"] == plot} for plot in ("size", "nodes", "radius")}
    assert places == {"size": {32, 64}, "nodes": {1, 10}, "radius": {1, 4}}
    assert not [one for one in run["growth"] if "problem" in one and "opencv" not in one.get("series", "")]
    assert {"ten nodes", "one node, 16 x 16", "1001 nodes, 16 x 16"} <= run["small"]["times"].keys()
    assert len(run["small"]["program"]["value apply"]) == 3


def test_the_page_is_whole_and_needs_nothing_else(out, run):
    text, page = read_page(out)
    assert page.open == []
    assert page.elsewhere == []
    assert "url(" not in text and "@import" not in text and "<script" not in text
    assert set(page.links) <= page.ids
    for row in run["rows"]:
        assert row["remark"].partition("`")[0] in text
    # A dot for each contender of each row, for both numbers of threads.
    dots = sum(len(figures.contenders(row, threads)) for row in run["rows"] for threads in run["threads"])
    assert page.met.count("circle") > dots
    assert "prefers-color-scheme: dark" in text


def test_a_process_that_ends_early_costs_only_the_row_that_it_measured(monkeypatch):
    keys = ["Arithmetic/add", "Blur/blur, sigma 2", "Fill and paste/fill"]

    def row(key):
        return {"key": key, "times": {"valuenodes": [1.0]}, "processor": {"valuenodes": [1.0]}, "problems": {}}

    processes = [
        [{"begins": keys[0]}, row(keys[0]), {"begins": keys[1]}, {"ended": -11}],
        [{"begins": keys[2]}, row(keys[2])],
    ]
    asked = []

    def answers(request, build, log):
        asked.append(request["keys"])
        return iter(processes.pop(0))

    monkeypatch.setattr(measure, "answers_of", answers)
    plan = dataclasses.replace(measure.PLANS["tiny"], keys=keys, threads=[1])
    rows = measure.measure_rows(plan, BUILD, None, measure.Progress(3))
    assert asked == [keys, keys[2:]]
    assert [sorted(row["threads"]) for row in rows] == [["1"], [], ["1"]]
    assert rows[1]["problems"] == {"the row": "the process that measured it ended with -11"}
    # Such a row is shown as what it is.
    assert "ended with -11" in rows_table.row_line(rows[1], 1, 0.5, 20)


# ---- Two runs ----


def slower(run, key, factor):
    changed = copy.deepcopy(run)
    for row in changed["rows"]:
        if row["key"] == key:
            for one in row["threads"].values():
                for clock in ("times", "processor"):
                    one[clock]["valuenodes"] = [time * factor for time in one[clock]["valuenodes"]]
    return changed


def steady(run):
    """The run as it would be without any noise."""
    changed = copy.deepcopy(run)
    for row in changed["rows"]:
        for one in row["threads"].values():
            one["load"] = 1.0
            for clock in ("times", "processor"):
                one[clock] = {name: [spread.median(times)] * 9 for name, times in one[clock].items()}
    return changed


def noisy(run, seed, deviation=0.05, machine=1.0):
    """The run as it would be measured again on a machine that is so many times as slow."""
    generator = random.Random(seed)
    changed = copy.deepcopy(run)
    for row in changed["rows"]:
        for one in row["threads"].values():
            for clock in ("times", "processor"):
                for name, times in one[clock].items():
                    one[clock][name] = [time * machine * generator.lognormvariate(0, deviation) for time in times]
    return changed


def verdicts(now, before):
    return [(one["key"], one["threads"]) for one in compare.compare(now, before) if one["verdict"] != "same"]


def test_a_planted_regression_is_told_by_its_row_and_no_other(run):
    before = steady(run)
    found = compare.compare(slower(before, "Blur/blur, sigma 2", 1.2), before)
    told = [one for one in found if one["verdict"] != "same"]
    assert [(one["key"], one["threads"], one["verdict"]) for one in told] == [
        ("Blur/blur, sigma 2", 1, "slower"), ("Blur/blur, sigma 2", 2, "slower")]
    assert all(abs(one["ratio"] - 1.2) < 1e-9 for one in told)
    assert "1.20 times as long: Blur/blur, sigma 2, 1 thread (" in "\n".join(compare.lines(found, before))


def test_a_planted_improvement_is_told_too(run):
    before = steady(run)
    found = compare.compare(slower(before, "Fill and paste/fill", 0.5), before)
    assert {one["verdict"] for one in found if one["key"] == "Fill and paste/fill"} == {"faster"}


def test_a_regression_is_found_through_noise(run):
    before = steady(run)
    for seed in range(20):
        told = verdicts(noisy(slower(before, "Arithmetic/add", 1.5), seed), noisy(before, seed + 1000))
        assert set(told) == {("Arithmetic/add", 1), ("Arithmetic/add", 2)}


def test_noise_alone_is_no_difference(run):
    before = steady(run)
    for seed in range(50):
        assert verdicts(noisy(before, seed), noisy(before, seed + 1000)) == []


def test_a_machine_that_is_slower_as_a_whole_is_no_difference(run):
    before = steady(run)
    for seed in range(20):
        assert verdicts(noisy(before, seed, machine=1.4), noisy(before, seed + 1000)) == []


def test_a_call_that_waits_for_a_processor_on_a_busy_machine_is_no_difference(run):
    before = steady(run)
    waits = slower(before, "Arithmetic/add", 3)
    for row, other in zip(waits["rows"], before["rows"], strict=True):
        for threads, one in row["threads"].items():
            one["processor"] = other["threads"][threads]["processor"]
    # On a machine that has nothing else to do it is one: work that was shared by threads is not any more.
    assert {key for key, _ in verdicts(waits, before)} == {"Arithmetic/add"}
    for row in waits["rows"]:
        for one in row["threads"].values():
            one["load"] = waits["machine"]["processors"] + 2
    assert verdicts(waits, before) == []
    # One that needs more of the processors is told even then.
    more = slower(before, "Arithmetic/add", 3)
    for row in more["rows"]:
        for one in row["threads"].values():
            one["load"] = more["machine"]["processors"] + 2
    assert {key for key, _ in verdicts(more, before)} == {"Arithmetic/add"}


def test_two_percent_are_never_a_difference(run):
    before = steady(run)
    assert verdicts(slower(before, "Arithmetic/add", 1.02), before) == []


def test_rows_that_one_run_has_alone_are_named(run):
    before = copy.deepcopy(run)
    gone = before["rows"].pop()["key"]
    assert [one for one in compare.compare(run, before) if one["verdict"] == "new"] == [{"key": gone, "verdict": "new"}]
    assert [one for one in compare.compare(before, run) if one["verdict"] == "gone"] == [
        {"key": gone, "verdict": "gone"}]


# ---- The command ----


def test_against_writes_the_comparison_into_the_page_and_on_the_terminal(run, tmp_path):
    before = steady(run)
    Path(tmp_path, "before.json").write_text(json.dumps(before))
    Path(tmp_path, "now.json").write_text(json.dumps(slower(before, "Arithmetic/add", 2)))
    done = run_bench("--from", tmp_path / "now.json", "--against", tmp_path / "before.json", "--out", tmp_path)
    assert done.returncode == 0, done.stderr
    assert "slower  2.00 times as long: Arithmetic/add, 2 threads" in done.stdout
    text, page = read_page(tmp_path)
    assert page.open == []
    assert "2 measurements differ by more than the spread" in text


@pytest.mark.parametrize(
    ("words", "text"),
    [
        (["--plan", "huge"], "invalid choice"),
        (["--against", "nowhere.json"], "nowhere.json cannot be read"),
        (["--from", str(Path(__file__))], "is not a file of ./bench"),
        (["--only", "no such row"], 'no row has "no such row" in its name'),
        (["--only", "Gradeint"], "there is gradient; see ./bench --list"),
        (["--sideways"], "unrecognized arguments"),
    ],
)
def test_what_is_wrong_is_said_in_one_line(words, text, tmp_path):
    done = run_bench(*words, "--out", tmp_path)
    assert done.returncode == 2
    assert done.stderr.startswith("bench: ") and done.stderr.count("\n") == 1
    assert text in done.stderr


def test_a_file_that_was_cut_off_is_said_to_be_none(run, tmp_path):
    Path(tmp_path, "cut.json").write_text(json.dumps({key: run[key] for key in ("format", "version", "side")}))
    done = run_bench("--from", tmp_path / "cut.json", "--out", tmp_path)
    assert done.returncode == 2
    assert "cut.json is not a file of ./bench, or not all of one" in done.stderr and done.stderr.count("\n") == 1


def test_only_takes_words_of_a_name_in_any_order():
    both = main_module.keys_with("LEVELS relief", "full")
    assert both and all("relief" in key.lower() and "levels" in key.lower() for key in both)
    assert both == main_module.keys_with("relief levels", "full")


def test_check_measures_and_writes_nothing(tmp_path):
    done = run_bench("--only", "add", "--check", "--out", tmp_path / "out")
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
    assert not Path(tmp_path, "out").exists()


def test_the_run_before_is_kept(run, tmp_path, monkeypatch):
    monkeypatch.setattr(main_module, "measure", lambda *_: {**run, "date": "later"})
    Path(tmp_path, "bench.json").write_text(json.dumps(run))
    main_module.main([BUILD, "--plan", "tiny", "--out", str(tmp_path)])
    assert json.loads(Path(tmp_path, "bench-before.json").read_text()) == run
    assert json.loads(Path(tmp_path, "bench.json").read_text())["date"] == "later"


def test_the_rows_are_listed(tmp_path):
    done = run_bench("--list", "--out", tmp_path / "out")
    assert done.returncode == 0
    assert "Arithmetic/add" in done.stdout.splitlines()


def test_rows_that_were_not_asked_for_are_not_missed(run):
    before = main_module.with_rows(run, ["Arithmetic/add"])
    assert [row["key"] for row in before["rows"]] == ["Arithmetic/add"] and len(run["rows"]) > 1


def test_times_that_differ_by_less_than_is_shown_are_even(run):
    row = copy.deepcopy(next(row for row in run["rows"] if figures.best_peer(row, 1)))
    times = row["threads"]["1"]["times"]
    for name in figures.contenders(row, 1):
        times[name] = [1.0 if name == figures.OURS else 1.004] * 5
    assert figures.against_peer(row, 1)[2] == "even"


def test_the_ends_of_an_axis_are_short():
    assert [svg.tick_text(tick) for tick in (0.1, 1, 100, 1000, 10000)] == ["0.1×", "1×", "100×", "1k×", "10k×"]


def test_runs_on_images_of_other_sizes_are_not_compared(run, tmp_path):
    Path(tmp_path, "now.json").write_text(json.dumps(run))
    Path(tmp_path, "before.json").write_text(json.dumps({**run, "side": 128}))
    done = run_bench("--from", tmp_path / "now.json", "--against", tmp_path / "before.json", "--out", tmp_path)
    assert done.returncode == 2
    assert done.stderr.count("\n") == 1
    assert "was measured on 128 x 128, this run on 64 x 64" in done.stderr


def test_what_cannot_be_compared_is_said_before_anything_is_measured(run, tmp_path):
    Path(tmp_path, "before.json").write_text(json.dumps({**run, "side": 128}))
    done = run_bench("--plan", "tiny", "--against", tmp_path / "before.json", "--out", tmp_path / "out")
    assert done.returncode == 2
    assert done.stderr.startswith("bench: ") and done.stderr.count("\n") == 1
    assert not Path(tmp_path, "out").exists()


def test_a_run_on_a_busy_machine_says_so(run):
    machine = {**run["machine"], "processors": 2}
    quiet = {**run, "load": {"before": 0.1, "lowest": 0.1, "highest": 2.1}, "machine": machine}
    assert figures.busy_text(quiet) == ""
    busy = {**quiet, "load": {"before": 0.1, "lowest": 0.1, "highest": 9.5}}
    assert figures.busy_text(busy).startswith("The machine had other work: its load was 0.1 to 9.5 on 2 processors.")
    assert "The machine had other work" in page.make(busy)
    assert "The machine had other work" not in page.make(quiet)


def test_images_that_stay_in_caches_are_said_to(run):
    # Three images of 1024 x 1024 floats are 12 MiB.
    quick = {**run, "side": 1024, "machine": {**run["machine"], "caches": {"L2": "1024K", "L3": "12288K"}}}
    assert "fit into the largest cache" in figures.cached_text(quick)
    assert figures.cached_text({**quick, "side": 1025}) == ""


# ---- Numbers ----


def test_the_spread_is_that_of_the_middle_half():
    # Quarters of 1 .. 9 are 3 and 7.
    assert spread.describe([9, 1, 8, 2, 7, 3, 6, 4, 5]) == [1, 3, 5, 7, 9]
    assert spread.middle_half(range(1, 10)) == 4
    assert spread.noise(range(1, 10)) == 0.4


def test_medians_differ_where_they_are_further_apart_than_both_middle_halves():
    # Middle halves of 2 and 2: medians 4.1 apart differ, those 3.9 apart do not.
    one = [9, 9.5, 10, 11.5, 12]
    assert spread.middle_half(one) == 2
    assert spread.differ(one, [value + 4.1 for value in one])
    assert not spread.differ(one, [value + 3.9 for value in one])


def test_a_row_is_held_against_the_faster_copy_of_as_many_bytes():
    # Three images where a copy moves two: 1.5 copies of 2 ms are 3 ms; 6 ms are two ceilings.
    times = {"copy": [0.003] * 3, "stream": [0.002] * 3, "valuenodes": [0.006] * 3, "numpy": [0.012] * 3}
    row = {"moved": 3, "threads": {"1": {"times": times}}}
    assert figures.ceiling(row, 1) == pytest.approx(0.003)
    assert figures.multiple(row, 1, "valuenodes") == pytest.approx(2)
    assert figures.against_peer(row, 1) == ("numpy", pytest.approx(2), "faster")
