"""--each: files put together, names of results, what is left out, and what is told of each file."""

import json
import os
import subprocess

import numpy as np

from cli_support import (
    DONE, FILE_ERROR, INVALID, NODE_ERROR, USAGE, VALUE, F, ValueTestCase, arithmetic,
    document, environment_with, find_program, link, node, output, read_file, sample_picture, write_file,
)


class BatchTestCase(ValueTestCase):
    """Heights in two folders, masks beside them, and a document that multiplies one with the other."""

    def setUp(self):
        super().setUp()
        self.heights, self.masks = {}, {}
        for index, name in enumerate(("a", "b", "c")):
            self.heights[name] = self.make(f"heights/{name}.exr", 10 + index)
            self.masks[name] = self.make(f"masks/{name}.exr", 20 + index)
        self.save("graph.json", document(
            [
                node("height", "ImageReaderNode", path="heights/a.exr"),
                node("mask", "ImageReaderNode", path="masks/a.exr"),
                node("masked", "ImageValueMultiplyNode"),
            ],
            [link("height.image", "masked.image", 0), link("mask.image", "masked.image", 1)],
            [output("masked.image", "masked.exr")],
        ))
        self.results = self.dir / "results"

    def make(self, name, seed):
        (self.dir / name).parent.mkdir(parents=True, exist_ok=True)
        picture = sample_picture(VALUE, seed=seed)
        self.picture(name, picture)
        return picture

    def run_each(self, *options, each=("height=heights/*.exr", "mask=masks/*.exr"), code=DONE):
        given = [word for pattern in each for word in ("--each", pattern)]
        return self.value(
            "run", "graph.json", *given, "--output-dir", "results", *options, code=code
        )

    def assert_product(self, name, height, mask):
        self.assert_picture(
            self.results / name,
            arithmetic("Multiply", [self.heights[height], self.masks[mask]]),
        )

    def names(self):
        return sorted(
            str(path.relative_to(self.results)) for path in self.results.rglob("*") if path.is_file()
        )


class SeveralReadersTest(BatchTestCase):
    def test_files_of_two_readers_go_together_in_order(self):
        self.assert_quiet(self.run_each())
        for name in "abc":
            self.assert_product(f"{name}_masked.exr", name, name)
        self.assertEqual(self.names(), ["a_masked.exr", "b_masked.exr", "c_masked.exr"])

    def test_in_order_names_do_not_matter(self):
        for name, other in (("a", "x"), ("b", "y"), ("c", "z")):
            (self.dir / f"masks/{name}.exr").rename(self.dir / f"masks/{other}.exr")
        self.assert_quiet(self.run_each())
        self.assert_product("b_masked.exr", "b", "b")

    def test_by_stem_equal_names_go_together(self):
        (self.dir / "masks/b.exr").rename(self.dir / "masks/later.exr")
        (self.dir / "heights/c.exr").unlink()
        result = self.run_each("--pair", "stem")
        # b and c have no partner, nor has the mask of another name.
        self.assertEqual(self.names(), ["a_masked.exr"])
        self.assert_product("a_masked.exr", "a", "a")
        for lonely in ("heights/b.exr", "masks/c.exr", "masks/later.exr"):
            self.assert_names(result, "note", lonely, "left out")
        self.assertEqual(len(result.err_lines), 3, str(result))

    def test_unequal_counts_in_order(self):
        (self.dir / "masks/b.exr").unlink()
        self.assert_one_error(
            self.run_each(code=USAGE), "height=heights/*.exr", "3 files", "mask=masks/*.exr", "2",
            "--pair stem",
        )
        self.assertFalse(self.results.exists())

    def test_one_reader_twice(self):
        result = self.run_each(each=("height=heights/a.exr", "height=heights/b.exr"), code=USAGE)
        self.assert_one_error(result, "height=heights/b.exr", "another --each")

    def test_a_reader_that_stays(self):
        self.assert_quiet(self.run_each(each=("mask=masks/*.exr",)))
        for name in "abc":
            self.assert_product(f"{name}_masked.exr", "a", name)

    def test_pairs_that_do_not_exist(self):
        for name in "abc":
            (self.dir / f"masks/{name}.exr").rename(self.dir / f"masks/{name}{name}.exr")
        result = self.run_each("--pair", "stem", code=FILE_ERROR)
        self.assert_names(result, "no two files")

    def test_words_of_pair(self):
        self.assert_one_error(self.run_each("--pair", "steam", code=USAGE), "--pair", "stem")


class NamesTest(BatchTestCase):
    def setUp(self):
        super().setUp()
        for name in ("north/one", "north/two", "south/deep/one"):
            self.make(f"tiles/{name}.exr", 30)

    def tiles(self, template, pattern="height=tiles/**/*.exr", code=DONE):
        return self.run_each("--name", template, each=(pattern,), code=code)

    def test_folders_are_mirrored(self):
        self.assert_quiet(self.tiles("{folder}/{stem}{ending}"))
        self.assertEqual(self.names(), ["north/one.exr", "north/two.exr", "south/deep/one.exr"])

    def test_all_words(self):
        self.assert_quiet(self.tiles("{index:03}-{output}/{stem}.tif", "height=tiles/north/*.exr"))
        self.assertEqual(self.names(), ["001-masked/one.tif", "002-masked/two.tif"])

    def test_a_folder_without_wildcards_gives_its_name(self):
        self.assert_quiet(self.tiles("{folder}_{stem}{ending}", "height=tiles/north/*.exr"))
        self.assertEqual(self.names(), ["north_one.exr", "north_two.exr"])

    def test_two_files_of_one_name(self):
        result = self.tiles("{stem}{ending}", code=USAGE)
        self.assert_one_error(result, "north/one.exr", "south/deep/one.exr", "one.exr", "{folder}")
        self.assertFalse(self.results.exists())

    def test_two_outputs_of_one_name(self):
        content = json.loads((self.dir / "graph.json").read_text())
        content["outputs"].append(output("height.image", "height.exr"))
        self.save("graph.json", content)
        result = self.run_each("--name", "{stem}{ending}", code=USAGE)
        self.assert_one_error(result, "masked.exr", "height.exr", "{output}")
        self.assertFalse(self.results.exists())

    def test_what_is_no_template(self):
        for template, words in (
            ("{stm}{ending}", ("{stm}", "{stem}")),
            ("{stem", ("{",)),
            ("", ("empty",)),
            ("../{stem}{ending}", ("folder",)),
            ("/tmp/{stem}{ending}", ("folder",)),
            ("{stem}/", ("folder",)),
        ):
            with self.subTest(template=template):
                self.assert_one_error(self.tiles(template, code=USAGE), "--name", *words)
                self.assertFalse(self.results.exists())

    def test_an_ending_that_names_no_format(self):
        for template in ("{stem}", "{stem}.xyz"):
            with self.subTest(template=template):
                result = self.tiles(template, "height=tiles/north/*.exr", code=USAGE)
                self.assert_one_error(result, "format", "{ending}")
                self.assertFalse(self.results.exists())

    def test_hard_links_of_what_another_run_reads(self):
        self.results.mkdir()
        os.link(self.dir / "heights/b.exr", self.results / "a.exr")
        before = (self.dir / "heights/b.exr").read_bytes()
        result = self.run_each("--name", "{stem}{ending}", each=("height=heights/*.exr",), code=USAGE)
        self.assert_one_error(result, "heights/b.exr", "another run reads")
        self.assertEqual((self.dir / "heights/b.exr").read_bytes(), before)

    def test_results_that_another_run_reads(self):
        before = (self.dir / "heights/b.exr").read_bytes()
        result = self.value(
            "run", "graph.json", "--each", "height=heights/*.exr", "--output-dir", "heights",
            "--name", "b.exr", code=USAGE,
        )
        self.assertEqual(len(result.err_lines), 1, str(result))
        self.save("two.json", document(
            [node("r", "ImageReaderNode", path="heights/a.exr")], [],
            [output("r.image", "x.exr")],
        ))
        self.make("heights/a_x.exr", 50)
        result = self.value(
            "run", "two.json", "--each", "r=heights/*.exr", "--output-dir", "heights", code=USAGE
        )
        self.assert_one_error(result, "heights/a.exr", "heights/a_x.exr", "another run reads")
        self.assertEqual((self.dir / "heights/b.exr").read_bytes(), before)

    def test_results_that_another_reader_of_another_run_reads(self):
        """Each result has the name of a file that is the second of the run before."""
        before = {path.name: path.read_bytes() for path in (self.dir / "heights").iterdir()}
        self.make("heights/d.exr", 51)
        before["d.exr"] = (self.dir / "heights/d.exr").read_bytes()
        result = self.value(
            "run", "graph.json", "--each", "height=heights/[bcd].exr", "--each",
            "mask=heights/[abc].exr", "--name", "{stem}{ending}", "--output-dir", "heights",
            code=USAGE,
        )
        self.assert_one_error(result, "another run reads")
        after = {path.name: path.read_bytes() for path in (self.dir / "heights").iterdir()}
        self.assertEqual(after, before)

    def test_results_in_place_of_what_all_runs_read(self):
        before = (self.dir / "masks/a.exr").read_bytes()
        result = self.value(
            "run", "graph.json", "--each", "height=heights/*.exr", "--name", "{stem}{ending}",
            "--output-dir", "masks", code=USAGE,
        )
        self.assert_one_error(result, "masks/a.exr", "another run reads")
        self.assertEqual((self.dir / "masks/a.exr").read_bytes(), before)

    def test_results_in_place_of_a_run_s_own_second_file(self):
        self.assert_quiet(self.value(
            "run", "graph.json", "--each", "height=heights/*.exr", "--each", "mask=masks/*.exr",
            "--name", "{stem}{ending}", "--output-dir", "masks",
        ))
        for name in "abc":
            self.assert_picture(
                self.dir / f"masks/{name}.exr",
                arithmetic("Multiply", [self.heights[name], self.masks[name]]),
            )

    def test_a_file_may_be_replaced_by_its_own_result(self):
        self.save("raise.json", document(
            [node("r", "ImageReaderNode", path="heights/a.exr"),
             node("add", "ImageValueAddNode", constant=2)],
            [link("r.image", "add.image", 0)], [output("add.image", "x.exr")],
        ))
        self.assert_quiet(self.value(
            "run", "raise.json", "--each", "r=heights/*.exr", "--output-dir", "heights",
            "--name", "{stem}{ending}",
        ))
        for name, picture in self.heights.items():
            self.assert_picture(
                self.dir / f"heights/{name}.exr", arithmetic("Add", [picture], 2.0)
            )


class GlobTest(BatchTestCase):
    def found(self, pattern):
        result = self.run_each("--json", each=(f"height={pattern}",), code=None)
        return [value["input"] for value in result.json_values() if "input" in value]

    def test_what_each_sign_stands_for(self):
        for name in ("deep/x.exr", "deep/er/y.exr", "[a].exr", "d*.exr"):
            self.make(f"heights/{name}", 40)
        for pattern, files in (
            ("heights/?.exr", ["a", "b", "c"]),
            ("heights/[!a-b].exr", ["c"]),
            ("heights/*/*.exr", ["deep/x"]),
            ("heights/**/[xy].exr", ["deep/er/y", "deep/x"]),
            ("heights/[a].exr", ["[a]"]),
            ("heights/\\[a\\].*", ["[a]"]),
            ("heights/d\\*.*", ["d*"]),
        ):
            with self.subTest(pattern=pattern):
                self.assertEqual(
                    sorted(self.found(pattern)), [f"heights/{name}.exr" for name in files]
                )


class SkipExistingTest(BatchTestCase):
    def states(self, *options):
        result = self.run_each("--skip-existing", "--json", *options)
        lines = result.json_values()
        self.assertEqual(lines[-1]["files"], 3)
        return {line["input"][-5]: line["state"] for line in lines[:-1]}

    def touch(self, name, seconds):
        now = (self.results / "a_masked.exr").stat().st_mtime
        os.utime(self.dir / name, (now + seconds, now + seconds))

    def test_what_is_there_and_not_older_is_left_out(self):
        self.assertEqual(self.states(), {"a": "done", "b": "done", "c": "done"})
        before = {name: (self.results / name).stat() for name in self.names()}
        self.assertEqual(self.states(), {"a": "skipped", "b": "skipped", "c": "skipped"})
        for name, status in before.items():
            self.assertEqual((self.results / name).stat().st_ino, status.st_ino)

    def test_results_that_are_gone_or_older_are_made(self):
        self.states()
        (self.results / "b_masked.exr").unlink()
        self.touch("masks/c.exr", 100)
        self.assertEqual(self.states(), {"a": "skipped", "b": "done", "c": "done"})

    def test_the_document_counts_and_so_does_what_other_readers_read(self):
        self.states()
        self.touch("graph.json", 100)
        self.assertEqual(self.states(), {"a": "done", "b": "done", "c": "done"})
        self.touch("graph.json", -100)
        self.run_each("--skip-existing", each=("height=heights/*.exr",))
        self.touch("masks/a.exr", 200)
        result = self.run_each("--skip-existing", "--json", each=("height=heights/*.exr",))
        self.assertEqual([line["state"] for line in result.json_values()[:-1]], ["done"] * 3)

    def test_a_reader_whose_file_is_known_only_later(self):
        content = json.loads((self.dir / "graph.json").read_text())
        content["nodes"].append(node("where", "TextNode", value="masks/a.exr"))
        content["connections"].append(link("where.text", "mask.path"))
        self.save("graph.json", content)
        for _ in range(2):
            result = self.run_each(
                "--skip-existing", "--json", each=("height=heights/*.exr",)
            )
            self.assert_names(result, "note", "--skip-existing", '"mask"')
            states = [line["state"] for line in result.json_values()[:-1]]
            self.assertEqual(states, ["done"] * 3)

    def test_an_output_of_several_that_lacks(self):
        content = json.loads((self.dir / "graph.json").read_text())
        content["outputs"].append(output("height.image", "plain.tif"))
        self.save("graph.json", content)
        self.states()
        (self.results / "b_plain.tif").unlink()
        self.assertEqual(self.states(), {"a": "skipped", "b": "done", "c": "skipped"})


class JsonLinesTest(BatchTestCase):
    def test_a_line_per_file_and_the_sum(self):
        result = self.run_each("--json", "--jobs", "1")
        lines = [json.loads(line) for line in result.out.splitlines()]
        self.assertEqual(
            [line["input"] for line in lines[:-1]], [f"heights/{name}.exr" for name in "abc"]
        )
        first = lines[0]
        self.assertEqual(first["inputs"], {"height": "heights/a.exr", "mask": "masks/a.exr"})
        self.assertEqual(first["state"], "done")
        self.assertEqual(first["outputs"][0]["path"], str(self.results / "a_masked.exr"))
        self.assertTrue(first["outputs"][0]["written"])
        total = lines[-1]
        self.assertEqual(
            [total[key] for key in ("files", "done", "failed", "skipped", "left_out")],
            [3, 3, 0, 0, 0],
        )
        self.assertNotIn("error", total)

    def test_a_file_that_fails(self):
        (self.dir / "heights/b.exr").write_bytes(b"no image")
        result = self.run_each("--json", code=FILE_ERROR)
        lines = [json.loads(line) for line in result.out.splitlines()]
        failed = [line for line in lines[:-1] if line["state"] == "failed"]
        self.assertEqual([line["input"] for line in failed], ["heights/b.exr"])
        self.assertTrue(failed[0]["error"].startswith("heights/b.exr: "), failed[0]["error"])
        self.assertEqual([lines[-1][key] for key in ("done", "failed")], [2, 1])
        self.assertIn("heights/b.exr", lines[-1]["error"])
        self.assertEqual(self.names(), ["a_masked.exr", "c_masked.exr"])

    def test_a_document_that_changes_meanwhile(self):
        """All files are run with the document as it was at the start."""
        process = subprocess.Popen(
            [str(find_program()), "run", "graph.json", "--each", "height=heights/*.exr",
             "--output-dir", "results", "--jobs", "1", "--json"],
            cwd=self.dir, env=environment_with(None), stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
        )
        process.stdout.readline()
        (self.dir / "graph.json").write_text("{")
        _, err = process.communicate(timeout=120)
        self.assertEqual((process.returncode, err), (DONE, ""))
        self.assertEqual(self.names(), ["a_masked.exr", "b_masked.exr", "c_masked.exr"])

    def test_a_node_that_fails(self):
        # Two images of one place each, with more pixels between them than an image may have.
        far = sample_picture(VALUE, seed=60, pin=(40000, 0))
        self.picture("masks/b.exr", far)
        result = self.run_each("--json", code=NODE_ERROR)
        self.assertEqual(self.names(), ["a_masked.exr", "c_masked.exr"])
        self.assertEqual(json.loads(result.out.splitlines()[-1])["failed"], 1)


class UsageTest(BatchTestCase):
    def test_options_that_belong_together(self):
        for options, words in (
            (("--each", "height=heights/*.exr"), ("--each", "--output-dir")),
            (("--output-dir", "results"), ("--output-dir", "--each")),
            (("--name", "{stem}{ending}"), ("--name", "--each")),
            (("--skip-existing",), ("--skip-existing", "--each")),
        ):
            with self.subTest(options=options):
                result = self.value("run", "graph.json", *options, code=USAGE)
                self.assert_one_error(result, *words)

    def test_an_invalid_document_is_told_once(self):
        self.save("graph.json", document([node("r", "ZebraNode")]))
        result = self.run_each(each=("r=heights/*.exr",), code=INVALID)
        self.assert_one_error(result, "ZebraNode")
        self.assertFalse(self.results.exists())

    def test_jobs_without_each_are_noted(self):
        self.assert_names(self.value("run", "graph.json", "--jobs", "2"), "note", "--jobs")

    def test_an_input_that_each_replaces_is_noted(self):
        result = self.run_each("--input", "height=none.exr")
        self.assert_names(result, "note", "--input height=none.exr", "--each")

    def test_the_working_directory_may_vanish(self):
        (self.dir / "gone").mkdir()
        script = (
            f"cd gone && rmdir ../gone && exec '{find_program()}' run '{self.dir}/graph.json' --each"
            f" 'height={self.dir}/heights/*.exr' --each 'mask={self.dir}/masks/*.exr' --output-dir"
            f" '{self.results}'"
        )
        ended = subprocess.run(
            ["bash", "-c", script], cwd=self.dir, env=environment_with(None), capture_output=True,
            text=True, timeout=300, check=False,
        )
        self.assertEqual((ended.returncode, ended.stderr), (DONE, ""))
        self.assertEqual(len(self.names()), 3)

    def test_jobs_beyond_the_threads(self):
        result = self.run_each("--jobs", "4", "--threads", "2")
        self.assert_names(result, "note", "--jobs 4", "--threads 2")
        self.assertEqual(len(self.names()), 3)


class ApplyEachTest(BatchTestCase):
    def apply(self, *words, code=DONE):
        return self.value("apply", *words, "--output-dir", "results", code=code)

    def test_one_input(self):
        self.assert_quiet(self.apply(
            "Value Add", "--each", "heights/*.exr", "--set", "constant=2", "-o", "raised.exr"
        ))
        for name, picture in self.heights.items():
            self.assert_picture(
                self.results / f"{name}_raised.exr", arithmetic("Add", [picture], 2.0)
            )

    def test_an_input_that_stays_comes_after(self):
        self.assert_quiet(self.apply(
            "Value Subtract", "--each", "image=heights/*.exr", "-i", "masks/a.exr", "-o", "less.exr"
        ))
        for name, picture in self.heights.items():
            self.assert_picture(
                self.results / f"{name}_less.exr",
                arithmetic("Subtract", [picture, self.masks["a"]]),
            )

    def test_two_inputs_by_stem(self):
        (self.dir / "masks/c.exr").unlink()
        result = self.apply(
            "Value Compare", "--each", "image_a=heights/*.exr", "--each", "image_b=masks/*.exr",
            "--pair", "stem", "-o", "image_a_g_b=above.tif", "--name", "{output}/{stem}{ending}",
        )
        self.assert_names(result, "note", "heights/c.exr")
        self.assertEqual(self.names(), ["above/a.tif", "above/b.tif"])
        for name in "ab":
            above = (self.heights[name].data > self.masks[name].data).astype(F)
            self.assert_samples(read_file(self.results / f"above/{name}.tif").data, above)

    def test_the_words_of_one_input(self):
        result = self.apply("Value Add", "--each", "zebra=*.exr", "-o", "x.exr", code=USAGE)
        self.assert_one_error(result, "zebra", "image")
        result = self.apply("Value Add", "--each", "none*.exr", "-o", "x.exr", code=FILE_ERROR)
        self.assert_one_error(result, "none*.exr", "no file matches")

    def test_skip_existing(self):
        words = ("Value Add", "--each", "heights/*.exr", "-o", "x.exr", "--skip-existing", "--json")
        self.apply(*words)
        lines = self.apply(*words).json_values()
        self.assertEqual([line["state"] for line in lines[:-1]], ["skipped"] * 3)


class WideImagesTest(ValueTestCase):
    def test_many_jobs_leave_the_samples_alone(self):
        """More files than threads, each with its own samples: nothing is mixed up."""
        (self.dir / "in").mkdir()
        pictures = {}
        for index in range(24):
            data = np.full((9, 7 + index, 1), index + 0.5, dtype=F)
            write_file(self.dir / f"in/{index:02}.tif", data)
            pictures[f"{index:02}"] = data
        self.assert_quiet(self.value(
            "apply", "Value Multiply", "--each", "in/*.tif", "--set", "constant=2",
            "-o", "x.tif", "--output-dir", "out", "--jobs", "8",
        ))
        for name, data in pictures.items():
            self.assert_samples(read_file(self.dir / f"out/{name}_x.tif").data, data * F(2))
