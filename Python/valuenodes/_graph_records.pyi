from typing import NamedTuple

class Connection(NamedTuple):
    source: str
    target: str
    index: int  # type: ignore[assignment]

class Output(NamedTuple):
    source: str
    path: str
    type: str
    samples: str
    opacity: str
    metadata: str
    layer: str

class WrittenFile(NamedTuple):
    path: str
    size: tuple[int, int]
    type: str

class Findings(NamedTuple):
    problems: tuple[str, ...]
    notes: tuple[str, ...]
    @property
    def is_valid(self) -> bool: ...
