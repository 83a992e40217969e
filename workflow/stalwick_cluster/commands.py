# SPDX-License-Identifier: BSD-3-Clause

"""Runs the commands and forwards signals to them."""

from __future__ import annotations

import signal
import subprocess
from collections.abc import Sequence
from types import FrameType

_SIGNALS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)


class Interrupted(Exception):
    """A signal came: the time limit, a preemption or a person."""

    def __init__(self, number: int) -> None:
        super().__init__(f"canceled by {signal.Signals(number).name}")
        self.exit_status = 128 + number


class Commands:
    """After a signal, the running command ends by itself, and no other is started."""

    def __init__(self) -> None:
        self._received: int | None = None
        self._running: subprocess.Popen[str] | None = None

    def take_signals(self) -> None:
        for number in _SIGNALS:
            signal.signal(number, self._take)

    def check(self) -> None:
        if self._received is not None:
            raise Interrupted(self._received)

    def run(self, command: Sequence[str], lock: int | None = None
            ) -> subprocess.CompletedProcess[str]:
        """If a signal came, raises Interrupted after the command's end."""
        self.check()
        with subprocess.Popen(
                list(command), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                stderr=subprocess.PIPE, encoding="utf-8", errors="replace",
                pass_fds=() if lock is None else (lock,)) as process:
            self._running = process
            if self._received is not None:
                process.send_signal(self._received)
            output, errors = process.communicate()
            self._running = None
        self.check()
        return subprocess.CompletedProcess(process.args, process.returncode, output, errors)

    def _take(self, number: int, _: FrameType | None) -> None:
        if self._received is not None:
            return
        self._received = number
        if self._running is not None:
            self._running.send_signal(number)
