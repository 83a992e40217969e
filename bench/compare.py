#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Times whole conversions for bench/compare.sh, which describes what is measured."""

import json
import mmap
import multiprocessing
import os
import re
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

REPEATS = int(os.environ.get("REPEATS", "7"))
LONG = int(os.environ.get("SECONDS_LONG", "60"))
COLD_SECONDS = float(os.environ.get("COLD_SECONDS", "8"))
CASES = os.environ.get("CASES", "channels raw cold codecs length width short jobs").split()
build, work = Path(sys.argv[1]), Path(sys.argv[2])
convert, synth = build / "cli/stalwick-convert", build / "tools/ord_synth/ord_synth"
floor = build / "bench/floor"
ratios = {}  # by name; smaller is better
ONE_CORE = ["taskset", "-c", "1" if os.cpu_count() > 1 else "0"]


class Run:
    """One finished process: seconds, CPU seconds, and the peak of its memory in MB."""

    def __init__(self, command, output=subprocess.DEVNULL):
        start = time.perf_counter()
        process = subprocess.Popen(command, stdout=output, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        self.wall = time.perf_counter() - start
        self.cpu = usage.ru_utime + usage.ru_stime
        self.peak = usage.ru_maxrss / 1024
        if status != 0:
            sys.exit(f"{command} ended with status {status}")


def record(name, *options):
    path = work / f"{name}.ord"
    if not path.exists():
        subprocess.run([synth, "-q", "-o", path, *map(str, options)], check=True)
    return path


def touch_memory(size):
    """Takes memory and returns it: half as a process's own, and half as pages of a file, both
    at once."""
    half = ((size >> 22) + 1) << 21
    piece = bytes(1 << 20)
    with mmap.mmap(-1, half, mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS) as memory:
        for at in range(0, half, mmap.PAGESIZE):
            memory[at] = 1
        with open(work / "warm", "wb", buffering=0) as target:
            for _ in range(half >> 20):
                target.write(piece)
        (work / "warm").unlink()


def warm(size):
    """Touches memory: if it was freed long ago, the first touch costs several times more. A separate
    process does it, because the memory of this one counts in the peaks of those that it starts."""
    process = multiprocessing.Process(target=touch_memory, args=(size,))
    process.start()
    process.join()


def remove(path):
    if path.is_dir():
        shutil.rmtree(path)
    else:
        path.unlink(missing_ok=True)


def read_once(*paths):
    """Brings the input of a run into memory, in case the previous run has displaced it."""
    for path in paths:
        for file in path.rglob("*") if path.is_dir() else [path]:
            if file.is_file():
                with open(file, "rb", buffering=0) as source:
                    while source.read(1 << 16):  # this process stays small: see warm()
                        pass


def interleave(commands, size, inputs=()):
    """Runs {name: (its output, command)} in turns; the median of each figure by name. A name that
    ends in "cold" runs with memory that was freed some time ago."""
    runs = {name: [] for name in commands}
    for _ in range(REPEATS):
        for name, (output, command) in commands.items():
            remove(output)
            warm(size * 4)
            read_once(*inputs, *([work / "out"] if (work / "out").exists() else []))
            if name.endswith("cold"):
                time.sleep(COLD_SECONDS)
            runs[name].append(command())
    return {
        name: tuple(statistics.median(getattr(r, k) for r in finished) for k in ("wall", "cpu", "peak"))
        for name, finished in runs.items()
    }


def converting(files, *options, prefix=()):
    command = [*prefix, convert, "-q", "-o", work / "out", *options, *files]
    return work / "out", lambda: Run(command)


def converted(files, *options):
    """Converts once and returns the size of the outputs."""
    output, command = converting(files, *options)
    remove(output)
    command()
    return sum(p.stat().st_size for p in output.rglob("*") if p.is_file())


def copying():
    copy = work / "copy"

    def run():
        result = Run(["cp", "-r", work / "out", copy])
        remove(copy)
        return result

    return copy, run


def at_the_floor(recording, prefix=()):
    """The floor of a recording whose outputs are in work/out."""
    sizes = work / f"{recording.stem}.sizes"
    outputs = (work / "out" / recording.stem).iterdir()
    sizes.write_text("".join(f"{p.stat().st_size} {p.name}\n" for p in sorted(outputs)))
    target = work / "floor"

    def run():
        result = Run([*prefix, floor, recording, target, sizes])
        remove(target)
        return result

    return target, run


def against_floor(title, recording, *options):
    size = converted([recording], *options)
    result = interleave(
        {
            "alone": converting([recording], *options, prefix=ONE_CORE),
            "threads": converting([recording], *options),
            "floor": at_the_floor(recording),
            "floor alone": at_the_floor(recording, prefix=ONE_CORE),
            "cp": copying(),
        },
        size,
        [recording],
    )
    alone, threads, least, least_alone, cp = (
        result[name] for name in ("alone", "threads", "floor", "floor alone", "cp"))
    wall, cpu = threads[0] / least[0], alone[1] / least_alone[1]
    ratios[f"{title}: wall, all threads, of the floor's"] = wall
    ratios[f"{title}: CPU, all threads, of the floor's"] = threads[1] / least[1]
    ratios[f"{title}: CPU, 1 thread, of the floor's"] = cpu
    ratios[f"{title}: peak memory, MB"] = threads[2]
    print(
        f"| {title} | {least[0] * 1e3:.0f} ms | {threads[0] * 1e3:.0f} ms | **{wall:.2f}** "
        f"| {least_alone[1] * 1e3:.0f} ms | {alone[1] * 1e3:.0f} ms | **{cpu:.2f}** "
        f"| {threads[1] / least[1]:.2f} | {cp[0] * 1e3:.0f} ms | {threads[0] / cp[0]:.2f} "
        f"| {threads[2]:.0f} MB |",
        flush=True,
    )
    remove(work / "out")


def table_head():
    print("| recording, outputs | floor, wall | all threads, wall | ratio | floor, 1 thread, CPU | 1 thread, CPU "
          "| ratio | all threads, CPU | cp -r, wall | all threads, wall | peak memory |")
    print("|---|---|---|---|---|---|---|---|---|---|---|")


def cold_memory(title, recording):
    size = converted([recording])
    runs = {}
    for name, run in (("floor", at_the_floor(recording)), ("threads", converting([recording]))):
        runs[f"{name}, warm"] = runs[f"{name}, cold"] = run
    result = interleave(runs, size, [recording])
    print("| memory | warm, wall | cold, wall | loss |\n|---|---|---|---|")
    loss = {}
    for name in ("floor", "threads"):
        warmed, cold = result[f"{name}, warm"][0], result[f"{name}, cold"][0]
        loss[name] = cold / warmed
        print(f"| {title}, {name} | {warmed * 1e3:.0f} ms | {cold * 1e3:.0f} ms | {loss[name]:.2f} |", flush=True)
    ratios[f"{title}: loss by cold memory, of the floor's"] = loss["threads"] / loss["floor"]
    remove(work / "out")


def codecs(recording, channels):
    """The same samples from zstd and FLAC, which have no files and records."""
    size = converted([recording])
    samples, unpacked = work / "samples", work / "unpacked"
    header, record_size, record_head = 16384, 1044, 20
    with open(samples, "wb") as target:
        for channel in range(1, channels + 1):
            data = (work / "out" / recording.stem / f"CSC{channel}.vcs").read_bytes()
            for at in range(header, len(data), record_size):
                target.write(data[at + record_head : at + record_size])
    commands = {"stalwick-convert": converting([recording], prefix=ONE_CORE), "cp -r": copying()}
    for level in (1, 3):
        packed = work / f"samples.{level}.zst"
        subprocess.run(["zstd", "-q", "-f", f"-{level}", samples, "-o", packed], check=True)
        unpack = [*ONE_CORE, "zstd", "-q", "-d", packed, "-o", unpacked]
        commands[f"zstd -d, level {level}"] = (unpacked, lambda unpack=unpack: Run(unpack))
    form = ["--endian=little", "--sign=signed", "--channels=1", "--bps=16", "--sample-rate=30000"]
    subprocess.run(
        ["flac", "-s", "-f", "--force-raw-format", *form, samples, "-o", work / "samples.flac"],
        check=True,
    )
    unflac = [*ONE_CORE, "flac", "-s", "-d", "--force-raw-format", "--endian=little", "--sign=signed",
              work / "samples.flac", "-o", unpacked]
    commands["flac -d"] = (unpacked, lambda: Run(unflac))
    result = interleave(commands, size)
    print("| one thread | CPU | stalwick-convert takes |\n|---|---|---|")
    own = result["stalwick-convert"][1]
    for name, (_, cpu, _) in result.items():
        print(f"| {name} | {cpu * 1e3:.0f} ms | {own / cpu:.2f} of it |", flush=True)
        if name != "stalwick-convert":
            ratios[f"{channels} channels: CPU, 1 thread, of {name}'s"] = own / cpu
    for left in work.glob("samples*"):
        left.unlink()
    remove(unpacked)
    remove(work / "out")


def scaling(title, recordings, options=()):
    """Costs on one thread for recordings {label: (path, samples)}, in one interleaved run."""
    sizes = [converted([path], *options) for path, _ in recordings.values()]
    result = interleave(
        {label: converting([path], *options, prefix=ONE_CORE) for label, (path, _) in recordings.items()},
        max(sizes),
    )
    print(f"| {title} | CPU | wall | a sample | peak memory |\n|---|---|---|---|---|")
    for label, (wall, cpu, peak) in result.items():
        samples = recordings[label][1]
        print(f"| {label} | {cpu * 1e3:.0f} ms | {wall * 1e3:.0f} ms | {cpu / samples * 1e9:.3f} ns "
              f"| {peak:.0f} MB |", flush=True)
    remove(work / "out")


def jobs(seconds):
    files = [record(f"job{i}", "-c", 64, "-s", seconds, "--seed", i + 1) for i in range(8)]
    size = converted(files)
    result = interleave(
        {
            "one job, one thread": converting(files, "--jobs", "1", prefix=ONE_CORE),
            "one job, all threads": converting(files, "--jobs", "1"),
            "a job for each core": converting(files, "--jobs", str(os.cpu_count())),
        },
        size,
        files,
    )
    print(f"| 8 recordings of {seconds} s, 64 channels | wall | times as fast |\n|---|---|---|")
    alone = result["one job, one thread"][0]
    for name, (wall, _, _) in result.items():
        print(f"| {name} | {wall * 1e3:.0f} ms | {alone / wall:.2f} |", flush=True)
    ratios[f"8 recordings of {seconds} s: wall of a job for each core, of one thread's"] = (
        result["a job for each core"][0] / alone)
    for path in files:
        path.unlink()
    remove(work / "out")


def c64():
    return record("c64", "-c", 64, "-s", LONG)


def c256():
    return record("c256", "-c", 256, "-s", LONG)


def main():
    cpu = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    print(f"{cpu.group(1) if cpu else 'CPU'}, {os.cpu_count()} cores, {time.strftime('%Y-%m-%d')}, "
          f"load {os.getloadavg()[0]:.1f} at the start; medians of {REPEATS}\n")
    if {"channels", "raw"} & set(CASES):
        table_head()
    if "channels" in CASES:
        against_floor(f"64 channels, {LONG} s", c64())
        against_floor(f"256 channels, {LONG} s", c256())
    if "raw" in CASES:
        against_floor(f"64 channels, {LONG} s, and the raw data file", c64(), "--raw")
    if "cold" in CASES:
        print()
        cold_memory(f"256 channels, {LONG} s", c256())
    if "codecs" in CASES:
        print()
        codecs(c64(), 64)
    if "length" in CASES:
        print()
        longer = record("c64long", "-c", 64, "-s", 4 * LONG)
        per_second = 64 * 30000
        scaling("64 channels", {f"{LONG} s": (c64(), LONG * per_second),
                                f"{4 * LONG} s": (longer, 4 * LONG * per_second)})
        longer.unlink()
    if "width" in CASES:
        print()
        scaling(f"{LONG} s",
                {f"{n} channels": (record(f"c{n}", "-c", n, "-s", LONG), n * LONG * 30000)
                 for n in (32, 64, 128, 256)})
    if "short" in CASES:
        print()
        scaling("one second", {"256 channels": (record("short", "-c", 256, "-s", 1), 256 * 30000)})
    if "jobs" in CASES:
        for seconds in (10, LONG):
            print()
            jobs(seconds)
    (build / "bench/ratios.json").write_text(json.dumps(ratios, indent=2) + "\n")


main()
