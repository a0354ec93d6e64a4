"""How times grow: with the pixels, with the nodes of a chain, with the radius. Runs in a process of its own, like rows.

Each point is answered as soon as it is there: the plot, the series, the place on the axis and the times.
"""

import gc
from dataclasses import dataclass
from typing import Callable

import numpy as np
from batch import TEN

from report import host_calls
from report.case import cv, host, node
from report.cases import BY_KEY
from report.inputs import Inputs
from report.worker import Turns

F = np.float32
#: Rows whose cost per pixel is shown, and the peer beside each.
BY_SIZE = {
    "Arithmetic/add": "numpy", "Value Clamp/clamp, smooth": None, "Blur/blur, sigma 8": "opencv",
    "Distance/distance, islands": "opencv", "Connected Components/components, mask": "opencv",
    "Relief/relief, levels, linear": None, "Ambient Occlusion/occlusion, radius 10": None,
}
#: Images of one size that must fit into the memory that is there: inputs, results, and what nodes keep meanwhile.
IMAGES_AT_ONCE = 12
PLOTS = {
    "size": ("Cost per pixel", "side of the image, pixels", "ns per pixel"),
    "nodes": ("Cost per node of a chain", "nodes", "µs per node"),
    "radius": ("Cost of a radius", "radius or sigma, pixels", "ns per pixel"),
}


@dataclass
class Point:
    plot: str
    series: str
    at: float
    #: What a time is divided by to give the number that is shown.
    unit: float
    call: Callable


def free_bytes():
    with open("/proc/meminfo", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("MemAvailable")) * 1024


def measure_together(points, request, answer):
    """The points of one place, in turns."""
    turns = Turns(request["rounds"], request["seconds"], request["long"])
    for point in points:
        turns.add(point.series, point.call)
    times, processor = turns.run()
    for point in points:
        if point.series in times:
            answer(plot=point.plot, series=point.series, at=point.at, unit=point.unit, times=times[point.series],
                   processor=processor[point.series])
        else:
            answer(plot=point.plot, series=point.series, at=point.at, problem=turns.problems[point.series])


def measure_sizes(request, answer):
    for side in request["sides"]:
        needed = side * side * 4 * IMAGES_AT_ONCE
        if free_bytes() < needed:
            answer(plot="size", at=side, problem=f"{side} x {side} needs {needed / 1e9:.1f} GB of free memory")
            continue
        x = Inputs(side)
        unit = side * side * 1e-9
        for key, peer in BY_SIZE.items():
            case = BY_KEY[key]
            calls = {case.name: case.ours, **({f"{case.name} – {peer}": case.peers[peer]} if peer else {})}
            points = [Point("size", name, side, unit, lambda call=call: call(x)) for name, call in calls.items()]
            measure_together(points, request, answer)
            x.forget_ready()
            gc.collect()


# ---- Chains ----


def chain_lines(count):
    lines = []
    for index in range(count):
        kind, attributes = TEN[index % len(TEN)]
        lines.append(" ".join([kind, *(f"{name}={value}" for name, value in attributes.items())]))
    return lines


def numpy_steps():
    """What the ten nodes of the chain are in NumPy."""
    known = {
        "Add": np.add, "Multiply": np.multiply, "Subtract": np.subtract, "Divide": np.divide, "Maximum": np.maximum,
        "Minimum": np.minimum,
    }
    steps = []
    for kind, attributes in TEN:
        name = kind.removeprefix("ImageValue").removesuffix("Node")
        if name == "Clamp":
            steps.append(lambda a, low=F(attributes["low"]), high=F(attributes["high"]): np.clip(a, low, high))
        elif name == "Function":
            steps.append(np.abs)
        else:
            steps.append(lambda a, do=known[name], number=F(attributes["constant"]): do(a, number))
    return steps


def numpy_chain(array, count):
    steps = numpy_steps()

    def call():
        result = array
        for index in range(count):
            result = steps[index % len(steps)](result)
        return result

    return call


def measure_chains(request, answer):
    for side in (16, 256, 1024):
        array = Inputs(side)["a"]
        for count in request["nodes"]:
            chain = host_calls.Chain(chain_lines(count), array)
            text = f"{side} x {side}"
            measure_together([
                Point("nodes", text, count, count * 1e-6, chain.evaluate),
                Point("nodes", f"{text} – numpy", count, count * 1e-6, numpy_chain(array, count)),
            ], request, answer)


# ---- Radii ----


def points_mask(side, apart):
    mask = np.zeros((side, side), F)
    mask[apart // 2 :: apart, apart // 2 :: apart] = 1
    return mask


def disc(radius):
    y, x = np.mgrid[-radius : radius + 1, -radius : radius + 1]
    return (x * x + y * y <= radius * radius).astype(np.uint8)


def radius_calls(radius):
    """Calls of inputs, by series."""
    shape = disc(min(radius, 32))
    reach = 4 * radius
    calls = {
        "blur, sigma": host(lambda h, x, take: h.blur(take("a"), x.spare(h.spare, "out"), float(radius), False)),
        "grow": host(lambda h, x, take: h.grow(take("noise"), x.spare(h.spare, "out"), float(radius), False)),
        "relief, levels, linear": node("relief", "a", radius=radius),
        "relief, levels, smooth": node("relief", "a", radius=radius, profile="smooth"),
        "blur, sigma – opencv": cv(lambda m, x: m.GaussianBlur(
            x["a"], (2 * reach + 1, 2 * reach + 1), radius, borderType=m.BORDER_REPLICATE)),
    }
    # What the node takes.
    if 3 <= radius <= 100:
        calls["occlusion"] = node("ambient_occlusion", "a", radius=radius)
    if radius <= 32:
        calls["grow – opencv"] = cv(lambda m, x: m.dilate(x["noise"], shape))
    return calls


def measure_radii(request, answer):
    import valuenodes as vn

    side = request["radius_side"]
    x = Inputs(side)
    unit = side * side * 1e-9
    for radius in request["radii"]:
        mask = vn.Image(points_mask(side, 2 * radius), range=(0, 1))
        points = [Point("radius", name, radius, unit, lambda call=call: call(x))
                  for name, call in radius_calls(radius).items()]
        points.append(Point("radius", "distance", radius, unit, lambda mask=mask: vn.distance(mask, seamless=False)))
        for point in points:
            measure_together([point], request, answer)


def measure(request, answer):
    parts = {"size": measure_sizes, "nodes": measure_chains, "radius": measure_radii}
    for part in request["parts"]:
        answer(begins=f"growth: {part}")
        parts[part](request, answer)
