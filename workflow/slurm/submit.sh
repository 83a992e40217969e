#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# Converts a table of recordings by a Slurm array, and writes the report after it:
#   workflow/slurm/submit.sh SETTINGS [TASKS[%AT_A_TIME] [SBATCH_OPTION...]]
# TASKS: the number of jobs that share the recordings, 0 (the default) for one each, at most 1,000. Call it again
# after a failure: what is done is skipped. SBATCH_OPTIONs are for the array and for the report.
set -euo pipefail
if [ $# -lt 1 ]; then
    sed -n '4,8s/^# //p' "$0" >&2
    exit 2
fi
settings=$(realpath "$1") tasks=${2:-0}
shift $(($# < 2 ? $# : 2))
workflow=$(cd "$(dirname "$0")/.." && pwd)
cluster=("$workflow/stalwick-cluster" --settings "$settings")
[[ $tasks =~ ^([0-9]+)(%[1-9][0-9]*)?$ ]] || { echo "submit.sh: wrong TASKS: $tasks" >&2; exit 2; }
tasks=${BASH_REMATCH[1]} at_a_time=${BASH_REMATCH[2]}

recordings=$("${cluster[@]}" count)
[ "$tasks" -gt 0 ] && [ "$tasks" -le "$recordings" ] || tasks=$recordings
[ "$tasks" -le 1000 ] || tasks=1000
read -r memory_mb minutes <<< "$("${cluster[@]}" plan --of "$tasks")"
# The signal of the time limit comes one minute early, so there must be more than that.
minutes=$((minutes + 2))

mkdir -p slurm-logs
array=$(sbatch --parsable --array="0-$((tasks - 1))$at_a_time" --mem="$memory_mb" --time="$minutes" \
    --signal=B:TERM@60 --output=slurm-logs/task-%a.log "$@" \
    "$workflow/slurm/array.sh" "$workflow" "$settings" "$tasks")
report=$(sbatch --parsable --dependency="afterany:$array" --mem=200 --time=10 \
    --job-name=stalwick-report --output=slurm-logs/report.log "$@" \
    --wrap "$(printf '%q ' "${cluster[@]}" report)")
echo "array $array: $tasks tasks of $memory_mb MB and $minutes minutes; report $report"
