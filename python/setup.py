# SPDX-License-Identifier: BSD-3-Clause

"""A wheel with the decoder is for this system; without it, for every system."""

from pathlib import Path

from setuptools import Distribution, setup


class PackageDistribution(Distribution):
    def has_ext_modules(self) -> bool:
        return any(Path("stalwick").glob("_ord*"))


setup(distclass=PackageDistribution)
