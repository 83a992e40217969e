# SPDX-License-Identifier: BSD-3-Clause

"""The settings of a run, from a TOML file."""

from __future__ import annotations

import os
import tomllib
from dataclasses import dataclass, fields
from pathlib import Path

# Options that change the outputs' contents. The steps choose everything else.
_OPTIONS = ("--no-csc", "--base-imu", "--afe-imu", "--ultrasonic", "--raw", "--all", "--no-sync")


class SettingsError(Exception):
    """The settings or the table of recordings are unusable; names the file and the reason."""


@dataclass(frozen=True)
class Settings:
    """``file`` contains the rest; relative paths start from its directory."""

    file: Path
    recordings: Path
    results: Path
    options: tuple[str, ...]
    pages: bool
    scratch: Path | None
    convert: str
    inspect: str
    megabytes_per_second: float

    def of_each(self, folder: str, name: str) -> Path:
        return self.results / folder / name


_DEFAULTS: dict[str, object] = {
    "recordings": "recordings.tsv", "results": "results", "options": [], "pages": True,
    "scratch": "", "convert": "stalwick-convert", "inspect": "stalwick-inspect",
    "megabytes_per_second": 50,
}


def load_settings(file: Path) -> Settings:
    try:
        given = tomllib.loads(file.read_text(encoding="utf-8"))
    except (OSError, ValueError) as error:
        raise SettingsError(f"{file}: {error}; give the settings of the run") from error
    unknown = sorted(set(given) - set(_DEFAULTS))
    if unknown:
        known = ", ".join(_DEFAULTS)
        raise SettingsError(f"{file}: unknown setting {unknown[0]}; there are {known}")
    values = {**_DEFAULTS, **given}
    for key, value in values.items():
        _check_type(file, key, value)
    return _settings_of(file.absolute(), values)


def _check_type(file: Path, key: str, value: object) -> None:
    expected = type(_DEFAULTS[key])
    is_right = isinstance(value, (int, float) if expected is int else expected)
    if expected is int and is_right:
        is_right = not isinstance(value, bool) and float(str(value)) > 0
    if expected is list and isinstance(value, list):
        wrong = [str(option) for option in value if option not in _OPTIONS]
        if wrong:
            raise SettingsError(f"{file}: options: {wrong[0]} is not one of {' '.join(_OPTIONS)}")
    if not is_right:
        kind = {list: "a list", str: "a text", bool: "true or false"}.get(
            expected, "a number above 0")
        raise SettingsError(f"{file}: {key} must be {kind}")


def _settings_of(file: Path, values: dict[str, object]) -> Settings:
    options = values["options"]
    assert isinstance(options, list)
    scratch = os.path.expandvars(str(values["scratch"]))
    if "$" in scratch:
        raise SettingsError(f"{file}: scratch: {scratch} has a variable that is not set")
    return Settings(
        file=file,
        recordings=file.parent / str(values["recordings"]),
        results=file.parent / str(values["results"]),
        options=tuple(str(option) for option in options),
        pages=bool(values["pages"]),
        scratch=file.parent / scratch if scratch else None,
        convert=_command(file, str(values["convert"])),
        inspect=_command(file, str(values["inspect"])),
        megabytes_per_second=float(str(values["megabytes_per_second"])),
    )


def _command(file: Path, text: str) -> str:
    """A name is looked up in PATH, anything with a separator is relative to the settings' file."""
    return str(file.parent / text) if "/" in text else text


assert {field.name for field in fields(Settings)} == {"file", *_DEFAULTS}
