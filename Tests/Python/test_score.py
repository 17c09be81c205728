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


def test_recordings_in_memory_are_scored_too(velto_run):
    recording = velto.simulate("tap:play-pause", seed=7)
    score = velto.score(recording)
    assert repr(score) == "<velto.Score of 1 recording (0 failed): recall 1 of 1 label, 0 false, 0 stray>"
    for content, status in ((recording.to_bytes(), 0), (b'{"Version":2,"Frames":[3]}', 1)):
        expected = velto_run("score", "--jsonl", "-", given=content, status=status)[0].decode()
        assert velto.score(content).jsonl == velto.score([content]).jsonl == expected
    assert velto.score(recording.to_bytes()) == score
    assert velto.score([]).total["recordings"] == 0
    with pytest.raises(TypeError):
        velto.score([recording, 5])


@pytest.mark.parametrize("error, message, jobs", [
    (ValueError, "jobs: a whole number of 1 or more is wanted", 0),
    (ValueError, "jobs: a whole number of 1 or more is wanted", -1),
    (TypeError, "jobs: a whole number is wanted, not str", "a"),
])
def test_a_score_says_what_is_wrong_with_jobs(error, message, jobs):
    with pytest.raises(error, match=f"^{message}$"):
        velto.score([], jobs=jobs)


def test_files_are_those_that_the_program_takes(corpus, velto_run):
    os.mkfifo(corpus / "pipe.json")
    (corpus / "folder.json").mkdir()
    (corpus / "link.json").symlink_to("more")
    for name in (".json", "taps.txt", "more/taps.JSON"):
        shutil.copy(ROOT / "Samples" / "taps.json", corpus / name)
    lines = velto_run("score", "--jsonl", corpus, status=1)[0].decode()
    taken = re.findall(r'"kind":"recording","file":"(.*?)"', lines)
    assert [os.fsencode(file).decode(errors="replace") for file in velto.files(corpus)] == taken
    assert velto.files(corpus / "none.json") == [str(corpus / "none.json")]
    assert velto.files(corpus / "folder.json") == []
