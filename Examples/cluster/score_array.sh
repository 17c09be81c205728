#!/bin/sh
#SBATCH --job-name=velto-score
#SBATCH --array=1-16
# A task of an array job that scores every N-th recording of a corpus:
#
#   sbatch score_array.sh RECORDINGS RESULTS
#   velto score --merge RESULTS/*.jsonl            once all tasks are done
#
# Another batch system names the number of a task (from 1) and their count in other variables: set them here.
set -eu
task=${SLURM_ARRAY_TASK_ID:?the number of this task}
count=${SLURM_ARRAY_TASK_COUNT:?the count of all tasks}
recordings=$1
results=$2

mkdir -p "$results"
# Status 1: files that could not be read, which the result names. A task that is run again replaces its result.
velto score --jsonl --shard "$task/$count" --jobs "${SLURM_CPUS_PER_TASK:-1}" "$recordings" \
    >"$results/$task.part" || [ $? -eq 1 ]
mv "$results/$task.part" "$results/$task.jsonl"
