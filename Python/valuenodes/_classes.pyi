from collections.abc import Callable
from typing import Any, TypeVar, overload

from .rows import Input, Row

FIRST_NUMBER: int

_Class = TypeVar("_Class", bound=type)

@overload
def register(__node_class: _Class, *, replace: bool = False) -> _Class: ...
@overload
def register(__node_class: None = None, *, replace: bool = False) -> Callable[[_Class], _Class]: ...

class Node:
    inputs: tuple[str | Input, ...]
    outputs: tuple[str, ...]
    attributes: tuple[Row, ...]
    takes_images: bool
    group: str
    keywords: str
    # Each class takes the images and attributes that it declares.
    evaluate: Callable[..., Any]
