"""Recordings of the touch surface in Python: what they hold, what recognition makes of them, and how well."""

import functools
import json
import os
from concurrent.futures import ThreadPoolExecutor
from typing import NamedTuple

from . import _velto
from ._velto import GROUPS, REGIONS, Recording

__all__ = ["GROUPS", "PADS", "REGIONS", "Features", "Recording", "Replay", "Score", "files", "replay", "score",
           "simulate"]

PADS = tuple("ABCDEFGHIJKLMNO")

Recording.__module__ = __name__


def _records(lines):
    return [json.loads(line) for line in lines.splitlines()]


class Features(NamedTuple):
    """What the two models see."""

    ranked: "numpy.ndarray | None"
    taps: "numpy.ndarray"


class Replay:
    """What recognition made of a recording."""

    def __init__(self, file, events, touches, states, ranked, taps):
        self.file = file
        self._events = events
        self._touches = touches
        self.states = states
        self.features = Features(ranked, taps)

    @functools.cached_property
    def events(self):
        return _records(self._events)

    @functools.cached_property
    def touches(self):
        return _records(self._touches)

    def __repr__(self):
        outcomes = [touch["outcome"] for touch in self.touches]
        counts = ", ".join(f"{outcomes.count(kind)} {kind}" for kind in ("tap", "hold", "cancel", "unfinished"))
        return f"<velto.Replay{' ' + self.file if self.file else ''}: {len(outcomes)} touches ({counts})>"


def replay(recording, settings=None, states=True):
    """Plays a recording (or the one at a path) through a fresh recognizer and returns a Replay."""
    if not isinstance(recording, Recording):
        recording = Recording(recording)
    return Replay(recording.file, *_velto.play(recording, settings or {}, states))


class Score:
    """How well recognition agrees with what was meant, over some recordings. Scores add up."""

    def __init__(self, lines=""):
        self._lines = lines

    @functools.cached_property
    def records(self):
        return _records(self._lines)

    @functools.cached_property
    def total(self):
        return json.loads(_velto.total(self._lines))

    @property
    def jsonl(self):
        return self._lines + _velto.total(self._lines)

    def __add__(self, other):
        return Score(self._lines + other._lines) if isinstance(other, Score) else NotImplemented

    def __radd__(self, other):
        return self if other == 0 else NotImplemented  # the start of sum()

    def __eq__(self, other):
        return self._lines == other._lines if isinstance(other, Score) else NotImplemented

    __hash__ = None

    def __getstate__(self):
        return self._lines

    def __setstate__(self, lines):
        self._lines = lines

    def __repr__(self):
        total = self.total
        return (f"<velto.Score of {total['recordings']} recordings ({total['failed']} failed): recall "
                f"{total['recall']:.4g} of {total['labels']} labels, {total['false']} false, {total['stray']} stray>")


def _score_one(source, settings):
    try:
        recording = source if isinstance(source, Recording) else Recording(source)
    except (OSError, ValueError) as error:
        return _velto.failed(os.fsdecode(source), getattr(error, "strerror", None) or str(error))
    return _velto.score(recording, settings)


def score(recordings, settings=None, jobs=None):
    """Scores labelled recordings, or those at paths, and returns a Score."""
    if isinstance(recordings, (str, os.PathLike, Recording)):
        recordings = [recordings]
    with ThreadPoolExecutor(jobs or os.cpu_count()) as pool:
        return Score("".join(pool.map(lambda each: _score_one(each, settings or {}), recordings)))


def files(path):
    """The recordings that a path stands for: itself, or a folder's *.json files and those below it, in byte order."""
    if not os.path.isdir(path):
        return [os.fspath(path)]
    found = [os.path.join(folder, name) for folder, _, names in os.walk(path) for name in names
             if name.endswith(".json")]
    return sorted(found, key=os.fsencode)


def simulate(script="", seed=1, rate=100, noise=3, random=0):
    """Puts simulated fingers on the surface and returns a Recording."""
    steps = script.split() if isinstance(script, str) else list(script)
    return _velto.simulate(steps, seed, rate, noise, random)
