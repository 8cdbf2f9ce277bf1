"""The examples of the package, of README.md and of the documentation run as written."""
import os
import re
import subprocess
import sys

import pytest
from PIL import Image

import vistatrim
from archive_support import make_archive
from conftest import SOURCES, scene

EXAMPLES = SOURCES / "python" / "examples"


def run(name, *arguments, cwd=None):
    done = subprocess.run([sys.executable, EXAMPLES / name, *map(str, arguments)], cwd=cwd,
                          env={**os.environ, "MPLBACKEND": "Agg"}, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, check=False)
    assert done.returncode == 0, done.stderr
    return done


def test_every_example_is_run_here():
    assert {path.name for path in EXAMPLES.iterdir() if path.suffix == ".py"} == {
        "look_at_crops.py", "pillow_pipeline.py", "archive_of_a_folder.py"}


def test_look_at_crops(photo_path, tmp_path):
    pytest.importorskip("matplotlib")
    shown = run("look_at_crops.py", photo_path, tmp_path / "out.png").stdout
    for crop in vistatrim.suggest(photo_path, top=3):
        assert str(crop.box) in shown
    assert "candidates were tried" in shown and "EdgeMap: 640 x 480" in shown
    assert Image.open(tmp_path / "out.png").format == "PNG"


def test_pillow_pipeline(tmp_path):
    exif = Image.Exif()
    exif[0x0112] = 6
    scene(300, 200).save(tmp_path / "turned.jpg", exif=exif)
    (tmp_path / "broken.jpg").write_text("none")
    done = run("pillow_pipeline.py", tmp_path / "out", tmp_path / "turned.jpg",
               tmp_path / "broken.jpg")
    assert [path.name for path in (tmp_path / "out").iterdir()] == ["turned.webp"]
    assert Image.open(tmp_path / "out" / "turned.webp").size == (256, 256)
    assert "broken.jpg" in done.stderr


def test_archive_of_a_folder(tmp_path):
    pytest.importorskip("distributed")
    paths = make_archive(tmp_path / "in", 3)
    (tmp_path / "in" / "none.jpg").write_text("none")
    done = run("archive_of_a_folder.py", tmp_path / "in", tmp_path / "out")
    assert done.stdout.startswith("4 photographs, 1 failed")
    for path in paths:
        assert f"{path} 2 " in done.stdout
    assert "4 of 4 photographs, 1 failed" in done.stderr


@pytest.mark.parametrize("document", ["README.md", "docs/python.md", "docs/archives.md"])
def test_examples_of_documents_run(document, tmp_path, monkeypatch):
    """Each block of Python, in order, in a folder with the photographs that it names."""
    blocks = re.findall(r"^```python\n(.*?)^```", (SOURCES / document).read_text(),
                        re.MULTILINE | re.DOTALL)
    assert blocks
    monkeypatch.setenv("MPLBACKEND", "Agg")
    monkeypatch.chdir(tmp_path)
    for name in ("a.jpg", "b.jpg", "photographs/c.jpg"):
        (tmp_path / name).parent.mkdir(exist_ok=True)
        scene(900, 700, seed=len(name)).save(tmp_path / name, quality=90)
    script = tmp_path / "example.py"
    script.write_text('if __name__ == "__main__":\n' + "".join(
        f"    {line}\n" if line else "\n" for block in blocks for line in block.splitlines()))
    done = subprocess.run([sys.executable, str(script)], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    assert done.returncode == 0, done.stdout


def test_shell_examples_of_archives_run(tmp_path, monkeypatch):
    """The commands in docs/archives.md that need no external cluster."""
    pytest.importorskip("distributed")
    text = (SOURCES / "docs" / "archives.md").read_text()
    commands = [line.strip() for line in text.splitlines()
                if line.strip().startswith("python3 -m vistatrim.archive")
                and "--scheduler" not in line and "://" not in line and "PHOTO" not in line]
    assert commands
    (tmp_path / "photographs").mkdir()
    scene().save(tmp_path / "photographs" / "c.jpg")
    for command in commands:
        subprocess.run(command.replace("python3", sys.executable, 1), shell=True, cwd=tmp_path,
                       check=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert list((tmp_path / "crops").glob("part-*.jsonl"))
