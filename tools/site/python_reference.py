# SPDX-License-Identifier: BSD-3-Clause

"""The reference of the Python package, from its docstrings in the form of numpydoc."""

from __future__ import annotations

import inspect
import re
from functools import cached_property
from types import ModuleType
from typing import Any

_UNDERLINE = re.compile(r"(?m)^([A-Z][A-Za-z ]+)\n-{3,}$")


class _Annotation:
    """An annotation as in the source, without the quotes of a string."""

    def __init__(self, text: str) -> None:
        self._text = text

    def __repr__(self) -> str:
        return self._text


def reference_markdown(package: ModuleType) -> str:
    """One section for each public name: functions first, then classes."""
    members = [(name, getattr(package, name)) for name in package.__all__]
    functions = [(name, value) for name, value in members if inspect.isfunction(value)]
    classes = [(name, value) for name, value in members if inspect.isclass(value)]
    text = "# Python reference\n\nThe public names of `stalwick`, from their docstrings. "
    text += "[Python](python.md) shows how they are used.\n"
    for name, function in functions:
        text += f"\n## {name}\n\n{_signature(name, function)}{_docstring(function)}"
    public = {value for _, value in classes}
    for name, value in classes:
        text += f"\n## {name}\n\n{_docstring(value)}{_bases(value, public)}"
        text += "".join(_member(name, member, attribute)
                        for member, attribute in _members(value, public))
    return text


def _bases(value: type, public: set[type]) -> str:
    names = [base.__name__ for base in value.__mro__[1:] if base in public]
    links = ", ".join(f"[{name}](#{name.lower()})" for name in names)
    return f"It has also what is said of {links}.\n" if names else ""


def _members(value: type, public: set[type]) -> list[tuple[str, Any]]:
    """Its own, and those of bases that have no section; without what has no docstring."""
    found: dict[str, Any] = {}
    for owner in value.__mro__:
        if (owner is not value and owner in public) or not owner.__module__.startswith("stalwick"):
            continue
        for name, attribute in vars(owner).items():
            is_value = isinstance(attribute, (property, cached_property))
            is_member = is_value or inspect.isfunction(attribute)
            if is_member and not name.startswith("_") and inspect.getdoc(attribute):
                found.setdefault(name, attribute)
    return list(found.items())


def _member(owner: str, name: str, attribute: Any) -> str:
    text = f"\n### {owner}.{name}\n\n"
    if inspect.isfunction(attribute):
        text += _signature(name, attribute)
    return text + _docstring(attribute)


def _signature(name: str, function: Any) -> str:
    signature = inspect.signature(function)
    parameters = [
        parameter.replace(annotation=_Annotation(parameter.annotation))
        for parameter in signature.parameters.values() if parameter.name != "self"
    ]
    result = _Annotation(signature.return_annotation)
    shown = f"{name}{signature.replace(parameters=parameters, return_annotation=result)}"
    if len(shown) > 80:
        lines = [f"    {parameter},\n" for parameter in parameters]
        kinds = [parameter.kind for parameter in parameters]
        if inspect.Parameter.KEYWORD_ONLY in kinds:
            lines.insert(kinds.index(inspect.Parameter.KEYWORD_ONLY), "    *,\n")
        shown = f"{name}(\n{''.join(lines)}) -> {result}"
    return f"```python\n{shown}\n```\n\n"


def _docstring(value: Any) -> str:
    parts = _UNDERLINE.split(inspect.getdoc(value) or "")
    text = parts[0].replace("``", "`").strip() + "\n\n"
    for title, body in zip(parts[1::2], parts[2::2]):
        text += f"**{title}**\n\n"
        text += f"```python\n{body.strip()}\n```\n\n" if title == "Examples" else _table(body)
    return text


def _table(body: str) -> str:
    """Entries `name : type`, each with its indented text, as a table."""
    entries: list[tuple[str, list[str]]] = []
    for line in body.strip().splitlines():
        if line.startswith(" "):
            entries[-1][1].append(line.strip())
        elif line:
            entries.append((line, []))
    rows = "".join(f"| {_head(head)} | {_cell(' '.join(text))} |\n" for head, text in entries)
    return f"| | |\n|---|---|\n{rows}\n"


def _head(head: str) -> str:
    name, colon, kind = head.partition(" : ")
    return f"`{name}`" + (f"<br>{_cell(kind)}" if colon else "")


def _cell(text: str) -> str:
    return text.replace("``", "`").replace("|", "\\|").replace("<", "&lt;")
