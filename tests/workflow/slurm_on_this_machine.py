# SPDX-License-Identifier: BSD-3-Clause

"""A Slurm of one node on this machine, for tests: munged, slurmctld and slurmd in one directory.

They listen on 127.0.0.1 only, account for nothing and need neither systemd nor cgroups."""

from __future__ import annotations

import os
import pwd
import secrets
import shutil
import socket
import subprocess
import time
from collections.abc import Callable
from pathlib import Path
from types import TracebackType
from typing import IO

CONFIGURATION = """\
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={controller_port}
SlurmdPort={node_port}
SlurmUser={user}
SlurmdUser={user}
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket={directory}/munge.socket,cred_expire=10
StateSaveLocation={directory}/controller
SlurmdSpoolDir={directory}/node
SlurmctldPidFile={directory}/controller.pid
SlurmdPidFile={directory}/node.pid
SlurmctldLogFile={directory}/controller.log
SlurmdLogFile={directory}/node.log
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
JobCompType=jobcomp/none
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
SwitchType=switch/none
SchedulerType=sched/backfill
SchedulerParameters=sched_interval=5,batch_sched_delay=1,bf_interval=3
SelectType=select/cons_tres
SelectTypeParameters=CR_Core_Memory
ReturnToService=2
InactiveLimit=0
KillWait=5
MinJobAge=3600
SlurmctldTimeout=30
SlurmdTimeout=60
SlurmdParameters=config_overrides
NodeName=worker NodeHostname={host} NodeAddr=127.0.0.1 CPUs={cpus} RealMemory={memory_mb}
PartitionName=test Nodes=worker Default=YES MaxTime=60 DefMemPerCPU=100 State=UP
"""


def free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port: int = probe.getsockname()[1]
    return port


class SlurmOnThisMachine:
    """Runs while its ``with`` block does. ``environment`` is what sbatch and the others need."""

    def __init__(self, directory: Path, cpus: int = 4, memory_mb: int = 4000) -> None:
        self.directory = directory
        self.environment = dict(os.environ, SLURM_CONF=str(directory / "slurm.conf"))
        self._cpus, self._memory_mb = cpus, memory_mb
        self._daemons: list[subprocess.Popen[bytes]] = []
        self._logs: list[IO[bytes]] = []

    def __enter__(self) -> SlurmOnThisMachine:
        self.directory.mkdir(mode=0o755)
        for name in ("controller", "node"):
            (self.directory / name).mkdir(mode=0o755)
        (self.directory / "slurm.conf").write_text(CONFIGURATION.format(
            directory=self.directory, user=pwd.getpwuid(os.getuid()).pw_name,
            host=socket.gethostname().split(".")[0],
            controller_port=free_port(), node_port=free_port(),
            cpus=self._cpus, memory_mb=self._memory_mb))
        try:
            self._start_all()
        except BaseException:
            self._stop_all()
            raise
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.run("scancel", "--user", pwd.getpwuid(os.getuid()).pw_name, "--full", check=False)
        self._stop_all()

    def run(self, *command: str, check: bool = True) -> str:
        """The standard output of a command of Slurm."""
        done = subprocess.run(command, env=self.environment, check=False, text=True,
                              capture_output=True)
        if check and done.returncode:
            raise RuntimeError(f"{' '.join(command)}: {done.stderr.strip()}")
        return done.stdout

    def has_jobs(self) -> bool:
        return bool(self.run("squeue", "--noheader").strip())

    def _start_all(self) -> None:
        key = self.directory / "munge.key"
        key.touch(mode=0o600)
        key.write_bytes(secrets.token_bytes(128))
        files = [f"--{option}={self.directory}/munge.{ending}" for option, ending in (
            ("socket", "socket"), ("key-file", "key"), ("pid-file", "pid"),
            ("log-file", "log"), ("seed-file", "seed"))]
        self._start("munged", "--foreground", "--force", *files)
        self._wait("munged", lambda: (self.directory / "munge.socket").exists())
        configuration = str(self.directory / "slurm.conf")
        self._start("slurmctld", "-D", "-i", "-f", configuration)
        self._wait("slurmctld", lambda: "UP" in self.run("scontrol", "ping", check=False))
        self._start("slurmd", "-D", "-N", "worker", "-f", configuration)
        self._wait("slurmd", lambda: self.run("sinfo", "-h", "-o", "%t", check=False)
                   .strip() == "idle")

    def _start(self, name: str, *arguments: str) -> None:
        program = shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin:/sbin")
        if program is None:
            raise RuntimeError(f"{name} is not installed: scripts/install-deps.sh cluster")
        log = open(self.directory / f"{name}.out", "wb")
        self._logs.append(log)
        self._daemons.append(subprocess.Popen([program, *arguments], stdout=log, stderr=log,
                                              env=self.environment, start_new_session=True))

    def _wait(self, name: str, is_ready: Callable[[], bool]) -> None:
        until = time.monotonic() + 30
        while not is_ready():
            if self._daemons[-1].poll() is not None or time.monotonic() > until:
                raise RuntimeError(f"{name} did not start; its log is in {self.directory}")
            time.sleep(0.2)

    def _stop_all(self) -> None:
        while self._daemons:
            daemon = self._daemons.pop()
            daemon.terminate()
            try:
                daemon.wait(20)
            except subprocess.TimeoutExpired:
                daemon.kill()
                daemon.wait()
        for log in self._logs:
            log.close()
