#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the shipped schema of graph documents and `value check` against each other.

Every document that the schema refuses must be refused by the program, and every good one accepted by both. The program
refuses more: plugs, cycles, old names and the types of other libraries are beyond a schema. Of the attributes of the
types that come with the program, the schema has the kinds and the words, with what the nodes say of them as hints.
"""

import copy
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import jsonschema

REPOSITORY = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = os.environ["VALUE_PROGRAM"]
SCHEMA = json.loads((REPOSITORY / "Host" / "Documents" / "graph.schema.json").read_text("utf-8"))

GOOD = {
    "$schema": "graph.schema.json",
    "format": "value-graph",
    "version": 2,
    "nodes": [
        {"id": "height", "type": "ImageTerrainNode", "enabled": True, "attributes": {"frame": [0, 0, 8, 8], "seed": 2}},
        {"id": "by.numbers", "type": [10, 320, 5], "attributeVersion": 0, "attributes": {"value": 0.25},
         "position": [220, -0.5], "note": "sea level"},
        {"id": "limit", "type": "ImageValueClampNode", "attributes": {"profile": "smooth", "high": 1}},
        {"id": "bend", "type": "ImageRerouteNode", "position": [440, 0]},
    ],
    "connections": [
        {"from": "height.image", "to": "by.numbers.image", "index": 0},
        {"from": "by.numbers.image", "to": "bend.image"},
        {"from": "bend.image", "to": "limit.image"},
    ],
    "outputs": [
        {"from": "limit.image", "path": "a.exr", "type": "half"},
        {"from": "height.image", "path": "b.png", "type": "auto", "samples": "unit", "opacity": "keep",
         "metadata": "strip", "layer": ""},
    ],
    "frames": [{"title": "Height", "box": [-20, -20, 460, 160], "color": "#3b7a57"}, {"box": [0, 0, 1, 1]}],
    "view": {"center": [110, 0], "zoom": 1, "shown": "limit.image"},
}

# A change to the good document, by the path to a value and what takes its place; DELETE removes it.
DELETE = object()
CHANGES = {
    "no format": (["format"], DELETE),
    "other format": (["format"], "graph"),
    "no version": (["version"], DELETE),
    "version as text": (["version"], "1"),
    "version 3": (["version"], 3),
    "no nodes": (["nodes"], DELETE),
    "nodes as object": (["nodes"], {}),
    "unknown key": (["comment"], "hello"),
    "node as text": (["nodes", 0], "height"),
    "node without id": (["nodes", 0, "id"], DELETE),
    "empty id": (["nodes", 0, "id"], ""),
    "id as number": (["nodes", 0, "id"], 7),
    "node without type": (["nodes", 0, "type"], DELETE),
    "two numbers": (["nodes", 1, "type"], [10, 320]),
    "negative number": (["nodes", 1, "type"], [10, 320, -5]),
    "fractional number": (["nodes", 1, "type"], [10, 320, 5.5]),
    "unknown key of a node": (["nodes", 0, "name"], "x"),
    "enabled as number": (["nodes", 0, "enabled"], 1),
    "negative version": (["nodes", 1, "attributeVersion"], -1),
    "fractional version": (["nodes", 1, "attributeVersion"], 0.5),
    "attributes as list": (["nodes", 0, "attributes"], []),
    "attribute null": (["nodes", 0, "attributes", "seed"], None),
    "attribute as object": (["nodes", 0, "attributes", "seed"], {"x": 1}),
    "attribute as list of words": (["nodes", 0, "attributes", "frame"], ["a", "b", "c", "d"]),
    "attribute as long list": (["nodes", 0, "attributes", "frame"], [1, 2, 3, 4, 5]),
    "number as text": (["nodes", 2, "attributes", "high"], "1"),
    "unknown word": (["nodes", 2, "attributes", "profile"], "round"),
    "frame of two numbers": (["nodes", 0, "attributes", "frame"], [8, 8]),
    "connections as object": (["connections"], {}),
    "connection without from": (["connections", 0, "from"], DELETE),
    "connection without to": (["connections", 0, "to"], DELETE),
    "plug without dot": (["connections", 0, "from"], "height"),
    "plug without name": (["connections", 0, "from"], "height."),
    "negative index": (["connections", 0, "index"], -1),
    "index as text": (["connections", 0, "index"], "0"),
    "unknown key of a connection": (["connections", 0, "weight"], 1),
    "outputs as text": (["outputs"], "a.exr"),
    "output without from": (["outputs", 0, "from"], DELETE),
    "output without path": (["outputs", 0, "path"], DELETE),
    "empty path": (["outputs", 0, "path"], ""),
    "unknown sample type": (["outputs", 0, "type"], "uint32"),
    "unknown key of an output": (["outputs", 0, "quality"], 90),
    "schema as number": (["$schema"], 1),
    "long id": (["nodes", 0, "id"], "x" * 201),
    "control character in an id": (["nodes", 0, "id"], "a\u001b"),
    "equals sign in an id": (["nodes", 0, "id"], "a=b"),
    "short position": (["nodes", 0, "position"], [1]),
    "position of words": (["nodes", 0, "position"], ["1", "2"]),
    "note as number": (["nodes", 0, "note"], 1),
    "zero in a path": (["outputs", 0, "path"], "a\u0000.exr"),
    "unknown samples": (["outputs", 0, "samples"], "raw"),
    "unknown opacity": (["outputs", 0, "opacity"], "no"),
    "unknown metadata": (["outputs", 0, "metadata"], "drop"),
    "layer as number": (["outputs", 0, "layer"], 1),
    "frames as object": (["frames"], {}),
    "frame without box": (["frames", 1, "box"], DELETE),
    "short box": (["frames", 1, "box"], [0, 0, 1]),
    "title as number": (["frames", 0, "title"], 1),
    "colour by name": (["frames", 0, "color"], "red"),
    "unknown key of a frame": (["frames", 0, "size"], 1),
    "view as list": (["view"], []),
    "short center": (["view", "center"], [1]),
    "zoom 0": (["view", "zoom"], 0),
    "shown as number": (["view", "shown"], 1),
    "unknown key of the view": (["view", "angle"], 1),
}


def changed(path, value):
    document = copy.deepcopy(GOOD)
    place = document
    for step in path[:-1]:
        place = place[step]
    if value is DELETE:
        del place[path[-1]]
    else:
        place[path[-1]] = value
    return document


class SchemaTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def check(self, file):
        return subprocess.run([PROGRAM, "check", str(file)], capture_output=True, text=True, check=False)

    def check_document(self, document):
        file = pathlib.Path(self.folder.name) / "graph.json"
        file.write_text(json.dumps(document), "utf-8")
        return self.check(file)

    def test_the_schema_is_one(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_good_document(self):
        jsonschema.validate(GOOD, SCHEMA)
        for version in (1, 2):
            result = self.check_document({**GOOD, "version": version})
            self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_examples(self):
        examples = REPOSITORY / "Examples"
        files = sorted([*examples.glob("*.json"), *examples.glob("Editor/*.json")])
        files += sorted((REPOSITORY / "Value/Nodes").glob("*/*.json"))
        self.assertGreater(len(files), 0)
        # Where they stand, the folder that they write to need not be there.
        root = pathlib.Path(self.folder.name)
        (root / "out").mkdir()
        for file in files:
            with self.subTest(file=file.name):
                text = file.read_text("utf-8")
                jsonschema.validate(json.loads(text), SCHEMA)
                moved = root / file.relative_to(REPOSITORY)
                moved.parent.mkdir(parents=True, exist_ok=True)
                moved.write_text(text, "utf-8")
                result = self.check(moved)
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_hints_say_what_the_nodes_say(self):
        answer = subprocess.run([PROGRAM, "nodes", "Value Range", "--json"], capture_output=True, text=True, check=True)
        node = json.loads(answer.stdout)
        (hints,) = [
            entry["then"]
            for entry in SCHEMA["$defs"]["node"]["allOf"]
            if entry["if"]["properties"]["type"]["const"] == "ImageValueRangeNode"
        ]
        self.assertEqual(hints["description"], node["sentence"])
        attributes = hints["properties"]["attributes"]["properties"]
        self.assertEqual(list(attributes), [attribute["name"] for attribute in node["attributes"]])
        for attribute in node["attributes"]:
            hint = attributes[attribute["name"]]
            self.assertEqual(hint["description"], attribute["text"])
            self.assertEqual(hint["default"], attribute["default"])
            self.assertEqual(hint.get("enum"), attribute.get("choices"))

    def test_what_the_schema_refuses_the_program_refuses(self):
        for name, (path, value) in CHANGES.items():
            with self.subTest(change=name):
                document = changed(path, value)
                with self.assertRaises(jsonschema.ValidationError):
                    jsonschema.validate(document, SCHEMA)
                result = self.check_document(document)
                self.assertEqual(result.returncode, 3, result.stderr)
                self.assertNotEqual(result.stderr.strip(), "")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], "-v"])
