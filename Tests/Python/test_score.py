import os
import pickle
import re
import shutil

import pytest

import velto

from conftest import ROOT

HOLD = {"Pipeline.Algs.HoldTimeoutMilliseconds": 900}


@pytest.fixture
def corpus(tmp_path):
    """Labelled recordings, two that are damaged and one that is not there."""
    (tmp_path / "more").mkdir()
    for number in range(4):
        velto.simulate(random=6, seed=number).save(tmp_path / "more" / f"{number}.json")
    for sample in (ROOT / "Samples").glob("*.json"):
        shutil.copy(sample, tmp_path)
    (tmp_path / "damaged.json").write_text('{"Version":2,"Frames":[3]}')
    (tmp_path / "gone.json").symlink_to("nowhere")
    for name in (b"odd-\xff.json", b"odd-\xfe.json"):  # no text
        shutil.copy(ROOT / "Samples" / "taps.json", os.fsdecode(os.fsencode(tmp_path) + b"/" + name))
    (tmp_path / os.fsdecode(b"odd-\xfe.json")).write_text("{")
    return tmp_path


@pytest.mark.parametrize("settings, options", [({}, []), (HOLD, ["--set=Pipeline.Algs.HoldTimeoutMilliseconds=900"])])
def test_a_score_is_the_programs(corpus, settings, options, velto_run):
    files = velto.files(corpus)
    score = velto.score(files, settings, jobs=2)
    assert score.jsonl.encode() == velto_run("score", "--jsonl", corpus, *options, status=1)[0]
    odd = os.fsdecode(b"odd-\xff.json")
    assert odd in velto.Recording(corpus / odd).file and ascii(odd)[1:-1] in repr(velto.replay(corpus / odd))
    assert score.total["failed"] == 3 and score.total["labels"] > 20
    parts = [velto.score(files[:3], settings), velto.score(files[3:], settings)]
    merged = sum(pickle.loads(pickle.dumps(parts)))
    assert merged == score and merged.total == score.total
    assert re.fullmatch(r"<velto.Score of \d+ recordings \(3 failed\): recall [\d.]+ of \d+ labels, \d+ false, \d+ "
                        r"stray>", repr(merged))


def test_recordings_in_memory_are_scored_too():
    recording = velto.simulate("tap:play-pause hold:volume-up", seed=7)
    score = velto.score(recording)
    assert score.total["found"] == 2 and score.records[-1]["file"] == "-"
    with pytest.raises(ValueError, match="Pipeline.Foo: unknown key"):
        velto.score([recording, recording], {"Pipeline.Foo": 1})
    assert velto.score([]).total["recordings"] == 0
