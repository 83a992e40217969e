# SPDX-License-Identifier: BSD-3-Clause

"""The compiled module, if the package was built with it."""

from __future__ import annotations

from importlib import import_module
from types import ModuleType

compiled: ModuleType | None
try:
    compiled = import_module("stalwick._ord")
except ModuleNotFoundError:
    compiled = None
