#!/usr/bin/env python3
"""Writes the type stub of the package vektuner (its __init__.pyi) from the built
package: the fixed API below, then a class per feature with the typed helpers the
package generated from the settings table and the message catalogue, so that an editor
completes exactly what exists. Run by the build: make_stub.py OUTPUT."""

import inspect
import os
import sys
import textwrap

# The built package, not its sources beside this script.
sys.path = [p for p in sys.path if os.path.abspath(p) != os.path.dirname(os.path.abspath(__file__))]
import vektuner  # noqa: E402
from vektuner import _helpers  # noqa: E402

HEAD = '''\
# The type stub of vektuner, written by make_stub.py from the built package.
from collections.abc import Mapping, Sequence
from os import PathLike
from typing import Any, NamedTuple, TypedDict

__version__: str
CHANNELS: tuple[str, ...]
MAX_BANDS: int

class Error(Exception): ...
class Timeout(Error, TimeoutError): ...
class LineError(Error, OSError): ...
class DaemonError(Error): ...
class NG(Error):
    response: Response
    def __init__(self, response: Response) -> None: ...

class Response:
    """One answer: status, ok, self_number, the fields by name, raw data."""
    feature: str
    message: str
    status: str
    self_number: int
    fields: dict[str, Any]
    raw: bytes | None
    raw_length: int
    @property
    def ok(self) -> bool: ...
    def __getattr__(self, name: str) -> Any: ...
    def __getitem__(self, name: str) -> Any: ...

class Traffic(NamedTuple):
    requests: int
    bytes_sent: int
    bytes_received: int

class Difference(NamedTuple):
    setting: str
    a: Any
    b: Any
    text: str

Document = dict[str, Any]

class Feature:
    def __init__(self, link: Link) -> None: ...
'''

LINK = '''
class Link:
    """One line to a vek_tuner device (a context manager)."""
    daemon_log: str | None
{features}
    def __init__(self, device: str | PathLike[str] = ..., baud_rate: int = ...,
                 timeout: float = ..., *, url: str | None = ..., device_index: int = ...,
                 token: str | None = ..., force: bool = ...,
                 window: int | None = ...) -> None: ...
    @property
    def device(self) -> str: ...
    @property
    def closed(self) -> bool: ...
    @property
    def traffic(self) -> Traffic: ...
    @property
    def features(self) -> list[str]: ...
    def request(self, feature: str, message: str, *args: Any,
                output: str | PathLike[str] | None = ...) -> Response: ...
    def request_many(self, requests: Sequence[Sequence[Any]]) -> list[Response]: ...
    def snapshot(self) -> Document: ...
    def apply(self, document: Document | str | PathLike[str], dry_run: bool = ...,
              bypass: bool = ...) -> dict[str, Any]: ...
    def close(self) -> None: ...
    def __enter__(self) -> Link: ...
    def __exit__(self, *exc: object) -> None: ...

def default_daemon() -> str: ...
def launch(daemon_path: str | PathLike[str] | None = ..., args: Sequence[str] = ...,
           sim: str | Sequence[str] | None = ..., timeout: float = ...,
           log: str | PathLike[str] | None = ..., force: bool = ...,
           window: int | None = ...) -> Link: ...
def use_profile(path: str | PathLike[str] | None = ...) -> str: ...
def diff(a: Document | str | PathLike[str] | Link,
         b: Document | str | PathLike[str] | Link) -> list[Difference]: ...
'''


def docstring(text, indent):
    lines = textwrap.wrap(text, 88 - len(indent) - 3) or [""]
    if len(lines) == 1:
        return f'{indent}"""{lines[0]}"""\n'
    return f'{indent}"""' + f"\n{indent}".join(lines) + f'\n{indent}"""\n'


def parameters(helper):
    words = ["self"]
    kind = None
    for p in helper.params:
        if kind == inspect.Parameter.POSITIONAL_ONLY and p.kind != kind:
            words.append("/")
        if p.kind == inspect.Parameter.KEYWORD_ONLY and kind != p.kind:
            words.append("*")
        kind = p.kind
        default = "" if p.default is inspect.Parameter.empty else " = ..."
        star = "*" if p.kind == inspect.Parameter.VAR_POSITIONAL else ""
        words.append(f"{star}{p.name}: {p.annotation}{default}")
    if kind == inspect.Parameter.POSITIONAL_ONLY:
        words.append("/")
    return ", ".join(words)


def feature_class(feature, helpers):
    out = f"\nclass {feature}(Feature):\n"
    out += docstring(vektuner.FEATURES[feature].__doc__, "    ")
    for h in helpers:
        if h.is_property:
            out += f"    @property\n    def {h.name}(self) -> {h.returns}:\n"
            out += docstring(h.doc, "        ")
            if h.settable:
                out += f"    @{h.name}.setter\n    def {h.name}(self, value: " \
                       f"{h.accepts}) -> None: ...\n"
        else:
            out += f"    def {h.name}({parameters(h)}) -> {h.returns}:\n"
            out += docstring(h.doc, "        ")
    return out


def main():
    out = HEAD
    for name, fields in _helpers.STRUCTURE_FIELDS.items():
        out += f"\nclass {name}(TypedDict):\n"
        out += "".join(f"    {field}: {annotation}\n" for field, annotation in fields.items())
    for feature, helpers in _helpers.HELPERS.items():
        out += feature_class(feature, helpers)
    attributes = "".join(f"    {feature.lower()}: {feature}\n" for feature in _helpers.HELPERS)
    out += LINK.format(features=attributes)
    with open(sys.argv[1], "w", encoding="utf-8") as f:
        f.write(out)


if __name__ == "__main__":
    main()
