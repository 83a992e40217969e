# SPDX-License-Identifier: BSD-3-Clause

"""A reference can be made from the docstrings: every public name has one, and its sections name
every parameter, attribute and result."""

from __future__ import annotations

import inspect
import re
from collections.abc import Callable, Iterator

import pytest

import stalwick

CLASSES = [name for name in stalwick.__all__ if inspect.isclass(getattr(stalwick, name))]
FUNCTIONS = [name for name in stalwick.__all__ if name not in CLASSES]


def members() -> Iterator[tuple[str, object]]:
    """Public methods and properties of every public class, including those of its bases."""
    for name in CLASSES:
        cls = getattr(stalwick, name)
        for base in reversed(cls.__mro__):
            if base.__module__.startswith("stalwick"):
                for member, value in vars(base).items():
                    if not member.startswith("_") and (callable(value) or is_property(value)):
                        yield f"{name}.{member}", value


def is_property(value: object) -> bool:
    return isinstance(value, property) or type(value).__name__ == "cached_property"


MEMBERS = dict(members())


def entries(text: str, section: str) -> set[str]:
    """The names that a section of a docstring lists: "start, stop : int" are two."""
    match = re.search(rf"^{section}\n-+\n(.*?)(\n\n\S|\Z)", text, re.DOTALL | re.MULTILINE)
    lines = match[1].splitlines() if match else []
    names = [line.split(" : ")[0] for line in lines if line and not line.startswith(" ")]
    return {name.strip() for line in names for name in line.split(",")}


def check_function(function: Callable[..., object]) -> None:
    text = inspect.getdoc(function) or ""
    assert text
    signature = inspect.signature(function)
    parameters = {name for name in signature.parameters if name != "self"}
    assert entries(text, "Parameters") == parameters
    if parameters and signature.return_annotation != "None":
        assert entries(text, "Returns"), "nothing says what it returns"


@pytest.mark.parametrize("name", FUNCTIONS)
def test_a_function_says_what_it_takes_and_returns(name: str) -> None:
    check_function(getattr(stalwick, name))


@pytest.mark.parametrize("name", MEMBERS)
def test_a_method_or_property_says_what_it_takes_and_returns(name: str) -> None:
    member = MEMBERS[name]
    if is_property(member):
        assert inspect.getdoc(member)
    else:
        assert callable(member)
        check_function(member)


@pytest.mark.parametrize("name", CLASSES)
def test_a_class_says_what_its_attributes_are(name: str) -> None:
    cls = getattr(stalwick, name)
    text = inspect.getdoc(cls) or ""
    assert text
    declared = set(getattr(cls, "__dataclass_fields__", ()))
    assert declared <= entries(text, "Attributes")


def test_attributes_of_a_session_are_those_that_it_has(synth, convert) -> None:
    directory = convert(synth("--channels", "32", "--seconds", "0.1", "--all"), "--all")
    with stalwick.open_session(directory) as session:
        values = [session, session.ad, *session.files.values()]
        for value in values:
            public = {name for name in vars(value) if not name.startswith("_")}
            documented = set()
            for base in type(value).__mro__:
                documented |= entries(inspect.getdoc(base) or "", "Attributes")
            # Cached properties have their own docstrings.
            public -= {name for name in public if hasattr(type(value), name)}
            assert public <= documented, type(value).__name__
