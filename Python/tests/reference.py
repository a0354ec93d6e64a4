# SPDX-License-Identifier: Apache-2.0
"""The nodes once more, as plain numpy written from their pages in Docs/Nodes, without regard to speed."""

import itertools

import numpy as np

F = np.float32


def value_of(samples, mode):
    """The one number that each pixel stands for."""
    if mode == "color":
        o = samples[..., 3]
        return ((o * samples[..., 1] + o * samples[..., 0]) + o * samples[..., 2]) * F(0.33333334)
    if mode == "signed":
        return samples[..., 2]
    return samples if mode == "value" else samples[..., 0]


def first_channel(samples):
    return samples if samples.ndim == 2 else samples[..., 0]


def fold(operation, constant, *images):
    """Arithmetic: with a constant for one image, else image by image."""
    if len(images) == 1:
        return operation(images[0], F(constant))
    result = images[0]
    for image in images[1:]:
        result = operation(result, image)
    return result


def power(base, *exponents):
    """In double precision, narrowed after each step."""
    result = base
    for exponent in exponents:
        result = np.power(result.astype(np.float64), exponent.astype(np.float64)).astype(F)
    return result


def to_value(samples, mode, declared, low=0, high=1, auto_level=False):
    value = value_of(samples, mode)
    nominal = {"color": (0, 1), "signed": (-1, 1)}.get(mode, declared)
    source_low, source_high = (value.min(), value.max()) if auto_level else map(F, nominal)
    return (value.astype(np.float64) - source_low) / (float(source_high) - float(source_low)) * (high - low) + low


def clamp(samples, clamp="both", low=0, high=0, profile="linear"):
    value = first_channel(samples)
    low = value.min() if clamp == "high" else F(low)
    high = value.max() if clamp == "low" else F(high)
    limited = np.minimum(np.maximum(value, low), high)
    if profile == "linear":
        return limited
    t = (limited.astype(np.float64) - low) / (float(high) - float(low))
    curves = {
        "smooth": 3 * t**2 - 2 * t**3,
        "perlin": 6 * t**5 - 15 * t**4 + 10 * t**3,
        "arc_out": np.sqrt(1 - (1 - t) ** 2),
        "arc_in": 1 - np.sqrt(1 - t**2),
    }
    return curves[profile] * (float(high) - float(low)) + low


def steps(samples, declared, steps):
    """The k-th of n parts of the range gets the k-th of n levels from its low to its high end."""
    low, high = declared
    n = int(steps)
    part = np.floor((first_channel(samples).astype(np.float64) - low) / (high - low) * n)
    return part / (n - 1) * (high - low) + low


FUNCTIONS = {
    "absolute": np.abs,
    "sine": np.sin,
    "cosine": np.cos,
    "tangent": np.tan,
    "arcsine": lambda v: np.arcsin(np.clip(v, -1, 1)),
    "arccosine": lambda v: np.arccos(np.clip(v, -1, 1)),
    "arctangent": np.arctan,
    "floor": np.floor,
    "ceil": np.ceil,
    "inverse": lambda v: 1 / v,
    "log": np.log,
    "log2": np.log2,
    "log10": np.log10,
    "exponential": np.exp,
    "square_root": np.sqrt,
    "cubic_root": np.cbrt,
    "deg_to_rad": np.deg2rad,
    "rad_to_deg": np.rad2deg,
}


def function(samples, word):
    with np.errstate(all="ignore"):
        return FUNCTIONS[word](samples.astype(np.float64)).astype(F)


def condition(samples, word, a=0, b=0):
    a, b = F(a), F(b)
    tests = {
        "v_eq_min": lambda v: v == v.min(),
        "v_df_min": lambda v: v != v.min(),
        "v_eq_max": lambda v: v == v.max(),
        "v_df_max": lambda v: v != v.max(),
        "v_lt_a": lambda v: v < a,
        "v_lte_a": lambda v: v <= a,
        "v_eq_a": lambda v: v == a,
        "v_gte_a": lambda v: v >= a,
        "v_gt_a": lambda v: v > a,
        "a_lt_v_lt_b": lambda v: (a < v) & (v < b),
        "a_lte_v_lt_b": lambda v: (a <= v) & (v < b),
        "a_lt_v_lte_b": lambda v: (a < v) & (v <= b),
        "a_lte_v_lte_b": lambda v: (a <= v) & (v <= b),
    }
    return tests[word](samples).astype(F)


def compare(a, b, step):
    """Values of whole steps, which round exactly, are compared as they are."""
    less, equal = a < b - step / 2, np.abs(a - b) < step / 2
    every = (less, less | equal, equal, ~equal, ~less, ~less & ~equal)
    return [one.astype(F) for one in every]


def value_range(samples, center=0, size=0, falloff=0, profile="linear"):
    distance = np.abs(samples.astype(np.float64) - center)
    if falloff == 0:
        return (distance < size).astype(F)
    t = np.clip((distance - size) / falloff, 0, 1)
    curves = {
        "linear": 1 - t,
        "smooth": 1 - (6 * t**5 - 15 * t**4 + 10 * t**3),
        "arc_out": np.sqrt(1 - t**2),
        "arc_in": 1 - np.sqrt(1 - (1 - t) ** 2),
    }
    return curves[profile]


def distance(value, seamless, normalize):
    rows, columns = value.shape
    shape = np.argwhere(value > 0.5)
    result = np.full(value.shape, np.inf)
    for y, x in itertools.product(range(rows), range(columns)):
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
        if v.shape[1] == 1:
            return np.zeros_like(v)
        if seamless:
            return (np.roll(v, -1, 1) - np.roll(v, 1, 1)) * F(0.5)
        inner = (v[:, 2:] - v[:, :-2]) * F(0.5)
        return np.concatenate([v[:, 1:2] - v[:, :1], inner, v[:, -1:] - v[:, -2:-1]], 1)

    return along(value), along(value.T).T


def ambient_occlusion(value, declared, radius, seamless):
    rows, columns = value.shape
    low, high = declared
    z = (value.astype(np.float64) - low) * (radius / (high - low)) if high != low else np.zeros(value.shape)

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


def neighbors(word):
    if word == "cross":
        return [(-1, 0), (0, -1), (0, 1), (1, 0)]
    return [(dy, dx) for dy in (-1, 0, 1) for dx in (-1, 0, 1) if (dy, dx) != (0, 0)]


def connected_components(samples, declared, threshold, word, seamless):
    pixels = samples.reshape(*samples.shape[:2], -1)
    rows, columns = pixels.shape[:2]
    limit = F(threshold) * (F(declared[1]) - F(declared[0]))
    labels = np.full((rows, columns), -1)
    count = 0
    for start in itertools.product(range(rows), range(columns)):
        if labels[start] >= 0:
            continue
        labels[start] = count
        pending = [start]
        while pending:
            y, x = pending.pop()
            for dy, dx in neighbors(word):
                ny, nx = y + dy, x + dx
                if seamless:
                    ny, nx = ny % rows, nx % columns
                if not (0 <= ny < rows and 0 <= nx < columns) or labels[ny, nx] >= 0:
                    continue
                if (np.abs(pixels[ny, nx] - pixels[y, x]) < limit).all():
                    labels[ny, nx] = count
                    pending.append((ny, nx))
        count += 1
    return labels.astype(F)


def component_edges(samples, declared, threshold, word, seamless, invert):
    pixels = samples.reshape(*samples.shape[:2], -1)
    rows, columns = pixels.shape[:2]
    limit = F(threshold) * (F(declared[1]) - F(declared[0]))
    flat = pixels.reshape(rows * columns, -1)
    edges = np.zeros((rows, columns), bool)
    for y, x in itertools.product(range(rows), range(columns)):
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
            edges[y, x] |= bool((np.abs(other - pixels[y, x]) > limit).any())
    return (~edges if invert else edges).astype(F)


def relief_levels(value, declared, radius, seamless):
    """Every pixel raises a cone as wide as the radius times its share of the range, and as high as it is."""
    rows, columns = value.shape
    low, high = declared
    share = (value.astype(np.float64) - low) / (high - low)
    result = np.zeros(value.shape)
    for y, x in itertools.product(range(rows), range(columns)):
        for dy, dx in itertools.product(range(-radius, radius + 1), repeat=2):
            ny, nx = y + dy, x + dx
            if seamless:
                ny, nx = ny % rows, nx % columns
            elif not (0 <= ny < rows and 0 <= nx < columns):
                continue
            height = share[ny, nx] - np.hypot(dy, dx) / radius
            result[y, x] = max(result[y, x], height)
    return result * (high - low) + low


def disc(radius):
    """The offsets (i, j) with (i/radius)² + (j/radius)² <= 1."""
    around = range(-radius, radius + 1)
    return [(y, x) for y in around for x in around if y * y + x * x <= radius * radius]


def extreme(mask, radius, choose):
    """The largest or smallest sample of a disc around each pixel of a tile."""
    return choose.reduce([np.roll(mask, offset, (0, 1)) for offset in disc(radius)])


def relief_bevel(mask, radius, style):
    """Steps of one pixel along the edge of a mask of 0 and 1 that tiles; the radius is even."""
    half = radius // 2

    def grown(steps):
        return [extreme(mask, step, np.maximum) for step in range(1, steps + 1)]

    def shrunk(steps):
        return [extreme(mask, step, np.minimum) for step in range(steps)]

    if style == "inner_bevel":
        return np.mean(shrunk(radius), 0)
    if style == "outer_bevel":
        return np.mean(grown(radius), 0)
    if style == "emboss":
        return np.mean(grown(half) + shrunk(half), 0)
    return 1 - np.mean(grown(half), 0) + np.mean(shrunk(half), 0)
