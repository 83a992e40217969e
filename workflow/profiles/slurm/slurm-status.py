#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Prints the state of a Slurm job for Snakemake: running, success or failed.

scontrol knows jobs that ended a few minutes ago; for older ones it queries sacct, if that works."""

import re
import subprocess
import sys

_RUNNING = {"PENDING", "CONFIGURING", "RUNNING", "COMPLETING", "SUSPENDED", "REQUEUED",
            "REQUEUE_HOLD", "REQUEUE_FED", "RESIZING", "SIGNALING", "STAGE_OUT", "STOPPED",
            "SPECIAL_EXIT"}


def state_of(job: str) -> str | None:
    """None: Slurm does not know the job. An empty text: Slurm does not respond."""
    asked = subprocess.run(["scontrol", "show", "job", "--oneliner", job], capture_output=True,
                           text=True, check=False)
    found = re.search(r"\bJobState=(\w+)", asked.stdout)
    if found:
        # A requeued job, for example a preempted one, waits again; any other has ended.
        return found[1]
    if "Invalid job id" not in asked.stderr:
        return ""
    listed = subprocess.run(["sacct", "--noheader", "--parsable2", "--allocations",
                             "--format=State", "--jobs", job], capture_output=True, text=True,
                            check=False)
    words = listed.stdout.split()
    return words[0] if listed.returncode == 0 and words else None


def main() -> None:
    state = state_of(sys.argv[1])
    if state == "COMPLETED":
        print("success")
    elif state == "" or state in _RUNNING:
        print("running")
    else:
        print("failed")


main()
