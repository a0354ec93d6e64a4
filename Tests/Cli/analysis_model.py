"""The six analysis nodes, one function each, slow and plain.

Written from the rules that the program promises to its users; nothing here calls the program.
Samples are numpy float32 and every step is a single-precision step in the order of the rule,
except where a rule speaks of double precision. Each function takes a Picture and the node's
attributes by name and returns the Picture that the node gives.
"""

import math

import numpy as np

from cli_support import VALUE, F, Picture, finite_range

ONE = F(1)

ALL = ((-1, -1), (0, -1), (1, -1), (-1, 0), (1, 0), (-1, 1), (0, 1), (1, 1))
CROSS = ((0, -1), (-1, 0), (1, 0), (0, 1))
# With what a word means that is not a choice.
NEIGHBORS = {"all": ALL, "cross": CROSS}

STYLES = ("levels", "inner_bevel", "outer_bevel", "emboss", "pillow_emboss")
PROFILES = ("linear", "smooth", "arc_out", "arc_in")


class TooLarge(Exception):
    """The result would exceed the maximum size."""


def shifted(plane, dx, dy, wrap):
    """Per pixel the sample (dx, dy) further on, and whether there is one."""
    height, width = plane.shape
    rows, columns = np.arange(height) + dy, np.arange(width) + dx
    inside = np.outer((rows >= 0) & (rows < height), (columns >= 0) & (columns < width))
    return plane[np.ix_(rows % height, columns % width)], inside | wrap


# ---------------------------------------------------------------------------------------------
# Relief


def blur(plane, sigma, wrap):
    """The sampled Gaussian, in double precision, along x and then along y."""
    if sigma == 0:
        return plane
    reach = math.ceil(4 * sigma)
    weights = {k: math.exp(-k * k / (2 * sigma * sigma)) for k in range(-reach, reach + 1)}
    whole = sum(weights.values())
    result = plane.astype(np.float64)
    for axis in (1, 0):
        size = plane.shape[axis]
        total = np.zeros(plane.shape)
        for k, weight in weights.items():
            places = np.arange(size) + k
            places = places % size if wrap else np.clip(places, 0, size - 1)
            total += weight / whole * np.take(result, places, axis=axis)
        result = total
    return result.astype(F)


def extreme(plane, radius, wrap, larger):
    """The largest (or smallest) sample within a disc around each pixel; NaN only from NaN."""
    best = np.full(plane.shape, np.nan, dtype=F)
    for j in range(-radius, radius + 1):
        for i in range(-radius, radius + 1):
            if i * i + j * j > radius * radius:
                continue
            sample, there = shifted(plane, i, j, wrap)
            better = sample > best if larger else sample < best
            best = np.where(there & (better | np.isnan(best)), sample, best)
    return best


def grow_or_shrink(plane, offset, wrap):
    if offset == 0:
        return plane
    return extreme(plane, abs(offset), wrap, larger=offset > 0)


def fill(plane, mask, level):
    """Goes to the level by as much as the mask says."""
    share = np.where(np.isnan(mask), F(0), np.clip(mask, F(0), ONE))
    return np.where(share == ONE, level, plane + (level - plane) * share)


def bevel_level(v, profile):
    if profile == "smooth":
        return (F(3) - F(2) * v) * (v * v)
    if profile == "arc_out":
        return np.sqrt(ONE - (v - ONE) * (v - ONE))
    if profile == "arc_in":
        return ONE - np.sqrt(ONE - v * v)
    return v


def bevel(plane, mask, steps, start, inverted, profile, wrap):
    """Rings of the mask grown and shrunk, each written over the one before."""
    for i in range(steps):
        t = F(i + 1) * (ONE / F(steps))
        level = bevel_level(ONE - t if inverted else t, profile)
        plane = fill(plane, grow_or_shrink(mask, start - i, wrap), level)
    return plane


def cone_level(t, profile):
    u = ONE - t
    if profile == "smooth":
        return (F(3) - F(2) * u) * (u * u)
    if profile == "arc_out":
        return np.sqrt(ONE - t * t)
    if profile == "arc_in":
        return ONE - np.sqrt(ONE - u * u)
    return u


def levels(mask, low, high, profile, radius, wrap):
    """Every pixel raises a cone whose radius goes with its height; the highest is kept."""
    if radius == 0:
        return mask
    span = high - low
    inverse = ONE / span
    raised = np.full(mask.shape, low, dtype=F)
    for j in range(2 * radius + 1):
        for i in range(2 * radius + 1):
            distance = np.sqrt(F((i - radius) ** 2 + (j - radius) ** 2))
            if not distance < F(radius):
                continue
            sample, there = shifted(mask, i - radius, j - radius, wrap)
            share = (sample - low) * inverse
            t = distance / (F(radius) * share)
            t = np.where(t > F(0), t, F(0))
            t = np.where(t < ONE, t, ONE)
            candidate = cone_level(t, profile) * share * span + low
            raised = np.where(there & (candidate > raised), candidate, raised)
    raised = np.where(mask >= high, mask, raised)
    return np.where(grow_or_shrink(mask, radius + 1, wrap) > 0, raised, F(0))


def whole_pixels(number):
    """The nearest whole number of the double, halves going down, before anything is narrowed."""
    below = math.floor(number)
    return below + 1 if number - below > 0.5 else below


def relief(
    picture,
    radius=1.0,
    multiplier=1.0,
    style="levels",
    profile="linear",
    soften=0.0,
    grow=False,
    seamless=True,
    maximum=32768,
):
    r, s, m = whole_pixels(radius), whole_pixels(soften), F(multiplier)
    left, top, right, bottom = picture.box()
    margin = r if grow else 0
    x, y = left - margin, top - margin
    width, height = picture.width + 2 * margin, picture.height + 2 * margin
    if width > maximum or height > maximum:
        raise TooLarge
    pivot = (F(picture.pin[0] - x) / F(width), F(picture.pin[1] - y) / F(height))

    low, high, outside = F(0), ONE, F(0)
    if picture.mode == VALUE:
        low, high, outside = picture.low, picture.high, picture.outside
    mask = np.full((height, width), outside, dtype=F)
    mask[top - y : bottom - y, left - x : right - x] = picture.as_value().data.reshape(
        picture.height, picture.width
    )

    with np.errstate(all="ignore"):
        mask = blur(mask, s, seamless)
        made = np.zeros((height, width), dtype=F)
        half = math.floor(r * 0.5)
        if style == "levels":
            made = levels(mask, low, high, profile, r, seamless)
        elif style == "inner_bevel":
            made = bevel(made, mask, r, 0, False, profile, seamless)
        elif style == "outer_bevel":
            made = bevel(made, mask, r, r, False, profile, seamless)
        elif style == "emboss":
            made = bevel(made, mask, r, math.ceil(r * 0.5), False, profile, seamless)
        elif style == "pillow_emboss":
            made = np.ones((height, width), dtype=F)
            made = bevel(made, mask, r - half, r - half, True, profile, seamless)
            made = bevel(made, mask, half, 0, False, profile, seamless)
        if m != ONE:
            made = made * m
            low, high = min(m, F(0)), max(m, F(0))
    return Picture(made, VALUE, picture.pin, pivot, low, high)


# ---------------------------------------------------------------------------------------------
# Distance


def distance(picture, seamless=True, normalize=False):
    values = picture.as_value().data.reshape(picture.height, picture.width)
    height, width = values.shape
    marked = [(x, y) for y in range(height) for x in range(width) if values[y, x] > 0.5]
    data = np.full((height, width), np.inf, dtype=F)
    for y in range(height):
        for x in range(width):
            for to_x, to_y in marked:
                dx, dy = abs(x - to_x), abs(y - to_y)
                if seamless:
                    dx, dy = min(dx, width - dx), min(dy, height - dy)
                data[y, x] = min(data[y, x], F(math.sqrt(dx * dx + dy * dy)))
    if not normalize:
        return Picture(data, VALUE, picture.pin, picture.pivot, 0, data.max() if marked else 0)
    if not marked:
        data = np.ones((height, width), dtype=F)
    elif data.max() > 0:
        data = data / data.max()
    return Picture(data, VALUE, picture.pin, picture.pivot, 0, 1)


# ---------------------------------------------------------------------------------------------
# Gradient


def differences(line, seamless):
    """The slope at every sample of one row or column."""
    size = len(line)
    if size == 1:
        return [F(0)]
    slopes = []
    for k in range(size):
        if seamless or 0 < k < size - 1:
            slopes.append((line[(k + 1) % size] - line[k - 1]) * F(0.5))
        elif k == 0:
            slopes.append(line[1] - line[0])
        else:
            slopes.append(line[k] - line[k - 1])
    return slopes


def gradient(picture, seamless=True):
    """The slopes along x and along y."""
    values = picture.as_value().data.reshape(picture.height, picture.width)
    with np.errstate(all="ignore"):
        along_x = np.array([differences(row, seamless) for row in values], dtype=F)
        along_y = np.array([differences(column, seamless) for column in values.T], dtype=F).T
    return tuple(
        Picture(data, VALUE, picture.pin, picture.pivot, *finite_range(data))
        for data in (along_x, along_y)
    )


# ---------------------------------------------------------------------------------------------
# Ambient occlusion


def ambient_occlusion(picture, radius=3.0, seamless=True):
    """In double precision; the program comes within 2e-4 of it."""
    radius = max(2.5, float(F(radius)))
    values = picture.as_value()
    height, width = picture.height, picture.width
    low, high = float(values.low), float(values.high)
    z = values.data.reshape(height, width).astype(np.float64)
    z = (z - low) * (radius / (high - low)) if high != low else np.zeros_like(z)
    z = np.where(np.isnan(z), 0.0, z)
    rows, columns = np.mgrid[0:height, 0:width]

    def corner(x, y):
        if seamless:
            return z[y % height, x % width]
        return z[np.clip(y, 0, height - 1), np.clip(x, 0, width - 1)]

    light = np.zeros((height, width))
    for k in range(16):
        angle = 2 * math.pi * k / 16
        steepest = np.zeros((height, width))
        for step in range(1, math.floor(radius) + 1):
            x, y = columns + step * math.cos(angle), rows + step * math.sin(angle)
            x0, y0 = np.floor(x).astype(int), np.floor(y).astype(int)
            fx, fy = x - x0, y - y0
            upper = corner(x0, y0) * (1 - fx) + corner(x0 + 1, y0) * fx
            lower = corner(x0, y0 + 1) * (1 - fx) + corner(x0 + 1, y0 + 1) * fx
            rise = (upper * (1 - fy) + lower * fy - z) / step
            steepest = np.maximum(steepest, rise)
        light += 1 / (1 + steepest * steepest)
    return Picture(light / 16, VALUE, picture.pin, picture.pivot, 0, 1)


# ---------------------------------------------------------------------------------------------
# Connected components and their edges


def tolerance_of(picture, threshold):
    return (picture.high - picture.low) * F(threshold)


def connected_components(picture, threshold=0.1, neighbors="all", seamless=True):
    tolerance = tolerance_of(picture, threshold)
    height, width = picture.height, picture.width
    labels = np.full((height, width), -1, dtype=F)
    count = 0
    with np.errstate(all="ignore"):
        for first_y in range(height):
            for first_x in range(width):
                if labels[first_y, first_x] >= 0:
                    continue
                labels[first_y, first_x] = count
                pending = [(first_x, first_y)]
                while pending:
                    x, y = pending.pop()
                    for dx, dy in NEIGHBORS.get(neighbors, ALL):
                        nx, ny = x + dx, y + dy
                        if seamless:
                            nx, ny = nx % width, ny % height
                        elif not (0 <= nx < width and 0 <= ny < height):
                            continue
                        steps = np.abs(picture.data[ny, nx] - picture.data[y, x])
                        if labels[ny, nx] < 0 and (tolerance > steps).all():
                            labels[ny, nx] = count
                            pending.append((nx, ny))
                count += 1
    return Picture(labels, VALUE, picture.pin, picture.pivot, 0, count - 1)


def component_edges(picture, threshold=0.1, neighbors="all", seamless=True, invert=True):
    tolerance = tolerance_of(picture, threshold)
    height, width = picture.height, picture.width
    pixels = picture.data.reshape(height * width, -1)
    edges = np.zeros((height, width), dtype=F)
    with np.errstate(all="ignore"):
        for y in range(height):
            for x in range(width):
                for dx, dy in NEIGHBORS.get(neighbors, ALL):
                    nx, ny = x + dx, y + dy
                    if seamless:
                        nx, ny = nx % width, ny % height
                    # Without it a row's end runs on into the next row, as the samples lie; what
                    # lies outside the image equals the pixel.
                    index = ny * width + nx
                    if not (0 <= ny < height and 0 <= index < height * width):
                        continue
                    if (np.abs(pixels[y * width + x] - pixels[index]) > tolerance).any():
                        edges[y, x] = 1
    return Picture(ONE - edges if invert else edges, VALUE, picture.pin, picture.pivot, 0, 1)
