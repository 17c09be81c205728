"""The program of the same build, and the recordings that the module is compared with it on."""

import json
import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).parents[2]
RECORDINGS = sorted(str(path) for folder in ("Samples", "Tests/Recordings") for path in (ROOT / folder).glob("*.json"))


def pytest_generate_tests(metafunc):
    if "path" in metafunc.fixturenames:
        metafunc.parametrize("path", RECORDINGS, ids=lambda path: pathlib.Path(path).stem)


@pytest.fixture
def velto_run():
    """Runs the program with a standard input. It must end with `status`; its output and its errors."""

    def run(*arguments, status=0, given=b""):
        done = subprocess.run([os.environ["VELTO_PROGRAM"], *map(str, arguments)], capture_output=True, input=given)
        assert done.returncode == status, done.stderr
        return done.stdout, done.stderr.decode()

    return run


@pytest.fixture
def velto_lines(velto_run):
    """The lines of one kind that a command prints."""

    def lines(kind, *arguments, given=b""):
        every = map(json.loads, velto_run(*arguments, "--jsonl", given=given)[0].splitlines())
        return [line for line in every if line["kind"] == kind]

    return lines
