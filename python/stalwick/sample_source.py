# SPDX-License-Identifier: BSD-3-Clause

"""The common base of sessions and recordings: groups of channels, above all the A/D channels."""

from __future__ import annotations

from abc import abstractmethod
from pathlib import Path
from typing import Generic, TypeVar

from .closing import Closing
from .errors import StalwickError
from .event_file import Events
from .trace_group import TraceGroup
from .traces import Traces

Group = TypeVar("Group", bound=TraceGroup)


class SampleSource(Traces, Closing, Generic[Group]):
    """Groups of channels; the methods of `Traces` read the A/D channels.

    Attributes
    ----------
    groups : dict of str to TraceGroup
        The channels by group: "AD", "Base", "AFE", "Ultrasonic".
    """

    groups: dict[str, Group]

    @property
    @abstractmethod
    def place(self) -> Path:
        """The directory or file that everything comes from."""

    @property
    @abstractmethod
    def events(self) -> Events:
        """The changes of the TTL input."""

    @property
    def ad(self) -> Group:
        """The A/D channels; raises StalwickError if there are none."""
        return self._group("AD")

    @property
    def imu(self) -> dict[str, Group]:
        """The existing inertial units, "Base" and "AFE": LAX to MZ, 3000 samples per second."""
        return {name: self.groups[name] for name in ("Base", "AFE") if name in self.groups}

    @property
    def ultrasonic(self) -> Group:
        """The ultrasonic channel; raises StalwickError if there is none."""
        return self._group("Ultrasonic")

    def _read_group(self) -> Group:
        return self.ad

    def _group(self, name: str) -> Group:
        if name not in self.groups:
            raise StalwickError(f"{self.place}: there are no {name} channels")
        return self.groups[name]
