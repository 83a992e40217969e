# SPDX-License-Identifier: BSD-3-Clause

"""Shared by the Snakemake workflow and the Slurm array script: the steps of one recording."""
