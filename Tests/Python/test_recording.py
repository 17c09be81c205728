import ast
import csv
import io
import json
import os
import pickle
import re
import threading

import numpy as np
import pytest

import velto

from conftest import ROOT


def test_images_and_labels_are_the_programs(path, velto_run):
    def exported(what):
        return csv.DictReader(io.StringIO(velto_run("export", "--what", what, path)[0].decode()))

    recording = velto.Recording(path)
    images = [tuple(map(int, list(row.values())[1:])) for row in exported("images")]
    assert [(*map(int, (row["ns"], row["frame"], row["timeMs"])), *row["padSignal"].tolist())
            for row in recording.images] == images
    names = recording.labels.dtype.names
    labels = [tuple(row["label" if name == "index" else name] for name in names) for row in exported("labels")]
    assert [tuple(map(str, row)) for row in recording.labels.tolist()] == labels


def test_save_writes_what_convert_writes(path, velto_run, tmp_path):
    velto.Recording(path).save(tmp_path / "saved.json")
    assert (tmp_path / "saved.json").read_bytes() == velto_run("convert", path)[0]
    assert os.listdir(tmp_path) == ["saved.json"]


def test_images_come_back(path, tmp_path):
    images = velto.Recording(path).images
    velto.Recording.from_images(images).save(tmp_path / "images.json")
    again = velto.Recording(tmp_path / "images.json").images
    images["ns"] -= images["ns"][0]
    assert again.dtype == images.dtype and (again == images).all()


def test_a_recording_holds_everything_of_its_frames(path):
    frames = sorted(json.loads(open(path).read())["Frames"], key=lambda frame: frame["Timestamp"])
    recording = velto.Recording(path)
    reports = [bytes.fromhex(frame["Data"]) for frame in frames if frame["Type"] == "InputReport"]
    content = recording.report_bytes.tobytes()
    assert [content[row["offset"]:row["offset"] + row["length"]] for row in recording.reports] == reports
    assert recording.settings.tolist() == [
        (frame["Timestamp"] - frames[0]["Timestamp"], "Pipeline." + frame["Key"], frame.get("Value"))
        for frame in frames if frame["Type"] == "State"]
    assert recording.duration_ns == frames[-1]["Timestamp"] - frames[0]["Timestamp"]


def test_the_accelerometer_beside_labels_and_others():
    sample = {"Type": "Metadata", "Key": "Accel", "Timestamp": 9, "Value": {"X": 0.5, "Y": -1.25, "Z": 1}}
    odd = {"Type": "Metadata", "Key": "Accel", "Timestamp": 7, "Value": "none"}
    recording = velto.Recording(json.dumps({"Version": 2, "Frames": [sample, odd]}).encode())
    assert recording.accelerometer.tolist() == [(2, 0.5, -1.25, 1.0)]
    assert repr(recording) == "<velto.Recording: 0.000 s, 0 images, 0 labels>"


REPORT = "01 " + "00 " * 72


@pytest.mark.parametrize("old", [
    {"Version": 0, "Reports": [{"Timestamp": 5, "ReportData": REPORT}]},
    {"Version": 1, "Frames": [{"Type": "InputReport", "Timestamp": 5, "Report": REPORT}]},
], ids=["version 0", "version 1"])
def test_old_versions_are_read(old, velto_run, tmp_path):
    content = json.dumps(old).encode()
    (tmp_path / "old.json").write_bytes(content)
    assert velto.Recording(content).to_bytes() == velto_run("convert", tmp_path / "old.json")[0]
    assert len(velto.Recording(content).images) == 1


def damaged_containers():
    """Containers that no reader takes, of Tests/Recordings/bad-containers.txt: those that stand for themselves."""
    text = (ROOT / "Tests/Recordings/bad-containers.txt").read_text()
    return [line.strip().rsplit("  (", 1)[0] for line in text.splitlines() if re.match(r" +[\[{]", line)]


def test_damaged_recordings_are_value_errors_in_the_programs_words(velto_run, tmp_path):
    damaged = damaged_containers()
    assert len(damaged) > 5
    for number, content in enumerate(damaged):
        (tmp_path / f"{number:03}.json").write_text(content)
    words = re.findall(r"velto: (.*?\.json): (.*)\n", velto_run("info", tmp_path, status=1)[1])
    assert len(words) == len(damaged)
    for content, (file, expected) in zip(damaged, words):
        for source, name in ((file, file), (content.encode(), "-")):
            for take in (velto.Recording, velto.replay):
                with pytest.raises(ValueError) as error:
                    take(source)
                assert str(error.value) == f"{name}: {expected}"
    odd = os.path.join(tmp_path, os.fsdecode(b"odd-\xff.json"))  # no text
    os.rename(words[0][0], odd)
    with pytest.raises(ValueError, match=re.escape(f"{odd}: {words[0][1]}")):
        velto.Recording(odd)


def test_what_the_system_refuses_is_an_os_error(tmp_path):
    with pytest.raises(FileNotFoundError, match="No such file or directory: '.*/none.json'"):
        velto.Recording(tmp_path / "none.json")
    with pytest.raises(IsADirectoryError):
        velto.Recording(str(tmp_path))
    with pytest.raises(FileNotFoundError, match="No such file or directory: '.*/none/out.json'"):
        velto.simulate("idle").save(tmp_path / "none" / "out.json")
    with pytest.raises(TypeError):
        velto.Recording(5)
    with pytest.raises(ValueError, match="embedded null byte"):
        velto.Recording("a\0b")


def test_the_stub_has_what_the_extension_has():
    def names(body):
        return {node.name: names(node.body) if isinstance(node, ast.ClassDef) else None for node in body
                if isinstance(node, (ast.ClassDef, ast.FunctionDef))}

    stub = names(ast.parse((ROOT / "Python/velto/_velto.pyi").read_text()).body)
    public = {name for name in vars(velto.Recording) if not name.startswith("_")}
    assert set(stub["Recording"]) == public | {"__init__"}
    assert set(stub) == {name for name in vars(velto._velto) if name[0] != "_"} - {"GROUPS", "REGIONS"}


def test_saving_keeps_rights_links_and_pipes(tmp_path):
    recording = velto.simulate("tap:K")
    target, link, pipe = tmp_path / "target.json", tmp_path / "link.json", tmp_path / "pipe"
    target.write_text("old")
    target.chmod(0o640)
    link.symlink_to(target)
    recording.save(link)
    assert link.is_symlink() and target.read_bytes() == recording.to_bytes() and target.stat().st_mode & 0o777 == 0o640
    mask = os.umask(0o027)
    recording.save(tmp_path / "new.json")
    assert os.umask(mask) == 0o027 and (tmp_path / "new.json").stat().st_mode & 0o777 == 0o640
    os.mkfifo(pipe)
    received = []
    reader = threading.Thread(target=lambda: received.append(pipe.read_bytes()))
    reader.start()
    recording.save(pipe)
    reader.join()
    assert received == [recording.to_bytes()] and pipe.is_fifo()


def test_from_images_says_what_is_wrong():
    images = velto.simulate("tap:K").images
    fewer = images[["ns", "frame", "timeMs", "padSignal"]].copy()
    assert (velto.Recording.from_images(fewer).images["padSignal"] == images["padSignal"]).all()
    wide = fewer.astype([("ns", "i8"), ("frame", "i8"), ("timeMs", "i8"), ("padSignal", "i4", (15,))])
    assert (velto.Recording.from_images(wide).images["frame"] == images["frame"]).all()
    wide["padSignal"][3, 2] = 40000
    with pytest.raises(TypeError, match="images: a structured array is wanted, not list"):
        velto.Recording.from_images([1])
    for wrong, message in ((wide, "images: padSignal is out of range"),
                           (images[["ns", "frame", "timeMs"]], "images: no field padSignal"),
                           (np.zeros((2, 15)), "a structured array of one dimension is wanted")):
        with pytest.raises(ValueError, match=message):
            velto.Recording.from_images(wrong)


def test_a_recording_is_pickled(path):
    recording = velto.Recording(path)
    again = pickle.loads(pickle.dumps(recording))
    assert (again.file, again.to_bytes(), repr(again)) == (path, recording.to_bytes(), repr(recording))
    assert repr(recording).startswith(f"<velto.Recording {path!r}: ")


def test_a_simulation_is_the_programs(velto_run):
    steps = ["tap:play-pause", "slide:volume-up-volume-down:900", "palm", "reset", "hold:K"]
    options = ["--seed", 7, "--rate", 120, "--noise", 5, "--random", 4]
    simulated = velto.simulate(" ".join(steps), seed=np.int8(7), rate=120, noise=5, random=4)
    assert simulated.to_bytes() == velto_run("simulate", *options, *steps)[0]


@pytest.mark.parametrize("error, message, arguments", [
    (ValueError, 'step "dance": no such step (tap, hold, slide, palm, brush, idle or reset)', {"script": ["dance"]}),
    (TypeError, "script: a step: str is wanted, not int", {"script": [5]}),
    (ValueError, "seed: a whole number from 0 to 18446744073709551615 is wanted", {"seed": -1}),
    (ValueError, "seed: a whole number from 0 to 18446744073709551615 is wanted", {"seed": 2**64}),
    (TypeError, "seed: a whole number is wanted, not float", {"seed": 1.5}),
    (ValueError, "rate: a whole number from 1 to 1000 is wanted", {"rate": 0}),
    (ValueError, "rate: a whole number from 1 to 1000 is wanted", {"rate": 2**40}),
    (ValueError, "noise: a whole number from 0 to 1000 is wanted", {"noise": 1001}),
    (ValueError, "random: a whole number from 0 to 5000 is wanted", {"random": 5001}),
])
def test_a_simulation_says_what_is_wrong(error, message, arguments):
    with pytest.raises(error) as raised:
        velto.simulate(**arguments)
    assert str(raised.value) == message
