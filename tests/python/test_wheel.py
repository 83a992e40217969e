# SPDX-License-Identifier: BSD-3-Clause

"""The package as people install it: a wheel made without the network, in a new environment."""

import os
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

import stalwick

PACKAGE = Path(stalwick.__file__).parent


def run(*command: object, directory: Path) -> str:
    """Runs a command whose Python finds only installed packages."""
    environment = {k: v for k, v in os.environ.items() if not k.startswith(("PYTHON", "PIP_"))}
    # No index: anything that needs the network fails.
    environment |= {"PIP_NO_INDEX": "1", "PIP_DISABLE_PIP_VERSION_CHECK": "1"}
    arguments = [str(part) for part in command]
    done = subprocess.run(
        arguments, capture_output=True, text=True, cwd=directory, env=environment
    )
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_a_wheel_is_made_without_the_network_and_works_in_a_new_environment(
    synth, convert, tmp_path: Path
) -> None:
    source = tmp_path / "source"
    shutil.copytree(PACKAGE, source / "stalwick", ignore=shutil.ignore_patterns("__pycache__"))
    has_decoder = any(PACKAGE.glob("_ord*"))
    # The build directory has everything next to the package. The license is one level above the
    # sources.
    for name in ("pyproject.toml", "setup.py", "README.md", *(["LICENSE"] if has_decoder else [])):
        shutil.copy(PACKAGE.parent / name, source)
    wheels = tmp_path / "wheels"
    run(sys.executable, "-m", "build", "--wheel", "--no-isolation", "--outdir", wheels, source,
        directory=tmp_path)
    (wheel,) = wheels.iterdir()
    assert wheel.name.endswith("-any.whl") != has_decoder
    names = zipfile.ZipFile(wheel).namelist()
    assert "stalwick/py.typed" in names
    assert any("/_ord" in name for name in names) == has_decoder
    assert any(name.endswith("/LICENSE") for name in names) == has_decoder

    run(sys.executable, "-m", "venv", "--system-site-packages", tmp_path / "venv",
        directory=tmp_path)
    python = tmp_path / "venv" / "bin" / "python"
    run(python, "-m", "pip", "install", "--no-deps", wheel, directory=tmp_path)
    recording = synth("--channels", "32", "--seconds", "0.1")
    out = run(python, "-m", "stalwick", convert(recording), directory=tmp_path)
    assert "32 channels, 30000 samples/s, 3000 samples" in out
    program = f"import stalwick; print(stalwick.__file__, stalwick.open_ord({str(recording)!r}))"
    if has_decoder:
        out = run(python, "-c", program, directory=tmp_path)
        assert out.startswith(str(tmp_path / "venv"))
