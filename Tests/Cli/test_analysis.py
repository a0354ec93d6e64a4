"""The six analysis nodes, held against a plain model of their rules (analysis_model.py).

Most tests evaluate many settings of a node in one document. Samples are compared bit for bit;
only a blur and ambient occlusion have a tolerance.
"""

import itertools
import math

import numpy as np

import analysis_model as model
from cli_support import (
    COLOR, FILE_ERROR, INF, INVALID, NAN, NODE_ERROR, OVERSIZE, PAIR, SIGNED, USAGE, VALUE, F,
    Picture, ValueTestCase, document, link, node, output, read_file, sample_picture,
)

OCCLUSION_ACCURACY = 2e-4
BLUR_ACCURACY = 1e-5

# Display name, type name and model of each node, by a short name of its own.
NODES = {
    "relief": ("Relief", "ImageReliefNode", model.relief),
    "distance": ("Distance", "ImageEuclideanDistanceNode", model.distance),
    "gradient": ("Value Gradient", "ImageComputeGradientNode", model.gradient),
    "occlusion": ("Ambient Occlusion", "ImageAmbientOcclusionNode", model.ambient_occlusion),
    "components": (
        "Connected Components", "ImageConnectedComponentsNode", model.connected_components,
    ),
    "edges": ("Component Edges", "ImageComponentEdgesNode", model.component_edges),
}
PLUGS = {"gradient": ("output_x", "output_y")}

FLAGS = (True, False)
SIZES = ((7, 5), (1, 9), (9, 1), (2, 2), (1, 1), (4, 3), (3, 8))
PLACES = ({}, {"pin": (4, -7), "pivot": (0.25, 0.5)}, {"pin": (-3, 2), "pivot": (-0.5, 1.5)})

ABOVE_HALF = np.nextafter(F(0.5), F(1))
SMALLEST = np.frombuffer(np.uint32(1).tobytes(), dtype=F)[0]


def plugs_of(kind):
    return PLUGS.get(kind, ("image",))


def settings(**choices):
    """Every combination of the listed values, as attributes."""
    for values in itertools.product(*choices.values()):
        yield dict(zip(choices, values))


def random_values(width, height, seed=1, span=(0.0, 1.0), share=None, **header):
    """Arbitrary values; with share, only that part of the pixels is other than zero."""
    source = np.random.RandomState(seed)
    data = source.uniform(*span, (height, width)).astype(F)
    if share is not None:
        data[source.uniform(size=data.shape) >= share] = 0
    return Picture(data, VALUE, **header)


def stepped(width, height, steps, seed=1, mode=VALUE, **header):
    """Arbitrary values out of 0, 1 / steps, ..., 1 in every channel."""
    source = np.random.RandomState(seed)
    channels = {VALUE: 1, PAIR: 2}.get(mode, 4)
    data = (source.randint(0, steps + 1, (height, width, channels)) / steps).astype(F)
    if mode == COLOR:
        data[:, :, 3] = source.choice([1.0, 0.5], (height, width))
    return Picture(data, mode, **header)


class AnalysisTestCase(ValueTestCase):
    def reader(self, identity, picture, **attributes):
        self.picture(f"{identity}.exr", picture)
        return node(identity, "ImageReaderNode", path=f"{identity}.exr", **attributes)

    def run_document(self, content, *options, code=0):
        self.save("graph.json", content)
        return self.value("run", "graph.json", *options, code=code)

    def run_cases(self, kind, cases, *options):
        """Runs one node per case, all in one document; a case is a picture and the attributes.
        Yields the case, and per output its path and the model's picture."""
        _, type_name, reference = NODES[kind]
        readers, nodes, connections, outputs = {}, [], [], []
        cases = list(cases)
        for index, (picture, attributes) in enumerate(cases):
            if id(picture) not in readers:
                name = f"r{len(readers)}"
                readers[id(picture)] = self.reader(name, picture)
            nodes.append(node(f"n{index}", type_name, **attributes))
            connections.append(link(readers[id(picture)]["id"] + ".image", f"n{index}.image"))
            for plug in plugs_of(kind):
                outputs.append(output(f"n{index}.{plug}", f"n{index}-{plug}.exr"))
        nodes = [*readers.values(), *nodes]
        self.assert_quiet(self.run_document(document(nodes, connections, outputs), *options))
        for index, (picture, attributes) in enumerate(cases):
            wanted = reference(picture, **attributes)
            wanted = wanted if isinstance(wanted, tuple) else (wanted,)
            paths = [self.dir / f"n{index}-{plug}.exr" for plug in plugs_of(kind)]
            yield picture, attributes, zip(paths, wanted, strict=True)

    def case(self, kind, picture, attributes):
        """The context of one case."""
        size = f"{picture.width} x {picture.height}"
        span = (float(picture.low), float(picture.high))
        return self.subTest(kind, size=size, mode=picture.mode, range=span, **attributes)

    def check(self, kind, cases, *options):
        """Every case gives exactly what the model gives."""
        count = 0
        for picture, attributes, results in self.run_cases(kind, cases, *options):
            with self.case(kind, picture, attributes):
                for path, wanted in results:
                    self.assert_picture(path, wanted)
                    count += 1
        self.assertGreater(count, 0)

    def check_within(self, kind, cases, accuracy):
        """Every case has the model's header, and samples as near as accuracy(picture) says."""
        count = 0
        for picture, attributes, results in self.run_cases(kind, cases):
            with self.case(kind, picture, attributes):
                for path, wanted in results:
                    stored = read_file(path)
                    self.assert_header(stored, wanted)
                    self.assert_close(stored.data, wanted.data, accuracy(picture))
                    count += 1
        self.assertGreater(count, 0)

    def check_given(self, kind, cases):
        """Every case (picture, attributes, samples) gives the samples that the test states."""
        cases = list(cases)
        runs = self.run_cases(kind, [case[:2] for case in cases])
        for (picture, attributes, samples), (_, _, results) in zip(cases, runs, strict=True):
            with self.case(kind, picture, attributes):
                path, _ = next(results)
                self.assert_samples(read_file(path).data, np.array(samples, dtype=F))

    def check_fed(self, kind, picture, feeders, cases):
        """Attributes fed by other nodes: every case is (what feeds which attribute, the other
        attributes, those that the model gets), all in one document."""
        nodes, connections = [self.reader("r", picture), *feeders], []
        for index, (fed, attributes, _) in enumerate(cases):
            nodes.append(node(f"n{index}", NODES[kind][1], **attributes))
            connections.append(link("r.image", f"n{index}.image"))
            connections += [link(source, f"n{index}.{name}") for name, source in fed.items()]
        outputs = [output(f"n{index}.image", f"n{index}.exr") for index in range(len(cases))]
        self.assert_quiet(self.run_document(document(nodes, connections, outputs)))
        for index, (fed, _, known) in enumerate(cases):
            with self.subTest(kind, fed=fed, **known):
                self.assert_fed(self.dir / f"n{index}.exr", NODES[kind][2](picture, **known))

    def assert_fed(self, path, wanted):
        self.assert_picture(path, wanted)

    def apply(self, kind, picture, *options, plug=None, code=0):
        """value apply with the picture on in.exr; the output goes to out.exr."""
        self.picture("in.exr", picture)
        target = f"{plug}=out.exr" if plug else "out.exr"
        if kind in PLUGS and plug is None:
            target = f"{PLUGS[kind][0]}=out.exr"
        return self.value(
            "apply", NODES[kind][0], "-i", "in.exr", *options, "-o", target, code=code
        )

    def apply_gives(self, kind, data, picture, *options, plug=None):
        """value apply gives these samples, which are written down in the test."""
        self.assert_quiet(self.apply(kind, picture, *options, plug=plug))
        self.assert_samples(read_file(self.dir / "out.exr").data, np.array(data, dtype=F))


# ---------------------------------------------------------------------------------------------
# What holds for all six


class EveryAnalysisNodeTest(AnalysisTestCase):
    COPYING = ("relief", "distance", "occlusion", "components", "edges")

    def test_when_off_copies_its_input_whole(self):
        pictures = [
            sample_picture(mode, seed=mode, pin=(4, -5), pivot=(0.5, 0.75), low=-9, high=11)
            for mode in (COLOR, SIGNED, VALUE, PAIR)
        ]
        pictures.append(Picture([[NAN, INF, -INF, -0.0, SMALLEST]], VALUE, low=0, high=0))
        nodes, connections, outputs = [], [], []
        for index, picture in enumerate(pictures):
            nodes.append(self.reader(f"r{index}", picture))
            for kind in self.COPYING:
                name = f"{kind}{index}"
                nodes.append(node(name, NODES[kind][1], enabled=False))
                connections.append(link(f"r{index}.image", f"{name}.image"))
                outputs.append(output(f"{name}.image", f"{name}.exr"))
        self.assert_quiet(self.run_document(document(nodes, connections, outputs)))
        for index, picture in enumerate(pictures):
            for kind in self.COPYING:
                with self.subTest(node=kind, mode=picture.mode):
                    self.assert_picture(self.dir / f"{kind}{index}.exr", picture)

    def test_when_off_copy_has_settings_that_do_not_matter(self):
        picture = random_values(5, 4, pin=(2, 3), low=-1, high=3)
        self.run_document(
            document(
                [
                    self.reader("r", picture),
                    node("n", "ImageReliefNode", enabled=False, radius=9, grow=True, multiplier=5),
                ],
                [link("r.image", "n.image")],
                [output("n.image", "out.exr")],
            ),
            # Grown it would be too large.
            "--max-size", "5",
        )
        self.assert_picture(self.dir / "out.exr", picture)

    def test_without_an_input_there_is_no_output(self):
        off = self.reader("off", random_values(3, 2))
        off["enabled"] = False
        nodes, connections = [off, self.reader("r", random_values(2, 2))], []
        outputs, names = [output("r.image", "other.exr")], []
        for kind, (_, type_name, _) in NODES.items():
            for place, state in enumerate(("alone", "connected")):
                name = f"{state}-{kind}"
                names.append(name)
                nodes.append(node(name, type_name))
                connections += [link("off.image", f"{name}.image")] * place
                outputs.append(output(f"{name}.{plugs_of(kind)[-1]}", f"{name}.exr"))
        result = self.run_document(document(nodes, connections, outputs), code=NODE_ERROR)
        self.assertEqual(len(result.err_lines), len(names), str(result))
        for name in names:
            self.assert_names(result, name)
        # The other output is written all the same.
        self.assert_files("graph.json", "off.exr", "r.exr", "other.exr")

    def test_threads_do_not_change_a_bit(self):
        picture = random_values(53, 71, seed=5, share=0.3, pin=(2, 1), pivot=(0.5, 0.5))
        attributes = {
            "relief": [
                {"radius": 9, "profile": "arc_out"},
                {"radius": 6, "style": "emboss", "soften": 2},
                {"radius": 0, "soften": 16},
            ],
            "distance": [{"normalize": True}, {"seamless": False}],
            "gradient": [{}],
            "occlusion": [{"radius": 7}],
            "components": [{"threshold": 0.25}],
            "edges": [{"threshold": 0.25}, {"seamless": False}],
        }
        nodes, connections, outputs = [self.reader("r", picture)], [], []
        for kind, several in attributes.items():
            for index, one in enumerate(several):
                name = f"{kind}{index}"
                nodes.append(node(name, NODES[kind][1], **one))
                connections.append(link("r.image", f"{name}.image"))
                outputs += [output(f"{name}.{p}", f"{name}-{p}.exr") for p in plugs_of(kind)]
        content = document(nodes, connections, outputs)
        files = {}
        for threads in ("1", "2"):
            self.assert_quiet(self.run_document(content, "--threads", threads))
            for made in outputs:
                path = self.dir / made["path"]
                files[threads, made["path"]] = read_file(path)
                path.unlink()
        for made in outputs:
            with self.subTest(output=made["from"]):
                one, two = (files[threads, made["path"]] for threads in ("1", "2"))
                self.assert_samples(one.data, two.data)
                self.assertEqual((one.low, one.high), (two.low, two.high))

    def test_wrong_settings_are_wrong_usage(self):
        for kind, setting in (
            ("relief", "style=zebra"),
            ("relief", "hight=2"),
            ("distance", "level=0.25"),
            ("gradient", "normalize=true"),
            ("components", "neighbors=diagonal"),
            ("edges", "invert=maybe"),
        ):
            with self.subTest(node=kind, setting=setting):
                result = self.apply(
                    kind, random_values(3, 2), "--set", setting, code=USAGE
                )
                self.assert_one_error(result, setting.split("=")[0])
                self.assert_files("in.exr")

    def test_wrong_plugs_are_wrong_usage(self):
        for kind, plug in (
            ("gradient", "image"), ("gradient", "output_z"), ("relief", "output_x"),
        ):
            with self.subTest(node=kind, plug=plug):
                result = self.apply(kind, random_values(3, 2), plug=plug, code=USAGE)
                self.assert_one_error(result, plug)
                self.assert_files("in.exr")

    def test_input_larger_than_the_maximum_is_a_file_error(self):
        result = self.apply("relief", random_values(3, 8), "--max-size", "7", code=FILE_ERROR)
        self.assert_one_error(result, "in.exr")
        self.assert_files("in.exr")

    def test_numbers_are_cut_to_their_bounds_with_a_note(self):
        picture = random_values(6, 5, seed=2)
        cases = (
            ("relief", "radius", -3, 0),
            ("relief", "multiplier", -1001, -1000),
            ("relief", "multiplier", 1e9, 1000),
            ("components", "threshold", 1.5, 1),
            ("components", "threshold", -0.5, 0),
            ("edges", "threshold", 2, 1),
            ("edges", "threshold", -1, 0),
        )
        nodes, connections, outputs = [self.reader("r", picture)], [], []
        for index, (kind, name, given, _) in enumerate(cases):
            nodes.append(node(f"n{index}", NODES[kind][1], seamless=False, **{name: given}))
            connections.append(link("r.image", f"n{index}.image"))
            outputs.append(output(f"n{index}.image", f"n{index}.exr"))
        result = self.run_document(document(nodes, connections, outputs))
        self.assertEqual(len(result.err_lines), len(cases), str(result))
        for index, (kind, name, given, kept) in enumerate(cases):
            with self.subTest(node=kind, attribute=name, given=given):
                self.assert_names(result, f"n{index}", name)
                wanted = NODES[kind][2](picture, **{name: kept, "seamless": False})
                self.assert_picture(self.dir / f"n{index}.exr", wanted)

    def test_the_largest_radius(self):
        options = ("--set", "radius=251", "--set", "seamless=false")
        result = self.apply("relief", Picture([[1, 0, 0]], VALUE), *options)
        self.assert_one_error(result, "radius")
        wanted = [[1, F(1) - F(1) / F(250), F(1) - F(2) / F(250)]]
        self.assert_samples(read_file(self.dir / "out.exr").data, np.array(wanted, dtype=F))


# ---------------------------------------------------------------------------------------------
# Relief


class ReliefTest(AnalysisTestCase):
    def test_every_style_profile_radius_and_border(self):
        picture = random_values(11, 7, seed=3, span=(-0.5, 1.5), share=0.4)
        self.check(
            "relief",
            (
                (picture, attributes)
                for attributes in settings(
                    style=model.STYLES, profile=model.PROFILES, radius=[0, 1, 2, 5], seamless=FLAGS
                )
            ),
        )

    def test_small_and_narrow_images(self):
        self.check(
            "relief",
            (
                (picture, attributes)
                for size in SIZES
                for picture in [random_values(*size, seed=4, share=0.4)]
                for attributes in settings(style=model.STYLES, radius=[1, 3, 10], seamless=FLAGS)
            ),
        )

    def test_larger_radii(self):
        picture = random_values(43, 31, seed=5, share=0.05)
        cases = list(settings(profile=model.PROFILES, radius=[17], seamless=FLAGS))
        cases += settings(style=model.STYLES[1:], radius=[9], seamless=FLAGS)
        self.check("relief", ((picture, attributes) for attributes in cases))

    def test_levels_on_many_kinds_of_ground(self):
        y, x = np.mgrid[0:45, 0:38]
        hills = 0.5 + 0.5 * np.sin(x * 0.3) * np.cos(y * 0.21)
        grounds = [
            random_values(38, 45, seed=6),
            random_values(38, 45, seed=7, share=0.01),
            stepped(38, 45, 4, seed=8),
            Picture(hills, VALUE),
            Picture(hills * (hills > 0.7), VALUE),
            Picture(np.round(hills * 3) / 3, VALUE),
            Picture((x > 20) * 1.0, VALUE),
            Picture((x + y) / 81.0, VALUE),
            Picture(np.full((45, 38), 0.625), VALUE),
        ]
        self.check(
            "relief",
            (
                (ground, {"radius": radius, "profile": profile, "seamless": seamless})
                for ground in grounds
                for profile, radius, seamless in zip(
                    model.PROFILES, (11, 4, 16, 7), (True, False, False, True)
                )
            ),
        )

    def test_levels_with_declared_ranges(self):
        data = random_values(13, 9, seed=9, span=(-3.0, 5.0)).data
        pictures = [
            Picture(data, VALUE, low=low, high=high)
            for low, high in (
                (-3, 5), (-1, 2), (0, 0.25), (4, 100), (-100, -4), (0.1, 0.7), (2, 2), (0, 1e-38),
            )
        ]
        self.check(
            "relief",
            (
                (picture, {"radius": 3, "profile": profile, "seamless": seamless})
                for picture in pictures
                for profile in model.PROFILES
                for seamless in FLAGS
            ),
        )

    def test_the_low_value_reaches_one_pixel_further_than_the_radius(self):
        data = np.zeros((1, 11))
        data[0, 5] = 1
        peak = Picture(data, VALUE, low=0.25, high=1)
        wanted = [[0, 0, 0.25, 0.25, 0.625, 1, 0.625, 0.25, 0.25, 0, 0]]
        self.check_given("relief", [(peak, {"radius": 2}, wanted)])
        self.check(
            "relief",
            (
                (random_values(19, 15, seed=29, share=0.03, low=0.25), attributes)
                for attributes in settings(
                    radius=[1, 2, 3, 5], profile=model.PROFILES, seamless=FLAGS
                )
            ),
        )

    def test_levels_of_values_that_are_not_finite(self):
        data = random_values(9, 8, seed=10).data.copy()
        data[2, 3], data[6, 1], data[5, 7] = NAN, -INF, INF
        all_nan = Picture([[NAN, NAN, NAN]], VALUE)
        self.check(
            "relief",
            (
                (picture, {"radius": radius, "profile": profile, "seamless": seamless})
                for picture in (Picture(data, VALUE), Picture(data, VALUE, low=-2), all_nan)
                for radius in (0, 1, 3)
                for profile in model.PROFILES
                for seamless in FLAGS
            ),
        )

    def test_bevels_of_values_that_are_not_finite(self):
        data = random_values(9, 8, seed=11, share=0.5).data.copy()
        data[2, 3:5], data[6, 1], data[5, 7], data[7, 0] = NAN, -INF, INF, NAN
        pictures = [Picture(data, VALUE), Picture(np.full((3, 4), NAN), VALUE)]
        self.check(
            "relief",
            (
                (picture, attributes)
                for picture in pictures
                for attributes in settings(
                    style=model.STYLES[1:], radius=[1, 4], seamless=FLAGS
                )
            ),
        )


class ReliefSettingsTest(AnalysisTestCase):
    def test_one_peak_makes_a_cone(self):
        data = np.zeros((1, 9))
        data[0, 4] = 1
        third, two_thirds = F(1) / F(3), F(2) / F(3)
        slope = [F(1) - two_thirds, F(1) - third, 1.0, F(1) - third, F(1) - two_thirds]
        # Half as high, it reaches half as far.
        side = F(0.5) * (F(1) - two_thirds)
        self.check_given(
            "relief",
            (
                (Picture(data, VALUE), {"radius": 3}, [[0, 0, *slope, 0, 0]]),
                (Picture(data * 0.5, VALUE), {"radius": 3}, [[0, 0, 0, side, 0.5, side, 0, 0, 0]]),
            ),
        )

    def test_bevels_of_a_square(self):
        square = Picture([[0, 0, 0, 1, 1, 1, 1, 0, 0, 0]], VALUE)
        self.check_given(
            "relief",
            (
                (square, {"radius": 2, "style": style}, [wanted])
                for style, wanted in (
                    ("inner_bevel", [0, 0, 0, 0.5, 1, 1, 0.5, 0, 0, 0]),
                    ("outer_bevel", [0, 0.5, 1, 1, 1, 1, 1, 1, 0.5, 0]),
                    ("emboss", [0, 0, 0.5, 1, 1, 1, 1, 0.5, 0, 0]),
                    ("pillow_emboss", [1, 1, 0, 1, 1, 1, 1, 0, 1, 1]),
                )
            ),
        )

    def test_radius_zero(self):
        picture = random_values(5, 4, seed=12, span=(-2.0, 2.0))
        cases = [(picture, {"radius": 0}, picture.data)]
        for style in model.STYLES[1:]:
            level = 1.0 if style == "pillow_emboss" else 0.0
            cases.append((picture, {"radius": 0, "style": style}, np.full((4, 5), level)))
        self.check_given("relief", cases)

    def test_pillow_of_radius_one_is_one_step_down_to_zero(self):
        picture = Picture([[0, 0, 0, 1, 0.25, NAN, 0]], VALUE)
        wanted = [[1, 1, 0, 0, 0, 0.75, 1]]
        self.check_given(
            "relief",
            (
                (picture, {"style": "pillow_emboss", "profile": profile}, wanted)
                for profile in model.PROFILES
            ),
        )

    def test_radius_and_soften_go_down_at_halves(self):
        picture = random_values(9, 7, seed=13, share=0.2)
        cases = [
            (picture, {"radius": radius, "style": style})
            for radius in (0.5, 0.51, 1.5, 2.5, 2.5000001, 3.49, 3.5)
            for style in ("levels", "outer_bevel")
        ]
        cases += [(picture, {"radius": 2, "soften": soften}) for soften in (0.25, 0.5)]
        self.check("relief", cases)

    def test_seamless_off_ignores_what_lies_beyond_the_border(self):
        picture = Picture([[1, 0, 0, 0, 0]], VALUE)
        half = F(1) - F(0.5)
        self.check_given(
            "relief",
            (
                (picture, {"radius": 2, "seamless": True}, [[1, half, 0, 0, half]]),
                (picture, {"radius": 2, "seamless": False}, [[1, half, 0, 0, 0]]),
            ),
        )

    def test_multiplier(self):
        picture = random_values(7, 6, seed=14, low=-1, high=2)
        bevelled = {"style": "inner_bevel", "radius": 2}
        self.check(
            "relief",
            (
                (picture, {"multiplier": multiplier, **more})
                for multiplier in (1, -2, 0.1, 0, 1000, -1000, 1.0000001)
                for more in ({}, {"radius": 3}, {"radius": 0}, bevelled)
            ),
        )
        for multiplier, low, high in (("1", -1, 2), ("-2", -2, 0)):
            with self.subTest(multiplier=multiplier):
                self.apply("relief", picture, "--set", f"multiplier={multiplier}")
                stored = read_file(self.dir / "out.exr")
                self.assertEqual((stored.low, stored.high), (low, high))

    def test_multiplier_of_infinite_samples(self):
        picture = Picture([[INF, -INF, NAN, 0.0, -0.0, 1.0, 3e38]], VALUE)
        self.check(
            "relief",
            (
                (picture, {"radius": 0, "multiplier": multiplier, "seamless": False})
                for multiplier in (0, -1, 1000)
            ),
        )

    def test_default_settings(self):
        self.check("relief", [(random_values(8, 6, seed=15), {})])

    def test_modes_of_the_input(self):
        cases = []
        for mode in (COLOR, SIGNED, PAIR):
            picture = sample_picture(
                mode, 9, 6, seed=20 + mode, span=(-0.5, 1.0), pin=(3, 4), pivot=(0.5, 0.5),
                low=-7, high=9,
            )
            cases += [
                (picture, attributes)
                for attributes in settings(
                    style=["levels", "emboss"], radius=[0, 2], grow=FLAGS, seamless=FLAGS
                )
            ]
        self.check("relief", cases)

    def test_range_that_the_command_line_declares(self):
        picture = random_values(8, 5, seed=16, span=(-1.0, 3.0))
        self.assert_quiet(
            self.apply("relief", picture, "--range", "-1,3", "--set", "radius=3")
        )
        declared = Picture(picture.data, VALUE, low=-1, high=3)
        self.assert_picture(self.dir / "out.exr", model.relief(declared, radius=3))


class ReliefPlaceTest(AnalysisTestCase):
    def test_pin_stays_and_pivot_becomes_whole_pixels(self):
        cases = []
        for place in PLACES:
            for size in ((5, 4), (1, 3), (6, 6)):
                picture = random_values(*size, seed=17, share=0.5, **place)
                cases += [
                    (picture, attributes)
                    for attributes in settings(
                        style=model.STYLES, radius=[0, 2, 3.5], grow=FLAGS, seamless=FLAGS
                    )
                ]
        self.check("relief", cases)

    def test_grow_adds_the_radius_on_each_side(self):
        picture = Picture([[1.0, 0.5, 0.25]], VALUE, pin=(10, 20), pivot=(0.5, 0.0))
        self.apply("relief", picture, "--set", "radius=2", "--set", "grow=true")
        stored = read_file(self.dir / "out.exr")
        self.assertEqual(stored.data.shape, (5, 7, 1))
        self.assertEqual(tuple(stored.pin), (10, 20))
        # Half of three is 1.5 pixels, which goes down to 1; two more lie on the left.
        self.assertEqual(tuple(stored.pivot), (F(3) / F(7), F(2) / F(5)))
        self.assertEqual(float(stored.data[2, 2, 0]), 1.0)

    def test_grow_fills_a_value_image_with_its_outside_value(self):
        # The first to the power of the second, which is 1 inside; outside 0 to the power of 0.
        data = random_values(4, 3, seed=18).data
        ones = Picture(np.ones((3, 4)), VALUE)
        nodes = [
            self.reader("a", Picture(data, VALUE)),
            self.reader("b", ones),
            node("power", "ImageValuePowerNode"),
        ]
        connections = [link("a.image", "power.image", 0), link("b.image", "power.image", 1)]
        cases = list(
            settings(style=model.STYLES, radius=[0, 2], grow=FLAGS, seamless=FLAGS)
        )
        for index, attributes in enumerate(cases):
            nodes.append(node(f"n{index}", "ImageReliefNode", **attributes))
            connections.append(link("power.image", f"n{index}.image"))
        outputs = [output(f"n{index}.image", f"n{index}.exr") for index in range(len(cases))]
        self.assert_quiet(self.run_document(document(nodes, connections, outputs)))
        raised = Picture(data, VALUE, low=data.min(), high=data.max(), outside=1)
        for index, attributes in enumerate(cases):
            with self.subTest(**attributes):
                self.assert_picture(
                    self.dir / f"n{index}.exr", model.relief(raised, **attributes)
                )

    def test_grown_size_above_the_maximum(self):
        for width, height in ((5, 2), (2, 5)):
            picture = random_values(width, height)
            with self.subTest(width=width, height=height):
                options = ("--set", "grow=true", "--set", "radius=3", "--max-size", "10")
                result = self.apply("relief", picture, *options, code=NODE_ERROR)
                self.assert_one_error(result, OVERSIZE)
                self.assertIn("Relief", result.err)
                self.assert_files("in.exr")
            with self.subTest(width=width, height=height, fits=True):
                options = ("--set", "grow=true", "--set", "radius=3", "--max-size", "11")
                self.assert_quiet(self.apply("relief", picture, *options))
                wanted = model.relief(picture, radius=3, grow=True)
                self.assert_picture(self.dir / "out.exr", wanted)
                (self.dir / "out.exr").unlink()

    def test_other_outputs_are_written_beside_the_one_in_error(self):
        picture = random_values(6, 3)
        nodes = [self.reader("r", picture), node("fine", "ImageReliefNode", radius=3)]
        nodes += [
            node(style, "ImageReliefNode", radius=3, grow=True, style=style)
            for style in model.STYLES
        ]
        connections = [link("r.image", f"{made['id']}.image") for made in nodes[1:]]
        outputs = [output(f"{made['id']}.image", f"{made['id']}.exr") for made in nodes[1:]]
        content = document(nodes, connections, outputs)
        result = self.run_document(content, "--max-size", "11", code=NODE_ERROR)
        self.assertEqual(len(result.err_lines), len(model.STYLES), str(result))
        for style in model.STYLES:
            self.assert_names(result, style, OVERSIZE)
        self.assert_files("graph.json", "r.exr", "fine.exr")
        self.assert_picture(self.dir / "fine.exr", model.relief(picture, radius=3))
        result = self.run_document(content, "--max-size", "11", "--json", code=NODE_ERROR)
        self.assert_json_error(result, OVERSIZE)


class SoftenTest(AnalysisTestCase):
    def accuracy(self, picture):
        """Of a blurred mask."""
        data = picture.as_value().data
        return BLUR_ACCURACY * float(data.max() - data.min())

    def test_blurred_mask(self):
        cases = []
        for mode, size in ((VALUE, (17, 11)), (VALUE, (1, 30)), (VALUE, (2, 2)), (COLOR, (9, 5))):
            if mode == VALUE:
                picture = random_values(*size, seed=19, span=(-2.0, 5.0), pin=(1, 2))
            else:
                picture = sample_picture(mode, *size, seed=19, span=(0.0, 4.0))
            cases += [
                (picture, attributes)
                for attributes in settings(
                    radius=[0], soften=[1, 2, 5, 16], seamless=FLAGS, style=["levels"]
                )
            ]
        self.check_within("relief", cases, self.accuracy)

    def test_grown_first_and_blurred_then(self):
        picture = Picture(np.ones((3, 4)), VALUE)
        step = {"radius": 6, "grow": True, "style": "inner_bevel", "soften": 1}
        # The mask is as far off as the blur allows, and so is every one of the six levels.
        self.check_within(
            "relief",
            [(picture, {**step, "seamless": seamless}) for seamless in FLAGS],
            lambda _: 6 * BLUR_ACCURACY,
        )

    def test_bevels_of_a_blurred_mask(self):
        # Each of the four steps adds at most what the mask is off.
        self.check_blurred_mask(20, 4 * BLUR_ACCURACY, style=model.STYLES[1:])

    def test_levels_of_a_blurred_mask(self):
        # The height of a smooth cone changes by at most 2.5 times what its peak does.
        self.check_blurred_mask(21, 3 * BLUR_ACCURACY, profile=["linear", "smooth"])

    def check_blurred_mask(self, seed, accuracy, **choices):
        picture = random_values(13, 10, seed=seed, share=0.2)
        cases = settings(**choices, radius=[4], soften=[1, 3], seamless=FLAGS)
        self.check_within(
            "relief", [(picture, attributes) for attributes in cases], lambda _: accuracy
        )

    def test_values_that_are_not_finite_spread_as_far_as_the_kernel(self):
        cases = []
        for soften, width in ((1, 24), (3, 40), (16, 150)):
            data = random_values(width, 12, seed=22).data.copy()
            data[3, width // 2] = NAN
            picture = Picture(data, VALUE)
            cases += [
                (picture, attributes)
                for attributes in settings(radius=[0], soften=[soften], seamless=FLAGS)
            ]
        for picture, attributes, results in self.run_cases("relief", cases):
            with self.case("relief", picture, attributes):
                path, wanted = next(results)
                got, spread = read_file(path).data, np.isnan(wanted.data)
                self.assertTrue(spread.any() and not spread.all())
                np.testing.assert_array_equal(np.isnan(got), spread)
                off = np.abs(got.astype(np.float64) - wanted.data)[~spread]
                self.assertLessEqual(float(off.max()), BLUR_ACCURACY)

    def test_infinities_spread_and_meet_as_nan(self):
        data = np.zeros((2, 40))
        data[:, 15], data[:, 22] = INF, -INF
        picture = Picture(data, VALUE)
        self.apply(
            "relief", picture, "--set", "radius=0", "--set", "soften=1", "--set", "seamless=false"
        )
        wanted = np.zeros(40)
        wanted[11:18], wanted[18:20], wanted[20:27] = INF, NAN, -INF
        self.assert_samples(read_file(self.dir / "out.exr").data[:, :, 0], [wanted, wanted])


class ReliefPlugsTest(AnalysisTestCase):
    """Attributes that are fed by other nodes."""

    def test_number_without_a_value_counts_as_zero(self):
        picture = random_values(6, 5, seed=23, share=0.3, low=-1, high=1)
        cases = [
            ({name: "off.number"}, {"style": style}, {"style": style, name: 0})
            for name in ("radius", "multiplier", "soften")
            for style in model.STYLES
        ]
        off = node("off", "NumberNode", enabled=False, value=3)
        self.check_fed("relief", picture, [off], cases)

    def test_flag_without_a_value_counts_as_false(self):
        picture = random_values(6, 5, seed=24, share=0.3)
        off = node("off", "FlagNode", enabled=False, value=True)
        cases = [
            ({name: "off.flag"}, {"radius": 3, name: True}, {"radius": 3, name: False})
            for name in ("grow", "seamless")
        ]
        self.check_fed("relief", picture, [off], cases)

    def test_words_that_are_no_choice(self):
        picture = random_values(6, 5, seed=25, share=0.3, low=-1, high=1)
        feeders = [
            node("off", "TextNode", enabled=False, value="arc_out"),
            node("zebra", "TextNode", value="zebra"),
            node("empty", "TextNode", value=""),
        ]
        cases = []
        for feeder in feeders:
            source = f"{feeder['id']}.text"
            # Without a style nothing is raised; a profile is linear.
            given = {"style": "emboss", "radius": 2}
            cases.append(({"style": source}, given, {"style": None, "radius": 2}))
            for style in ("levels", "emboss"):
                known = {"style": style, "radius": 2}
                cases.append(({"profile": source}, {**known, "profile": "arc_in"}, known))
        self.check_fed("relief", picture, feeders, cases)

    def test_fed_values(self):
        picture = random_values(6, 5, seed=26, share=0.3)
        feeders = [
            node("number", "NumberNode", value=2.5),
            node("large", "NumberNode", value=-3000),
            node("flag", "FlagNode", value=True),
            node("style", "TextNode", value="outer_bevel"),
            node("profile", "TextNode", value="smooth"),
        ]
        fed = {
            "radius": "number.number",
            # A number that comes over a connection is not cut to the bounds.
            "multiplier": "large.number",
            "grow": "flag.flag",
            "style": "style.text",
            "profile": "profile.text",
        }
        known = {
            "radius": 2, "multiplier": -3000, "grow": True, "style": "outer_bevel",
            "profile": "smooth", "seamless": False,
        }
        given = {"radius": 9, "seamless": False}
        self.check_fed("relief", picture, feeders, [(fed, given, known)])

    def test_bevels_have_no_steps_below_zero(self):
        picture = random_values(6, 5, seed=27, share=0.3)
        cases = [
            # As with a radius of zero.
            ({"radius": "below.number"}, {"style": style}, {"style": style, "radius": 0})
            for style in model.STYLES[1:]
        ]
        self.check_fed("relief", picture, [node("below", "NumberNode", value=-3)], cases)

    def test_older_name_of_the_multiplier(self):
        picture = random_values(6, 5, seed=28)
        wanted = model.relief(picture, radius=2, multiplier=-3)
        content = document(
            [self.reader("r", picture), node("n", "ImageReliefNode", 0, 0, radius=2, height=-3)],
            [link("r.image", "n.image")],
            [output("n.image", "out.exr")],
        )
        del content["nodes"][1]["enabled"]
        self.assert_quiet(self.run_document(content))
        self.assert_picture(self.dir / "out.exr", wanted)
        # The command line takes it too.
        self.apply("relief", picture, "--set", "radius=2", "--set", "height=-3")
        self.assert_picture(self.dir / "out.exr", wanted)
        # Version 1 has no such name.
        content["nodes"][1]["attributeVersion"] = 1
        self.assert_one_error(self.run_document(content, code=INVALID), "height")
        del content["nodes"][1]["attributeVersion"]
        self.assert_one_error(self.run_document(content, code=INVALID), "height")


# ---------------------------------------------------------------------------------------------
# Distance


class DistanceTest(AnalysisTestCase):
    FLAGS = tuple(settings(seamless=FLAGS, normalize=FLAGS))

    def check_all(self, pictures):
        self.check(
            "distance", ((picture, flags) for picture in pictures for flags in self.FLAGS)
        )

    def test_sizes(self):
        sizes = (*SIZES, (13, 16), (32, 5), (33, 17))
        self.check_all(
            random_values(*size, seed=30 + k, span=(0.0, 0.5 + highest))
            for k, size in enumerate(sizes)
            for highest in (0.02, 0.1, 0.5)
        )

    def test_one_set_pixel(self):
        pictures = []
        for x, y in ((0, 0), (20, 0), (0, 12), (20, 12), (10, 6), (11, 7)):
            data = np.zeros((13, 21))
            data[y, x] = 1
            pictures.append(Picture(data, VALUE))
        self.check_all(pictures)

    def test_distance_by_hand(self):
        picture = Picture([[1, 0, 0, 0, 0], [0, 0, 0, 0, 0], [0, 0, 0, 0, 0]], VALUE)
        root = [F(math.sqrt(k)) for k in range(21)]
        beyond = [root[1], root[2], root[5], root[5], root[2]]
        self.apply_gives("distance", [[0, 1, 2, 2, 1], beyond, beyond], picture)
        self.apply_gives(
            "distance",
            [[0, 1, 2, 3, 4], [1, root[2], root[5], root[10], root[17]],
             [2, root[5], root[8], root[13], root[20]]],
            picture, "--set", "seamless=false",
        )

    def test_no_pixel_is_set(self):
        self.check_all([Picture(np.full((3, 4), 0.5), VALUE), Picture([[NAN]], VALUE)])
        picture = Picture(np.zeros((2, 3)), VALUE, low=-4, high=7)
        self.apply_gives("distance", np.full((2, 3), INF), picture)
        stored = read_file(self.dir / "out.exr")
        self.assertEqual((stored.low, stored.high), (0, 0))
        self.apply_gives("distance", np.ones((2, 3)), picture, "--set", "normalize=true")
        stored = read_file(self.dir / "out.exr")
        self.assertEqual((stored.low, stored.high), (0, 1))

    def test_every_pixel_is_set(self):
        self.check_all([Picture(np.ones((4, 3)), VALUE), Picture([[0.75]], VALUE)])

    def test_a_pixel_is_set_above_one_half(self):
        picture = Picture([[0.5, ABOVE_HALF, NAN, INF, -INF, -1, 1e9, 0.49999997, 0, 0, 0]], VALUE)
        self.check_all([picture])
        self.apply("distance", picture, "--set", "seamless=false")
        got = read_file(self.dir / "out.exr").data[0, :, 0]
        np.testing.assert_array_equal(got == 0, [0, 1, 0, 1, 0, 0, 1, 0, 0, 0, 0])

    def test_the_declared_range_does_not_move_the_level(self):
        data = random_values(6, 5, seed=31).data
        self.check_all([Picture(data, VALUE, low=-3, high=9), Picture(data, VALUE, low=0, high=0)])

    def test_modes_and_places(self):
        self.check_all(
            sample_picture(mode, 9, 7, seed=32 + mode, span=(0.0, 1.2), low=-2, high=8, **place)
            for mode in (COLOR, SIGNED, VALUE, PAIR)
            for place in PLACES
        )

    def test_long_images(self):
        data = np.zeros((2, 300))
        data[0, 17], data[1, 210] = 1, 1
        self.check_all([Picture(data, VALUE), Picture(data.T.copy(), VALUE)])

    def test_flags_without_a_value_count_as_false(self):
        picture = random_values(9, 6, seed=33, span=(0.0, 0.55))
        off = node("off", "FlagNode", enabled=False, value=True)
        cases = [
            ({name: "off.flag"}, {name: True}, {name: False}) for name in ("seamless", "normalize")
        ]
        self.check_fed("distance", picture, [off], cases)


# ---------------------------------------------------------------------------------------------
# Gradient


class GradientTest(AnalysisTestCase):
    def check_both(self, pictures):
        self.check(
            "gradient",
            ((picture, {"seamless": seamless}) for picture in pictures for seamless in FLAGS),
        )

    def test_sizes(self):
        self.check_both(
            random_values(*size, seed=40 + k, span=(-3.0, 3.0))
            for k, size in enumerate((*SIZES, (5, 2), (2, 6), (37, 18)))
        )

    def test_slopes_by_hand(self):
        picture = Picture([[1, 2, 4, 8], [16, 32, 64, 128]], VALUE)
        for plug, seamless, wanted in (
            ("output_x", "true", [[-3, 1.5, 3, -1.5], [-48, 24, 48, -24]]),
            ("output_x", "false", [[1, 1.5, 3, 4], [16, 24, 48, 64]]),
            ("output_y", "true", [[0, 0, 0, 0], [0, 0, 0, 0]]),
            ("output_y", "false", [[15, 30, 60, 120], [15, 30, 60, 120]]),
        ):
            with self.subTest(plug=plug, seamless=seamless):
                self.apply_gives(
                    "gradient", wanted, picture, "--set", f"seamless={seamless}", plug=plug
                )

    def test_both_outputs_of_one_run(self):
        picture = random_values(6, 5, seed=41, pin=(3, 1))
        self.picture("in.exr", picture)
        self.assert_quiet(self.value(
            "apply", "Value Gradient", "-i", "in.exr", "-o", "output_y=y.exr",
            "-o", "output_x=x.exr",
        ))
        for name, wanted in zip(("x.exr", "y.exr"), model.gradient(picture)):
            self.assert_picture(self.dir / name, wanted)

    def test_seamless_is_the_default(self):
        self.check("gradient", [(random_values(4, 4, seed=42), {})])

    def test_values_that_are_not_finite(self):
        data = random_values(7, 6, seed=43).data.copy()
        data[1, 2], data[4, 4], data[3, 0], data[5, 6] = NAN, INF, -INF, INF
        pictures = [Picture(data, VALUE)]
        self.check_both(pictures)
        large = Picture([[3e38, 0, -3e38, 1], [SMALLEST, 0, -0.0, SMALLEST]], VALUE)
        self.check_both([large])

    def test_a_size_of_one_is_level_whatever_the_pixel(self):
        self.check_both(
            Picture(data, VALUE)
            for value in (NAN, INF, -3.0)
            for data in ([[value]], [[value, 1.0, 2.0]], [[value], [1.0], [2.0]])
        )

    def test_modes_and_places(self):
        self.check_both(
            sample_picture(mode, 6, 5, seed=44 + mode, low=-2, high=8, **place)
            for mode in (COLOR, SIGNED, VALUE, PAIR)
            for place in PLACES
        )

    def test_when_off_gives_zeros_on_both_outputs(self):
        pictures = [
            sample_picture(mode, 5, 3, seed=mode, pin=(4, -5), pivot=(0.5, 0.75), low=-9, high=11)
            for mode in (COLOR, SIGNED, VALUE, PAIR)
        ]
        nodes, connections, outputs = [], [], []
        for index, picture in enumerate(pictures):
            nodes.append(self.reader(f"r{index}", picture))
            nodes.append(node(f"n{index}", NODES["gradient"][1], enabled=False))
            connections.append(link(f"r{index}.image", f"n{index}.image"))
            outputs += [output(f"n{index}.{p}", f"{p}{index}.exr") for p in PLUGS["gradient"]]
        self.assert_quiet(self.run_document(document(nodes, connections, outputs)))
        for index, picture in enumerate(pictures):
            wanted = Picture(
                np.zeros((3, 5)), VALUE, picture.pin, picture.pivot, picture.low, picture.high
            )
            for plug in PLUGS["gradient"]:
                with self.subTest(mode=picture.mode, plug=plug):
                    self.assert_picture(self.dir / f"{plug}{index}.exr", wanted)

    def test_flag_without_a_value_counts_as_false(self):
        picture = random_values(5, 4, seed=45)
        self.run_document(document(
            [
                self.reader("r", picture),
                node("off", "FlagNode", enabled=False, value=True),
                node("n", NODES["gradient"][1], seamless=True),
            ],
            [link("r.image", "n.image"), link("off.flag", "n.seamless")],
            [output("n.output_x", "x.exr"), output("n.output_y", "y.exr")],
        ))
        for name, wanted in zip(("x.exr", "y.exr"), model.gradient(picture, seamless=False)):
            self.assert_picture(self.dir / name, wanted)


# ---------------------------------------------------------------------------------------------
# Ambient occlusion


class AmbientOcclusionTest(AnalysisTestCase):
    def check_near(self, cases):
        self.check_within("occlusion", cases, lambda _: OCCLUSION_ACCURACY)

    def assert_fed(self, path, wanted):
        stored = read_file(path)
        self.assert_header(stored, wanted)
        self.assert_close(stored.data, wanted.data, OCCLUSION_ACCURACY)

    def test_sizes_borders_and_radii(self):
        self.check_near(
            (picture, attributes)
            for k, size in enumerate((*SIZES, (29, 23)))
            for picture in [random_values(*size, seed=50 + k)]
            for attributes in settings(radius=[3, 3.5, 9, 20.9], seamless=FLAGS)
        )

    def test_smooth_ground(self):
        y, x = np.mgrid[0:40, 0:56]
        hills = 0.5 + 0.3 * np.sin(x * 0.2) * np.cos(y * 0.13) + 0.2 * np.sin(x * 0.5 + y * 0.4)
        self.check_near(
            (Picture(hills, VALUE, low=0, high=1), attributes)
            for attributes in settings(radius=[3, 30, 100], seamless=FLAGS)
        )

    def test_default_settings(self):
        self.check_near([(random_values(12, 9, seed=51), {})])

    def test_level_ground_is_light(self):
        self.check_given(
            "occlusion",
            (
                (Picture(data, VALUE), {}, np.ones_like(data))
                for data in (np.full((4, 5), 0.25), [[7.0]])
            ),
        )

    def test_a_wall_by_hand(self):
        # A column of the height 3 among pixels of the height 0; its top sees the whole sky.
        column = np.zeros((1, 16))
        column[0, 8] = 1
        self.apply("occlusion", Picture(column, VALUE), "--set", "seamless=false")
        got = read_file(self.dir / "out.exr").data[0, :, 0]
        # Right beside it seven directions meet it, all at their first step at the steepest.
        cosines = [math.cos(2 * math.pi * k / 16) for k in range(-3, 4)]
        beside = (9 + sum(1 / (1 + (3 * cosine) ** 2) for cosine in cosines)) / 16
        # Three pixels away the last step of the straight direction meets all of it, and that of
        # the next two on each side a part.
        parts = [3 * (3 * cosine - 2) / 3 for cosine in cosines[1:-1]]
        away = (11 + sum(1 / (1 + part**2) for part in parts)) / 16
        wanted = {0: 1, 4: 1, 5: away, 7: beside, 8: 1, 9: beside, 11: away, 12: 1, 15: 1}
        for x, light in wanted.items():
            with self.subTest(x=x):
                self.assertAlmostEqual(float(got[x]), light, delta=OCCLUSION_ACCURACY)

    def test_declared_ranges(self):
        data = random_values(9, 8, seed=52, span=(-3.0, 5.0)).data
        self.check_near(
            (Picture(data, VALUE, low=low, high=high), {"radius": 5, "seamless": seamless})
            for low, high in ((-3, 5), (0, 1), (-100, 100), (4, 4), (0.5, 0.75))
            for seamless in FLAGS
        )

    def test_modes_and_places(self):
        self.check_near(
            (
                sample_picture(mode, 9, 7, seed=53 + mode, span=(0, 1), low=-2, high=8, **place),
                {"seamless": seamless},
            )
            for mode in (COLOR, SIGNED, VALUE, PAIR)
            for place in PLACES
            for seamless in FLAGS
        )

    def test_nan_is_the_height_zero(self):
        data = random_values(9, 8, seed=54, span=(-1.0, 1.0)).data.copy()
        data[2:4, 3:6], data[7, 0] = NAN, NAN
        self.check_near(
            (Picture(data, VALUE, low=-1, high=1), {"radius": 4, "seamless": seamless})
            for seamless in FLAGS
        )

    def test_plugs_without_a_value(self):
        picture = random_values(11, 8, seed=55)
        feeders = [
            node("number", "NumberNode", enabled=False, value=9),
            node("flag", "FlagNode", enabled=False, value=True),
        ]
        given = {"radius": 9, "seamless": True}
        cases = [
            ({"radius": "number.number"}, given, {"radius": 2.5}),
            ({"seamless": "flag.flag"}, given, {"radius": 9, "seamless": False}),
        ]
        self.check_fed("occlusion", picture, feeders, cases)

    def test_a_fed_radius_has_its_floor_and_no_other_bound(self):
        picture = random_values(11, 8, seed=56)
        feeders, cases = [], []
        for index, given in enumerate((-4, 1, 2.5, 2.75, 110)):
            feeders.append(node(f"number{index}", "NumberNode", value=given))
            cases.append(({"radius": f"number{index}.number"}, {}, {"radius": given}))
        self.check_fed("occlusion", picture, feeders, cases)


# ---------------------------------------------------------------------------------------------
# Connected components and their edges


class RegionsTestCase(AnalysisTestCase):
    """What both nodes are tried on."""

    THRESHOLDS = (0, 0.1, 0.25, 0.5, 1)

    def grounds(self):
        yield from (stepped(*size, 4, seed=60 + k) for k, size in enumerate(SIZES))
        yield random_values(17, 13, seed=61)
        yield stepped(23, 9, 2, seed=62)
        yield stepped(12, 11, 1, seed=63)
        # Channels that agree and disagree on their own, and declared ranges.
        for mode in (COLOR, SIGNED, PAIR):
            yield stepped(8, 7, 2, seed=64 + mode, mode=mode, **PLACES[1])
            yield stepped(7, 8, 2, seed=65 + mode, mode=mode, low=-3, high=1, **PLACES[2])
        data = random_values(9, 8, seed=66, span=(-3.0, 5.0)).data
        for low, high in ((-3, 5), (0, 1), (2, 2), (5, -3), (-1e30, 1e30)):
            yield Picture(data, VALUE, low=low, high=high)

    def odd_grounds(self):
        data = stepped(8, 7, 1, seed=67).data.copy()
        data[1, 1:3], data[4:6, 5], data[2, 6:], data[3, 0] = NAN, INF, INF, -INF
        yield Picture(data, VALUE)
        yield Picture(np.full((3, 4), NAN), VALUE)
        yield Picture(np.full((3, 4), INF), VALUE)
        # One channel is enough to keep pixels apart.
        data = np.zeros((4, 4, 4), dtype=F)
        data[:, :, 3] = 1
        for channel in range(3):
            data[channel, channel, channel] = 1
        data[3, 3, 3] = 0.5
        yield Picture(data, SIGNED, low=0, high=1)
        data = data.copy()
        data[2, 1, 2] = NAN
        yield Picture(data, SIGNED, low=0, high=1)

    def check_plugs(self, kind, picture, flags):
        """Number and flags without a value count as zero and false, and a word that is not a choice
        as the first one."""
        feeders = [
            node("number", "NumberNode", enabled=False, value=1),
            node("flag", "FlagNode", enabled=False, value=True),
            node("text", "TextNode", enabled=False, value="cross"),
            node("zebra", "TextNode", value="zebra"),
        ]
        sources = [
            ("number.number", "threshold", 0),
            ("text.text", "neighbors", "all"),
            ("zebra.text", "neighbors", "all"),
            *(("flag.flag", flag, False) for flag in flags),
        ]
        cross = {"neighbors": "cross"}
        cases = [({name: source}, cross, {**cross, name: kept}) for source, name, kept in sources]
        self.check_fed(kind, picture, feeders, cases)


class ConnectedComponentsTest(RegionsTestCase):
    def test_all_settings(self):
        attributes = tuple(
            settings(threshold=self.THRESHOLDS, neighbors=["all", "cross"], seamless=FLAGS)
        )
        self.check(
            "components", ((ground, one) for ground in self.grounds() for one in attributes)
        )

    def test_values_that_are_not_finite_and_single_channels(self):
        self.check(
            "components",
            (
                (ground, attributes)
                for ground in self.odd_grounds()
                for attributes in settings(
                    threshold=[0.25, 1], neighbors=["all", "cross"], seamless=FLAGS
                )
            ),
        )

    def test_default_settings(self):
        self.check("components", [(random_values(9, 7, seed=68), {})])

    def test_flat_range_leaves_every_pixel_alone(self):
        picture = Picture(np.full((3, 4), 0.5), VALUE, low=0.5, high=0.5)
        wanted = np.arange(12).reshape(3, 4)
        for threshold in ("0", "0.1", "1"):
            with self.subTest(threshold=threshold):
                self.apply_gives("components", wanted, picture, "--set", f"threshold={threshold}")
                stored = read_file(self.dir / "out.exr")
                self.assertEqual((stored.low, stored.high), (0, 11))

    def test_threshold_one_joins_all_but_the_full_difference(self):
        near = Picture([[0.0, 0.5, 1.0, 0.25]], VALUE)
        self.apply_gives("components", [[0, 0, 0, 0]], near, "--set", "threshold=1")
        stored = read_file(self.dir / "out.exr")
        self.assertEqual((stored.low, stored.high), (0, 0))
        far = Picture([[0.0, 1.0, 1.0, 0.0]], VALUE)
        options = ("--set", "threshold=1", "--set", "seamless=false")
        self.apply_gives("components", [[0, 1, 1, 2]], far, *options)
        self.apply_gives("components", [[0, 1, 1, 0]], far, "--set", "threshold=1")

    def test_a_difference_of_exactly_the_tolerance_splits(self):
        picture = Picture([[0.0, 0.25, 0.5, 0.75]], VALUE)
        self.apply_gives("components", [[0, 1, 2, 3]], picture, "--set", "threshold=0.25")
        above = Picture([[0.0, F(0.25) - F(2) ** F(-26), 0.0]], VALUE)
        self.apply_gives("components", [[0, 0, 0]], above, "--set", "threshold=0.25")

    def test_small_steps_chain_however_far_the_ends_drift_apart(self):
        ramp = Picture([np.arange(65) / 64], VALUE)
        options = ("--set", "threshold=0.02", "--set", "seamless=false")
        self.apply_gives("components", np.zeros((1, 65)), ramp, *options)

    def test_borders_and_corners(self):
        bars = Picture([[1, 0, 0, 1], [1, 0, 0, 1]], VALUE)
        self.apply_gives("components", [[0, 1, 1, 0]] * 2, bars)
        self.apply_gives("components", [[0, 1, 1, 2]] * 2, bars, "--set", "seamless=false")
        board = Picture([[1, 0], [0, 1]], VALUE)
        flat = ("--set", "seamless=false")
        self.apply_gives("components", [[0, 1], [1, 0]], board, *flat)
        self.apply_gives(
            "components", [[0, 1], [2, 3]], board, *flat, "--set", "neighbors=cross"
        )

    def test_labels_go_by_the_first_pixel_in_rows(self):
        # The component of the last column begins above the one that begins to its left.
        picture = Picture([[0, 0, 0, 1], [1, 0, 0, 1], [1, 1, 1, 1]], VALUE)
        self.apply_gives(
            "components", [[0, 0, 0, 1], [1, 0, 0, 1], [1, 1, 1, 1]], picture,
            "--set", "seamless=false", "--set", "neighbors=cross",
        )
        spiral = Picture(
            [[1, 1, 1, 1, 1], [0, 0, 0, 0, 1], [1, 1, 1, 0, 1], [1, 0, 0, 0, 1], [1, 1, 1, 1, 1]],
            VALUE,
        )
        self.apply_gives(
            "components",
            [[0, 0, 0, 0, 0], [1, 1, 1, 1, 0], [0, 0, 0, 1, 0], [0, 1, 1, 1, 0], [0, 0, 0, 0, 0]],
            spiral, "--set", "seamless=false", "--set", "neighbors=cross",
        )

    def test_long_ways_through_a_maze(self):
        height, width = 61, 47
        data = np.zeros((height, width))
        data[1::2] = 1
        data[1::4, -1], data[3::4, 0] = 0, 0
        self.check(
            "components",
            (
                (Picture(data, VALUE), attributes)
                for attributes in settings(neighbors=["all", "cross"], seamless=FLAGS)
            ),
        )

    def test_plugs_without_a_value(self):
        picture = stepped(9, 7, 3, seed=69)
        self.check_plugs("components", picture, ["seamless"])


class ComponentEdgesTest(RegionsTestCase):
    def test_all_settings(self):
        attributes = tuple(
            settings(
                threshold=self.THRESHOLDS,
                neighbors=["all", "cross"],
                seamless=FLAGS,
                invert=[False],
            )
        )
        self.check("edges", ((ground, one) for ground in self.grounds() for one in attributes))

    def test_inverted(self):
        self.check(
            "edges",
            (
                (stepped(9, 8, 4, seed=70, **place), attributes)
                for place in PLACES
                for attributes in settings(
                    threshold=[0.25], neighbors=["all", "cross"], seamless=FLAGS, invert=FLAGS
                )
            ),
        )

    def test_values_that_are_not_finite_and_single_channels(self):
        self.check(
            "edges",
            (
                (ground, attributes)
                for ground in self.odd_grounds()
                for attributes in settings(
                    threshold=[0.25, 1], neighbors=["all", "cross"], seamless=FLAGS, invert=FLAGS
                )
            ),
        )

    def test_default_settings(self):
        self.check("edges", [(random_values(9, 7, seed=71), {})])

    def test_flat_image_is_all_background(self):
        picture = Picture(np.full((3, 4), 0.5), VALUE, low=0.5, high=0.5)
        self.apply_gives("edges", np.ones((3, 4)), picture)
        stored = read_file(self.dir / "out.exr")
        self.assertEqual((stored.low, stored.high), (0, 1))
        self.apply_gives("edges", np.zeros((3, 4)), picture, "--set", "invert=false")

    def test_a_line_and_both_its_sides_are_edges(self):
        picture = Picture([[0, 0, 0, 1, 0, 0, 0]] * 3, VALUE)
        self.apply_gives(
            "edges", [[0, 0, 1, 1, 1, 0, 0]] * 3, picture, "--set", "invert=false"
        )
        self.apply_gives("edges", [[1, 1, 0, 0, 0, 1, 1]] * 3, picture)

    def test_a_step_from_border_to_border(self):
        picture = Picture([[0, 0, 0, 1, 1, 1]] * 2, VALUE)
        self.apply_gives("edges", [[1, 0, 1, 1, 0, 1]] * 2, picture, "--set", "invert=false")

    def test_cross_does_not_look_along_diagonals(self):
        picture = Picture([[0, 0, 0], [0, 1, 0], [0, 0, 0]], VALUE)
        options = ("--set", "invert=false", "--set", "seamless=false")
        self.apply_gives("edges", np.ones((3, 3)), picture, *options)
        self.apply_gives(
            "edges", [[0, 1, 0], [1, 1, 1], [0, 1, 0]], picture, *options,
            "--set", "neighbors=cross",
        )

    def test_a_difference_of_exactly_the_tolerance_is_not_an_edge(self):
        picture = Picture([[0.0, 0.25, 0.5, 0.25]], VALUE)
        options = ("--set", "invert=false", "--set", "threshold=0.25")
        self.apply_gives("edges", [[0, 0, 0, 0]], picture, *options)
        picture = Picture([[0.0, ABOVE_HALF, 0.0, 0.0, 0.0]], VALUE)
        options = ("--set", "invert=false", "--set", "threshold=0.5")
        self.apply_gives("edges", [[1, 1, 1, 0, 0]], picture, *options)

    def test_without_seamless_a_row_runs_on_into_the_next(self):
        # The last pixel of the first row differs from the first two of the second.
        picture = Picture([[0, 0, 0, 0, 1], [0, 0, 0, 0, 1], [0, 0, 0, 0, 1]], VALUE)
        options = ("--set", "invert=false", "--set", "seamless=false")
        cross = ("--set", "neighbors=cross")
        # To the left of the second row's first pixel lies the first row's last one.
        self.apply_gives(
            "edges", [[0, 0, 0, 1, 1], [1, 0, 0, 1, 1], [1, 0, 0, 1, 1]], picture, *options, *cross
        )
        # On the first row's left there is nothing; below and to the left lies its own last pixel.
        self.apply_gives(
            "edges", [[1, 0, 0, 1, 1], [1, 0, 0, 1, 1], [1, 0, 0, 1, 1]], picture, *options
        )

    def test_more_rows_than_one_chunk(self):
        self.check(
            "edges",
            (
                (stepped(5, height, 6, seed=72), attributes)
                for height in (15, 16, 17, 33)
                for attributes in settings(seamless=FLAGS, threshold=[0.5])
            ),
        )

    def test_plugs_without_a_value(self):
        picture = stepped(9, 7, 3, seed=73)
        self.check_plugs("edges", picture, ["seamless", "invert"])
