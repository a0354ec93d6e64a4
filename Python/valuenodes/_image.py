# SPDX-License-Identifier: Apache-2.0
"""What the class Image has in Python: its text, and pictures of images."""

from ._valuenodes import Image

Image.__doc__ = """An image: float32 samples in rows, and what nodes want to know of them.

    Nodes take arrays in the place of images; an image adds a range, a place or a mode. It does not change: `replace`
    makes another one with the same samples.

    Parameters
    ----------
    array : array_like or Image
        (rows, columns) or (rows, columns, channels). Native float32 whose rows lie one after the other is shared, all
        else is copied once. Integers are values as they are: uint8 is 0 to 255, not 0 to 1 as `read` makes of files.
    mode : {"color", "signed", "value", "pair"}, optional
        What the channels mean. Without it: "value" for one, "pair" for two, "color" for three and four.
    pin : tuple of int, default (0, 0)
        Where the image lies: the column and row of its pivot.
    pivot : tuple of float, default (0.0, 0.0)
        The point of the image that lies at `pin`, as shares of its size; (0, 0) is the upper left corner.
    range : tuple of float, optional
        The lowest and the highest value that samples are meant to have; (0.0, 1.0) unless given, and
        (-1.0, 1.0) for the mode "signed". Nothing is cut by it.
    outside : float, default 0.0
        What counts where the image does not reach.

    Attributes
    ----------
    mode, pin, pivot, range, outside
        As above.
    size : tuple of int
        Columns and rows.
    shape : tuple of int
        That of the array: rows, columns and, but for values, channels.
    channels : int
        How many.
    metadata : dict
        What the image carries of its file.

    Examples
    --------
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> heights = np.array([[0, 1, 2], [3, 4, 5]], np.float32)
    >>> image = vn.Image(heights, range=(0, 5))
    >>> image
    <valuenodes.Image 3 x 2 value, range 0 to 5>
    >>> np.shares_memory(np.asarray(image), heights)
    True
    >>> image.replace(pin=(10, 20)).pin
    (10, 20)
    >>> vn.Image.from_dlpack(image) == vn.Image(heights)
    True
    """


def to_png(self, *, range=None, colormap=None, size=None):
    """The image as a picture in the format PNG.

    Values become grey, colors stay colors, NaN is magenta.

    Parameters
    ----------
    range : tuple of float, optional
        The values that are shown as black and as white; without one, the range that the image declares.
    colormap : str, optional
        Shows values by this color ramp; `valuenodes.colormaps()` lists them.
    size : int, optional
        The most columns and rows of the picture; without one, as many as the image has.

    Returns
    -------
    bytes

    Examples
    --------
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> vn.Image(np.zeros((2, 3))).to_png(range=(0, 5), colormap="viridis")[1:4]
    b'PNG'
    """
    from ._pictures import to_png

    return to_png(self, range=range, colormap=colormap, size=size)


def show(self, *, range=None, colormap=None):
    """Shows the image: in a notebook as a picture in it, elsewhere in the system's viewer of pictures.

    Parameters
    ----------
    range, colormap
        As for `to_png`.

    Examples
    --------
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> vn.Image(np.eye(16)).show(colormap="magma")  # doctest: +SKIP
    """
    from ._pictures import show

    show(self, range=range, colormap=colormap)


def _repr_png_(self):
    from ._pictures import repr_png

    return repr_png(self)


# What is rarely needed is loaded at the first call.
Image.__module__ = "valuenodes"
for _function in (to_png, show, _repr_png_):
    _function.__module__, _function.__qualname__ = "valuenodes", f"Image.{_function.__name__}"
    setattr(Image, _function.__name__, _function)
del _function
