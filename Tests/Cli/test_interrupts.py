"""SIGINT and SIGTERM: the program ends soon, leaves whole files, and says how far it came."""

import fcntl
import json
import os
import random
import re
import signal
import subprocess
import time

import numpy as np

from cli_support import (
    SANITIZED, ValueTestCase, document, environment_with, find_program, link, node, output,
    write_file,
)

# 128 and the number of the signal.
INTERRUPTED, TERMINATED = 130, 143


class InterruptTestCase(ValueTestCase):
    def start(self, *arguments):
        return subprocess.Popen(
            [str(find_program()), *map(str, arguments)], cwd=self.dir, env=environment_with(None),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )

    def end(self, process, number):
        """Sends a signal; the exit code, the lines of standard error, and how long it took."""
        process.send_signal(number)
        sent = time.monotonic()
        _, err = process.communicate(timeout=120)
        return process.returncode, err.splitlines(), time.monotonic() - sent

    def end_after_a_line(self, process, number):
        """Sends a signal after the first line of standard output; every line of it, and standard error."""
        out = process.stdout.readline()
        process.send_signal(number)
        # By the same reader: what it took with the first line stands in its buffer, where `communicate` does not look.
        out += process.stdout.read()
        _, err = process.communicate(timeout=120)
        return out.splitlines(), err


class BatchTest(InterruptTestCase):
    COUNT = 24

    def setUp(self):
        super().setUp()
        (self.dir / "in").mkdir()
        generator = np.random.RandomState(5)
        for index in range(self.COUNT):
            data = generator.uniform(0, 1, (160, 160, 1)).astype(np.float32)
            write_file(self.dir / f"in/{index:02}.exr", data)
        self.save("graph.json", document(
            [
                node("r", "ImageReaderNode", path="in/00.exr"),
                node("a", "ImageValueMultiplyNode", constant=0.25),
                node("m", "ImageValueAddNode", constant=0.5),
            ],
            [link("r.image", "a.image", 0), link("a.image", "m.image", 0)],
            [output("m.image", "m.exr"), output("a.image", "a.png")],
        ))
        self.value("run", *self.words("whole"))
        self.whole = {path.name: path.read_bytes() for path in (self.dir / "whole").iterdir()}
        self.assertEqual(len(self.whole), 2 * self.COUNT)

    def words(self, folder, *options):
        return (
            "graph.json", "--each", "r=in/*.exr", "--output-dir", folder, "--jobs", "2", *options
        )

    def measure(self):
        start = time.monotonic()
        self.value("run", *self.words("timed"))
        return time.monotonic() - start

    def test_at_any_moment(self):
        """What is there after the signal is whole, and what is missing is made by a second run."""
        duration = self.measure()
        moments = random.Random(3)
        interrupted = 0
        for attempt in range(10 if SANITIZED else 100):
            folder = self.dir / f"out{attempt}"
            process = self.start("run", *self.words(folder.name, "--skip-existing"))
            time.sleep(moments.uniform(0, 1.1) * duration)
            code, lines, _ = self.end(process, signal.SIGINT)
            self.assertIn(code, (0, INTERRUPTED, -signal.SIGINT), lines)
            for path in folder.iterdir() if folder.exists() else ():
                self.assertEqual(path.read_bytes(), self.whole[path.name], f"{path}, {lines}")
            if code == INTERRUPTED:
                interrupted += 1
            if lines and code == INTERRUPTED:
                told = re.fullmatch(
                    r"value: (\d+) of 24 done, (\d+) left out; --skip-existing goes on from here",
                    lines[-1],
                )
                self.assertTrue(told, lines)
                self.assertEqual(int(told[1]) + int(told[2]), self.COUNT)
                self.assertEqual(len(lines), 1, lines)
            self.assert_quiet(self.value("run", *self.words(folder.name, "--skip-existing")))
            made = {path.name: path.read_bytes() for path in folder.iterdir()}
            self.assertEqual(made, self.whole)
        self.assertGreater(interrupted, 3)

    def test_sigterm_has_a_code_of_its_own(self):
        process = self.start("run", *self.words("out", "--json"))
        out, err = self.end_after_a_line(process, signal.SIGTERM)
        self.assertEqual(process.returncode, TERMINATED, err)
        lines = [json.loads(line) for line in out]
        self.assertEqual(lines[0]["state"], "done")
        total = lines[-1]
        self.assertEqual(total["done"], len(lines) - 1)
        self.assertEqual(total["done"] + total["left_out"], self.COUNT)
        told = f"{total['done']} of 24 done, {total['left_out']} left out"
        self.assertIn(told, err.splitlines()[-1])
        self.assertIn(told, total["error"])

    def test_a_reader_that_stalls_does_not_keep_it_alive(self):
        os.mkfifo(self.dir / "pipe")
        read_end = os.open(self.dir / "pipe", os.O_RDONLY | os.O_NONBLOCK)
        write_end = os.open(self.dir / "pipe", os.O_WRONLY)
        fcntl.fcntl(write_end, fcntl.F_SETPIPE_SZ, 4096)
        process = subprocess.Popen(
            [str(find_program()), "run", *self.words("out", "--json")], cwd=self.dir,
            env=environment_with(None), stdin=subprocess.DEVNULL, stdout=write_end,
            stderr=subprocess.PIPE, text=True,
        )
        os.close(write_end)
        deadline = time.monotonic() + 60
        # 24 lines are more than the pipe takes, so the program comes to a halt.
        count = -1
        while time.monotonic() < deadline:
            made = len(list((self.dir / "out").glob("*"))) if (self.dir / "out").exists() else 0
            if made and made == count:
                break
            count = made
            time.sleep(1.0)
        process.send_signal(signal.SIGINT)
        _, err = process.communicate(timeout=60)
        os.close(read_end)
        self.assertEqual(process.returncode, INTERRUPTED, err)
        self.assertLessEqual(len(err.splitlines()), 1, err)


class LongWorkTest(InterruptTestCase):
    def test_what_was_written_is_counted(self):
        """The second file takes so long to encode that the program is ended meanwhile."""
        data = np.random.RandomState(1).uniform(0, 1, (7000, 7000, 1)).astype(np.float32)
        write_file(self.dir / "large.exr", data)
        write_file(self.dir / "small.exr", data[:4, :4])
        self.save("graph.json", document(
            [node("s", "ImageReaderNode", path="small.exr"),
             node("l", "ImageReaderNode", path="large.exr")],
            [], [output("s.image", "s.png"), output("l.image", "l.png")],
        ))
        process = self.start("run", "graph.json", "--json", "--in-process")
        deadline = time.monotonic() + 120
        while not (self.dir / "s.png").exists() and time.monotonic() < deadline:
            time.sleep(0.02)
        process.send_signal(signal.SIGINT)
        out, err = process.communicate(timeout=120)
        self.assertEqual(process.returncode, INTERRUPTED, err)
        self.assertEqual(err.splitlines()[-1], "value: 1 of 2 done, 1 left out")
        self.assertIn("1 of 2 done", json.loads(out)["error"])
        self.assert_files("graph.json", "large.exr", "small.exr", "s.png")

    def test_hanging_up_has_one_last_line(self):
        self.make_many(40)
        process = self.start(
            "apply", "Value Add", "--each", "in/*.exr", "-o", "x.png", "--output-dir", "out",
            "--jobs", "1", "--json",
        )
        _, err = self.end_after_a_line(process, signal.SIGHUP)
        self.assertEqual(process.returncode, 128 + signal.SIGHUP, err)
        self.assertEqual(len(err.splitlines()), 1, err)
        self.assertIn("left out", err)

    def make_many(self, count):
        (self.dir / "in").mkdir()
        data = np.random.RandomState(2).uniform(0, 1, (300, 300, 1)).astype(np.float32)
        write_file(self.dir / "in/0.exr", data)
        for index in range(1, count):
            (self.dir / f"in/{index}.exr").write_bytes((self.dir / "in/0.exr").read_bytes())

    def test_no_folder_stays_behind_a_reader_that_is_slow(self):
        data = np.random.RandomState(1).uniform(0, 1, (500, 500, 1)).astype(np.float32)
        write_file(self.dir / "in.exr", data)
        (self.dir / "tmp").mkdir()
        process = subprocess.Popen(
            [str(find_program()), "apply", "Value Add", "-i", "in.exr", "-o", "-", "--format", "exr"],
            cwd=self.dir, env=environment_with({"TMPDIR": str(self.dir / "tmp")}),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        )
        process.stdout.read(1)
        process.send_signal(signal.SIGINT)
        process.stdout.close()
        process.wait(timeout=60)
        process.stderr.close()
        self.assert_files(folder=self.dir / "tmp")

    def test_a_node_that_takes_long_is_stopped(self):
        # A large soft mask and a large radius take many seconds on one thread.
        data = np.random.RandomState(1).uniform(0, 1, (3500, 3500, 1)).astype(np.float32)
        write_file(self.dir / "in.exr", data)
        process = self.start(
            "apply", "Relief", "-i", "in.exr", "--set", "style=inner_bevel", "--set", "radius=250", "--threads", "1",
            "-o", "out.exr",
        )
        time.sleep(1.0)
        code, lines, seconds = self.end(process, signal.SIGINT)
        self.assertEqual(code, INTERRUPTED, lines)
        self.assertEqual(lines[-1:], ["value: 0 of 1 done, 1 left out"])
        self.assert_files("in.exr")
        # The bound that people notice is a second; a busy machine gets more.
        self.assertLess(seconds, 10)

    def test_a_command_without_results_just_ends(self):
        process = subprocess.Popen(
            [str(find_program()), "run", "-"], cwd=self.dir, env=environment_with(None),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(timeout=60), INTERRUPTED)
        for stream in (process.stdin, process.stdout, process.stderr):
            stream.close()


class StatsTest(InterruptTestCase):
    def test_what_was_measured_is_counted(self):
        count = 3000
        write_file(self.dir / "a.png", np.zeros((8, 8, 1), dtype=np.float32))
        process = self.start("stats", "--json", *["a.png"] * count)
        lines, err = self.end_after_a_line(process, signal.SIGINT)
        self.assertEqual(process.returncode, INTERRUPTED, err)
        answers = [json.loads(line) for line in lines]
        total = answers[-1]
        self.assertEqual(total["measured"], len(answers) - 1)
        self.assertEqual(total["files"], count)
        self.assertEqual(total["left_out"], count - total["measured"])
        self.assertGreater(total["left_out"], 0)
        self.assertIn(f"{total['measured']} of {count} measured, {total['left_out']} left out", total["error"])
