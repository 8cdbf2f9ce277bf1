"""Runs of the archive engine: what is written, what is done again, what is refused. The workers
are threads of this process; test_archive_cluster.py has real ones."""
import json
import os
import threading
import time
from contextlib import contextmanager

import fsspec
import pytest
from fsspec.implementations.memory import MemoryFileSystem

distributed = pytest.importorskip("distributed")

from archive_support import check_lines, files_of, lines_of, make_archive
from conftest import suggested, write_ranking
from vistatrim import archive
from vistatrim.archive import _run
from vistatrim.archive.__main__ import main
from vistatrim.archive._inputs import list_photographs
from vistatrim.archive._manifest import Counts, ranges_of, ranges_text
from vistatrim.archive._progress import Progress, duration_text

COUNT, BROKEN = 25, 7


@pytest.fixture(scope="module")
def client():
    with distributed.Client(processes=False, n_workers=2, threads_per_worker=1,
                            dashboard_address=None, set_as_default=False) as found:
        yield found


@pytest.fixture(scope="module")
def photographs(tmp_path_factory):
    return make_archive(tmp_path_factory.mktemp("archive"), COUNT, BROKEN)


@pytest.fixture
def run(client, tmp_path):
    """Runs an archive into this test's own folder."""

    def call(names, **options):
        return archive.suggest(names, output=str(tmp_path / "out"), client=client,
                               **{"partition_size": 5, "faces": "off", **options})

    return call


@contextmanager
def no_work():
    """Starting a cluster or sending a partition fails."""

    def refuse(*_, **__):
        raise AssertionError("there was nothing to do")

    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(_run, "local_cluster", refuse)
        patch.setattr(_run._Run, "_send", refuse)
        yield


def test_every_photograph_has_the_line_of_the_program(run, photographs, tmp_path):
    summary = run(photographs, top=2, aspect=["1:1", "16:9"])
    check_lines(tmp_path / "out", photographs, "--top", "2", "--aspect", "1:1", "--aspect", "16:9")
    assert [line["file"] for line in lines_of(tmp_path / "out")] == photographs
    assert (summary.photographs, summary.failed, summary.partitions) == (COUNT, BROKEN, 5)
    assert summary.crops == sum(len(line.get("crops", ())) for line in lines_of(tmp_path / "out"))
    assert "25 photographs, 7 failed" in str(summary)


def test_the_manifest_says_what_was_done(run, photographs, tmp_path):
    run(photographs, top=1, keep=(3, 4, 5, 6), background="#102030")
    manifest = json.loads((tmp_path / "out" / "manifest.json").read_text())
    assert manifest["options"] == {"top": 1, "keep": [[3, 4, 5, 6]], "faces": "off",
                                   "background": [16, 32, 48]}
    assert manifest["photographs"] == COUNT and manifest["partitions"] == 5
    assert manifest["finished"]["partitions"] == 5
    assert manifest["finished"]["failed"] == BROKEN
    assert manifest["version"] == archive._run._vistatrim.VERSION
    [record] = manifest["runs"]
    assert record["photographs"] == COUNT and record["seconds"] > 0
    assert record["started"] <= record["ended"]


def test_only_the_final_names_remain(run, photographs, tmp_path):
    run(photographs)
    assert sorted(os.listdir(tmp_path / "out")) == [
        "manifest.json", *(f"part-{number:06d}.jsonl" for number in range(5)),
        "photographs-0000.jsonl"]


def test_a_second_start_does_nothing(run, photographs, tmp_path):
    first = run(photographs)
    before = files_of(tmp_path / "out")
    with no_work():
        for names in (photographs, photographs[:7], []):
            again = run(names)
            assert again.added == 0 and again.photographs == first.photographs
            assert (again.failed, again.crops) == (first.failed, first.crops)
        assert archive.suggest(photographs, output=str(tmp_path / "out"), faces="off").added == 0
    assert files_of(tmp_path / "out") == before


def test_a_missing_partition_is_done_and_nothing_else(run, photographs, tmp_path):
    first = run(photographs)
    before = files_of(tmp_path / "out")
    (tmp_path / "out" / "part-000002.jsonl").unlink()
    again = run(photographs)
    after = files_of(tmp_path / "out")
    assert again.added == 5 and again.photographs == first.photographs
    assert again.crops == first.crops
    assert {name for name in after if after[name] != before[name]} == {"part-000002.jsonl"}
    check_lines(tmp_path / "out", photographs)


def test_new_photographs_join_an_existing_output(run, photographs, tmp_path):
    run(photographs[:8])
    before = files_of(tmp_path / "out")
    summary = run(photographs[4:])
    after = files_of(tmp_path / "out")
    assert summary.added == COUNT - 8 and summary.photographs == COUNT
    assert all(after[name] == before[name] for name in before)
    check_lines(tmp_path / "out", photographs)


def test_an_interrupted_run_continues(run, photographs, tmp_path):
    """Whatever ends the client, the finished partitions stay as they are."""
    seen = []

    def stop(progress):
        seen.append(progress.done)
        if progress.done >= 10:
            raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        run(photographs, progress=stop)
    deadline = time.monotonic() + 20
    while threading.active_count() > 60 and time.monotonic() < deadline:
        time.sleep(0.05)
    before = files_of(tmp_path / "out")
    assert 2 <= len(before)
    run(photographs)
    after = files_of(tmp_path / "out")
    assert all(after[name] == before[name] for name in before)
    check_lines(tmp_path / "out", photographs)


def test_other_options_are_refused_and_named(run, photographs, tmp_path):
    run(photographs, top=2, aspect="1:1")
    before = files_of(tmp_path / "out")
    with no_work():
        with pytest.raises(archive.ArchiveError, match="top was 2 and is 3"):
            run(photographs, top=3, aspect="1:1")
        with pytest.raises(archive.ArchiveError, match=r"aspect was \[\[1, 1\]\] and is not given"):
            run(photographs, top=2)
        with pytest.raises(archive.ArchiveError, match="background was"):
            run(photographs, top=2, aspect="1:1", background="black")
        run(photographs, top=2, aspect=[(3, 3)])  # the same, written differently
    assert files_of(tmp_path / "out") == before


def test_the_output_of_another_version_is_refused(run, photographs, tmp_path):
    run(photographs[:1])
    path = tmp_path / "out" / "manifest.json"
    path.write_text(path.read_text().replace(f'"{archive._run._vistatrim.VERSION}"', '"0.0.1"'))
    with pytest.raises(archive.ArchiveError, match=r"version 0\.0\.1"):
        run(photographs[:1])


def test_a_folder_of_other_files_is_refused(run, photographs, tmp_path):
    (tmp_path / "out").mkdir()
    (tmp_path / "out" / "letter.txt").write_text("dear")
    with pytest.raises(archive.ArchiveError, match="other files"):
        run(photographs)
    assert os.listdir(tmp_path / "out") == ["letter.txt"]


def test_duplicates_are_done_once(run, photographs, tmp_path, monkeypatch):
    monkeypatch.chdir(os.path.dirname(photographs[0]))
    name = os.path.basename(photographs[0])
    summary = run(photographs[:3] + photographs[:2] + [name, f"./{name}", f"../{os.path.basename(os.getcwd())}/{name}",
                                                           f"file://{photographs[0]}"])
    assert summary.photographs == 3 and summary.duplicates == 6
    check_lines(tmp_path / "out", photographs[:3])


def test_folders_give_every_format_that_the_program_reads(tmp_path):
    make_archive(tmp_path, 1)
    content = (tmp_path / "p0000.jpg").read_bytes()
    for name in ("a.jfif", "b", "c.jpg~", "d.txt", ".e.jpg"):
        (tmp_path / name).write_bytes(content)
    (tmp_path / "f").write_text("Dear diary")
    found, _ = list_photographs(str(tmp_path), None, False, None)
    assert [os.path.basename(name) for name in found] == ["a.jfif", "b", "p0000.jpg"]


def test_folders_give_their_photographs(run, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    make_archive(tmp_path / "in", 3)
    make_archive(tmp_path / "in" / "below", 2)
    make_archive(tmp_path / "in" / ".hidden", 1)
    (tmp_path / "in" / "notes.txt").write_text("none")
    (tmp_path / "nothing").mkdir()
    assert run(["in", "nothing"]).photographs == 4
    lines = lines_of(tmp_path / "out")
    assert [line["file"] for line in lines] == [
        "in/p0000.jpg", "in/p0001.jpg", "in/p0002.jpg", "nothing"]
    assert "error" in lines[3]
    assert [line["file"] for line in suggested("in")] == [line["file"] for line in lines[:3]]
    assert run(["in"], recursive=True).added == 2


def test_wrong_calls_are_refused(run, photographs):
    for wrong in (dict(top=0), dict(aspect="x"), dict(partition_size=0), dict(tries=0),
                  dict(background="red?"), dict(size=(1, 1), aspect="1:1")):
        with pytest.raises(ValueError):
            run(photographs, **wrong)
    for wrong in (dict(top="1"), dict(unknown=1), dict(partition_size="5")):
        with pytest.raises(TypeError):
            run(photographs, **wrong)
    with pytest.raises(TypeError, match="text"):
        run([5])


def test_regions_of_a_file_go_with_the_photographs(run, photographs, tmp_path):
    path = tmp_path / "regions.jsonl"
    region = {"x": 5, "y": 6, "width": 20, "height": 20, "wish": "must-keep"}
    path.write_text("".join(json.dumps({"file": name, "regions": [region]}) + "\n"
                            for name in photographs[:2]))
    run(photographs, regions=str(path))
    check_lines(tmp_path / "out", photographs, "--regions", path)
    assert ["regions" in line for line in lines_of(tmp_path / "out")[:3]] == [True, True, False]
    path.write_text(path.read_text() + "\n")
    with pytest.raises(archive.ArchiveError, match="regions was"):
        run(photographs, regions=str(path))
    path.write_text('{"file":"none.jpg","regions":[]}')
    with pytest.raises(ValueError, match="none of the photographs"):
        run(photographs, regions=str(path))
    with pytest.raises(TypeError, match="regions"):
        run(photographs, regions=[region])


def test_a_ranking_goes_to_the_workers(run, photographs, tmp_path):
    write_ranking(tmp_path / "r.json")
    run(photographs[:3], ranking=tmp_path / "r.json")
    check_lines(tmp_path / "out", photographs[:3], "--ranking", tmp_path / "r.json")
    (tmp_path / "r.json").write_text((tmp_path / "r.json").read_text() + " ")
    with pytest.raises(archive.ArchiveError, match="ranking was"):
        run(photographs[:3], ranking=tmp_path / "r.json")


def test_a_bag_names_photographs(client, photographs, tmp_path):
    bag = pytest.importorskip("dask.bag").from_sequence(photographs, npartitions=4)
    summary = archive.suggest(bag, output=str(tmp_path / "out"), client=client, faces="off")
    assert summary.photographs == COUNT
    check_lines(tmp_path / "out", photographs)


def in_memory(name, paths):
    """URLs of copies of the photographs in an in-memory bucket."""
    files = fsspec.filesystem("memory")
    for path in paths:
        if os.path.exists(path):
            with open(path, "rb") as file:
                files.pipe_file(f"/{name}/{os.path.basename(path)}", file.read())
    return [f"memory://{name}/{os.path.basename(path)}" for path in paths]


def of_storage(files, folder):
    return [json.loads(line) for path in sorted(files.ls(folder, detail=False))
            if "part-" in path for line in files.cat_file(path).splitlines()]


def test_storage_of_fsspec_is_read_and_written(client, photographs):
    urls = in_memory("photographs", photographs)
    summary = archive.suggest(["memory://photographs/"], output="memory://out", client=client,
                              partition_size=4, faces="off")
    readable = [path for path in photographs if os.path.exists(path)]
    assert summary.photographs == len(readable) < COUNT
    lines = of_storage(fsspec.filesystem("memory"), "/out")
    expected = suggested("--faces", "off", *readable)
    for line, found in zip(expected, lines):
        assert found.pop("file").endswith(os.path.basename(line.pop("file")))
        assert found == line
    again = archive.suggest(urls, output="memory://out", client=client, faces="off")
    assert again.added == COUNT - len(readable)  # those that do not exist
    names = {path.rsplit("/", 1)[-1] for path in fsspec.filesystem("memory").ls("/out", detail=False)}
    assert not [name for name in names if name.startswith(".")]


def test_file_urls_give_what_paths_give(run, photographs, tmp_path):
    run(["file://" + path for path in photographs[:4]])
    expected = suggested("--faces", "off", *photographs[:4])
    assert [{**line, "file": "file://" + line["file"]} for line in expected] == lines_of(
        tmp_path / "out")


class SlowFiles(MemoryFileSystem):
    """Each read takes a while, and the first one of each photograph can fail."""

    protocol = "slow"
    store = {}
    pseudo_dirs = [""]
    pause = 0.03
    failing = 0
    reads = {}
    in_flight = 0
    most = 0
    gate = threading.Lock()

    @classmethod
    def _strip_protocol(cls, path):
        return MemoryFileSystem._strip_protocol(path.replace("slow://", "memory://"))

    def cat_file(self, path, start=None, end=None, **kwargs):
        cls = type(self)
        with cls.gate:
            cls.reads[path] = cls.reads.get(path, 0) + 1
            cls.in_flight += 1
            cls.most = max(cls.most, cls.in_flight)
        try:
            time.sleep(cls.pause)
            if cls.reads[path] <= cls.failing:
                raise OSError("the storage hiccups")
            return super().cat_file(path, start, end, **kwargs)
        finally:
            with cls.gate:
                cls.in_flight -= 1


@pytest.fixture
def slow(photographs):
    fsspec.register_implementation("slow", SlowFiles, clobber=True)
    SlowFiles.reads, SlowFiles.most, SlowFiles.failing = {}, 0, 0
    files = fsspec.filesystem("slow")
    for path in photographs[:8]:
        with open(path, "rb") as file:
            files.pipe_file("/in/" + os.path.basename(path), file.read())
    return [f"slow://in/{os.path.basename(path)}" for path in photographs[:8]]


def test_slow_storage_is_read_ahead(run, slow, photographs, tmp_path):
    run(slow, partition_size=8)
    assert SlowFiles.most > 1
    assert [line["crops"] for line in lines_of(tmp_path / "out")] == [
        line["crops"] for line in suggested("--faces", "off", *photographs[:8])]


def test_reads_that_fail_are_tried_again(run, slow, tmp_path):
    SlowFiles.failing = 1
    run(slow)
    assert all("crops" in line for line in lines_of(tmp_path / "out"))
    assert set(SlowFiles.reads.values()) == {2}


def test_reads_that_keep_failing_give_a_line_each(run, slow, tmp_path):
    SlowFiles.failing = 100
    run(slow, tries=3)
    assert [line["error"] for line in lines_of(tmp_path / "out")] == [
        "cannot be read: the storage hiccups"] * 8
    assert set(SlowFiles.reads.values()) == {3}


def test_a_partition_that_cannot_be_written_leaves_no_half_file(run, photographs, tmp_path,
                                                              monkeypatch):
    """The rename fails, as on a full or broken disk."""
    replace = os.replace

    def fail(source, target, **options):
        if "part-" in str(target):
            raise OSError(28, "No space left on device")
        replace(source, target, **options)

    with monkeypatch.context() as broken:
        broken.setattr(os, "replace", fail)
        with pytest.raises(archive.ArchiveError, match="No space left"):
            run(photographs)
    assert files_of(tmp_path / "out") == {}
    assert run(photographs).photographs == COUNT
    check_lines(tmp_path / "out", photographs)
    assert not [name for name in os.listdir(tmp_path / "out") if name.startswith(".")]


def test_the_photograph_that_kills_workers_is_skipped(run, photographs, tmp_path):
    """The partition as the third worker finds it: two died on photograph number 1."""
    with pytest.raises(KeyboardInterrupt):
        run(photographs[:4], progress=interrupt)
    note = {"at": 1, "deaths": {"1": 1}}
    (tmp_path / "out" / ".part-000000.trying").write_text(json.dumps(note))
    run(photographs[:4])
    lines = lines_of(tmp_path / "out")
    assert lines[1] == {"file": photographs[1],
                        "error": "not finished: the worker died in each of 2 tries, probably out "
                                 "of memory"}
    assert [lines[number] for number in (0, 2, 3)] == suggested(
        "--faces", "off", *(photographs[number] for number in (0, 2, 3)))


def interrupt(progress):
    raise KeyboardInterrupt


def test_a_worker_of_another_version_ends_the_run(run, photographs, monkeypatch):
    job = _run.Job
    monkeypatch.setattr(_run, "Job", lambda output, version, *rest: job(output, "9.9", *rest))
    with pytest.raises(archive.ArchiveError, match=r"version .* started by 9\.9"):
        run(photographs)


def test_many_photographs_take_few_tasks(client, tmp_path, monkeypatch):
    """100,000 names: two hundred tasks, only a few of them in flight at a time."""
    names = [f"/nowhere/{number:06d}.jpg" for number in range(100_000)]
    sent, in_flight = [], []

    def pretend(job, index, photographs, regions):
        return Counts(len(photographs), 0, 5 * len(photographs))

    send = _run._Run._send

    def count(self, index, photographs):
        send(self, index, photographs)
        sent.append(len(photographs))
        in_flight.append(len(self._sent))

    monkeypatch.setattr(_run, "run_partition", pretend)
    monkeypatch.setattr(_run._Run, "_send", count)
    seen = []
    summary = archive.suggest(names, output=str(tmp_path / "out"), client=client,
                              progress=seen.append)
    assert summary.photographs == 100_000 and sum(sent) == 100_000
    assert len(sent) == 200 and max(sent) == 500
    assert max(in_flight) <= 3 * 2
    assert seen[-1].done == seen[-1].total == 100_000
    assert [progress.done for progress in seen] == sorted(progress.done for progress in seen)


def test_small_archives_are_split_among_threads(client, photographs, tmp_path):
    archive.suggest(photographs, output=str(tmp_path / "out"), client=client, faces="off")
    assert len(files_of(tmp_path / "out")) == 13  # two photographs each, for two threads


def test_progress_in_words():
    assert str(Progress(0, 1000, 0, 0, 0)) == "0 of 1,000 photographs"
    assert str(Progress(250, 1000, 3, 12.34, 60.8)) == (
        "250 of 1,000 photographs, 3 failed, 12.3/s, 61 s left")
    assert [duration_text(seconds) for seconds in (5, 89, 600, 12000, 300000)] == [
        "5 s", "89 s", "10 min", "3 h 20 min", "3 d 11 h"]


def test_progress_has_rate_and_remaining_time(run, photographs):
    seen = []
    run(photographs, progress=seen.append)
    assert seen[0].done == 0 and seen[0].per_second == 0
    for progress in seen[1:]:
        assert progress.per_second > 0
        left = progress.total - progress.done
        assert progress.remaining_seconds == pytest.approx(left / progress.per_second)
    assert seen[-1].remaining_seconds == 0 and seen[-1].failed == BROKEN


@pytest.mark.parametrize("numbers, text", [
    ([], ""), ([5], "5"), ([0, 1, 2], "0-2"), ([9, 0, 1, 3, 7, 8], "0-1,3,7-9")])
def test_ranges_are_read_back(numbers, text):
    assert ranges_text(numbers) == text and ranges_of(text) == set(numbers)


# The command line. What needs workers is in test_archive_cluster.py.

@pytest.mark.parametrize("arguments, fault", [
    (["--top", "0"], "top"), (["--top", "x"], "--top: 'x'"), (["--aspect", "1by2"], "aspect"),
    (["--keep", "1,2,3"], "--keep: '1,2,3'"), (["--size", "10x10", "--aspect", "1:1"], "size"),
    (["--rank-by", "beauty"], "rank_by"), (["--jobs", "0"], "--jobs"),
    (["--background", "red?"], "background"), (["--nonsense"], "nonsense")])
def test_wrong_options_end_with_status_2(arguments, fault, tmp_path, capsys):
    with pytest.raises(SystemExit) as ended:
        main(["a.jpg", "--output", str(tmp_path / "out"), *arguments])
    assert ended.value.code == 2
    assert fault in capsys.readouterr().err
    assert not (tmp_path / "out").exists()


def test_the_command_line_has_every_option_of_the_table(capsys):
    with pytest.raises(SystemExit):
        main(["--help"])
    page = capsys.readouterr().out
    for option in archive._run._options.OPTIONS:
        assert option.flag in page


def test_lists_are_read_from_files(monkeypatch, tmp_path, capsys):
    called = {}
    monkeypatch.setattr("vistatrim.archive.__main__.suggest",
                        lambda names, **options: called.update(names=list(names)))
    windows, nulls, empty = (tmp_path / name for name in ("windows.txt", "nulls.txt", "empty.txt"))
    windows.write_bytes("\ufeffa.jpg\r\nb c.jpg\r\n\r\n".encode())
    nulls.write_bytes(b"d\ne.jpg\0f.jpg\0")
    empty.write_bytes(b"\n")
    common = ["--output", str(tmp_path / "out"), "-q"]
    assert main(["first.jpg", "--files-from", str(windows), *common]) == 0
    assert called["names"] == ["first.jpg", "a.jpg", "b c.jpg"]
    assert main(["--files-from", str(nulls), "--null", *common]) == 0
    assert called["names"] == ["d\ne.jpg", "f.jpg"]
    for wrong in (empty, tmp_path / "none.txt"):
        assert main(["--files-from", str(wrong), *common]) == 1
        assert str(wrong) in capsys.readouterr().err
    with pytest.raises(SystemExit) as ended:
        main(common)
    assert ended.value.code == 2


def test_options_of_the_command_line_reach_the_run(monkeypatch, tmp_path):
    called = {}
    monkeypatch.setattr("vistatrim.archive.__main__.suggest",
                        lambda names, **options: called.update(options, names=list(names)))
    table = tmp_path / "mine.tsv"
    table.write_text("poster\t2:3\n")
    arguments = ["a.jpg", "b.jpg", "--output", "out", "-n", "3", "--aspect", "4:5", "--aspect", "1.5",
                 "--scale", "0.5,0.75", "--scale", "1", "--keep", "1,2,3,4", "--keep", "5,6,7,8",
                 "--weights", "1,2,3", "--explain", "--density", "9", "--rank-by", "engine",
                 "--preset", "square", "--preset", "poster", "--presets", str(table),
                 "--background", "black", "-r", "-j", "3", "--tries", "4", "-q"]
    assert main(arguments) == 0
    assert called["names"] == ["a.jpg", "b.jpg"] and called["output"] == "out"
    expected = dict(top=3, aspect=["4:5", "1.5"], scale=[0.5, 0.75, 1.0],
                    keep=[(1, 2, 3, 4), (5, 6, 7, 8)], weights=[1, 2, 3], explain=True, density=9,
                    rank_by="engine", preset=["square", "poster"], presets=[str(table)],
                    background="black", recursive=True, workers=3, tries=4,
                    progress=None, client=None)
    assert {name: called[name] for name in expected} == expected
