#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause

# One task of the array; submit.sh submits it. Its recordings are every TASKS-th of the table.
# The time limit's signal comes early (--signal): the current recording is canceled, and the task
# is requeued, and then skips what is done.
#SBATCH --job-name=stalwick
#SBATCH --cpus-per-task=1
#SBATCH --requeue
#SBATCH --open-mode=append
set -uo pipefail
workflow=$1 settings=$2 tasks=$3 most_restarts=${4:-5}

"$workflow/stalwick-cluster" --settings "$settings" run \
    --task "${SLURM_ARRAY_TASK_ID:-0}" --of "$tasks" &
run=$!
trap 'kill -TERM "$run" 2> /dev/null' TERM
wait "$run"
status=$?
# A signal ends the wait before the command has ended.
while kill -0 "$run" 2> /dev/null; do
    wait "$run"
    status=$?
done

# Slurm itself requeues a preempted job, and one that was canceled stays so: neither is RUNNING now.
is_running() { scontrol show job --oneliner "$SLURM_JOB_ID" | grep -q ' JobState=RUNNING '; }
if [ "$status" -eq 143 ] && [ "${SLURM_RESTART_COUNT:-0}" -lt "$most_restarts" ] && is_running; then
    echo "canceled before the time limit; in the queue again" >&2
    scontrol requeue "$SLURM_JOB_ID"
fi
exit "$status"
