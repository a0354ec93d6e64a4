"""What the nodes and operations compute, in double precision and without regard to speed.

For the nodes, the references of the tests of the Python package; they say single precision in one place, and are read
once more here with double precision in that place.
"""

import sys
import types
from pathlib import Path

import numpy as np

TESTS = Path(__file__).resolve().parents[2] / "Python/tests"
SINGLE, DOUBLE = "F = np.float32\n", "F = np.float64\n"
_modules = {}


def load(name):
    if name not in _modules:
        text = (TESTS / f"{name}.py").read_text(encoding="utf-8")
        if SINGLE not in text:
            raise RuntimeError(f"{name}.py does not say its precision any more")
        sys.path.insert(0, str(TESTS))
        module = types.ModuleType(f"{name}_in_double")
        try:
            exec(compile(text.replace(SINGLE, DOUBLE), f"{name}.py", "exec"), module.__dict__)
        finally:
            sys.path.pop(0)
        _modules[name] = module
    return _modules[name]


def listed(result):
    return list(result) if isinstance(result, (list, tuple)) else [result]


def in_double(array):
    return array.astype(np.float64) if isinstance(array, np.ndarray) else array


def exact(name, *inputs, **keywords):
    """The definition of a node, of named inputs."""

    def call(x):
        module = load("reference")
        if not hasattr(module, name):
            module = load("reference_regions")
        return listed(getattr(module, name)(*[in_double(x[one]) for one in inputs], **keywords))

    return call


def of(function):
    """A definition that is a formula: of the inputs, in double precision."""

    class InDouble:
        def __init__(self, x):
            self.x = x

        def __getitem__(self, name):
            return in_double(self.x[name])

    return lambda x: listed(function(InDouble(x)))


def distance(name, seamless=False, normalize=False):
    """Rows first, then columns: the squares of distances are whole numbers."""

    def call(x):
        shape = x[name] > 0.5
        side = len(shape)
        at = np.arange(side)
        apart = np.abs(at[:, None] - at[None, :])
        if seamless:
            apart = np.minimum(apart, side - apart)
        squares = apart**2
        far = 4 * side * side
        along = np.array([np.where(shape[:, c][None, :], squares, far).min(1) for c in range(side)]).T
        result = np.sqrt(np.array([(along[r][None, :] + squares).min(1) for r in range(side)]).astype(np.float64))
        return [result / result.max() if normalize else result]

    return call


def grown(name, radius, wrap, shrink=False):
    """The largest or smallest sample of a disc, offset by offset."""

    def call(x):
        image = x[name].astype(np.float64)
        side = len(image)
        fill = np.inf if shrink else -np.inf
        padded = np.pad(image, radius, "wrap") if wrap else np.pad(image, radius, constant_values=fill)
        result = np.full_like(image, fill)
        choose = np.minimum if shrink else np.maximum
        for j in range(-radius, radius + 1):
            for i in range(-radius, radius + 1):
                if j * j + i * i <= radius * radius:
                    part = padded[radius + j : radius + j + side, radius + i : radius + i + side]
                    choose(result, part, out=result)
        return [result]

    return call
