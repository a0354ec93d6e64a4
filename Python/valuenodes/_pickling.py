# SPDX-License-Identifier: Apache-2.0
"""What `pickle` calls."""

from ._valuenodes import Image


def restore_image(array, mode, pin, pivot, range, outside, metadata):
    """The image that was pickled."""
    return Image(array, mode, pin, pivot, range, outside).replace(metadata=metadata)
