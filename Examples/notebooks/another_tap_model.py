#!/usr/bin/python3
"""Trains another tap model and compares it with the one that is in force, on touches that neither was trained on.

    another_tap_model.py [PATH...]

PATH is a labelled recording or a folder of them; without any, taps and short palms are simulated. The model is the same
kind as the present one, a line through its three features, here fitted by logistic regression.
"""

import sys

import numpy
from numpy.lib.recfunctions import structured_to_unstructured

import velto

FEATURES = ["nonActivePixels", "signalPerDuration", "timeDurationRatio"]


def made_up(seed):
    """Taps on all pads, and palms that are gone before they could be a hold."""
    random = numpy.random.default_rng(seed)
    steps = [f"tap:{random.choice(velto.PADS)}:{random.integers(60, 400)}" if random.random() < 0.7 else
             f"palm:{random.integers(60, 460)}" for _ in range(60)]
    return velto.simulate(steps, seed=seed, noise=20)


def readable(files):
    """The recordings in files, but for those that cannot be read, which are reported."""
    recordings = []
    for file in files:
        try:
            recordings.append(velto.Recording(file))
        except (OSError, ValueError) as fault:
            print(f"another_tap_model: {fault}", file=sys.stderr)
    return recordings


def judged_touches(recording):
    """Features, the present verdict, and whether a tap was meant, of the touches that the tap model is asked about."""
    played = velto.replay(recording, states=False)
    asked = [touch for touch in played.touches if any(check["rule"] == "tapScore" for check in touch["checks"])]
    taps = played.features.taps[[touch["touch"] - 1 for touch in asked]]
    meant = [(touch["label"] or {}).get("gesture") == "tap" for touch in asked]
    return structured_to_unstructured(taps[FEATURES]), ~taps["tapRejected"], numpy.array(meant, bool)


def fit(features, meant, steps=2000, rate=0.5):
    """Weights of the standardized features and a constant, and what standardizes them."""
    mean, spread = features.mean(axis=0), features.std(axis=0) + 1e-9
    inputs = numpy.column_stack([(features - mean) / spread, numpy.ones(len(features))])
    weights = numpy.zeros(inputs.shape[1])
    for _ in range(steps):
        likely = 1 / (1 + numpy.exp(-inputs @ weights))
        weights -= rate * inputs.T @ (likely - meant) / len(meant)
    scaled = weights[:-1] / spread
    return scaled, weights[-1] - scaled @ mean


def main(paths):
    files = [each for path in paths for each in velto.files(path)]
    recordings = readable(files) if paths else [made_up(seed) for seed in range(1, 13)]
    if not recordings:
        sys.exit("another_tap_model: no recordings")
    features, present, meant = map(numpy.concatenate, zip(*map(judged_touches, recordings)))
    if meant.all() or not meant.any():
        sys.exit("another_tap_model: touches that were meant as taps and others are wanted")
    trained_on = numpy.arange(len(meant)) % 2 == 0
    weights, constant = fit(features[trained_on], meant[trained_on])
    new = features @ weights + constant >= 0

    test = ~trained_on
    print(f"{len(meant)} touches in {len(recordings)} recordings, {meant.sum()} meant as taps; "
          f"{trained_on.sum()} to train on, {test.sum()} to test")
    for name, verdict in (("present", present), ("new", new)):
        wrong = verdict[test] != meant[test]
        print(f"{name:>8}: {wrong.sum()} wrong ({(wrong & meant[test]).sum()} taps lost, "
              f"{(wrong & ~meant[test]).sum()} that were none)")
    print("weights:", dict(zip(FEATURES, weights.round(4).tolist())), "constant:", round(float(constant), 4))
    return 1 if len(recordings) < len(files) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
