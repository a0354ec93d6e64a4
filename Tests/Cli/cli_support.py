"""What the tests of the command line share.

Finding and starting the program, image files in and out (OpenImageIO), documents, and a
reference model of images and of the seven arithmetic nodes in plain numpy float32. The model is
written from the rules that the program promises to its users; it never calls the program.
"""

import json
import math
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

import numpy as np
import OpenImageIO as oiio

F = np.float32
REPOSITORY = Path(__file__).resolve().parents[2]
DEFAULT_PROGRAM = REPOSITORY / "build" / "release" / "bin" / "value"
OVERSIZE = "Output image is larger than maximum image size."

DONE, NODE_ERROR, USAGE, INVALID, FILE_ERROR, PLUGIN_ERROR = range(6)

COLOR, SIGNED, VALUE, PAIR = range(4)
CHANNELS = {COLOR: 4, SIGNED: 4, VALUE: 1, PAIR: 2}

# Whether the program is built with sanitizers. It is slower then, and its memory says nothing.
SANITIZED = os.environ.get("VALUE_SANITIZED") == "1"
SANITIZER_EXIT = 99
SLOWER = 10

PROGRESS = re.compile(r"value: info: (\d+ of \d+ \w+ done, |still at work )")

NAN = float("nan")
INF = float("inf")


# ---------------------------------------------------------------------------------------------
# The program


def find_program():
    """The program under test: VALUE_PROGRAM, else the one of the release build."""
    named = os.environ.get("VALUE_PROGRAM")
    program = Path(named) if named else DEFAULT_PROGRAM
    program = Path(os.path.abspath(program))
    if not (program.is_file() and os.access(program, os.X_OK)):
        raise AssertionError(
            f"the program under test is missing: {program} (build it, or set VALUE_PROGRAM)"
        )
    return program


class Result:
    """How one run of the program ended."""

    def __init__(self, arguments, code, out, err):
        self.arguments = arguments
        self.code = code
        self.out = out
        self.err = err
        # Built with sanitizers, the program leaves standard error open for their reports, and so for
        # the lines that the PNG library writes there itself.
        # Whatever lasts longer than ten seconds on a busy machine says so.
        self.err_lines = [
            line
            for line in err.splitlines()
            if line.strip()
            and not (SANITIZED and line.startswith("libpng error: "))
            and not PROGRESS.match(line)
        ]

    def __str__(self):
        shown = " ".join(str(argument) for argument in self.arguments)
        return (
            f"value {shown}\nexit code {self.code}\n"
            f"--- standard output\n{self.out[-3000:]}\n--- standard error\n{self.err[-3000:]}"
        )

    def json_values(self):
        """Every JSON value on standard output; fails when it holds anything else."""
        decoder = json.JSONDecoder()
        text = self.out
        position = 0
        values = []
        while True:
            while position < len(text) and text[position].isspace():
                position += 1
            if position == len(text):
                return values
            value, position = decoder.raw_decode(text, position)
            values.append(value)


def sanitizer_libraries():
    """What must be loaded before any other library where the program is built with sanitizers."""
    if not SANITIZED:
        return []
    listed = subprocess.run(
        ["ldd", str(find_program())], capture_output=True, text=True, timeout=60, check=True
    )
    return re.findall(r"=> (\S*/lib(?:a|ub)san\S*)", listed.stdout)


def environment_with(changes):
    """This process's environment with some variables set, or removed where the value is None."""
    # Node libraries of whoever runs the tests stay out of them.
    environment = {**os.environ, "VALUE_PLUGIN_PATH": "", **(changes or {})}
    if SANITIZED:
        # The leak check crashes where worker threads end while it looks at them; the tests of the
        # libraries look for leaks. A report ends with a code that the program itself never has.
        found = environment.get("ASAN_OPTIONS")
        own = f"detect_leaks=0:exitcode={SANITIZER_EXIT}"
        environment["ASAN_OPTIONS"] = f"{found}:{own}" if found else own
        environment["UBSAN_OPTIONS"] = f"print_stacktrace=1:exitcode={SANITIZER_EXIT}"
    return {name: value for name, value in environment.items() if value is not None}


def run_value(
    *arguments,
    cwd=None,
    timeout=120,
    program=None,
    environment=None,
    stdout=subprocess.PIPE,
    prepare=None,
):
    """Runs the program with its streams captured; an end by a signal is always a failure.

    environment: variables to set or, where the value is None, to remove. stdout: where standard
    output goes instead. prepare: called in the new process before the program starts, for limits.
    """
    arguments = [str(argument) for argument in arguments]
    ended = subprocess.run(
        [str(program or find_program()), *arguments],
        cwd=cwd,
        env=environment_with(environment),
        stdin=subprocess.DEVNULL,
        stdout=stdout,
        stderr=subprocess.PIPE,
        timeout=timeout * (SLOWER if SANITIZED else 1),
        preexec_fn=prepare,
        check=False,
    )
    result = Result(
        arguments,
        ended.returncode,
        (ended.stdout or b"").decode("utf-8", "replace"),
        ended.stderr.decode("utf-8", "replace"),
    )
    if not 0 <= result.code <= 5:
        raise AssertionError(f"the program broke down\n{result}")
    return result


# ---------------------------------------------------------------------------------------------
# Reading answers in JSON without knowing more of their keys than plain words


def dictionaries(value):
    """Every object inside a JSON value, the value itself first."""
    if isinstance(value, dict):
        yield value
        for item in value.values():
            yield from dictionaries(item)
    elif isinstance(value, list):
        for item in value:
            yield from dictionaries(item)


def leaves(value, path=""):
    """(path of keys in lower case, leaf) of every leaf of a JSON value."""
    if isinstance(value, dict):
        for key, item in value.items():
            yield from leaves(item, f"{path}/{key.lower()}")
    elif isinstance(value, list):
        for item in value:
            yield from leaves(item, path)
    else:
        yield path, value


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def numbers(value):
    return [leaf for _, leaf in leaves(value) if is_number(leaf)]


def strings(value):
    """All strings of a JSON value, keys included."""
    found = [leaf for _, leaf in leaves(value) if isinstance(leaf, str)]
    for item in dictionaries(value):
        found.extend(item.keys())
    return found


def leaves_under(value, *words):
    """The leaves whose path of keys has one of the words in it."""
    return [leaf for path, leaf in leaves(value) if any(word in path for word in words)]


def holds_number(values, wanted, tolerance=1e-6):
    return any(
        is_number(value) and abs(value - wanted) <= tolerance * max(1.0, abs(wanted))
        for value in values
    )


# ---------------------------------------------------------------------------------------------
# Pictures: samples with their header


def round_half_down(x):
    """Nearest whole number, halves going down; the argument is narrowed to float first."""
    x = F(x)
    low = np.floor(x)
    return int(np.ceil(x)) if F(x - low) > F(0.5) else int(low)


class Picture:
    """An image as the library sees it: straight colour, float32, height x width x channels."""

    def __init__(self, data, mode, pin=(0, 0), pivot=(0.0, 0.0), low=None, high=None, outside=0.0):
        data = np.asarray(data, dtype=F)
        if data.ndim == 2:
            data = data[:, :, np.newaxis]
        assert data.shape[2] == CHANNELS[mode], (data.shape, mode)
        self.data = data
        self.mode = mode
        self.pin = (int(pin[0]), int(pin[1]))
        self.pivot = (F(pivot[0]), F(pivot[1]))
        self.low = F((-1.0 if mode == SIGNED else 0.0) if low is None else low)
        self.high = F(1.0 if high is None else high)
        self.outside = F(outside)

    @property
    def width(self):
        return self.data.shape[1]

    @property
    def height(self):
        return self.data.shape[0]

    def box(self):
        left = self.pin[0] - round_half_down(F(self.width) * self.pivot[0])
        top = self.pin[1] - round_half_down(F(self.height) * self.pivot[1])
        return left, top, left + self.width, top + self.height

    def as_value(self):
        """The picture read as one number per pixel."""
        if self.mode == VALUE:
            return self
        low, high = self.low, self.high
        if self.mode == COLOR:
            red, green, blue, opacity = (self.data[:, :, k] for k in range(4))
            with np.errstate(all="ignore"):
                data = ((opacity * green + opacity * red) + opacity * blue) * F(0.33333334)
            low, high = 0.0, 1.0
        elif self.mode == SIGNED:
            data = self.data[:, :, 2]
            low, high = -1.0, 1.0
        else:
            data = self.data[:, :, 0]
        return Picture(data, VALUE, self.pin, self.pivot, low, high, self.outside)


def finite_range(data):
    finite = data[np.isfinite(data)]
    return (F(finite.min()), F(finite.max())) if finite.size else (F(0), F(0))


def _double_power(x, y):
    """x to the power y as the C library has it, in double."""
    odd = math.isfinite(y) and y == math.floor(y) and abs(y) < 2.0**53 and y % 2 == 1
    try:
        return math.pow(x, y)
    except OverflowError:
        return -INF if x < 0 and odd else INF
    except ValueError:
        if x == 0:
            return math.copysign(INF, x) if odd else INF
        return NAN


def _power(first, second):
    first, second = np.broadcast_arrays(first, second)
    flat = [_double_power(float(x), float(y)) for x, y in zip(first.ravel(), second.ravel())]
    return np.array(flat, dtype=np.float64).astype(F).reshape(first.shape)


# Per operation: the two-value form and the one-value form with its constant.
OPERATIONS = {
    "Add": (lambda f, s: f + s, lambda v, a: v + a),
    "Subtract": (lambda f, s: f - s, lambda v, a: v - a),
    "Multiply": (lambda f, s: f * s, lambda v, a: v * a),
    "Divide": (lambda f, s: f / s, lambda v, a: v / a),
    "Power": (_power, lambda v, a: v),
    "Minimum": (lambda f, s: np.where(s < f, s, f), lambda v, a: np.where(a < v, a, v)),
    "Maximum": (lambda f, s: np.where(s > f, s, f), lambda v, a: np.where(a > v, a, v)),
}

DEFAULT_CONSTANT = {
    "Add": 0.0,
    "Subtract": 0.0,
    "Multiply": 1.0,
    "Divide": 1.0,
    "Power": 0.0,
    "Minimum": 1000.0,
    "Maximum": -1000.0,
}


def arithmetic(name, pictures, constant=None):
    """What the arithmetic node of that name makes of the pictures."""
    two, one = OPERATIONS[name]
    first = pictures[0]
    with np.errstate(all="ignore"):
        if len(pictures) == 1:
            number = F(DEFAULT_CONSTANT[name] if constant is None else constant)
            data = one(first.data, number).astype(F)
            low, high = finite_range(data)
            return Picture(data, first.mode, first.pin, first.pivot, low, high, 0.0)

        if len({picture.mode for picture in pictures}) > 1:
            pictures = [picture.as_value() for picture in pictures]
        boxes = [picture.box() for picture in pictures]
        left, top = min(b[0] for b in boxes), min(b[1] for b in boxes)
        right, bottom = max(b[2] for b in boxes), max(b[3] for b in boxes)
        width, height = right - left, bottom - top
        pivot = first.pivot
        if len(set(boxes)) > 1:
            pivot = (
                F(first.pin[0] - left) / F(width),
                F(first.pin[1] - top) / F(height),
            )
        total, outside = None, None
        for picture, box in zip(pictures, boxes):
            layer = np.full((height, width, picture.data.shape[2]), picture.outside, dtype=F)
            layer[box[1] - top : box[3] - top, box[0] - left : box[2] - left] = picture.data
            if total is None:
                total, outside = layer, picture.outside
            else:
                total = two(total, layer).astype(F)
                outside = F(two(np.array([outside]), np.array([picture.outside]))[0])
        low, high = finite_range(total)
        return Picture(total, pictures[0].mode, first.pin, pivot, low, high, outside)


def sample_picture(mode, width=5, height=3, seed=1, span=(-4.0, 4.0), **header):
    """A small picture of arbitrary values inside the span. Opacities are powers of two, so that
    multiplying colour by them and dividing it out again is exact."""
    source = np.random.RandomState(seed)
    data = source.uniform(*span, (height, width, CHANNELS[mode])).astype(F)
    if mode == COLOR:
        data[:, :, 3] = source.choice([1.0, 0.5, 0.25, 0.125], (height, width))
    return Picture(data, mode, **header)


# ---------------------------------------------------------------------------------------------
# Image files


class StoredImage:
    """An image file as it lies on disk: samples as stored, type name, and the five notes that
    carry an image's header."""

    def __init__(self, data, kind, names, alpha, straight, notes):
        self.data = data
        self.kind = kind
        self.names = names
        self.alpha = alpha
        self.straight = straight
        self.mode = notes.get("value:mode")
        self.low = notes.get("value:low")
        self.high = notes.get("value:high")
        self.pin = notes.get("value:pin")
        self.pivot = notes.get("value:pivot")


def write_file(path, data, kind="float", names=None, straight=None, notes=()):
    """Stores samples as they are. With straight set, the file says that its colour is not
    multiplied by opacity; notes are (name, type, value)."""
    path = Path(path)
    data = np.ascontiguousarray(data)
    if data.ndim == 2:
        data = np.ascontiguousarray(data[:, :, np.newaxis])
    height, width, channels = data.shape
    layout = oiio.ImageSpec(width, height, channels, kind)
    usual = {1: ("Y",), 2: ("Y", "A"), 3: ("R", "G", "B"), 4: ("R", "G", "B", "A")}
    layout.channelnames = tuple(names or usual.get(channels) or layout.channelnames)
    if "A" not in layout.channelnames:
        layout.alpha_channel = -1
    if straight:
        layout.attribute("oiio:UnassociatedAlpha", 1)
    for name, type_name, value in notes:
        layout.attribute(name, type_name, value)
    output = oiio.ImageOutput.create(str(path))
    assert output is not None, oiio.geterror()
    assert output.open(str(path), layout), output.geterror()
    assert output.write_image(data), output.geterror()
    output.close()
    return path


def header_notes(mode, low, high, pin, pivot):
    return [
        ("value:mode", "int", int(mode)),
        ("value:low", "float", float(low)),
        ("value:high", "float", float(high)),
        ("value:pin", "int[2]", (int(pin[0]), int(pin[1]))),
        ("value:pivot", "float[2]", (float(pivot[0]), float(pivot[1]))),
    ]


def stored_samples(picture):
    """A picture's samples as a file with multiplied colour holds them."""
    data = picture.data.copy()
    if picture.mode == COLOR:
        with np.errstate(all="ignore"):
            data[:, :, :3] *= data[:, :, 3:4]
    return data


def write_picture(path, picture):
    """Stores a picture with its whole header in an EXR file of float samples."""
    data = stored_samples(picture)
    if picture.mode == COLOR:
        opacity = picture.data[:, :, 3:4]
        again = data[:, :, :3] / np.where(opacity == 0, F(1), opacity)
        assert same_bits(again, picture.data[:, :, :3]), "pick opacities that are powers of two"
    names = ("R", "G") if picture.mode == PAIR else None
    notes = header_notes(picture.mode, picture.low, picture.high, picture.pin, picture.pivot)
    return write_file(path, data, names=names, notes=notes)


def read_file(path):
    """Reads a file's samples exactly as stored, whole numbers included."""
    configuration = oiio.ImageSpec()
    configuration.attribute("oiio:UnassociatedAlpha", 1)
    source = oiio.ImageInput.open(str(path), configuration)
    assert source is not None, f"{path}: {oiio.geterror()}"
    layout = source.spec()
    data = source.read_image(layout.format)
    if data is None:
        raise AssertionError(f"{path}: {source.geterror()}")
    data = np.asarray(data).reshape(layout.height, layout.width, layout.nchannels)
    straight = bool(layout.get_int_attribute("oiio:UnassociatedAlpha", 0)) or str(
        path
    ).lower().endswith(".png")
    notes = {item.name: item.value for item in layout.extra_attribs}
    stored = StoredImage(
        data, str(layout.format), layout.channelnames, layout.alpha_channel, straight, notes
    )
    source.close()
    return stored


def same_bits(got, wanted):
    """Bit for bit the same floats; any NaN counts as any other."""
    got = np.ascontiguousarray(got, dtype=F)
    wanted = np.ascontiguousarray(wanted, dtype=F)
    if got.shape != wanted.shape:
        return False
    equal = got.view(np.uint32) == wanted.view(np.uint32)
    return bool(np.all(equal | (np.isnan(got) & np.isnan(wanted))))


def describe_difference(got, wanted):
    """Small images whole, of large ones the first sample that differs and how many there are."""
    if got.size <= 400:
        return f"got\n{got.tolist()}\nexpected\n{wanted.tolist()}"
    apart = ~((got == wanted) | (np.isnan(got) & np.isnan(wanted)))
    y, x, channel = (int(i) for i in np.argwhere(apart)[0]) if apart.any() else (0, 0, 0)
    return (
        f"{int(apart.sum())} of {got.size} samples, the first at row {y}, column {x}, channel "
        f"{channel}: {float(got[y, x, channel])!r} instead of {float(wanted[y, x, channel])!r}"
    )


# ---------------------------------------------------------------------------------------------
# Documents


def node(identity, type_name, enabled=None, version=None, **attributes):
    made = {"id": identity, "type": type_name}
    if enabled is not None:
        made["enabled"] = enabled
    if version is not None:
        made["attributeVersion"] = version
    if attributes:
        made["attributes"] = attributes
    return made


def link(source, target, index=None):
    made = {"from": source, "to": target}
    if index is not None:
        made["index"] = index
    return made


def output(source, path, kind=None):
    made = {"from": source, "path": str(path)}
    if kind is not None:
        made["type"] = kind
    return made


def document(nodes, connections=(), outputs=()):
    return {
        "format": "value-graph",
        "version": 1,
        "nodes": list(nodes),
        "connections": list(connections),
        "outputs": list(outputs),
    }


# ---------------------------------------------------------------------------------------------
# The base of all test cases


class ValueTestCase(unittest.TestCase):
    """A test with a folder of its own that is also the program's working directory."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        find_program()

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="value-cli-")
        self.addCleanup(folder.cleanup)
        self.dir = Path(folder.name)

    def value(self, *arguments, cwd=None, code=DONE, **options):
        """Runs the program in the test's folder, with the options of run_value, and checks the exit
        code (None: any)."""
        result = run_value(*arguments, cwd=cwd or self.dir, **options)
        if code is not None and result.code != code:
            self.fail(f"exit code {result.code}, expected {code}\n{result}")
        return result

    def picture(self, name, picture):
        return write_picture(self.dir / name, picture)

    def save(self, name, content):
        """Stores a document (or raw text or bytes) in the test's folder."""
        path = self.dir / name
        if isinstance(content, bytes):
            path.write_bytes(content)
        elif isinstance(content, str):
            path.write_text(content, encoding="utf-8")
        else:
            path.write_text(json.dumps(content, indent=1), encoding="utf-8")
        return path

    def assert_quiet(self, result):
        self.assertEqual(result.err_lines, [], str(result))

    def assert_names(self, result, *words):
        """Some line on standard error has all of the words in it."""
        if not any(all(word in line for word in words) for line in result.err_lines):
            self.fail(f"no line on standard error names {', '.join(map(repr, words))}\n{result}")

    def assert_one_error(self, result, *words):
        """Exactly one line on standard error, with all of the words in it."""
        self.assertEqual(len(result.err_lines), 1, str(result))
        self.assert_names(result, *words)

    def assert_files(self, *names, folder=None):
        """The folder holds these entries and nothing else, hidden or temporary ones included."""
        folder = folder or self.dir
        self.assertEqual(sorted(entry.name for entry in folder.iterdir()), sorted(names))

    def assert_samples(self, got, wanted, context=""):
        got = np.asarray(got)
        wanted = np.asarray(wanted, dtype=F)
        if got.ndim == 2:
            got = got[:, :, np.newaxis]
        if wanted.ndim == 2:
            wanted = wanted[:, :, np.newaxis]
        self.assertEqual(got.shape, wanted.shape, context)
        if not same_bits(got, wanted):
            self.fail(f"samples differ {context}\n{describe_difference(got, wanted)}")

    def assert_close(self, got, wanted, tolerance=1e-6):
        got = np.asarray(got, dtype=np.float64)
        wanted = np.asarray(wanted, dtype=np.float64)
        if wanted.ndim == 2:
            wanted = wanted[:, :, np.newaxis]
        self.assertEqual(got.shape, wanted.shape)
        worst = float(np.max(np.abs(got - wanted)))
        self.assertLessEqual(worst, tolerance, describe_difference(got, wanted))

    def assert_header(self, stored, picture):
        """The five notes of a stored file are those of the picture."""
        self.assertEqual(stored.mode, picture.mode, "colour mode")
        for name in ("low", "high"):
            got = getattr(stored, name)
            self.assertIsNotNone(got, f"value:{name} is not stored")
            self.assertEqual(F(got), getattr(picture, name), f"value:{name}")
        self.assertIsNotNone(stored.pin, "value:pin is not stored")
        self.assertEqual(tuple(int(v) for v in stored.pin), picture.pin, "pin")
        self.assertIsNotNone(stored.pivot, "value:pivot is not stored")
        self.assertEqual(tuple(F(v) for v in stored.pivot), picture.pivot, "pivot")

    def assert_picture(self, path, picture):
        """An EXR file of float samples holds exactly this picture, header included. The colour
        of pixels without opacity is not looked at."""
        self.assertTrue(Path(path).is_file(), f"{path} is missing")
        stored = read_file(path)
        self.assertEqual(stored.kind, "float")
        wanted = stored_samples(picture)
        got = stored.data.copy()
        if picture.mode == COLOR and got.shape == wanted.shape:
            clear = picture.data[:, :, 3] == 0
            got[clear, :3] = 0
            wanted[clear, :3] = 0
        self.assert_samples(got, wanted, str(path))
        self.assert_header(stored, picture)

    def assert_json_error(self, result, *words):
        """Standard output carries an object with "error" that has the words in it."""
        found = [
            item
            for value in result.json_values()
            for item in dictionaries(value)
            if "error" in item
        ]
        self.assertTrue(found, f"no object with \"error\" on standard output\n{result}")
        for word in words:
            self.assertTrue(
                any(word in json.dumps(item, ensure_ascii=False) for item in found),
                f"the error object does not name {word!r}\n{result}",
            )
