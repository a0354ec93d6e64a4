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


def differ(one, other):
    """Whether the medians of two lists are further apart than their spread explains: by more than both middle halves
    together. For normal noise that is four deviations of the difference of two medians of seven."""
    apart = abs(median(one) - median(other))
    return apart > middle_half(one) + middle_half(other) and apart > LEAST * min(median(one), median(other))
