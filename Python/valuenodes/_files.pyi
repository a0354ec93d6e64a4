import os
from typing import Literal

from ._valuenodes import _ImageLike  # pyright: ignore[reportPrivateUsage]

def write(
    path: str | os.PathLike[str],
    image: _ImageLike,
    type: Literal["float", "half", "uint16", "uint8", "int16"] | None = None,
    *,
    samples: Literal["unit", "stored"] = "unit",
    opacity: Literal["auto", "keep", "drop"] = "auto",
    metadata: Literal["keep", "strip"] = "keep",
    layer: str = "",
    compression: str = "",
) -> None: ...
