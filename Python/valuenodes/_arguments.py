# SPDX-License-Identifier: Apache-2.0
"""Arguments that are checked before they reach the host."""

import operator

# What the host counts with.
_MOST = 2**31 - 1


def read_whole(name, value):
    """A whole number that the host can count with; `name` says whose it is: "to_png: size"."""
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name} takes a whole number, not {type(value).__name__}") from None
    if abs(number) > _MOST:
        raise ValueError(f"{name} takes a whole number of at most {_MOST}, not {number}")
    return number


def read_shown_range(name, value):
    """The values that a picture shows as black and as white; None for those of the image."""
    if value is None:
        return None
    wanted = f"{name} takes two finite numbers (low, high), the lower one first"
    try:
        low, high = value
        low, high = float(low), float(high)
    except (TypeError, ValueError, OverflowError):
        raise TypeError(f"{wanted}, not {value!r:.60}") from None
    # Neither do infinities pass, nor NaN.
    if not (-float("inf") < low < high < float("inf")):
        raise ValueError(f"{wanted}, not ({low:g}, {high:g})")
    return low, high


def read_word(name, value):
    """Text, or None."""
    if value is not None and not isinstance(value, str):
        raise TypeError(f"{name} takes a word, not {type(value).__name__}")
    return value
