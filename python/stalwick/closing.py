# SPDX-License-Identifier: BSD-3-Clause

"""What is given back at the end of a with statement."""

from __future__ import annotations

from abc import ABC, abstractmethod
from types import TracebackType
from typing import Self


class Closing(ABC):
    """Base of everything that holds files open."""

    @abstractmethod
    def close(self) -> None:
        """Gives the files back. Arrays that were taken from them as views keep them open."""

    def __enter__(self) -> Self:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        traceback: TracebackType | None,
    ) -> None:
        self.close()
