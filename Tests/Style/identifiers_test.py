#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the identifiers of the C++ sources, and the names of their files, to American English.

    identifiers_test.py ROOT    checks the sources of a tree
    identifiers_test.py         checks this script against examples

Comments, strings and included paths are prose or data, and may be spelt otherwise.
"""

import pathlib
import re
import sys

FOLDERS = ("Host", "Value", "Apps", "Tests", "Bench", "Examples")

# A comment, a raw string, a string or a character; not the separators in 1'000.
PROSE = re.compile(
    r'//(?:[^\n\\]|\\.|\\\n)*|/\*.*?\*/|R"([^\s()\\]{0,16})\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"|(?<![0-9A-Za-z_])\'(?:[^\'\\\n]|\\.)+\'',
    re.DOTALL)
INCLUDE = re.compile(r"^[ \t]*#[ \t]*include.*$", re.MULTILINE)
IDENTIFIER = re.compile(r"[A-Za-z_]\w*")
# ColorTable, color_table, RGBColor and kColor are words of their own.
WORD = re.compile(r"[A-Z]+(?=[A-Z][a-z])|[A-Z]?[a-z]+|[A-Z]+")

# The beginning of a word in British English, with its American spelling.
BRITISH = [
    (re.compile(pattern), american)
    for pattern, american in (
        (r"(?=colou|favou|behaviou|neighbou|honou|labour|harbou)(\w+?)ou(r)", r"\1o\2"),
        (r"^grey", "gray"),
        (r"^(cent|met|lit|fib)re(s?)$", r"\1er\2"),
        (r"^centred$", "centered"),
        (r"^(catalog|dialog|analog)ue(s?)$", r"\1\2"),
        (r"^(defen|licen|offen|preten)ce", r"\1se"),
        (r"^artefact", "artifact"),
        (r"^programme(s?)$", r"program\1"),
        (r"^(cancel|label|model|travel|level|total|signal|channel|tunnel)l(ed|ing|er|ers)$", r"\1\2"),
        (r"^(anal|paral|catal)ys(e|es|ed|er|ers|ing)$", r"\1yz\2"),
        (r"^(capital|categor|character|color|custom|deserial|equal|external|factor|final|general|harmon|ideal|"
         r"initial|internal|item|linear|local|material|maxim|memor|minim|modern|neutral|normal|optim|organ|parallel|"
         r"parametr|penal|polar|priorit|quant|random|raster|real|recogn|regular|reinitial|sanit|serial|special|"
         r"stabil|standard|summar|symbol|synchron|token|uninitial|util|vector|visual)is(e|es|ed|er|ers|ing|ation|ations)$",
         r"\1iz\2"),
    )
]


def american(word):
    """The American spelling of a British word in lower case; None where there is nothing to change."""
    for pattern, replacement in BRITISH:
        if pattern.search(word):
            return pattern.sub(replacement, word)
    return None


def faults_in(identifier):
    """Pairs of British words of an identifier and their American spelling."""
    for word in WORD.findall(identifier):
        spelling = american(word.lower())
        if spelling:
            yield word, spelling


def faults_of(text):
    """Line, identifier, word and American spelling of every British word in a source."""
    blank = lambda match: re.sub(r"[^\n]", " ", match.group())  # noqa: E731
    code = INCLUDE.sub(blank, PROSE.sub(blank, text))
    for match in IDENTIFIER.finditer(code):
        for word, spelling in faults_in(match.group()):
            yield code.count("\n", 0, match.start()) + 1, match.group(), word, spelling


def check_tree(root):
    files = sorted(path for folder in FOLDERS for end in ("h", "cpp", "in") for path in (root / folder).rglob(f"*.{end}"))
    faults = []
    for path in files:
        name = path.relative_to(root)
        faults += [f"{name}: the file's name has {word}; in American English {spelling}"
                   for word, spelling in faults_in(path.name.split(".")[0])]
        faults += [f"{name}:{line}: {identifier} has {word}; in American English {spelling}"
                   for line, identifier, word, spelling in faults_of(path.read_text("utf-8"))]
    for fault in faults:
        print(fault)
    if not files:
        print(f"no C++ sources in {root}")
    else:
        print(f"{len(files)} files, {len(faults)} faults")
    return 1 if faults or not files else 0


def check_examples():
    british = {
        "NeighbourCount": "neighbor", "kColours": "colors", "grey_value": "gray", "Greyscale": "grayscale",
        "NodeCatalogue": "catalog", "centre_x": "center", "Centred": "centered", "NormaliseRange": "normalize",
        "kQuantisation": "quantization", "Initialised": "initialized", "UninitialisedMemory": "uninitialized",
        "IsCancelled": "canceled", "num_labelled": "labeled", "SynchroniseRGBColour": "synchronize",
    }
    for identifier, expected in british.items():
        found = [spelling for _, spelling in faults_in(identifier)]
        assert found[:1] == [expected], (identifier, found)
    american_ones = ("GetColorMode", "Rise", "noise_precise", "Wise", "raised", "Otherwise", "Promise", "exercise", "four",
                     "ContourLines", "Hour", "pour", "kSource", "resource", "Center", "Gray", "Genre", "Value", "Queue",
                     "Cells", "called", "filled", "Roller", "Surprise", "Comprise", "linear", "normals", "Rectangle")
    for identifier in american_ones:
        assert not list(faults_in(identifier)), identifier
    text = ('#include "Grey.h"\n// colour\n/* the\n centre */ int grey = 1\'000; const char* s = "colour \\" grey";\n'
            'auto r = R"x(grey " )" colour)x"; char c = \'"\'; int Colour;\n')
    assert [(line, name) for line, name, _, _ in faults_of(text)] == [(4, "grey"), (5, "Colour")], list(faults_of(text))
    print(f"{len(british) + len(american_ones) + 1} examples")
    return 0


sys.exit(check_tree(pathlib.Path(sys.argv[1])) if len(sys.argv) > 1 else check_examples())
