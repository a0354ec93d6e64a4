"""The images of all measurements, and what libraries make of them before anything is timed."""

import numpy as np

F = np.float32
D = np.float64
LARGEST = 4096


def octave(side, cells, generator):
    """A grid of random numbers, between which values run evenly."""
    grid = generator.random((cells + 1, cells + 1))
    at = np.arange(side) * (cells / side)
    index = at.astype(int)
    part = at - index
    rows = grid[index] * (1 - part)[:, None] + grid[index + 1] * part[:, None]
    return rows[:, index] * (1 - part) + rows[:, index + 1] * part


def make_terrain(side, lowest, generator):
    """Heights from `lowest` to 1; a large image is a terrain of LARGEST again and again."""
    if side > LARGEST:
        times = -(-side // LARGEST)
        return np.ascontiguousarray(np.tile(make_terrain(LARGEST, lowest, generator), (times, times))[:side, :side])
    heights = np.zeros((side, side))
    for cells in (2, 4, 8, 16, 32, 64):
        heights += octave(side, cells, generator) * 2 / cells
    low, high = heights.min(), heights.max()
    return ((heights - low) / (high - low) * (1 - lowest) + lowest).astype(F, order="C")


def make_color(side, a, b):
    color = np.empty((side, side, 4), F)
    color[..., 0], color[..., 1], color[..., 2], color[..., 3] = a, b, a * b, F(1)
    return color


MAKERS = {
    # Not quite 0, of which there is no logarithm; b is a divisor.
    "a": lambda x, side: make_terrain(side, 0.001, np.random.default_rng(3)),
    "b": lambda x, side: make_terrain(side, 0.25, np.random.default_rng(4)),
    "levels": lambda x, side: np.floor(x["a"] * 8).astype(F) / F(8),
    "mask": lambda x, side: (x["a"] > 0.6).astype(F),
    # A pixel in about 20,000, and one at least.
    "few": lambda x, side: (x["noise"] < max(1 / 20000, 2 / side**2)).astype(F),
    "noise": lambda x, side: np.random.default_rng(5).random((side, side), dtype=F),
    "color": lambda x, side: make_color(side, x["a"], x["b"]),
    "whole_a": lambda x, side: np.rint(x["a"].astype(D) * 100).astype(F) / F(100),
    "whole_b": lambda x, side: np.rint(x["b"].astype(D) * 100).astype(F) / F(100),
}


class Inputs:
    """Terrains of 0.001 and 0.25 to 1, both in whole steps of 0.01 too, one in eighths, masks, noise and a colour.

    Each is made when it is first asked for. `ready` keeps what a library has made of one, so that only the first call,
    which is not timed, makes it.
    """

    def __init__(self, side):
        self.side = side
        self._made = {}
        self._ready = {}

    def __getitem__(self, name):
        if name not in self._made:
            self._made[name] = MAKERS[name](self, self.side)
        return self._made[name]

    def names(self):
        """Those that have been asked for."""
        return list(self._made)

    def ready(self, make, name):
        key = make, name
        if key not in self._ready:
            self._ready[key] = make(self[name])
        return self._ready[key]

    def spare(self, make, name):
        """Something to write into, made once."""
        key = make, name
        if key not in self._ready:
            self._ready[key] = make(self.side)
        return self._ready[key]

    def forget_ready(self):
        """Gives back what libraries keep; the images stay."""
        self._ready.clear()
