#!/usr/bin/python3
"""Where do my taps go? What the touches of recordings became, by region and by the pad that felt them most.

    where_taps_go.py PATH... [-o where.png]

Paste it into a notebook cell by cell; PATH is a recording or a folder of them.
"""

import argparse
import sys

import matplotlib
import pandas

import velto

matplotlib.use("Agg")  # a notebook does not need this line


def touches_of(files):
    """A table with a row for each touch, and what is wrong with the files that could not be read."""
    rows, faults = [], []
    for file in files:
        try:
            played = velto.replay(file, states=False)
        except (OSError, ValueError) as fault:
            faults.append(fault)
            continue
        for touch in played.touches:
            label = touch["label"] or {}
            rows.append({"file": file, "outcome": touch["outcome"], "region": touch["region"],
                         "peak": touch["peak"]["pixel"], "durationMs": touch["durationMs"], "reason": touch["reason"],
                         "meant": label.get("gesture", "-"), "meantRegion": label.get("region", "-")})
    return pandas.DataFrame(rows), faults


def show(touches, picture):
    print(pandas.crosstab(touches["outcome"], touches["region"], margins=True), end="\n\n")

    meant = touches[touches["meant"] == "tap"]
    if not meant.empty:
        print("Taps that were meant, and what became of them:")
        print(pandas.crosstab(meant["meantRegion"], [meant["outcome"], meant["region"]]), end="\n\n")
    rejected = touches[touches["outcome"] == "cancel"]
    print("Why touches became nothing:", rejected["reason"].value_counts().to_dict())

    by_pad = pandas.crosstab(touches["peak"], touches["outcome"])
    axes = by_pad.plot.bar(stacked=True, figsize=(10, 4), title="Outcomes, by the pad or group that felt most")
    axes.set(xlabel="", ylabel="touches")
    axes.figure.tight_layout()
    axes.figure.savefig(picture)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("paths", nargs="+", metavar="PATH")
    parser.add_argument("-o", default="where.png", metavar="OUT")
    options = parser.parse_args()

    files = [file for path in options.paths for file in velto.files(path)]
    touches, faults = touches_of(files)
    if touches.empty:
        print(f"No touches in {len(files) - len(faults)} recordings.")
    else:
        show(touches, options.o)
    for fault in faults:
        print(f"where_taps_go: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
