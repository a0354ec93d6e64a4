"""What the program offers while a line is typed, asked directly and through the shells themselves."""

import os
import pty
import re
import select
import shutil
import signal
import subprocess
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

from cli_support import (
    REPOSITORY,
    SANITIZED,
    ValueTestCase,
    document,
    environment_with,
    find_program,
    link,
    node,
    output,
)

SCRIPTS = REPOSITORY / "Apps" / "Value" / "Shells"
BASH_BREAKS = " \t\n\"'><=;|&(:"

GRAPH = document(
    [
        node("height", "ImageReaderNode", path="terrain.exr"),
        node("a b.c:d", "ImageValueClampNode"),
        node("made", "ImageValueCompareNode"),
    ],
    [link("height.image", "a b.c:d.image")],
    [output("a b.c:d.image", "out.exr")],
)


class CompletionTestCase(ValueTestCase):
    """A folder with a document, images and folders to complete, and the program in PATH."""

    def setUp(self):
        super().setUp()
        self.save("graph.json", GRAPH)
        for name in ("old.exr", "new image.exr", "library.so", "notes.txt"):
            (self.dir / name).write_text("")
        for name in ("tiles", "more tiles"):
            (self.dir / name).mkdir()
        home = tempfile.TemporaryDirectory(prefix="value-home-")
        self.addCleanup(home.cleanup)
        self.home = home.name

    def environment(self):
        """That of a shell which has the program in its path and nothing of the one who runs the tests."""
        found = environment_with({"TERM": "dumb", "LC_ALL": "C.UTF-8", "VALUE_PLUGIN_PATH": None})
        for name in ("HOME", "ZDOTDIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"):
            found[name] = self.home
        return {**found, "PATH": f"{find_program().parent}:{found['PATH']}"}

    def ask(self, *words):
        """The lines of the answer, each as the list of its fields."""
        result = self.value("complete", "--", *words)
        self.assert_quiet(result)
        return [line.split("\t") for line in result.out.splitlines()]

    def offered(self, *words):
        """The words of the answer, those that go on with a "+" behind them."""
        marks = {"word": "", "part": "+"}
        return [line[1] + marks[line[0]] for line in self.ask(*words) if line[0] in marks]

    def files(self, *words):
        return [line for line in self.ask(*words) if line[0] in ("prefix", "file", "folder")]


class CommandTest(CompletionTestCase):
    def test_commands_of_the_help_are_offered(self):
        shown = self.value("--help").out.split("Subcommands:")[1].split("\n\n")[0]
        self.assertEqual(self.offered(""), re.findall(r"(?m)^  (\w+)  ", shown))
        self.assertEqual(self.offered("sel"), ["selftest"])
        self.assertEqual(self.offered("--quiet", "sel"), ["selftest"])

    def test_every_option_of_every_command_is_offered(self):
        for command in self.offered(""):
            shown = self.value(command, "--help").out
            wanted = re.findall(r"(?m)^  (?:-\w,)?(--[a-z-]+)", shown)
            self.assertEqual(sorted(self.offered(command, "--")), sorted(wanted), command)

    def test_options_that_take_one_are_offered_once(self):
        words = ("run", "graph.json", "--type", "half", "--strip", "--set", "x.y=1")
        offered = self.offered(*words, "--")
        self.assertNotIn("--type", offered)
        self.assertNotIn("--strip", offered)
        self.assertIn("--set", offered)
        self.assertIn("--output", offered)

    def test_an_option_is_told_with_its_sentence(self):
        self.assertEqual(self.ask("apply", "--stri"), [["word", "--strip", "Write no metadata"]])

    def test_words_of_an_option_are_offered(self):
        self.assertEqual(self.offered("run", "--samples", ""), ["unit", "stored"])
        self.assertEqual(self.offered("run", "--opacity=d"), ["--opacity=drop"])
        self.assertEqual(self.offered("apply", "Relief", "--type", "u"), ["uint16", "uint8"])
        self.assertEqual(self.offered("run", "--threads", ""), [])

    def test_devices_are_offered(self):
        listed = self.value("doctor", "--json", code=None).json_values()[0]["devices"]
        wanted = ["gpu", "cpu"] + [str(place) for place in range(len(listed))]
        self.assertEqual(self.offered("run", "--device", ""), wanted)

    def test_files_and_folders_are_left_to_the_shell(self):
        self.assertEqual(self.files("run", ""), [["file", "json"]])
        self.assertEqual(self.files("--plugin", ""), [["file", "so"]])
        self.assertEqual(self.files("validate", ""), [["file", "so"]])
        self.assertEqual(self.files("stats", "x"), [["file", "*"]])
        self.assertEqual(self.files("run", "graph.json", "--output-dir", ""), [["folder", "*"]])
        self.assertEqual(self.files("apply", "Value Add", "-o", ""), [["file", "*"]])

    def test_nothing_is_offered_behind_an_unknown_command(self):
        self.assertEqual(self.ask("run", "--nothing-of-this-name"), [])
        self.assertEqual(self.ask("no-command", "sel"), [])

    def test_options_are_offered_where_nothing_else_is_left(self):
        self.assertIn("--quiet", self.offered("doctor", ""))
        self.assertIn("--output", self.offered("apply", "Value Add", ""))
        self.assertIn("--set", self.offered("run", "graph.json", ""))
        self.assertNotIn("--set", self.offered("run", ""))


class NodeTest(CompletionTestCase):
    def test_display_names_are_offered_for_nodes(self):
        for command in ("apply", "panel", "nodes", "selftest"):
            self.assertEqual(self.offered(command, "Value Cl"), ["Value Clamp"], command)
            self.assertEqual(self.offered(command, "value ad"), ["Value Add"], command)

    def test_all_nodes_of_the_catalogue_are_offered(self):
        listed = self.value("nodes", "--json").json_values()[0]["nodes"]
        self.assertEqual(self.offered("apply", ""), [entry["name"] for entry in listed])

    def test_class_names_are_offered_once_they_are_begun(self):
        self.assertEqual(self.offered("apply", "ImageValueAd"), ["ImageValueAddNode"])

    def test_names_that_are_typed_without_quotes_go_on(self):
        self.assertEqual(self.offered("apply", "Value", "Cl"), ["Clamp"])
        self.assertEqual(self.offered("nodes", "connected", ""), ["Components"])

    def test_attributes_of_the_node_are_offered(self):
        wanted = ["clamp=+", "low=+", "high=+", "profile=+"]
        for words in (("Value Clamp",), ("Value", "Clamp"), ("imagevalueclampnode",), ("10,320,37",)):
            attributes = self.value("nodes", *words, "--json").json_values()[0]["attributes"]
            wanted = [attribute["name"] + "=+" for attribute in attributes]
            self.assertEqual(self.offered("apply", *words, "--set", ""), wanted, words)
        self.assertEqual(self.offered("apply", "Value Clamp", "--set", "pro"), ["profile=+"])
        self.assertEqual(self.offered("apply", "-i", "old.exr", "Value Clamp", "--set", "cl"), ["clamp=+"])

    def test_values_of_an_attribute_are_offered(self):
        self.assertEqual(self.offered("apply", "Value Clamp", "--set", "clamp=l"), ["clamp=low"])
        self.assertEqual(self.offered("apply", "Value Clamp", "--set=clamp=h"), ["--set=clamp=high"])
        self.assertEqual(self.offered("apply", "To Value", "--set", "auto_level="), ["auto_level=true", "auto_level=false"])
        self.assertEqual(self.offered("apply", "Value Clamp", "--set", "low="), [])
        self.assertEqual(
            self.files("apply", "Image Reader", "--set", "path=x"), [["prefix", "path="], ["file", "*"]]
        )

    def test_plugs_are_offered_where_there_are_several(self):
        self.assertEqual(self.offered("apply", "Value Compare", "-i", ""), ["image_a=+", "image_b=+"])
        self.assertEqual(self.offered("apply", "Value Clamp", "-i", ""), [])
        self.assertIn("image_a_df_b=+", self.offered("apply", "Value Compare", "-o", "image_a_d"))
        self.assertEqual(
            self.files("apply", "Value Compare", "--input=image_b=x"),
            [["prefix", "--input=image_b="], ["file", "*"]],
        )


class GraphTest(CompletionTestCase):
    def test_ids_attributes_and_values_are_offered_in_turn(self):
        self.assertEqual(self.offered("run", "graph.json", "--set", ""), ["height.+", "a b.c:d.+", "made.+"])
        self.assertEqual(
            self.offered("run", "graph.json", "--set", "a b.c:d."),
            ["a b.c:d.clamp=+", "a b.c:d.low=+", "a b.c:d.high=+", "a b.c:d.profile=+"],
        )
        self.assertEqual(self.offered("run", "graph.json", "--set", "a b.c:d.clamp=h"), ["a b.c:d.clamp=high"])

    def test_options_may_stand_before_the_document_only_without_its_names(self):
        self.assertEqual(self.ask("run", "--set", ""), [])
        self.assertEqual(self.offered("run", "--quiet", "graph.json", "--input", ""), ["height=+"])

    def test_readers_are_offered_for_inputs(self):
        for option in ("--input", "--each"):
            self.assertEqual(self.offered("run", "graph.json", option, ""), ["height=+"], option)
            self.assertEqual(
                self.files("run", "graph.json", option, "height=ti"), [["prefix", "height="], ["file", "*"]]
            )

    def test_plugs_are_offered_for_outputs(self):
        offered = self.offered("run", "graph.json", "--output", "")
        self.assertEqual(offered[:2], ["height.image=+", "a b.c:d.image=+"])
        self.assertIn("made.image_a_df_b=+", offered)
        self.assertEqual(
            self.files("run", "graph.json", "--output", "height.image=x"),
            [["prefix", "height.image="], ["file", "*"]],
        )

    def test_what_can_be_read_of_a_document_is_offered(self):
        self.save("odd.json", document([node("new", "FutureNode"), node("old", "ImageReaderNode", path="x")]))
        self.assertEqual(self.offered("run", "odd.json", "--input", ""), ["old=+"])

    def test_a_document_in_the_home_folder_is_found(self):
        result = self.value("complete", "--", "run", "~/graph.json", "--input", "", environment={"HOME": str(self.dir)})
        self.assertEqual(result.out, "part\theight=\tImage Reader\n")


class TroubleTest(CompletionTestCase):
    """Whatever is wrong with what is typed, the answer is empty."""

    def build(self, name, body):
        source = self.dir / f"{name}.cpp"
        source.write_text(f"#include <cstdio>\n#include <cstdlib>\n#include <unistd.h>\n{body}\n")
        library = self.dir / f"{name}.so"
        subprocess.run(["c++", "-shared", "-fPIC", "-o", library, source], check=True, timeout=120)
        return library

    def ask_freely(self, *words):
        started = time.monotonic()
        command = [str(word) for word in (find_program(), "complete", *words)]
        result = subprocess.run(
            command, capture_output=True, text=True, timeout=60, cwd=self.dir, env=environment_with(None)
        )
        return result, time.monotonic() - started

    def test_broken_documents_offer_nothing(self):
        self.save("text.json", "not JSON")
        self.save("cut.json", (self.dir / "graph.json").read_text()[:150])
        self.save("bytes.json", b"\x00\xff" * 100)
        for name in ("text.json", "cut.json", "bytes.json", "none.json", "tiles", "-", "/dev/zero"):
            self.assertEqual(self.ask("run", name, "--set", ""), [], name)

    def test_broken_libraries_offer_nothing(self):
        (self.dir / "empty.so").write_text("")
        for name in ("empty.so", "none.so", "tiles"):
            self.assertEqual(self.ask("--plugin", name, "apply", ""), [], name)

    def test_what_a_library_prints_is_no_answer(self):
        loud = self.build("loud", "struct Loud { Loud() { puts(\"word\\tnoise\"); fputs(\"noise\", stderr); } } loud;")
        result, _ = self.ask_freely("--", "--plugin", loud, "apply", "")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_a_library_that_crashes_or_hangs_gives_no_answer(self):
        crashing = self.build("crashing", "struct Bad { Bad() { abort(); } } bad;")
        result, _ = self.ask_freely("--", "--plugin", crashing, "apply", "")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        hanging = self.build("hanging", "struct Bad { Bad() { sleep(600); } } bad;")
        result, seconds = self.ask_freely("--", "--plugin", hanging, "apply", "")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.assertLess(seconds, 30)

    def test_questions_of_another_form_have_no_answer(self):
        for words in ((), ("run",), ("--bash",), ("--bash", "value"), ("--bash", "value", " ", "x")):
            result, _ = self.ask_freely(*words)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""), words)

    def test_ids_that_a_terminal_would_obey_are_left_out(self):
        nodes = [node(identity, "ImageValueClampNode") for identity in ("a\u202eb", "a\u2028b", "ab")]
        self.save("odd.json", document(nodes))
        self.assertEqual(self.offered("run", "odd.json", "--set", "a"), ["ab.+"])


class ShellTestCase(CompletionTestCase):
    def assert_no_skip(self, name):
        self.assertIsNotNone(shutil.which(name), f"{name} is missing: ./install-packages --with-tests")


class BashFunctionTest(ShellTestCase):
    """The function of the script, called as bash calls it."""

    def complete(self, line, words=None, breaks=BASH_BREAKS):
        """What bash would offer for a line with the cursor at its end."""
        self.assert_no_skip("bash")
        script = (
            'source "$SCRIPT"; COMP_WORDBREAKS=$BREAKS; COMP_LINE=$LINE; COMP_POINT=${#COMP_LINE}\n'
            'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))\n'
            '_value value "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"\n'
            'for reply in "${COMPREPLY[@]}"; do printf "%s\\n" "$reply"; done\n'
        )
        words = words or line.split(" ")
        done = subprocess.run(
            ["bash", "--norc", "-c", script, "bash", *words],
            capture_output=True,
            text=True,
            timeout=60,
            cwd=self.dir,
            env={**self.environment(), "SCRIPT": str(SCRIPTS / "value.bash"), "LINE": line, "BREAKS": breaks},
        )
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.splitlines()

    def test_replies_hold_what_bash_replaces(self):
        self.assertEqual(self.complete("value sel"), ["selftest"])
        self.assertEqual(self.complete("value apply Value\\ Cl"), ["Value\\ Clamp"])
        self.assertEqual(self.complete('value apply "Value Cl'), ["Value Clamp"])
        self.assertEqual(self.complete("value apply Value\\ Clamp --set clamp=l"), ["low"])
        self.assertEqual(self.complete("value apply Value\\ Clamp --set=clamp=l"), ["low"])
        self.assertEqual(self.complete("value apply Value\\ Clamp --set cl"), ["clamp="])

    def test_ids_with_blanks_and_colons_work(self):
        self.assertEqual(self.complete("value run graph.json --set a"), ["a\\ b.c:d."])
        self.assertEqual(self.complete("value run graph.json --set a\\ b.c:d.cl"), ["d.clamp="])
        self.assertEqual(self.complete("value run graph.json --set a\\ b.c:d.cl", breaks=" \t\n"), ["a\\ b.c:d.clamp="])
        self.assertEqual(self.complete('value run graph.json --set "a b.c:d.clamp=hi'), ["a b.c:d.clamp=high"])

    def test_files_are_bash_s_own(self):
        self.assertEqual(sorted(self.complete("value run ")), ["graph.json", "more tiles", "tiles"])
        self.assertEqual(self.complete("value run graph.json --input height=ol"), ["old.exr"])
        self.assertEqual(self.complete("value run graph.json --output height.image=til"), ["tiles"])
        self.assertEqual(sorted(self.complete("value run graph.json --output-dir ")), ["more tiles", "tiles"])
        self.assertEqual(self.complete("value stats x > no"), ["notes.txt"])

    def test_any_file_is_offered_where_none_has_the_ending(self):
        self.assertEqual(self.complete("value run no"), ["notes.txt"])

    def test_plugs_and_files_are_offered_together(self):
        offered = self.complete("value apply Value\\ Compare -i ")
        self.assertIn("image_a=", offered)
        self.assertIn("new\\ image.exr", offered)
        self.assertIn("tiles/", offered)

    def test_the_words_alone_will_do(self):
        words = ["value", "apply", "Value\\ Clamp", "--set", "clamp", "=", "l"]
        self.assertEqual(self.complete("", words), ["low"])
        self.assertEqual(self.complete("", ["value", "run", "graph.json", "--set", "a\\ b.c", ":", "d.lo"]), ["d.low="])
        self.assertEqual(self.complete("", ["value", "sel"]), ["selftest"])

    def test_the_standard_loader_of_bash_finds_the_script(self):
        folder = Path(self.home) / "bash-completion" / "completions"
        folder.mkdir(parents=True)
        shutil.copy(SCRIPTS / "value.bash", folder / "value")
        script = "source /usr/share/bash-completion/bash_completion; _completion_loader value; complete -p value"
        done = subprocess.run(
            ["bash", "--norc", "-c", script], capture_output=True, text=True, timeout=60, env=self.environment()
        )
        self.assertEqual(done.stdout, "complete -F _value value\n", done.stderr)


class Terminal:
    """A shell on a terminal of its own. Its key Ctrl-X prints the line that is being typed between marks."""

    READY = b"<ready>"

    def __init__(self, command, setup, folder, environment):
        self.process, self.stream = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, environment)
        # What is echoed of the setup does not hold the mark itself.
        self.type(setup + "; printf '<%s>' ready\n")
        self.read_to(self.READY)

    def type(self, text):
        os.write(self.stream, text.encode())

    def read_to(self, mark, seconds=60):
        read = b""
        end = time.monotonic() + seconds
        while mark not in read:
            ready, _, _ = select.select([self.stream], [], [], max(0.0, end - time.monotonic()))
            if not ready:
                raise AssertionError(f"no {mark!r} in {seconds} s, only {read!r}")
            read += os.read(self.stream, 65536)
        return read.split(mark)[0]

    def complete(self, text):
        """The line after the key Tab behind a text; it is wiped out again."""
        self.type(text + "\t\x18")
        line = self.read_to(b">>>").rsplit(b"<<<", 1)[1].decode()
        self.type("\x15")
        return line

    def close(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self.stream)


class TerminalTestCase(ShellTestCase):
    def start(self):
        raise NotImplementedError

    @contextmanager
    def terminal(self):
        terminal = self.start()
        try:
            yield terminal
        finally:
            terminal.close()

    def check(self, lines):
        with self.terminal() as terminal:
            for typed, wanted in lines.items():
                with self.subTest(typed=typed):
                    self.assertEqual(terminal.complete(typed), wanted)


COMMON_LINES = {
    "value sel": "value selftest ",
    "value run gr": "value run graph.json ",
    "value apply Value\\ Cl": "value apply Value\\ Clamp ",
    'value apply "Value Cl': 'value apply "Value Clamp" ',
    "value apply value\\ ad": "value apply Value\\ Add ",
    "value apply Value Cl": "value apply Value Clamp ",
    "value apply 'Value Clamp' --set pro": "value apply 'Value Clamp' --set profile=",
    "value apply Value\\ Clamp --set clamp=l": "value apply Value\\ Clamp --set clamp=low ",
    "value apply Value\\ Clamp --set=clamp=l": "value apply Value\\ Clamp --set=clamp=low ",
    "value run graph.json --set a": "value run graph.json --set a\\ b.c:d.",
    "value run graph.json --input hei": "value run graph.json --input height=",
    "value run graph.json --input height=ol": "value run graph.json --input height=old.exr ",
    "value run graph.json --input height=ne": "value run graph.json --input height=new\\ image.exr ",
    "value run graph.json --output height.image=til": "value run graph.json --output height.image=tiles/",
    'value run graph.json --output "height.image=til': 'value run graph.json --output "height.image=tiles/',
    'value run graph.json --set "a': 'value run graph.json --set "a b.c:d.',
    "value run graph.json --output-dir m": "value run graph.json --output-dir more\\ tiles/",
    "value run graph.json --type hal": "value run graph.json --type half ",
    "value run graph.json --type=hal": "value run graph.json --type=half ",
    "value run graph.json --output-d": "value run graph.json --output-dir ",
    "value --plugin lib": "value --plugin library.so ",
    "value apply Value\\ Compare -i image_b=ol": "value apply Value\\ Compare -i image_b=old.exr ",
    "value run text.json --set x": "value run text.json --set x",
    "value run shell.json --set ": "value run shell.json --set \\$\\(touch\\ ran\\)\\`touch\\ ran\\`\\;.",
    "value run shell.json --set '": "value run shell.json --set '$(touch ran)`touch ran`;.",
}


# An id that a shell would run if it were offered without quotes.
HOSTILE = document([node("$(touch ran)`touch ran`;", "ImageValueClampNode")])


class BashTerminalTest(TerminalTestCase):
    def start(self):
        self.assert_no_skip("bash")
        show = "show() { printf '<<%s%s>%s' '<' \"$READLINE_LINE\" '>>'; }; bind -x '\"\\C-x\":show'"
        setup = f"source '{SCRIPTS / 'value.bash'}'; {show}"
        return Terminal(["bash", "--norc", "--noprofile", "-i"], setup, self.dir, self.environment())

    def test_lines_are_completed_at_the_key(self):
        self.save("text.json", "not JSON")
        self.save("shell.json", HOSTILE)
        self.check(COMMON_LINES)
        self.assertFalse((self.dir / "ran").exists())


class ZshTerminalTest(TerminalTestCase):
    def start(self):
        self.assert_no_skip("zsh")
        show = "show() { print -rn -- '<<<'$BUFFER'>>''>' }; zle -N show; bindkey '^X' show; bindkey '^U' kill-whole-line"
        setup = f"fpath=('{SCRIPTS}' $fpath); autoload -U compinit; compinit -u -D; unsetopt automenu; {show}"
        return Terminal(["zsh", "-f", "-i"], setup, self.dir, self.environment())

    def test_lines_are_completed_at_the_key(self):
        self.save("text.json", "not JSON")
        self.save("shell.json", HOSTILE)
        self.check(COMMON_LINES)
        self.assertFalse((self.dir / "ran").exists())


class FishTest(ShellTestCase):
    def complete(self, line):
        self.assert_no_skip("fish")
        script = f"source '{SCRIPTS / 'value.fish'}'; complete -C \"$LINE\""
        done = subprocess.run(
            ["fish", "--no-config", "-c", script],
            capture_output=True,
            text=True,
            timeout=60,
            cwd=self.dir,
            env={**self.environment(), "LINE": line},
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return [tuple(reply.split("\t")) for reply in done.stdout.splitlines()]

    def names(self, line):
        return sorted(reply[0] for reply in self.complete(line))

    def test_words_come_with_what_they_are(self):
        self.assertEqual(self.complete("value apply --stri"), [("--strip", "Write no metadata")])
        self.assertEqual(self.complete("value sel"), [("selftest", "Runs the self-tests of the node types")])

    def test_names_are_offered_in_any_quotes(self):
        for typed in ("Value\\ Cl", '"Value Cl', "'Value Cl"):
            self.assertEqual(self.names(f"value apply {typed}"), ["Value Clamp"], typed)
        self.assertEqual(self.names("value apply Value Cl"), ["Clamp"])

    def test_values_follow_names(self):
        self.assertEqual(self.names("value apply 'Value Clamp' --set clamp=l"), ["clamp=low"])
        self.assertEqual(self.names("value run graph.json --set a\\ b.c:d.clamp=h"), ["a b.c:d.clamp=high"])
        self.assertEqual(self.names("value run graph.json --type=hal"), ["--type=half"])

    def test_files_are_fish_s_own(self):
        self.assertEqual(self.names("value run "), ["graph.json", "more tiles/", "tiles/"])
        self.assertEqual(self.names("value run graph.json --output-dir "), ["more tiles/", "tiles/"])
        self.assertEqual(self.names("value run graph.json --input height=ne"), ["height=new image.exr"])
        self.assertEqual(self.names("value run no"), ["notes.txt"])

    def test_nothing_is_said_of_a_broken_document(self):
        self.save("text.json", "not JSON")
        self.assertEqual(self.complete("value run text.json --set "), [])


class SpeedTest(CompletionTestCase):
    def test_an_answer_takes_little_of_the_processor(self):
        for words in (("",), ("run", "--"), ("apply", "Va"), ("run", "graph.json", "--set", "a")):
            before = os.times()
            for _ in range(5):
                self.ask(*words)
            after = os.times()
            used = after.children_user + after.children_system - before.children_user - before.children_system
            # Room for a busy machine, and for sanitizers; 50 ms is what a person does not notice.
            self.assertLess(used / 5, 1.0 if SANITIZED else 0.1, words)
