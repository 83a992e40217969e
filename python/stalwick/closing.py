# SPDX-License-Identifier: BSD-3-Clause

"""Closes files at the end of a with statement."""

from __future__ import annotations

from abc import ABC, abstractmethod
from types import TracebackType
from typing import Self


class Closing(ABC):
    """Base of all classes that hold files open."""

    @abstractmethod
    def close(self) -> None:
        """Closes the files. Arrays that are views of them keep them open."""

    def __enter__(self) -> Self:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        self.close()
