#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause

"""Copies an HTML page from standard input to standard output with its local pictures inside it.

    inline_images.py DIRECTORY      DIRECTORY is where relative picture names start
"""
import base64
import mimetypes
import re
import sys
from pathlib import Path


def main():
    directory = Path(sys.argv[1])

    def inlined(match):
        name = match.group(2)
        if ":" in name:
            return match.group(0)
        kind = mimetypes.guess_type(name)[0]
        data = base64.b64encode((directory / name).read_bytes()).decode()
        return f'{match.group(1)}data:{kind};base64,{data}"'

    page = sys.stdin.read()
    sys.stdout.write(re.sub(r'(<img\b[^>]*?\bsrc=")([^"]+)"', inlined, page))


if __name__ == "__main__":
    main()
