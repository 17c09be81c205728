"""Recordings of the touch surface in Python: what they hold, what recognition makes of them, and how well.

    recording = velto.Recording("gestures.json")
    played = velto.replay(recording, {"Pipeline.Algs.HoldTimeoutMilliseconds": 250})
    played.touches[0]["outcome"], played.states["touchScore"]

All results are the program's, bit for bit. Times `ns`, `...Ns` are nanoseconds from the recording's first frame;
`timeMs` is the device's own clock, which wraps. Settings are full property keys (`velto get` lists them) with values
that JSON knows. The interpreter lock is released while files are read and recordings are played: threads use all cores.

Errors: OSError for a file. ValueError for a recording's content, in the program's words and with the file's name,
"FILE: MESSAGE (place)"; for a setting, a step and a number out of range, each with its name. TypeError for an argument
of a wrong type. What has no path is "-" in lines and messages, as the program calls its standard input.
"""

import functools
import json
import operator
import os
from collections.abc import Iterable, Mapping
from concurrent.futures import ThreadPoolExecutor
from typing import Any, NamedTuple

import numpy

from . import _velto
from ._velto import GROUPS, REGIONS, Recording

__all__ = ["GROUPS", "PADS", "REGIONS", "Features", "Recording", "Replay", "Score", "files", "replay", "score",
           "simulate"]

Path = str | os.PathLike[str]
Source = Recording | Path | bytes  # bytes are a recording's content, as for Recording
Settings = Mapping[str, Any]

PADS = tuple("ABCDEFGHIJKLMNO")  # the columns of padRaw, padSignal and pads; GROUPS are those of groups


def _records(lines: str) -> list[dict[str, Any]]:
    return [json.loads(line) for line in lines.split("\n")[:-1]]


def _counted(count: int, one: str, many: str) -> str:
    return f"{count} {one if count == 1 else many}"


class Features(NamedTuple):
    """What the two models see, for training.

    ranked: the classifier's, int32, shape (images, 38): the values of all pads and groups of an image in counts, the
    largest first. None if states were not asked for.

    taps: the tap model's, in the frame that ended a touch; structured, shape (ended touches,). A recording that ends
    within its last touch has no row for it.

    touch                   u8     number of the touch
    endNs                   u8     ns
    signalPerTouchDuration  f4     counts / ms, less 0.65
    signalPerDuration       f4     counts / ms, less 0.51
    nonActivePixels         i4     21 less the pixels that were above noise and never turned on
    timeDurationRatio       f4     touching share of the contact, less 0.25
    tapScore                f4     the model's score: 0 and more is a tap
    tapRejected             bool   its verdict, with the bounds of the features
    """

    ranked: numpy.ndarray | None
    taps: numpy.ndarray


class Replay:
    """What recognition made of a recording. Pickles.

    file: the recording's path, None without one.
    features: see Features.
    states: the recognizer after each image, structured, shape (images,), beside `Recording.images`; None if it was not
    asked for.

    ns, frame, timeMs   u8, u4, u4   as in the images
    touchScore          f4           running score, within +-100
    classifier          f4           the image's own score; 0 if there is nothing to judge
    signalPerTouchDuration, signalPerDuration, nonActivePixels, timeDurationRatio, tapScore
                        f4, i4       tap features; they mean something in the image that ends a touch
    aboveNoise, touching, holding, suppressingHold, holdTimedOut, tapCandidate, tapRejected, tapDetected
                        bool         flags
    activeRegion        u1           of the touch, a number of REGIONS
    previousRegion      u1           of a hold, before its last decision
    eventRegion         u1           where the last tap or hold ended
    pads, groups        f4 (15,), f4 (23,)   normalized values: 1 is the activation threshold
    """

    def __init__(self, file: str | None, events: str, touches: str, states: numpy.ndarray | None,
                 ranked: numpy.ndarray | None, taps: numpy.ndarray) -> None:
        self.file = file
        self._events = events
        self._touches = touches
        self.states = states
        self.features = Features(ranked, taps)

    @functools.cached_property
    def events(self) -> list[dict[str, Any]]:
        """The events in their order, with the members that `velto replay --jsonl` prints: timeNs, gesture, frame,
        region, phase, eventMask, y; a firmware reset has usagePage and usage."""
        return _records(self._events)

    @functools.cached_property
    def touches(self) -> list[dict[str, Any]]:
        """The touches in their order, with the members that `velto explain --jsonl` prints: outcome, region, startNs,
        endNs, peak, checks, reason, label and more."""
        return _records(self._touches)

    def __repr__(self) -> str:
        outcomes = [touch["outcome"] for touch in self.touches]
        counts = ", ".join(f"{outcomes.count(kind)} {kind}" for kind in ("tap", "hold", "cancel", "unfinished"))
        touches = _counted(len(outcomes), "touch", "touches")
        return f"<velto.Replay{f' {self.file!r}' if self.file else ''}: {touches} ({counts})>"


def replay(recording: Source, settings: Settings | None = None, states: bool = True) -> Replay:
    """Plays a recording, or the one at a path or in bytes, through a fresh recognizer.

    settings: written before the first frame; the recording's own writes of their keys are left out. ValueError for what
    `velto replay --set` refuses; TypeError for a key that is no str and a value that JSON does not know; UserWarning
    for a value that is surely not meant.
    states: whether states and ranked values are made, 360 bytes an image.
    """
    judged = _velto.JudgedSettings(settings)
    if not isinstance(recording, Recording):
        recording = Recording(recording)
    return Replay(recording.file, *_velto.play(recording, judged, states))


class Score:
    """How well recognition agrees with what was meant, over some recordings. Pickles. `a + b` and `sum(scores)` are
    what one run over all their recordings in that order gives."""

    def __init__(self, lines: str = "") -> None:
        self._lines = lines

    @property
    def records(self) -> list[dict[str, Any]]:
        """Each label, stray and recording, with the members that `velto score --jsonl` prints."""
        return _records(self._lines)

    @functools.cached_property
    def total(self) -> dict[str, Any]:
        """The members of its last line: recall, falsePerHour, found, missed, byGesture and more."""
        return json.loads(_velto.total(self._lines))

    @property
    def jsonl(self) -> str:
        """All that it prints."""
        return self._lines + _velto.total(self._lines)

    def __add__(self, other: "Score") -> "Score":
        return Score(self._lines + other._lines) if isinstance(other, Score) else NotImplemented

    def __radd__(self, other: int) -> "Score":  # sum() begins with 0
        return self if other == 0 else NotImplemented

    def __eq__(self, other: object) -> bool:
        return self._lines == other._lines if isinstance(other, Score) else NotImplemented

    def __repr__(self) -> str:
        total = self.total
        recordings = _counted(total["recordings"], "recording", "recordings")
        labels = _counted(total["labels"], "label", "labels")
        return (f"<velto.Score of {recordings} ({total['failed']} failed): recall {total['recall']:.4g} of {labels}, "
                f"{total['false']} false, {total['stray']} stray>")


def _workers(jobs: int | None) -> int | None:
    if jobs is None:
        return os.cpu_count()
    try:
        count = operator.index(jobs)
    except TypeError:
        raise TypeError(f"jobs: a whole number is wanted, not {type(jobs).__name__}") from None
    if count < 1:
        raise ValueError("jobs: a whole number of 1 or more is wanted")
    return count


def score(recordings: Source | Iterable[Source], settings: Settings | None = None, jobs: int | None = None) -> Score:
    """Scores labelled recordings, or those at paths or in bytes, `jobs` at a time; one a core unless it is given.

    A file that cannot be read has a record with `error` and counts as `failed`, as in the program. Settings are those
    of `replay`, judged before anything is read. ValueError for `jobs` below 1; TypeError if it is no whole number.
    """
    judged = _velto.JudgedSettings(settings)
    workers = _workers(jobs)
    if isinstance(recordings, (str, bytes, os.PathLike, Recording)):
        recordings = [recordings]
    with ThreadPoolExecutor(workers) as pool:
        return Score("".join(pool.map(lambda each: _velto.score(each, judged), recordings)))


def files(path: Path) -> list[str]:
    """The recordings that a path stands for in the program: itself, or a folder's regular *.json files and those below
    it, sorted. Links to folders are not followed. A folder below that cannot be read and a broken link are among them:
    opening them says why. Empty for a folder without recordings."""
    return _velto.files(path)


def simulate(script: str | Iterable[str] = "", seed: int = 1, rate: int = 100, noise: int = 3,
             random: int = 0) -> Recording:
    """Puts simulated fingers on the surface; the same bytes as `velto simulate` gives.

    script: steps, such as "tap:play-pause hold:volume-up:900"; `velto simulate --help` lists them.
    seed: 0 to 2**64 - 1. rate: scans a second, 1 to 1000. noise: largest noise of a pad in counts, 0 to 1000.
    random: how many gestures of a made-up user stand behind the steps, 0 to 5000.
    ValueError: a step that is none, a number out of range. TypeError: what is no str or no whole number.
    """
    steps = script.split() if isinstance(script, str) else list(script)
    return _velto.simulate(steps, seed, rate, noise, random)
