#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Reports what became slower or larger: bench/regressions.py RATIOS [BASELINE]

Compares the ratios that bench/compare.sh wrote with the committed ones, bench/baseline.json. Smaller is
better for all of them. Names each that is worse by more than 15 %, and exits with status 1 if there is
one. To accept new ones: cp RATIOS bench/baseline.json."""

import json
import sys
from pathlib import Path

TOLERANCE = 1.15


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    given = Path(sys.argv[2]) if len(sys.argv) == 3 else Path(__file__).parent / "baseline.json"
    if not given.exists():
        sys.exit(f"{given} is missing: cp {sys.argv[1]} {given}")
    now, before = (json.loads(path.read_text()) for path in (Path(sys.argv[1]), given))
    worse = {key: (before[key], now[key]) for key in now
             if key in before and now[key] > before[key] * TOLERANCE}
    for key, (old, new) in worse.items():
        print(f"worse by {100 * (new / old - 1):.0f} %: {key}: {old:.2f} before, {new:.2f} now")
    missing = sorted(before.keys() - now.keys())
    if missing:
        print("not measured: " + "; ".join(missing))
    if not worse:
        print(f"none of {len(now.keys() & before.keys())} ratios is worse than {given.name} by more than 15 %")
    sys.exit(1 if worse else 0)


main()
