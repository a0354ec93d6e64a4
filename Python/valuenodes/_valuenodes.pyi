import os
from collections.abc import Sequence
from typing import Any, ClassVar, Literal, Protocol, SupportsIndex, TypeAlias, overload

import numpy as np
from numpy.typing import ArrayLike, DTypeLike, NDArray

_Mode: TypeAlias = Literal["color", "signed", "value", "pair"]

class _HasArray(Protocol):
    def __array__(self) -> NDArray[Any]: ...

class _HasDlPack(Protocol):
    def __dlpack__(self, *, stream: Any = None) -> Any: ...

_ImageLike: TypeAlias = Image | NDArray[Any] | _HasArray | _HasDlPack | memoryview

class Image:
    __hash__: ClassVar[None]  # type: ignore[assignment]
    def __init__(
        self,
        array: ArrayLike | _ImageLike,
        mode: _Mode | None = None,
        pin: tuple[float, float] | None = (0, 0),
        pivot: tuple[float, float] | None = (0.0, 0.0),
        range: tuple[float, float] | None = None,
        outside: float = 0.0,
    ) -> None: ...
    @staticmethod
    def from_dlpack(object: _HasDlPack) -> Image: ...
    @property
    def mode(self) -> _Mode: ...
    @property
    def size(self) -> tuple[int, int]: ...
    @property
    def channels(self) -> int: ...
    @property
    def shape(self) -> tuple[int, ...]: ...
    @property
    def pin(self) -> tuple[int, int]: ...
    @property
    def pivot(self) -> tuple[float, float]: ...
    @property
    def range(self) -> tuple[float, float]: ...
    @property
    def outside(self) -> float: ...
    @property
    def metadata(self) -> dict[str, Any]: ...
    def replace(
        self,
        *,
        mode: _Mode | None = None,
        pin: tuple[float, float] | None = None,
        pivot: tuple[float, float] | None = None,
        range: tuple[float, float] | None = None,
        outside: float | None = None,
        metadata: dict[str, Any] | None = None,
    ) -> Image: ...
    def to_png(
        self, *, range: tuple[float, float] | None = None, colormap: str | None = None, size: int | None = None
    ) -> bytes: ...
    def show(self, *, range: tuple[float, float] | None = None, colormap: str | None = None) -> None: ...
    def _repr_png_(self) -> bytes | None: ...
    def __array__(self, dtype: DTypeLike | None = None, copy: bool | None = None) -> NDArray[Any]: ...
    @property
    def __array_interface__(self) -> dict[str, Any]: ...
    def __dlpack__(
        self,
        *,
        stream: int | None = None,
        max_version: tuple[int, int] | None = None,
        dl_device: tuple[int, int] | None = None,
        copy: bool | None = None,
    ) -> Any: ...
    def __dlpack_device__(self) -> tuple[int, int]: ...
    def __copy__(self) -> Image: ...
    def __deepcopy__(self, memo: dict[int, Any]) -> Image: ...
    def __eq__(self, other: object) -> bool: ...

version: str
