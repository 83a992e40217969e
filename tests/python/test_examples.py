# SPDX-License-Identifier: BSD-3-Clause

"""The examples do what they claim."""

import os
import subprocess
import sys
from pathlib import Path

import numpy as np

from output_files import channel_file, event_file, write

EXAMPLES = Path(__file__).resolve().parents[2] / "python" / "examples"
RATE = 30000


def run(name: str, *arguments: object) -> str:
    command = [sys.executable, str(EXAMPLES / f"{name}.py"), *map(str, arguments)]
    environment = os.environ | {"MPLBACKEND": "Agg"}
    done = subprocess.run(command, capture_output=True, text=True, env=environment)
    assert done.returncode == 0, done.stderr
    return done.stdout


def make_set(directory: Path, samples: np.ndarray, events: list[tuple[int, int]]) -> None:
    values = samples.astype(int).tolist()
    records = [(s * 100 // 3, values[s : s + 512]) for s in range(0, len(values), 512)]
    write(directory / "CSC1.vcs", channel_file("CSC1", RATE, records))
    write(directory / "Events.vev", event_file(events))


def test_a_channel_is_plotted(synth, convert, tmp_path: Path) -> None:
    directory = convert(synth("--channels", "32", "--seconds", "2"))
    picture = tmp_path / "picture.png"
    run("plot_channel", directory, "CSC7", 0.5, picture)
    data = picture.read_bytes()
    assert data.startswith(b"\x89PNG")
    assert int.from_bytes(data[16:20], "big") == 1500


def test_spikes_are_counted_in_the_bin_after_their_event(tmp_path: Path) -> None:
    noise = np.random.default_rng(1).uniform(-5, 5, 15 * RATE)
    edges = np.arange(1, 15) * RATE
    events = [(0, 2)]
    for edge in edges.tolist():
        noise[edge + 1350 : edge + 1360] -= 200  # 45 ms after it
        events += [(edge * 100 // 3, 3), (edge * 100 // 3 + 5000, 2)]
    noise[10 * RATE : 10 * RATE + 10] -= 200  # where two pieces meet
    make_set(tmp_path, noise, events)
    lines = run("spikes_around_events", tmp_path, "CSC1", 0).splitlines()
    assert lines[0] == "15 spikes of CSC1, 14 rising edges of line 0"
    rates = {line.split()[0]: float(line.split()[2]) for line in lines[1:]}
    assert rates.pop("40") == 100.0
    assert rates.pop("0") == round(100 / 14, 2)
    assert set(rates.values()) == {0.0}


def test_a_sine_is_one_line_of_the_spectrum(tmp_path: Path) -> None:
    time = np.arange(3 * RATE) / RATE
    make_set(tmp_path, np.round(1000 * np.sin(2 * np.pi * 1000 * time)), [])
    table = tmp_path / "spectrum.csv"
    run("spectrum", tmp_path, table)
    assert table.read_text().splitlines()[0] == "Hz,CSC1"
    frequencies, density = np.loadtxt(table, delimiter=",", skiprows=1, unpack=True)
    assert frequencies[np.argmax(density)] == 1000.0
    # The power of 4,000 microvolts of amplitude.
    assert np.isclose(density[990:1011].sum(), 4000**2 / 2, rtol=1e-3)
