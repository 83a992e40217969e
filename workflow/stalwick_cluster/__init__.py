# SPDX-License-Identifier: BSD-3-Clause

"""What the Snakemake workflow and the Slurm array script share: the steps of one recording."""
