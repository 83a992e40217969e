# SPDX-License-Identifier: BSD-3-Clause

"""Reads the outputs of Veltrosyn Stalwick: channel, event and raw data files.

    import stalwick
    session = stalwick.open_session("recording")
    microvolts = session.traces(["CSC1", "CSC2"], 0, 30000, units="uV")

The files are mapped into memory; only the requested parts are read and copied. Damaged files raise
a StalwickError that names file, record and byte. python/README.md has more.
"""

from .channel_group import ChannelGroup
from .continuous_file import ContinuousFile, open_vcs
from .errors import (
    DamagedFileError,
    IncompleteFileError,
    InconsistentSetError,
    StalwickError,
    StalwickWarning,
)
from .event_file import EventFile, Events, open_vev
from .ord_recording import OrdGroup, OrdRecording, open_ord
from .raw_file import RawFile, open_vrd
from .record_layout import Gap
from .session import Session, open_session
from .trace_group import TraceGroup

__version__ = "1.2.0.1941"

__all__ = [
    "ChannelGroup",
    "ContinuousFile",
    "DamagedFileError",
    "EventFile",
    "Events",
    "Gap",
    "IncompleteFileError",
    "InconsistentSetError",
    "OrdGroup",
    "OrdRecording",
    "RawFile",
    "Session",
    "StalwickError",
    "StalwickWarning",
    "TraceGroup",
    "open_ord",
    "open_session",
    "open_vcs",
    "open_vev",
    "open_vrd",
]
