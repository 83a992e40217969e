"""What the Snakemake workflow and the Slurm array script share: the steps of one recording."""
