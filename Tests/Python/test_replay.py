import pickle
import re
import sys
import threading
import time

import numpy as np
import pytest

import velto

SETTINGS = {"Pipeline.Algs.HoldTimeoutMilliseconds": 250, "Pipeline.Algs.EnableTapSuppression": False,
            "Pipeline.Algs.ActivationThreshold": 170.5}


@pytest.mark.parametrize("settings", [{}, SETTINGS], ids=["recorded", "set"])
def test_events_and_touches_are_the_programs(path, settings, velto_lines):
    options = [f"--set={key}={str(value).lower()}" for key, value in settings.items()]
    played = velto.replay(path, settings, states=False)
    assert played.events == velto_lines("event", "replay", path, *options)
    assert played.touches == velto_lines("touch", "explain", path, *options)
    assert played.states is None and played.features.ranked is None


def described(line):
    """The numbers of a frame that the program describes: six decimals, whole values of pads and of groups."""
    numbers = dict(re.findall(r"(\w+)=(-?[\d.]+|-?inf|nan)\b", line["touch"].split("[")[0]))
    pads = [int(value) for value in re.findall(r"[A-O]= *-?\d+ +(-?\d+)", line["touch"])]
    groups = [int(value) for value in re.findall(r"[A-O]{3,4}= *(-?\d+)", line["virtual"])]
    region = re.search(r"ActiveRegion=(\d)", line["touch"])
    return numbers, pads, groups, region and int(region[1])


def test_states_are_the_programs(path, velto_lines):
    threshold = {"Pipeline.Algs.ActivationThreshold": 170.5}
    played = velto.replay(path, threshold)
    lines = [line for line in velto_lines("frame", "replay", "--describe", path,
                                          "--set=Pipeline.Algs.ActivationThreshold=170.5")
             if (line["frame"], line["timeMs"]) != (0, 0)]  # firmware resets, which are no images
    isImage = (played.states["frame"] != 0) | (played.states["timeMs"] != 0)
    states, ranked = played.states[isImage], played.features.ranked[isImage]
    assert len(lines) == len(states)
    for line, state, values in zip(lines, states, ranked):
        numbers, pads, groups, region = described(line)
        assert (line["frame"], line["timeMs"]) == (state["frame"], state["timeMs"])
        assert numbers == {name: f"{state[field]:f}" if state[field].dtype.kind == "f" else str(state[field])
                           for name, field in (("ts", "touchScore"), ("sd", "signalPerDuration"),
                                               ("tsd", "signalPerTouchDuration"), ("TapSVMScore", "tapScore"),
                                               ("NonActivePixels", "nonActivePixels"),
                                               ("TimeDurationRatio", "timeDurationRatio"))}
        assert values.tolist() == sorted(pads + groups, reverse=True)
        assert (state["pads"] == np.array(pads, "f4") / np.float32(170.5)).all()
        assert (state["groups"] == np.array(groups, "f4") / np.float32(170.5)).all()
        assert state["touching"] == ("<==ON" in line["touch"] + line["virtual"])
        assert region in (None, state["activeRegion"])
        assert (" ABOVENOISE" in line["touch"]) <= state["aboveNoise"] <= (" BELOWNOISE" not in line["touch"])
        assert state["tapDetected"] == (" TAP " in line["touch"])
        assert (state["holding"], state["suppressingHold"]) == (
            bool(re.search("HOLDING|STARTHOLD", line["touch"])), "SUPPRESSHOLD" in line["touch"])


def test_states_agree_with_each_other_and_with_events(path):
    played = velto.replay(path)
    before, after = played.states[:-1], played.states[1:]
    goesOn = before["aboveNoise"] & after["aboveNoise"] & (after["touching"] >= before["touching"])
    score = (before["touchScore"] + after["classifier"]).clip(-100, 100)
    assert (score == after["touchScore"])[goesOn & (after["timeMs"] > before["timeMs"])].all()
    for event in played.events:
        states = played.states[played.states["ns"] == event["timeNs"]]
        if event["gesture"] == "tap" and len(states) == 1:
            state = states[0]
            assert state["tapDetected"] and state["tapCandidate"] and not state["holdTimedOut"]
            assert velto.REGIONS[state["activeRegion"]] == velto.REGIONS[state["eventRegion"]] == event["region"]
    for row, touch in zip(played.features.taps, played.touches):
        states = played.states[played.states["ns"] == row["endNs"]]
        if len(states) == 1 and touch["cutBy"] is None:
            assert states[0]["tapRejected"] == row["tapRejected"]


def test_a_hold_that_moves():
    states = velto.replay(velto.simulate("slide:volume-up-volume-down")).states
    held = states[states["holding"]]
    assert held["holdTimedOut"].all() and (held["previousRegion"] != held["activeRegion"]).any()
    assert [velto.REGIONS[held["activeRegion"][i]] for i in (0, -1)] == ["VolumeUp", "VolumeDown"]


def test_tap_features_are_those_of_the_checks(path):
    played = velto.replay(path, states=False)
    taps = played.features.taps
    assert len(played.touches) - len(taps) in (0, 1)  # the recording may end within the last touch
    for row, touch in zip(taps, played.touches):
        assert (row["touch"], row["endNs"]) == (touch["touch"], touch["endNs"])
        for check in touch["checks"]:
            if check["rule"] in taps.dtype.names and check["value"] is not None:
                assert row[check["rule"]] == np.float32(check["value"]), check["rule"]


def test_a_result_is_pickled_and_read_by_a_person():
    played = velto.replay(velto.simulate("tap:play-pause hold:volume-up", seed=7))
    again = pickle.loads(pickle.dumps(played))
    assert repr(again) == "<velto.Replay: 2 touches (1 tap, 1 hold, 0 cancel, 0 unfinished)>"
    assert "1 touch (" in repr(velto.replay(velto.simulate("tap:K")))
    assert (again.events, again.touches) == (played.events, played.touches)
    assert (again.states == played.states).all() and (again.features.ranked == played.features.ranked).all()


def test_a_replay_of_bytes_is_that_of_the_standard_input(velto_lines):
    content = velto.simulate("tap:play-pause reset hold:volume-up", seed=7).to_bytes()
    played = velto.replay(content)
    assert played.events == velto_lines("event", "replay", "-", given=content)
    assert played.touches == velto_lines("touch", "explain", "-", given=content)
    assert played.touches[0]["file"] == "-" and played.file is None


TIMEOUT = "Pipeline.Algs.HoldTimeoutMilliseconds"


@pytest.mark.parametrize("error, settings, message", [
    (ValueError, {"Pipeline.Algs.HoldTimeout": 1}, "Pipeline.Algs.HoldTimeout: unknown key"),
    (ValueError, {"Recording": 1}, "Recording: unknown key"),
    (ValueError, {TIMEOUT: -1}, f"{TIMEOUT}: a whole number from 0 to 4294967295 is wanted"),
    (ValueError, {"Pipeline.Algs.ActivationThreshold": float("inf")},
     "Pipeline.Algs.ActivationThreshold: a number from -3.4e38 to 3.4e38 is wanted"),
    (TypeError, {TIMEOUT: {250}}, f"{TIMEOUT}: Object of type set is not JSON serializable"),
    (ValueError, {TIMEOUT: np.arange(2)}, f"{TIMEOUT}: can only convert an array of size 1 to a Python scalar"),
    (TypeError, {5: 1}, "settings: a key: str is wanted, not int"),
    (TypeError, TIMEOUT, "settings: a mapping is wanted, not str"),
])
def test_settings_are_judged_before_anything_is_read(error, settings, message):
    for judges in (velto.replay, velto.score):
        with pytest.raises(error) as raised:
            judges("none.json", settings)
        assert str(raised.value) == message


def test_doubtful_settings_are_warned_of_where_they_are_given():
    for judges in (velto.replay, velto.score):
        with pytest.warns(UserWarning, match="Pipeline.Algs.ActivationThreshold: 0 or less is allowed") as warnings:
            judges(velto.simulate("idle"), {"Pipeline.Algs.ActivationThreshold": np.float32(0)})
        assert [warning.filename for warning in warnings] == [__file__]


def test_two_threads_play_while_a_third_goes_on():
    recording = velto.simulate(random=400, seed=3)
    results = []
    players = [threading.Thread(target=lambda: results.append(velto.replay(recording))) for _ in range(2)]
    turns = 0
    interval = sys.getswitchinterval()
    sys.setswitchinterval(60)  # nobody is asked for the lock: it has to be released
    try:
        for player in players:
            player.start()
        while any(player.is_alive() for player in players):
            time.sleep(0.001)
            turns += 1
    finally:
        sys.setswitchinterval(interval)
    assert turns > 5
    assert results[0].touches == results[1].touches != []
    assert (results[0].states == results[1].states).all()
