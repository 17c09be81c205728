#!/usr/bin/python3
"""Scores a corpus on a Dask cluster: a bag of files, a score for each, merged. Prints what `velto score --jsonl`
prints; the exit status is 1 if a file could not be read.

    score_with_dask.py PATH [SCHEDULER]

SCHEDULER is the address of a running one, such as tcp://head:8786, whose workers see PATH and have python3-velto;
without it two workers are started on this machine.
"""

import argparse
import sys

import dask.bag
from dask.distributed import Client, LocalCluster

import velto


def score(path):
    return velto.score(path, jobs=1)  # the cluster has the cores


def add_up(scores):
    return [sum(scores, velto.Score())]


def score_corpus(files):
    """A score a partition comes back, in the order of the files."""
    parts = dask.bag.from_sequence(files).map(score).map_partitions(add_up).compute()
    return sum(parts, velto.Score())


def score_on(scheduler, files):
    if scheduler:
        with Client(scheduler):
            return score_corpus(files)
    with LocalCluster(n_workers=2, threads_per_worker=1, host="127.0.0.1", dashboard_address=None) as two, Client(two):
        return score_corpus(files)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("path", metavar="PATH")
    parser.add_argument("scheduler", nargs="?", metavar="SCHEDULER")
    options = parser.parse_args()

    files = velto.files(options.path)
    if not files:
        sys.exit(f"score_with_dask: {options.path}: no recordings (*.json) in this folder")
    scored = score_on(options.scheduler, files)
    sys.stdout.write(scored.jsonl)
    for record in scored.records:
        if record.get("error"):
            print(f"score_with_dask: {record['file']}: {record['error']}", file=sys.stderr)
    return 1 if scored.total["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
