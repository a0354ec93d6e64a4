# SPDX-License-Identifier: Apache-2.0
"""The nodes that look at neighbours once more, as plain numpy written from their rules, without regard to speed."""

import itertools
import math

import numpy as np
from reference import value_of

F = np.float32


def in_tile(y, x, shape, seamless):
    """The place of a pixel in a tile; None for one that is outside an image."""
    rows, columns = shape
    if seamless:
        return y % rows, x % columns
    return (y, x) if 0 <= y < rows and 0 <= x < columns else None


def every_pixel(shape):
    return itertools.product(range(shape[0]), range(shape[1]))


# ---- Distance and slope ----


def distance(value, seamless, normalize):
    rows, columns = value.shape
    shape = np.argwhere(value > 0.5)
    result = np.full(value.shape, np.inf)
    for y, x in every_pixel(value.shape):
        if len(shape) == 0:
            continue
        dy, dx = np.abs(shape[:, 0] - y), np.abs(shape[:, 1] - x)
        if seamless:
            dy, dx = np.minimum(dy, rows - dy), np.minimum(dx, columns - dx)
        result[y, x] = np.sqrt((dy * dy + dx * dx).min())
    result = result.astype(F)
    if not normalize:
        return result
    if len(shape) == 0:
        return np.ones_like(result)
    return result if result.max() == 0 else result / result.max()


def gradient(value, seamless):
    def along(v):
        if v.shape[1] <= 1:
            return np.zeros_like(v)
        if seamless:
            return (np.roll(v, -1, 1) - np.roll(v, 1, 1)) * F(0.5)
        inner = (v[:, 2:] - v[:, :-2]) * F(0.5)
        return np.concatenate([v[:, 1:2] - v[:, :1], inner, v[:, -1:] - v[:, -2:-1]], 1)

    return along(value), along(value.T).T


# ---- Occlusion ----


def ambient_occlusion(value, declared, radius, seamless):
    """In double precision; a NaN is as low as the range."""
    rows, columns = value.shape
    low, high, radius = map(float, (*declared, F(radius)))
    z = (value.astype(np.float64) - low) * (radius / (high - low)) if high != low else np.zeros(value.shape)
    z = np.where(np.isnan(z), 0, z)

    def read(y, x):
        if seamless:
            return z[y % rows, x % columns]
        return z[np.clip(y, 0, rows - 1), np.clip(x, 0, columns - 1)]

    y, x = np.mgrid[:rows, :columns]
    total = np.zeros(value.shape)
    for k in range(16):
        angle = 2 * np.pi * k / 16
        rise = np.zeros(value.shape)
        for s in range(1, int(radius) + 1):
            px, py = x + s * np.cos(angle), y + s * np.sin(angle)
            x0, y0 = np.floor(px).astype(int), np.floor(py).astype(int)
            fx, fy = px - x0, py - y0
            upper = read(y0, x0) * (1 - fx) + read(y0, x0 + 1) * fx
            lower = read(y0 + 1, x0) * (1 - fx) + read(y0 + 1, x0 + 1) * fx
            rise = np.maximum(rise, (upper * (1 - fy) + lower * fy - z) / s)
        total += 1 / (1 + rise**2)
    return total / 16


# ---- Components ----


def neighbors(word):
    if word == "cross":
        return [(-1, 0), (0, -1), (0, 1), (1, 0)]
    return [(dy, dx) for dy in (-1, 0, 1) for dx in (-1, 0, 1) if (dy, dx) != (0, 0)]


def connected_components(samples, declared, threshold, word, seamless):
    shape = samples.shape[:2]
    pixels = samples.reshape(*shape, math.prod(samples.shape[2:]))
    limit = (F(declared[1]) - F(declared[0])) * F(threshold)
    labels = np.full(shape, -1)
    count = 0
    for start in every_pixel(shape):
        if labels[start] >= 0:
            continue
        labels[start] = count
        pending = [start]
        while pending:
            y, x = pending.pop()
            for dy, dx in neighbors(word):
                place = in_tile(y + dy, x + dx, shape, seamless)
                if place is None or labels[place] >= 0:
                    continue
                if (limit > np.abs(pixels[place] - pixels[y, x])).all():
                    labels[place] = count
                    pending.append(place)
        count += 1
    return labels.astype(F)


def component_edges(samples, declared, threshold, word, seamless, invert):
    shape = rows, columns = samples.shape[:2]
    pixels = samples.reshape(*shape, math.prod(samples.shape[2:]))
    limit = (F(declared[1]) - F(declared[0])) * F(threshold)
    flat = pixels.reshape(rows * columns, pixels.shape[2])
    edges = np.zeros(shape, bool)
    for y, x in every_pixel(shape):
        for dy, dx in neighbors(word):
            ny, nx = y + dy, x + dx
            if seamless:
                other = pixels[ny % rows, nx % columns]
            else:
                # Beyond the left and the right border lie the ends of the rows beside.
                index = ny * columns + nx
                if not 0 <= ny < rows or not 0 <= index < len(flat):
                    continue
                other = flat[index]
            edges[y, x] |= bool((np.abs(pixels[y, x] - other) > limit).any())
    return (~edges if invert else edges).astype(F)


# ---- Relief ----


def blurred(value, sigma, seamless):
    """In double precision, narrowed: a kernel of four sigmas to each side, along the rows and then along the columns."""
    reach = math.ceil(4 * sigma)
    kernel = np.exp(-(np.arange(-reach, reach + 1) ** 2) / (2 * sigma**2))
    kernel /= kernel.sum()

    def along(v):
        padded = np.pad(v, ((0, 0), (reach, reach)), "wrap" if seamless else "edge")
        return sum(weight * padded[:, k : k + v.shape[1]] for k, weight in enumerate(kernel))

    return along(along(value.astype(np.float64)).T).T.astype(F)


def region(mask, radius, seamless, grows):
    """The largest or smallest sample of the offsets (j, i) with (j/radius)² + (i/radius)² <= 1; NaN is no choice."""
    around = range(-radius, radius + 1)
    disc = [(j, i) for j in around for i in around if j * j + i * i <= radius * radius]
    result = np.empty_like(mask)
    for y, x in every_pixel(mask.shape):
        places = (in_tile(y + j, x + i, mask.shape, seamless) for j, i in disc)
        samples = np.array([mask[place] for place in places if place is not None], F)
        samples = samples[~np.isnan(samples)]
        result[y, x] = (samples.max() if grows else samples.min()) if samples.size else np.nan
    return result


def relief_mask(samples, mode, declared, outside, radius, grow):
    """The value of each pixel, with a frame as wide as the radius where it is to grow, and its range."""
    value = value_of(samples, mode)
    if grow:
        value = np.pad(value, radius, constant_values=F(outside) if mode == "value" else F(0))
    return value, (F(declared[0]), F(declared[1])) if mode == "value" else (F(0), F(1))


def _levels(mask, declared, radius, profile, seamless):
    if radius == 0:
        return mask.copy()
    low, high = declared
    span = high - low
    inverse = F(1) / span
    grown = region(mask, radius + 1, seamless, True)
    around = range(-radius, radius + 1)
    disc = [(j, i, np.sqrt(F(j * j + i * i))) for j in around for i in around if j * j + i * i < radius * radius]
    curves = {
        "linear": lambda t, u: u,
        "smooth": lambda t, u: (F(3) - F(2) * u) * (u * u),
        "arc_out": lambda t, u: np.sqrt(F(1) - t * t),
        "arc_in": lambda t, u: F(1) - np.sqrt(F(1) - u * u),
    }
    result = np.zeros_like(mask)
    for y, x in every_pixel(mask.shape):
        if not grown[y, x] > 0:
            continue
        if mask[y, x] >= high:
            result[y, x] = mask[y, x]
            continue
        largest = low
        for j, i, d in disc:
            place = in_tile(y + j, x + i, mask.shape, seamless)
            if place is None:
                continue
            q = (mask[place] - low) * inverse
            t = d / (F(radius) * q)
            t = t if F(0) < t else F(0)
            t = t if t < F(1) else F(1)
            candidate = (curves[profile](t, F(1) - t) * q) * span + low
            largest = candidate if candidate > largest else largest
        result[y, x] = largest
    return result


def _bevel(result, mask, steps, offset, inverted, profile, seamless):
    curves = {
        "linear": lambda v: v,
        "smooth": lambda v: (F(3) - F(2) * v) * (v * v),
        "arc_out": lambda v: np.sqrt(F(1) - (v - F(1)) * (v - F(1))),
        "arc_in": lambda v: F(1) - np.sqrt(F(1) - v * v),
    }
    for i in range(steps):
        working = mask if offset == i else region(mask, abs(offset - i), seamless, offset > i)
        t = F(i + 1) * (F(1) / F(steps))
        level = curves[profile](F(1) - t if inverted else t)
        share = np.where(working > 0, np.where(working < 1, working, F(1)), F(0))
        result = np.where(share == 1, level, result + (level - result) * share)
    return result


def relief(mask, declared, radius, style, profile, seamless, multiplier=1):
    """Of a mask that is already blurred."""
    half = radius // 2
    flat = np.zeros_like(mask)
    if style == "levels":
        result = _levels(mask, declared, radius, profile, seamless)
    elif style == "inner_bevel":
        result = _bevel(flat, mask, radius, 0, False, profile, seamless)
    elif style == "outer_bevel":
        result = _bevel(flat, mask, radius, radius, False, profile, seamless)
    elif style == "emboss":
        result = _bevel(flat, mask, radius, radius - half, False, profile, seamless)
    else:
        result = _bevel(flat + F(1), mask, radius - half, radius - half, True, profile, seamless)
        result = _bevel(result, mask, half, 0, False, profile, seamless)
    return result if multiplier == 1 else result * F(multiplier)
