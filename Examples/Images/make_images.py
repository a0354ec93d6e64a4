#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Make the sample images of this folder, from nothing but arithmetic.

    ./make_images.py                      every image, beside this file
    ./make_images.py --only terrain mask  some of them
    ./make_images.py --out /some/folder   somewhere else

Every image is procedural and every random number comes from a fixed seed, so
a second run writes the same pixels. Needs numpy and the OpenImageIO Python
bindings (Debian: python3-numpy python3-openimageio).

The file has five parts: noise and filters, terrain (uplift, river incision,
droplets, landslides), and then one part per image that uses them.
"""

import argparse
import functools
import heapq
import os
import sys
import time

import numpy as np
import OpenImageIO as oiio

F32 = np.float32


# ---------------------------------------------------------------------------
# Noise, sampling and filters
# ---------------------------------------------------------------------------

def smoothstep(low, high, x):
    t = np.clip((x - low) / (high - low), 0.0, 1.0)
    return t * t * (3.0 - 2.0 * t)


def mix(a, b, t):
    return a + (b - a) * t


def unit_grid(n):
    """x and y of the pixel centres of an n by n image, in 0..1."""
    c = (np.arange(n, dtype=F32) + 0.5) / n
    return np.meshgrid(c, c)


def gradient_noise(x, y, period, seed):
    """Gradient noise of about -1..1, repeating every `period` lattice cells."""
    rng = np.random.default_rng(seed)
    angle = rng.uniform(0.0, 2.0 * np.pi, period * period)
    gx, gy = np.cos(angle).astype(F32), np.sin(angle).astype(F32)
    fx, fy = np.floor(x), np.floor(y)
    ix, iy = fx.astype(np.int32), fy.astype(np.int32)
    x, y = (x - fx).astype(F32), (y - fy).astype(F32)
    u = x * x * x * (x * (x * 6 - 15) + 10)
    v = y * y * y * (y * (y * 6 - 15) + 10)

    def corner(dx, dy):
        k = ((iy + dy) % period) * period + (ix + dx) % period
        return gx[k] * (x - dx) + gy[k] * (y - dy)

    return 1.5 * mix(mix(corner(0, 0), corner(1, 0), u),
                     mix(corner(0, 1), corner(1, 1), u), v)


def fractal(x, y, period, octaves, seed, gain=0.5, ridged=False):
    """Sum of octaves over the unit square, tiling there; -1..1 or, ridged, 0..1."""
    total, norm, amp = 0.0, 0.0, 1.0
    weight = 1.0
    for k in range(octaves):
        p = period << k
        n = gradient_noise(x * p, y * p, p, seed + 101 * k)
        if ridged:
            n = (1.0 - np.abs(n)).clip(0.0, 1.0) ** 2
            n, weight = n * weight, np.clip(n * 1.6, 0.0, 1.0)
        total = total + amp * n
        norm += amp
        amp *= gain
    return total / norm


def swell(x, y, most, seed):
    """Tiling hills without a lattice: waves in every direction, `most` at the most
    across the unit square; standard deviation about 1."""
    rng = np.random.default_rng(seed)
    total, power = 0.0, 0.0
    for ky in range(-most, most + 1):
        for kx in range(0, most + 1):
            k = np.hypot(kx, ky)
            if not 0 < k <= most:
                continue
            amp, phase = rng.normal() / k, rng.uniform(0, 2 * np.pi)
            total = total + amp * np.cos(2 * np.pi * (kx * x + ky * y) + phase)
            power += 0.5 * amp * amp
    return total / np.sqrt(power)


def sample(image, x, y):
    """Bilinear look-up of a tiling image at pixel coordinates x, y."""
    h, w = image.shape
    fx, fy = np.floor(x), np.floor(y)
    x0, y0 = fx.astype(np.int32) % w, fy.astype(np.int32) % h
    x1, y1 = (x0 + 1) % w, (y0 + 1) % h
    u, v = (x - fx).astype(F32), (y - fy).astype(F32)
    flat = image.ravel()
    top = flat[y0 * w + x0] * (1 - u) + flat[y0 * w + x1] * u
    low = flat[y1 * w + x0] * (1 - u) + flat[y1 * w + x1] * u
    return top * (1 - v) + low * v


def blur(image, sigma):
    """Gaussian blur of a tiling image, in the frequency domain."""
    fy = np.fft.fftfreq(image.shape[0])[:, None]
    fx = np.fft.rfftfreq(image.shape[1])[None, :]
    kernel = np.exp(-2.0 * (np.pi * sigma) ** 2 * (fx * fx + fy * fy))
    return np.fft.irfft2(np.fft.rfft2(image) * kernel, s=image.shape).astype(F32)


def enlarge(image):
    """A tiling image at twice its size, smooth (zero-padded frequencies, softened)."""
    h, w = image.shape
    waves = np.fft.fftshift(np.fft.fft2(image))
    wide = np.zeros((2 * h, 2 * w), complex)
    wide[h // 2:h // 2 + h, w // 2:w // 2 + w] = waves
    big = np.fft.ifft2(np.fft.ifftshift(wide)).real * 4.0
    return blur(big, 0.8)


# ---------------------------------------------------------------------------
# Terrain
# ---------------------------------------------------------------------------

NEIGHBOURS = [(-1, -1), (-1, 0), (-1, 1), (0, -1), (0, 1), (1, -1), (1, 0), (1, 1)]


def fill_pits(height, base):
    """Raise every hollow so that water finds a way to the base cells."""
    n = height.shape[0]
    filled = height.ravel().tolist()
    seen = base.ravel().tolist()
    heap = [(filled[k], k) for k in np.flatnonzero(base).tolist()]
    heapq.heapify(heap)
    while heap:
        level, k = heapq.heappop(heap)
        row, col = divmod(k, n)
        for dr, dc in NEIGHBOURS:
            j = ((row + dr) % n) * n + (col + dc) % n
            if not seen[j]:
                seen[j] = True
                if filled[j] <= level:
                    filled[j] = level + 1e-6
                heapq.heappush(heap, (filled[j], j))
    return np.array(filled).reshape(n, n)


def incise(height, uplift, base, steps, strength, rng):
    """Lift the land and let rivers cut it; rivers end at the base cells.

    Each step fills the hollows, sends every cell's water to its steepest
    neighbour, adds up the catchments and solves the cut implicitly from the
    mouths upstream, so that large steps stay stable.
    """
    n = height.shape[0]
    cell = 1.0 / n
    index = np.arange(n * n).reshape(n, n)
    for _ in range(steps):
        height = fill_pits(height, base)
        best = np.zeros((n, n))
        receiver = index.copy()
        length = np.full((n, n), cell)
        for dr, dc in NEIGHBOURS:
            far = cell * np.hypot(dr, dc)
            drop = (height - np.roll(height, (-dr, -dc), (0, 1))) / far
            drop *= rng.uniform(0.75, 1.0, (n, n))  # breaks up straight gullies
            better = (drop > best) & ~base
            best = np.where(better, drop, best)
            receiver = np.where(better, np.roll(index, (-dr, -dc), (0, 1)), receiver)
            length = np.where(better, far, length)
        receiver, length = receiver.ravel(), length.ravel()

        # How many steps each cell is from its river's mouth (pointer jumping).
        depth = (receiver != index.ravel()).astype(np.int64)
        jump = receiver.copy()
        while True:
            more = depth[jump]
            if not more.any():
                break
            depth += more
            jump = jump[jump]
        order = np.argsort(depth, kind="stable")
        bounds = np.searchsorted(depth[order], np.arange(depth.max() + 2))
        levels = [order[bounds[i]:bounds[i + 1]] for i in range(1, depth.max() + 1)]

        area = np.full(n * n, cell * cell)
        for cells in reversed(levels):
            np.add.at(area, receiver[cells], area[cells])
        h = (height + np.where(base, 0.0, uplift)).ravel()
        cut = strength * area ** 0.42 / length
        for cells in levels:
            f = cut[cells]
            h[cells] = (h[cells] + f * h[receiver[cells]]) / (1.0 + f)
        height = h.reshape(n, n)
    return height


def landslides(height, talus, steps):
    """Move material down wherever the slope to a neighbour exceeds `talus`."""
    for _ in range(steps):
        change = np.zeros_like(height)
        for dr, dc in NEIGHBOURS:
            limit = talus * np.hypot(dr, dc)
            excess = np.maximum(height - np.roll(height, (-dr, -dc), (0, 1)) - limit, 0)
            change -= excess * 0.06
            change += np.roll(excess, (dr, dc), (0, 1)) * 0.06
        height = height + change
    return height


def droplets(height, batches, count, seed, steps=48, relief=1.0):
    """Run `count` rain drops at once, `batches` times, over a tiling height field.

    A drop keeps some of its direction, picks up soil while it can carry it and
    lets it fall where it slows down or runs uphill. `relief` scales the height
    to cells, so that slopes are true.
    """
    rng = np.random.default_rng(seed)
    n = height.shape[0]
    height = height.astype(np.float64) * relief
    for _ in range(batches):
        x, y = rng.uniform(0, n, (2, count))
        dx, dy = np.zeros((2, count))
        speed, water, load = np.ones(count), np.ones(count), np.zeros(count)

        def corners(x, y):
            fx, fy = np.floor(x), np.floor(y)
            x0, y0 = fx.astype(np.int64) % n, fy.astype(np.int64) % n
            x1, y1 = (x0 + 1) % n, (y0 + 1) % n
            return (y0 * n + x0, y0 * n + x1, y1 * n + x0, y1 * n + x1), x - fx, y - fy

        for _ in range(steps):
            flat = height.ravel()
            k, u, v = corners(x, y)
            a, b, c, d = (flat[i] for i in k)
            here = (a * (1 - u) + b * u) * (1 - v) + (c * (1 - u) + d * u) * v
            slope_x = (b - a) * (1 - v) + (d - c) * v
            slope_y = (c - a) * (1 - u) + (d - b) * u
            dx, dy = dx * 0.3 - slope_x * 0.7, dy * 0.3 - slope_y * 0.7
            size = np.hypot(dx, dy)
            alive = size > 1e-6
            dx, dy = dx / np.maximum(size, 1e-6), dy / np.maximum(size, 1e-6)
            x, y = x + dx, y + dy
            k2, u2, v2 = corners(x, y)
            a, b, c, d = (flat[i] for i in k2)
            there = (a * (1 - u2) + b * u2) * (1 - v2) + (c * (1 - u2) + d * u2) * v2
            rise = there - here
            capacity = np.maximum(-rise, 0.01) * speed * water * 4.0
            drop_it = np.where(rise > 0, np.minimum(rise, load),
                               (load - capacity) * 0.3)
            take = np.minimum((capacity - load) * 0.25, np.maximum(-rise, 0.0) * 0.5)
            moved = np.where((load > capacity) | (rise > 0), drop_it, -take) * alive
            load -= moved
            weights = np.concatenate([moved * (1 - u) * (1 - v), moved * u * (1 - v),
                                      moved * (1 - u) * v, moved * u * v])
            height += np.bincount(np.concatenate(k), weights, n * n).reshape(n, n)
            speed = np.sqrt(np.maximum(speed * speed - rise * 0.8, 0.05)).clip(0, 4)
            water *= 0.97
    return (height / relief).astype(F32)


def carve(n, start, shape, seed, strength, plan):
    """River-cut land on an n by n tile, grown from a coarse grid to a fine one.

    `shape(x, y)` is the uplift on the unit square; where it is below zero the
    land stays at base level. `plan` lists the steps at each grid size.
    """
    rng = np.random.default_rng(seed)
    size, height = start, None
    for steps in plan:
        x, y = unit_grid(size)
        lift = shape(x, y)
        base = lift <= 0.0
        if height is None:
            height = np.where(base, 0.0, 0.02 * rng.random((size, size)))
        else:
            # Bending the coarse land hides that its rivers ran on a grid.
            bend = 0.045 * size * start / (size // 2)
            height = sample(enlarge(height),
                            x * size - 0.5 + bend * fractal(x, y, 3, 4, seed + size),
                            y * size - 0.5 + bend * fractal(x, y, 3, 4, seed + size + 1))
            height = height + rng.normal(0.0, 0.002, (size, size))
            height = np.where(base, 0.0, np.maximum(height, 0.0))
        height = incise(height, 0.02 * np.maximum(lift, 0.0), base, steps, strength, rng)
        size *= 2
    assert height.shape[0] == n
    return height.astype(F32)


# ---------------------------------------------------------------------------
# Writing
# ---------------------------------------------------------------------------

def write(path, pixels, kind, names, **attributes):
    pixels = np.ascontiguousarray(pixels, dtype=F32 if kind != "uint8" else np.uint8)
    if pixels.ndim == 2:
        pixels = pixels[:, :, None]
    h, w, c = pixels.shape
    layout = oiio.ImageSpec(w, h, c, kind)
    layout.channelnames = names
    if "A" in names:
        layout.alpha_channel = names.index("A")
    layout.attribute("DateTime", "2024:01:01 00:00:00")   # the same bytes every time
    for key, value in attributes.items():
        layout.attribute(key.replace("__", ":"), value)
    out = oiio.ImageOutput.create(path)
    if not out or not out.open(path, layout) or not out.write_image(pixels):
        sys.exit(f"cannot write {path}: {out.geterror() if out else oiio.geterror()}")
    out.close()


# ---------------------------------------------------------------------------
# terrain.exr
# ---------------------------------------------------------------------------

@functools.lru_cache(maxsize=None)
def terrain_heights():
    """The height field of terrain.exr, before it is stored."""
    n = 512

    def shape(x, y):
        """Uplift: broad highlands with a few winding lowlands between them."""
        wx = x + 0.05 * fractal(x, y, 5, 4, 11)
        wy = y + 0.05 * fractal(x, y, 5, 4, 12)
        return 0.80 + 0.72 * swell(wx, wy, 4, 13) + 0.30 * fractal(x, y, 7, 4, 14)

    h = carve(n, 64, shape, 21, 0.22, [90, 30, 10, 3])
    x, y = unit_grid(n)
    h = (h / h.max()) ** 0.85
    high = smoothstep(0.0, 0.35, h)
    h = h + 0.10 * high * (fractal(x, y, 8, 6, 31, ridged=True) - 0.5)
    h = h + 0.022 * fractal(x, y, 4, 6, 32) + 0.016 * swell(x, y, 7, 33)
    relief = 120.0
    h = landslides(h, 0.9 / relief, 40)
    h = droplets(h, 14, 20000, 41, relief=relief)
    h = landslides(h, 0.9 / relief, 12)
    return (h - h.min()) / (h.max() - h.min())


def make_terrain(path):
    h = terrain_heights()
    write(path, h, "half", ["Y"], compression="zip",
          ImageDescription="Tiling height field, 0 to 1")
    return f"512 x 512, Y half, mean {h.mean():.3f}"


# ---------------------------------------------------------------------------
# terrain_edited.exr
# ---------------------------------------------------------------------------

def make_terrain_edited(path):
    """The terrain after work on it: a levelled site, a pit with its heap, a
    road, and a corner that rain has worn a little."""
    h = terrain_heights().astype(np.float16).astype(F32)   # as terrain.exr holds it
    n = h.shape[0]
    x, y = unit_grid(n)

    # Rain, so little that it does not show in the picture itself.
    worn = droplets(h, 3, 12000, 43, relief=120.0)
    corner = smoothstep(0.34, 0.16, np.hypot(x - 0.20, y - 0.20))
    h = mix(h, worn, 0.4 * corner)

    # A site levelled by cut and fill on a hillside.
    c, s = np.cos(0.5), np.sin(0.5)
    u, v = (x - 0.655) * c + (y - 0.60) * s, -(x - 0.655) * s + (y - 0.60) * c
    site = smoothstep(0.012, 0.0, np.maximum(np.abs(u) - 0.085, np.abs(v) - 0.05))
    h = mix(h, F32(h[site > 0.99].mean()), site)

    # A road across the valley: level between its ends, cut where the land is
    # higher, banked up where it is lower.
    ends = np.array([[0.10, 0.56], [0.25, 0.70], [0.42, 0.52], [0.57, 0.57]])
    t = np.linspace(0.0, 1.0, 600)[:, None]
    line = ((1 - t) ** 3 * ends[0] + 3 * (1 - t) ** 2 * t * ends[1]
            + 3 * (1 - t) * t * t * ends[2] + t ** 3 * ends[3])
    along = h[(line[:, 1] * n).astype(int), (line[:, 0] * n).astype(int)]
    level = np.convolve(np.pad(along, 120, "edge"), np.ones(241) / 241, "valid")
    near, grade = np.full_like(h, 9.0), np.zeros_like(h)
    for (px, py), here in zip(line, level):
        d = np.hypot(x - px, y - py)
        grade = np.where(d < near, F32(here), grade)
        near = np.minimum(near, d)
    h = mix(h, grade, smoothstep(0.013, 0.006, near))

    # A pit, and beside it the heap of what came out.
    pit = np.hypot(x - 0.725, y - 0.825) + 0.010 * fractal(x, y, 8, 3, 44)
    heap = np.hypot((x - 0.625) * 1.3, y - 0.90) + 0.008 * fractal(x, y, 8, 3, 45)
    h = h - 0.14 * smoothstep(0.062, 0.044, pit) - 0.10 * smoothstep(0.036, 0.022, pit)
    h = h + 0.14 * smoothstep(0.060, 0.0, heap)

    h = np.maximum(h, 0.0)
    write(path, h, "half", ["Y"], compression="zip",
          ImageDescription="The height field of terrain.exr after work on it")
    return f"512 x 512, Y half, {100 * (np.abs(h - terrain_heights()) > 0.01).mean():.0f}% " \
           "differ by more than 0.01"


# ---------------------------------------------------------------------------
# mask.png
# ---------------------------------------------------------------------------

def make_mask(path):
    n, over = 512, 2                          # drawn at twice the size
    x, y = unit_grid(n * over)
    wx = x + 0.075 * fractal(x, y, 4, 5, 51)
    wy = y + 0.075 * fractal(x, y, 4, 5, 52)

    def cover(mask, layer):
        return mask + layer * (1.0 - mask)

    mask = np.zeros_like(x)
    # Three blobs: very soft, soft and crisp.
    for cx, cy, rx, ry, turn, soft, strength in [
            (0.36, 0.40, 0.27, 0.20, 0.5, 0.75, 0.85),
            (0.64, 0.60, 0.20, 0.25, 0.2, 0.30, 0.70),
            (0.70, 0.27, 0.13, 0.11, 0.0, 0.025, 1.00)]:
        c, s = np.cos(turn), np.sin(turn)
        u = ((wx - cx) * c + (wy - cy) * s) / rx
        v = (-(wx - cx) * s + (wy - cy) * c) / ry
        r = np.hypot(u, v)
        mask = cover(mask, strength * (1.0 - smoothstep(1.0 - soft, 1.0 + soft * 0.4, r)))

    # Brush strokes: the distance to a curve, streaked along it by bristles.
    for points, width, strength, dry, seed in [
            ([(0.08, 0.84), (0.30, 0.60), (0.55, 0.97), (0.90, 0.80)], 0.050, 0.95, 0.75, 61),
            ([(0.10, 0.16), (0.22, 0.02), (0.45, 0.20), (0.50, 0.09)], 0.026, 0.80, 0.45, 62)]:
        p = np.array(points)
        t = np.linspace(0.0, 1.0, 160)[:, None]
        curve = ((1 - t) ** 3 * p[0] + 3 * (1 - t) ** 2 * t * p[1]
                 + 3 * (1 - t) * t * t * p[2] + t ** 3 * p[3])
        tangent = np.gradient(curve, axis=0)
        near = np.full(x.shape, 9.0, F32)
        along = np.zeros_like(x)
        across = np.zeros_like(x)
        for (px, py), (tx, ty), s in zip(curve, tangent, t[:, 0]):
            size = np.hypot(tx, ty)
            dx, dy = x - px, y - py
            d = dx * dx + dy * dy
            closer = d < near
            near = np.where(closer, d, near)
            along = np.where(closer, s + (dx * tx + dy * ty) / size * 0.6, along)
            across = np.where(closer, (dy * tx - dx * ty) / size, across)
        wide = width * (0.75 + 0.35 * np.sin(np.pi * np.clip(along, 0.01, 0.99)) ** 0.7)
        edge = np.sqrt(near) / wide + 0.10 * fractal(x, y, 16, 3, seed)
        bristle = gradient_noise(across / width * 7 + 32, along * 3.0 + 32, 64, seed + 1) \
            + 0.6 * gradient_noise(across / width * 15 + 32, along * 5.0 + 32, 64, seed + 2)
        worn = smoothstep(0.25, 1.05, along) * dry
        ink = smoothstep(-0.35, 0.25, bristle + 0.9 - 1.7 * worn)
        mask = cover(mask, strength * ink * (1.0 - smoothstep(0.86, 1.0, edge)))

    # Spatter, smaller and rarer farther out.
    rng = np.random.default_rng(63)
    for _ in range(46):
        cx, cy = rng.normal(0.74, 0.14), rng.normal(0.80, 0.09)
        r = 0.0025 + 0.009 * rng.random() ** 3
        d = np.hypot(x - cx, (y - cy) * rng.uniform(0.85, 1.15))
        mask = cover(mask, rng.uniform(0.6, 1.0) * (1.0 - smoothstep(r - 0.001, r + 0.001, d)))

    mask = mask.reshape(n, over, n, over).mean((1, 3))
    grain = np.random.default_rng(64).uniform(-0.5, 0.5, (n, n))   # hides banding
    inside = (mask > 0.004) & (mask < 0.996)
    pixels = np.clip(mask * 255.0 + grain * inside + 0.5, 0, 255).astype(np.uint8)
    write(path, pixels, "uint8", ["Y"])
    return f"512 x 512, Y 8 bit, {100 * (pixels == 0).mean():.0f}% black, " \
           f"{100 * (pixels == 255).mean():.0f}% white"


# ---------------------------------------------------------------------------
# lettering.png
# ---------------------------------------------------------------------------

def make_lettering(path):
    """A word in slab letters, drawn from bars, wedges and half a ring."""
    wide, tall, over = 832, 320, 4
    x, y = np.meshgrid((np.arange(wide * over, dtype=F32) + 0.5) / over,
                       (np.arange(tall * over, dtype=F32) + 0.5) / over)
    ink = np.zeros(x.shape, bool)
    top, bottom = 62.0, 258.0                     # of all letters
    slab = 20.0                                   # how thick a slab is

    def polygon(*corners):
        """A convex shape, its corners in clockwise order."""
        inside = np.ones(x.shape, bool)
        for (ax, ay), (bx, by) in zip(corners, corners[1:] + corners[:1]):
            inside &= (bx - ax) * (y - ay) - (by - ay) * (x - ax) >= 0
        return inside

    def bar(left, upper, right, lower):
        return polygon((left, upper), (right, upper), (right, lower), (left, lower))

    def leaning(from_x, to_x, width):
        """A stroke from the top to the bottom, cut level at both ends."""
        half = width / 2
        return polygon((from_x - half, top), (from_x + half, top),
                       (to_x + half, bottom), (to_x - half, bottom))

    # V
    ink |= leaning(64, 116, 50) | leaning(176, 124, 34)
    ink |= bar(26, top, 106, top + slab) | bar(146, top, 208, top + slab)
    # A
    ink |= leaning(262, 210, 34) | leaning(270, 322, 50) | bar(234, 190, 300, 190 + slab)
    ink |= bar(178, bottom - slab, 244, bottom) | bar(280, bottom - slab, 362, bottom)
    # L
    ink |= bar(398, top, 444, bottom) | bar(376, top, 468, top + slab)
    ink |= bar(376, bottom - 24, 496, bottom) | bar(470, bottom - 66, 496, bottom)
    # U
    ink |= bar(514, top, 560, 186) | bar(608, top, 642, 186)
    ink |= bar(496, top, 578, top + slab) | bar(590, top, 660, top + slab)
    outer = np.hypot((x - 578) / 64, (y - 186) / 72) <= 1
    inner = np.hypot((x - 584) / 24, (y - 186) / 34) <= 1
    ink |= outer & ~inner & (y >= 186)
    # E
    ink |= bar(702, top, 748, bottom)
    ink |= bar(680, top, 800, top + 24) | bar(774, top, 800, top + 58)
    ink |= bar(748, 147, 776, 171) | bar(764, 132, 786, 186)
    ink |= bar(680, bottom - 24, 808, bottom) | bar(782, bottom - 62, 808, bottom)
    strength = ink.reshape(tall, over, wide, over).mean((1, 3))
    pixels = np.clip(strength * 255.0 + 0.5, 0, 255).astype(np.uint8)
    write(path, pixels, "uint8", ["Y"], png__compressionLevel=9)
    return f"{wide} x {tall}, Y 8 bit"


# ---------------------------------------------------------------------------
# roads.png
# ---------------------------------------------------------------------------

def make_roads(path):
    """Roads that leave the tile on one side and come back on the other."""
    n, over = 512, 4
    big = n * over
    nearness = np.full((big, big), 9.0, F32)      # in tiles, less half the width of the road

    def spline(points, steps):
        """A curve through all points but the first and the last (Catmull-Rom)."""
        p = np.array(points, np.float64)
        t = np.linspace(0.0, 1.0, steps, endpoint=False)[:, None]
        parts = [0.5 * (2 * b + (d - a) * t + (2 * a - 5 * b + 4 * d - e) * t ** 2
                        + (3 * b - a - 3 * d + e) * t ** 3)
                 for a, b, d, e in zip(p, p[1:], p[2:], p[3:])]
        return np.concatenate(parts + [p[-2:-1]])

    def draw(points, width):
        half = width / 2 / n
        reach = int((half + 2.0 / n) * big) + 2
        for px, py in spline(points, 160):
            # Near the curve only; what leaves the tile comes back on the other side.
            columns = np.arange(int(px * big) - reach, int(px * big) + reach + 1)
            rows = np.arange(int(py * big) - reach, int(py * big) + reach + 1)
            d = np.hypot((columns + 0.5) / big - px, ((rows + 0.5) / big - py)[:, None]) - half
            place = np.ix_(rows % big, columns % big)
            nearness[place] = np.minimum(nearness[place], d)

    main = [(-0.20, 0.60), (0.00, 0.57), (0.14, 0.55), (0.26, 0.63), (0.38, 0.55), (0.50, 0.59),
            (0.63, 0.68), (0.76, 0.63), (0.88, 0.60), (1.00, 0.57), (1.14, 0.55)]
    draw(main, 6.0)
    draw([(0.30, 1.18), (0.34, 1.00), (0.42, 0.84), (0.50, 0.70), (0.50, 0.59), (0.47, 0.47),
          (0.37, 0.37), (0.42, 0.22), (0.36, 0.10), (0.34, 0.00), (0.42, -0.16)], 4.5)
    draw([(0.70, 0.75), (0.76, 0.63), (0.79, 0.50), (0.70, 0.42), (0.74, 0.31), (0.66, 0.23),
          (0.55, 0.21), (0.42, 0.22), (0.30, 0.30)], 3.0)
    draw([(0.40, 0.60), (0.26, 0.63), (0.20, 0.74), (0.24, 0.85), (0.16, 0.90), (0.08, 0.86)], 3.0)
    strength = (nearness <= 0).reshape(n, over, n, over).mean((1, 3))
    pixels = np.clip(strength * 255.0 + 0.5, 0, 255).astype(np.uint8)
    write(path, pixels, "uint8", ["Y"], png__compressionLevel=9)
    return f"{n} x {n}, Y 8 bit, {100 * strength.mean():.1f}% road"


# ---------------------------------------------------------------------------
# overlay.exr
# ---------------------------------------------------------------------------

def make_overlay(path):
    w, h, over = 256, 192, 4
    x, y = np.meshgrid((np.arange(w * over) + 0.5) / over - w / 2,
                       (np.arange(h * over) + 0.5) / over - h / 2)
    x, y = x.astype(F32), y.astype(F32)
    rgb = np.zeros(x.shape + (3,), F32)        # colour already times alpha
    alpha = np.zeros_like(x)

    def put(colour, cover):
        """Lay a colour (plain, not multiplied) over what is there."""
        nonlocal rgb, alpha
        rgb = np.asarray(colour, F32) * cover[..., None] + rgb * (1 - cover[..., None])
        alpha = cover + alpha * (1 - cover)

    def blend(stops, t):
        keys = [s[0] for s in stops]
        return np.stack([np.interp(t, keys, [s[1][i] for s in stops])
                         for i in range(3)], axis=-1)

    # A wide halo that fades to nothing.
    r = np.hypot(x, y)
    angle = np.arctan2(y, x)
    rays = 0.5 + 0.5 * np.cos(angle * 16)
    fade = 1.0 - smoothstep(30, 90, r)
    put((1.0, 0.42, 0.10), 0.55 * fade * fade * mix(0.72, 1.0, rays))

    # A tilted ring, half transparent, its far side behind the disc.
    c, s = np.cos(-0.42), np.sin(-0.42)
    u, v = x * c - y * s, (x * s + y * c) / 0.30
    q = np.hypot(u, v)
    band = smoothstep(76, 79, q) * (1 - smoothstep(108, 111, q))
    gap = 1 - 0.85 * smoothstep(92, 93.5, q) * (1 - smoothstep(96, 97.5, q))
    hue = blend([(76, (0.10, 0.75, 0.95)), (93, (0.35, 0.35, 1.0)),
                 (111, (0.95, 0.20, 0.75))], q)
    ring = 0.5 * band * gap
    put(hue, ring * (v < 0))

    # The disc, opaque, a little brighter than white in its middle.
    heat = blend([(0, (1.9, 1.55, 0.85)), (26, (1.35, 0.85, 0.22)),
                  (48, (0.95, 0.30, 0.06))], np.hypot(x + 9, y + 11))
    put(heat, 1 - smoothstep(45.0, 47.0, r))

    # The near side of the ring.
    put(hue, ring * (v >= 0))

    image = np.concatenate([rgb, alpha[..., None]], axis=-1)
    image = image.reshape(h, over, w, over, 4).mean((1, 3))
    image[image[..., 3] < 1e-4] = 0.0
    write(path, image, "half", ["R", "G", "B", "A"], compression="zip",
          ImageDescription="Translucent sun with a ring, alpha associated")
    a = image[..., 3]
    return f"256 x 192, RGBA half, {100 * (a == 0).mean():.0f}% clear, " \
           f"{100 * (a > 0.999).mean():.0f}% opaque"


# ---------------------------------------------------------------------------
# coast.png
# ---------------------------------------------------------------------------
#
# A height field is drawn column by column: along one column of the picture all
# rays lie in one vertical plane, so one walk outward with a running maximum of
# the slopes gives the first hit of every pixel in it. The water uses a second
# walk from the eye mirrored in the sea. Clouds are a lit density volume.
# Lengths are in metres, z leads away from the eye, x to the right.

WIDE, TALL, OVER = 960, 640, 2                # picture size, samples per side
FOCAL = 480.0 / np.tan(np.radians(29.0))      # in pixels
HORIZON = 0.605                               # as a part of the height
EYE = 55.0
LAND = 20480.0                                # side of the land tile
SUN_AZIMUTH, SUN_ELEVATION = np.radians(17.0), np.radians(11.5)
SUN = np.array([np.sin(SUN_AZIMUTH) * np.cos(SUN_ELEVATION), np.sin(SUN_ELEVATION),
                np.cos(SUN_AZIMUTH) * np.cos(SUN_ELEVATION)])
# The light on the land comes from farther right than the disc in the sky, as a
# painter would have it: more of the slopes facing the eye are lit.
LIGHT = np.array([0.78, 0.40, 0.08])
LIGHT /= np.linalg.norm(LIGHT)
SUN_COLOUR = np.array([1.00, 0.80, 0.58])
SKY_LIGHT = np.array([0.30, 0.42, 0.62])


class Land:
    """The ground of the picture: height, forest and shade at any place."""

    def __init__(self):
        n = 1024
        self.cell = LAND / n
        small = carve(512, 64, self.uplift, 71, 0.20, [60, 24, 8, 2])
        far = enlarge(small)
        x, z = self.places(n)
        far = far / np.percentile(far, 99.97)
        far = np.clip(far, 0, 1.1) ** 0.95 * 2350.0
        u, v = unit_grid(n)
        rugged = smoothstep(60.0, 900.0, far)
        far += rugged * 190.0 * (fractal(u, v, 24, 5, 72, ridged=True) - 0.45)
        far = landslides(far / self.cell, 1.15, 12)
        far = droplets(far, 8, 40000, 73, relief=1.0) * self.cell
        rise = self.hills(x, z)
        sea = -30.0 * smoothstep(0.02, -0.10, self.outline(x, z))
        self.ground = np.maximum(far + sea, rise).astype(F32)
        self.shadow = self.cast_shadows()
        self.open_sky = np.clip(0.5 + (self.ground - blur(self.ground, 9.0)) / 420.0, 0.15, 1.0)
        self.rough = fractal(*unit_grid(512), 8, 6, 74, gain=0.55)
        self.rough2 = fractal(*unit_grid(512), 8, 6, 75, ridged=True)
        self.trees = self.plant_trees()

    @staticmethod
    def places(n):
        u, v = unit_grid(n)
        return (u - 0.5) * LAND, v * LAND - 1000.0

    @staticmethod
    def outline(x, z):
        """Above zero on the far shore, below it at sea."""
        u, v = (x / LAND + 0.5), (z + 1000.0) / LAND
        bays = 1500.0 * fractal(u, v, 3, 5, 81)
        shore = 5200.0 + bays - 900.0 * np.exp(-((x + 3200) / 1800.0) ** 2) \
            + 1500.0 * np.exp(-((x - 1500) / 1300.0) ** 2)
        return np.minimum((z - shore) / 4000.0, (17500.0 - z) / 3000.0).clip(-1, 1)

    def uplift(self, u, v):
        x, z = (u - 0.5) * LAND, v * LAND - 1000.0
        line = self.outline(x, z)
        bulk = 0.55 + 0.35 * fractal(u, v, 3, 3, 82) \
            + 0.60 * np.exp(-((x + 1500) / 2300.0) ** 2 - ((z - 9800) / 2300.0) ** 2) \
            + 0.35 * np.exp(-((x - 4400) / 1600.0) ** 2 - ((z - 9800) / 2000.0) ** 2)
        return np.where(line > 0, smoothstep(-0.1, 0.8, line) * bulk.clip(0.1, 2), -1.0)

    @staticmethod
    def hills(x, z):
        """Two low wooded headlands between the eye and the far shore."""
        u, v = x / LAND + 0.5, (z + 1000.0) / LAND
        bump = fractal(u, v, 16, 5, 83)
        total = np.full_like(x, -40.0)
        for cx, cz, rx, rz, top in [(-1250, 1500, 820, 300, 150.0),
                                    (2350, 2900, 1350, 420, 215.0),
                                    (-2900, 3500, 1300, 450, 330.0),
                                    (-240, 1330, 75, 38, 26.0)]:
            d = ((x - cx) / rx) ** 2 + ((z - cz) / rz) ** 2 + 0.75 * bump
            total = np.maximum(total, top * (1.0 - d * 0.9) * (1 + 0.6 * bump))
        return total.clip(-40, None)

    def cast_shadows(self):
        """Height below which a place lies in shadow; each pass doubles the reach."""
        n = self.ground.shape[0]
        x, z = np.meshgrid(np.arange(n, dtype=F32), np.arange(n, dtype=F32))
        flat = np.hypot(LIGHT[0], LIGHT[2])
        ax, az, fall = LIGHT[0] / flat, LIGHT[2] / flat, LIGHT[1] / flat * self.cell
        shade = sample(self.ground, x + ax * 1.5, z + az * 1.5) - 1.5 * fall
        reach = 1.0
        while reach < 400:
            shade = np.maximum(shade, sample(shade, x + ax * reach, z + az * reach)
                               - fall * reach)
            reach *= 2
        return shade

    def plant_trees(self):
        """A tile of cones on a jittered grid; 1024 cells of 1.25 m."""
        n, spacing = 1024, 4
        m = n // spacing
        rng = np.random.default_rng(76)
        jx, jz = rng.uniform(0, spacing, (2, m, m)).astype(F32)
        top = (rng.uniform(0.55, 1.0, (m, m)) ** 1.2 * 21.0).astype(F32)
        x, z = np.meshgrid(np.arange(n), np.arange(n))
        tile = np.zeros((n, n), F32)
        for dr in (-1, 0, 1):
            for dc in (-1, 0, 1):
                r, c = z // spacing + dr, x // spacing + dc
                px, pz = c * spacing + jx[r % m, c % m], r * spacing + jz[r % m, c % m]
                tile = np.maximum(tile, top[r % m, c % m]
                                  - np.hypot(x - px, z - pz) * 5.0)
        return tile

    def grid(self, image, x, z):
        return sample(image, (x / LAND + 0.5) * image.shape[1] - 0.5,
                      (z + 1000.0) / LAND * image.shape[0] - 0.5)

    def forest(self, x, z, ground):
        """How much forest grows here, 0..1."""
        patch = sample(self.rough, x / 7.0, z / 7.0)
        return smoothstep(3.0, 9.0, ground) \
            * smoothstep(780.0, 520.0, ground + 260.0 * patch) \
            * smoothstep(-0.42, -0.22, patch + 0.0004 * (400 - ground))

    def height(self, x, z):
        g = self.grid(self.ground, x, z)
        above = smoothstep(-3.0, 30.0, g)
        detail = sample(self.rough, x / 2.5, z / 2.5) * 9.0
        crag = (sample(self.rough2, x / 3.1, z / 3.1) - 0.5) * 34.0 * smoothstep(450, 1100, g)
        g = g + above * (detail + crag)
        wood = self.forest(x, z, g)
        return g + wood * sample(self.trees, x / 1.25, z / 1.25), wood


def cloud_volume():
    """Density of a tiling layer of clouds and how far the sun reaches into it."""
    n, m = 256, 32
    rng = np.random.default_rng(91)
    fx = np.fft.fftfreq(n)[None, :, None]
    fy = np.fft.fftfreq(n)[:, None, None]
    fz = np.fft.rfftfreq(m)[None, None, :]
    f = np.sqrt(fx * fx + fy * fy + (0.8 * fz) ** 2) + 1e-3
    white = np.fft.rfftn(rng.standard_normal((n, n, m)).astype(F32))
    puffs = np.fft.irfftn(white * f ** -2.1 * (f > 0.02), s=(n, n, m)).astype(F32)
    puffs /= puffs.std()
    cover = fractal(*unit_grid(n), 5, 5, 92)
    cover = cover / cover.std() - 0.68
    level = (np.arange(m) + 0.5) / m
    # Flat bottoms, tops that rise with the cover.
    profile = smoothstep(0.0, 0.12, level) - 1.9 * level ** 1.2
    density = 0.95 * cover[..., None] + 1.1 * profile[None, None] + 0.62 * puffs - 0.42
    density = smoothstep(0.0, 0.7, density) * (level < 0.97)
    density = density.astype(F32)
    # March the whole volume toward the sun: shift by whole cells, sum, decay.
    depth = np.zeros_like(density)
    for k in range(1, 15):
        dx, dz = int(round(2.4 * k * SUN[0] / 0.98)), int(round(2.4 * k * SUN[2] / 0.98))
        dy = min(int(round(k * 0.9)), m)
        moved = np.zeros_like(density)
        moved[..., :m - dy] = np.roll(density, (-dz, -dx), (0, 1))[..., dy:]
        depth += moved
    return density, np.exp(-0.55 * depth) * 0.8 + np.exp(-0.12 * depth) * 0.2


def volume_sample(volume, x, y, z):
    """Trilinear look-up; x and y tile, z is clamped."""
    n, m = volume.shape[1], volume.shape[2]
    flat = volume.ravel()
    z = np.clip(z, 0, m - 1.001)
    x0, y0, z0 = (np.floor(c).astype(np.int32) for c in (x, y, z))
    u, v, w = (x - x0).astype(F32), (y - y0).astype(F32), (z - z0).astype(F32)
    x0, y0, x1, y1 = x0 % n, y0 % n, (x0 + 1) % n, (y0 + 1) % n

    def row(yy, xx):
        k = (yy * n + xx) * m + z0
        return flat[k] * (1 - w) + flat[k + 1] * w

    return mix(mix(row(y0, x0), row(y0, x1), u), mix(row(y1, x0), row(y1, x1), u), v)


def clear_sky(cos_sun, up):
    """Colour of the air toward a direction: its height and angle to the sun."""
    up = np.maximum(up, 0.0)[..., None]
    zenith, low = np.array([0.075, 0.19, 0.44]), np.array([0.50, 0.57, 0.65])
    sky = mix(zenith, low, np.exp(-up * 4.6))
    c = np.clip(cos_sun, 0.0, 1.0)[..., None]
    warm = np.array([1.0, 0.66, 0.36])
    sky = mix(sky, warm * 0.95, 0.62 * np.exp(-up * 7.0) * c ** 5)
    return sky + warm * (0.20 * c ** 24 + 0.45 * c ** 160) + \
        np.array([1.0, 0.85, 0.65]) * 1.1 * c ** 1200


def haze_colour(cos_sun):
    return clear_sky(cos_sun, np.full_like(cos_sun, 0.035)) * 0.92


def make_sky(tan_x, tan_y):
    """Sky seen along (tan_x, tan_y, 1), with clouds."""
    tx, ty = np.meshgrid(tan_x, tan_y)
    size = np.sqrt(tx * tx + ty * ty + 1.0)
    cos_sun = (tx * SUN[0] + ty * SUN[1] + SUN[2]) / size
    up = ty / size
    sky = clear_sky(cos_sun, up)
    disc = smoothstep(np.cos(0.0125), np.cos(0.0105), cos_sun)[..., None]
    sky = sky + disc * np.array([1.0, 0.9, 0.7]) * 14.0

    density, sunlit = cloud_volume()
    cell, floor, thick = 95.0, 1750.0, 1250.0
    steps = 56
    rng = np.random.default_rng(93)
    t0 = floor / np.maximum(ty, 0.012)
    t1 = np.minimum((floor + thick) / np.maximum(ty, 0.012), t0 + 16000.0)
    dt = (t1 - t0) / steps
    clear = np.ones(tx.shape, F32)
    light = np.zeros(tx.shape, F32)
    edge = fractal(*unit_grid(256), 16, 4, 94)
    offset = rng.random(tx.shape)
    for k in range(steps):
        t = t0 + dt * (k + offset)
        x, z, y = t * tx / cell + 140.0, t / cell + 40.0, (t * ty - floor) / thick * 32 - 0.5
        d = volume_sample(density, x, z, y)
        wisp = sample(edge, x * 5.3 + y * 3.1, z * 5.3 - y * 4.3)
        d = np.clip(d - 0.55 * (1 - d) * np.maximum(wisp + 0.45, 0.0), 0, 1)
        absorb = np.exp(-d * dt * size * 0.0075)
        lit = volume_sample(sunlit, x, z, y)
        light += clear * (1 - absorb) * lit
        clear *= absorb
    opaque = 1.0 - clear
    c = np.clip(cos_sun, 0, 1)
    forward = 0.95 + 1.1 * c ** 40 + 1.2 * c ** 300
    shade = np.array([0.25, 0.30, 0.39])
    cloud = (light * forward)[..., None] * np.array([1.10, 0.93, 0.76]) \
        + opaque[..., None] * shade
    # Far clouds fade into the haze.
    fade = np.exp(-np.maximum(t0 - 3000.0, 0.0) / 17000.0)[..., None]
    covered = opaque[..., None] * fade
    return sky * (1 - covered) + cloud * fade


def first_hits(land, columns, slopes, mirrored, start):
    """Distance (in depth) of the land seen along each slope of each column."""
    z = start * np.exp(np.arange(0.0, np.log(16500.0 / start), 0.0009)).astype(F32)
    eye = -EYE if mirrored else EYE
    depth = np.full((slopes.size, columns.size), np.inf, F32)
    for i, tan_x in enumerate(columns):
        h, _ = land.height(tan_x * z, z)
        rise = np.where(h > 0.3, (h - eye) / z, -9.0)
        seen = np.maximum.accumulate(rise)
        k = np.searchsorted(seen, slopes)
        hit = k < z.size
        # Between two steps: where the line to the next step meets the ray.
        a, b = seen[np.maximum(k - 1, 0)], seen[np.minimum(k, z.size - 1)]
        part = np.where(b > a, np.clip((slopes - a) / np.maximum(b - a, 1e-9), 0, 1), 1.0)
        part = np.where(a < -1.0, 1.0, part)
        k0, k1 = np.maximum(k - 1, 0), np.minimum(k, z.size - 1)
        depth[:, i] = np.where(hit, z[k0] + (z[k1] - z[k0]) * part, np.inf)
    return depth


def shade_land(land, tan_x, slope, depth, eye):
    """Colour of the land at the hits, with haze; all arguments are flat arrays."""
    x, z = tan_x * depth, depth
    y = eye + slope * depth
    step = np.maximum(depth / FOCAL * 0.6, 0.5)
    h0, wood = land.height(x, z)
    hx, _ = land.height(x + step, z)
    hz, _ = land.height(x, z + step)
    nx, nz = -(hx - h0) / step, -(hz - h0) / step
    soft = mix(1.0, 0.55, wood)                   # needles scatter light
    nx, nz = nx * soft, nz * soft
    size = np.sqrt(nx * nx + nz * nz + 1.0)
    nx, ny, nz = nx / size, 1.0 / size, nz / size

    ground = land.grid(land.ground, x, z)
    broad = 22.0
    gx = (land.grid(land.ground, x + broad, z) - ground) / broad
    gz = (land.grid(land.ground, x, z + broad) - ground) / broad
    steep = np.hypot(gx, gz)
    patch = sample(land.rough, x / 5.0, z / 5.0)
    fine = sample(land.rough, x / 1.1, z / 1.1)

    rock = mix(np.array([0.155, 0.140, 0.130]), np.array([0.27, 0.25, 0.235]),
               np.clip(0.5 + fine + 0.25 * np.sin(ground / 19.0 + 5 * patch), 0, 1)[..., None])
    grass = mix(np.array([0.10, 0.125, 0.045]), np.array([0.19, 0.17, 0.075]),
                np.clip(0.5 + patch + 0.4 * fine, 0, 1)[..., None])
    albedo = mix(grass, rock, np.clip(smoothstep(0.55, 0.95, steep + 0.4 * fine)
                                      + smoothstep(850, 1200, ground + 300 * patch), 0, 1)[..., None])
    canopy = np.clip((h0 - ground) / 18.0, 0.0, 1.0)
    leaves = mix(np.array([0.014, 0.024, 0.011]), np.array([0.046, 0.056, 0.021]),
                 np.clip(0.5 + 1.1 * patch, 0, 1)[..., None])
    albedo = mix(albedo, leaves * (0.35 + 0.9 * canopy[..., None]), wood[..., None])
    beach = smoothstep(6.0, 2.0, h0) * (1 - wood)
    albedo = mix(albedo, np.array([0.24, 0.22, 0.19]), beach[..., None])
    snow = smoothstep(-0.12, 0.12, (ground - 800.0) / 700.0 + 0.45 * patch + 0.35 * fine
                      - 0.75 * np.maximum(steep - 1.15, 0.0) - 1.1 * np.maximum(0.50 - ny, 0))
    albedo = mix(albedo, np.array([0.86, 0.89, 0.94]), snow[..., None])

    facing = np.clip(nx * LIGHT[0] + ny * LIGHT[1] + nz * LIGHT[2], 0, None)
    lit = facing * smoothstep(-6.0, 14.0, y - land.grid(land.shadow, x, z))
    open_sky = land.grid(land.open_sky, x, z) * (0.55 + 0.45 * ny)
    colour = albedo * (2.9 * lit[..., None] * SUN_COLOUR
                       + 0.85 * open_sky[..., None] * SKY_LIGHT
                       + 0.10 * SUN_COLOUR * np.clip(0.5 - 0.5 * nz, 0, 1)[..., None])

    # Haze, thicker low down; brighter and warmer toward the sun.
    size = np.sqrt(tan_x ** 2 + slope ** 2 + 1.0)
    far = depth * size
    mean_height = np.maximum(0.5 * (abs(eye) + np.maximum(y, 0)), 1.0)
    thick = far * (0.000024 + 0.000060 * np.exp(-mean_height / 420.0))
    keep = np.exp(-thick[..., None] * np.array([0.80, 1.0, 1.28]))
    cos_sun = (tan_x * SUN[0] + slope * SUN[1] + SUN[2]) / size
    return mix(haze_colour(cos_sun), colour, keep)


def draw_view(land, columns, slopes, sky, mirrored, start=250.0):
    """Land over sky for a raster of directions; also the depth."""
    depth = first_hits(land, columns, slopes, mirrored, start)
    image = sky.astype(F32).copy()
    tx, ty = np.meshgrid(columns, slopes)
    hit = np.isfinite(depth)
    if not mirrored:
        water = np.where(ty < 0, -EYE / np.minimum(ty, -1e-6), np.inf)
        hit &= depth < water
    image[hit] = shade_land(land, tx[hit].astype(F32), ty[hit].astype(F32), depth[hit],
                            -EYE if mirrored else EYE)
    return image, hit


def fetch(image, x, y):
    """Bilinear look-up of a colour image, clamped at the edges."""
    h, w, _ = image.shape
    x, y = np.clip(x, 0, w - 1.001), np.clip(y, 0, h - 1.001)
    x0, y0 = x.astype(np.int32), y.astype(np.int32)
    u, v = (x - x0)[..., None], (y - y0)[..., None]
    return mix(mix(image[y0, x0], image[y0, x0 + 1], u),
               mix(image[y0 + 1, x0], image[y0 + 1, x0 + 1], u), v)


def draw_water(image, water, columns, slopes, mirrors, mirror_slopes):
    """Put the sea where no land is: mirrored view, waves, glitter, own colour.

    `mirrors` lists (distance, view): from that distance on, the sea uses that view.
    """
    rows, cols = np.nonzero(water)
    tan_x, slope = columns[cols], slopes[rows]
    z = -EYE / slope
    x = tan_x * z
    rng = np.random.default_rng(95)
    tile = fractal(*unit_grid(512), 16, 5, 96, gain=0.6)
    patches = fractal(*unit_grid(256), 4, 5, 97)

    # Slopes of the waves; a wave shorter than a pixel only widens the blur.
    foot = z * z / (EYE * FOCAL * OVER)
    sx, sz, hidden = np.zeros(z.size), np.zeros(z.size), np.full(z.size, 0.00006)
    wind = np.clip(0.65 + 0.9 * sample(patches, x / 22.0, z / 45.0), 0.12, 1.5)
    for length, steep, turn in [(60, 0.006, 0.3), (24, 0.011, -0.2),
                                (9, 0.018, 0.5), (3.5, 0.022, 0.1)]:
        scale = 32.0 / length                      # 32 tile pixels to a wave
        c, s = np.cos(turn), np.sin(turn)
        u, v = (x * c + z * s) * scale * 0.55, (-x * s + z * c) * scale
        e = 3.0
        here = sample(tile, u, v)
        seen = smoothstep(0.9, 0.25, foot / length) * wind * steep * 9.0
        sx += seen * (sample(tile, u + e, v) - here) * 0.6
        sz += seen * (sample(tile, u, v + e) - here)
        hidden += (wind * steep) ** 2 * smoothstep(0.25, 0.9, foot / length) * 0.45
    spread = np.sqrt(hidden)

    def row_of(m):
        return (mirror_slopes[0] - m) / (mirror_slopes[0] - mirror_slopes[1])

    pixel = columns[1] - columns[0]
    total = np.zeros((z.size, 3))
    count = 12
    for k in range(count):
        rz = sz + spread * rng.standard_normal(z.size)
        rx = sx + 0.5 * spread * rng.standard_normal(z.size)
        up = np.abs(-slope + 2.0 * rz) + 1e-4
        side = tan_x + 2.0 * rx * (0.05 - slope)
        for i, (start, mirror) in enumerate(mirrors):
            end = mirrors[i + 1][0] if i + 1 < len(mirrors) else np.inf
            here = (z >= start) & (z < end)
            total[here] += np.minimum(fetch(mirror, (side[here] - columns[0]) / pixel,
                                            row_of(up[here])), 3.0)
    total /= count

    graze = np.clip((-slope + 0.8 * sz + 0.5 * spread), 0.01, 1.0)
    fresnel = (0.02 + 0.98 * (1.0 - graze / np.sqrt(1 + graze ** 2)) ** 5.0)[..., None]
    deep = np.array([0.010, 0.040, 0.050]) * (1.0 + 0.6 * sz[..., None] * 8)
    colour = mix(deep, total * np.array([0.93, 0.97, 1.0]), fresnel)

    # Glitter: how near a wave is to throwing the sun at the eye.
    size = np.sqrt(tan_x ** 2 + slope ** 2 + 1)
    hx, hy, hz = SUN[0] - tan_x / size, SUN[1] - slope / size, SUN[2] - 1.0 / size
    qx, qz = -hx / hy + sx, -hz / hy + sz
    wide = hidden + (0.050 * wind) ** 2
    sparkle = rng.exponential(1.0, z.size) ** 1.5
    glint = np.exp(-(qx ** 2 / (0.8 * wide) + qz ** 2 / wide) * 0.5) * sparkle
    colour += glint[..., None] * np.array([1.0, 0.80, 0.52]) * 0.75

    thick = z * 0.00007
    keep = np.exp(-thick[..., None] * np.array([0.80, 1.0, 1.28]))
    cos_sun = (tan_x * SUN[0] + slope * SUN[1] + SUN[2]) / size
    image[rows, cols] = mix(haze_colour(cos_sun), colour, keep)


def develop(image):
    """From light to a print: glow, exposure, curve, vignette and grain."""
    bright = np.maximum(image - 0.9, 0.0)
    pad = 120
    bright = np.pad(bright, ((pad, pad), (pad, pad), (0, 0)))
    glow = np.stack([0.5 * blur(bright[..., c], 4.0) + 0.28 * blur(bright[..., c], 16.0)
                     + 0.22 * blur(bright[..., c], 55.0) for c in range(3)], -1)
    image = image + 0.55 * glow[pad:-pad, pad:-pad]

    y, x = np.mgrid[0:TALL, 0:WIDE]
    r = np.hypot((x - WIDE / 2) / (WIDE / 2), (y - TALL / 2) / (WIDE / 2))
    image = image * (1.0 - 0.30 * smoothstep(0.35, 1.25, r))[..., None]

    image = 1.0 - np.exp(-1.35 * image)
    grey = image @ np.array([0.25, 0.65, 0.10])
    image = np.clip(mix(grey[..., None], image, 1.22), 0, 1)
    image = np.where(image <= 0.0031308, 12.92 * image,
                     1.055 * np.maximum(image, 1e-6) ** (1 / 2.4) - 0.055)
    image = mix(image, smoothstep(0.04, 0.97, image), 0.80)

    rng = np.random.default_rng(98)
    grain = blur(rng.standard_normal((TALL, WIDE)), 0.45)
    grain = grain / grain.std() * 0.0062 * (1.15 - grey.clip(0, 1))
    return np.clip((image + grain[..., None]) * 255.0 + 0.5, 0, 255).astype(np.uint8)


def make_coast(path):
    land = Land()
    w, h = WIDE * OVER, TALL * OVER
    focal = FOCAL * OVER
    columns = (np.arange(w) + 0.5 - w / 2) / focal
    slopes = (h * HORIZON - np.arange(h) - 0.5) / focal

    # The sky, at half the final size, high enough for what the water mirrors.
    mirror_top = 0.62
    sky_x = (np.arange(-8, w // 4 + 8) + 0.5 - w / 8) / (focal / 4)
    sky_y = np.linspace(mirror_top, 0.0, 330)
    sky = make_sky(sky_x, sky_y)

    def sky_at(rows):
        tx, ty = np.meshgrid(columns, rows)
        return fetch(sky, (tx - sky_x[0]) / (sky_x[1] - sky_x[0]),
                     (sky_y[0] - ty) / (sky_y[0] - sky_y[1]))

    image, hit = draw_view(land, columns, slopes, sky_at(slopes), False)

    # The mirrored views need half the sharpness: the waves blur them anyway.
    # Water beyond a headland mirrors only what lies farther still, so there is
    # one view for the sea before each headland and one for the rest.
    mirror_slopes = np.linspace(mirror_top, 0.0, 700)
    back = sky_at(mirror_slopes)[:, ::2]
    mirrors = []
    for begins, start in [(0.0, 250.0), (1400.0, 1850.0), (2750.0, 3400.0)]:
        mirror, _ = draw_view(land, columns[::2], mirror_slopes, back, True, start)
        mirrors.append((begins, np.repeat(mirror, 2, axis=1)))

    water = ~hit & (slopes < -1e-5)[:, None]
    draw_water(image, water, columns, slopes, mirrors, mirror_slopes)

    image = np.minimum(image, 8.0)
    image = image.reshape(TALL, OVER, WIDE, OVER, 3).mean((1, 3))
    pixels = develop(image)
    write(path, pixels, "uint8", ["R", "G", "B"], oiio__ColorSpace="sRGB",
          png__compressionLevel=9)
    return f"{WIDE} x {TALL}, RGB 8 bit"

IMAGES = {
    "terrain": ("terrain.exr", make_terrain),
    "terrain_edited": ("terrain_edited.exr", make_terrain_edited),
    "mask": ("mask.png", make_mask),
    "lettering": ("lettering.png", make_lettering),
    "roads": ("roads.png", make_roads),
    "overlay": ("overlay.exr", make_overlay),
    "coast": ("coast.png", make_coast),
}


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description="Make the sample images.")
    parser.add_argument("--out", default=here, help="folder to write into (default: this one)")
    parser.add_argument("--only", nargs="+", choices=list(IMAGES), default=list(IMAGES),
                        help="which images to make (default: all)")
    options = parser.parse_args()
    os.makedirs(options.out, exist_ok=True)
    for name in options.only:
        file, make = IMAGES[name]
        path = os.path.join(options.out, file)
        began = time.time()
        facts = make(path)
        print(f"{file}: {facts}, {os.path.getsize(path) // 1024} KiB, "
              f"{time.time() - began:.1f} s", flush=True)


if __name__ == "__main__":
    main()
