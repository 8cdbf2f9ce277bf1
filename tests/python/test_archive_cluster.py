"""Runs on a real cluster: two worker processes on loopback. Workers and clients are killed."""
import os
import random
import signal
import subprocess
import sys
import time

import pytest
from PIL import Image

distributed = pytest.importorskip("distributed")

from archive_support import check_lines, files_of, lines_of, make_archive
from vistatrim import archive


@pytest.fixture
def cluster():
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  host="127.0.0.1", dashboard_address=None) as found:
        yield found


def command(*arguments, **options):
    """The archive's command line as a process of its own."""
    return subprocess.Popen([sys.executable, "-m", "vistatrim.archive", *map(str, arguments)],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **options)


def test_a_killed_worker_loses_nothing(cluster, tmp_path):
    """200 photographs, some broken; one worker is killed in the middle."""
    photographs = make_archive(tmp_path / "in", 200, broken=14)
    random.Random(5).shuffle(photographs)
    killed = []

    with distributed.Client(cluster, set_as_default=False) as client:
        workers = client.run(os.getpid)

        def kill(progress):
            if not killed and 40 <= progress.done < progress.total:
                killed.append(sorted(workers.values())[0])
                os.kill(killed[0], signal.SIGKILL)

        summary = archive.suggest(photographs, output=str(tmp_path / "out"), client=client,
                                  partition_size=8, progress=kill, top=3, faces="off")
        assert len(killed) == 1
        assert killed[0] not in client.run(os.getpid).values()
    assert summary.photographs == 200 and summary.failed == 14
    check_lines(tmp_path / "out", photographs, "--top", "3")
    assert not [name for name in os.listdir(tmp_path / "out") if name.startswith(".")]


def test_a_new_client_finishes_the_run_of_a_killed_one(cluster, tmp_path):
    photographs = make_archive(tmp_path / "in", 60, broken=3)
    output = tmp_path / "out"
    arguments = (*photographs, "--output", output, "--scheduler", cluster.scheduler_address,
                 "--partition-size", "3", "--faces", "off")
    first = command(*arguments)
    deadline = time.monotonic() + 60
    while len(files_of(output)) < 3 and time.monotonic() < deadline:
        time.sleep(0.01)
    first.kill()
    first.communicate()
    before = files_of(output)
    assert 3 <= len(before) < 20

    second = command(*arguments)
    out, errors = second.communicate(timeout=120)
    assert second.returncode == 0, errors
    assert out.startswith("60 photographs, 3 failed")
    after = files_of(output)
    assert all(after[name] == before[name] for name in before)
    check_lines(output, photographs)


def test_a_photograph_that_takes_all_memory_has_a_line_that_says_so(tmp_path):
    """A progressive JPEG holds all its coefficients in memory: some 430 MB for this one."""
    photographs = make_archive(tmp_path / "in", 5)
    greedy = str(tmp_path / "in" / "greedy.jpg")
    Image.new("RGB", (8500, 8500), (90, 60, 30)).save(greedy, progressive=True, subsampling=0,
                                                      quality=50)
    photographs.insert(2, greedy)
    summary = archive.suggest(photographs, output=str(tmp_path / "out"), workers=1,
                              memory_limit="330MB", partition_size=6, tries=1, faces="off")
    assert summary.photographs == 6 and summary.failed == 1
    lines = {line["file"]: line for line in lines_of(tmp_path / "out")}
    assert lines[greedy] == {"file": greedy, "error": "not finished: the worker died in each of 1 "
                                                      "tries, probably out of memory"}
    assert all("crops" in lines[path] for path in photographs if path != greedy)


def test_without_a_scheduler_a_local_cluster_is_started(tmp_path):
    make_archive(tmp_path / "in", 4, broken=1)
    listed = "\0".join(str(path) for path in sorted((tmp_path / "in").iterdir())) + "\0"
    process = command("-", "--null", "--output", tmp_path / "out", "-j", "1", "--aspect", "1:1", "--faces", "off",
                      stdin=subprocess.PIPE)
    out, errors = process.communicate(listed, timeout=120)
    assert process.returncode == 0, errors
    assert "photographs/s" in out and "photographs" in errors
    check_lines(tmp_path / "out", [path for path in listed.split("\0") if path], "--aspect", "1:1")


def test_a_scheduler_that_does_not_answer_is_named(tmp_path):
    began = time.monotonic()
    process = command("a.jpg", "--output", tmp_path / "out", "--scheduler", "tcp://127.0.0.1:9",
                      "--timeout", "2")
    _, errors = process.communicate(timeout=60)
    assert process.returncode == 1
    assert errors.strip().splitlines()[-1] == (
        "vistatrim.archive: no scheduler answers at tcp://127.0.0.1:9 within 2 s")
    assert time.monotonic() - began < 30
    assert not (tmp_path / "out").exists()


def test_a_scheduler_that_goes_away_ends_the_run(tmp_path):
    """The next start keeps what was finished."""
    photographs = make_archive(tmp_path / "in", 40)
    with distributed.LocalCluster(n_workers=1, threads_per_worker=1, processes=True,
                                  host="127.0.0.1", dashboard_address=None) as cluster:
        process = command(*photographs, "--output", tmp_path / "out", "--scheduler",
                          cluster.scheduler_address, "--partition-size", "2", "--timeout", "3", "--faces", "off")
        deadline = time.monotonic() + 60
        while len(files_of(tmp_path / "out")) < 2 and time.monotonic() < deadline:
            time.sleep(0.01)
    _, errors = process.communicate(timeout=120)
    assert process.returncode == 1, errors
    assert "a new run does the rest" in errors
    before = files_of(tmp_path / "out")
    assert 2 <= len(before) < 20
    archive.suggest(photographs, output=str(tmp_path / "out"), workers=1, faces="off")
    assert all(files_of(tmp_path / "out")[name] == before[name] for name in before)
    check_lines(tmp_path / "out", photographs)
