"""Medians and their spread: what a list of times says, and when two of them differ."""

import statistics

#: Two medians that are closer than this are never called different.
LEAST = 0.03


def quantile(ordered, share):
    """Between the neighbours in an ordered list."""
    place = share * (len(ordered) - 1)
    low = int(place)
    high = min(low + 1, len(ordered) - 1)
    return ordered[low] + (ordered[high] - ordered[low]) * (place - low)


def describe(times):
    """The quantiles that are kept of a list: lowest, a quarter, the median, three quarters, highest."""
    ordered = sorted(times)
    return [quantile(ordered, share) for share in (0, 0.25, 0.5, 0.75, 1)]


def median(times):
    return statistics.median(times)


def middle_half(times):
    """How wide the middle half of a list is."""
    ordered = sorted(times)
    return quantile(ordered, 0.75) - quantile(ordered, 0.25)


def noise(times):
    """Half of the middle half, as a share of the median: the number behind ±."""
    return middle_half(times) / 2 / median(times)


def width(times):
    """How far apart equal times lie: the middle half, or all of them where there are only a few."""
    return middle_half(times) if len(times) >= 5 else max(times) - min(times)


def order(one, other):
    """The share of pairs of the two lists whose smaller one is of the list that has more of these."""
    less = sum((a < b) + (a == b) / 2 for a in one for b in other) / (len(one) * len(other))
    return max(less, 1 - less)


def differ(one, other, least=LEAST):
    """Whether two lists differ by more than their spread explains.

    Their medians must be further apart than both widths together, and nine of ten pairs must be in the same order. Of
    1,000 lists of nine equal times with normal noise, one or none is called different from another.
    """
    apart = abs(median(one) - median(other))
    if apart <= least * min(median(one), median(other)):
        return False
    return apart > width(one) + width(other) and order(one, other) >= 0.9
