"""The pages of the manual, as the program writes them and other programs show them."""

import os
import re
import subprocess

from cli_support import DONE, FILE_ERROR, USAGE, ValueTestCase, run_value

DAY = {"SOURCE_DATE_EPOCH": "86400"}


def ask(*command, **options):
    return subprocess.run(
        [str(word) for word in command], capture_output=True, text=True, timeout=60, **options
    )


class ManualTestCase(ValueTestCase):
    def write_pages(self, folder="man1", environment=None):
        self.value("manual", "--output-dir", folder, environment=environment or DAY)
        return sorted((self.dir / folder).iterdir())

    def show(self, page):
        """The page as a person sees it, in 80 columns and without bold and underlining."""
        environment = {**os.environ, "MANWIDTH": "80", "LC_ALL": "C.UTF-8", "PAGER": "cat", "MANPAGER": "cat"}
        shown = ask("man", "-l", page, env=environment)
        self.assertEqual(shown.returncode, 0, shown.stderr)
        return re.sub(".\b", "", shown.stdout)

    def commands(self):
        text = self.value("--help").out
        return re.findall(r"^  (\w+)  ", text.split("Subcommands:")[1].split("\n\n")[0], re.MULTILINE)

    def options(self, *command):
        """The options that the help shows, by their long names."""
        return re.findall(r"^  (?:-\w,)?(--[a-z-]+)", self.value(*command, "--help").out, re.MULTILINE)


class PagesTest(ManualTestCase):
    def test_every_command_has_a_page(self):
        commands = self.commands()
        self.assertIn("run", commands)
        names = [page.name for page in self.write_pages()]
        self.assertEqual(names, sorted(["value.1"] + [f"value-{command}.1" for command in commands]))

    def test_pages_have_every_option_of_the_help(self):
        pages = {page.stem: page for page in self.write_pages()}
        for name, page in pages.items():
            command = name.split("-")[1:]
            shown = self.show(page)
            wanted = self.options(*command)
            self.assertIn("--help", wanted)
            for option in wanted:
                self.assertRegex(shown, rf"(?m)^ {{7}}(-\w, )?{option}\b", f"{name} lacks {option}")

    def test_pages_have_the_usual_sections_in_order(self):
        for page in self.write_pages():
            headings = re.findall(r"(?m)^[A-Z][A-Z ]+$", self.show(page))
            wanted = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "ENVIRONMENT", "EXAMPLES", "SEE ALSO"]
            self.assertEqual([heading for heading in headings if heading in wanted], wanted, page.name)

    def test_pages_fit_into_80_columns(self):
        for page in self.write_pages():
            for line in self.show(page).splitlines():
                self.assertLessEqual(len(line), 80, f"{page.name}: {line}")

    def test_formatters_have_nothing_to_complain_of(self):
        for page in self.write_pages():
            made = ask("groff", "-man", "-ww", "-Tutf8", page)
            self.assertEqual((made.returncode, made.stderr), (0, ""), page.name)
            checked = ask("mandoc", "-Tlint", "-W", "warning", page)
            self.assertEqual((checked.returncode, checked.stdout + checked.stderr), (0, ""), page.name)

    def test_the_index_of_pages_finds_names_and_sentences(self):
        self.write_pages("man/man1")
        ask("mandb", "-q", "-u", "-c", self.dir / "man", check=True)
        listed = ask("whatis", "-l", "-M", self.dir / "man", "value-run", check=True).stdout
        self.assertRegex(listed, r"^value-run \(1\) +- evaluates a graph document and writes its outputs\n$")

    def test_examples_are_those_of_the_help(self):
        for page in self.write_pages():
            command = page.stem.split("-")[1:]
            wanted = re.findall(r"(?m)^  (value .*)$", self.value(*command, "--help").out)
            examples = self.show(page).split("\nEXAMPLES\n")[1].split("\nSEE ALSO\n")[0]
            joined = re.sub(r"\\\n +", "", examples)
            for example in wanted:
                self.assertIn(example, joined, page.name)

    def test_words_and_bounds_of_values_are_told(self):
        pages = {page.stem: self.show(page) for page in self.write_pages()}
        for word in ("float", "half", "uint16", "uint8", "int16"):
            self.assertIn(word, pages["value-run"].split("--type TYPE")[1].split("--samples")[0])
        self.assertRegex(pages["value-run"], r"--threads N\n[^-]*From 1 to\s+1024\.")

    def test_nothing_is_said_twice(self):
        pages = {page.stem: self.show(page) for page in self.write_pages()}
        scale = pages["value-panel"].split("--scale N")[1].split("\n\n")[0]
        self.assertRegex(scale, r"\A\s+Device pixels per pixel: 1 or 2\.\Z")
        self.assertEqual(pages["value-check"].count("not looked for") + pages["value-check"].count("not look for"), 1)
        self.assertEqual(pages["value-doctor"].count("remedy"), 1)
        for name, page in pages.items():
            for entry in re.split(r"\n\n", page.split("\nOPTIONS\n")[1].split("\nEXIT STATUS\n")[0]):
                sentences = [sentence.split() for sentence in re.split(r"[.;]\s", entry)]
                self.assertLessEqual(entry.count("be given again"), 1, f"{name}: {entry}")
                self.assertEqual(len(sentences), len({tuple(words) for words in sentences}), f"{name}: {entry}")

    def test_nodes_are_listed_with_what_they_do(self):
        pages = {page.stem: self.show(page) for page in self.write_pages()}
        for name in ("value-nodes", "value-apply"):
            nodes = pages[name].split("\nNODES\n")[1].split("\nEXIT STATUS\n")[0]
            self.assertRegex(nodes, r"(?m)^ {7}Value Add \(ImageValueAddNode\)\n {14}Adds a constant to one image")

    def test_exit_codes_of_the_program_are_explained(self):
        status = self.show(self.write_pages()[0]).split("\nEXIT STATUS\n")[1].split("\nENVIRONMENT\n")[0]
        found = re.findall(r"(?m)^ {7}(\d+)", status)
        self.assertEqual(found[:6], ["0", "1", "2", "3", "4", "5"])


class HelpTest(ManualTestCase):
    def help_pages(self):
        return {command: self.value(*command.split(), "--help").out for command in ["", *self.commands()]}

    def test_values_have_names_without_types_and_checks(self):
        for command, page in self.help_pages().items():
            with self.subTest(command=command):
                self.assertNotRegex(page, r"\(0x|:(INT|UINT|FLOAT|TEXT|\{)| in \[|\bTEXT\b|REQUIRED|\[OPTIONS\]")
                for value in re.findall(r"(?m)^  (?:-\w,)?--[a-z-]+ (\S+)", page):
                    self.assertRegex(value, r"\A[A-Z]+([.,=][A-Z]+)*(\.\.\.)?\Z")

    def test_the_usage_is_that_of_the_manual(self):
        pages = {page.stem: self.show(page) for page in self.write_pages()}
        for command, page in self.help_pages().items():
            with self.subTest(command=command):
                usage = page.split("Usage: ")[1].split("\n\n")[0]
                manual = pages["-".join(["value", *command.split()])].split("\nSYNOPSIS\n")[1].split("\n\n")[0]
                self.assertEqual(usage.split(), manual.split())

    def test_options_fit_into_80_columns(self):
        for command, page in self.help_pages().items():
            listed = page.split("Usage: ")[1].split("\nExample")[0]
            for line in re.findall(r"(?m)^ .*$", listed):
                self.assertLessEqual(len(line), 80, f"{command}: {line}")

    def test_words_and_bounds_are_told_once(self):
        pages = {command: " ".join(page.split()) for command, page in self.help_pages().items()}
        self.assertIn("--threads N Threads that image operations may use (default: one per core). From 1 to 1024.", pages["run"])
        self.assertIn("--scale N Device pixels per pixel: 1 or 2. Options of", pages["panel"])
        self.assertIn("--type TYPE Samples of the files: auto, float, half, uint16, uint8 or int16. --samples", pages["run"])
        self.assertRegex(pages["run"], r"--pair WORD [^.]*\border\b[^.]*\bstem\b[^.]*\. --skip-existing")
        self.assertIn("-i,--input FILE... Image files", pages["apply"])
        self.assertRegex(pages["apply"], r"-o,--output FILE The file [^.]*\. May be given again\. Required\.")
        self.assertIn("Usage: value apply NODE [-i FILE]...", pages["apply"])
        self.assertIn("Usage: value selftest [OPTION]... [NAME] Positionals: NAME Class name", pages["selftest"])


class SameAgainTest(ManualTestCase):
    def test_pages_do_not_depend_on_place_and_time(self):
        first = [page.read_bytes() for page in self.write_pages("one")]
        again = [page.read_bytes() for page in self.write_pages("other/place")]
        self.assertEqual(first, again)
        for text in first:
            self.assertNotIn(str(self.dir).encode(), text)

    def test_the_date_is_that_of_the_version_or_of_the_source(self):
        page = self.write_pages("one")[0]
        self.assertIn(' "1" "1970-01-02" "value ', page.read_text())
        for wrong in (None, "", "soon", "12x"):
            page = self.write_pages("two", {"SOURCE_DATE_EPOCH": wrong})[0]
            self.assertRegex(page.read_text(), r'\.TH "VALUE[^"]*" "1" "20\d\d-\d\d-\d\d" "value \d')


class WrongUseTest(ManualTestCase):
    def test_a_folder_is_needed(self):
        for arguments in ((), ("--output-dir",), ("--output-dir", ""), ("pages",)):
            result = self.value("manual", *arguments, code=USAGE)
            self.assert_one_error(result, "--output-dir DIR")

    def test_a_folder_that_cannot_be_written_is_named(self):
        (self.dir / "file").write_text("")
        result = self.value("manual", "--output-dir", "file/man1", code=FILE_ERROR)
        self.assert_one_error(result, "file/man1/value.1")

    def test_no_help_shows_the_hidden_commands(self):
        result = run_value("--help")
        self.assertEqual(result.code, DONE)
        self.assertNotRegex(result.out, r"(?m)^  (manual|complete) ")
