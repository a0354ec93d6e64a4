import dataclasses
from collections.abc import Sequence
from typing import Any, Literal

__all__ = ["Input", "Row", "choice", "color", "flag", "frame", "input", "number", "path", "point", "string"]

@dataclasses.dataclass(frozen=True)
class Row:
    name: str
    kind: str
    default: Any
    text: str = ""
    lowest: float = 0.0
    highest: float = 0.0
    step: float = 0.0
    decimals: int = 0
    unit: str = ""
    words: tuple[str, ...] = ()
    use: str = "text"

@dataclasses.dataclass(frozen=True)
class Input:
    name: str
    many: bool = False
    optional: bool = False

def input(name: str, *, many: bool = False, optional: bool = False) -> Input: ...
def number(
    name: str,
    default: float = 0.0,
    lowest: float = ...,
    highest: float = ...,
    *,
    step: float = 0.01,
    decimals: int = 3,
    unit: str = "",
    text: str = "",
) -> Row: ...
def flag(name: str, default: bool = False, *, text: str = "") -> Row: ...
def choice(name: str, words: Sequence[str], default: str | None = None, *, text: str = "") -> Row: ...
def string(name: str, default: str = "", *, text: str = "") -> Row: ...
def path(name: str, use: Literal["read", "write"] = "read", *, text: str = "") -> Row: ...
def point(name: str, default: Sequence[float] = (0.0, 0.0), *, text: str = "") -> Row: ...
def frame(name: str, default: Sequence[float] = (0.0, 0.0, 0.0, 0.0), *, text: str = "") -> Row: ...
def color(name: str, default: Sequence[float] = (0.0, 0.0, 0.0, 1.0), *, text: str = "") -> Row: ...
